#ifndef LIVE_DESCRIPTOR_H
#define LIVE_DESCRIPTOR_H

#include <utility>

namespace live {

/// Owns a file descriptor; -1 is none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    int Get() const { return fd_; }

private:
    int fd_ = -1;
};

/// A pollable flag between threads: readable once raised, until it is cleared.
class Wakeup {
public:
    Wakeup(); ///< std::system_error where no descriptor is to be had

    void Raise(); ///< any thread
    void Clear();
    int Fd() const { return event_.Get(); }

private:
    Descriptor event_;
};

/// The signals that end the program, as a descriptor. Made before any thread starts, so that all threads
/// inherit the blocked mask. The first signal is taken here; a second one ends the process at once, should a
/// platform library hang while it is closed.
class StopSignals {
public:
    StopSignals();

    int Fd() const { return signals_.Get(); }

    /// Takes the signal that made the descriptor readable; its number, or 0.
    int Take();

private:
    Descriptor signals_;
};

} // namespace live

#endif
