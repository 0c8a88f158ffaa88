// Camera items of the device tree: labels, tool tips, colours, and what rounds change.
#include "DeviceListFixture.h"

#include "Camera/QDeviceDetectThread.h"
#include "UI/MainWindow/DeviceTexts.h"

namespace devices {
namespace {

using testing::ElementsAre;
using Items = DeviceListFixture;

Gige Foreign() {
    Gige camera;
    camera.ip = 0xC0A80114; // 192.168.1.20
    return camera;
}

TEST_F(Items, AGigeCamera) {
    Gige camera;
    camera.user = "line 3";
    Round({GigeRecord(camera)});
    EXPECT_THAT(Tree(),
                ElementsAre("GigE", "  eth0[10.0.0.1]", "    line 3(G001)", "  eth1[10.0.1.1]", "USB"));
    EXPECT_EQ(Data(CameraItem(1)), QSize(5, static_cast<int>(Id(1))));
    EXPECT_FALSE(CameraItem(1)->data(0, Qt::ForegroundRole).isValid()) << "no colour";
    EXPECT_EQ(CameraName(1), "line 3(G001)");
    EXPECT_EQ(CameraItem(1)->toolTip(0).toStdString(), "line 3(G001)\r\n"
                                                       "\r\n"
                                                       "Model:            GE-1\r\n"
                                                       "Serial Number:    G001\r\n"
                                                       "Version:               1.2.3\r\n"
                                                       "IP Address:         10.0.0.20\r\n"
                                                       "Subnet Mask:      255.255.255.0\r\n"
                                                       "GateWay:           10.0.0.254\r\n"
                                                       "MAC:                  00:02:C0:FF:00:01");
}

TEST_F(Items, AUsbCamera) {
    Round({UsbRecord()});
    EXPECT_THAT(Tree(),
                ElementsAre("GigE", "  eth0[10.0.0.1]", "  eth1[10.0.1.1]", "USB", "  MakerU3-1(U001)"));
    EXPECT_EQ(Data(CameraItem(1)), QSize(6, static_cast<int>(Id(1))));
    EXPECT_EQ(CameraName(1), "MakerU3-1(U001)");
    EXPECT_EQ(CameraItem(1)->toolTip(0).toStdString(), "MakerU3-1(U001)\r\n"
                                                       "\r\n"
                                                       "Model:           U3-1\r\n"
                                                       "Serial Number:    U001\r\n"
                                                       "Version:               4.5.6\r\n"
                                                       "Vendor:    Vendor\r\n"
                                                       "Device GUID:     GUID-U001");
}

TEST_F(Items, AnUnreachableCamera) {
    Round({GigeRecord(Foreign())});
    ASSERT_TRUE(CameraItem(1));
    EXPECT_EQ(CameraItem(1)->text(0), "MakerGE-1(G001)(Unreachable)");
    EXPECT_EQ(CameraItem(1)->foreground(0).color(), QColor(169, 169, 169));
    EXPECT_FALSE(Camera(1)->IsGigECameraReachable());
    EXPECT_EQ(CameraName(1), "MakerGE-1(G001)") << "the name is the plain label";
    EXPECT_EQ(CameraItem(1)->toolTip(0).left(17), "MakerGE-1(G001)\r\n");
}

TEST_F(Items, AnUpdateOfTheSameCamera) {
    Round({GigeRecord()});
    const QTreeWidgetItem* item = CameraItem(1);
    Round({GigeRecord()});
    EXPECT_EQ(CameraItem(1), item) << "updated, not made anew";
    EXPECT_EQ(item->text(0), "MakerGE-1(G001)");
    EXPECT_EQ(item->foreground(0).color(), QColor(0, 0, 102));
    EXPECT_TRUE(item->toolTip(0).contains("\r\nModel:           GE-1\r\n")) << "one blank less";
    EXPECT_TRUE(item->toolTip(0).contains("\r\nGateWay:            10.0.0.254\r\n")) << "one blank more";
}

TEST_F(Items, ReachabilityFollowsTheAddress) {
    Round({GigeRecord()});
    Round({GigeRecord(Foreign())});
    EXPECT_EQ(CameraItem(1)->text(0), "MakerGE-1(G001)(Unreachable)");
    EXPECT_EQ(CameraItem(1)->foreground(0).color(), QColor(196, 196, 196));
    EXPECT_FALSE(Camera(1)->IsGigECameraReachable());
    EXPECT_TRUE(CameraItem(1)->toolTip(0).contains("192.168.1.20"));
    Round({GigeRecord()});
    EXPECT_EQ(CameraItem(1)->text(0), "MakerGE-1(G001)");
    EXPECT_EQ(CameraItem(1)->foreground(0).color(), QColor(0, 0, 102));
    EXPECT_TRUE(Camera(1)->IsGigECameraReachable());
}

TEST_F(Items, TheFlagOfTheUpdateIsNotLookedAt) {
    Round({GigeRecord()});
    list->OnUpdaterCamera(Id(1), false);
    EXPECT_TRUE(Camera(1)->IsGigECameraReachable());
}

TEST_F(Items, AnUpdateThroughAnUnknownInterfaceLeavesReachabilityAsItIs) {
    Gige unknown;
    unknown.host = Ip(77);
    Round({GigeRecord(unknown)});
    Camera(1)->SetCameraReachable(false);
    Round({GigeRecord(unknown)});
    EXPECT_FALSE(Camera(1)->IsGigECameraReachable());
    EXPECT_EQ(CameraItem(1)->text(0), "MakerGE-1(G001)(Unreachable)");
    EXPECT_FALSE(CameraItem(1)->data(0, Qt::ForegroundRole).isValid());
    EXPECT_EQ(CameraItem(1)->parent(), Item("GigE"));
}

TEST_F(Items, AChangedNameIsShown) {
    Round({GigeRecord(), UsbRecord()});
    Gige gige;
    gige.user = "east";
    Usb usb;
    usb.user = "west";
    Round({GigeRecord(gige), UsbRecord(usb)});
    EXPECT_EQ(CameraItem(1)->text(0), "east(G001)");
    EXPECT_EQ(CameraName(1), "east(G001)");
    EXPECT_TRUE(CameraItem(1)->toolTip(0).startsWith("east(G001)\r\n"));
    EXPECT_EQ(CameraItem(2)->text(0), "west(U001)");
    EXPECT_EQ(CameraName(2), "west(U001)");
    EXPECT_TRUE(CameraItem(2)->toolTip(0).startsWith("west(U001)\r\n"));
}

TEST_F(Items, TheSpeedOfAUsbPort) {
    struct Row {
        uint32_t version;
        bool coloured;
    };
    for (const Row row : {Row{0x210, false}, Row{0x2FF, false}, Row{0x300, true}, Row{0x320, true}}) {
        Usb camera;
        camera.usbVersion = row.version;
        camera.serial = std::to_string(row.version);
        Round({UsbRecord(camera)});
        Round({UsbRecord(camera)});
        QTreeWidgetItem* item = Item("MakerU3-1(" + camera.serial + ")");
        ASSERT_TRUE(item);
        EXPECT_EQ(item->data(0, Qt::ForegroundRole).isValid(), row.coloured) << row.version;
        if (row.coloured) {
            EXPECT_EQ(item->foreground(0).color(), QColor(102, 102, 102));
        }
    }
}

TEST_F(Items, TwoCamerasWithEqualNames) {
    Gige other;
    other.mac = 2;
    Round({GigeRecord(), GigeRecord(other)});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0[10.0.0.1]", "    MakerGE-1(G001)", "    MakerGE-1(G001)",
                                    "  eth1[10.0.1.1]", "USB"));
    QTreeWidgetItem* second = CameraItem(2);
    Round({GigeRecord(other)});
    EXPECT_EQ(CameraItem(1), nullptr);
    EXPECT_EQ(CameraItem(2), second) << "the right one goes";
}

