// Who answers at an address of a subnet of ours, asked without privileges.
#ifndef KOLT_CAMERA_CONTROL_NEIGHBOURS_H
#define KOLT_CAMERA_CONTROL_NEIGHBOURS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "find/HostInterfaces.h"

namespace kolt::cc {

struct Neighbour {
    std::uint64_t mac = 0;
    bool confirmed = false; // heard of within the last half minute or so, not just remembered
};

// What the kernel knows of this address on this interface; nothing when it has no MAC for it.
std::optional<Neighbour> knownNeighbour(unsigned interfaceIndex, std::uint32_t ip);

// The same from a netlink answer (RTM_NEWNEIGH messages), whose bytes are not trusted.
std::optional<Neighbour> parseNeighbours(const std::uint8_t* data, std::size_t length,
                                         unsigned interfaceIndex, std::uint32_t ip);

// Sends one datagram to the address, so that the kernel has to resolve it, and watches for a sign of life: an
// answer, a "port unreachable", or a confirmed MAC. Addresses outside the interface's subnets are not asked:
// nothing. A sign from ownMac is not one: the camera itself.
bool somebodyAnswersAt(const HostInterface& interface, std::uint32_t ip, std::uint64_t ownMac,
                       std::chrono::milliseconds patience);

} // namespace kolt::cc

#endif
