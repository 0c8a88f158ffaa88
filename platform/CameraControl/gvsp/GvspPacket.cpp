#include "gvsp/GvspPacket.h"

#include "find/GvcpCodec.h"

namespace kolt::cc::gvsp {

namespace {

constexpr std::uint16_t kResendCommand = 0x0040;
constexpr std::uint8_t kCommandKey = 0x42;
constexpr std::uint8_t kCommandExtendedIds = 0x10;
constexpr std::uint16_t kChunkBit = 0x4000;
constexpr std::size_t kLeastLeader = 12; // flags, payload type, timestamp
constexpr std::size_t kImageLeader = 32; // and format, size and place; padding follows

// Payload types whose leader describes an image: image, chunk data and extended chunk data.
bool describesImage(std::uint16_t payloadType) {
    return payloadType == 1 || payloadType == 4 || payloadType == 5;
}

} // namespace

bool parseLeader(const std::uint8_t* data, std::size_t length, Leader& leader) {
    if (length < kLeastLeader) {
        return false;
    }
    leader = {};
    leader.payloadType = static_cast<std::uint16_t>(load16(data + 2) & ~kChunkBit);
    leader.timestamp = load64(data + 4);
    if (!describesImage(leader.payloadType) || length < kImageLeader) {
        return true;
    }
    leader.pixelFormat = load32(data + 12);
    leader.width = load32(data + 16);
    leader.height = load32(data + 20);
    leader.offsetX = load32(data + 24);
    leader.offsetY = load32(data + 28);
    leader.hasImage = leader.width > 0 && leader.height > 0;
    return true;
}

std::vector<std::uint8_t> resendCommand(std::uint16_t requestId, const ResendRequest& request) {
    const std::size_t payload = request.extended ? 20 : 12;
    std::vector<std::uint8_t> bytes(gvcp::kHeaderSize + payload, 0);
    bytes[0] = kCommandKey;
    bytes[1] = request.extended ? kCommandExtendedIds : 0; // no acknowledge: the packets themselves are it
    store16(&bytes[2], kResendCommand);
    store16(&bytes[4], static_cast<std::uint16_t>(payload));
    store16(&bytes[6], requestId);
    std::uint8_t* const body = &bytes[gvcp::kHeaderSize]; // stream channel 0
    if (request.extended) {
        store32(body + 12, static_cast<std::uint32_t>(request.blockId >> 32));
        store32(body + 16, static_cast<std::uint32_t>(request.blockId));
    } else {
        store16(body + 2, static_cast<std::uint16_t>(request.blockId));
    }
    store32(body + 4, request.first);
    store32(body + 8, request.last);
    return bytes;
}

} // namespace kolt::cc::gvsp
