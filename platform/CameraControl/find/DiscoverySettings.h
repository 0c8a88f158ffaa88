// Where cameras are looked for, beyond what the host's interfaces say.
#ifndef KOLT_CAMERA_CONTROL_DISCOVERY_SETTINGS_H
#define KOLT_CAMERA_CONTROL_DISCOVERY_SETTINGS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kolt::cc {

struct DiscoverySettings {
    // Names of the only interfaces to be used ("lo", "enp3s0"); empty: all.
    std::vector<std::string> interfaces;
    // Addresses asked one by one: loopback addresses beyond the usual ones, cameras behind a router.
    std::vector<std::uint32_t> addresses;

    bool allows(const std::string& interfaceName) const;
};

// Lists are separated by commas or blanks; what is no address is left out.
DiscoverySettings parseDiscoverySettings(std::string_view interfaces, std::string_view addresses);

// The settings of this process: those of the environment variables OV_CC_INTERFACES and OV_CC_ADDRESSES,
// read once at the first use, until replaced. Any thread.
DiscoverySettings discoverySettings();
void setDiscoverySettings(DiscoverySettings settings);

} // namespace kolt::cc

#endif
