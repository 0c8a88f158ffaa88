// What a person does with the device list.
#include "DeviceListFixture.h"

#include "Camera/QDeviceDetectThread.h"
#include "UI/Controls/QCheckBoxEx.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/MainWindow/QForceIPWidget.h"
#include "UI/MainWindow/QPingThread.h"
#include "UI/MainWindow/RemoteCamera.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>
#include <QTranslator>
#include <atomic>
#include <thread>

namespace devices {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Use = DeviceListFixture;

constexpr uint32_t kForeign = 0xC0A80114; // 192.168.1.20

Gige Foreign() {
    Gige camera;
    camera.ip = kForeign;
    return camera;
}

// --- clicks

TEST_F(Use, AClickTellsTypeAndNumber) {
    Round({GigeRecord(), UsbRecord()});
    QSignalSpy clicked(list.get(), &QDevListWidget::SigClickedTreeItem);
    struct Row {
        QTreeWidgetItem* item;
        int type, number;
        bool camera;
    };
    const Row rows[] = {
        {CameraItem(1), 5, static_cast<int>(Id(1)), true},
        {Item("eth0[10.0.0.1]"), 3, static_cast<int>(Ip(1)), false},
        {CameraItem(2), 6, static_cast<int>(Id(2)), true},
        {Item("USB"), 4, 0, false},
        {Item("GigE"), 2, 0, false},
    };
    for (const Row& row : rows) {
        clicked.clear();
        QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, CentreOf(row.item));
        EXPECT_EQ(clicked.count(), 2) << "once for the selection, once for the click";
        ASSERT_FALSE(clicked.isEmpty());
        for (const auto& arguments : clicked) {
            EXPECT_EQ(arguments[0].toInt(), row.type);
            EXPECT_EQ(arguments[1].toInt(), row.number);
        }
        EXPECT_EQ(button("copy")->isEnabled(), row.camera);
        EXPECT_EQ(button("delete")->isEnabled(), row.camera);
        EXPECT_EQ(button("add")->isEnabled(), !row.camera);
        QVariant data;
        ASSERT_TRUE(list->GetCurrentItemData(data));
        EXPECT_EQ(data.toSize(), QSize(row.type, row.number));
    }
    tree()->setCurrentItem(nullptr);
    QVariant data;
    EXPECT_FALSE(list->GetCurrentItemData(data));
}

TEST_F(Use, TheKeyboardSelectsToo) {
    Round({GigeRecord()});
    QSignalSpy clicked(list.get(), &QDevListWidget::SigClickedTreeItem);
    tree()->setFocus();
    QTest::keyClick(tree(), Qt::Key_Down);
    ASSERT_EQ(clicked.count(), 1);
    EXPECT_EQ(clicked[0][0].toInt(), 3);
}

TEST_F(Use, ADoubleClickAsksToOpenACamera) {
    Round({GigeRecord(), UsbRecord()});
    QSignalSpy opened(list.get(), &QDevListWidget::SigOnOpenCamera);
    for (const long number : {1, 2}) {
        const QPoint centre = CentreOf(CameraItem(number));
        QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, centre);
        QTest::mouseDClick(tree()->viewport(), Qt::LeftButton, {}, centre);
    }
    ASSERT_EQ(opened.count(), 2);
    EXPECT_EQ(opened[0][0].value<long>(), Id(1));
    EXPECT_EQ(opened[1][0].value<long>(), Id(2));
    EXPECT_EQ(doubles.CountOf("OV_CC_OpenDevice"), 0) << "it never opens a camera itself";
    for (QTreeWidgetItem* item : {Item("GigE"), Item("eth0[10.0.0.1]"), Item("USB")})
        list->OnTreeItemDoubleClicked(item, 0);
    QCameraContainer::Instance()->DelCameraByID(Id(2));
    list->OnTreeItemDoubleClicked(CameraItem(2), 0);
    list->OnTreeItemDoubleClicked(nullptr, 0);
    EXPECT_EQ(opened.count(), 2);
}

