/*
 * How the pixels of a window lie in memory, and the way there from 0xAARRGGBB words.
 */
#ifndef KOLT_RENDER_PIXEL_FORMAT_H
#define KOLT_RENDER_PIXEL_FORMAT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kolt::render {

/* Around the picture. The same in every visual, as near as its depth allows. */
constexpr uint32_t kBackground = 0x14181D;

/* A TrueColor or DirectColor visual together with the server's image format for its depth. */
struct PixelFormat {
    int depth = 24;
    int bitsPerPixel = 32; /* 8, 16, 24 or 32 */
    int scanlinePad = 32;  /* bits */
    bool bigEndian = false;
    uint32_t redMask = 0xFF0000;
    uint32_t greenMask = 0xFF00;
    uint32_t blueMask = 0xFF;

    /* Three separate masks of consecutive bits that fit the depth, in a layout known here. */
    bool valid() const;
    /* The words 0xAARRGGBB are already right, so that rows can be written in place. */
    bool native() const;
    /* Bits of the depth that carry no colour: opacity where a compositor looks at it, so they are set. */
    uint32_t opaqueBits() const;
    size_t stride(int width) const;
    /* Bytes of the visual's pixel value for a colour 0xRRGGBB. */
    uint32_t pixel(uint32_t rgb) const;

    bool operator==(const PixelFormat& o) const {
        return depth == o.depth && bitsPerPixel == o.bitsPerPixel && scanlinePad == o.scanlinePad &&
               bigEndian == o.bigEndian && redMask == o.redMask && greenMask == o.greenMask &&
               blueMask == o.blueMask;
    }
};

/* Turns 0xAARRGGBB words into the pixels of one format. */
class Packer {
public:
    explicit Packer(const PixelFormat& format);

    /* Writes count pixels of bitsPerPixel / 8 bytes each. */
    void pack(const uint32_t* words, uint8_t* out, size_t count) const;
    size_t bytesPerPixel() const { return m_bytes; }

private:
    size_t m_bytes;
    bool m_bigEndian;
    uint32_t m_opaque;
    std::array<uint32_t, 256> m_red;
    std::array<uint32_t, 256> m_green;
    std::array<uint32_t, 256> m_blue;
};

} // namespace kolt::render

#endif
