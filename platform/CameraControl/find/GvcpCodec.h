// The GigE Vision Control Protocol as bytes: commands built, acknowledges parsed. Nothing here does I/O.
//
// All numbers on the wire are big-endian. A command is a header of 8 bytes (key 0x42, flags, command, payload
// length, request id) and its payload; an acknowledge is a header of 8 bytes (status, acknowledge code,
// payload length, id of the request) and its payload. What comes from the network is untrusted: the parser
// accepts a datagram only when its length is exactly what its header says and its payload is what its code
// demands.
#ifndef KOLT_CAMERA_CONTROL_GVCP_CODEC_H
#define KOLT_CAMERA_CONTROL_GVCP_CODEC_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kolt::cc {

namespace gvcp {

constexpr std::uint16_t kPort = 3956;
constexpr std::size_t kHeaderSize = 8;
// Every implementation must take datagrams of 576 bytes (IP header included) and none has to take more.
constexpr std::size_t kMaxPayload = 540;
// READMEM answers repeat the address in front of the data.
constexpr std::size_t kMaxReadMemory = 536;
constexpr std::size_t kMaxDatagram = kHeaderSize + kMaxPayload;
constexpr std::size_t kDiscoveryPayload = 248;

enum class Command : std::uint16_t {
    discovery = 0x0002,
    forceIp = 0x0004,
    readRegister = 0x0080,
    writeRegister = 0x0082,
    readMemory = 0x0084,
};

enum : std::uint16_t { kPendingAck = 0x0089 };

// An acknowledge's code is its command's plus one.
constexpr std::uint16_t ackOf(Command command) {
    return static_cast<std::uint16_t>(static_cast<std::uint16_t>(command) + 1);
}

// Bootstrap registers.
enum Register : std::uint32_t {
    kVersion = 0x0000,
    kDeviceMode = 0x0004,
    kMacHigh = 0x0008,
    kMacLow = 0x000C,
    kIpConfigOptions = 0x0010,
    kIpConfigCurrent = 0x0014,
    kCurrentIp = 0x0024,
    kSubnetMask = 0x0034,
    kDefaultGateway = 0x0044,
    kManufacturerName = 0x0048,
    kModelName = 0x0068,
    kDeviceVersion = 0x0088,
    kManufacturerInfo = 0x00A8,
    kSerialNumber = 0x00D8,
    kUserDefinedName = 0x00E8,
    kFirstUrl = 0x0200,
    kSecondUrl = 0x0400,
    kCapability = 0x0934,
    kHeartbeatTimeout = 0x0938,
    kControlChannelPrivilege = 0x0A00,
};
constexpr std::size_t kUrlSize = 512;

// Bits of the control channel privilege register.
enum : std::uint32_t { kExclusiveAccess = 1, kControlAccess = 2, kControlSwitchover = 4 };

} // namespace gvcp

using Datagram = std::vector<std::uint8_t>;

struct ForceIpRequest {
    std::uint64_t mac = 0; // 48 bits
    std::uint32_t ip = 0;
    std::uint32_t mask = 0;
    std::uint32_t gateway = 0;
};

// Commands. A request id of 0 is not allowed on the wire; the caller never passes it.
// A camera of a foreign subnet may answer a discovery by broadcast, which no router lets through: only
// whoever asks a whole network, and not one camera, allows that.
Datagram discoveryCommand(std::uint16_t requestId, bool broadcastAnswer = true);
Datagram forceIpCommand(std::uint16_t requestId, const ForceIpRequest& request);
Datagram readRegisterCommand(std::uint16_t requestId, std::uint32_t address);
Datagram writeRegisterCommand(std::uint16_t requestId, std::uint32_t address, std::uint32_t value);
// address and count are multiples of 4; count is 4 to kMaxReadMemory.
Datagram readMemoryCommand(std::uint16_t requestId, std::uint32_t address, std::uint16_t count);

// What a camera tells of itself in a DISCOVERY_ACK. Texts end at their first NUL or at the field's end, and
// keep the camera's bytes as they are.
struct DiscoveryAnswer {
    std::uint16_t versionMajor = 0;
    std::uint16_t versionMinor = 0;
    std::uint32_t deviceMode = 0;
    std::uint64_t mac = 0; // 48 bits
    std::uint32_t ipConfigOptions = 0;
    std::uint32_t ipConfigCurrent = 0;
    std::uint32_t currentIp = 0;
    std::uint32_t subnetMask = 0;
    std::uint32_t defaultGateway = 0;
    std::string manufacturerName; // at most 32 bytes
    std::string modelName;        // at most 32 bytes
    std::string deviceVersion;    // at most 32 bytes
    std::string manufacturerInfo; // at most 48 bytes
    std::string serialNumber;     // at most 16 bytes
    std::string userDefinedName;  // at most 16 bytes
};

// The payload is at least kDiscoveryPayload bytes; it is also the layout of the bootstrap registers from 0.
DiscoveryAnswer parseDiscoveryPayload(const std::uint8_t* payload);

// Why a datagram is not the acknowledge that was asked for.
enum class Verdict {
    accepted,
    tooShort,     // less than a header
    wrongLength,  // not as long as its header says, or not as long as its code demands
    wrongCommand, // another acknowledge code, or no acknowledge at all
    wrongId,      // an answer to another request
};

// A parsed acknowledge. payload points into the datagram.
struct Acknowledge {
    std::uint16_t status =
        0;                // 0 success; else an error of the camera, and the payload is empty or meaningless
    bool pending = false; // PENDING_ACK: the real answer comes within pendingMs
    std::uint16_t pendingMs = 0;
    const std::uint8_t* payload = nullptr;
    std::size_t length = 0;
};

// What is expected in answer to a command.
struct Expectation {
    gvcp::Command command;
    std::uint16_t requestId;
    std::uint32_t address = 0; // READMEM: what was asked; an answer with another address is refused
    std::size_t count = 0;     // READMEM: bytes asked
};

Verdict parseAcknowledge(const std::uint8_t* data, std::size_t length, const Expectation& expected,
                         Acknowledge& out);

// The OV status for a GVCP status word: 0 for success.
std::uint32_t statusFromGvcp(std::uint16_t gvcpStatus);

// Big-endian access; the caller guarantees the room.
inline std::uint16_t load16(const std::uint8_t* p) {
    return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}
inline std::uint32_t load32(const std::uint8_t* p) {
    return (static_cast<std::uint32_t>(p[0]) << 24) | (static_cast<std::uint32_t>(p[1]) << 16) |
           (static_cast<std::uint32_t>(p[2]) << 8) | static_cast<std::uint32_t>(p[3]);
}
inline void store16(std::uint8_t* p, std::uint16_t value) {
    p[0] = static_cast<std::uint8_t>(value >> 8);
    p[1] = static_cast<std::uint8_t>(value);
}
inline void store32(std::uint8_t* p, std::uint32_t value) {
    store16(p, static_cast<std::uint16_t>(value >> 16));
    store16(p + 2, static_cast<std::uint16_t>(value));
}

} // namespace kolt::cc

#endif
