// Roots and interface groups of the device tree.
#include "DeviceListFixture.h"

namespace devices {
namespace {

using testing::ElementsAre;
using Networks = DeviceListFixture;

TEST_F(Networks, OfTheStart) {
    MakeList();
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0[10.0.0.1]", "  eth1[10.0.1.1]", "USB"));
    EXPECT_EQ(Data(Item("GigE")), QSize(2, 0));
    EXPECT_EQ(Data(Item("eth0[10.0.0.1]")), QSize(3, static_cast<int>(Ip(1))));
    EXPECT_EQ(Data(Item("USB")), QSize(4, 0));
    for (QTreeWidgetItemIterator item(tree()); *item; ++item)
        EXPECT_TRUE((*item)->isExpanded()) << (*item)->text(0).toStdString();
    EXPECT_EQ(tree()->currentItem(), Item("GigE")) << "the current item of the start";
    EXPECT_FALSE(button("copy")->isEnabled());
    EXPECT_FALSE(button("delete")->isEnabled());
    EXPECT_TRUE(button("add")->isEnabled());
}

TEST_F(Networks, TheToolTipOfAGroupShowsTheBroadcastAddressAsGateway) {
    MakeList();
    EXPECT_EQ(Item("eth1[10.0.1.1]")->toolTip(0).toStdString(), "eth1[10.0.1.1]\n\n"
                                                                "MAC:                   B\n"
                                                                "IP Address:          10.0.1.1\n"
                                                                "Subnet Mask:       255.255.255.0\n"
                                                                "Default Gateway:  10.0.1.255");
}

TEST_F(Networks, AnAddressAboveTheSignBitIsKeptWhole) {
    SetHost({{"eth0", "A", {{0xDFFFFFFE, 0xFFFFFF00, "223.255.255.255"}}}});
    MakeList();
    const QTreeWidgetItem* group = Item("eth0[223.255.255.254]");
    ASSERT_TRUE(group);
    EXPECT_EQ(static_cast<uint32_t>(Data(group).height()), 0xDFFFFFFEu);
}

TEST_F(Networks, AHostWithNothingButLoopback) {
    SetHost({{"lo", "00:00:00:00:00:00", {{0x7F000001, 0xFF000000, "127.255.255.255"}}}});
    Round({GigeRecord()});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  MakerGE-1(G001)", "USB"));
    EXPECT_TRUE(Camera(1)->IsGigECameraReachable());
}

TEST_F(Networks, OnlyTheOneLoopbackAddressMakesNoGroup) {
    SetHost({{"lo",
              "00:00:00:00:00:00",
              {{0x7F000001, 0xFF000000, "127.255.255.255"}, {0x7F000002, 0xFF000000, "127.255.255.255"}}}});
    MakeList();
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  lo[127.0.0.2]", "USB"));
}

TEST_F(Networks, ASecondAddressJoinsTheGroup) {
    SetHost({Interface("eth0", "A", {0, 3})});
    MakeList();
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0[10.0.0.1]", "USB")) << "labelled with the first";
    Gige there;
    there.host = Ip(3 * 256 + 1);
    there.ip = Ip(3 * 256 + 20);
    there.mac = 2;
    there.serial = "G002";
    Round({GigeRecord(), GigeRecord(there)});
    EXPECT_THAT(Tree(),
                ElementsAre("GigE", "  eth0[10.0.3.1]", "    MakerGE-1(G001)", "    MakerGE-1(G002)", "USB"))
        << "labelled with the last; cameras of both subnets are within reach";
    EXPECT_EQ(Data(Item("eth0[10.0.3.1]")), QSize(3, static_cast<int>(Ip(3 * 256 + 1))));
    EXPECT_TRUE(Item("eth0[10.0.3.1]")->toolTip(0).contains("IP Address:          10.0.3.1"));
    EXPECT_TRUE(Camera(1)->IsGigECameraReachable());
    EXPECT_TRUE(Camera(2)->IsGigECameraReachable());
}

TEST_F(Networks, ACameraIsWithinReachThroughAnyAddressOfItsInterface) {
    SetHost({Interface("eth0", "A", {0, 3})});
    Gige there;
    there.ip = Ip(3 * 256 + 20); // answers through 10.0.0.1
    Round({GigeRecord(there)});
    EXPECT_TRUE(Camera(1)->IsGigECameraReachable());
}

TEST_F(Networks, InterfacesOfOneMacFoldIntoOneGroup) {
    SetHost({Interface("eth0", "A", {0}), Interface("eth0.10", "A", {3})});
    MakeList();
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0[10.0.0.1]", "USB"));
    // The refresh of a round empties the group for each of its interfaces, so the first one's camera finds
    // none.
    Gige there;
    there.host = Ip(3 * 256 + 1);
    there.ip = Ip(3 * 256 + 20);
    there.mac = 2;
    there.serial = "G002";
    Round({GigeRecord(), GigeRecord(there)});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0.10[10.0.3.1]", "    MakerGE-1(G002)", "  MakerGE-1(G001)",
                                    "USB"));
}

TEST_F(Networks, AGroupWithoutACameraStays) {
    Round({});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0[10.0.0.1]", "  eth1[10.0.1.1]", "USB"));
}

