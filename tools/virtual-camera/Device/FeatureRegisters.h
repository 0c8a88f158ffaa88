// Addresses of the registers behind the features, in the maker's part of the register space (from 0xA000).
#ifndef VCAM_DEVICE_FEATUREREGISTERS_H
#define VCAM_DEVICE_FEATUREREGISTERS_H

#include <cstdint>

namespace vcam::feature {

// Device
constexpr uint32_t kDeviceTemperature = 0x10000; // double, degrees Celsius
constexpr uint32_t kDeviceTemperatureSelector = 0x10008;
constexpr uint32_t kTimestampLatchTick = 0x10010; // 8 bytes

// Image format
constexpr uint32_t kSensorWidth = 0x10100;
constexpr uint32_t kSensorHeight = 0x10104;
constexpr uint32_t kWidthMax = 0x10108;
constexpr uint32_t kHeightMax = 0x1010C;
constexpr uint32_t kWidth = 0x10110;
constexpr uint32_t kHeight = 0x10114;
constexpr uint32_t kOffsetX = 0x10118;
constexpr uint32_t kOffsetY = 0x1011C;
constexpr uint32_t kPixelFormat = 0x10120;
constexpr uint32_t kPixelSize = 0x10124;
constexpr uint32_t kReverseX = 0x10128;
constexpr uint32_t kReverseY = 0x1012C;
constexpr uint32_t kTestPattern = 0x10130;

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

// Trigger: one set of four words for each value of TriggerSelector
constexpr uint32_t kTriggerSelector = 0x10300;
constexpr uint32_t kTriggerSoftware = 0x10304;
constexpr uint32_t kTriggerSets = 0x10310;
constexpr uint32_t kTriggerSetStride = 0x20;
constexpr uint32_t kTriggerModeOffset = 0x00;
constexpr uint32_t kTriggerSourceOffset = 0x04;
constexpr uint32_t kTriggerActivationOffset = 0x08;
constexpr uint32_t kTriggerDelayOffset = 0x10; // double, microseconds

// Analog
constexpr uint32_t kGain = 0x10400; // double, decibels
constexpr uint32_t kGainAuto = 0x10408;

// Transport layer
constexpr uint32_t kPayloadSize = 0x10500;
constexpr uint32_t kTLParamsLocked = 0x10504;

// Chunk data
constexpr uint32_t kChunkModeActive = 0x10600;
constexpr uint32_t kChunkSelector = 0x10604;
constexpr uint32_t kChunkEnable = 0x10610; // one word for each value of ChunkSelector

constexpr uint32_t kXml = 0x20000000;

} // namespace vcam::feature

#endif
