// A mutex that is handed over in the order of asking.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

// The grab thread holds its lock while it waits for a frame and asks for it again at once. An ordinary mutex
// would let it overtake every other thread for ever, and the picture would starve; here whoever asked first
// is next. Meets Lockable but for try_lock. Not recursive. Any thread.
class CFairMutex {
public:
    CFairMutex() = default;
    CFairMutex(const CFairMutex&) = delete;
    CFairMutex& operator=(const CFairMutex&) = delete;

    void lock() {
        std::unique_lock<std::mutex> guard(m_mutex);
        const uint64_t ticket = m_nextTicket++;
        m_turn.wait(guard, [this, ticket] { return m_served == ticket; });
    }

    void unlock() {
        {
            const std::lock_guard<std::mutex> guard(m_mutex);
            ++m_served;
        }
        m_turn.notify_all();
    }

private:
    std::mutex m_mutex; // guards the two counters
    std::condition_variable m_turn;
    uint64_t m_nextTicket = 0;
    uint64_t m_served = 0; // ticket of the present owner, or of the next one
};
