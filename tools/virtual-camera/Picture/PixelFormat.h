// The pixel formats that the camera sends (GVSP codes), and how a row of colours becomes a row of bytes.
#ifndef VCAM_PICTURE_PIXELFORMAT_H
#define VCAM_PICTURE_PIXELFORMAT_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vcam {

enum class Layout : uint8_t { Mono, Bayer, Rgb, Uyvy, Yuyv };
enum class Packing : uint8_t {
    Plain, // 8 bits a byte, more in two bytes, least significant first
    Pairs, // "Packed" of GigE Vision: two pixels in three bytes, the low bits of both in the middle one
};

struct PixelFormat {
    uint32_t code;
    const char* name; // as the feature PixelFormat calls it
    Layout layout;
    uint8_t depth; // bits of a component: 8, 10 or 12
    Packing packing;
    uint8_t redX, redY; // Bayer: where the red pixel of each two by two stands

    // The code carries the bits that a pixel occupies.
    uint32_t BitsPerPixel() const { return (code >> 16) & 0xFF; }
    size_t BytesFor(size_t pixels) const { return (pixels * BitsPerPixel() + 7) / 8; }
};

const std::vector<PixelFormat>& PixelFormats();
// nullptr when the camera knows no such code.
const PixelFormat* FindPixelFormat(uint32_t code);

struct Rgb12 { // 0 to 4095 each
    uint16_t red, green, blue;
};

// Encodes `count` pixels; `to` takes format.BytesFor(count) bytes. The first is pixel (x, y) of the picture.
// x and count are even for formats that share bytes between pixels.
void EncodeRow(const PixelFormat& format, const Rgb12* from, size_t count, size_t x, size_t y, uint8_t* to);

} // namespace vcam

#endif
