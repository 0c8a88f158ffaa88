#include "Camera/HostInterfaces.h"
#include "Common/CMutexLocker.h"

#include <QMutex>

#include <QNetworkInterface>

namespace {

QMutex g_sourceMutex; // guards the next
std::function<QVector<_HOST_INTERFACE_>()> g_source;

QVector<_HOST_INTERFACE_> ListSystemInterfaces() {
    QVector<_HOST_INTERFACE_> found;
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface& system : interfaces) {
        _HOST_INTERFACE_ host{system.humanReadableName(), system.hardwareAddress(), {}};
        const QList<QNetworkAddressEntry> entries = system.addressEntries();
        for (const QNetworkAddressEntry& entry : entries) {
            if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol)
                continue;
            const bool broadcasts = entry.broadcast() != QHostAddress::Null;
            host.addresses.append({entry.ip().toIPv4Address(), entry.netmask().toIPv4Address(),
                                   broadcasts ? entry.broadcast().toString() : QString()});
        }
        found.append(host);
    }
    return found;
}

} // namespace

QVector<_HOST_INTERFACE_> ListHostInterfaces() {
    std::function<QVector<_HOST_INTERFACE_>()> source;
    {
        const CMutexLocker lock(&g_sourceMutex);
        source = g_source;
    }
    return source ? source() : ListSystemInterfaces();
}

void SetHostInterfaceSource(std::function<QVector<_HOST_INTERFACE_>()> source) {
    const CMutexLocker lock(&g_sourceMutex);
    g_source = std::move(source);
}
