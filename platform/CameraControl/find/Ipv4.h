// IPv4 addresses as the device records hold them: 32 bits in host order, the first octet in the top byte.
#ifndef KOLT_CAMERA_CONTROL_IPV4_H
#define KOLT_CAMERA_CONTROL_IPV4_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kolt::cc {

constexpr std::uint32_t ipv4(unsigned a, unsigned b, unsigned c, unsigned d) {
    return (static_cast<std::uint32_t>(a) << 24) | (static_cast<std::uint32_t>(b) << 16) |
           (static_cast<std::uint32_t>(c) << 8) | static_cast<std::uint32_t>(d);
}

constexpr bool isLoopbackAddress(std::uint32_t address) {
    return (address >> 24) == 127;
}

constexpr bool sameSubnet(std::uint32_t a, std::uint32_t b, std::uint32_t mask) {
    return ((a ^ b) & mask) == 0;
}

// A netmask with at least one bit set whose one bits are contiguous from the top.
constexpr bool isProperMask(std::uint32_t mask) {
    return mask != 0 && (~mask & (~mask + 1)) == 0;
}

// An address that one host can have: not 0.x, not 127.x, not multicast or above.
constexpr bool isHostAddress(std::uint32_t address) {
    return (address >> 24) >= 1 && (address >> 24) <= 223 && !isLoopbackAddress(address);
}

// "a.b.c.d"
std::string toText(std::uint32_t address);

// Exactly four decimal parts of at most 255; nothing around them.
std::optional<std::uint32_t> parseIpv4(std::string_view text);

} // namespace kolt::cc

#endif
