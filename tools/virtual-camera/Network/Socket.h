// An owned UDP socket and IPv4 addresses in host order.
#ifndef VCAM_NETWORK_SOCKET_H
#define VCAM_NETWORK_SOCKET_H

#include <cstdint>
#include <netinet/in.h>
#include <string>

namespace vcam {

// Owner of a file descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { Close(); }
    int Get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }
    void Close();

private:
    int Release() {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }
    int m_fd = -1;
};

struct Peer {
    uint32_t address = 0;
    uint16_t port = 0;
    bool operator==(const Peer& o) const { return address == o.address && port == o.port; }
};

sockaddr_in ToSockaddr(const Peer& peer);
Peer FromSockaddr(const sockaddr_in& address);
std::string Dotted(uint32_t address);
bool ParseDotted(const std::string& text, uint32_t& address);

// Not blocking. `interface` may be empty; `shared` lets several cameras hear the same broadcasts. Throws
// std::system_error.
Descriptor OpenUdp(uint32_t address, uint16_t port, const std::string& interface, bool shared);
uint16_t PortOf(int socket);

} // namespace vcam

#endif
