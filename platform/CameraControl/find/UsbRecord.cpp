#include "find/UsbRecord.h"

#include <cstring>

#include "find/GigeDiscovery.h"

namespace kolt::cc {

namespace {

constexpr std::uint8_t kMiscellaneousClass = 0xEF;
constexpr std::uint8_t kUsb3VisionSubclass = 0x05;
constexpr std::uint8_t kControlProtocol = 0x00;
constexpr std::uint8_t kEventProtocol = 0x01;
constexpr std::uint8_t kStreamProtocol = 0x02;
constexpr std::uint8_t kStringDescriptor = 0x03;

// Offsets in the device information descriptor.
enum : std::size_t {
    kU3vVersion = 7,
    kGuidIndex = 11,
    kVendorIndex = 12,
    kModelIndex = 13,
    kFamilyIndex = 14,
    kVersionIndex = 15,
    kSerialIndex = 17,
    kUserNameIndex = 18,
    kInformationSize = 20,
};

bool isUsb3Vision(const UsbInterface& interface, std::uint8_t protocol) {
    return interface.interfaceClass == kMiscellaneousClass && interface.subclass == kUsb3VisionSubclass &&
           interface.protocol == protocol;
}

std::uint8_t bulkEndpoint(const UsbDevice& device, std::uint8_t protocol, bool towardsHost) {
    for (const UsbInterface& interface : device.interfaces) {
        if (!isUsb3Vision(interface, protocol))
            continue;
        for (const UsbEndpoint& endpoint : interface.endpoints) {
            if ((endpoint.attributes & 0x03U) == 0x02 && ((endpoint.address & 0x80U) != 0) == towardsHost)
                return endpoint.address;
        }
    }
    return 0;
}

// The device information among the class-specific descriptors; null when it isn't there whole.
const std::uint8_t* deviceInformation(const std::vector<std::uint8_t>& extra) {
    std::size_t at = 0;
    while (at + 2 <= extra.size()) {
        const std::size_t length = extra[at];
        if (length < 2 || at + length > extra.size())
            return nullptr;
        if (length >= kInformationSize && extra[at + 1] == 0x24 && extra[at + 2] == 0x01)
            return &extra[at];
        at += length;
    }
    return nullptr;
}

std::uint16_t littleEndian16(const std::uint8_t* p) {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

void appendUtf8(std::string& text, std::uint32_t code) {
    const auto put = [&text](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0U | (code >> 6));
        put(0x80U | (code & 0x3FU));
    } else if (code < 0x10000) {
        put(0xE0U | (code >> 12));
        put(0x80U | ((code >> 6) & 0x3FU));
        put(0x80U | (code & 0x3FU));
    } else {
        put(0xF0U | (code >> 18));
        put(0x80U | ((code >> 12) & 0x3FU));
        put(0x80U | ((code >> 6) & 0x3FU));
        put(0x80U | (code & 0x3FU));
    }
}

} // namespace

const UsbInterface* usb3VisionControl(const UsbDevice& device) {
    for (const UsbInterface& interface : device.interfaces) {
        if (isUsb3Vision(interface, kControlProtocol))
            return &interface;
    }
    return nullptr;
}

UsbReading fillUsbRecord(const UsbDevice& device, const UsbStringReader& readString,
                         _OV_CC_DEVICE_INFO_& record) {
    const UsbInterface* control = usb3VisionControl(device);
    const std::uint8_t* information = control == nullptr ? nullptr : deviceInformation(control->extra);
    if (information == nullptr)
        return UsbReading::none;
    const auto string = [&](std::uint8_t index) -> std::optional<std::string> {
        // Index 0 means that the device has no such text.
        return index == 0 ? std::string() : readString(index);
    };
    const auto either = [](std::uint8_t first, std::uint8_t second) { return first != 0 ? first : second; };
    const std::optional<std::string> serial = string(either(information[kSerialIndex], device.serialIndex));
    if (!serial)
        return UsbReading::none;
    std::memset(&record, 0, sizeof record);
    record.minorVersion = littleEndian16(information + kU3vVersion);
    record.majorVersion = littleEndian16(information + kU3vVersion + 2);
    record.nTLayerType = OV_TLAYER_USB3;
    _OV_CC_USB3_DEVICE_INFO_& usb = record.transport.usb3;
    usb.controlInEndpoint = bulkEndpoint(device, kControlProtocol, true);
    usb.controlOutEndpoint = bulkEndpoint(device, kControlProtocol, false);
    usb.streamEndpoint = bulkEndpoint(device, kStreamProtocol, true);
    usb.eventEndpoint = bulkEndpoint(device, kEventProtocol, true);
    usb.vendorId = device.vendorId;
    usb.productId = device.productId;
    usb.deviceNumber = (static_cast<std::uint32_t>(device.bus) << 8) | device.address;
    usb.usbVersion = device.usbVersion;
    bool whole = true;
    const auto fill = [&](std::uint8_t index, char* text, std::size_t size) {
        const std::optional<std::string> read = string(index);
        whole = whole && read.has_value();
        copyText(read.value_or(std::string()), text, size);
    };
    fill(information[kGuidIndex], usb.deviceGuid, sizeof usb.deviceGuid);
    fill(information[kVendorIndex], usb.vendorName, sizeof usb.vendorName);
    fill(information[kModelIndex], usb.modelName, sizeof usb.modelName);
    fill(information[kFamilyIndex], usb.familyName, sizeof usb.familyName);
    fill(information[kVersionIndex], usb.deviceVersion, sizeof usb.deviceVersion);
    // The vision descriptor's "manufacturer information" is a remark, not a name.
    fill(either(device.manufacturerIndex, information[kVendorIndex]), usb.manufacturerName,
         sizeof usb.manufacturerName);
    copyText(*serial, usb.serialNumber, sizeof usb.serialNumber);
    fill(information[kUserNameIndex], usb.userDefinedName, sizeof usb.userDefinedName);
    return whole ? UsbReading::whole : UsbReading::partial;
}

std::optional<std::string> usbStringText(const std::uint8_t* descriptor, std::size_t length) {
    if (length < 2 || descriptor[1] != kStringDescriptor || descriptor[0] < 2 || descriptor[0] > length)
        return std::nullopt;
    std::string text;
    const std::size_t end = descriptor[0] & ~std::size_t{1};
    for (std::size_t at = 2; at < end; at += 2) {
        std::uint32_t code = littleEndian16(descriptor + at);
        if (code == 0)
            break;
        if (code >= 0xD800 && code <= 0xDBFF && at + 4 <= end) {
            const std::uint32_t low = littleEndian16(descriptor + at + 2);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                at += 2;
            }
        }
        appendUtf8(text, code >= 0xD800 && code <= 0xDFFF ? 0xFFFD : code);
    }
    return text;
}

} // namespace kolt::cc
