// Addresses of the registers behind the features, in the maker's part of the register space (from 0xA000).
#ifndef VCAM_DEVICE_FEATUREREGISTERS_H
#define VCAM_DEVICE_FEATUREREGISTERS_H

#include <cstdint>

namespace vcam::feature {

// Device
constexpr uint32_t kDeviceTemperature = 0x10000; // double, degrees Celsius; one for each sensor
constexpr uint32_t kDeviceTemperatureSelector = 0x10008;
constexpr uint32_t kDeviceReset = 0x10020;
constexpr uint32_t kDeviceScanType = 0x10024;
constexpr uint32_t kFeatureInquiry = 0x10028;        // a bit for each group of features that a model may lack
constexpr uint32_t kDeviceFirmwareVersion = 0x10040; // 32 characters
constexpr uint32_t kDeviceTemperatureStride = 0x80;

// Bits of kFeatureInquiry
constexpr unsigned kInquiryColour = 0;
constexpr unsigned kInquiryAreaScan = 1;
constexpr unsigned kInquiryLineScan = 2;

// Image format; size and place once for each value of RegionSelector
constexpr uint32_t kSensorWidth = 0x10100;
constexpr uint32_t kSensorHeight = 0x10104;
constexpr uint32_t kWidthMax = 0x10108;
constexpr uint32_t kHeightMax = 0x1010C;
constexpr uint32_t kWidth = 0x10110;
constexpr uint32_t kHeight = 0x10114;
constexpr uint32_t kOffsetX = 0x10118;
constexpr uint32_t kOffsetY = 0x1011C;
constexpr uint32_t kRegionStride = 0x800;
constexpr uint32_t kRegions = 2;
constexpr uint32_t kPixelFormat = 0x10120;
constexpr uint32_t kPixelSize = 0x10124;
constexpr uint32_t kReverseX = 0x10128;
constexpr uint32_t kReverseY = 0x1012C;
constexpr uint32_t kTestPattern = 0x10130;
constexpr uint32_t kRegionSelector = 0x10134;
constexpr uint32_t kRegionMode = 0x10138; // one word for each region
constexpr uint32_t kBinningSelector = 0x10140;
constexpr uint32_t kBinningHorizontal = 0x10144; // a pair of words for each value of BinningSelector
constexpr uint32_t kBinningVertical = 0x10148;
constexpr uint32_t kBinningStride = 0x8;
constexpr uint32_t kBinnings = 2;
constexpr uint32_t kImageCompressionMode = 0x10160;
constexpr uint32_t kImageCompressionQuality = 0x10164;

// Acquisition
constexpr uint32_t kAcquisitionMode = 0x10200;
constexpr uint32_t kAcquisitionStart = 0x10204;
constexpr uint32_t kAcquisitionStop = 0x10208;
constexpr uint32_t kAcquisitionAbort = 0x1020C;
constexpr uint32_t kAcquisitionFrameCount = 0x10210;
constexpr uint32_t kAcquisitionFrameRateEnable = 0x10214;
constexpr uint32_t kAcquisitionFrameRate = 0x10218; // double, hertz
constexpr uint32_t kResultingFrameRate = 0x10220;   // double, hertz
constexpr uint32_t kExposureTime = 0x10228;         // double, microseconds
constexpr uint32_t kExposureAuto = 0x10230;
constexpr uint32_t kExposureMode = 0x10234;
constexpr uint32_t kAcquisitionLineRate = 0x10238; // double, hertz
constexpr uint32_t kAcquisitionLineRateEnable = 0x10240;
constexpr uint32_t kResultingLineRate = 0x10244; // hertz

// Trigger: one set of words for each value of TriggerSelector
constexpr uint32_t kTriggerSelector = 0x10300;
constexpr uint32_t kTriggerSoftware = 0x10304;
constexpr uint32_t kTriggerSets = 0x10310;
constexpr uint32_t kTriggerSetStride = 0x20;
constexpr uint32_t kTriggerModeOffset = 0x00;
constexpr uint32_t kTriggerSourceOffset = 0x04;
constexpr uint32_t kTriggerActivationOffset = 0x08;
constexpr uint32_t kTriggerDelayOffset = 0x10; // double, microseconds

// Lines: one word for each of them
constexpr uint32_t kLineSelector = 0x10380;
constexpr uint32_t kLineMode = 0x10390;
constexpr uint32_t kLineInverter = 0x103A0;
constexpr uint32_t kLineSource = 0x103B0;
constexpr uint32_t kLineStatus = 0x103C0;
constexpr uint32_t kLineStatusAll = 0x103D0;
constexpr uint32_t kUserOutputSelector = 0x103D4;
constexpr uint32_t kUserOutputValue = 0x103D8; // one word for each output
constexpr uint32_t kLines = 4;
constexpr uint32_t kUserOutputs = 2;

// Analog
constexpr uint32_t kGain = 0x10400; // double, decibels
constexpr uint32_t kGainAuto = 0x10408;
constexpr uint32_t kGammaEnable = 0x1040C;
constexpr uint32_t kGammaSelector = 0x10410;
constexpr uint32_t kGamma = 0x10418;      // double
constexpr uint32_t kBrightness = 0x10420; // signed
constexpr uint32_t kSharpnessEnable = 0x10424;
constexpr uint32_t kSharpness = 0x10428;
constexpr uint32_t kHueEnable = 0x1042C;
constexpr uint32_t kHue = 0x10430; // signed
constexpr uint32_t kSaturationEnable = 0x10434;
constexpr uint32_t kSaturation = 0x10438;
constexpr uint32_t kBalanceRatioSelector = 0x10440;
constexpr uint32_t kBalanceWhiteAuto = 0x10444;
constexpr uint32_t kBalanceRatio = 0x10450; // red, green, blue

// Areas of the automatic functions: a set of words for each value of AutoFunctionAOISelector
constexpr uint32_t kAutoAreaSelector = 0x10460;
constexpr uint32_t kAutoAreaWidth = 0x10470;
constexpr uint32_t kAutoAreaHeight = 0x10474;
constexpr uint32_t kAutoAreaOffsetX = 0x10478;
constexpr uint32_t kAutoAreaOffsetY = 0x1047C;
constexpr uint32_t kAutoAreaIntensity = 0x10480;
constexpr uint32_t kAutoAreaWhiteBalance = 0x10484;
constexpr uint32_t kAutoAreaStride = 0x20;
constexpr uint32_t kAutoAreas = 2;

// Transport layer
constexpr uint32_t kPayloadSize = 0x10500;
constexpr uint32_t kTLParamsLocked = 0x10504;
constexpr uint32_t kInterfaceSelector = 0x10508;
constexpr uint32_t kStreamChannelSelector = 0x1050C;

// Chunk data
constexpr uint32_t kChunkModeActive = 0x10600;
constexpr uint32_t kChunkSelector = 0x10604;
constexpr uint32_t kChunkEnable = 0x10610; // one word for each value of ChunkSelector

// High dynamic range: a set for each value of HDRSelector
constexpr uint32_t kHdrEnable = 0x10700;
constexpr uint32_t kHdrSelector = 0x10704;
constexpr uint32_t kHdrGain = 0x10710;    // double, decibels
constexpr uint32_t kHdrShutter = 0x10718; // microseconds
constexpr uint32_t kHdrStride = 0x10;

// Facts in the first pixels of a frame
constexpr uint32_t kFrameInfoSelector = 0x10780;
constexpr uint32_t kFrameInfo = 0x10784; // the bit of the fact selected
constexpr uint32_t kFrameInfoMask = 0x10788;

// User sets
constexpr uint32_t kUserSetSelector = 0x107A0;
constexpr uint32_t kUserSetLoad = 0x107A4;
constexpr uint32_t kUserSetSave = 0x107A8;
constexpr uint32_t kUserSetDefault = 0x107AC;
constexpr uint32_t kUserSets = 3; // those beside the maker's

// Files
constexpr uint32_t kFileSelector = 0x107C0;
constexpr uint32_t kFileOperationSelector = 0x107C4;
constexpr uint32_t kFileOperationExecute = 0x107C8;
constexpr uint32_t kFileOpenMode = 0x107CC;
constexpr uint32_t kFileAccessOffset = 0x107D0;
constexpr uint32_t kFileAccessLength = 0x107D4;
constexpr uint32_t kFileOperationStatus = 0x107D8;
constexpr uint32_t kFileOperationResult = 0x107DC;
constexpr uint32_t kFileSize = 0x107E0;
constexpr uint32_t kFileAccessBuffer = 0x11000;
constexpr uint32_t kFileAccessBufferLength = 512;

// Lookup table
constexpr uint32_t kLutSelector = 0x107F0;
constexpr uint32_t kLutEnable = 0x107F4;
constexpr uint32_t kLutIndex = 0x107F8;
constexpr uint32_t kLutValues = 0x12000; // a word for each index

constexpr uint32_t kXml = 0x20000000;

} // namespace vcam::feature

#endif
