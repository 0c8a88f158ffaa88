// Frames that Aravis receives, into buffers of ours.
#ifndef KOLT_CAMERA_CONTROL_FRAME_STREAM_H
#define KOLT_CAMERA_CONTROL_FRAME_STREAM_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include <arv.h>

#include "Camera/Boundary/OvCameraControl.h"
#include "device/FrameSource.h"
#include "device/GlibPtr.h"
#include "device/Threads.h"
#include "gvsp/FrameBuffer.h"
#include "gvsp/FrameTally.h"

namespace kolt::cc {

// The size that buffers should have.
struct SizeSigns {
    std::size_t payload = 0;   // what the camera says now; 0: it doesn't
    std::size_t announced = 0; // what the newest leader announced; 0: none came
    std::size_t received = 0;  // length of the newest complete frame; 0: none yet
    std::size_t buffers = 0;   // size of the present ones
    bool unfit = false;        // frames don't fit them
};
std::size_t fittingSize(const SizeSigns& signs);

class FrameStream final : public FrameSource {
public:
    // Makes Aravis' stream with the given callback; null on failure, with the status set.
    using Maker = std::function<GObjectPtr<ArvStream>(ArvStreamCallback, void*, std::uint32_t& status)>;

    // Null on failure. On the device's thread.
    static std::shared_ptr<FrameStream> create(const Maker& maker, const StreamSettings& settings,
                                               const StreamShape& shape, Hooks hooks, std::uint32_t& status);
    ~FrameStream() override; // stops and releases

    std::uint32_t fetch(std::uint8_t* destination, std::uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                        std::uint32_t timeoutMs) override;
    void setDropIncomplete(bool drop) override;
    void lose(std::uint32_t status) override;
    void stop(std::uint32_t status) override;
    // Aravis accesses the device for it: on a dead one this blocks for seconds.
    void release() override;
    // The frame that is being received at that moment is lost (and counted).
    std::uint32_t followSize(std::size_t payload) override;
    // Aravis loses a buffer with each packet whose kind it doesn't know. Gives it others, and has all of them
    // exchanged (by the hook for a changed size) when none is left.
    void lookAfter() override;
    StreamNumbers numbers() const override;

private:
    struct Buffer;
    struct Infos;
    enum class Where { stream, reserve, ready, caller };

    FrameStream(const StreamSettings& settings, const StreamShape& shape, Hooks hooks);
    static void onStreamEvent(void* user, ArvStreamCallbackType type, ArvBuffer* buffer);
    void onFrameBegun();
    void onFrameClosed();
    void onThreadEnds();
    bool takeClosedLocked(Buffer& buffer);
    void judgeLocked(Buffer& buffer, const TransportCounters& now);
    void readLeaderLocked(Buffer& buffer);
    void measureLocked(Buffer& buffer) const;
    bool allocateLocked(std::size_t payload);
    int freeLocked() const;
    bool takesMoreLocked() const;
    void fillUpLocked();
    void pushLocked(Buffer& buffer);
    void giveBackLocked(Buffer& buffer);
    void wipe(Buffer& buffer) const;
    void freeIdleLocked(unsigned generation);
    TransportCounters countersLocked() const;
    StreamNumbers numbersLocked() const;

    const bool packetised_;
    const unsigned wanted_;
    const int ahead_; // free buffers that the stream should have
    const MarkedPlaces places_;
    const Hooks hooks_;
    std::mutex restart_; // serialises release() and followSize(); taken before mutex_

    mutable std::mutex mutex_; // guards all below; never held across a call that waits
    std::condition_variable changed_;
    GObjectPtr<ArvStream> owned_;
    ArvStream* stream_ = nullptr; // the same; outlives owned_ by the time that Aravis takes to end the thread
    bool exchanging_ = false;     // Aravis was told to let go of all buffers
    std::unique_ptr<Infos> infos_;
    std::vector<std::unique_ptr<Buffer>> buffers_;
    std::deque<Buffer*> ready_;
    std::vector<Buffer*> reserve_; // free, and not with the stream yet; the next to go is the last one here
    unsigned generation_ = 0;      // of the buffers; former ones are not given back to the stream
    bool hungry_ = false;          // at the last look nobody had a buffer but the stream, which had none
    bool starved_ = false;         // at the last two
    bool dropIncomplete_;
    bool ended_ = false;
    std::uint32_t endStatus_ = 0;
    FrameGeometry geometry_; // of the newest leader
    FrameTally tally_;
    SizeSigns signs_;
    StreamNumbers own_; // the counters of this class; at the end, of the transport as well
    std::uint64_t mismatchesSeen_ = 0;
};

} // namespace kolt::cc

#endif
