#ifndef LIVE_PACKET_SIZE_H
#define LIVE_PACKET_SIZE_H

#include <cstdint>
#include <string>

namespace live {

/// The stream packet size of a GigE Vision camera, by its bootstrap register (every such camera has it,
/// whatever its XML looks like) through the port object of the open device. Exceptions of the port end here.
///
/// Reads, or writes and reads back what the camera made of it. An error text on failure; `bytes` counts from
/// the IP header on. The other bits of the register (test packet, fragmentation, byte order) stay.
std::string ReadPacketSize(void* device, uint32_t& bytes);
std::string WritePacketSize(void* device, uint32_t& bytes);

} // namespace live

#endif
