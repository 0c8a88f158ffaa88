#include "Protocol/GvspCodec.h"

namespace vcam {

namespace {
constexpr uint16_t kPayloadImage = 0x0001;
constexpr uint16_t kExtendedChunkBit = 0x4000; // a picture with chunks behind it

uint16_t PayloadType(const FrameDescription& frame) {
    return frame.chunkBytes != 0 ? kPayloadImage | kExtendedChunkBit : kPayloadImage;
}
} // namespace

void PutGvspHeader(uint8_t* to, Status status, uint16_t blockId, PacketFormat format, uint32_t packetId) {
    Put16(to, static_cast<uint16_t>(status));
    Put16(to + 2, blockId);
    Put32(to + 4, (static_cast<uint32_t>(format) << 24) | (packetId & kGvspMaxPacketId));
}

size_t PutLeader(uint8_t* to, Status status, uint16_t blockId, const FrameDescription& frame) {
    PutGvspHeader(to, status, blockId, PacketFormat::Leader, 0);
    uint8_t* body = to + kGvspHeaderLength;
    Put16(body, 0);
    Put16(body + 2, PayloadType(frame));
    Put64(body + 4, frame.timestamp);
    Put32(body + 12, frame.pixelFormat);
    Put32(body + 16, frame.width);
    Put32(body + 20, frame.height);
    Put32(body + 24, frame.offsetX);
    Put32(body + 28, frame.offsetY);
    Put32(body + 32, 0); // no padding
    return kGvspLeaderLength;
}

size_t PutTrailer(uint8_t* to, Status status, uint16_t blockId, uint32_t packetId,
                  const FrameDescription& frame) {
    PutGvspHeader(to, status, blockId, PacketFormat::Trailer, packetId);
    uint8_t* body = to + kGvspHeaderLength;
    Put16(body, 0);
    Put16(body + 2, PayloadType(frame));
    Put32(body + 4, frame.height);
    if (frame.chunkBytes == 0)
        return kGvspTrailerLength;
    Put32(body + 8, frame.chunkBytes);
    Put32(body + 12, frame.chunkLayout);
    return kGvspChunkTrailerLength;
}

void AppendChunk(Bytes& to, uint32_t chunkId, const Bytes& data) {
    to.insert(to.end(), data.begin(), data.end());
    AppendChunkTail(to, chunkId, static_cast<uint32_t>(data.size()));
}

void AppendChunkTail(Bytes& to, uint32_t chunkId, uint32_t length) {
    Append32(to, chunkId);
    Append32(to, length);
}

} // namespace vcam
