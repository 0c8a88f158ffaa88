// Features of the network interface: addresses as they are now, and as they are kept.
#include "Device/BootstrapRegisters.h"
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace feature;

namespace {

struct AddressFeature {
    const char* name;
    uint32_t address;
    Access access;
    const char* tip;
};

constexpr AddressFeature kAddresses[] = {
    {"GevCurrentIPAddress", bootstrap::kCurrentIp, Access::ReadOnly, "IP address now."},
    {"GevCurrentSubnetMask", bootstrap::kCurrentMask, Access::ReadOnly, "Subnet mask now."},
    {"GevCurrentDefaultGateway", bootstrap::kCurrentGateway, Access::ReadOnly, "Gateway now."},
    {"GevPersistentIPAddress", bootstrap::kPersistentIp, Access::ReadWrite,
     "IP address that is kept and taken at the next start."},
    {"GevPersistentSubnetMask", bootstrap::kPersistentMask, Access::ReadWrite,
     "Subnet mask that is kept and taken at the next start."},
    {"GevPersistentDefaultGateway", bootstrap::kPersistentGateway, Access::ReadWrite,
     "Gateway that is kept and taken at the next start."},
};

struct ConfigurationFlag {
    const char* name;
    unsigned bit;
    Access access;
    const char* tip;
};

constexpr ConfigurationFlag kFlags[] = {
    {"GevCurrentIPConfigurationLLA", 2, Access::ReadOnly,
     "Whether a link-local address is taken when no other can be had; always."},
    {"GevCurrentIPConfigurationDHCP", 1, Access::ReadWrite, "Whether an address is asked of a DHCP server."},
    {"GevCurrentIPConfigurationPersistentIP", 0, Access::ReadWrite,
     "Whether the persistent address is taken at the next start."},
};

} // namespace

void DeviceModel::DefineNetworkNodes(FeatureBuilder& build) {
    constexpr auto readOnly = Access::ReadOnly;
    build.Category("TransportLayerControl");
    build.Integer("GevInterfaceSelector", kInterfaceSelector, 0, Access::ReadWrite)
        .Tip("The network interface that the features below belong to.", "The camera has one.")
        .Visible("Expert")
        .Range(0, 0);
    build.IntegerNodes("GevLinkSpeed", bootstrap::kLinkSpeed, readOnly)
        .Tip("Speed of the link.")
        .Unit("Mbps")
        .Visible("Expert");
    build.BareRegister("IntReg", "GevMACAddrHigh_Reg", bootstrap::kMacHigh, 4, readOnly)
        .Tip("The first two bytes of the MAC address.")
        .As("HexNumber")
        .Visible("Guru");
    build.BareRegister("IntReg", "GevMACAddrLow_Reg", bootstrap::kMacLow, 4, readOnly)
        .Tip("The last four bytes of the MAC address.")
        .As("HexNumber")
        .Visible("Guru");
    build.Formula("GevMACAddress_Val", {{"HIGH", "GevMACAddrHigh_Reg"}, {"LOW", "GevMACAddrLow_Reg"}},
                  "((HIGH & 0xFFFF) << 32) | LOW");
    build.IntegerOf("GevMACAddress", "GevMACAddress_Val")
        .Tip("MAC address.")
        .As("MACAddress")
        .Visible("Expert");
    for (const ConfigurationFlag& flag : kFlags) {
        build.MaskedBoolean(flag.name, bootstrap::kIpConfiguration, flag.access, flag.bit)
            .Tip(flag.tip)
            .Visible("Expert");
    }
    for (const AddressFeature& address : kAddresses) {
        Feature made = build.IntegerNodes(address.name, address.address, address.access);
        made.Tip(address.tip).As("IPV4Address").Visible("Expert");
        if (address.access == Access::ReadOnly)
            made.Volatile();
    }
    for (const char* selected : {"GevLinkSpeed", "GevMACAddress"})
        build.Xml().Find("GevInterfaceSelector")->Add("pSelected", selected);
    for (const ConfigurationFlag& flag : kFlags)
        build.Xml().Find("GevInterfaceSelector")->Add("pSelected", flag.name);
    for (const AddressFeature& address : kAddresses)
        build.Xml().Find("GevInterfaceSelector")->Add("pSelected", address.name);
}

} // namespace vcam
