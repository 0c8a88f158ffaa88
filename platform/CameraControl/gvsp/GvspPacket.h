// GVSP, the stream protocol of GigE Vision, as bytes: packets taken apart, resend commands built. Nothing
// here does I/O. What comes from the network is untrusted: a length is checked before anything is read.
//
// A frame ("block") is a leader (packet id 0), data packets (1 to n) and a trailer (n + 1). Headers are of 8
// bytes with block ids of 16 bits and packet ids of 24, or, with extended ids, of 20 bytes with 64 and 32.
#ifndef KOLT_CAMERA_CONTROL_GVSP_PACKET_H
#define KOLT_CAMERA_CONTROL_GVSP_PACKET_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "find/GvcpCodec.h"

namespace kolt::cc::gvsp {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kExtendedHeaderSize = 20;

enum Format : std::uint8_t { kLeader = 1, kTrailer = 2, kData = 3 };

// Answers to a resend command for packets that the camera can't send.
enum Status : std::uint16_t {
    kError = 0x8000, // the bit that all of them have
    kNotYetAvailable = 0x8010,
};

struct Packet {
    std::uint16_t status = 0;
    bool extended = false;
    std::uint8_t format = 0;
    std::uint32_t id = 0;
    std::uint64_t blockId = 0;
    const std::uint8_t* data = nullptr; // behind the header; within the bytes given
    std::size_t length = 0;

    bool isError() const { return (status & kError) != 0; }
};

inline std::uint64_t load64(const std::uint8_t* p) {
    return (std::uint64_t{load32(p)} << 32) | load32(p + 4);
}

// False for what is shorter than its header. In place: it is called for each packet.
inline bool parse(const std::uint8_t* bytes, std::size_t length, Packet& packet) {
    constexpr std::uint8_t kExtendedIds = 0x80; // in the format byte
    if (length < kHeaderSize) {
        return false;
    }
    const bool extended = (bytes[4] & kExtendedIds) != 0;
    const std::size_t header = extended ? kExtendedHeaderSize : kHeaderSize;
    if (length < header) {
        return false;
    }
    packet.status = load16(bytes);
    packet.extended = extended;
    packet.format = bytes[4] & 0x7F;
    packet.blockId = extended ? load64(bytes + 8) : load16(bytes + 2);
    packet.id = extended ? load32(bytes + 16) : load32(bytes + 4) & 0xFF'FFFF;
    packet.data = bytes + header;
    packet.length = length - header;
    return true;
}

// What a leader tells of its frame.
struct Leader {
    std::uint16_t payloadType = 0; // without the bit for chunks
    std::uint64_t timestamp = 0;   // ticks of the camera
    bool hasImage = false;         // the rest is there
    std::uint32_t pixelFormat = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
};

// Of the bytes behind a leader's header. False for what is too short.
bool parseLeader(const std::uint8_t* data, std::size_t length, Leader& leader);

// Packets of one frame to be sent again, first and last included.
struct ResendRequest {
    std::uint64_t blockId = 0;
    bool extended = false;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

// The GVCP command. requestId is not 0.
std::vector<std::uint8_t> resendCommand(std::uint16_t requestId, const ResendRequest& request);

} // namespace kolt::cc::gvsp

#endif