TEST_F(Networks, ANewInterfaceIsAddedBehindTheOthers) {
    MakeList();
    SetHost({Interface("wlan0", "C", {7}), Interface("eth0", "A", {0}), Interface("eth1", "B", {1})});
    Round({});
    EXPECT_THAT(Tree(),
                ElementsAre("GigE", "  eth0[10.0.0.1]", "  eth1[10.0.1.1]", "  wlan0[10.0.7.1]", "USB"));
    EXPECT_TRUE(Item("wlan0[10.0.7.1]")->isExpanded());
}

TEST_F(Networks, AnInterfaceThatGoesTakesItsCameraItemsAlong) {
    Gige other;
    other.host = Ip(256 + 1);
    other.ip = Ip(256 + 20);
    other.mac = 2;
    Round({GigeRecord(), GigeRecord(other)});
    SetHost({Interface("eth1", "B", {1})});
    // The device is still listed, so the registry keeps it; its item is gone all the same.
    Round({GigeRecord(), GigeRecord(other)});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth1[10.0.1.1]", "    MakerGE-1(G001)", "USB"));
    EXPECT_TRUE(Camera(1)) << "the registry isn't touched";
    EXPECT_EQ(CameraItem(1), nullptr);
    Round({GigeRecord(other)});
    EXPECT_FALSE(Camera(1)) << "until a round misses the device";
    SetHost({Interface("eth0", "A", {0}), Interface("eth1", "B", {1})});
    Round({GigeRecord(), GigeRecord(other)});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth1[10.0.1.1]", "    MakerGE-1(G001)", "  eth0[10.0.0.1]",
                                    "    MakerGE-1(G001)", "USB"));
}

TEST_F(Networks, TheRootBecomesCurrentForAnItemThatGoesWithItsInterface) {
    for (const bool camera : {true, false}) {
        SetHost({Interface("eth0", "A", {0}), Interface("eth1", "B", {1})});
        Round({GigeRecord()});
        tree()->setCurrentItem(camera ? Item("MakerGE-1(G001)") : Item("eth0[10.0.0.1]"));
        QSignalSpy clicked(list.get(), &QDevListWidget::SigClickedTreeItem);
        SetHost({Interface("eth1", "B", {1})});
        Round({});
        EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth1[10.0.1.1]", "USB"));
        EXPECT_EQ(tree()->currentItem(), Item("GigE"));
        EXPECT_TRUE(Item("GigE")->isSelected());
        ASSERT_GE(clicked.count(), 1) << "and that is told";
        EXPECT_EQ(clicked.last()[0].toInt(), 2);
        EXPECT_FALSE(button("copy")->isEnabled());
        EXPECT_FALSE(button("delete")->isEnabled());
        EXPECT_TRUE(button("add")->isEnabled());
    }
}

TEST_F(Networks, AnInterfaceThatLostItsAddressesGoes) {
    MakeList();
    SetHost({{"eth0", "A", {}}, Interface("eth1", "B", {1})});
    Round({});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth1[10.0.1.1]", "USB"));
}

TEST_F(Networks, AChangedAddressKeepsTheGroup) {
    Round({GigeRecord()});
    const QTreeWidgetItem* group = Item("eth0[10.0.0.1]");
    SetHost({Interface("eth0", "A", {9}), Interface("eth1", "B", {1})});
    Gige now;
    now.host = Ip(9 * 256 + 1);
    Round({GigeRecord(now)});
    EXPECT_EQ(Item("eth0[10.0.9.1]"), group);
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0[10.0.9.1]", "    MakerGE-1(G001)(Unreachable)",
                                    "  eth1[10.0.1.1]", "USB"))
        << "another host interface: another camera, which lies in a foreign subnet now";
}

TEST_F(Networks, AnAddressThatGoesNoLongerReaches) {
    SetHost({Interface("eth0", "A", {0, 3})});
    Gige there;
    there.ip = Ip(3 * 256 + 20);
    Round({GigeRecord(there)});
    SetHost({Interface("eth0", "A", {0})});
    Round({GigeRecord(there)});
    EXPECT_FALSE(Camera(1)->IsGigECameraReachable());
}

TEST_F(Networks, ReachabilityRows) {
    struct Row {
        const char* what;
        QMap<unsigned, unsigned> ips;
        uint32_t ip;
        bool reachable;
    };
    const uint32_t mask = 0xFFFFFF00;
    const Row rows[] = {
        {"no address", {}, Ip(20), false},
        {"the same subnet", {{Ip(1), mask}}, Ip(20), true},
        {"another subnet", {{Ip(1), mask}}, Ip(256 + 20), false},
        {"each under its own mask", {{Ip(1), mask}, {Ip(2 * 256), 0xFFFF0000}}, Ip(9 * 256), true},
        {"a wider mask on the other address only", {{Ip(1), mask}, {0xC0A80001, 0xFFFF0000}}, Ip(256), false},
        {"the host's own address doesn't matter", {{Ip(1), mask}}, Ip(1), true},
        {".254 doesn't matter", {{Ip(1), mask}}, Ip(254), true},
        {".255 doesn't matter", {{Ip(1), mask}}, Ip(255), true},
        {"no address at all", {{Ip(1), mask}}, 0, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(QDevListWidget::IsIPReachable({row.ips, "A"}, row.ip), row.reachable) << row.what;
}

} // namespace
} // namespace devices
