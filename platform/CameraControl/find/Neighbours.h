// Who answers at an address of a subnet of ours, asked without privileges.
#ifndef KOLT_CAMERA_CONTROL_NEIGHBOURS_H
#define KOLT_CAMERA_CONTROL_NEIGHBOURS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "find/HostInterfaces.h"

namespace kolt::cc {

// The MAC that the kernel has for this address on this interface and has confirmed lately (state
// "reachable"); nothing when it has none, or only an old one.
std::optional<std::uint64_t> confirmedNeighbour(unsigned interfaceIndex, std::uint32_t ip);

// The same from a netlink answer (RTM_NEWNEIGH messages); untouched by anything but its bytes.
std::optional<std::uint64_t> parseNeighbours(const std::uint8_t* data, std::size_t length,
                                             unsigned interfaceIndex, std::uint32_t ip);

// Sends one datagram to the address, so that the kernel has to resolve it, and watches for a sign of life: an
// answer, a "port unreachable", or a confirmed MAC. Addresses outside the interface's subnets are not asked:
// nothing. A sign from ownMac is not one: the camera itself.
bool somebodyAnswersAt(const HostInterface& interface, std::uint32_t ip, std::uint64_t ownMac,
                       std::chrono::milliseconds patience);

} // namespace kolt::cc

#endif
