#include "device/Liveness.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include <poll.h>

#include "find/GvcpCodec.h"

namespace kolt::cc {

LivenessProbe::LivenessProbe(std::uint32_t cameraIp, std::uint32_t localIp, std::uint16_t port)
    : cameraIp_(cameraIp), localIp_(localIp), port_(port) {
    UdpOptions options;
    options.bindIp = localIp;
    socket_.open(options);
}

void LivenessProbe::send() {
    requestId_ = requestId_ == 0xFFFF ? 1 : static_cast<std::uint16_t>(requestId_ + 1);
    const Datagram command = discoveryCommand(requestId_, false);
    // A send that fails (no route at the moment, interface down) is a probe without an answer.
    socket_.send(command.data(), command.size(), cameraIp_, port_, localIp_);
}

bool LivenessProbe::receive() {
    bool alive = false;
    std::array<std::uint8_t, gvcp::kMaxDatagram> data{};
    UdpOrigin origin;
    for (int taken = 0; taken < 64; ++taken) { // a flood must not hold the thread
        const long length = socket_.receive(data.data(), data.size(), origin);
        if (length < 0) {
            break;
        }
        // Answers to earlier probes are signs of life as well: only source and kind are looked at.
        alive = alive || (origin.ip == cameraIp_ && origin.port == port_ &&
                          length >= static_cast<long>(gvcp::kHeaderSize) &&
                          load16(data.data() + 2) == gvcp::ackOf(gvcp::Command::discovery));
    }
    return alive;
}

const char* toText(LossReason reason) {
    switch (reason) {
    case LossReason::silent:
        return "the camera no longer answers";
    case LossReason::controlLost:
        return "control of the camera was lost";
    case LossReason::transport:
        break;
    }
    return "the transport library reports the device as gone";
}

LivenessMonitor::LivenessMonitor(const LivenessRules& rules, std::unique_ptr<LivenessProbe> probe,
                                 Hooks hooks)
    : rules_(rules), probe_(std::move(probe)), hooks_(std::move(hooks)) {
    if (!wake_.valid() || (probe_ && !probe_->usable())) {
        throw std::system_error(std::make_error_code(std::errc::too_many_files_open));
    }
    heard();
}

void LivenessMonitor::start() {
    thread_ = std::thread([this] { loop(); });
}

LivenessMonitor::~LivenessMonitor() {
    stop();
    join();
}

void LivenessMonitor::join() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

void LivenessMonitor::reportLost(LossReason reason) {
    int none = -1;
    reported_.compare_exchange_strong(none, static_cast<int>(reason));
    wake_.signal();
}

void LivenessMonitor::mute() {
    muted_ = true;
    wake_.signal();
}

void LivenessMonitor::stop() {
    stop_ = true;
    wake_.signal();
}

// Returns at the deadline, or when something is to be done before.
void LivenessMonitor::waitUntil(Clock::time_point deadline, bool muted) {
    std::array<pollfd, 2> fds{};
    fds[0] = {wake_.descriptor(), POLLIN, 0};
    fds[1] = {probe_ ? probe_->descriptor() : -1, POLLIN, 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        const int timeout = static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
        const int ready = poll(fds.data(), fds.size(), timeout);
        // Also at the deadline: an answer may have come while this thread had no processor.
        if (probe_ && probe_->receive()) {
            heard();
        }
        if (ready > 0 && fds[0].revents != 0) {
            wake_.clear();
        }
        if (stop_ || muted_ != muted || (!muted && reported_ >= 0) || Clock::now() >= deadline) {
            return;
        }
    }
}

void LivenessMonitor::loop() {
    nameThisThread("ov-liveness");
    constexpr std::chrono::milliseconds kQuick{50};
    LivenessJudge judge(rules_);
    for (unsigned round = 0; !stop_; ++round) {
        const bool muted = muted_;
        const Clock::time_point sent = Clock::now();
        if (probe_) {
            probe_->send();
        }
        if (!muted) {
            hooks_.tick();
        }
        if (!muted && round % rules_.controlEvery == 0) {
            hooks_.askControl();
        }
        waitUntil(sent + (muted ? kQuick : rules_.interval), muted);
        if (stop_ || muted_) {
            continue;
        }
        if (reported_ < 0 && judge.intervalPassed(heardSince(sent), hooks_.busy())) {
            reportLost(LossReason::silent);
        }
        if (reported_ >= 0) {
            hooks_.lost(static_cast<LossReason>(reported_.load()));
            return;
        }
    }
}

} // namespace kolt::cc
