// A small camera's GenICam XML with the features that QCamera drives, and their registers.
#pragma once

#include "support/MemoryPort.h"

#include <set>
#include <string>

namespace support {

namespace camera_register {
constexpr int64_t Width = 0x100, Height = 0x104, PixelFormat = 0x108, PixelSize = 0x10C, PayloadSize = 0x110,
                  TLParamsLocked = 0x114, PacketSize = 0x118, TriggerMode = 0x11C, AcquisitionMode = 0x120,
                  ImageCompressionMode = 0x124, TriggerSoftware = 0x128, ReverseX = 0x12C,
                  ResultingFrameRate = 0x130, ExposureTime = 0x138, FrameSpecInfo = 0x140,
                  FrameSpecInfoReg = 0x144, FrameSpecInfoSelector = 0x148, DeviceScanType = 0x14C,
                  DeviceLinkSpeed = 0x150, ResultingLineRate = 0x154, DeviceUserID = 0x160;
} // namespace camera_register

// The XML without the features named. `extra` is put in as it is.
std::string CameraXml(const std::set<std::string>& without = {}, const std::string& extra = {});

// 64 x 48, Mono8, free running, packets of 1500 bytes.
void FillCameraRegisters(MemoryPort& port);

} // namespace support
