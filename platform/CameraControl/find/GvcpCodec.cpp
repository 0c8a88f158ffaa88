#include "find/GvcpCodec.h"

#include <algorithm>

#include "Camera/Boundary/OvStatus.h"

namespace kolt::cc {

namespace {

using namespace gvcp;

constexpr std::uint8_t kKey = 0x42;
constexpr std::uint8_t kAckRequired = 0x01;
// A camera on a foreign subnet has no route to us: it may answer by broadcast.
constexpr std::uint8_t kAllowBroadcastAck = 0x10;

constexpr std::size_t kForceIpPayload = 56;

Datagram command(Command code, std::uint8_t flags, std::uint16_t requestId, std::size_t payload) {
    Datagram bytes(kHeaderSize + payload, 0);
    bytes[0] = kKey;
    bytes[1] = flags;
    store16(&bytes[2], static_cast<std::uint16_t>(code));
    store16(&bytes[4], static_cast<std::uint16_t>(payload));
    store16(&bytes[6], requestId);
    return bytes;
}

std::string text(const std::uint8_t* field, std::size_t size) {
    const std::uint8_t* end = std::find(field, field + size, std::uint8_t{0});
    return {field, end};
}

bool lengthFits(const Expectation& expected, const Acknowledge& ack) {
    switch (expected.command) {
    case Command::discovery:
        // Later revisions of the protocol may append; none may give less.
        return ack.length >= kDiscoveryPayload;
    case Command::forceIp:
        return ack.length == 0;
    case Command::readRegister:
    case Command::writeRegister:
        return ack.length == 4;
    case Command::readMemory:
        return ack.length == 4 + expected.count;
    }
    return false;
}

} // namespace

Datagram discoveryCommand(std::uint16_t requestId, bool broadcastAnswer) {
    const std::uint8_t flags = broadcastAnswer ? kAckRequired | kAllowBroadcastAck : kAckRequired;
    return command(Command::discovery, flags, requestId, 0);
}

Datagram forceIpCommand(std::uint16_t requestId, const ForceIpRequest& request) {
    Datagram bytes = command(Command::forceIp, kAckRequired | kAllowBroadcastAck, requestId, kForceIpPayload);
    std::uint8_t* payload = &bytes[kHeaderSize];
    store16(payload + 2, static_cast<std::uint16_t>(request.mac >> 32));
    store32(payload + 4, static_cast<std::uint32_t>(request.mac));
    store32(payload + 20, request.ip);
    store32(payload + 36, request.mask);
    store32(payload + 52, request.gateway);
    return bytes;
}

Datagram readRegisterCommand(std::uint16_t requestId, std::uint32_t address) {
    Datagram bytes = command(Command::readRegister, kAckRequired, requestId, 4);
    store32(&bytes[kHeaderSize], address);
    return bytes;
}

Datagram writeRegisterCommand(std::uint16_t requestId, std::uint32_t address, std::uint32_t value) {
    Datagram bytes = command(Command::writeRegister, kAckRequired, requestId, 8);
    store32(&bytes[kHeaderSize], address);
    store32(&bytes[kHeaderSize + 4], value);
    return bytes;
}

Datagram readMemoryCommand(std::uint16_t requestId, std::uint32_t address, std::uint16_t count) {
    Datagram bytes = command(Command::readMemory, kAckRequired, requestId, 8);
    store32(&bytes[kHeaderSize], address);
    store16(&bytes[kHeaderSize + 6], count);
    return bytes;
}

DiscoveryAnswer parseDiscoveryPayload(const std::uint8_t* payload) {
    DiscoveryAnswer answer;
    answer.versionMajor = load16(payload + kVersion);
    answer.versionMinor = load16(payload + kVersion + 2);
    answer.deviceMode = load32(payload + kDeviceMode);
    // The top half of the high word is reserved; some cameras leave rubbish there.
    answer.mac =
        (static_cast<std::uint64_t>(load16(payload + kMacHigh + 2)) << 32) | load32(payload + kMacLow);
    answer.ipConfigOptions = load32(payload + kIpConfigOptions);
    answer.ipConfigCurrent = load32(payload + kIpConfigCurrent);
    answer.currentIp = load32(payload + kCurrentIp);
    answer.subnetMask = load32(payload + kSubnetMask);
    answer.defaultGateway = load32(payload + kDefaultGateway);
    answer.manufacturerName = text(payload + kManufacturerName, 32);
    answer.modelName = text(payload + kModelName, 32);
    answer.deviceVersion = text(payload + kDeviceVersion, 32);
    answer.manufacturerInfo = text(payload + kManufacturerInfo, 48);
    answer.serialNumber = text(payload + kSerialNumber, 16);
    answer.userDefinedName = text(payload + kUserDefinedName, 16);
    return answer;
}

Verdict parseAcknowledge(const std::uint8_t* data, std::size_t length, const Expectation& expected,
                         Acknowledge& out) {
    if (length < kHeaderSize)
        return Verdict::tooShort;
    const std::uint16_t code = load16(data + 2);
    Acknowledge ack;
    ack.status = load16(data);
    ack.length = load16(data + 4);
    ack.payload = data + kHeaderSize;
    if (ack.length != length - kHeaderSize)
        return Verdict::wrongLength;
    if (code != ackOf(expected.command) && code != kPendingAck)
        return Verdict::wrongCommand;
    if (load16(data + 6) != expected.requestId)
        return Verdict::wrongId;
    if (code == kPendingAck) {
        if (ack.length != 4)
            return Verdict::wrongLength;
        ack.pending = true;
        ack.pendingMs = load16(ack.payload + 2);
        ack.status = 0;
        out = ack;
        return Verdict::accepted;
    }
    // An error may come with or without a payload: nothing of it is read.
    if (statusFromGvcp(ack.status) == OV_STATUS_OK) {
        if (!lengthFits(expected, ack))
            return Verdict::wrongLength;
        if (expected.command == Command::readMemory && load32(ack.payload) != expected.address)
            return Verdict::wrongId;
        ack.status = 0;
    }
    out = ack;
    return Verdict::accepted;
}

std::uint32_t statusFromGvcp(std::uint16_t gvcpStatus) {
    // The top bit is the severity: without it the request was carried out.
    if ((gvcpStatus & 0x8000U) == 0)
        return OV_STATUS_OK;
    switch (gvcpStatus) {
    case 0x8001: // not implemented
        return OV_STATUS_GVCP_NOT_IMPLEMENTED;
    case 0x8002: // invalid parameter
        return OV_STATUS_INVALID_PARAMETER;
    case 0x8003: // invalid address
    case 0x8005: // bad alignment
        return OV_STATUS_INVALID_ADDRESS;
    case 0x8004: // write protect
        return OV_STATUS_WRITE_PROTECTED;
    case 0x8006: // access denied
        return OV_STATUS_ACCESS_DENIED;
    case 0x8007: // busy
        return OV_STATUS_BUSY;
    case 0x8009: // message mismatch
    case 0x800A: // invalid protocol
    case 0x800B: // no message
    case 0x800D: // data overrun
    case 0x800E: // invalid header
        return OV_STATUS_PACKET;
    case 0x800F: // wrong configuration
        return OV_STATUS_PRECONDITION;
    default:
        return OV_STATUS_UNKNOWN;
    }
}

} // namespace kolt::cc
