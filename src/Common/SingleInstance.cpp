#include "Common/SingleInstance.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr size_t kLinkCapacity = 4096;

enum class LockResult { Taken, HeldByAnother };

LockResult LockWholeFile(int descriptor) {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 0;
    if (fcntl(descriptor, F_SETLK, &lock) == 0)
        return LockResult::Taken;
    // Deliberate: any other failure, as on a file system without locks, passes for success.
    return errno == EAGAIN || errno == EACCES ? LockResult::HeldByAnother : LockResult::Taken;
}

bool WriteProcessId(int descriptor) {
    std::array<char, 16> text{};
    const int length = std::snprintf(text.data(), text.size(), "%d", static_cast<int>(getpid()));
    if (ftruncate(descriptor, 0) != 0)
        return false;
    return write(descriptor, text.data(), static_cast<size_t>(length)) == length;
}

} // namespace

std::string ExeNameOfLink(const char* link) {
    std::array<char, kLinkCapacity> target{};
    const ssize_t length = readlink(link, target.data(), target.size());
    if (static_cast<size_t>(length) >= target.size())
        return {};
    const std::string path(target.data(), static_cast<size_t>(length));
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(slash + 1);
}

std::string currentExeName() {
    return ExeNameOfLink("/proc/self/exe");
}

bool TakePidFile(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        std::printf("Open file failed, error : %s", std::strerror(errno));
        return false;
    }
    if (LockWholeFile(descriptor) == LockResult::HeldByAnother) {
        std::printf("%s already locked, error: %s\n", path.c_str(), std::strerror(errno));
        close(descriptor);
        return false;
    }
    if (!WriteProcessId(descriptor)) {
        std::printf("Write file failed, file: %s, error: %s\n", path.c_str(), std::strerror(errno));
        close(descriptor);
        return false;
    }
    return true; // the descriptor stays open: it carries the lock
}

bool runSingleInstance() {
    const std::string name = currentExeName();
    return !name.empty() && TakePidFile("/var/run/" + name + ".pid");
}
