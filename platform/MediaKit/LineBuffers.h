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
    static constexpr unsigned kLines = 8;

    /* Room for rows of that many pixels. Throws std::bad_alloc. */
    void Prepare(std::size_t width);

    std::uint8_t* Raw(std::ptrdiff_t row) { return Line(Slot(row)); }
    GreenLine Green(std::ptrdiff_t row) {
        return {reinterpret_cast<std::uint16_t*>(Line(kLines + Slot(row))),
                reinterpret_cast<std::uint16_t*>(Line(2 * kLines + Slot(row)))};
    }

    /* Room for a row of a result that nobody wants, of up to four bytes a pixel. */
    std::uint8_t* Spare() { return Line(3 * kLines); }

private:
    static std::size_t Slot(std::ptrdiff_t row) {
        return static_cast<std::size_t>(row + static_cast<std::ptrdiff_t>(kLines)) % kLines;
    }
    std::uint8_t* Line(std::size_t index) { return buffer_.Data() + index * pitch_ + kLineMargin; }

    AlignedBuffer buffer_;
    std::size_t pitch_ = 0;
};

} // namespace media

#endif
