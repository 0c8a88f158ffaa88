// Register accesses in the unit that GigE Vision wants: addresses and lengths that are multiples of 4.
#ifndef KOLT_CAMERA_CONTROL_ALIGNED_SPAN_H
#define KOLT_CAMERA_CONTROL_ALIGNED_SPAN_H

#include <cstddef>
#include <cstdint>

namespace kolt::cc {

// The smallest aligned stretch around [address, address + length).
struct AlignedSpan {
    std::uint64_t address;
    std::size_t length;
    std::size_t skip; // bytes of it in front of the wanted ones

    bool isExact(std::size_t wanted) const { return skip == 0 && length == wanted; }
};

// The caller makes sure that address + length does not run over.
constexpr AlignedSpan alignedAround(std::uint64_t address, std::size_t length) {
    constexpr std::uint64_t kUnit = 4;
    const std::uint64_t first = address / kUnit * kUnit;
    const std::uint64_t last = (address + length + kUnit - 1) / kUnit * kUnit;
    return {first, static_cast<std::size_t>(last - first), static_cast<std::size_t>(address - first)};
}

} // namespace kolt::cc

#endif