TEST_F(Items, ItemsAreNeverSorted) {
    Gige z, a;
    z.user = "z";
    a.user = "a";
    a.mac = 2;
    Round({GigeRecord(z), GigeRecord(a)});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0[10.0.0.1]", "    z(G001)", "    a(G001)",
                                    "  eth1[10.0.1.1]", "USB"));
}

TEST_F(Items, AVanishedCameraGoesAndTheCurrentOneStays) {
    Round({GigeRecord(), UsbRecord()});
    QCameraContainer::Instance()->SetCurrentCameraID(Id(1));
    list->OnCameraOpen(Id(1));
    Round({});
    EXPECT_TRUE(CameraItem(1));
    EXPECT_FALSE(CameraItem(2));
    QCameraContainer::Instance()->SetCurrentCameraID(-1);
}

// --- what can't be shown

TEST_F(Items, SignalsForWhatHasGone) {
    Round({GigeRecord()});
    const auto before = Tree();
    list->OnNewCamera(999999, true);
    list->OnNewCamera(-1, true);
    list->OnUpdaterCamera(999999, true);
    list->OnUpdaterCameraName("x", 999999);
    list->OnDeleteCamera(999999);
    list->OnCameraOpen(999999);
    list->OnCameraClose(999999);
    list->OnAddRemoteCamera(999999);
    list->OnNewCamera(Id(1), true); // is there
    EXPECT_EQ(Tree(), before);
    QCameraContainer::Instance()->DelCameraByID(Id(1));
    list->OnUpdaterCamera(Id(1), true);
    list->OnDetectDevFinished();
    EXPECT_EQ(Tree(), before) << "an item whose camera has gone stays as it is";
}

TEST_F(Items, AnUnknownTransportGetsNoItem) {
    MakeList();
    auto info = GigeRecord();
    info.nTLayerType = 2;
    const long id = QDeviceDetectThread::AddCamera(info);
    list->OnNewCamera(id, true);
    list->OnUpdaterCamera(id, true);
    EXPECT_EQ(list->GetCameraItem(id), nullptr);
}

