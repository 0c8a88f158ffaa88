// USB3 Vision devices: what their descriptors tell, turned into the boundary's record. Nothing here does I/O.
//
// A USB3 Vision device has a control interface (class 0xEF, subclass 0x05, protocol 0x00) with a bulk
// endpoint in each direction, optionally an event interface (protocol 0x01) and a stream interface (protocol
// 0x02) with a bulk endpoint in. The control interface's extra bytes hold the device information descriptor
// (type 0x24, subtype 0x01, 20 bytes): versions, and the indices of the string descriptors with GUID, names
// and serial number.
#ifndef KOLT_CAMERA_CONTROL_USB_RECORD_H
#define KOLT_CAMERA_CONTROL_USB_RECORD_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Camera/Boundary/OvCameraControl.h"

namespace kolt::cc {

struct UsbEndpoint {
    std::uint8_t address = 0;    // bit 7: towards the host
    std::uint8_t attributes = 0; // low two bits: 2 is bulk
};

struct UsbInterface {
    std::uint8_t number = 0;
    std::uint8_t interfaceClass = 0;
    std::uint8_t subclass = 0;
    std::uint8_t protocol = 0;
    std::vector<UsbEndpoint> endpoints;
    std::vector<std::uint8_t> extra; // class-specific descriptors, untrusted
};

struct UsbDevice {
    std::uint8_t bus = 0;
    std::uint8_t address = 0;
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    std::uint16_t usbVersion = 0;       // BCD
    std::uint8_t manufacturerIndex = 0; // string descriptors of the plain USB device; 0: none
    std::uint8_t serialIndex = 0;
    std::vector<UsbInterface> interfaces;
};

// Reads a string descriptor; nothing when the device doesn't give it.
using UsbStringReader = std::function<std::optional<std::string>(std::uint8_t index)>;

// The control interface, or null where this is no USB3 Vision device.
const UsbInterface* usb3VisionControl(const UsbDevice& device);

enum class UsbReading {
    none,    // no USB3 Vision device, or its device information or serial number can't be read: without them
             // nobody could tell it from another
    partial, // some texts couldn't be read and are empty
    whole,
};

// The record of a USB3 Vision device; only filled when something was read. A control interface without its
// bulk endpoints (a device in its boot loader) leaves controlInEndpoint 0.
UsbReading fillUsbRecord(const UsbDevice& device, const UsbStringReader& readString,
                         _OV_CC_DEVICE_INFO_& record);

// Text of a string descriptor (UTF-16, little-endian) as UTF-8; broken surrogates become U+FFFD. Nothing when
// the bytes are no string descriptor.
std::optional<std::string> usbStringText(const std::uint8_t* descriptor, std::size_t length);

} // namespace kolt::cc

#endif
