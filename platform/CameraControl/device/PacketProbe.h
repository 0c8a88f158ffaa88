// Receives the test packets of a camera, which tell whether packets of a size reach this host whole.
#ifndef KOLT_CAMERA_CONTROL_PACKET_PROBE_H
#define KOLT_CAMERA_CONTROL_PACKET_PROBE_H

#include <chrono>
#include <cstdint>

#include "find/UdpSocket.h"

namespace kolt::cc {

// The largest IP packet that this host's way to `ip` carries, as the system knows it; 0 when it doesn't.
std::uint32_t pathMtu(std::uint32_t localIp, std::uint32_t ip);

class PacketProbe {
public:
    // Listens on `localIp` for packets from `cameraIp`.
    PacketProbe(std::uint32_t localIp, std::uint32_t cameraIp);

    // Where the camera must send to; 0 when there is no socket.
    std::uint16_t port() const { return port_; }
    // Waits for an IP packet of exactly this size; others are dropped. False when none came in that time.
    bool arrives(std::uint32_t size, std::chrono::milliseconds patience);

private:
    UdpSocket socket_;
    std::uint32_t cameraIp_;
    std::uint16_t port_ = 0;
};

} // namespace kolt::cc

#endif
