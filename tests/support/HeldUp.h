// How long the machine kept this process from its work. A promise of "within a second" is one of the program,
// and no test can hold a busy machine to it: what it takes away doesn't count.
#ifndef KOLT_TESTS_SUPPORT_HELDUP_H
#define KOLT_TESTS_SUPPORT_HELDUP_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace kolt::test {

// Watches from its making to its end, by a thread that wants to wake every few milliseconds. Any thread may
// ask.
class HeldUp {
public:
    using Clock = std::chrono::steady_clock;

    HeldUp() : due_(now()), watch_([this] { watch(); }) {}
    ~HeldUp() {
        ended_ = true;
        watch_.join();
    }
    HeldUp(const HeldUp&) = delete;
    HeldUp& operator=(const HeldUp&) = delete;

    struct Moment {
        Clock::time_point at;
        double lost = 0; // until then, in milliseconds
    };
    Moment mark() const { return {Clock::now(), lost()}; }
    // Milliseconds from then to `end`, without what was lost since.
    double tookSince(const Moment& begun, Clock::time_point end = Clock::now()) const {
        return std::chrono::duration<double, std::milli>(end - begun.at).count() - (lost() - begun.lost);
    }

    double lostSince(const Moment& begun) const { return lost() - begun.lost; }

private:
    static constexpr std::int64_t kTurn = 5'000'000; // nanoseconds

    // All delays so far, the present one included. Twice what one thread lost: what is measured often goes
    // over two.
    double lost() const {
        const std::int64_t late = now() - due_;
        return 2.0 * static_cast<double>(late_ + (late > 0 ? late : 0)) / 1e6;
    }
    static std::int64_t now() {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
    }
    void watch() {
        while (!ended_) {
            due_ = now() + kTurn;
            std::this_thread::sleep_for(std::chrono::nanoseconds(kTurn));
            late_ += now() - due_;
        }
    }

    std::atomic<std::int64_t> due_; // when the thread should run next
    std::atomic<std::int64_t> late_{0};
    std::atomic<bool> ended_{false};
    std::thread watch_;
};

} // namespace kolt::test

#endif
