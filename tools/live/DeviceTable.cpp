#include "DeviceTable.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace live {
namespace {

using Row = std::vector<std::string>;

bool IsWide(uint32_t c) {
    struct Range {
        uint32_t first;
        uint32_t last;
    };
    constexpr std::array<Range, 7> ranges = {{{0x1100, 0x115F},
                                              {0x2E80, 0xA4CF},
                                              {0xAC00, 0xD7A3},
                                              {0xF900, 0xFAFF},
                                              {0xFE30, 0xFE6F},
                                              {0xFF00, 0xFF60},
                                              {0x20000, 0x3FFFD}}};
    return std::any_of(ranges.begin(), ranges.end(),
                       [c](const Range& r) { return c >= r.first && c <= r.last; });
}

void Append(std::string& text, const std::vector<Row>& rows) {
    std::vector<size_t> widths(rows.front().size());
    for (const Row& row : rows)
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], TerminalWidth(row[i]));
    for (const Row& row : rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i)
            line += row[i] + std::string(widths[i] - TerminalWidth(row[i]) + 2, ' ');
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
}

std::string OrDash(const std::string& text) {
    return text.empty() ? "-" : text;
}

Row GigeRow(size_t number, const ListedDevice& device) {
    const DeviceRecord& record = device.record;
    const _OV_CC_GIGE_DEVICE_INFO_& gige = record.transport.gige;
    return {std::to_string(number),
            OrDash(ModelOf(record)),
            OrDash(SerialOf(record)),
            OrDash(UserNameOf(record)),
            IpText(gige.currentIp),
            IpText(gige.currentSubnetMask),
            IpText(gige.defaultGateway),
            MacText(record),
            IpText(gige.hostInterface),
            IpConfigText(gige.ipConfigCurrent),
            OnForeignSubnet(record) ? "other subnet"
            : device.accessible     ? "free"
                                    : "in use",
            OrDash(ManufacturerOf(record)),
            OrDash(VersionOf(record)),
            OrDash(CameraText(gige.manufacturerInfo, sizeof gige.manufacturerInfo))};
}

Row UsbRow(size_t number, const ListedDevice& device) {
    const DeviceRecord& record = device.record;
    const _OV_CC_USB3_DEVICE_INFO_& usb = record.transport.usb3;
    std::array<char, 16> ids{};
    std::snprintf(ids.data(), ids.size(), "%04x:%04x", usb.vendorId, usb.productId);
    std::array<char, 16> version{};
    std::snprintf(version.data(), version.size(), "%x.%x", usb.usbVersion >> 8, usb.usbVersion >> 4 & 0xF);
    return {std::to_string(number),
            OrDash(ModelOf(record)),
            OrDash(SerialOf(record)),
            OrDash(UserNameOf(record)),
            ids.data(),
            version.data(),
            usb.controlInEndpoint == 0 ? "boot loader"
            : device.accessible        ? "free"
                                       : "in use",
            OrDash(CameraText(usb.vendorName, sizeof usb.vendorName)),
            OrDash(ManufacturerOf(record)),
            OrDash(CameraText(usb.familyName, sizeof usb.familyName)),
            OrDash(VersionOf(record)),
            OrDash(CameraText(usb.deviceGuid, sizeof usb.deviceGuid))};
}

} // namespace

size_t TerminalWidth(const std::string& utf8) {
    size_t width = 0;
    for (size_t i = 0; i < utf8.size();) {
        const auto first = static_cast<uint8_t>(utf8[i]);
        const size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        uint32_t point = length == 1 ? first : first & (0xFFU >> (length + 1));
        for (size_t k = 1; k < length && i + k < utf8.size(); ++k)
            point = point << 6 | (static_cast<uint8_t>(utf8[i + k]) & 0x3FU);
        width += IsWide(point) ? 2 : 1;
        i += length;
    }
    return width;
}

std::string IpConfigText(uint32_t ipConfigCurrent) {
    // Bits 31 to 29 of the register counted from its most significant end: the three lowest ones.
    std::string text;
    auto add = [&text](const char* name) { text += (text.empty() ? "" : "+") + std::string(name); };
    if ((ipConfigCurrent & 1) != 0)
        add("persistent");
    if ((ipConfigCurrent & 2) != 0)
        add("DHCP");
    if ((ipConfigCurrent & 4) != 0)
        add("link-local");
    return text.empty() ? "-" : text;
}

std::string DeviceTable(const std::vector<ListedDevice>& devices) {
    std::vector<Row> gige = {{"#", "model", "serial", "user name", "IP", "mask", "gateway", "MAC",
                              "interface", "IP by", "access", "manufacturer", "version", "information"}};
    std::vector<Row> usb = {{"#", "model", "serial", "user name", "ids", "USB", "access", "vendor",
                             "manufacturer", "family", "version", "GUID"}};
    for (size_t i = 0; i < devices.size(); ++i) {
        if (IsGige(devices[i].record))
            gige.push_back(GigeRow(i + 1, devices[i]));
        else
            usb.push_back(UsbRow(i + 1, devices[i]));
    }
    std::string text = std::to_string(devices.size()) + (devices.size() == 1 ? " camera\n" : " cameras\n");
    if (gige.size() > 1) {
        text += "\nGigE Vision\n";
        Append(text, gige);
    }
    if (usb.size() > 1) {
        text += "\nUSB3 Vision\n";
        Append(text, usb);
    }
    return text;
}

} // namespace live
