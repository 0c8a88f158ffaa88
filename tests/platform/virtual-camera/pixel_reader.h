// Reads single pixels out of raw pictures of every format that the camera sends; plain and slow on purpose.
#ifndef KOLT_TESTS_VCAM_PIXEL_READER_H
#define KOLT_TESTS_VCAM_PIXEL_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kolt::test {

struct FormatFacts {
    const char* name;
    uint32_t code;
    char kind;        // 'm' mono, 'b' Bayer, 'r' RGB, 'u' UYVY, 'y' YUYV
    unsigned bits;    // of a component
    bool packed;      // two pixels in three bytes
    const char* tile; // Bayer: the first two pixels of the first and the second row
};

const std::vector<FormatFacts>& AllFormats();

struct Colour {
    double red, green, blue; // 0 to 255
};

// What a pixel says: `value` for mono and Bayer formats in units of 8 bits, colour for the others.
struct PixelReading {
    char component; // 'Y' mono; 'R', 'G' or 'B'; '*' all three
    double value;
    Colour colour;
};

PixelReading ReadPixel(const FormatFacts& format, const std::vector<uint8_t>& picture, size_t width, size_t x,
                       size_t y);

// What the pixel should say of a patch of this colour, beside what it says; their greatest difference in
// 8-bit steps.
double Difference(const PixelReading& reading, const Colour& patch);

} // namespace kolt::test

#endif