TEST_F(Use, ADoubleClickOnAnUnreachableCameraAsksForAnAddress) {
    Round({GigeRecord(Foreign())});
    QSignalSpy opened(list.get(), &QDevListWidget::SigOnOpenCamera);
    const DialogWatch<QForceIPWidget> dialog([](QForceIPWidget& force) {
        EXPECT_EQ(force.findChild<QLineEdit*>()->text(), "192.168.1.20");
        force.reject();
    });
    list->OnTreeItemDoubleClicked(CameraItem(1), 0);
    EXPECT_EQ(dialog.Seen(), 1);
    EXPECT_EQ(opened.count(), 0);
}

TEST_F(Use, BeforeConnectingReachabilityIsChecked) {
    Gige other = Foreign();
    other.mac = 2;
    Round({GigeRecord(), GigeRecord(other), UsbRecord()});
    const DialogWatch<QForceIPWidget> dialog([](QForceIPWidget& force) { force.reject(); });
    EXPECT_TRUE(list->OnCheckCameraReachable(Id(1)));
    EXPECT_TRUE(list->OnCheckCameraReachable(Id(3)));
    EXPECT_EQ(dialog.Seen(), 0);
    EXPECT_FALSE(list->OnCheckCameraReachable(Id(2)));
    EXPECT_EQ(dialog.Seen(), 1);
    EXPECT_FALSE(list->OnCheckCameraReachable(999999)) << "gone";
}

// --- context menu

TEST_F(Use, TheContextMenu) {
    Round({GigeRecord(), UsbRecord()});
    auto* menu = list->findChild<QMenuEx*>();
    ASSERT_TRUE(menu);
    const auto actions = menu->actions();
    ASSERT_EQ(actions.size(), 4);
    EXPECT_EQ(actions[0]->text(), "Delete");
    EXPECT_EQ(actions[1]->text(), "Add Remote Camera");
    EXPECT_TRUE(actions[2]->isSeparator());
    EXPECT_EQ(actions[3]->text(), "Copy Information");
    struct Row {
        QTreeWidgetItem* item;
        bool menu, copy, remove, add;
    };
    const Row rows[] = {
        {Item("eth0[10.0.0.1]"), true, true, false, true}, {CameraItem(1), true, true, true, false},
        {CameraItem(2), true, true, true, false},          {Item("GigE"), false, false, false, false},
        {Item("USB"), false, false, false, false},
    };
    for (const Row& row : rows) {
        const std::string what = row.item->text(0).toStdString();
        Q_EMIT tree()->customContextMenuRequested(CentreOf(row.item));
        EXPECT_EQ(menu->isVisible(), row.menu) << what;
        if (row.menu) {
            EXPECT_EQ(actions[3]->isEnabled(), row.copy) << what;
            EXPECT_EQ(actions[0]->isEnabled(), row.remove) << what;
            EXPECT_EQ(actions[1]->isEnabled(), row.add) << what;
        }
        menu->close();
    }
    Q_EMIT tree()->customContextMenuRequested(QPoint(5, tree()->viewport()->height() - 5));
    EXPECT_FALSE(menu->isVisible()) << "no item under the point";
}

TEST_F(Use, AddIsOnlyAsked) {
    MakeList();
    QSignalSpy add(list.get(), &QDevListWidget::SigAddRemoteCamera);
    QTest::mouseClick(button("add"), Qt::LeftButton);
    list->findChild<QMenuEx*>()->actions()[1]->trigger();
    EXPECT_EQ(add.count(), 2);
}

// --- copy

TEST_F(Use, CopyTakesTheToolTip) {
    Round({GigeRecord()});
    tree()->setCurrentItem(CameraItem(1));
    QTest::mouseClick(button("copy"), Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->text(), CameraItem(1)->toolTip(0));
    tree()->setCurrentItem(Item("eth1[10.0.1.1]"));
    list->findChild<QMenuEx*>()->actions()[3]->trigger();
    EXPECT_TRUE(QApplication::clipboard()->text().endsWith("Default Gateway:  10.0.1.255"));
    tree()->setCurrentItem(nullptr);
    list->OnActionCopy();
    EXPECT_TRUE(QApplication::clipboard()->text().endsWith("Default Gateway:  10.0.1.255"));
}

