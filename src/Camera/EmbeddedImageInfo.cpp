#include "Camera/EmbeddedImageInfo.h"

namespace {

uint32_t LittleEndian32(const uint8_t* b) {
    return static_cast<uint32_t>(b[0]) | static_cast<uint32_t>(b[1]) << 8 |
           static_cast<uint32_t>(b[2]) << 16 | static_cast<uint32_t>(b[3]) << 24;
}

uint32_t LittleEndian16(const uint8_t* b) {
    return static_cast<uint32_t>(b[0]) | static_cast<uint32_t>(b[1]) << 8;
}

void DecodeTimestamp(const uint8_t* b, _EMBEDDED_IMAGE_INFO_& info) {
    info.secondCount = b[3] >> 3;
    info.cycleCount = ((b[3] & 7u) << 10) + (static_cast<uint32_t>(b[2]) << 2) + (b[1] >> 6);
    info.cycleOffset = ((b[1] & 63u) << 8) + b[0];
}

// Two forms, told apart by the lowest bit: four values of 16 bits (x and width even, as the bit is taken), or
// 12-bit values packed in pairs.
void DecodeRegion(const uint8_t* b, _EMBEDDED_IMAGE_INFO_& info) {
    const uint32_t b0 = b[0], b1 = b[1], b2 = b[2], b3 = b[3], b4 = b[4], b5 = b[5], b6 = b[6], b7 = b[7];
    if (b0 & 1u) {
        info.offsetX = (b1 << 8) + (b0 & 254u);
        info.offsetY = (b3 << 8) + b2;
        info.width = (b5 << 8) + (b4 & 254u);
        info.height = (b7 << 8) + b6;
    } else {
        info.offsetX = ((b1 & 15u) << 8) + b0;
        info.offsetY = (b2 << 4) + (b1 >> 4);
        info.width = ((b5 & 15u) << 8) + b4;
        info.height = (b6 << 4) + ((b7 << 12) & 0xF000u) + (b5 >> 4);
    }
}

void DecodeField(unsigned bit, const uint8_t* b, _EMBEDDED_IMAGE_INFO_& info) {
    switch (bit) {
    case EMBEDDED_TIMESTAMP:
        DecodeTimestamp(b, info);
        break;
    case EMBEDDED_GAIN:
        info.gain = static_cast<float>(static_cast<int32_t>(LittleEndian32(b))) / 1000.0f;
        break;
    case EMBEDDED_EXPOSURE:
        info.exposure = static_cast<float>(LittleEndian32(b));
        info.exposureParsed = 1.0f;
        break;
    case EMBEDDED_BRIGHTNESS:
        info.brightness = LittleEndian32(b);
        break;
    case EMBEDDED_WHITE_BALANCE:
        info.red = LittleEndian16(b);
        info.green = LittleEndian16(b + 2);
        info.blue = LittleEndian32(b + 4);
        break;
    case EMBEDDED_FRAME_NUMBER:
        info.frameNumber = LittleEndian32(b);
        break;
    case EMBEDDED_TRIGGER_NUMBER:
        info.triggerCount = LittleEndian32(b);
        break;
    case EMBEDDED_ALARM:
        info.input = b[0];
        info.output = b[1];
        break;
    case EMBEDDED_ROI:
        DecodeRegion(b, info);
        break;
    default:
        break;
    }
}

} // namespace

_EMBEDDED_IMAGE_INFO_ DecodeEmbeddedBlock(const uint8_t* data, size_t size, uint64_t selector) {
    _EMBEDDED_IMAGE_INFO_ info{};
    if (!data)
        return info;
    size_t offset = 0;
    for (unsigned bit = EMBEDDED_TIMESTAMP; bit <= EMBEDDED_ROI; ++bit) {
        if (!(selector >> bit & 1u))
            continue;
        const size_t length = bit == EMBEDDED_WHITE_BALANCE || bit == EMBEDDED_ROI ? 8 : 4;
        if (offset + length > size)
            return info;
        DecodeField(bit, data + offset, info);
        offset += length;
    }
    return info;
}
