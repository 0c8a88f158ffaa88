#include "find/Neighbours.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <linux/neighbour.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "find/GvcpCodec.h"
#include "find/UdpSocket.h"

namespace kolt::cc {

namespace {

using Clock = std::chrono::steady_clock;

// The attributes of one neighbour: its address and its MAC.
void readAttributes(const std::uint8_t* data, std::size_t length, std::uint32_t& ip, std::uint64_t& mac) {
    std::size_t at = 0;
    while (at + sizeof(rtattr) <= length) {
        rtattr attribute{};
        std::memcpy(&attribute, data + at, sizeof attribute);
        if (attribute.rta_len < sizeof(rtattr) || attribute.rta_len > length - at)
            return;
        const std::uint8_t* value = data + at + sizeof(rtattr);
        const std::size_t size = attribute.rta_len - sizeof(rtattr);
        if (attribute.rta_type == NDA_DST && size == 4)
            ip = load32(value);
        if (attribute.rta_type == NDA_LLADDR && size == 6)
            mac = (static_cast<std::uint64_t>(load16(value)) << 32) | load32(value + 2);
        at += RTA_ALIGN(attribute.rta_len);
    }
}

bool requestNeighbours(int fd, unsigned interfaceIndex) {
    struct {
        nlmsghdr header;
        ndmsg body;
    } request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETNEIGH;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.body.ndm_family = AF_INET;
    request.body.ndm_ifindex = static_cast<int>(interfaceIndex);
    return ::send(fd, &request, sizeof request, 0) == static_cast<ssize_t>(sizeof request);
}

} // namespace

std::optional<Neighbour> parseNeighbours(const std::uint8_t* data, std::size_t length,
                                         unsigned interfaceIndex, std::uint32_t ip) {
    constexpr unsigned kResolved = NUD_REACHABLE | NUD_STALE | NUD_DELAY | NUD_PROBE | NUD_PERMANENT;
    std::size_t at = 0;
    while (at + sizeof(nlmsghdr) + sizeof(ndmsg) <= length) {
        nlmsghdr header{};
        ndmsg body{};
        std::memcpy(&header, data + at, sizeof header);
        std::memcpy(&body, data + at + sizeof header, sizeof body);
        if (header.nlmsg_len < sizeof header + sizeof body || header.nlmsg_len > length - at)
            break;
        std::uint32_t address = 0;
        std::uint64_t mac = 0;
        readAttributes(data + at + sizeof header + sizeof body,
                       header.nlmsg_len - sizeof header - sizeof body, address, mac);
        if (header.nlmsg_type == RTM_NEWNEIGH && body.ndm_ifindex == static_cast<int>(interfaceIndex) &&
            (body.ndm_state & kResolved) != 0 && address == ip && mac != 0)
            return Neighbour{mac, (body.ndm_state & NUD_REACHABLE) != 0};
        at += NLMSG_ALIGN(header.nlmsg_len);
    }
    return std::nullopt;
}

std::optional<Neighbour> knownNeighbour(unsigned interfaceIndex, std::uint32_t ip) {
    const int fd = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
    if (fd < 0)
        return std::nullopt;
    std::optional<Neighbour> found;
    if (requestNeighbours(fd, interfaceIndex)) {
        std::array<std::uint8_t, 32768> buffer{};
        // The kernel has each part of its answer ready before the call returns: an empty socket is the end.
        for (;;) {
            const ssize_t length = ::recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT);
            if (length <= 0)
                break;
            if (!found)
                found = parseNeighbours(buffer.data(), static_cast<std::size_t>(length), interfaceIndex, ip);
        }
    }
    ::close(fd);
    return found;
}

bool somebodyAnswersAt(const HostInterface& interface, std::uint32_t ip, std::uint64_t ownMac,
                       std::chrono::milliseconds patience) {
    const HostAddress* near = interface.addressFor(ip);
    if (near == nullptr || interface.loopback)
        return false;
    UdpSocket socket;
    UdpOptions options;
    options.bindIp = near->ip;
    options.interfaceName = interface.name;
    options.reportErrors = true;
    const Datagram question = discoveryCommand(1);
    const auto before = knownNeighbour(interface.index, ip);
    if (socket.open(options) != 0 || socket.send(question.data(), question.size(), ip, gvcp::kPort) != 0)
        return false;
    const auto deadline = Clock::now() + patience;
    bool alive = false;
    while (Clock::now() < deadline) {
        std::uint8_t byte = 0;
        UdpOrigin origin;
        std::uint32_t destination = 0;
        int error = 0;
        if (socket.receive(&byte, 1, origin) >= 0)
            alive = alive || origin.ip == ip;
        // Only the far end says "refused"; "no route to host" is our own kernel's word for silence.
        while (socket.takeError(destination, error))
            alive = alive || (destination == ip && error == ECONNREFUSED);
        const auto now = knownNeighbour(interface.index, ip);
        const bool fresh = now && (now->confirmed || !before || before->mac != now->mac);
        if (alive || fresh)
            return !now || now->mac != ownMac;
        pollfd watched{socket.descriptor(), POLLIN, 0};
        ::poll(&watched, 1, 10);
    }
    return false;
}

} // namespace kolt::cc