// --- delete

TEST_F(Use, DeleteTakesTheCameraUntilTheNextRound) {
    Round({GigeRecord(), UsbRecord()});
    tree()->setCurrentItem(CameraItem(1));
    QTest::mouseClick(button("delete"), Qt::LeftButton);
    EXPECT_EQ(CameraItem(1), nullptr);
    EXPECT_EQ(Camera(1), nullptr);
    EXPECT_TRUE(Camera(2));
    EXPECT_THAT(Messages(), IsEmpty());
    Round({GigeRecord(), UsbRecord()});
    EXPECT_TRUE(CameraItem(3)) << "it comes back as a new camera";
}

TEST_F(Use, ADeletedRemoteCameraStaysAway) {
    MakeList();
    const long id = QDeviceDetectThread::AddCamera(GigeRecord(Foreign()));
    QCameraContainer::Instance()->GetCamera(id)->SetRemoteCamera(true);
    list->OnAddRemoteCamera(id);
    list->OnActionDeleteCam();
    EXPECT_EQ(list->GetCameraItem(id), nullptr);
    Round({});
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  eth0[10.0.0.1]", "  eth1[10.0.1.1]", "USB"));
}

TEST_F(Use, TheOpenCameraIsNotDeleted) {
    Round({GigeRecord()});
    list->OnCameraOpen(Id(1));
    tree()->setCurrentItem(CameraItem(1));
    list->OnActionDeleteCam();
    EXPECT_THAT(Messages(), ElementsAre("Please disconnect the camera before deleting it.||1"));
    EXPECT_TRUE(CameraItem(1));
    EXPECT_TRUE(Camera(1));
    list->OnCameraClose(Id(1));
    list->OnActionDeleteCam();
    EXPECT_FALSE(Camera(1));
}

TEST_F(Use, DeleteIsForCamerasOnly) {
    Round({GigeRecord()});
    for (const char* text : {"GigE", "eth0[10.0.0.1]", "USB"}) {
        tree()->setCurrentItem(Item(text));
        list->OnActionDeleteCam();
    }
    tree()->setCurrentItem(nullptr);
    list->OnActionDeleteCam();
    EXPECT_EQ(Tree().size(), 5u);
}

// --- a new address

class ForceUse : public DeviceListFixture {
protected:
    void SetUp() override {
        DeviceListFixture::SetUp();
        // Nobody answers: there is no ping.
        m_path = qgetenv("PATH");
        qputenv("PATH", folder.path().toLocal8Bit());
        Round({GigeRecord(Foreign())});
        doubles.ForgetCalls();
    }
    void TearDown() override {
        qputenv("PATH", m_path);
        DeviceListFixture::TearDown();
    }
    void Force(const QString& address) {
        const DialogWatch<QForceIPWidget> dialog([&address](QForceIPWidget& force) {
            force.findChild<QLineEdit*>()->setText(address);
            QTest::mouseClick(force.GetOKBtn(), Qt::LeftButton);
        });
        list->ForceDeviceIP(Id(1));
        EXPECT_EQ(dialog.Seen(), 1);
        Settle();
    }
    QByteArray m_path;
};

