#include "find/HostInterfaces.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <map>
#include <net/if.h>
#include <netinet/in.h>

#include "find/Ipv4.h"

namespace kolt::cc {

namespace {

std::uint32_t addressOf(const sockaddr* address) {
    if (address == nullptr || address->sa_family != AF_INET)
        return 0;
    sockaddr_in in{};
    std::memcpy(&in, address, sizeof in);
    return ntohl(in.sin_addr.s_addr);
}

std::uint64_t macOf(const sockaddr* address) {
    sockaddr_ll link{};
    std::memcpy(&link, address, sizeof link);
    std::uint64_t mac = 0;
    if (link.sll_halen == 6) {
        for (int i = 0; i < 6; ++i)
            mac = (mac << 8) | link.sll_addr[i];
    }
    return mac;
}

std::string deviceName(const char* label) {
    const std::string name(label);
    return name.substr(0, name.find(':'));
}

} // namespace

bool HostInterface::hasAddress(std::uint32_t ip) const {
    return std::any_of(addresses.begin(), addresses.end(),
                       [ip](const HostAddress& address) { return address.ip == ip; });
}

const HostAddress* HostInterface::addressFor(std::uint32_t ip) const {
    const HostAddress* best = nullptr;
    for (const HostAddress& address : addresses) {
        // A mask of zero says nothing of who is near.
        if (address.mask != 0 && sameSubnet(address.ip, ip, address.mask) &&
            (best == nullptr || address.mask > best->mask))
            best = &address;
    }
    return best;
}

std::vector<HostInterface> interfacesFrom(const ifaddrs* list, const NameToIndex& nameToIndex) {
    std::map<std::string, HostInterface> byName;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_name == nullptr || entry->ifa_addr == nullptr)
            continue;
        const std::string name = deviceName(entry->ifa_name);
        if (entry->ifa_addr->sa_family == AF_PACKET) {
            byName[name].mac = macOf(entry->ifa_addr);
        } else if (entry->ifa_addr->sa_family == AF_INET) {
            HostInterface& interface = byName[name];
            interface.name = name;
            interface.up = (entry->ifa_flags & IFF_UP) != 0;
            interface.running = (entry->ifa_flags & IFF_RUNNING) != 0;
            interface.loopback = (entry->ifa_flags & IFF_LOOPBACK) != 0;
            interface.broadcast = (entry->ifa_flags & IFF_BROADCAST) != 0;
            HostAddress address;
            address.ip = addressOf(entry->ifa_addr);
            address.mask = addressOf(entry->ifa_netmask);
            if (interface.broadcast)
                address.broadcast = addressOf(entry->ifa_broadaddr);
            interface.addresses.push_back(address);
        }
    }
    std::vector<HostInterface> interfaces;
    for (auto& [name, interface] : byName) {
        if (interface.addresses.empty())
            continue;
        interface.index = nameToIndex(name);
        // 0: it went away between the two questions.
        if (interface.index != 0)
            interfaces.push_back(std::move(interface));
    }
    std::sort(interfaces.begin(), interfaces.end(),
              [](const HostInterface& a, const HostInterface& b) { return a.index < b.index; });
    return interfaces;
}

int listHostInterfaces(std::vector<HostInterface>& interfaces) {
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return errno;
    interfaces = interfacesFrom(list, [](const std::string& name) { return ::if_nametoindex(name.c_str()); });
    ::freeifaddrs(list);
    return 0;
}

const HostInterface* findInterface(const std::vector<HostInterface>& interfaces, std::uint32_t ip) {
    const auto found =
        std::find_if(interfaces.begin(), interfaces.end(),
                     [ip](const HostInterface& interface) { return interface.hasAddress(ip); });
    return found == interfaces.end() ? nullptr : &*found;
}

} // namespace kolt::cc
