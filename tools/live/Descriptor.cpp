#include "Descriptor.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace live {
namespace {

sigset_t StopSet() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&set, signal);
    return set;
}

Descriptor Checked(int fd, const char* what) {
    if (fd < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return Descriptor(fd);
}

} // namespace

Descriptor::~Descriptor() {
    if (fd_ >= 0)
        close(fd_);
}

Wakeup::Wakeup() : event_(Checked(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd")) {}

void Wakeup::Raise() {
    const uint64_t one = 1;
    // Fails only when the counter is full, and then the descriptor is readable anyway.
    [[maybe_unused]] const ssize_t written = write(event_.Get(), &one, sizeof one);
}

void Wakeup::Clear() {
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(event_.Get(), &count, sizeof count);
}

StopSignals::StopSignals() {
    const sigset_t set = StopSet();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signals_ = Checked(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC), "signalfd");
    // A reader of the output that goes away (kolt_live | head) must not leave a camera open.
    std::signal(SIGPIPE, SIG_IGN);
}

int StopSignals::Take() {
    signalfd_siginfo info{};
    if (read(signals_.Get(), &info, sizeof info) != sizeof info)
        return 0;
    const sigset_t set = StopSet();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    return static_cast<int>(info.ssi_signo);
}

} // namespace live