TEST_F(Items, AGroupsAddressIsNoCameraId) {
    SetHost({{"eth0", "A", {{static_cast<uint32_t>(first), 0xFFFFFF00, "0.0.0.255"}}}});
    MakeList();
    EXPECT_EQ(list->GetCameraItem(first), nullptr);
}

// --- remote cameras

class RemoteItems : public DeviceListFixture {
protected:
    void SetUp() override {
        DeviceListFixture::SetUp();
        Gige camera = Foreign();
        camera.user = "asked";
        doubles.SetDeviceInfo(GigeRecord(camera));
    }
    long AddRemote(const Gige& camera) {
        if (!list)
            MakeList();
        const long id = QDeviceDetectThread::AddCamera(GigeRecord(camera));
        QCameraContainer::Instance()->GetCamera(id)->SetRemoteCamera(true);
        list->OnAddRemoteCamera(id);
        return id;
    }
};

TEST_F(RemoteItems, AreNotMarkedWhenAdded) {
    const long id = AddRemote(Foreign());
    QTreeWidgetItem* item = list->GetCameraItem(id);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->text(0), "MakerGE-1(G001)");
    EXPECT_EQ(item->parent(), Item("eth0[10.0.0.1]"));
    EXPECT_TRUE(QCameraContainer::Instance()->GetCamera(id)->IsGigECameraReachable());
    EXPECT_EQ(tree()->currentItem(), item);
}

TEST_F(RemoteItems, ThatAreListedAlreadyBecomeCurrent) {
    Round({GigeRecord()});
    tree()->setCurrentItem(Item("USB"));
    list->OnAddRemoteCamera(Id(1));
    EXPECT_EQ(tree()->currentItem(), CameraItem(1));
    EXPECT_EQ(Tree().size(), 5u);
}

TEST_F(RemoteItems, AreAskedForTheirName) {
    const long id = AddRemote(Foreign());
    Round({});
    EXPECT_EQ(list->GetCameraItem(id)->text(0), "asked (G001)");
    EXPECT_EQ(CameraName(id - first + 1), "MakerGE-1(G001)") << "the camera keeps the label";
    EXPECT_EQ(doubles.LastHandleRecord().transport.gige.currentIp, Foreign().ip);
}

TEST_F(RemoteItems, WithoutAnAnswerStayAsTheyWere) {
    const long id = AddRemote(Foreign());
    Settle();
    QTreeWidgetItem* item = list->GetCameraItem(id);
    item->setText(0, "before");
    doubles.QueueResult("OV_CC_CreateHandleWithoutLog", OV_STATUS_RESOURCE);
    list->OnDetectDevFinished();
    EXPECT_EQ(item->text(0), "before");
    doubles.QueueResult("OV_CC_GetDeviceInfo", OV_STATUS_NETWORK);
    list->OnDetectDevFinished();
    EXPECT_EQ(item->text(0), "before");
    EXPECT_EQ(doubles.OpenHandles('c'), 0);
    list->OnDetectDevFinished();
    EXPECT_EQ(item->text(0), "asked (G001)");
}

TEST_F(RemoteItems, TheNameOfTheRoundIsShownAtOnce) {
    const long id = AddRemote(Foreign());
    list->OnUpdaterCameraName("told (X)", id);
    EXPECT_EQ(list->GetCameraItem(id)->text(0), "told (X)");
}

TEST_F(RemoteItems, ThatDoNotAnswerEndTheRoundWithoutARelabelling) {
    AddRemote(Foreign());
    Settle();
    QSignalSpy finished(list.get(), &QDevListWidget::SigUpdatePreTitle);
    doubles.SetResult("OV_CC_GetDeviceInfo", OV_STATUS_NETWORK);
    Round({UsbRecord()});
    EXPECT_EQ(finished.count(), 0);
    EXPECT_EQ(Tree().back(), "USB") << "and the new camera isn't added";
}

// --- names

TEST(CutUtf8, BetweenCharacters) {
    struct Row {
        QString name;
        int bytes;
        QByteArray cut;
    };
    const QString han = QString::fromUtf8("\xE4\xB8\x9C\xE7\xBA\xBF");
    const Row rows[] = {
        {"abc", 3, "abc"},
        {"abcd", 3, "abc"},
        {han, 6, "\xE4\xB8\x9C\xE7\xBA\xBF"},
        {han, 5, "\xE4\xB8\x9C"},
        {han, 4, "\xE4\xB8\x9C"},
        {han, 3, "\xE4\xB8\x9C"},
        {han, 2, ""},
        {"", 2, ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(DeviceTexts::CutUtf8(row.name, row.bytes), row.cut) << row.name.toStdString() << row.bytes;
}

TEST_F(Items, TheLongestLabelFillsTheName) {
    Usb camera;
    camera.maker = std::string(64, 'm');
    camera.model = std::string(64, 'o');
    camera.serial = std::string(64, 's');
    Round({UsbRecord(camera)});
    EXPECT_EQ(CameraName(1), std::string(64, 'm') + std::string(64, 'o')) << "128 bytes of it";
    EXPECT_EQ(CameraItem(1)->text(0).size(), 3 * 64 + 2);
}

} // namespace
} // namespace devices
