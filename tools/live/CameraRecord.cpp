#include "CameraRecord.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <iconv.h>

namespace live {
namespace {

/// Bytes of the UTF-8 sequence at the beginning of `text`, or 0 where there is none.
size_t Utf8Length(const std::string& text, size_t at) {
    const auto first = static_cast<uint8_t>(text[at]);
    const size_t length = first < 0x80 ? 1 : first >= 0xF0 && first < 0xF5 ? 4 : first >= 0xE0 ? 3 : 2;
    if ((first >= 0x80 && first < 0xC2) || first >= 0xF5 || at + length > text.size())
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((static_cast<uint8_t>(text[at + i]) & 0xC0) != 0x80)
            return 0;
    const auto second = length > 1 ? static_cast<uint8_t>(text[at + 1]) : uint8_t{0x80};
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool beyond = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
    return overlong || beyond ? 0 : length;
}

bool IsUtf8(const std::string& text) {
    for (size_t at = 0; at < text.size();) {
        const size_t length = Utf8Length(text, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

std::string FromGb18030(std::string text) {
    const iconv_t converter = iconv_open("UTF-8", "GB18030");
    if (reinterpret_cast<intptr_t>(converter) == -1)
        return {};
    std::string result(text.size() * 4, '\0');
    char* in = text.data();
    size_t inLeft = text.size();
    char* out = result.data();
    size_t outLeft = result.size();
    const bool converted = iconv(converter, &in, &inLeft, &out, &outLeft) != static_cast<size_t>(-1);
    iconv_close(converter);
    result.resize(converted ? result.size() - outLeft : 0);
    return result;
}

/// A terminal acts upon control characters: they must not come from the network.
bool IsControl(const std::string& text, size_t at) {
    const auto c = static_cast<uint8_t>(text[at]);
    const bool c1 = c == 0xC2 && at + 1 < text.size() && static_cast<uint8_t>(text[at + 1]) < 0xA0;
    return c < 0x20 || c == 0x7F || c1;
}

std::string WithoutControls(const std::string& text) {
    std::string clean;
    for (size_t at = 0; at < text.size();) {
        const size_t length = Utf8Length(text, at);
        if (IsControl(text, at))
            clean += '?';
        else
            clean += text.substr(at, length);
        at += length;
    }
    return clean;
}

template<size_t size>
std::string Field(const char (&field)[size]) {
    return CameraText(field, size);
}

} // namespace

std::string CameraText(const char* field, size_t size) {
    std::string text(field, strnlen(field, size));
    if (!IsUtf8(text)) {
        const std::string converted = FromGb18030(text);
        if (converted.empty() || !IsUtf8(converted))
            for (char& c : text)
                c = static_cast<uint8_t>(c) < 0x80 ? c : '?';
        else
            text = converted;
    }
    text = WithoutControls(text);
    const size_t last = text.find_last_not_of(' ');
    return last == std::string::npos ? std::string() : text.substr(0, last + 1);
}

std::string IpText(uint32_t address) {
    return std::to_string(address >> 24) + "." + std::to_string(address >> 16 & 0xFF) + "." +
           std::to_string(address >> 8 & 0xFF) + "." + std::to_string(address & 0xFF);
}

std::optional<uint32_t> IpFromText(const std::string& text) {
    uint32_t address = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int part = 0; part < 4; ++part) {
        if (part > 0 && (at == end || *at++ != '.'))
            return std::nullopt;
        uint8_t value = 0;
        const auto read = std::from_chars(at, end, value);
        if (read.ec != std::errc() || read.ptr - at > 3)
            return std::nullopt;
        at = read.ptr;
        address = address << 8 | value;
    }
    return at == end ? std::optional<uint32_t>(address) : std::nullopt;
}

std::string MacText(const DeviceRecord& device) {
    std::array<char, 20> text{};
    const uint32_t high = device.macHigh;
    const uint32_t low = device.macLow;
    std::snprintf(text.data(), text.size(), "%02X:%02X:%02X:%02X:%02X:%02X", high >> 8 & 0xFF, high & 0xFF,
                  low >> 24, low >> 16 & 0xFF, low >> 8 & 0xFF, low & 0xFF);
    return text.data();
}

bool IsGige(const DeviceRecord& device) {
    return device.nTLayerType == OV_TLAYER_GIGE;
}

std::string ModelOf(const DeviceRecord& device) {
    return IsGige(device) ? Field(device.transport.gige.modelName) : Field(device.transport.usb3.modelName);
}

std::string SerialOf(const DeviceRecord& device) {
    return IsGige(device) ? Field(device.transport.gige.serialNumber)
                          : Field(device.transport.usb3.serialNumber);
}

std::string UserNameOf(const DeviceRecord& device) {
    return IsGige(device) ? Field(device.transport.gige.userDefinedName)
                          : Field(device.transport.usb3.userDefinedName);
}

std::string ManufacturerOf(const DeviceRecord& device) {
    return IsGige(device) ? Field(device.transport.gige.manufacturerName)
                          : Field(device.transport.usb3.manufacturerName);
}

std::string VersionOf(const DeviceRecord& device) {
    return IsGige(device) ? Field(device.transport.gige.deviceVersion)
                          : Field(device.transport.usb3.deviceVersion);
}

std::string TitleOf(const DeviceRecord& device) {
    std::string title = ModelOf(device);
    if (!SerialOf(device).empty())
        title += (title.empty() ? "" : " ") + SerialOf(device);
    const std::string way = IsGige(device) ? IpText(device.transport.gige.currentIp) : "USB";
    return title.empty() ? way : title + " (" + way + ")";
}

bool OnForeignSubnet(const DeviceRecord& device) {
    if (!IsGige(device))
        return false;
    const _OV_CC_GIGE_DEVICE_INFO_& gige = device.transport.gige;
    return gige.hostInterface != 0 && ((gige.currentIp ^ gige.hostInterface) & gige.currentSubnetMask) != 0;
}

bool SameCamera(const DeviceRecord& a, const DeviceRecord& b) {
    if (a.nTLayerType != b.nTLayerType)
        return false;
    if (!IsGige(a))
        return SerialOf(a) == SerialOf(b) && ModelOf(a) == ModelOf(b);
    const bool macKnown = (a.macHigh | a.macLow) != 0 && (b.macHigh | b.macLow) != 0;
    return macKnown ? a.macHigh == b.macHigh && a.macLow == b.macLow
                    : a.transport.gige.currentIp == b.transport.gige.currentIp;
}

DeviceRecord RemoteRecord(uint32_t address) {
    DeviceRecord device{};
    device.nTLayerType = OV_TLAYER_GIGE;
    device.transport.gige.currentIp = address;
    return device;
}

} // namespace live
