#include "Common/SleepEx.h"

#include <cerrno>
#include <chrono>
#include <ctime>

namespace {

using Clock = std::chrono::steady_clock;

// A kernel sleep wakes up late by the timer slack (50 us) and the scheduler; the rest of the way is watched.
// Chosen so that a wait of 1 ms still sleeps for most of it.
constexpr auto kWatched = std::chrono::microseconds(120);

void SleepInKernelUntil(Clock::time_point deadline) {
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(deadline.time_since_epoch()).count();
    timespec until{static_cast<time_t>(ns / 1000000000), static_cast<long>(ns % 1000000000)};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

void WatchClockUntil(Clock::time_point deadline) {
    while (Clock::now() < deadline) {
#if defined(__x86_64__)
        __builtin_ia32_pause();
#endif
    }
}

} // namespace

void SleepEx(int milliseconds) {
    const auto start = Clock::now();
    if (milliseconds <= 0)
        return;
    const auto deadline = start + std::chrono::milliseconds(milliseconds);
    SleepInKernelUntil(deadline - kWatched);
    WatchClockUntil(deadline);
}

void CStopFlag::Set() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bSet.store(true, std::memory_order_release);
    }
    m_wake.notify_all();
}

void CStopFlag::Clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bSet.store(false, std::memory_order_release);
}

bool CStopFlag::SleepEx(int milliseconds) {
    const auto start = Clock::now();
    if (milliseconds <= 0)
        return !IsSet();
    const auto deadline = start + std::chrono::milliseconds(milliseconds);
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const bool ended =
            m_wake.wait_until(lock, deadline - kWatched, [this] { return IsSet() || m_bWoken; });
        m_bWoken = false;
        if (ended)
            return !IsSet();
    }
    WatchClockUntil(deadline);
    return !IsSet();
}

void CStopFlag::Wake() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bWoken = true;
    }
    m_wake.notify_all();
}
