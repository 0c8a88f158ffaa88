#include "FrameMailbox.h"

#include <utility>

namespace live {

void FrameBuffer::Reserve(size_t bytes) {
    if (bytes <= capacity_)
        return;
    capacity_ = 0;
    data_.reset();                   // first, so that both are never held at once
    data_.reset(new uint8_t[bytes]); // not make_unique: that would touch every page
    capacity_ = bytes;
}

void FrameMailbox::Publish() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::swap(writing_, ready_);
        isFresh_ = true;
    }
    fresh_.Raise();
}

Frame* FrameMailbox::Take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    fresh_.Clear();
    if (!isFresh_)
        return nullptr;
    isFresh_ = false;
    std::swap(reading_, ready_);
    return reading_;
}

void FrameMailbox::Empty() {
    const std::lock_guard<std::mutex> lock(mutex_);
    fresh_.Clear();
    isFresh_ = false;
}

} // namespace live
