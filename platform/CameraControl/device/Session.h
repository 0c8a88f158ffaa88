// One opening of a device, from OV_CC_OpenDevice to OV_CC_CloseDevice: the device and its I/O thread, the
// thread that watches it, the stream.
//
// Any thread may call; opening, closing, starting and stopping come one at a time (Camera sees to that). No
// call blocks on a device that has died for longer than it takes to find that out.
#ifndef KOLT_CAMERA_CONTROL_SESSION_H
#define KOLT_CAMERA_CONTROL_SESSION_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "device/FrameSource.h"
#include "device/IoQueue.h"
#include "device/Liveness.h"
#include "device/Log.h"
#include "device/TransportDevice.h"

namespace kolt::cc {

class Session;

// The way from a thread of a library to a session that may be gone.
class SessionLink {
public:
    // f(session), unless the link is cut. f must not block.
    template<class F>
    void with(F&& f) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (session_ != nullptr) {
            f(*session_);
        }
    }
    void tie(Session* session);
    // When this returns, with() is not under way and does nothing from then on.
    void cut() { tie(nullptr); }

private:
    std::mutex mutex_; // guards session_
    Session* session_ = nullptr;
};

class Session {
public:
    struct Parts {
        std::unique_ptr<TransportDevice> device;
        std::unique_ptr<LivenessProbe> probe; // null: the device has none
        std::shared_ptr<SessionLink> link;    // not tied yet
        LivenessRules rules;
        Logger log;
        // The device is lost; called once at most, on the session's own thread, after all waiting callers
        // were let go. May block, and may close the session.
        std::function<void(Session&)> lost;
    };

    // Throws std::system_error when threads or descriptors are not to be had.
    static std::shared_ptr<Session> start(Parts parts);

    std::uint32_t readMemory(std::uint64_t address, std::uint8_t* destination, std::size_t length);
    std::uint32_t writeMemory(std::uint64_t address, const std::uint8_t* source, std::size_t length);
    std::uint32_t startGrabbing(const StreamSettings& settings);
    std::uint32_t stopGrabbing();
    bool isGrabbing() const { return grabbing_; }
    // The one that runs, or the last one; null before the first.
    std::shared_ptr<FrameSource> stream() const;
    std::int32_t optimalPacketSize();
    const std::vector<std::uint8_t>& xml() const { return xml_; }
    bool isLost() const { return lost_; }
    bool isClosing() const { return closing_; }

    // Lets all waiting callers go, and keeps the lost hook from being begun by whoever asks isClosing(). Any
    // thread, any number of times. Never blocks.
    void beginClose();

    // Stops the stream, gives the camera back and ends the threads. Returns after at most a quarter of a
    // second when the camera doesn't answer; what is left is done in the background then. Once, after
    // beginClose(); also on the session's own thread.
    void close();

    // For SessionLink.
    void heard() { monitor_->heard(); }
    void reportLost(LossReason reason) { monitor_->reportLost(reason); }
    void followSize(bool urgent);

private:
    explicit Session(Parts parts);
    ~Session();
    static void dispose(Session* session);

    std::uint32_t run(IoQueue::Job job);
    void askControl();
    void onLost(LossReason reason);
    bool waitForRelease();

    const std::shared_ptr<SessionLink> link_;
    const LivenessRules rules_;
    const Logger log_;
    const std::function<void(Session&)> lostHook_;
    const std::vector<std::uint8_t> xml_;

    std::unique_ptr<TransportDevice> device_; // used by the I/O thread alone
    TransportDevice* const ioDevice_;         // the same; device_ goes first
    bool acquiring_ = false;                  // the camera was told to send; used by the I/O thread alone
    std::unique_ptr<IoQueue> io_;
    std::unique_ptr<LivenessMonitor> monitor_;

    mutable std::mutex mutex_; // guards stream_
    std::shared_ptr<FrameSource> stream_;
    std::atomic<bool> grabbing_{false};
    std::atomic<bool> closing_{false};
    std::atomic<bool> lost_{false};
    std::atomic<bool> silent_{false};
    std::atomic<bool> released_{false}; // the device is given back
    std::atomic<bool> watched_{false};  // the monitor's thread has ended
    std::atomic<bool> controlAsked_{false};
    std::atomic<Clock::rep> nextControl_{0};
    std::atomic<bool> sizeAsked_{false};
    std::atomic<Clock::rep> sizeLookedAt_{0};
};

} // namespace kolt::cc

#endif
