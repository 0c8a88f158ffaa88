#include "device/ReceiveBuffer.h"

#include <algorithm>
#include <cstdlib>

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace kolt::cc {

namespace {

bool isUdpSocketAt(int fd, std::uint16_t port) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
        address.sin_family != AF_INET || ntohs(address.sin_port) != port) {
        return false;
    }
    int type = 0;
    length = sizeof type;
    return getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &length) == 0 && type == SOCK_DGRAM;
}

void setReceiveBuffer(int fd, int bytes) {
    if (setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes) != 0) {
        setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
    }
}

} // namespace

std::size_t receiveBufferFor(std::size_t payload) {
    constexpr std::size_t kLeast = std::size_t{8} << 20;
    constexpr std::size_t kMost = std::size_t{128} << 20;
    return std::clamp(payload > kMost ? kMost : 4 * payload, kLeast, kMost);
}

bool enlargeReceiveBuffer(std::uint16_t port, std::size_t bytes) {
    DIR* folder = opendir("/proc/self/fd");
    if (folder == nullptr) {
        return false;
    }
    bool found = false;
    while (const dirent* entry = readdir(folder)) { // NOLINT(concurrency-mt-unsafe): the stream is our own
        const int fd = std::atoi(entry->d_name);
        if (fd > 2 && isUdpSocketAt(fd, port)) {
            setReceiveBuffer(fd, static_cast<int>(std::min<std::size_t>(bytes, 0x3FFF'FFFF)));
            found = true;
        }
    }
    closedir(folder);
    return found;
}

} // namespace kolt::cc
