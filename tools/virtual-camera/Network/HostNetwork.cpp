#include "Network/HostNetwork.h"

#include "Network/Socket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <net/if.h>
#include <sys/socket.h>
#include <system_error>

namespace vcam {

namespace {

int PrefixLength(uint32_t mask) {
    return __builtin_popcount(mask);
}

struct AddressMessage {
    nlmsghdr header;
    ifaddrmsg body;
    std::array<char, 128> attributes;
};

void Append(AddressMessage& message, unsigned short type, uint32_t address) {
    const uint32_t wire = htonl(address);
    char* at = reinterpret_cast<char*>(&message) + NLMSG_ALIGN(message.header.nlmsg_len);
    rtattr attribute{};
    attribute.rta_type = type;
    attribute.rta_len = RTA_LENGTH(sizeof wire);
    std::memcpy(at, &attribute, sizeof attribute);
    std::memcpy(at + RTA_LENGTH(0), &wire, sizeof wire);
    message.header.nlmsg_len = NLMSG_ALIGN(message.header.nlmsg_len) + RTA_SPACE(sizeof wire);
}

// One order to the kernel's address table; returns its error number, 0 for done.
int ChangeAddress(unsigned short type, unsigned short flags, const std::string& interface, uint32_t address,
                  uint32_t mask) {
    const unsigned index = if_nametoindex(interface.c_str());
    if (index == 0)
        return ENODEV;
    const Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!socket)
        return errno;
    AddressMessage message{};
    message.header.nlmsg_len = NLMSG_LENGTH(sizeof(ifaddrmsg));
    message.header.nlmsg_type = type;
    message.header.nlmsg_flags = static_cast<unsigned short>(NLM_F_REQUEST | NLM_F_ACK | flags);
    message.body.ifa_family = AF_INET;
    message.body.ifa_prefixlen = static_cast<unsigned char>(PrefixLength(mask));
    message.body.ifa_index = index;
    Append(message, IFA_LOCAL, address);
    Append(message, IFA_ADDRESS, address);
    Append(message, IFA_BROADCAST, address | ~mask);
    if (send(socket.Get(), &message, message.header.nlmsg_len, 0) < 0)
        return errno;
    alignas(nlmsghdr) std::array<char, 4096> answer{};
    const ssize_t length = recv(socket.Get(), answer.data(), answer.size(), 0);
    const auto* header = reinterpret_cast<const nlmsghdr*>(answer.data());
    if (length < static_cast<ssize_t>(NLMSG_LENGTH(sizeof(nlmsgerr))) || header->nlmsg_type != NLMSG_ERROR)
        return EPROTO;
    return -static_cast<const nlmsgerr*>(NLMSG_DATA(header))->error;
}

} // namespace

std::vector<HostAddress> HostAddresses() {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        throw std::system_error(errno, std::generic_category(), "list the interfaces");
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> owner(list, freeifaddrs);
    std::vector<HostAddress> found;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET ||
            entry->ifa_netmask == nullptr)
            continue;
        HostAddress address;
        address.interface = entry->ifa_name;
        address.address = FromSockaddr(*reinterpret_cast<const sockaddr_in*>(entry->ifa_addr)).address;
        address.mask = FromSockaddr(*reinterpret_cast<const sockaddr_in*>(entry->ifa_netmask)).address;
        address.loopback = (entry->ifa_flags & IFF_LOOPBACK) != 0;
        found.push_back(address);
    }
    return found;
}

std::optional<HostAddress> FindHostAddress(uint32_t address) {
    for (const HostAddress& entry : HostAddresses()) {
        if (entry.address == address ||
            (entry.loopback && (entry.address & entry.mask) == (address & entry.mask)))
            return entry;
    }
    return std::nullopt;
}

bool InterfaceExists(const std::string& interface) {
    return if_nametoindex(interface.c_str()) != 0;
}

bool IsLoopback(const std::string& interface) {
    for (const HostAddress& entry : HostAddresses()) {
        if (entry.interface == interface && entry.loopback)
            return true;
    }
    return false;
}

void AddHostAddress(const std::string& interface, uint32_t address, uint32_t mask) {
    const int error = ChangeAddress(RTM_NEWADDR, NLM_F_CREATE | NLM_F_EXCL, interface, address, mask);
    if (error != 0 && error != EEXIST)
        throw std::system_error(error, std::generic_category(),
                                "add " + Dotted(address) + " to " + interface);
}

void RemoveHostAddress(const std::string& interface, uint32_t address, uint32_t mask) {
    const std::vector<HostAddress> before = HostAddresses();
    const int error = ChangeAddress(RTM_DELADDR, 0, interface, address, mask);
    if (error != 0 && error != EADDRNOTAVAIL && error != ENODEV)
        throw std::system_error(error, std::generic_category(),
                                "remove " + Dotted(address) + " from " + interface);
    const std::vector<HostAddress> after = HostAddresses();
    for (const HostAddress& entry : before) {
        const auto same = [&entry](const HostAddress& other) {
            return other.interface == entry.interface && other.address == entry.address &&
                   other.mask == entry.mask;
        };
        const bool removed = entry.address == address && entry.mask == mask;
        if (entry.interface == interface && !removed && std::none_of(after.begin(), after.end(), same))
            AddHostAddress(interface, entry.address, entry.mask);
    }
}

} // namespace vcam
