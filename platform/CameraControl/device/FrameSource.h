// Frames of one open device, from the start of grabbing to its stop: the wait for the next frame, the copy
// out, the counting. How packets or transfers become frames is up to those who implement it.
#ifndef KOLT_CAMERA_CONTROL_FRAME_SOURCE_H
#define KOLT_CAMERA_CONTROL_FRAME_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <functional>

#include "Camera/Boundary/OvCameraControl.h"
#include "gvsp/FrameTally.h"

namespace kolt::cc {

// How a stream is to be made; settled when grabbing starts.
struct StreamSettings {
    unsigned buffers = 8;
    bool dropIncomplete = false; // may change while grabbing
    bool resend = true;          // ask for lost packets again
    bool packetSocket = true;    // use one where the system allows it
};

// What a frame's leader tells of it, for frames that lost theirs.
struct FrameGeometry {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pixelFormat = 0;
};

// What is told of a frame.
struct FrameFacts {
    bool complete = false;
    std::uint64_t blockId = 0;
    std::uint64_t timestamp = 0; // the camera's, ns
    std::uint64_t closedAt = 0;  // the host's, ns since 1970
    std::uint32_t payloadType = 0;
    FrameGeometry geometry;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    std::size_t length = 0;
    std::uint32_t lostPackets = 0;
};
void fillInfo(const FrameFacts& facts, _OV_CC_FRAME_OUT_INFO_* info);

// Bytes of such an image.
std::size_t imageBytes(const FrameGeometry& geometry);

// The host's clock, ns since 1970.
std::uint64_t realtimeNow();

// Buffers of `payload` bytes that a stream may have: those asked for and some more, since while a frame waits
// for a packet to be sent again, those behind it wait as well, however fast the caller is. 0: the frames are
// larger than this library takes, or the buffers asked for are more than the machine should give.
std::size_t buffersFor(unsigned wanted, std::size_t payload);

struct StreamShape {
    std::size_t payload = 0;    // bytes of the largest frame
    std::size_t packetData = 0; // data bytes in a full packet; 0: the transport has no packets
    FrameGeometry geometry;     // as the camera is set now
};

struct StreamNumbers {
    TallyTotals tally;
    TransportCounters transport;
    std::uint64_t receivedBytes = 0;
    std::uint64_t resentPackets = 0;
    std::uint64_t resendRequests = 0;
    std::uint64_t tooLargeFrames = 0;  // for the caller's buffer
    std::uint64_t droppedFrames = 0;   // incomplete, and such are not wanted
    std::uint64_t deliveredFrames = 0; // to the caller
    std::uint64_t unfetchedFrames = 0; // that the caller could have had when the stream was stopped
    std::uint64_t resizes = 0;         // the buffers followed a changed frame size
    std::size_t bufferSize = 0;
};

class FrameSource {
public:
    struct Hooks {
        // Frames no longer have the buffers' size (urgent: and don't fit), or all buffers are gone (urgent).
        // Called for each such frame, on the source's thread or that of lookAfter().
        std::function<void(bool urgent)> sizeChanged;
        std::function<void()> frameCame; // a sign of life; on the source's thread
    };

    FrameSource() = default;
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;

    // As OV_CC_GetOneFrameTimeout. Any thread, any number at once.
    virtual std::uint32_t fetch(std::uint8_t* destination, std::uint32_t capacity,
                                _OV_CC_FRAME_OUT_INFO_* info, std::uint32_t timeoutMs) = 0;

    virtual void setDropIncomplete(bool drop) = 0;

    // No more frames will come: who waits for one is told the status. What was received can still be fetched.
    virtual void lose(std::uint32_t status) = 0;

    // As lose(), and frames that were not fetched are dropped. Never blocks.
    virtual void stop(std::uint32_t status) = 0;

    // After stop(): ends the thread and gives the socket back. On the device's thread.
    virtual void release() = 0;

    // Gives the buffers the size that they should have when the camera's payload size is this.
    virtual std::uint32_t followSize(std::size_t payload) = 0;

    // To be called a few times a second, on any thread.
    virtual void lookAfter() = 0;

    virtual StreamNumbers numbers() const = 0;
};

} // namespace kolt::cc

#endif
