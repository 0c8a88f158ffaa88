#ifndef LIVE_PICTURE_MAKER_H
#define LIVE_PICTURE_MAKER_H

#include "FrameMailbox.h"
#include "PixelFormat.h"
#include "StatusText.h"

#include <vector>

namespace live {

/// A picture as the render library and the files take it: 8 bits grey, or red, green and blue; no padding
/// between rows. Points into memory of its maker.
struct Picture {
    const uint8_t* pixels = nullptr;
    uint32_t width = 0;
    uint32_t height = 0;
    bool colour = false;

    size_t Bytes() const { return static_cast<size_t>(width) * height * (colour ? 3 : 1); }
};

/// Owns a handle of the media library.
class MediaHandle {
public:
    MediaHandle();
    MediaHandle(const MediaHandle&) = delete;
    MediaHandle& operator=(const MediaHandle&) = delete;
    ~MediaHandle();

    void* Get() const { return handle_; } ///< null when the library gave none

private:
    void* handle_;
};

/// Turns frames into pictures: Mono8 and RGB8 as they are, all else through the media library. One thread.
class PictureMaker {
public:
    explicit PictureMaker(uint32_t bayerMethod) : bayerMethod_(bayerMethod) {}

    /// `picture` is valid until the next call or until the frame changes. Bytes that an incomplete frame
    /// lacks are black. A pixel format or size of which no picture can be made fails with
    /// OV_STATUS_NOT_SUPPORTED.
    Failure Make(Frame& frame, Picture& picture);

    void* Media() const { return media_.Get(); }

private:
    Failure Convert(const Frame& frame, const PixelFormat& format, Picture& picture);
    Failure Decode(const Frame& frame, Picture& picture);

    MediaHandle media_;
    uint32_t bayerMethod_;
    std::vector<uint8_t> converted_;
};

} // namespace live

#endif
