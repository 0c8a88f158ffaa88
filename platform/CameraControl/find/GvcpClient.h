// One GVCP conversation with one camera, without control of it: reading registers and memory, asking whether
// it lives. Synchronous; owns one UDP socket. One thread at a time; several clients of one camera don't
// disturb one another, nor an open device.
#ifndef KOLT_CAMERA_CONTROL_GVCP_CLIENT_H
#define KOLT_CAMERA_CONTROL_GVCP_CLIENT_H

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "find/DropCounters.h"
#include "find/GvcpCodec.h"
#include "find/UdpSocket.h"

namespace kolt::cc {

struct GvcpPeer {
    std::uint32_t ip = 0;      // the camera
    std::uint32_t localIp = 0; // source address; 0: whatever the routing table says
    std::string interfaceName; // leave through this interface whatever the routing table says; empty: any
    std::uint16_t port = gvcp::kPort; // other ports only in tests
};

struct GvcpTiming {
    std::chrono::milliseconds timeout{200};       // for one attempt
    unsigned attempts = 3;                        // sends of one request
    std::chrono::milliseconds pendingLimit{5000}; // longest that PENDING_ACKs may prolong one request
};

class GvcpClient {
public:
    explicit GvcpClient(const GvcpPeer& peer, const GvcpTiming& timing = {});

    // OV_STATUS_OK, or why no socket could be made (OV_STATUS_RESOURCE, OV_STATUS_NETWORK); every request
    // answers the same then.
    std::uint32_t status() const { return status_; }

    // A request in progress ends with OV_STATUS_NETWORK as soon as this descriptor becomes readable (an
    // eventfd, say); -1: none. The descriptor is only polled, never read.
    void setCancelDescriptor(int fd) { cancelFd_ = fd; }

    // All requests: OV_STATUS_OK, OV_STATUS_NETWORK (no route, nobody listens there, no answer after all
    // attempts), or the status for what the camera answered (access denied, invalid address, ...). They block
    // at most attempts x timeout, plus pendingLimit when the camera asks for patience.
    std::uint32_t discover(DiscoveryAnswer& answer);
    std::uint32_t readRegister(std::uint32_t address, std::uint32_t& value);
    std::uint32_t writeRegister(std::uint32_t address, std::uint32_t value);
    // Any address and length; read in pieces, aligned as the protocol wants.
    std::uint32_t readMemory(std::uint32_t address, std::uint8_t* destination, std::size_t length);

    // Datagrams that came but were no answer.
    const DropCounters& dropped() const { return dropped_; }

    // The local address from which the camera is asked, after a route lookup; 0 when there is no route.
    std::uint32_t localAddress() const;

private:
    enum class Wait { answered, timedOut, refused, cancelled };

    std::uint32_t request(const Datagram& command, const Expectation& expected, Acknowledge& out);
    Wait awaitAnswer(const Expectation& expected, Acknowledge& out,
                     std::chrono::steady_clock::time_point deadline,
                     std::chrono::steady_clock::time_point pendingDeadline);
    bool isRefused();
    bool accept(std::size_t length, const UdpOrigin& origin, const Expectation& expected, Acknowledge& out);
    std::uint16_t nextRequestId();

    GvcpPeer peer_;
    GvcpTiming timing_;
    UdpSocket socket_;
    std::uint32_t status_;
    int cancelFd_ = -1;
    unsigned interfaceIndex_ = 0;
    std::uint16_t requestId_;
    DropCounters dropped_;
    std::array<std::uint8_t, 2048> buffer_{};
};

// The address from which this host would speak to another, by the routing table; 0 when there is no route.
std::uint32_t routeSource(std::uint32_t destination);

} // namespace kolt::cc

#endif