TEST_F(ForceUse, GivesTheCameraItsAddressAndLooksAgain) {
    Gige moved;
    moved.ip = Ip(77);
    doubles.SetDevices({GigeRecord(moved)});
    Force("10.0.0.77");
    EXPECT_EQ(doubles.LastForcedIp(), Ip(77));
    EXPECT_EQ(doubles.LastHandleRecord().transport.gige.currentIp, kForeign);
    EXPECT_EQ(doubles.Calls({"OV_CC_CreateHandle", "OV_GIGE", "OV_CC_Destroy", "OV_CC_Open"}),
              (std::vector<std::string>{"OV_CC_CreateHandle", "OV_GIGE_ForceIp", "OV_CC_DestroyHandle"}));
    EXPECT_EQ(doubles.CountOf("OV_CC_EnumDevices"), 1);
    EXPECT_EQ(CameraItem(1)->text(0), "MakerGE-1(G001)");
    EXPECT_TRUE(Camera(1)->IsGigECameraReachable());
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(ForceUse, ThatIsRefusedByTheCamera) {
    doubles.QueueResult("OV_GIGE_ForceIp", OV_STATUS_ACCESS_DENIED);
    Force("10.0.0.77");
    EXPECT_THAT(Messages(), ElementsAre("Editing IP address failed. The device may be\nin use by others.|"
                                        "Failed to get the permission. The device is in use.|1"));
    EXPECT_EQ(doubles.CountOf("OV_CC_DestroyHandle"), 1);
    EXPECT_EQ(doubles.CountOf("OV_CC_EnumDevices"), 1) << "and looks again all the same";
}

TEST_F(ForceUse, WithoutAHandleDoesNothing) {
    doubles.QueueResult("OV_CC_CreateHandle", OV_STATUS_RESOURCE);
    Force("10.0.0.77");
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_EQ(doubles.CountOf("OV_GIGE_ForceIp"), 0);
    EXPECT_EQ(doubles.CountOf("OV_CC_EnumDevices"), 0);
}

TEST_F(ForceUse, CancelledDoesNothing) {
    const DialogWatch<QForceIPWidget> dialog([](QForceIPWidget& force) { force.OnBtnCancel(); });
    list->ForceDeviceIP(Id(1));
    EXPECT_EQ(dialog.Seen(), 1);
    EXPECT_EQ(doubles.CountOf("OV_CC_CreateHandle"), 0);
    EXPECT_EQ(doubles.CountOf("OV_CC_EnumDevices"), 0);
}

TEST_F(ForceUse, OfACameraThatHasGone) {
    list->ForceDeviceIP(999999);
    EXPECT_EQ(doubles.CountOf("OV_CC_CreateHandle"), 0);
}

// The camera, its item and its network go while the dialog is open.
TEST_F(ForceUse, SurvivesWhatHappensMeanwhile) {
    const DialogWatch<QForceIPWidget> dialog([this](QForceIPWidget& force) {
        SetHost({});
        Round({});
        EXPECT_EQ(Tree().size(), 2u);
        force.findChild<QLineEdit*>()->setText("10.0.0.78");
        force.GetOKBtn()->click();
    });
    list->ForceDeviceIP(Id(1));
    EXPECT_EQ(dialog.Seen(), 1);
    EXPECT_EQ(doubles.LastForcedIp(), Ip(78));
    Settle();
}

// --- auto-refresh

class AutoRefresh : public DeviceListFixture {
protected:
    QTimer* Timer() const { return list->findChild<QTimer*>(); }
    QCheckBoxEx* Box() const { return list->findChild<QCheckBoxEx*>(); }
};

TEST_F(AutoRefresh, IsOffAtFirst) {
    MakeList();
    EXPECT_FALSE(Box()->isChecked());
    EXPECT_FALSE(Timer()->isActive());
}

TEST_F(AutoRefresh, StartsAndStopsTheTimerAtOnce) {
    MakeList();
    Box()->click();
    EXPECT_TRUE(Timer()->isActive());
    EXPECT_EQ(Timer()->interval(), 30000);
    EXPECT_TRUE(QLocalCfg::Instance()->GetAutoScanNewDev());
    Box()->click();
    EXPECT_FALSE(Timer()->isActive());
    EXPECT_FALSE(QLocalCfg::Instance()->GetAutoScanNewDev());
}

TEST_F(AutoRefresh, OnlyTheCheckedStateCounts) {
    MakeList();
    list->OnCheckAutoScan(Qt::PartiallyChecked);
    EXPECT_FALSE(Timer()->isActive());
    EXPECT_FALSE(QLocalCfg::Instance()->GetAutoScanNewDev());
}

TEST_F(AutoRefresh, RefreshesNetworksAndStartsARound) {
    MakeList();
    doubles.ForgetCalls();
    doubles.SetDevices({GigeRecord()});
    SetHost({Interface("eth0", "A", {0}), Interface("eth2", "C", {2})});
    ASSERT_TRUE(QMetaObject::invokeMethod(Timer(), "timeout", Qt::DirectConnection));
    Settle();
    EXPECT_EQ(doubles.CountOf("OV_CC_EnumDevices"), 1);
    EXPECT_THAT(Tree(),
                ElementsAre("GigE", "  eth0[10.0.0.1]", "    MakerGE-1(G001)", "  eth2[10.0.2.1]", "USB"));
}

TEST_F(AutoRefresh, SurvivesARestart) {
    MakeList();
    Box()->click();
    list.reset();
    QLocalCfg::ReleaseInstance(); // writes the settings
    MakeList();
    EXPECT_TRUE(Box()->isChecked());
    EXPECT_TRUE(Timer()->isActive());
}

TEST_F(AutoRefresh, FollowsTheOptions) {
    MakeList();
    QLocalCfg::Instance()->SetAutoScanNewDev(true);
    list->OnOptionsChanged();
    EXPECT_TRUE(Timer()->isActive());
    QLocalCfg::Instance()->SetAutoScanNewDev(false);
    list->OnOptionsChanged();
    EXPECT_FALSE(Timer()->isActive());
}

TEST_F(Use, ARefreshDuringARoundIsDropped) {
    MakeList();
    doubles.ForgetCalls();
    std::atomic<bool> goOn{false};
    doubles.OnCall("OV_CC_EnumDevices", [&goOn] {
        while (!goOn)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    QTest::mouseClick(button("refresh"), Qt::LeftButton);
    EXPECT_TRUE(list->IsDetecting());
    QTest::mouseClick(button("refresh"), Qt::LeftButton);
    goOn = true;
    Settle();
    EXPECT_EQ(doubles.CountOf("OV_CC_EnumDevices"), 1);
}

// --- the open camera, the selection

TEST_F(Use, TheOpenCameraIsBold) {
    Round({GigeRecord()});
    const QFont before = CameraItem(1)->font(0);
    EXPECT_FALSE(before.bold());
    list->OnCameraOpen(Id(1));
    EXPECT_EQ(CameraItem(1)->font(0).weight(), 75);
    Round({GigeRecord()});
    EXPECT_TRUE(CameraItem(1)->font(0).bold()) << "also after a round";
    list->OnCameraClose(Id(1));
    EXPECT_EQ(CameraItem(1)->font(0).weight(), 50);
}

TEST_F(Use, SelectionAndFoldingSurviveRounds) {
    Gige other;
    other.mac = 2;
    Round({GigeRecord(), GigeRecord(other)});
    tree()->setCurrentItem(CameraItem(2));
    Item("eth1[10.0.1.1]")->setExpanded(false);
    QSignalSpy clicked(list.get(), &QDevListWidget::SigClickedTreeItem);
    Round({GigeRecord(), GigeRecord(other)});
    Round({GigeRecord(other)});
    EXPECT_EQ(tree()->currentItem(), CameraItem(2));
    EXPECT_TRUE(CameraItem(2)->isSelected());
    EXPECT_EQ(clicked.count(), 0);
    EXPECT_TRUE(Item("eth1[10.0.1.1]")->isExpanded()) << "a refresh expands the groups";
}

TEST_F(Use, WhenTheCurrentCameraVanishesAnotherItemIsCurrent) {
    Gige other;
    other.mac = 2;
    Round({GigeRecord(), GigeRecord(other), UsbRecord()});
    const std::vector<std::vector<_OV_CC_DEVICE_INFO_>> rounds{
        {GigeRecord(other), UsbRecord()}, {UsbRecord()}, {}};
    for (long number = 1; number <= 3; ++number) {
        tree()->setCurrentItem(CameraItem(number));
        QSignalSpy clicked(list.get(), &QDevListWidget::SigClickedTreeItem);
        Round(rounds[static_cast<size_t>(number - 1)]);
        ASSERT_EQ(CameraItem(number), nullptr);
        QVariant data;
        ASSERT_TRUE(list->GetCurrentItemData(data)) << number;
        ASSERT_GE(clicked.count(), 1) << number;
        EXPECT_EQ(QSize(clicked.last()[0].toInt(), clicked.last()[1].toInt()), data.toSize()) << number;
        EXPECT_EQ(button("delete")->isEnabled(), data.toSize().width() >= 5) << number;
    }
}

TEST_F(Use, TheAddressOfTheSelectedGroupTiesARemoteCamera) {
    Round({GigeRecord()});
    EXPECT_EQ(CurrentHostInterface(*list), 0u) << "a root";
    tree()->setCurrentItem(Item("eth1[10.0.1.1]"));
    EXPECT_EQ(CurrentHostInterface(*list), Ip(256 + 1));
    tree()->setCurrentItem(CameraItem(1));
    EXPECT_EQ(CurrentHostInterface(*list), 0u);
    tree()->setCurrentItem(nullptr);
    EXPECT_EQ(CurrentHostInterface(*list), 0u);
}

// --- language

class Marked : public QTranslator {
public:
    QString translate(const char* context, const char* source, const char*, int) const override {
        return QString(context) == "QDevListWidget" ? "~" + QString::fromUtf8(source) : QString();
    }
    bool isEmpty() const override { return false; }
};

TEST_F(Use, AChangeOfLanguageFormsAllTextsAnew) {
    Round({GigeRecord(Foreign()), UsbRecord()});
    const QTreeWidgetItem* item = CameraItem(1);
    Marked translator;
    QCoreApplication::installTranslator(&translator);
    QCoreApplication::processEvents();
    Settle();
    EXPECT_EQ(CameraItem(1), item) << "the camera items stay";
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  ~eth0[10.0.0.1]", "    MakerGE-1(G001)~(Unreachable)",
                                    "  ~eth1[10.0.1.1]", "USB", "  MakerU3-1(U001)"));
    EXPECT_TRUE(CameraItem(1)->toolTip(0).contains("\r\n~Model:           GE-1\r\n"));
    EXPECT_TRUE(CameraItem(2)->toolTip(0).contains("\r\n~Vendor:    Vendor\r\n"));
    EXPECT_TRUE(Item("~eth0[10.0.0.1]")->toolTip(0).startsWith("~~eth0[10.0.0.1]\n\nMAC:"));
    EXPECT_EQ(list->findChild<QCheckBoxEx*>()->text(), "~Auto-Refresh");
    EXPECT_EQ(button("refresh")->toolTip(), "~Refresh");
    EXPECT_EQ(button("copy")->toolTip(), "~Copy Information");
    EXPECT_EQ(button("add")->toolTip(), "~Add Remote Camera");
    EXPECT_EQ(button("delete")->toolTip(), "~Delete");
    EXPECT_EQ(list->findChild<QMenuEx*>()->actions()[0]->text(), "~Delete");
    EXPECT_EQ(list->findChild<QMenuEx*>()->actions()[1]->text(), "~Add Remote Camera");
    EXPECT_EQ(list->findChild<QMenuEx*>()->actions()[3]->text(), "~Copy Information");
    QCoreApplication::removeTranslator(&translator);
    QCoreApplication::processEvents();
    Settle();
    EXPECT_EQ(CameraItem(1)->text(0), "MakerGE-1(G001)(Unreachable)");
}

// --- life

TEST_F(Use, WithoutMemoryItIsNotBuilt) {
    const FailAllocationsOf failing(sizeof(QDeviceDetectThread));
    EXPECT_THROW(QDevListWidget(), std::bad_alloc);
}

TEST_F(Use, ItsEndWaitsForARunningRound) {
    MakeList();
    std::atomic<bool> left{false};
    doubles.OnCall("OV_CC_EnumDevices", [&left] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        left = true;
    });
    list->OnBtnRefresh();
    list.reset();
    EXPECT_TRUE(left);
}

TEST_F(Use, TheRowStandsInItsOrder) {
    MakeList();
    const QWidget* row[] = {button("copy"), button("add"), button("delete"), list->findChild<QCheckBoxEx*>(),
                            button("refresh")};
    for (int i = 1; i < 5; ++i)
        EXPECT_LT(row[i - 1]->x(), row[i]->x()) << i;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(row[i]->size(), QSize(20, 20));
}

} // namespace
} // namespace devices
