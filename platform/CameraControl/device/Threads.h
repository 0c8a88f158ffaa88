// What the library's own threads share.
#ifndef KOLT_CAMERA_CONTROL_THREADS_H
#define KOLT_CAMERA_CONTROL_THREADS_H

#include <chrono>
#include <cstdint>

namespace kolt::cc {

using Clock = std::chrono::steady_clock; // never jumps

// Names the calling thread as debuggers and /proc show it; at most 15 characters.
void nameThisThread(const char* name);

// Asks for a better place in the schedule; does nothing where the right to it is missing.
void raiseThisThread();

// True when the process may have some more descriptors, as many as Aravis and GLib take for a device or a
// stream: where they can't have one, they end the process.
bool descriptorsToSpare();

// A descriptor that wakes a poll. Any thread may signal; owned by whoever polls it.
class WakeDescriptor {
public:
    WakeDescriptor();
    ~WakeDescriptor();
    WakeDescriptor(const WakeDescriptor&) = delete;
    WakeDescriptor& operator=(const WakeDescriptor&) = delete;

    bool valid() const { return fd_ >= 0; }
    int descriptor() const { return fd_; }
    void signal() const;
    void clear() const;

private:
    int fd_;
};

} // namespace kolt::cc

#endif
