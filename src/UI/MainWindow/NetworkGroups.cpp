#include "UI/MainWindow/NetworkGroups.h"

#include "Common/QFunction.h"

#include <algorithm>

constexpr uint32_t kLocalHost = 0x7F000001;

_Struct_IP_GROUP IpGroupOf(const _HOST_ADDRESS_& address) {
    return {address.ip, address.mask, QFunction::GetIP(address.ip), QFunction::GetIP(address.mask),
            address.broadcast};
}

bool IsGroupAddress(const _HOST_ADDRESS_& address) {
    return address.ip != kLocalHost;
}

bool HasNetwork(const QVector<_HOST_INTERFACE_>& interfaces, const QString& mac) {
    return std::any_of(interfaces.cbegin(), interfaces.cend(), [&mac](const _HOST_INTERFACE_& host) {
        return host.mac == mac &&
               std::any_of(host.addresses.cbegin(), host.addresses.cend(), &IsGroupAddress);
    });
}

bool IsReachableThrough(const _Struct_Net_WORK& network, uint32_t ip) {
    for (auto entry = network.ips.cbegin(); entry != network.ips.cend(); ++entry)
        if (IsSameSubnet(entry.key(), ip, entry.value()))
            return true;
    return false;
}
