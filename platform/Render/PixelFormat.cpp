#include "PixelFormat.h"

namespace kolt::render {

namespace {

constexpr bool kHostIsBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

bool isRun(uint32_t mask) {
    if (mask == 0) {
        return false;
    }
    const uint32_t run = mask >> __builtin_ctz(mask);
    return (run & (run + 1)) == 0;
}

uint32_t depthMask(int depth) {
    return depth >= 32 ? ~0U : (1U << depth) - 1;
}

/* 0..255 scaled to the bits of the mask with rounding, so that 255 gives all ones. */
uint32_t scaled(uint32_t value, uint32_t mask) {
    const int shift = __builtin_ctz(mask);
    const uint64_t most = mask >> shift;
    return static_cast<uint32_t>((value * most + 127) / 255) << shift;
}

} // namespace

bool PixelFormat::valid() const {
    const bool knownSize =
        bitsPerPixel == 8 || bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32;
    const bool knownPad = scanlinePad == 8 || scanlinePad == 16 || scanlinePad == 32;
    const uint32_t all = redMask | greenMask | blueMask;
    const bool separate =
        (redMask & greenMask) == 0 && (redMask & blueMask) == 0 && (greenMask & blueMask) == 0;
    return knownSize && knownPad && depth > 0 && depth <= bitsPerPixel && isRun(redMask) &&
           isRun(greenMask) && isRun(blueMask) && separate && (all & ~depthMask(depth)) == 0;
}

bool PixelFormat::native() const {
    return bitsPerPixel == 32 && bigEndian == kHostIsBigEndian && redMask == 0xFF0000 &&
           greenMask == 0xFF00 && blueMask == 0xFF;
}

uint32_t PixelFormat::opaqueBits() const {
    return depthMask(depth) & ~(redMask | greenMask | blueMask);
}

size_t PixelFormat::stride(int width) const {
    const size_t pad = static_cast<size_t>(scanlinePad);
    const size_t bits = static_cast<size_t>(width) * static_cast<size_t>(bitsPerPixel);
    return (bits + pad - 1) / pad * pad / 8;
}

uint32_t PixelFormat::pixel(uint32_t rgb) const {
    return scaled((rgb >> 16) & 0xFF, redMask) | scaled((rgb >> 8) & 0xFF, greenMask) |
           scaled(rgb & 0xFF, blueMask) | opaqueBits();
}

Packer::Packer(const PixelFormat& format)
    : m_bytes(static_cast<size_t>(format.bitsPerPixel) / 8)
    , m_bigEndian(format.bigEndian)
    , m_opaque(format.opaqueBits())
    , m_red()
    , m_green()
    , m_blue() {
    for (uint32_t value = 0; value < 256; ++value) {
        m_red[value] = scaled(value, format.redMask);
        m_green[value] = scaled(value, format.greenMask);
        m_blue[value] = scaled(value, format.blueMask);
    }
}

void Packer::pack(const uint32_t* words, uint8_t* out, size_t count) const {
    for (size_t i = 0; i < count; ++i) {
        const uint32_t word = words[i];
        const uint32_t pixel =
            m_red[(word >> 16) & 0xFF] | m_green[(word >> 8) & 0xFF] | m_blue[word & 0xFF] | m_opaque;
        for (size_t byte = 0; byte < m_bytes; ++byte) {
            const size_t shift = 8 * (m_bigEndian ? m_bytes - 1 - byte : byte);
            out[byte] = static_cast<uint8_t>(pixel >> shift);
        }
        out += m_bytes;
    }
}

} // namespace kolt::render
