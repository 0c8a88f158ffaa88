// Frames received by a packet socket, one copy each: from the ring that the kernel fills into the caller's
// buffer. Frames that nobody fetches in time are set aside when the ring is needed.
#ifndef KOLT_CAMERA_CONTROL_RING_STREAM_H
#define KOLT_CAMERA_CONTROL_RING_STREAM_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "device/FrameSource.h"
#include "device/Threads.h"
#include "gvsp/FrameAssembler.h"
#include "gvsp/PacketRing.h"

namespace kolt::cc {

class RingStream final : public FrameSource {
public:
    struct Road {
        std::uint32_t camera = 0; // addresses in host byte order
        std::uint32_t host = 0;
        std::uint64_t ticksPerSecond = 0; // of the camera's clock; 0: timestamps are told as they come
    };
    // Null where a packet socket is not to be had, or no thread. The camera is to send to port() from then
    // on.
    static std::shared_ptr<RingStream> create(const Road& road, const StreamSettings& settings,
                                              const StreamShape& shape, Hooks hooks);
    ~RingStream() override; // stops and releases

    // UDP, at Road::host.
    std::uint16_t port() const { return port_; }

    std::uint32_t fetch(std::uint8_t* destination, std::uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                        std::uint32_t timeoutMs) override;
    void setDropIncomplete(bool drop) override;
    void lose(std::uint32_t status) override;
    void stop(std::uint32_t status) override;
    void release() override;
    std::uint32_t followSize(std::size_t payload) override;
    void lookAfter() override {}
    StreamNumbers numbers() const override;

private:
    struct Frame : AssembledFrame {
        FrameFacts facts;
    };
    // A descriptor of ours.
    class Descriptor {
    public:
        explicit Descriptor(int fd = -1) : fd_(fd) {}
        ~Descriptor() { reset(); }
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        void reset(int fd = -1);
        int get() const { return fd_; }

    private:
        int fd_;
    };

    RingStream(const Road& road, const StreamSettings& settings, const StreamShape& shape, Hooks hooks);
    bool openSocket();
    bool openRing(std::size_t payload);
    void run();
    bool receive(RingClock::time_point& next);
    void ask(const std::vector<gvsp::ResendRequest>& requests);
    AssembledFrame* acquireLocked();
    void takeClosedLocked(Frame& frame);
    void recycleLocked(AssembledFrame& frame);
    void makeRoomLocked();

    const Road road_;
    const Hooks hooks_;
    const std::size_t most_; // frames at a time
    std::uint16_t port_ = 0;
    std::uint16_t requestId_ = 0; // of the stream's thread
    Descriptor socket_;           // takes the port, and sends requests
    Descriptor epoll_;
    WakeDescriptor wake_;
    std::atomic<bool> ending_{false};
    std::thread thread_;

    mutable std::mutex mutex_; // guards all below; held while a block's packets are sorted
    std::condition_variable changed_;
    std::shared_ptr<PacketRing> ring_;
    std::vector<std::unique_ptr<Frame>> frames_;
    std::vector<Frame*> free_;
    std::deque<Frame*> ready_;
    FrameAssembler assembler_;
    FrameGeometry geometry_; // of the newest leader
    bool dropIncomplete_;
    bool ended_ = false;
    bool frameCame_ = false; // what the hooks shall tell
    bool sizeChanged_ = false;
    std::uint32_t endStatus_ = 0;
    StreamNumbers own_; // the counters of this class
};

} // namespace kolt::cc

#endif
