// The host's network interfaces and their IPv4 addresses.
#ifndef KOLT_CAMERA_CONTROL_HOST_INTERFACES_H
#define KOLT_CAMERA_CONTROL_HOST_INTERFACES_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct ifaddrs;

namespace kolt::cc {

struct HostAddress {
    std::uint32_t ip = 0;
    std::uint32_t mask = 0;
    std::uint32_t broadcast = 0; // of the subnet; 0 where there is none
};

struct HostInterface {
    std::string name; // of the device, without the label of an alias ("eth0", never "eth0:1")
    unsigned index = 0;
    bool up = false;
    bool running = false; // has a link
    bool loopback = false;
    bool broadcast = false;
    std::uint64_t mac = 0;
    std::vector<HostAddress> addresses; // IPv4 only, in the system's order: the primary one first

    // Cameras can be looked for here: up, with a link and an address, and broadcasting or loopback.
    bool discoverable() const { return up && running && !addresses.empty() && (broadcast || loopback); }
    bool hasAddress(std::uint32_t ip) const;
    // The address in whose subnet "ip" lies (the narrowest where several fit), or null.
    const HostAddress* addressFor(std::uint32_t ip) const;
};

using NameToIndex = std::function<unsigned(const std::string&)>;

// All interfaces of this list that have an IPv4 address, in the order of their indices.
std::vector<HostInterface> interfacesFrom(const ifaddrs* list, const NameToIndex& nameToIndex);

// The interfaces as they are now, in the network namespace of the calling thread. 0 or an errno.
int listHostInterfaces(std::vector<HostInterface>& interfaces);

// The interface that has this address, or null.
const HostInterface* findInterface(const std::vector<HostInterface>& interfaces, std::uint32_t ip);

} // namespace kolt::cc

#endif
