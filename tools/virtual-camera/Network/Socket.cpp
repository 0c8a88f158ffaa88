#include "Network/Socket.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace vcam {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        Close();
        m_fd = other.Release();
    }
    return *this;
}

void Descriptor::Close() {
    if (m_fd >= 0)
        close(m_fd);
    m_fd = -1;
}

sockaddr_in ToSockaddr(const Peer& peer) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(peer.port);
    address.sin_addr.s_addr = htonl(peer.address);
    return address;
}

Peer FromSockaddr(const sockaddr_in& address) {
    return {ntohl(address.sin_addr.s_addr), ntohs(address.sin_port)};
}

std::string Dotted(uint32_t address) {
    return std::to_string(address >> 24) + '.' + std::to_string((address >> 16) & 0xFF) + '.' +
           std::to_string((address >> 8) & 0xFF) + '.' + std::to_string(address & 0xFF);
}

bool ParseDotted(const std::string& text, uint32_t& address) {
    in_addr parsed{};
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1)
        return false;
    address = ntohl(parsed.s_addr);
    return true;
}

Descriptor OpenUdp(uint32_t address, uint16_t port, const std::string& interface, bool shared) {
    const auto fail = [&](const char* what) {
        throw std::system_error(errno, std::generic_category(),
                                std::string(what) + " UDP " + Dotted(address) + ":" + std::to_string(port));
    };
    Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket)
        fail("open");
    const int on = 1;
    if (shared && setsockopt(socket.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0)
        fail("share");
    if (setsockopt(socket.Get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0)
        fail("allow broadcasts on");
    if (!interface.empty() && setsockopt(socket.Get(), SOL_SOCKET, SO_BINDTODEVICE, interface.c_str(),
                                         static_cast<socklen_t>(interface.size())) != 0)
        fail(("bind to " + interface + " for").c_str());
    const sockaddr_in own = ToSockaddr({address, port});
    if (bind(socket.Get(), reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0)
        fail("bind");
    return socket;
}

uint16_t PortOf(int socket) {
    sockaddr_in own{};
    socklen_t length = sizeof own;
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&own), &length) != 0)
        return 0;
    return FromSockaddr(own).port;
}

} // namespace vcam
