// A host and a camera on the other end of a cable, and what can be read of processes and of the screen.
#pragma once

#include "support/ChildProcess.h"
#include "support/NetworkNamespace.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>
#include <xcb/xcb.h>

// The calling thread, and all that it starts, lives on the host from here on. Packets of 1500 bytes, which
// every client takes.
class Site {
public:
    Site();
    // A camera of 1920 x 1080 on the other end.
    std::unique_ptr<kolt::test::ChildProcess> Camera(const std::string& format, int framesPerSecond) const;

private:
    kolt::test::NetworkNamespace m_host, m_far;
    kolt::test::NamespaceScope m_inside;
};

class Screen {
public:
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    // 0xRRGGBB of each pixel.
    std::vector<uint32_t> Read(int x, int y, int width, int height) const;

private:
    xcb_connection_t* m_connection;
    xcb_window_t m_root;
};

double CpuSecondsOf(pid_t pid);

struct Memory {
    double pss = 0, rss = 0; // MiB
};
Memory MemoryOf(pid_t pid);

double Median(std::vector<double> values);
// Looks every millisecond; throws after half a minute.
void WaitUntil(const char* what, const std::function<bool()>& condition);
