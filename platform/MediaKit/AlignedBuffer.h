#ifndef MEDIA_ALIGNED_BUFFER_H
#define MEDIA_ALIGNED_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace media {

/*
 * A block of bytes that only ever grows, aligned to 64. Growing drops the content; fresh bytes are zero.
 * Buffers of this kind are kept by a handle, so that a second picture of the same size allocates nothing.
 */
class AlignedBuffer {
public:
    static constexpr std::size_t kAlignment = 64;

    /* At least `size` bytes. Throws std::bad_alloc; the buffer is then empty. */
    std::uint8_t* Reserve(std::size_t size);

    std::uint8_t* Data() const { return bytes_.get(); }
    std::size_t Size() const { return size_; }

private:
    struct Free {
        void operator()(std::uint8_t* bytes) const {
            ::operator delete[](bytes, std::align_val_t{kAlignment});
        }
    };

    std::unique_ptr<std::uint8_t[], Free> bytes_;
    std::size_t size_ = 0;
};

} // namespace media

#endif
