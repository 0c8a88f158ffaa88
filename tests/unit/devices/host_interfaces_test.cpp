#include "Camera/HostInterfaces.h"
#include "Camera/QDeviceDetectThread.h"
#include "DeviceRecords.h"
#include "support/NetworkNamespace.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace devices {
namespace {

TEST(Subnet, Arithmetic) {
    struct Row {
        uint32_t a, b, mask;
        bool same;
    };
    const Row rows[] = {
        {Ip(1), Ip(254), 0xFFFFFF00, true},          {Ip(1), Ip(256), 0xFFFFFF00, false},
        {Ip(1), Ip(256), 0xFFFFFE00, true},          {Ip(1), Ip(1), 0xFFFFFFFF, true},
        {Ip(1), Ip(2), 0xFFFFFFFF, false},           {Ip(1), 0xC0A80001, 0, true}, // a mask of zero takes all
        {0xC0000001, 0x40000001, 0x80000000, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(IsSameSubnet(row.a, row.b, row.mask), row.same) << row.a << " " << row.b << " " << row.mask;
}

TEST(Subnet, AbleAddress) {
    const QVector<_HOST_IP_INFO_STRU> one{{"10.0.0.1", "255.255.255.0"}};
    const QVector<_HOST_IP_INFO_STRU> two{{"10.0.0.1", "255.255.255.0"}, {"10.0.1.1", "255.255.255.0"}};
    struct Row {
        const char* what;
        QVector<_HOST_IP_INFO_STRU> hosts;
        uint32_t ip;
        bool able;
    };
    const Row rows[] = {
        {"no host address", {}, Ip(20), false},
        {"in the subnet", one, Ip(20), true},
        {"the last able one", one, Ip(253), true},
        {".254 never", one, Ip(254), false},
        {".255 never", one, Ip(255), false},
        {"the host's own never", one, Ip(1), false},
        {"another subnet", one, Ip(256 + 20), false},
        {"of the second host", two, Ip(256 + 20), true},
        {"the second host's own", two, Ip(256 + 1), false},
        {"a bad text in front", {{"10.0.0", "255.255.255.0"}, one[0]}, Ip(20), false},
        {"a bad mask in front", {{"10.9.0.1", "24"}, one[0]}, Ip(20), false},
        {"a bad text behind the one that fits", {one[0], {"", ""}}, Ip(20), true},
        {"empty parts are dropped", {{"10..0.0.1", "255.255.255..0"}}, Ip(20), true},
    };
    for (const Row& row : rows)
        EXPECT_EQ(IsAbleAddress(row.hosts, row.ip), row.able) << row.what;
}

TEST(Subnet, OnlyTheLowWordOfAnAddressCounts) {
    QDeviceDetectThread thread;
    SetHostInterfaceSource([] { return QVector<_HOST_INTERFACE_>{Interface("eth0", "A", {0})}; });
    thread.InitHostVector();
    SetHostInterfaceSource({});
    EXPECT_TRUE(thread.CheckdwIPAble(0x7700000000LL + Ip(20)));
    EXPECT_FALSE(thread.CheckdwIPAble(Ip(1)));
}

TEST(HostVector, LeavesOutLoopbackAndWhatHasNoBroadcast) {
    _HOST_INTERFACE_ loopback{"lo", "00:00:00:00:00:00", {{0x7F000001, 0xFF000000, ""}}};
    _HOST_INTERFACE_ odd{"lo2", "", {{0x7F010001, 0xFFFF0000, "127.1.255.255"}}};
    _HOST_INTERFACE_ point{"ppp0", "", {{Ip(99), 0xFFFFFFFF, ""}}};
    const auto two = Interface("eth0", "A", {0, 3});
    SetHostInterfaceSource([=] { return QVector<_HOST_INTERFACE_>{loopback, odd, point, two}; });
    QDeviceDetectThread thread;
    thread.InitHostVector();
    ASSERT_EQ(thread.GetHostVector().size(), 2);
    EXPECT_EQ(thread.GetHostVector()[0].ip, "10.0.0.1");
    EXPECT_EQ(thread.GetHostVector()[0].mask, "255.255.255.0");
    EXPECT_EQ(thread.GetHostVector()[1].ip, "10.0.3.1");
    thread.InitHostVector();
    EXPECT_EQ(thread.GetHostVector().size(), 2) << "made anew";
    SetHostInterfaceSource({});
}

// The system's own answer, in a network that is made for it.
TEST(HostInterfaces, OfTheSystem) {
    const kolt::test::NetworkNamespace net;
    const kolt::test::NetworkNamespace far;
    kolt::test::NetworkNamespace::cable(net, "cable0", "", far, "cable1", "192.168.7.2/24");
    net.ip("link set cable0 down");
    net.ip("link set cable0 address 02:00:00:00:07:01");
    net.ip("link set cable0 up");
    net.ip("address add 192.168.7.1/24 brd + dev cable0");
    net.ip("address add 10.1.2.3/16 brd + dev cable0");
    QVector<_HOST_INTERFACE_> found;
    net.call([&] { found = ListHostInterfaces(); });
    const auto cable =
        std::find_if(found.cbegin(), found.cend(), [](const auto& host) { return host.name == "cable0"; });
    ASSERT_NE(cable, found.cend());
    EXPECT_EQ(cable->mac, "02:00:00:00:07:01");
    ASSERT_EQ(cable->addresses.size(), 2);
    EXPECT_EQ(cable->addresses[0].ip, 0xC0A80701u);
    EXPECT_EQ(cable->addresses[0].mask, 0xFFFFFF00u);
    EXPECT_EQ(cable->addresses[0].broadcast, "192.168.7.255");
    EXPECT_EQ(cable->addresses[1].ip, 0x0A010203u);
    EXPECT_EQ(cable->addresses[1].mask, 0xFFFF0000u);
    const auto loopback =
        std::find_if(found.cbegin(), found.cend(), [](const auto& host) { return host.name == "lo"; });
    ASSERT_NE(loopback, found.cend());
    ASSERT_EQ(loopback->addresses.size(), 1) << "IPv4 only";
    EXPECT_EQ(loopback->addresses[0].ip, 0x7F000001u);
}

} // namespace
} // namespace devices
