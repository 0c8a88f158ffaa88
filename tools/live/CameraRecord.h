#ifndef LIVE_CAMERA_RECORD_H
#define LIVE_CAMERA_RECORD_H

#include "Camera/Boundary/OvCameraControl.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace live {

using DeviceRecord = _OV_CC_DEVICE_INFO_;

/// The fields of a device record as text. What a camera says of itself is not trusted: the result is valid
/// UTF-8 (GB18030 is converted), without control characters, at most as long as the field.
std::string CameraText(const char* field, size_t size);

/// Dotted form of an address in host order.
std::string IpText(uint32_t address);
/// Address of the dotted form; four decimal numbers up to 255 and nothing else.
std::optional<uint32_t> IpFromText(const std::string& text);

std::string MacText(const DeviceRecord& device);

bool IsGige(const DeviceRecord& device);
std::string ModelOf(const DeviceRecord& device);
std::string SerialOf(const DeviceRecord& device);
std::string UserNameOf(const DeviceRecord& device);
std::string ManufacturerOf(const DeviceRecord& device);
std::string VersionOf(const DeviceRecord& device);

/// Model and serial number, and how it is reached: for titles and messages.
std::string TitleOf(const DeviceRecord& device);

/// A GigE Vision camera whose address is in another subnet than the interface on which it was found.
bool OnForeignSubnet(const DeviceRecord& device);

/// The same physical camera, also where it is seen on another interface or has another address now.
bool SameCamera(const DeviceRecord& a, const DeviceRecord& b);

/// A record that holds no more than the layer and an address: a camera behind a router.
DeviceRecord RemoteRecord(uint32_t address);

} // namespace live

#endif
