#include "find/GvcpClient.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <random>
#include <sys/socket.h>
#include <unistd.h>

#include "Camera/Boundary/OvStatus.h"

namespace kolt::cc {

namespace {

using Clock = std::chrono::steady_clock;

timespec timeLeft(Clock::time_point deadline) {
    const auto left = std::max(Clock::duration::zero(), deadline - Clock::now());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    timespec result{};
    result.tv_sec = seconds.count();
    result.tv_nsec = std::chrono::duration_cast<std::chrono::nanoseconds>(left - seconds).count();
    return result;
}

} // namespace

GvcpClient::GvcpClient(const GvcpPeer& peer, const GvcpTiming& timing)
    : peer_(peer)
    , timing_(timing)
    , status_(OV_STATUS_OK)
    ,
    // Not from 1 up: a late answer to an earlier client on the same port must not fit.
    requestId_(static_cast<std::uint16_t>(std::random_device{}())) {
    UdpOptions options;
    options.bindIp = peer.localIp;
    options.interfaceName = peer.interfaceName;
    options.reportErrors = true;
    const int error = socket_.open(options);
    if (error == EADDRNOTAVAIL || error == ENODEV)
        status_ = OV_STATUS_NETWORK;
    else if (error != 0)
        status_ = OV_STATUS_RESOURCE;
    if (!peer.interfaceName.empty())
        interfaceIndex_ = ::if_nametoindex(peer.interfaceName.c_str());
}

std::uint32_t GvcpClient::localAddress() const {
    return peer_.localIp != 0 ? peer_.localIp : routeSource(peer_.ip);
}

std::uint16_t GvcpClient::nextRequestId() {
    if (++requestId_ == 0)
        ++requestId_;
    return requestId_;
}

std::uint32_t GvcpClient::discover(DiscoveryAnswer& answer) {
    const std::uint16_t id = nextRequestId();
    Acknowledge ack;
    const std::uint32_t status = request(discoveryCommand(id, false), {gvcp::Command::discovery, id}, ack);
    if (status == OV_STATUS_OK)
        answer = parseDiscoveryPayload(ack.payload);
    return status;
}

std::uint32_t GvcpClient::readRegister(std::uint32_t address, std::uint32_t& value) {
    const std::uint16_t id = nextRequestId();
    Acknowledge ack;
    const std::uint32_t status =
        request(readRegisterCommand(id, address), {gvcp::Command::readRegister, id}, ack);
    if (status == OV_STATUS_OK)
        value = load32(ack.payload);
    return status;
}

std::uint32_t GvcpClient::writeRegister(std::uint32_t address, std::uint32_t value) {
    const std::uint16_t id = nextRequestId();
    Acknowledge ack;
    return request(writeRegisterCommand(id, address, value), {gvcp::Command::writeRegister, id}, ack);
}

std::uint32_t GvcpClient::readMemory(std::uint32_t address, std::uint8_t* destination, std::size_t length) {
    if (length > 0 && length - 1 > UINT32_MAX - address)
        return OV_STATUS_INVALID_ADDRESS;
    while (length > 0) {
        const std::uint32_t first = address & ~3U;
        const std::size_t skip = address - first;
        const std::size_t count = std::min(gvcp::kMaxReadMemory, (skip + length + 3) & ~std::size_t{3});
        const std::uint16_t id = nextRequestId();
        Acknowledge ack;
        const std::uint32_t status = request(readMemoryCommand(id, first, static_cast<std::uint16_t>(count)),
                                             {gvcp::Command::readMemory, id, first, count}, ack);
        if (status != OV_STATUS_OK)
            return status;
        const std::size_t got = std::min(length, count - skip);
        std::memcpy(destination, ack.payload + 4 + skip, got);
        destination += got;
        length -= got;
        address += static_cast<std::uint32_t>(got);
    }
    return OV_STATUS_OK;
}

std::uint32_t GvcpClient::request(const Datagram& command, const Expectation& expected, Acknowledge& out) {
    if (status_ != OV_STATUS_OK)
        return status_;
    const auto pendingDeadline = Clock::now() + timing_.pendingLimit;
    for (unsigned attempt = 0; attempt < timing_.attempts; ++attempt) {
        if (socket_.send(command.data(), command.size(), peer_.ip, peer_.port, peer_.localIp,
                         interfaceIndex_) != 0)
            return OV_STATUS_NETWORK;
        switch (awaitAnswer(expected, out, Clock::now() + timing_.timeout, pendingDeadline)) {
        case Wait::answered:
            return statusFromGvcp(out.status);
        case Wait::refused:
        case Wait::cancelled:
            return OV_STATUS_NETWORK;
        case Wait::timedOut:
            break;
        }
    }
    return OV_STATUS_NETWORK;
}

GvcpClient::Wait GvcpClient::awaitAnswer(const Expectation& expected, Acknowledge& out,
                                         Clock::time_point deadline, Clock::time_point pendingDeadline) {
    for (;;) {
        pollfd watched[2] = {{socket_.descriptor(), POLLIN, 0}, {cancelFd_, POLLIN, 0}};
        const timespec left = timeLeft(deadline);
        const int ready = ::ppoll(watched, 2, &left, nullptr);
        if (ready > 0 && watched[1].revents != 0)
            return Wait::cancelled;
        if (ready > 0 && (watched[0].revents & POLLERR) != 0 && isRefused())
            return Wait::refused;
        UdpOrigin origin;
        const long length = ready > 0 ? socket_.receive(buffer_.data(), buffer_.size(), origin) : -1;
        if (length >= 0 && accept(static_cast<std::size_t>(length), origin, expected, out)) {
            if (!out.pending)
                return Wait::answered;
            const auto patience = Clock::now() + std::chrono::milliseconds(out.pendingMs);
            deadline = std::max(deadline, std::min(patience, pendingDeadline));
        }
        // Also while datagrams keep coming: rubbish must not prolong the wait.
        if (Clock::now() >= deadline)
            return Wait::timedOut;
    }
}

bool GvcpClient::isRefused() {
    std::uint32_t destination = 0;
    int error = 0;
    bool refused = false;
    while (socket_.takeError(destination, error))
        refused = refused || (destination == peer_.ip && error != 0);
    return refused;
}

bool GvcpClient::accept(std::size_t length, const UdpOrigin& origin, const Expectation& expected,
                        Acknowledge& out) {
    if (origin.ip != peer_.ip || origin.port != peer_.port) {
        ++dropped_.wrongSource;
        return false;
    }
    if (length > buffer_.size()) {
        ++dropped_.wrongLength;
        return false;
    }
    const Verdict verdict = parseAcknowledge(buffer_.data(), length, expected, out);
    dropped_.count(verdict);
    return verdict == Verdict::accepted;
}

std::uint32_t routeSource(std::uint32_t destination) {
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return 0;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(destination);
    address.sin_port = htons(gvcp::kPort);
    socklen_t size = sizeof address;
    // Connecting a UDP socket sends nothing: it only looks the route up.
    std::uint32_t source = 0;
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0)
        source = ntohl(address.sin_addr.s_addr);
    ::close(fd);
    return source;
}

} // namespace kolt::cc
