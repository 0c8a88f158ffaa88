// The tree's roots and interface groups.
#include "UI/MainWindow/DeviceItemData.h"
#include "UI/MainWindow/DeviceTexts.h"
#include "UI/MainWindow/QDevListWidget.h"

#include <QIcon>
#include <QTreeWidget>
#include <algorithm>

namespace {

QIcon TreeIcon(const char* name) {
    return QIcon(QString(":/ORV/Resources/tree/%1.png").arg(name));
}

} // namespace

void QDevListWidget::InitDeviceTree() {
    m_pTree->clear();
    m_pGigeRoot = new QTreeWidgetItem(m_pTree, {QStringLiteral("GigE")});
    SetItemData(*m_pGigeRoot, ITEM_GIGE_ROOT, 0);
    m_pGigeRoot->setIcon(0, TreeIcon("network"));
    m_pGigeRoot->setExpanded(true);

    m_mapNetworks.clear();
    m_networks.clear();
    const QVector<_HOST_INTERFACE_> interfaces = ListHostInterfaces();
    for (const _HOST_INTERFACE_& host : interfaces)
        for (const _HOST_ADDRESS_& entry : host.addresses)
            if (IsGroupAddress(entry) && !IsNetWorkExited(host.mac, entry))
                AddNetwork(host, entry);

    m_pUsbRoot = new QTreeWidgetItem(m_pTree, {QStringLiteral("USB")});
    SetItemData(*m_pUsbRoot, ITEM_USB_ROOT, 0);
    m_pUsbRoot->setIcon(0, TreeIcon("usb"));
    m_pUsbRoot->setExpanded(true);
    m_pTree->setContextMenuPolicy(Qt::CustomContextMenu);
    m_pTree->setCurrentItem(m_pGigeRoot);
    OnTreeItemClicked(m_pGigeRoot, 0);
}

_Struct_Net_WORK* QDevListWidget::FindNetwork(const QString& mac) const {
    const auto found = std::find_if(m_networks.begin(), m_networks.end(),
                                    [&mac](const auto& network) { return network->mac == mac; });
    return found == m_networks.end() ? nullptr : found->get();
}

_Struct_Net_WORK* QDevListWidget::FindNetworkOf(unsigned int hostInterface) const {
    const auto found =
        std::find_if(m_networks.begin(), m_networks.end(),
                     [hostInterface](const auto& network) { return network->ips.contains(hostInterface); });
    return found == m_networks.end() ? nullptr : found->get();
}

// True when the address has joined a group that is there already.
bool QDevListWidget::IsNetWorkExited(const QString& mac, const _HOST_ADDRESS_& entry) {
    _Struct_Net_WORK* network = FindNetwork(mac);
    if (!network)
        return false;
    network->ips.insert(entry.ip, entry.mask);
    return true;
}

void QDevListWidget::AddNetwork(const _HOST_INTERFACE_& host, const _HOST_ADDRESS_& entry) {
    auto* item = new QTreeWidgetItem(m_pGigeRoot);
    item->setIcon(0, TreeIcon("interface"));
    auto network = std::make_unique<_Struct_Net_WORK>();
    network->ips.insert(entry.ip, entry.mask);
    network->mac = host.mac;
    m_mapNetworks.insert(network.get(), item);
    m_networks.push_back(std::move(network));
    ShowNetwork(*item, host, entry);
}

void QDevListWidget::ShowNetwork(QTreeWidgetItem& item, const _HOST_INTERFACE_& host,
                                 const _HOST_ADDRESS_& entry) {
    const _Struct_IP_GROUP group = IpGroupOf(entry);
    const QString text = DeviceTexts::Group(host.name, group);
    item.setText(0, text);
    SetItemData(item, ITEM_INTERFACE, static_cast<int>(group.ip));
    item.setExpanded(true);
    item.setToolTip(0, DeviceTexts::GroupToolTip(text, host.mac, group));
}

void QDevListWidget::RefreshNetWorks() {
    if (!m_pGigeRoot)
        return;
    const QVector<_HOST_INTERFACE_> interfaces = ListHostInterfaces();
    RemoveNetworks(interfaces);
    for (const _HOST_INTERFACE_& host : interfaces)
        UpdateNetwork(host);
}

// A group goes with the items of its cameras; the cameras themselves stay in the registry until a round
// misses them.
void QDevListWidget::RemoveNetworks(const QVector<_HOST_INTERFACE_>& interfaces) {
    for (auto network = m_networks.begin(); network != m_networks.end();) {
        if (HasNetwork(interfaces, (*network)->mac)) {
            ++network;
            continue;
        }
        QTreeWidgetItem* item = m_mapNetworks.take(network->get());
        network = m_networks.erase(network);
        const QTreeWidgetItem* current = m_pTree->currentItem();
        if (current && (current == item || current->parent() == item))
            m_pTree->setCurrentItem(m_pGigeRoot); // something is always selected, and who looks is told what
        m_pGigeRoot->removeChild(item);
        delete item;
    }
}

void QDevListWidget::UpdateNetwork(const _HOST_INTERFACE_& host) {
    bool first = true;
    for (const _HOST_ADDRESS_& entry : host.addresses) {
        if (!IsGroupAddress(entry))
            continue;
        _Struct_Net_WORK* network = FindNetwork(host.mac);
        if (!network) {
            AddNetwork(host, entry);
            first = false;
            continue;
        }
        // deliberate: of interfaces that share a MAC address the group keeps the addresses of the last one,
        // and of several addresses it is labelled with the last one (with the first one until the first
        // refresh).
        if (first)
            network->ips.clear();
        first = false;
        IsNetWorkExited(host.mac, entry);
        ShowNetwork(*m_mapNetworks[network], host, entry);
    }
}
