#include "camera-control/FuzzFind.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Camera/Boundary/OvStatus.h"
#include "find/GigeDiscovery.h"
#include "find/GvcpCodec.h"
#include "find/Neighbours.h"
#include "find/UsbRecord.h"
#include "find/XmlFetch.h"
#include "find/XmlLocation.h"
#include "find/XmlUnpack.h"

namespace fuzz {

namespace {

using namespace kolt::cc;

void require(bool condition) {
    if (!condition)
        std::abort();
}

// Copies to a block of exactly this size, so that a read beyond the end is seen.
std::vector<std::uint8_t> exact(const std::uint8_t* data, std::size_t size) {
    return {data, data + size};
}

template<std::size_t Size>
void requireText(const char (&field)[Size]) {
    require(std::memchr(field, 0, Size) != nullptr);
}

void checkGigeRecord(const FoundCamera& camera) {
    _OV_CC_DEVICE_INFO_ record;
    std::memset(&record, 0xEE, sizeof record);
    fillRecord(camera, record);
    const auto& gige = record.transport.gige;
    requireText(gige.manufacturerName);
    requireText(gige.modelName);
    requireText(gige.deviceVersion);
    requireText(gige.manufacturerInfo);
    requireText(gige.serialNumber);
    requireText(gige.userDefinedName);
    require(record.macHigh <= 0xFFFF);
    require(
        std::all_of(std::begin(gige.reserved), std::end(gige.reserved), [](auto byte) { return byte == 0; }));
}

void gigeRecord(const std::vector<std::uint8_t>& bytes) {
    if (bytes.size() < gvcp::kDiscoveryPayload)
        return;
    FoundCamera camera;
    camera.answer = parseDiscoveryPayload(bytes.data());
    checkGigeRecord(camera);
}

// Descriptors: one byte of endpoints, the extra bytes; strings are read from the same bytes.
void usbRecord(const std::vector<std::uint8_t>& bytes) {
    if (bytes.empty())
        return;
    UsbDevice device;
    UsbInterface control{0, 0xEF, 5, 0, {}, {bytes.begin() + 1, bytes.end()}};
    for (int i = 0; i < (bytes[0] & 7); ++i)
        control.endpoints.push_back({static_cast<std::uint8_t>(bytes[0] << i), static_cast<std::uint8_t>(i)});
    device.interfaces.push_back(control);
    const UsbStringReader reader = [&](std::uint8_t index) -> std::optional<std::string> {
        const std::size_t at = std::min<std::size_t>(index, bytes.size());
        return usbStringText(bytes.data() + at, bytes.size() - at);
    };
    _OV_CC_DEVICE_INFO_ record;
    std::memset(&record, 0xEE, sizeof record);
    if (fillUsbRecord(device, reader, record) == UsbReading::none)
        return;
    const auto& usb = record.transport.usb3;
    requireText(usb.deviceGuid);
    requireText(usb.vendorName);
    requireText(usb.modelName);
    requireText(usb.familyName);
    requireText(usb.deviceVersion);
    requireText(usb.manufacturerName);
    requireText(usb.serialNumber);
    requireText(usb.userDefinedName);
    require(
        std::all_of(std::begin(usb.reserved), std::end(usb.reserved), [](auto byte) { return byte == 0; }));
}

} // namespace

void FuzzGvcp(const std::uint8_t* data, std::size_t size) {
    if (size < 9)
        return;
    constexpr gvcp::Command kCommands[] = {gvcp::Command::discovery, gvcp::Command::forceIp,
                                           gvcp::Command::readRegister, gvcp::Command::writeRegister,
                                           gvcp::Command::readMemory};
    Expectation expected{kCommands[data[0] % 5], load16(data + 1), load32(data + 3), load16(data + 7)};
    const std::vector<std::uint8_t> datagram = exact(data + 9, size - 9);
    Acknowledge ack;
    if (parseAcknowledge(datagram.data(), datagram.size(), expected, ack) != Verdict::accepted)
        return;
    require(ack.payload == datagram.data() + gvcp::kHeaderSize);
    require(ack.length == datagram.size() - gvcp::kHeaderSize);
    if (ack.pending || ack.status != 0)
        return;
    switch (expected.command) {
    case gvcp::Command::discovery:
        require(ack.length >= gvcp::kDiscoveryPayload);
        gigeRecord(exact(ack.payload, ack.length));
        break;
    case gvcp::Command::forceIp:
        require(ack.length == 0);
        break;
    case gvcp::Command::readRegister:
    case gvcp::Command::writeRegister:
        require(ack.length == 4);
        break;
    case gvcp::Command::readMemory:
        require(ack.length == 4 + expected.count && load32(ack.payload) == expected.address);
        break;
    }
}

void FuzzRecords(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return;
    const std::vector<std::uint8_t> bytes = exact(data + 1, size - 1);
    switch (data[0] % 4) {
    case 0:
        gigeRecord(bytes);
        break;
    case 1:
        usbRecord(bytes);
        break;
    case 2:
        if (const auto text = usbStringText(bytes.data(), bytes.size()))
            require(text->find('\0') == std::string::npos);
        break;
    default:
        if (const auto neighbour = parseNeighbours(bytes.data(), bytes.size(), 2, 0x0A01003C))
            require(neighbour->mac != 0 && neighbour->mac <= 0xFFFFFFFFFFFFU);
        break;
    }
}

void FuzzXml(const std::uint8_t* data, std::size_t size) {
    const std::uint8_t* end = std::find(data, data + size, std::uint8_t{'\n'});
    const std::string url(data, end);
    const XmlLocation location = parseXmlLocation(url);
    require(location.kind != XmlLocation::Kind::local || location.length != 0);
    require(location.kind != XmlLocation::Kind::file || !location.name.empty());
    if (end == data + size)
        return;
    const std::vector<std::uint8_t> stored = exact(end + 1, static_cast<std::size_t>(data + size - end - 1));
    constexpr std::size_t kLimit = std::size_t{1} << 20;
    std::vector<std::uint8_t> xml;
    const std::uint32_t status = unpackXml(stored, kLimit, xml);
    require(xml.size() <= kLimit && xml.empty() == (status != OV_STATUS_OK));
    if (location.kind == XmlLocation::Kind::file)
        return; // no excursions into this machine's files
    // A device whose memory is what is stored, from address 0, with the URL in both of its registers.
    const MemoryReader read = [&](std::uint64_t address, std::uint8_t* destination, std::size_t length) {
        if (address == gvcp::kFirstUrl || address == gvcp::kSecondUrl) {
            std::memset(destination, 0, length);
            std::memcpy(destination, url.data(), std::min(length, url.size()));
            return OV_STATUS_OK;
        }
        if (address > stored.size() || length > stored.size() - address)
            return OV_STATUS_INVALID_ADDRESS;
        std::memcpy(destination, stored.data() + address, length);
        return OV_STATUS_OK;
    };
    const std::uint32_t fetched = fetchXml(read, xml);
    require(xml.empty() == (fetched != OV_STATUS_OK));
}

} // namespace fuzz
