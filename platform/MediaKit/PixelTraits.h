#ifndef MEDIA_PIXEL_TRAITS_H
#define MEDIA_PIXEL_TRAITS_H

#include <cstddef>
#include <cstdint>

namespace media {

/* How the samples of a picture lie in memory. Rows follow one another without padding. */
enum class Packing {
    Bytes,   // one byte a pixel
    Words10, // 16-bit little-endian words, 10 bits used
    Words12, // 16-bit little-endian words, 12 bits used
    Triples, // two pixels in three bytes, GigE Vision "Packed": high byte 1, low bits of both, high byte 2.
             // The stream of pixels runs on over row ends, so a row may begin in the middle of a triple.
    Uyvy,    // two pixels in four bytes: U Y0 V Y1
    Yuyv,    // two pixels in four bytes: Y0 U Y1 V
    Rgb,     // bytes R G B
    Bgrx     // bytes B G R and one unused
};

/*
 * The colours of the first two sites of a row of a Bayer picture. Numbered so that the other row of the
 * pattern has the number xor 3.
 */
enum class BayerRow : std::uint8_t { RedGreen = 0, GreenRed = 1, BlueGreen = 2, GreenBlue = 3, None = 255 };

constexpr BayerRow OtherRow(BayerRow row) {
    return static_cast<BayerRow>(static_cast<unsigned>(row) ^ 3U);
}

struct PixelTraits {
    Packing packing;
    BayerRow firstRow; // None where the picture has no colour filter pattern
};

/* The traits of an _OV_PIXEL_TYPE_, or null for an unknown one. */
const PixelTraits* FindPixelTraits(std::uint32_t pixelType);

/*
 * Bytes of a picture, 0 when they don't fit into 32 bits. Halves (an odd number of pixels in triples) are
 * rounded towards zero: the byte left out holds only bits that no 8-bit result uses.
 */
std::uint32_t PictureBytes(const PixelTraits& traits, std::uint32_t width, std::uint32_t height);

/* Bytes of that many pixels, rounded towards zero. */
std::size_t PixelBytes(Packing packing, std::size_t pixels);

} // namespace media

#endif
