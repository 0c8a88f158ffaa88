// When the last packet of each frame reached this host.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Listens on the loopback interface for the trailers that a camera sends, beside whoever receives them: a
// packet socket with a filter in the kernel, which stamps the time. Without the right to open one (root)
// IsOpen() is false and nothing is seen. One thread of its own.
class PacketWatch {
public:
    explicit PacketWatch(const std::string& address);
    ~PacketWatch();
    PacketWatch(const PacketWatch&) = delete;
    PacketWatch& operator=(const PacketWatch&) = delete;

    bool IsOpen() const { return m_socket >= 0; }
    uint64_t Trailers() const { return m_count; }
    // Nanoseconds of CLOCK_REALTIME; 0 when the trailer of this block wasn't seen. 1 to 65535.
    uint64_t TimeOf(uint32_t block) const;

private:
    void Run();

    int m_socket = -1;
    int m_end = -1; // eventfd
    std::atomic<uint64_t> m_count{0};
    mutable std::mutex m_mutex; // guards the next
    std::vector<uint64_t> m_times;
    std::thread m_thread;
};
