#ifndef MEDIA_KERNELS_H
#define MEDIA_KERNELS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace media {

/* What a conversion makes of a pixel. */
enum class Layout : std::uint8_t {
    Grey = 0, // one byte
    Rgb = 1,  // R G B
    Bgr = 2,  // B G R, as bitmap files want it
    Bgrx = 3  // B G R 255
};

constexpr std::size_t kLayouts = 4;
constexpr std::size_t kBayerRows = 4;

constexpr std::size_t BytesOf(Layout layout) {
    return layout == Layout::Grey ? 1 : layout == Layout::Bgrx ? 4 : 3;
}

/*
 * Bytes that stand before and after each line that a Bayer kernel reads or Hamilton's green pass writes. The
 * two next to the line hold its mirror image; what lies beyond may be read by a kernel but has no influence.
 */
constexpr std::size_t kLineMargin = 64;

/*
 * What the first pass of Hamilton-Adams finds in a row, at its red or blue sites only: the first such site is
 * element 0, the next (two pixels on) element 1. Elements -1 and the one after the last hold the values of
 * their neighbours.
 */
struct GreenLine {
    std::uint16_t* green;      // interpolated, 0 to 255
    std::uint16_t* difference; // the site's own sample less green, plus 256
};

/* Reads exactly the bytes of its pixels and writes exactly theirs; neither need be aligned. They don't
 * overlap. */
using PixelRow = void (*)(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels);

/*
 * Two rows of a result at a time, which share most of what they read. Nearest: rows[0..1] are the rows of the
 * 2 x 2 cells; bilinear: rows[0..3] are the row above, the two rows, the row below.
 */
using RowPair = void (*)(const std::uint8_t* const* rows, std::uint8_t* first, std::uint8_t* second,
                         std::size_t pixels);
/* rows[0..4]: two above, the row, two below. */
using GreenRow = void (*)(const std::uint8_t* const* rows, const GreenLine& line, std::size_t pixels);
/* lines[0..2]: the green lines of the rows above, at and below. */
using ColourRow = void (*)(const std::uint8_t* own, const GreenLine* lines, std::uint8_t* destination,
                           std::size_t pixels);

/*
 * The row kernels of one instruction set. All sets give the same bytes. Kernels keep no state and may run on
 * any number of threads. Tables are indexed by Layout, and by BayerRow of the row that is drawn,
 * or the first of two.
 *
 * Grey of colour:  Y = (77 R + 150 G + 29 B + 128) / 256  (BT.601 weights).
 * Colour of YUV:   BT.601 with full range, R = Y + 1.402 (V - 128), G = Y - 0.344136 (U - 128) - 0.714136 (V
 * - 128), B = Y + 1.772 (U - 128), in 10.6 fixed point (see yuv:: below).
 */
struct Kernels {
    const char* name;
    PixelRow words10; // to bytes: bits 9..2 of each word
    PixelRow words12; // to bytes: bits 11..4 of each word
    PixelRow triples; // to bytes: the high byte of each pixel; begins at the first pixel of a triple
    PixelRow grey[kLayouts];
    PixelRow rgb[kLayouts];
    PixelRow bgrx[kLayouts];
    PixelRow uyvy[kLayouts]; // an even number of pixels
    PixelRow yuyv[kLayouts]; // an even number of pixels
    RowPair nearest[kLayouts][kBayerRows];
    RowPair bilinear[kLayouts][kBayerRows];
    GreenRow green[2]; // by BayerRow & 1: whether the row begins with green
    ColourRow colour[kLayouts][kBayerRows];
};

/* Fixed point of the YUV formulas: 64 (Y + c d) = 64 Y + (256 d * factor) >> 16, factor = 16384 c. */
namespace yuv {
constexpr int kRedOfV = 22970;
constexpr int kGreenOfU = 5638;
constexpr int kGreenOfV = 11700;
constexpr int kBlueOfU = 29032;
} // namespace yuv

const Kernels& PlainKernels();

/* The fastest that this machine can run. */
const Kernels& BestKernels();

/* All that this machine can run, the plain ones first; for tests and benchmarks. */
std::vector<const Kernels*> AllKernels();

} // namespace media

#endif
