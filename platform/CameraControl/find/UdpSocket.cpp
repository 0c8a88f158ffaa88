#include "find/UdpSocket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <linux/errqueue.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

namespace kolt::cc {

namespace {

sockaddr_in socketAddress(std::uint32_t ip, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(ip);
    address.sin_port = htons(port);
    return address;
}

int setFlag(int fd, int level, int option) {
    const int on = 1;
    return ::setsockopt(fd, level, option, &on, sizeof on) == 0 ? 0 : errno;
}

// Room for the control messages that we ask for, aligned as the macros want it.
union ControlBuffer {
    cmsghdr align;
    char bytes[512];
};

} // namespace

UdpSocket::~UdpSocket() {
    close();
}

UdpSocket::UdpSocket(UdpSocket&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)), confined_(std::exchange(other.confined_, false)) {}

UdpSocket& UdpSocket::operator=(UdpSocket&& other) noexcept {
    if (this != &other) {
        close();
        fd_ = std::exchange(other.fd_, -1);
        confined_ = std::exchange(other.confined_, false);
    }
    return *this;
}

void UdpSocket::close() {
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = -1;
    confined_ = false;
}

int UdpSocket::open(const UdpOptions& options) {
    close();
    fd_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd_ < 0)
        return errno;
    int error = setFlag(fd_, IPPROTO_IP, IP_PKTINFO);
    if (error == 0 && options.broadcast)
        error = setFlag(fd_, SOL_SOCKET, SO_BROADCAST);
    if (error == 0 && options.manyAnswers) {
        // The system takes what it allows; less is no failure.
        const int wanted = 4 << 20;
        ::setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &wanted, sizeof wanted);
    }
    if (error == 0 && options.reportErrors)
        error = setFlag(fd_, IPPROTO_IP, IP_RECVERR);
    if (error == 0 && !options.interfaceName.empty()) {
        confined_ = ::setsockopt(fd_, SOL_SOCKET, SO_BINDTODEVICE, options.interfaceName.c_str(),
                                 static_cast<socklen_t>(options.interfaceName.size() + 1)) == 0;
        // Kernels before 5.7 want CAP_NET_RAW for it. Without it the interface is chosen datagram by
        // datagram.
        if (!confined_ && errno != EPERM)
            error = errno;
    }
    const sockaddr_in local = socketAddress(options.bindIp, 0);
    if (error == 0 && ::bind(fd_, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0)
        error = errno;
    if (error != 0)
        close();
    return error;
}

int UdpSocket::send(const std::uint8_t* data, std::size_t length, std::uint32_t ip, std::uint16_t port,
                    std::uint32_t sourceIp, unsigned interfaceIndex) {
    sockaddr_in destination = socketAddress(ip, port);
    iovec part{const_cast<std::uint8_t*>(data), length};
    msghdr message{};
    message.msg_name = &destination;
    message.msg_namelen = sizeof destination;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    ControlBuffer control{};
    if (sourceIp != 0 || interfaceIndex != 0) {
        message.msg_control = control.bytes;
        message.msg_controllen = CMSG_SPACE(sizeof(in_pktinfo));
        cmsghdr* header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = IPPROTO_IP;
        header->cmsg_type = IP_PKTINFO;
        header->cmsg_len = CMSG_LEN(sizeof(in_pktinfo));
        in_pktinfo info{};
        info.ipi_ifindex = static_cast<int>(interfaceIndex);
        info.ipi_spec_dst.s_addr = htonl(sourceIp);
        std::memcpy(CMSG_DATA(header), &info, sizeof info);
    }
    // A queued ICMP error of an earlier datagram comes back from the next call and means nothing for this
    // one.
    for (int attempt = 0;; ++attempt) {
        if (::sendmsg(fd_, &message, MSG_NOSIGNAL) >= 0)
            return 0;
        if (attempt == 3 || (errno != EINTR && errno != ECONNREFUSED))
            return errno;
    }
}

long UdpSocket::receive(std::uint8_t* data, std::size_t capacity, UdpOrigin& origin) {
    sockaddr_in source{};
    iovec part{data, capacity};
    ControlBuffer control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    long length = -1;
    // As in send: errors of earlier datagrams are skipped, a bounded number of them.
    for (int attempt = 0; attempt < 16 && length < 0; ++attempt) {
        message.msg_name = &source;
        message.msg_namelen = sizeof source;
        message.msg_control = control.bytes;
        message.msg_controllen = sizeof control.bytes;
        length = ::recvmsg(fd_, &message, MSG_TRUNC);
        if (length < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EBADF))
            return -1;
    }
    if (length < 0)
        return -1;
    origin = UdpOrigin{};
    origin.ip = ntohl(source.sin_addr.s_addr);
    origin.port = ntohs(source.sin_port);
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != IPPROTO_IP || header->cmsg_type != IP_PKTINFO)
            continue;
        in_pktinfo info{};
        std::memcpy(&info, CMSG_DATA(header), sizeof info);
        origin.interfaceIndex = static_cast<unsigned>(info.ipi_ifindex);
        origin.localIp = ntohl(info.ipi_spec_dst.s_addr);
    }
    return length;
}

bool UdpSocket::takeError(std::uint32_t& destination, int& error) {
    sockaddr_in original{};
    std::uint8_t payload[64];
    iovec part{payload, sizeof payload};
    ControlBuffer control{};
    msghdr message{};
    message.msg_name = &original;
    message.msg_namelen = sizeof original;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes;
    message.msg_controllen = sizeof control.bytes;
    if (::recvmsg(fd_, &message, MSG_ERRQUEUE) < 0)
        return false;
    destination = ntohl(original.sin_addr.s_addr);
    error = 0;
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != IPPROTO_IP || header->cmsg_type != IP_RECVERR)
            continue;
        sock_extended_err extended{};
        std::memcpy(&extended, CMSG_DATA(header), sizeof extended);
        error = static_cast<int>(extended.ee_errno);
    }
    return true;
}

} // namespace kolt::cc
