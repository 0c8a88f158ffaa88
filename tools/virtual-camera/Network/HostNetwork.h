// The host's IPv4 interfaces, and adding and removing an address on one of them.
#ifndef VCAM_NETWORK_HOSTNETWORK_H
#define VCAM_NETWORK_HOSTNETWORK_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vcam {

struct HostAddress {
    std::string interface;
    uint32_t address = 0;
    uint32_t mask = 0;
    bool loopback = false;
};

std::vector<HostAddress> HostAddresses();
// The entry with this address; every address of a loopback interface's subnet is at home there.
std::optional<HostAddress> FindHostAddress(uint32_t address);
bool InterfaceExists(const std::string& interface);
bool IsLoopback(const std::string& interface);

// Throws std::system_error. Wants CAP_NET_ADMIN. Adding what is there and removing what is not there is no
// error.
void AddHostAddress(const std::string& interface, uint32_t address, uint32_t mask);
void RemoveHostAddress(const std::string& interface, uint32_t address, uint32_t mask);

} // namespace vcam

#endif
