// Which frame is on the screen, and since when.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <xcb/xcb.h>

// Reads the binary strip that the virtual camera paints, from the pixels of the screen, every half
// millisecond. The picture fills the rectangle from the window's corner. One thread of its own.
class ScreenWatch {
public:
    ScreenWatch(xcb_window_t window, uint32_t width, uint32_t height, uint32_t sensorWidth,
                uint32_t sensorHeight);
    ~ScreenWatch();
    ScreenWatch(const ScreenWatch&) = delete;
    ScreenWatch& operator=(const ScreenWatch&) = delete;

    // Frame number and the time at which it was first seen (nanoseconds of CLOCK_REALTIME), since the last
    // call.
    std::map<uint32_t, uint64_t> TakeSeen();

private:
    void Run();
    uint32_t Read();

    xcb_connection_t* m_connection;
    xcb_window_t m_root;
    int16_t m_x = 0, m_y = 0; // of the row through the strip, on the screen
    uint16_t m_width;
    double m_firstSquare, m_step; // centre of the leftmost square, and the way to the next, in pixels
    std::atomic<bool> m_stop{false};
    std::mutex m_mutex; // guards the next
    std::map<uint32_t, uint64_t> m_seen;
    std::thread m_thread;
};
