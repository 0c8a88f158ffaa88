// Grouping of the system's address list, and the real one in a network of our own.
#include <arpa/inet.h>
#include <cstring>
#include <deque>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>

#include "find/DiscoverySettings.h"
#include "find/HostInterfaces.h"
#include "find/Ipv4.h"
#include "support/NetworkNamespace.h"

namespace kolt::cc {
namespace {

constexpr unsigned kLan = IFF_UP | IFF_RUNNING | IFF_BROADCAST;

// A list as getifaddrs gives it.
class AddressList {
public:
    void ipv4Entry(const char* name, unsigned flags, const char* ip, const char* mask,
                   const char* broadcast) {
        ifaddrs& entry = add(name, flags);
        entry.ifa_addr = in(ip);
        entry.ifa_netmask = in(mask);
        if (broadcast != nullptr)
            entry.ifa_broadaddr = in(broadcast);
    }
    void link(const char* name, unsigned flags, std::initializer_list<unsigned char> mac) {
        storage_.emplace_back();
        sockaddr_ll address{};
        address.sll_family = AF_PACKET;
        address.sll_halen = static_cast<unsigned char>(mac.size());
        std::copy(mac.begin(), mac.end(), address.sll_addr);
        std::memcpy(&storage_.back(), &address, sizeof address);
        add(name, flags).ifa_addr = reinterpret_cast<sockaddr*>(&storage_.back());
    }
    void bare(const char* name) { add(name, kLan); }
    void ipv6(const char* name) {
        storage_.emplace_back();
        storage_.back().ss_family = AF_INET6;
        add(name, kLan).ifa_addr = reinterpret_cast<sockaddr*>(&storage_.back());
    }
    const ifaddrs* head() {
        for (std::size_t i = 0; i + 1 < entries_.size(); ++i)
            entries_[i].ifa_next = &entries_[i + 1];
        return entries_.empty() ? nullptr : &entries_.front();
    }

private:
    ifaddrs& add(const char* name, unsigned flags) {
        entries_.emplace_back();
        names_.emplace_back(name);
        entries_.back().ifa_name = names_.back().data();
        entries_.back().ifa_flags = flags;
        return entries_.back();
    }
    sockaddr* in(const char* text) {
        storage_.emplace_back();
        sockaddr_in address{};
        address.sin_family = AF_INET;
        ::inet_pton(AF_INET, text, &address.sin_addr);
        std::memcpy(&storage_.back(), &address, sizeof address);
        return reinterpret_cast<sockaddr*>(&storage_.back());
    }
    std::deque<ifaddrs> entries_;
    std::deque<std::string> names_;
    std::deque<sockaddr_storage> storage_;
};

unsigned indexOf(const std::string& name) {
    return name == "lo" ? 1 : name == "eth0" ? 2 : name == "eth1" ? 3 : 0;
}

TEST(HostInterfaces, AnEmptyListGivesNone) {
    EXPECT_TRUE(interfacesFrom(nullptr, indexOf).empty());
}

TEST(HostInterfaces, AddressesAreGroupedByDeviceInOrderOfIndex) {
    AddressList list;
    list.link("eth1", kLan, {2, 0, 0, 0, 0, 9});
    list.link("lo", IFF_UP | IFF_RUNNING | IFF_LOOPBACK, {0, 0, 0, 0, 0, 0});
    list.ipv4Entry("eth1", kLan, "10.0.0.5", "255.0.0.0", "10.255.255.255");
    list.ipv4Entry("eth0", kLan, "192.168.1.2", "255.255.255.0", "192.168.1.255");
    list.ipv4Entry("lo", IFF_UP | IFF_RUNNING | IFF_LOOPBACK, "127.0.0.1", "255.0.0.0", nullptr);
    list.ipv4Entry("eth0:1", kLan, "192.168.2.2", "255.255.255.0", "192.168.2.255");
    list.ipv6("eth0");
    list.bare("eth0");
    const auto interfaces = interfacesFrom(list.head(), indexOf);
    ASSERT_EQ(interfaces.size(), 3U);
    EXPECT_EQ(interfaces[0].name, "lo");
    EXPECT_TRUE(interfaces[0].loopback);
    EXPECT_TRUE(interfaces[0].discoverable());
    EXPECT_EQ(interfaces[1].name, "eth0");
    ASSERT_EQ(interfaces[1].addresses.size(), 2U);
    EXPECT_EQ(interfaces[1].addresses[0].ip, ipv4(192, 168, 1, 2));
    EXPECT_EQ(interfaces[1].addresses[1].ip, ipv4(192, 168, 2, 2));
    EXPECT_EQ(interfaces[1].addresses[1].mask, ipv4(255, 255, 255, 0));
    EXPECT_EQ(interfaces[1].addresses[1].broadcast, ipv4(192, 168, 2, 255));
    EXPECT_EQ(interfaces[2].index, 3U);
    EXPECT_EQ(interfaces[2].mac, 0x020000000009U);
    EXPECT_TRUE(interfaces[2].discoverable());
    EXPECT_EQ(findInterface(interfaces, ipv4(192, 168, 2, 2)), &interfaces[1]);
    EXPECT_EQ(findInterface(interfaces, ipv4(192, 168, 2, 3)), nullptr);
}

TEST(HostInterfaces, DownUnpluggedAndPointToPointOnesAreNotSearched) {
    const std::pair<unsigned, bool> table[] = {
        {kLan, true},
        {IFF_RUNNING | IFF_BROADCAST, false},
        {IFF_UP | IFF_BROADCAST, false},
        {IFF_UP | IFF_RUNNING | IFF_POINTOPOINT, false},
        {IFF_UP | IFF_RUNNING | IFF_LOOPBACK, true},
    };
    for (const auto& [flags, searched] : table) {
        AddressList list;
        list.ipv4Entry("eth0", flags, "10.0.0.5", "255.0.0.0", "10.255.255.255");
        const auto interfaces = interfacesFrom(list.head(), indexOf);
        ASSERT_EQ(interfaces.size(), 1U);
        EXPECT_EQ(interfaces[0].discoverable(), searched) << flags;
    }
}

TEST(HostInterfaces, OneThatVanishedMeanwhileIsLeftOut) {
    AddressList list;
    list.ipv4Entry("usb9", kLan, "10.0.0.5", "255.0.0.0", "10.255.255.255");
    EXPECT_TRUE(interfacesFrom(list.head(), indexOf).empty());
}

TEST(HostInterfaces, TheNarrowestSubnetNamesTheAddress) {
    HostInterface interface;
    interface.addresses = {{ipv4(10, 0, 0, 1), ipv4(255, 0, 0, 0), 0},
                           {ipv4(10, 1, 2, 1), ipv4(255, 255, 255, 0), 0},
                           {ipv4(9, 9, 9, 9), 0, 0}};
    ASSERT_NE(interface.addressFor(ipv4(10, 1, 2, 77)), nullptr);
    EXPECT_EQ(interface.addressFor(ipv4(10, 1, 2, 77))->ip, ipv4(10, 1, 2, 1));
    EXPECT_EQ(interface.addressFor(ipv4(10, 1, 3, 77))->ip, ipv4(10, 0, 0, 1));
    EXPECT_EQ(interface.addressFor(ipv4(11, 1, 3, 77)), nullptr);
}

TEST(HostInterfaces, TheRealOnesOfANetwork) {
    test::NetworkNamespace host;
    test::NetworkNamespace other;
    test::NetworkNamespace::cable(host, "kv0", "192.168.7.1/24", other, "kv1", "192.168.7.2/24");
    host.ip("address add 10.9.0.1/16 broadcast + dev kv0 label kv0:a");
    host.ip("link add kdown type bridge");
    host.ip("address add 10.8.0.1/16 dev kdown");
    std::vector<HostInterface> interfaces;
    host.call([&] { ASSERT_EQ(listHostInterfaces(interfaces), 0); });
    ASSERT_EQ(interfaces.size(), 3U);
    EXPECT_EQ(interfaces[0].name, "lo");
    EXPECT_TRUE(interfaces[0].discoverable());
    const HostInterface* card = findInterface(interfaces, ipv4(192, 168, 7, 1));
    ASSERT_NE(card, nullptr);
    EXPECT_EQ(card->name, "kv0");
    EXPECT_TRUE(card->discoverable());
    EXPECT_NE(card->mac, 0U);
    ASSERT_EQ(card->addresses.size(), 2U);
    EXPECT_EQ(card->addresses[0].broadcast, ipv4(192, 168, 7, 255));
    EXPECT_EQ(card->addresses[1].ip, ipv4(10, 9, 0, 1));
    EXPECT_EQ(card->addresses[1].mask, ipv4(255, 255, 0, 0));
    const HostInterface* down = findInterface(interfaces, ipv4(10, 8, 0, 1));
    ASSERT_NE(down, nullptr);
    EXPECT_FALSE(down->discoverable());
    other.ip("link set kv1 down");
    host.call([&] { ASSERT_EQ(listHostInterfaces(interfaces), 0); });
    card = findInterface(interfaces, ipv4(192, 168, 7, 1));
    ASSERT_NE(card, nullptr);
    EXPECT_TRUE(card->up);
}

TEST(DiscoverySettings, ListsAreSeparatedByCommasOrBlanks) {
    const auto settings = parseDiscoverySettings(" lo, enp3s0,,", "127.0.1.5 10.0.0.300,10.0.0.30");
    EXPECT_EQ(settings.interfaces, (std::vector<std::string>{"lo", "enp3s0"}));
    EXPECT_EQ(settings.addresses, (std::vector<std::uint32_t>{ipv4(127, 0, 1, 5), ipv4(10, 0, 0, 30)}));
    EXPECT_TRUE(settings.allows("lo"));
    EXPECT_FALSE(settings.allows("eth0"));
    const auto none = parseDiscoverySettings("", "");
    EXPECT_TRUE(none.allows("eth0"));
    EXPECT_TRUE(none.addresses.empty());
}

} // namespace
} // namespace kolt::cc
