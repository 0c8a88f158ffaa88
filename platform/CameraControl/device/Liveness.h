// Is the camera still there, and still ours? Aravis says so after five seconds and more; this says it in
// under two.
#ifndef KOLT_CAMERA_CONTROL_LIVENESS_H
#define KOLT_CAMERA_CONTROL_LIVENESS_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "device/Threads.h"
#include "find/UdpSocket.h"

namespace kolt::cc {

struct LivenessRules {
    std::chrono::milliseconds interval{200}; // between two probes
    unsigned misses = 3;                     // unanswered probes in a row that mean death
    // The same while a caller's register access is under way: many cameras answer nothing else while they
    // work on one (saving a user set, say). Death must still be told within two seconds.
    unsigned missesWhileBusy = 8;
    unsigned controlEvery = 2; // a look at the control of the device at each such probe
};

// The judgement alone. A sign of life is any datagram of the camera: an answer to a probe, even a late one,
// the result of a register access, a frame.
class LivenessJudge {
public:
    explicit LivenessJudge(const LivenessRules& rules) : rules_(rules) {}

    // An interval has passed since a probe was sent. True: the device is dead.
    bool intervalPassed(bool signOfLife, bool busy) {
        misses_ = signOfLife ? 0 : misses_ + 1;
        return misses_ >= (busy ? rules_.missesWhileBusy : rules_.misses);
    }

private:
    LivenessRules rules_;
    unsigned misses_ = 0;
};

// Sends probes and takes answers. GigE Vision: DISCOVERY to the camera's own address, from a socket of its
// own, so it works beside whatever the control channel is doing and needs no control.
class LivenessProbe {
public:
    // port: 3956 but in tests.
    LivenessProbe(std::uint32_t cameraIp, std::uint32_t localIp, std::uint16_t port);

    bool usable() const { return socket_.isOpen(); }
    int descriptor() const { return socket_.descriptor(); }
    void send();
    // Takes all that has come. True when any of it is an answer of the camera to one of the probes.
    bool receive();

private:
    UdpSocket socket_;
    std::uint32_t cameraIp_;
    std::uint32_t localIp_;
    std::uint16_t port_;
    std::uint16_t requestId_ = 0;
};

enum class LossReason { silent, controlLost, transport };

const char* toText(LossReason reason);

// The thread that watches one open device.
class LivenessMonitor {
public:
    struct Hooks {
        std::function<bool()> busy;           // a caller's register access is under way
        std::function<void()> tick;           // once each interval; must not block
        std::function<void()> askControl;     // starts a look at the control; must not block
        std::function<void(LossReason)> lost; // called once at most, on the monitor's thread
    };

    // probe may be null (USB): then only heard() counts. Throws std::system_error without descriptors.
    LivenessMonitor(const LivenessRules& rules, std::unique_ptr<LivenessProbe> probe, Hooks hooks);
    ~LivenessMonitor(); // stops and joins
    LivenessMonitor(const LivenessMonitor&) = delete;
    LivenessMonitor& operator=(const LivenessMonitor&) = delete;

    // Starts the thread; throws std::system_error.
    void start();

    // A sign of life by another way. Any thread, often.
    void heard() { lastHeard_.store(Clock::now().time_since_epoch().count(), std::memory_order_relaxed); }
    bool heardSince(Clock::time_point moment) const {
        return lastHeard_.load(std::memory_order_relaxed) >= moment.time_since_epoch().count();
    }

    // The device is known to be lost. Any thread; the hook runs soon.
    void reportLost(LossReason reason);

    // From now on the monitor only asks, in quick succession, for signs of life. A hook that has begun goes
    // on.
    void mute();

    // Ends the thread. Never blocks.
    void stop();
    // After stop(); not on the monitor's own thread. One caller at a time.
    void join();

    bool isOwnThread() const { return std::this_thread::get_id() == thread_.get_id(); }

private:
    void loop();
    void waitUntil(Clock::time_point deadline, bool muted);

    const LivenessRules rules_;
    const std::unique_ptr<LivenessProbe> probe_; // the thread's own
    const Hooks hooks_;
    WakeDescriptor wake_;
    std::atomic<Clock::rep> lastHeard_{0};
    std::atomic<bool> muted_{false};
    std::atomic<bool> stop_{false};
    std::atomic<int> reported_{-1}; // a LossReason
    std::thread thread_;
};

} // namespace kolt::cc

#endif
