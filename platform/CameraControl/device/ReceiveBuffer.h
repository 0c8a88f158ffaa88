// Room in the kernel for a burst of stream packets.
#ifndef KOLT_CAMERA_CONTROL_RECEIVE_BUFFER_H
#define KOLT_CAMERA_CONTROL_RECEIVE_BUFFER_H

#include <cstddef>
#include <cstdint>

namespace kolt::cc {

// Bytes that a stream of frames of this size should have: a few frames, within sense.
std::size_t receiveBufferFor(std::size_t payload);

// Enlarges the receive buffer of this process' UDP socket that is bound to the port, as far as the system
// allows (beyond net.core.rmem_max only with CAP_NET_ADMIN). False when there is no such socket. Aravis gives
// out the port of a stream's socket but not the socket, hence the search among our descriptors.
bool enlargeReceiveBuffer(std::uint16_t port, std::size_t bytes);

} // namespace kolt::cc

#endif
