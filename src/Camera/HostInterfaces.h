// The host's network interfaces and their IPv4 addresses, and what lies in which subnet.
#pragma once

#include <QString>
#include <QVector>
#include <cstdint>
#include <functional>

// One IPv4 address of an interface. Numbers are in host order: the first octet is in the top byte.
struct _HOST_ADDRESS_ {
    uint32_t ip = 0;
    uint32_t mask = 0;
    QString broadcast; // dotted text; empty where there is none, as on a point-to-point link
};

struct _HOST_INTERFACE_ {
    QString name;                      // as a person reads it
    QString mac;                       // "0A:1B:...", empty where there is none
    QVector<_HOST_ADDRESS_> addresses; // in the system's order; loopback addresses too, IPv6 never
};

// All interfaces, whether up or down, in the system's order. Any thread.
QVector<_HOST_INTERFACE_> ListHostInterfaces();

// What ListHostInterfaces tells from now on; an empty function brings back the truth. For tests; called on
// any thread that lists.
void SetHostInterfaceSource(std::function<QVector<_HOST_INTERFACE_>()> source);

// Both addresses are in one subnet under this mask.
constexpr bool IsSameSubnet(uint32_t a, uint32_t b, uint32_t mask) {
    return (mask & (a ^ b)) == 0;
}
