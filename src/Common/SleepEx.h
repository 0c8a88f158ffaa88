// Exact waiting for the camera threads and the panels.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

// Waits until at least `milliseconds` have passed and returns well under a millisecond later, never earlier.
// 0 and below return after one reading of the clock. Runs no event loop. Any thread.
//
// The clock is the monotonic one, so that a corrected wall clock neither cuts a wait short nor hangs it. The
// thread sleeps in the kernel until shortly before the deadline and watches the clock only for the rest.
void SleepEx(int milliseconds);

// A thread's stop flag that also ends that thread's waits. Set by whoever stops the thread, read by the
// thread.
class CStopFlag {
public:
    CStopFlag() = default;
    CStopFlag(const CStopFlag&) = delete;
    CStopFlag& operator=(const CStopFlag&) = delete;

    void Set();
    void Clear();
    bool IsSet() const { return m_bSet.load(std::memory_order_acquire); }

    // As the free SleepEx, but Set() ends it at once, and so does Wake(). False when the flag is set.
    bool SleepEx(int milliseconds);

    // Ends the present wait, or else the next one, without stopping anything.
    void Wake();

private:
    std::atomic<bool> m_bSet{false};
    std::mutex m_mutex; // guards m_bWoken and pairs m_bSet with m_wake
    bool m_bWoken = false;
    std::condition_variable m_wake;
};
