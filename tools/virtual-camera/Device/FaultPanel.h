// What the storeys of a camera share about faults and counters.
#ifndef VCAM_DEVICE_FAULTPANEL_H
#define VCAM_DEVICE_FAULTPANEL_H

#include "VirtualCamera.h"

#include <chrono>
#include <mutex>

namespace vcam {

using Clock = std::chrono::steady_clock;

// The faults that are on now. Any thread.
class FaultPanel {
public:
    Faults Get() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return Now();
    }
    void Set(const Faults& faults) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_faults = faults;
        m_silentUntil = {};
    }
    template<class Change>
    void Update(Change change) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        change(m_faults);
    }
    // Dead until then, whatever `silent` says.
    void SilenceUntil(Clock::time_point until) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_silentUntil = until;
    }
    bool Silent() const { return Get().silent; }

private:
    Faults Now() const {
        Faults faults = m_faults;
        if (m_silentUntil != Clock::time_point{} && Clock::now() < m_silentUntil)
            faults.silent = true;
        return faults;
    }

    mutable std::mutex m_mutex; // guards the two below
    Faults m_faults;
    Clock::time_point m_silentUntil{};
};

// The counters as they are counted: by several threads, one number at a time.
class CounterBoard {
public:
    using Field = uint64_t Counters::*;
    void Add(Field field, uint64_t by = 1) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_counters.*field += by;
    }
    // For a change of several numbers that belong together.
    template<class Change>
    void Update(Change change) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        change(m_counters);
    }
    Counters Get() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_counters;
    }

private:
    mutable std::mutex m_mutex; // guards the counters
    Counters m_counters;
};

} // namespace vcam

#endif
