#include "pixel_reader.h"

#include <algorithm>
#include <cmath>

namespace kolt::test {

const std::vector<FormatFacts>& AllFormats() {
    static const std::vector<FormatFacts> formats = {
        {"Mono8", 0x01080001, 'm', 8, false, ""},
        {"Mono10", 0x01100003, 'm', 10, false, ""},
        {"Mono12", 0x01100005, 'm', 12, false, ""},
        {"Mono10Packed", 0x010C0004, 'm', 10, true, ""},
        {"Mono12Packed", 0x010C0006, 'm', 12, true, ""},
        {"BayerGR8", 0x01080008, 'b', 8, false, "GRBG"},
        {"BayerRG8", 0x01080009, 'b', 8, false, "RGGB"},
        {"BayerGB8", 0x0108000A, 'b', 8, false, "GBRG"},
        {"BayerBG8", 0x0108000B, 'b', 8, false, "BGGR"},
        {"BayerGB10", 0x0110000E, 'b', 10, false, "GBRG"},
        {"BayerGB10Packed", 0x010C0028, 'b', 10, true, "GBRG"},
        {"BayerBG10", 0x0110000F, 'b', 10, false, "BGGR"},
        {"BayerBG10Packed", 0x010C0029, 'b', 10, true, "BGGR"},
        {"BayerRG10", 0x0110000D, 'b', 10, false, "RGGB"},
        {"BayerRG10Packed", 0x010C0027, 'b', 10, true, "RGGB"},
        {"BayerGR10", 0x0110000C, 'b', 10, false, "GRBG"},
        {"BayerGR10Packed", 0x010C0026, 'b', 10, true, "GRBG"},
        {"BayerGB12", 0x01100012, 'b', 12, false, "GBRG"},
        {"BayerGB12Packed", 0x010C002C, 'b', 12, true, "GBRG"},
        {"BayerBG12", 0x01100013, 'b', 12, false, "BGGR"},
        {"BayerBG12Packed", 0x010C002D, 'b', 12, true, "BGGR"},
        {"BayerRG12", 0x01100011, 'b', 12, false, "RGGB"},
        {"BayerRG12Packed", 0x010C002B, 'b', 12, true, "RGGB"},
        {"BayerGR12", 0x01100010, 'b', 12, false, "GRBG"},
        {"BayerGR12Packed", 0x010C002A, 'b', 12, true, "GRBG"},
        {"YUV422Packed", 0x0210001F, 'u', 8, false, ""},
        {"YUV422_YUYV_Packed", 0x02100032, 'y', 8, false, ""},
        {"RGB8Packed", 0x02180014, 'r', 8, false, ""},
    };
    return formats;
}

namespace {

unsigned Component(const FormatFacts& format, const std::vector<uint8_t>& picture, size_t pixel) {
    if (format.bits == 8)
        return picture.at(pixel);
    if (!format.packed)
        return picture.at(2 * pixel) + 256u * picture.at(2 * pixel + 1);
    // Bytes: high bits of the first, low bits of both (the second's in the upper half), high bits of the
    // second.
    const size_t triple = pixel / 2 * 3;
    const unsigned lowBits = format.bits - 8;
    const unsigned middle = picture.at(triple + 1);
    const bool second = pixel % 2 != 0;
    const unsigned high = picture.at(triple + (second ? 2 : 0));
    const unsigned low = (second ? middle >> 4 : middle) & ((1u << lowBits) - 1);
    return high << lowBits | low;
}

Colour FromYuv(double y, double u, double v) {
    const auto clip = [](double value) { return std::clamp(value, 0.0, 255.0); };
    return {clip(y + 1.402 * (v - 128)), clip(y - 0.344136 * (u - 128) - 0.714136 * (v - 128)),
            clip(y + 1.772 * (u - 128))};
}

} // namespace

PixelReading ReadPixel(const FormatFacts& format, const std::vector<uint8_t>& picture, size_t width, size_t x,
                       size_t y) {
    const size_t pixel = y * width + x;
    switch (format.kind) {
    case 'r':
        return {'*',
                0,
                {double(picture.at(3 * pixel)), double(picture.at(3 * pixel + 1)),
                 double(picture.at(3 * pixel + 2))}};
    case 'u':
    case 'y': {
        const size_t group = pixel / 2 * 4;
        const size_t luma = format.kind == 'u' ? 1 : 0;
        const size_t chroma = 1 - luma;
        return {'*', 0,
                FromYuv(picture.at(group + luma + (pixel % 2) * 2), picture.at(group + chroma),
                        picture.at(group + chroma + 2))};
    }
    default:
        break;
    }
    const double value = Component(format, picture, pixel) / double(1u << (format.bits - 8));
    const char component = format.kind == 'm' ? 'Y' : format.tile[(y % 2) * 2 + x % 2];
    return {component, value, {}};
}

double Difference(const PixelReading& reading, const Colour& patch) {
    switch (reading.component) {
    case 'Y':
        return std::abs(reading.value - (0.299 * patch.red + 0.587 * patch.green + 0.114 * patch.blue));
    case 'R':
        return std::abs(reading.value - patch.red);
    case 'G':
        return std::abs(reading.value - patch.green);
    case 'B':
        return std::abs(reading.value - patch.blue);
    default:
        return std::max({std::abs(reading.colour.red - patch.red),
                         std::abs(reading.colour.green - patch.green),
                         std::abs(reading.colour.blue - patch.blue)});
    }
}

} // namespace kolt::test
