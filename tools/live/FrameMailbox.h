#ifndef LIVE_FRAME_MAILBOX_H
#define LIVE_FRAME_MAILBOX_H

#include "Descriptor.h"

#include "Camera/Boundary/OvCameraControl.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

namespace live {

/// Room for the bytes of one frame. Memory is only taken from the system as far as it is written to, so a
/// generous capacity costs nothing.
class FrameBuffer {
public:
    uint8_t* Data() { return data_.get(); }
    const uint8_t* Data() const { return data_.get(); }
    size_t Capacity() const { return capacity_; }

    /// Grows to at least `bytes`; the content is lost when it does.
    void Reserve(size_t bytes);

private:
    std::unique_ptr<uint8_t[]> data_;
    size_t capacity_ = 0;
};

struct Frame {
    FrameBuffer pixels;
    _OV_CC_FRAME_OUT_INFO_ info{};
    uint64_t number = 0; ///< counts the frames fetched, from 1
};

/// Hands the newest frame from the grab thread to the display without a copy and without either of them
/// waiting for the other: three frames, one of which each side holds. A frame that was not taken before the
/// next one came is written over: the display only wants the newest.
class FrameMailbox {
public:
    /// Grab thread: the frame to be filled.
    Frame& Writing() { return *writing_; }
    /// Grab thread: the frame is complete. Raises the wake-up.
    void Publish();

    /// Display thread: the newest frame if there is one that was not yet taken, else null. It stays valid and
    /// unchanged until the next call.
    Frame* Take();
    int Fd() const { return fresh_.Fd(); }

    /// Forgets a frame that was not taken. Only while no grab thread runs.
    void Empty();

private:
    std::array<Frame, 3> frames_;
    Frame* writing_ = &frames_[0]; // grab thread
    Frame* reading_ = &frames_[1]; // display thread
    std::mutex mutex_;             // guards ready_ and isFresh_
    Frame* ready_ = &frames_[2];
    bool isFresh_ = false;
    Wakeup fresh_;
};

} // namespace live

#endif
