// GVCP, the control protocol of GigE Vision, as a device sees it: commands taken apart, answers put together.
// Pure functions; nothing here knows of sockets. Written for the virtual camera alone, so that a client
// library and the camera cannot be wrong in the same way.
#ifndef VCAM_PROTOCOL_GVCPCODEC_H
#define VCAM_PROTOCOL_GVCPCODEC_H

#include "Protocol/Wire.h"

#include <array>
#include <cstddef>
#include <optional>

namespace vcam {

constexpr uint16_t kGvcpPort = 3956;
constexpr size_t kGvcpHeaderLength = 8;
constexpr size_t kGvcpMaxPayload = 540;     // keeps a datagram within 576 bytes of IP
constexpr size_t kReadMemoryMaxCount = 536; // payload less the address
constexpr size_t kDiscoveryRecordLength = 248;

enum class Status : uint16_t {
    Success = 0x0000,
    PacketResent = 0x0100, // a GVSP packet that is sent again
    NotImplemented = 0x8001,
    InvalidParameter = 0x8002,
    InvalidAddress = 0x8003,
    WriteProtect = 0x8004,
    BadAlignment = 0x8005,
    AccessDenied = 0x8006,
    Busy = 0x8007,
    PacketUnavailable = 0x800C,
    InvalidHeader = 0x800E,
    Error = 0x8FFF,
};

enum class CommandCode : uint16_t {
    Discovery = 0x0002,
    ForceIp = 0x0004,
    PacketResend = 0x0040,
    ReadRegister = 0x0080,
    WriteRegister = 0x0082,
    ReadMemory = 0x0084,
    WriteMemory = 0x0086,
    Pending = 0x0088, // only its answer, 0x0089, exists
    Action = 0x0100,
};

// An answer's code is its command's plus one.
constexpr uint16_t AnswerCode(CommandCode code) {
    return static_cast<uint16_t>(static_cast<uint16_t>(code) + 1);
}

// One command. `payload` points into the datagram it was parsed from.
struct GvcpCommand {
    uint8_t flags = 0;
    CommandCode code = CommandCode::Discovery;
    uint16_t requestId = 0;
    const uint8_t* payload = nullptr;
    size_t payloadLength = 0;

    bool WantsAnswer() const { return (flags & 0x01) != 0; }
    bool AllowsBroadcastAnswer() const { return (flags & 0x10) != 0; } // DISCOVERY and FORCEIP
    bool HasExtendedIds() const { return (flags & 0x10) != 0; }        // PACKETRESEND
};

// False for whatever is no GVCP command: wrong key, cut header, a length that the datagram does not hold.
bool ParseCommand(const uint8_t* datagram, size_t length, GvcpCommand& command);

struct ForceIpRequest {
    std::array<uint8_t, 6> mac{};
    uint32_t address = 0;
    uint32_t mask = 0;
    uint32_t gateway = 0;
};

struct RegisterWrite {
    uint32_t address = 0;
    uint32_t value = 0;
};

struct MemoryRead {
    uint32_t address = 0;
    uint16_t count = 0;
};

struct MemoryWrite {
    uint32_t address = 0;
    const uint8_t* data = nullptr; // inside the datagram
    size_t length = 0;
};

struct ResendRequest {
    uint16_t channel = 0;
    uint64_t blockId = 0;
    uint32_t firstPacket = 0;
    uint32_t lastPacket = 0; // inclusive
};

// Payloads; nullopt when the payload has not the length that its command wants (answer: InvalidHeader).
std::optional<ForceIpRequest> ParseForceIp(const GvcpCommand& command);
std::optional<std::vector<uint32_t>> ParseReadRegister(const GvcpCommand& command);
std::optional<std::vector<RegisterWrite>> ParseWriteRegister(const GvcpCommand& command);
std::optional<MemoryRead> ParseReadMemory(const GvcpCommand& command);
std::optional<MemoryWrite> ParseWriteMemory(const GvcpCommand& command);
std::optional<ResendRequest> ParsePacketResend(const GvcpCommand& command);

Bytes EncodeAnswer(Status status, uint16_t answerCode, uint16_t requestId, const Bytes& payload);
// WRITEREG and WRITEMEM: how many registers or bytes were written.
Bytes EncodeWriteAnswer(Status status, CommandCode command, uint16_t requestId, uint16_t written);
// "I am at it, wait this long."
Bytes EncodePending(uint16_t requestId, uint16_t milliseconds);

} // namespace vcam

#endif
