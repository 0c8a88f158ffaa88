// A non-blocking IPv4 UDP socket, as the GVCP parts need it. Owns its descriptor; movable.
#ifndef KOLT_CAMERA_CONTROL_UDP_SOCKET_H
#define KOLT_CAMERA_CONTROL_UDP_SOCKET_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace kolt::cc {

struct UdpOptions {
    std::uint32_t bindIp = 0;  // local address; 0: any
    std::string interfaceName; // confine to this interface where the system allows it; empty: none
    bool broadcast = false;    // allow sending to broadcast addresses
    bool manyAnswers = false;  // as much receive buffer as the system allows
    bool reportErrors = false; // deliver ICMP errors (port unreachable) through takeError
};

// Where a datagram came from.
struct UdpOrigin {
    std::uint32_t ip = 0;
    std::uint16_t port = 0;
    std::uint32_t localIp =
        0; // the local address it was sent to (a broadcast arrives at the interface's own)
    unsigned interfaceIndex = 0; // where it arrived
};

class UdpSocket {
public:
    UdpSocket() = default;
    ~UdpSocket();
    UdpSocket(UdpSocket&& other) noexcept;
    UdpSocket& operator=(UdpSocket&& other) noexcept;
    UdpSocket(const UdpSocket&) = delete;
    UdpSocket& operator=(const UdpSocket&) = delete;

    // 0, or the errno of the step that failed.
    int open(const UdpOptions& options);
    bool isOpen() const { return fd_ >= 0; }
    int descriptor() const { return fd_; }
    // True when the socket is really confined to options.interfaceName.
    bool confined() const { return confined_; }

    // 0 or an errno. sourceIp and interfaceIndex choose where it leaves (0: by the routing table).
    int send(const std::uint8_t* data, std::size_t length, std::uint32_t ip, std::uint16_t port,
             std::uint32_t sourceIp = 0, unsigned interfaceIndex = 0);

    // The true length of one datagram, of which at most capacity bytes are stored; -1 when none is there.
    long receive(std::uint8_t* data, std::size_t capacity, UdpOrigin& origin);

    // Takes one queued ICMP error: true when there was one, with the address that had been sent to.
    bool takeError(std::uint32_t& destination, int& error);

private:
    void close();

    int fd_ = -1;
    bool confined_ = false;
};

} // namespace kolt::cc

#endif
