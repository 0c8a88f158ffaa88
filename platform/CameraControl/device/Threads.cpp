#include "device/Threads.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kolt::cc {

void nameThisThread(const char* name) {
    pthread_setname_np(pthread_self(), name);
}

void raiseThisThread() {
    // A nice value, not a real-time class: a stream that floods the host must not lock its user out.
    constexpr int kNice = -10;
    setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), kNice);
}

bool descriptorsToSpare() {
    constexpr std::size_t kSome = 16;
    const std::array<WakeDescriptor, kSome> tried;
    return std::all_of(tried.begin(), tried.end(), [](const WakeDescriptor& one) { return one.valid(); });
}

WakeDescriptor::WakeDescriptor() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeDescriptor::~WakeDescriptor() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

void WakeDescriptor::signal() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(fd_, &one, sizeof one); // full is signalled, too
}

void WakeDescriptor::clear() const {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(fd_, &count, sizeof count);
}

} // namespace kolt::cc
