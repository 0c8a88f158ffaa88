// GVSP, the stream protocol of GigE Vision: headers of the packets that a device sends, in the 16-bit block
// id form.
#ifndef VCAM_PROTOCOL_GVSPCODEC_H
#define VCAM_PROTOCOL_GVSPCODEC_H

#include "Protocol/GvcpCodec.h"

namespace vcam {

constexpr size_t kGvspHeaderLength = 8;
constexpr size_t kGvspPacketOverhead =
    20 + 8 + kGvspHeaderLength; // IP, UDP and GVSP headers within the packet size
constexpr size_t kGvspLeaderLength = kGvspHeaderLength + 36;
constexpr size_t kGvspTrailerLength = kGvspHeaderLength + 8;
constexpr size_t kGvspChunkTrailerLength = kGvspHeaderLength + 16;
constexpr uint32_t kGvspMaxPacketId = 0xFFFFFF;

enum class PacketFormat : uint8_t { Leader = 1, Trailer = 2, Payload = 3 };

// What the leader and the trailer say of a frame.
struct FrameDescription {
    uint64_t timestamp = 0; // ticks
    uint32_t pixelFormat = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t offsetX = 0;
    uint32_t offsetY = 0;
    uint32_t chunkBytes =
        0; // 0: no chunk data follows the picture; else length of picture chunk and all others
    uint32_t chunkLayout = 0;
};

// The block ids run from 1 to 65535 and round again; 0 marks a test packet.
constexpr uint16_t BlockIdOfFrame(uint64_t frameIndex) {
    return static_cast<uint16_t>(frameIndex % 65535 + 1);
}

void PutGvspHeader(uint8_t* to, Status status, uint16_t blockId, PacketFormat format, uint32_t packetId);
// Both write the header too and return the length of the whole packet.
size_t PutLeader(uint8_t* to, Status status, uint16_t blockId, const FrameDescription& frame);
size_t PutTrailer(uint8_t* to, Status status, uint16_t blockId, uint32_t packetId,
                  const FrameDescription& frame);
// Appends one chunk: data, id, length. A reader walks the chunks from the end of the frame.
void AppendChunk(Bytes& to, uint32_t chunkId, const Bytes& data);
// Id and length behind chunk data that is in place already.
void AppendChunkTail(Bytes& to, uint32_t chunkId, uint32_t length);

} // namespace vcam

#endif
