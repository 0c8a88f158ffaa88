#include "device/PacketProbe.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include "find/GvcpCodec.h"

namespace kolt::cc {

namespace {

constexpr std::uint32_t kHeaders = 20 + 8; // IP, UDP

} // namespace

std::uint32_t pathMtu(std::uint32_t localIp, std::uint32_t ip) {
    UdpSocket socket;
    UdpOptions options;
    options.bindIp = localIp;
    if (socket.open(options) != 0) {
        return 0;
    }
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_addr.s_addr = htonl(ip);
    peer.sin_port = htons(gvcp::kPort);
    int mtu = 0;
    socklen_t length = sizeof mtu;
    const bool known =
        ::connect(socket.descriptor(), reinterpret_cast<const sockaddr*>(&peer), sizeof peer) == 0 &&
        ::getsockopt(socket.descriptor(), IPPROTO_IP, IP_MTU, &mtu, &length) == 0;
    return known && mtu > 0 ? static_cast<std::uint32_t>(mtu) : 0;
}

PacketProbe::PacketProbe(std::uint32_t localIp, std::uint32_t cameraIp) : cameraIp_(cameraIp) {
    UdpOptions options;
    options.bindIp = localIp;
    sockaddr_in local{};
    socklen_t length = sizeof local;
    if (socket_.open(options) == 0 &&
        ::getsockname(socket_.descriptor(), reinterpret_cast<sockaddr*>(&local), &length) == 0) {
        port_ = ntohs(local.sin_port);
    }
}

bool PacketProbe::arrives(std::uint32_t size, std::chrono::milliseconds patience) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + patience;
    for (;;) {
        std::uint8_t first = 0; // the true length is told all the same
        UdpOrigin origin;
        long length = 0;
        while ((length = socket_.receive(&first, sizeof first, origin)) >= 0) {
            if (origin.ip == cameraIp_ && static_cast<std::uint64_t>(length) + kHeaders == size) {
                return true;
            }
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left.count() <= 0) {
            return false;
        }
        pollfd waiting{socket_.descriptor(), POLLIN, 0};
        ::poll(&waiting, 1, static_cast<int>(left.count()));
    }
}

} // namespace kolt::cc
