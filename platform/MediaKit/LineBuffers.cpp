#include "MediaKit/LineBuffers.h"

#include <cstring>

namespace media {

std::uint8_t* AlignedBuffer::Reserve(std::size_t size) {
    if (size <= size_) {
        return bytes_.get();
    }
    bytes_.reset();
    size_ = 0;
    auto* fresh = static_cast<std::uint8_t*>(::operator new[](size, std::align_val_t{kAlignment}));
    std::memset(fresh, 0, size);
    bytes_.reset(fresh);
    size_ = size;
    return fresh;
}

void LineBuffers::Prepare(std::size_t width) {
    // A kernel may work on whole vectors: a line is a multiple of 64 and has a margin on each side. Green
    // lines have half as many elements of twice the size. One more cache line keeps rows whose pitch would be
    // a large power of two from falling into the same cache sets.
    std::size_t pitch = (width + 63) / 64 * 64 + 2 * kLineMargin;
    if (pitch % 512 == 0) {
        pitch += 64;
    }
    buffer_.Reserve(pitch * (kRawLines + 2 * kGreenLines + kSpareLines));
    pitch_ = pitch;
}

} // namespace media
