// The host's networks as the device tree groups cameras by them, without the tree.
#pragma once

#include "Camera/HostInterfaces.h"

#include <QMap>
#include <QString>
#include <QVector>
#include <cstdint>

// One interface group. Its identity is the MAC text alone, so that an interface keeps its group when its
// addresses change; interfaces with equal hardware addresses share one.
struct _Struct_Net_WORK {
    QMap<unsigned int, unsigned int> ips; // address to netmask, both in host order
    QString mac;
};

// One address on its way into a group.
struct _Struct_IP_GROUP {
    uint32_t ip = 0;
    uint32_t mask = 0;
    QString ipText;
    QString maskText;
    QString broadcastText;
};

_Struct_IP_GROUP IpGroupOf(const _HOST_ADDRESS_& address);

// Every IPv4 address except 127.0.0.1 makes or joins a group.
bool IsGroupAddress(const _HOST_ADDRESS_& address);

// Whether an interface of this MAC still has such an address.
bool HasNetwork(const QVector<_HOST_INTERFACE_>& interfaces, const QString& mac);

// A camera with this address can be reached through the network: it lies in the subnet of one of its
// addresses, each under that address's own mask. This rule, and not IsAbleAddress, decides what the user
// sees.
bool IsReachableThrough(const _Struct_Net_WORK& network, uint32_t ip);
