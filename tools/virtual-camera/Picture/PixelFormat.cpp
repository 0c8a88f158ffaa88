#include "Picture/PixelFormat.h"

#include <algorithm>

namespace vcam {

const std::vector<PixelFormat>& PixelFormats() {
    constexpr auto plain = Packing::Plain;
    constexpr auto pairs = Packing::Pairs;
    static const std::vector<PixelFormat> formats = {
        {0x01080001, "Mono8", Layout::Mono, 8, plain, 0, 0},
        {0x01100003, "Mono10", Layout::Mono, 10, plain, 0, 0},
        {0x010C0004, "Mono10Packed", Layout::Mono, 10, pairs, 0, 0},
        {0x01100005, "Mono12", Layout::Mono, 12, plain, 0, 0},
        {0x010C0006, "Mono12Packed", Layout::Mono, 12, pairs, 0, 0},
        {0x01080008, "BayerGR8", Layout::Bayer, 8, plain, 1, 0},
        {0x01080009, "BayerRG8", Layout::Bayer, 8, plain, 0, 0},
        {0x0108000A, "BayerGB8", Layout::Bayer, 8, plain, 0, 1},
        {0x0108000B, "BayerBG8", Layout::Bayer, 8, plain, 1, 1},
        {0x0110000C, "BayerGR10", Layout::Bayer, 10, plain, 1, 0},
        {0x0110000D, "BayerRG10", Layout::Bayer, 10, plain, 0, 0},
        {0x0110000E, "BayerGB10", Layout::Bayer, 10, plain, 0, 1},
        {0x0110000F, "BayerBG10", Layout::Bayer, 10, plain, 1, 1},
        {0x010C0026, "BayerGR10Packed", Layout::Bayer, 10, pairs, 1, 0},
        {0x010C0027, "BayerRG10Packed", Layout::Bayer, 10, pairs, 0, 0},
        {0x010C0028, "BayerGB10Packed", Layout::Bayer, 10, pairs, 0, 1},
        {0x010C0029, "BayerBG10Packed", Layout::Bayer, 10, pairs, 1, 1},
        {0x01100010, "BayerGR12", Layout::Bayer, 12, plain, 1, 0},
        {0x01100011, "BayerRG12", Layout::Bayer, 12, plain, 0, 0},
        {0x01100012, "BayerGB12", Layout::Bayer, 12, plain, 0, 1},
        {0x01100013, "BayerBG12", Layout::Bayer, 12, plain, 1, 1},
        {0x010C002A, "BayerGR12Packed", Layout::Bayer, 12, pairs, 1, 0},
        {0x010C002B, "BayerRG12Packed", Layout::Bayer, 12, pairs, 0, 0},
        {0x010C002C, "BayerGB12Packed", Layout::Bayer, 12, pairs, 0, 1},
        {0x010C002D, "BayerBG12Packed", Layout::Bayer, 12, pairs, 1, 1},
        {0x0210001F, "YUV422Packed", Layout::Uyvy, 8, plain, 0, 0},
        {0x02100032, "YUV422_YUYV_Packed", Layout::Yuyv, 8, plain, 0, 0},
        {0x02180014, "RGB8Packed", Layout::Rgb, 8, plain, 0, 0},
    };
    return formats;
}

const PixelFormat* FindPixelFormat(uint32_t code) {
    const auto& formats = PixelFormats();
    const auto found =
        std::find_if(formats.begin(), formats.end(), [code](const PixelFormat& f) { return f.code == code; });
    return found == formats.end() ? nullptr : &*found;
}

namespace {

uint16_t Luma(const Rgb12& c) {
    return static_cast<uint16_t>((77u * c.red + 150u * c.green + 29u * c.blue) >> 8);
}

// One component a pixel, told by `pick`.
template<class Pick>
void EncodeSingle(const PixelFormat& format, const Rgb12* from, size_t count, uint8_t* to, Pick pick) {
    if (format.depth == 8) {
        for (size_t i = 0; i < count; ++i)
            to[i] = static_cast<uint8_t>(pick(from[i], i) >> 4);
        return;
    }
    const unsigned down = 12u - format.depth;
    if (format.packing == Packing::Plain) {
        for (size_t i = 0; i < count; ++i) {
            const unsigned value = pick(from[i], i) >> down;
            to[2 * i] = static_cast<uint8_t>(value);
            to[2 * i + 1] = static_cast<uint8_t>(value >> 8);
        }
        return;
    }
    const unsigned low = format.depth - 8u; // bits that go to the middle byte
    const unsigned mask = (1u << low) - 1;
    for (size_t i = 0; i + 1 < count; i += 2, to += 3) {
        const unsigned first = pick(from[i], i) >> down;
        const unsigned second = pick(from[i + 1], i + 1) >> down;
        to[0] = static_cast<uint8_t>(first >> low);
        to[1] = static_cast<uint8_t>((first & mask) | ((second & mask) << 4));
        to[2] = static_cast<uint8_t>(second >> low);
    }
}

void EncodeBayer(const PixelFormat& format, const Rgb12* from, size_t count, size_t x, size_t y,
                 uint8_t* to) {
    const bool redRow = (y & 1) == format.redY;
    const size_t shift = x + format.redX; // even: the column of red pixels
    if (redRow)
        EncodeSingle(format, from, count, to,
                     [shift](const Rgb12& c, size_t i) { return ((i + shift) & 1) == 0 ? c.red : c.green; });
    else
        EncodeSingle(format, from, count, to,
                     [shift](const Rgb12& c, size_t i) { return ((i + shift) & 1) == 0 ? c.green : c.blue; });
}

uint8_t Clamp8(int value) {
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

// BT.601, full range; the colour difference is the mean of two neighbours.
void EncodeYuv(const PixelFormat& format, const Rgb12* from, size_t count, uint8_t* to) {
    const size_t luma = format.layout == Layout::Uyvy ? 1 : 0;
    const size_t chroma = 1 - luma;
    for (size_t i = 0; i + 1 < count; i += 2, to += 4) {
        const Rgb12& a = from[i];
        const Rgb12& b = from[i + 1];
        const int red = (a.red + b.red) >> 5;
        const int green = (a.green + b.green) >> 5;
        const int blue = (a.blue + b.blue) >> 5;
        to[luma] = static_cast<uint8_t>(Luma(a) >> 4);
        to[luma + 2] = static_cast<uint8_t>(Luma(b) >> 4);
        to[chroma] = Clamp8(((-43 * red - 85 * green + 128 * blue + 128) >> 8) + 128);
        to[chroma + 2] = Clamp8(((128 * red - 107 * green - 21 * blue + 128) >> 8) + 128);
    }
}

} // namespace

void EncodeRow(const PixelFormat& format, const Rgb12* from, size_t count, size_t x, size_t y, uint8_t* to) {
    switch (format.layout) {
    case Layout::Mono:
        EncodeSingle(format, from, count, to, [](const Rgb12& c, size_t) { return Luma(c); });
        break;
    case Layout::Bayer:
        EncodeBayer(format, from, count, x, y, to);
        break;
    case Layout::Rgb:
        for (size_t i = 0; i < count; ++i) {
            to[3 * i] = static_cast<uint8_t>(from[i].red >> 4);
            to[3 * i + 1] = static_cast<uint8_t>(from[i].green >> 4);
            to[3 * i + 2] = static_cast<uint8_t>(from[i].blue >> 4);
        }
        break;
    case Layout::Uyvy:
    case Layout::Yuyv:
        EncodeYuv(format, from, count, to);
        break;
    }
}

} // namespace vcam
