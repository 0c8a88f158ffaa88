#ifndef MEDIA_LINE_BUFFERS_H
#define MEDIA_LINE_BUFFERS_H

#include "MediaKit/AlignedBuffer.h"
#include "MediaKit/Kernels.h"

#include <cstddef>
#include <cstdint>

namespace media {

/*
 * The rows that one thread keeps at hand while it converts: 8-bit rows of the mosaic and rows of interpolated
 * green, each with margins. Rows are found by their number (which may lie outside the picture by a few) in a
 * small ring.
 */
class LineBuffers {
public:
    /* Room for rows of that many pixels. Throws std::bad_alloc. */
    void Prepare(std::size_t width);

    std::uint8_t* Raw(std::ptrdiff_t row) { return Line(Slot(row, kRawLines)); }
    GreenLine Green(std::ptrdiff_t row) {
        const std::size_t line = kRawLines + 2 * Slot(row, kGreenLines);
        return {reinterpret_cast<std::uint16_t*>(Line(line)),
                reinterpret_cast<std::uint16_t*>(Line(line + 1))};
    }
    /* Room for a row of a result that nobody wants, of up to four bytes a pixel. */
    std::uint8_t* Spare() { return Line(kRawLines + 2 * kGreenLines); }

private:
    // No more than Hamilton-Adams has in use at once: all of them together should stay in the first-level
    // cache.
    static constexpr std::size_t kRawLines = 5;
    static constexpr std::size_t kGreenLines = 3;
    static constexpr std::size_t kSpareLines = 4;

    static std::size_t Slot(std::ptrdiff_t row, std::size_t lines) {
        // Row numbers begin at -3.
        return (static_cast<std::size_t>(row + 3)) % lines;
    }
    std::uint8_t* Line(std::size_t index) { return buffer_.Data() + index * pitch_ + kLineMargin; }

    AlignedBuffer buffer_;
    std::size_t pitch_ = 0;
};

} // namespace media

#endif
