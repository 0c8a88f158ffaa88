// The device list on the real camera library and real networks: virtual cameras behind cables, in namespaces
// of the test's own.
//
//   host: nic0 10.1.0.1/24 ---- siteA 10.1.0.2 --(router)-- siteC 10.9.0.0/24
//         nic1 10.2.0.1/24 ---- siteB 10.2.0.2
#include "Camera/CCameraRef.h"
#include "Camera/QDeviceDetectThread.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "UI/MainWindow/QAddCameraWidget.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QForceIPWidget.h"
#include "UI/MainWindow/QPingThread.h"
#include "UI/MainWindow/RemoteCamera.h"
#include "VirtualCamera.h"
#include "WidgetHelp.h"
#include "support/NetworkNamespace.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <atomic>
#include <fstream>
#include <gmock/gmock.h>
#include <memory>
#include <sys/resource.h>

namespace devices {
namespace {

using kolt::test::NamespaceScope;
using kolt::test::NetworkNamespace;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// A camera that doesn't get the processor for a third of a second isn't found. On a busy machine these tests
// go first, where they may.
[[maybe_unused]] const int preferred = setpriority(PRIO_PROCESS, 0, -5);

class Adder : public QWidget, public QRemoteCameraAdder {
public:
    explicit Adder(QDevListWidget& list) : m_list(list) {}
    long AddCamera(const QString& ip) override { return AddRemoteCamera(ip, CurrentHostInterface(m_list)); }

private:
    QDevListWidget& m_list;
};

class DeviceNetwork : public testing::Test {
protected:
    void SetUp() override {
        NetworkNamespace::cable(host, "nic0", "10.1.0.1/24", siteA, "sw0", "10.1.0.2/24");
        NetworkNamespace::cable(host, "nic1", "10.2.0.1/24", siteB, "sw1", "10.2.0.2/24");
        ASSERT_TRUE(folder.isValid());
        QLocalCfg::SetDirectory(folder.path());
        ApplyLook();
        QFunction::SetMessagePresenter(
            [this](QWidget*, const QString& message, const QString& detail, const QString&, int) {
                messages.push_back((message + "|" + detail).toStdString());
            });
        inside = std::make_unique<NamespaceScope>(host);
    }

    void TearDown() override {
        list.reset();
        QCameraContainer::Instance()->SetCurrentCameraID(-1);
        QCameraContainer::ReleaseInstance();
        inside.reset();
        cameras.clear();
        QFunction::SetMessagePresenter({});
        QLocalCfg::ReleaseInstance();
        QLocalCfg::SetDirectory({});
    }

    vcam::VirtualCamera& Start(const NetworkNamespace& site, const std::string& interface,
                               const std::string& ip, const std::string& serial, const std::string& name = {},
                               const std::string& mask = {}) {
        vcam::Config config;
        config.interface = interface;
        config.address = ip;
        config.serial = serial;
        config.userName = name;
        config.mask = mask;
        const NamespaceScope there(site);
        cameras.push_back(std::make_unique<vcam::VirtualCamera>(config));
        cameras.back()->Start();
        return *cameras.back();
    }

    void MakeList() {
        list = std::make_unique<QDevListWidget>();
        list->resize(320, 420);
        list->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(list.get()));
        Settle();
    }
    void Settle() {
        ASSERT_TRUE(WaitFor([this] { return !list->IsDetecting(); }));
        QCoreApplication::processEvents();
    }
    void Round() {
        Settle();
        list->OnBtnRefresh();
        Settle();
    }
    std::vector<std::string> Tree() const { return TreeLines(list->findChild<QTreeWidget*>("deviceTree")); }
    QTreeWidget* tree() const { return list->findChild<QTreeWidget*>("deviceTree"); }
    QTreeWidgetItem* Item(const QString& text) const {
        const auto found = tree()->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? nullptr : found.first();
    }
    long IdOf(const QString& text) const {
        const QTreeWidgetItem* item = Item(text);
        return item ? item->data(0, Qt::UserRole).toSize().height() : -1;
    }

    NetworkNamespace host, siteA, siteB, siteC;
    QTemporaryDir folder;
    std::unique_ptr<NamespaceScope> inside;
    std::vector<std::unique_ptr<vcam::VirtualCamera>> cameras;
    std::vector<std::string> messages;
    std::unique_ptr<QDevListWidget> list;
};

TEST_F(DeviceNetwork, CamerasAreGroupedByInterface) {
    Start(siteA, "sw0", "10.1.0.5", "A-1", "east");
    Start(siteB, "sw1", "10.2.0.5", "B-1", "twin");
    Start(siteB, "sw1", "10.2.0.6", "B-2", "twin");
    MakeList();
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  nic0[10.1.0.1]", "    east(A-1)", "  nic1[10.2.0.1]",
                                    "    twin(B-1)", "    twin(B-2)", "USB"));
    Round();
    EXPECT_EQ(Tree().size(), 7u) << "and stay the same ones";
    EXPECT_TRUE(Item("east(A-1)")->toolTip(0).contains("IP Address:         10.1.0.5\r\n"));
    KeepPicture(*list, "network-grouped.png");
}

TEST_F(DeviceNetwork, CamerasAppearAndVanish) {
    Start(siteA, "sw0", "10.1.0.5", "A-1", "east");
    MakeList();
    auto& second = Start(siteB, "sw1", "10.2.0.5", "B-1", "west");
    Round();
    EXPECT_THAT(Tree(), Contains("    west(B-1)"));
    const long before = IdOf("west(B-1)");
    vcam::Faults dead;
    dead.silent = true;
    second.SetFaults(dead);
    Round();
    EXPECT_THAT(Tree(), Not(Contains("    west(B-1)")));
    EXPECT_THAT(Tree(), Contains("    east(A-1)"));
    second.SetFaults({});
    Round();
    EXPECT_GT(IdOf("west(B-1)"), before) << "a new camera";
}

TEST_F(DeviceNetwork, AForeignCameraIsReachedAfterItsAddressWasForced) {
    Start(siteA, "sw0", "172.30.0.5", "A-9", "far", "255.255.0.0");
    MakeList();
    QTreeWidgetItem* item = Item("far(A-9)(Unreachable)");
    ASSERT_TRUE(item) << testing::PrintToString(Tree());
    EXPECT_EQ(item->foreground(0).color(), QColor(169, 169, 169));
    const long id = IdOf("far(A-9)(Unreachable)");
    KeepPicture(*list, "network-unreachable.png");
    {
        const CCameraRef camera = CCameraRef::ById(id);
        EXPECT_EQ(camera->OpenCamera(), -56);
        camera->CloseCamera();
    }
    QSignalSpy opened(list.get(), &QDevListWidget::SigOnOpenCamera);
    const DialogWatch<QForceIPWidget> dialog([](QForceIPWidget& force) {
        EXPECT_EQ(force.findChild<QLineEdit*>()->text(), "172.30.0.5");
        KeepPicture(force, "network-force-ip.png");
        force.findChild<QLineEdit*>()->setText("10.1.0.77");
        QTest::mouseClick(force.GetOKBtn(), Qt::LeftButton);
    });
    list->OnTreeItemDoubleClicked(item, 0);
    EXPECT_EQ(dialog.Seen(), 1);
    EXPECT_THAT(messages, IsEmpty());
    // The camera may need a moment with its new address.
    ASSERT_TRUE(WaitFor([this] {
        Round();
        return Item("far(A-9)") != nullptr;
    })) << testing::PrintToString(Tree());
    EXPECT_EQ(Item("far(A-9)"), item) << "still the same camera";
    EXPECT_EQ(opened.count(), 0);
    EXPECT_TRUE(item->toolTip(0).contains("10.1.0.77"));
    list->OnTreeItemDoubleClicked(item, 0);
    ASSERT_EQ(opened.count(), 1);
    const CCameraRef camera = CCameraRef::ById(opened[0][0].value<long>());
    EXPECT_EQ(camera->OpenCamera(), 0) << "and it can be opened now";
    EXPECT_EQ(camera->CloseCamera(), 0);
}

TEST_F(DeviceNetwork, AnAddressThatIsTakenIsRefused) {
    Start(siteA, "sw0", "172.30.0.5", "A-9", "far", "255.255.0.0");
    Start(siteA, "sw0", "10.1.0.5", "A-1", "east");
    MakeList();
    // 10.1.0.2 is no camera: only the ping finds it. On a busy machine its answer may come too late.
    ASSERT_TRUE(WaitFor([] { return QPingThread::PingIPAddr("10.1.0.2"); })) << "a real ping";
    EXPECT_FALSE(QPingThread::PingIPAddr("10.1.0.99"));
    int refused = 0;
    const DialogWatch<QForceIPWidget> dialog([&](QForceIPWidget& force) {
        for (const char* taken : {"10.1.0.5", "10.1.0.2"}) {
            const size_t before = messages.size();
            const bool told = WaitFor([&] {
                force.findChild<QLineEdit*>()->setText(taken);
                force.GetOKBtn()->click();
                return WaitFor([&force] { return force.GetOKBtn()->isEnabled(); }) &&
                       (messages.size() > before || !force.isVisible());
            });
            refused += told && messages.size() > before && force.isVisible() ? 1 : 0;
            if (!force.isVisible())
                return; // the answer of the ping came too late: this row can't be told on this machine
        }
        force.reject();
    });
    list->ForceDeviceIP(IdOf("far(A-9)(Unreachable)"));
    EXPECT_GE(refused, 1);
    for (const std::string& message : messages)
        EXPECT_EQ(message, "The IP address is used by other device.|");
}

TEST_F(DeviceNetwork, TheCableIsPulledWhileTheCameraIsOpen) {
    Start(siteA, "sw0", "10.1.0.5", "A-1", "east");
    MakeList();
    const long id = IdOf("east(A-1)");
    std::atomic<bool> lost{false};
    {
        const CCameraRef camera = CCameraRef::ById(id);
        ASSERT_EQ(camera->OpenCamera(), 0);
        camera->SetCameraDisconnectCallBackInfo(
            [](void* flag, long) { *static_cast<std::atomic<bool>*>(flag) = true; }, &lost);
        QCameraContainer::Instance()->SetCurrentCameraID(id);
        list->OnCameraOpen(id);
    }
    siteA.ip("link set sw0 down");
    ASSERT_TRUE(WaitFor([&lost] { return lost.load(); }));
    Round();
    ASSERT_TRUE(Item("east(A-1)")) << "the open camera stays until its loss has been dealt with";
    EXPECT_TRUE(Item("east(A-1)")->font(0).bold());
    // What the window does then.
    {
        const CCameraRef camera = CCameraRef::ById(id);
        camera->CloseCamera();
        list->OnCameraClose(id);
        QCameraContainer::Instance()->SetCurrentCameraID(-1);
        QCameraContainer::Instance()->DelCameraByID(id);
        list->OnDeleteCamera(id);
    }
    EXPECT_FALSE(Item("east(A-1)"));
    siteA.ip("link set sw0 up");
    ASSERT_TRUE(WaitFor([this] {
        Round();
        return Item("east(A-1)") != nullptr;
    }));
    EXPECT_GT(IdOf("east(A-1)"), id) << "back as a new camera";
}

TEST_F(DeviceNetwork, ASecondAddressReachesASecondSubnet) {
    Start(siteB, "sw1", "10.2.0.5", "B-1", "west");
    Start(siteB, "sw1", "10.3.0.5", "B-3", "south", "255.255.255.0");
    MakeList();
    EXPECT_THAT(Tree(), Contains("    south(B-3)(Unreachable)"));
    host.ip("address add 10.3.0.1/24 brd + dev nic1");
    Round();
    Round(); // the host interface of a camera is part of its identity: it may come back as a new one
    EXPECT_THAT(Tree(), Contains("    south(B-3)"));
    EXPECT_THAT(Tree(), Contains("    west(B-1)"));
    EXPECT_TRUE(Item("nic1[10.3.0.1]")) << "labelled with the last address";
    const CCameraRef camera = CCameraRef::ById(IdOf("south(B-3)"));
    ASSERT_TRUE(camera);
    EXPECT_EQ(camera->OpenCamera(), 0);
    EXPECT_EQ(camera->CloseCamera(), 0);
}

TEST_F(DeviceNetwork, AnInterfaceGoes) {
    Start(siteA, "sw0", "10.1.0.5", "A-1", "east");
    Start(siteB, "sw1", "10.2.0.5", "B-1", "west");
    MakeList();
    host.ip("link delete nic1");
    Round();
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  nic0[10.1.0.1]", "    east(A-1)", "USB"));
    EXPECT_EQ(QCameraContainer::Instance()->GetTotalCameraNum(), 1);
}

TEST_F(DeviceNetwork, ARemoteCameraIsAddedByItsAddress) {
    // Behind a router no broadcast reaches it.
    NetworkNamespace::cable(siteA, "rt0", "10.9.0.1/24", siteC, "sw2", "10.9.0.2/24");
    siteA.call([] { std::ofstream("/proc/sys/net/ipv4/ip_forward") << 1; });
    siteC.ip("route add default via 10.9.0.1");
    host.ip("route add 10.9.0.0/24 via 10.1.0.2");
    auto& remote = Start(siteC, "sw2", "10.9.0.5", "C-1", "upstairs");
    MakeList();
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  nic0[10.1.0.1]", "  nic1[10.2.0.1]", "USB"));
    tree()->setCurrentItem(Item("nic0[10.1.0.1]"));
    Adder adder(*list);
    {
        const DialogWatch<QAddCameraWidget> dialog([this](QAddCameraWidget& add) {
            add.findChild<QLineEdit*>()->setText("10.9.0.99"); // nobody
            add.GetOKBtn()->click();
            EXPECT_EQ(messages.size(), 1u);
            KeepPicture(add, "network-add-remote.png");
            add.findChild<QLineEdit*>()->setText("10.9.0.5");
            add.GetOKBtn()->click();
        });
        ShowAddRemoteCamera(&adder, *list);
        EXPECT_EQ(dialog.Seen(), 1);
    }
    ASSERT_TRUE(tree()->currentItem());
    const long id = tree()->currentItem()->data(0, Qt::UserRole).toSize().height();
    EXPECT_EQ(tree()->currentItem()->text(0), "upstairs(C-1)");
    Round();
    EXPECT_TRUE(Item("upstairs (C-1)")) << testing::PrintToString(Tree());
    KeepPicture(*list, "network-remote.png");
    {
        const CCameraRef camera = CCameraRef::ById(id);
        ASSERT_TRUE(camera);
        EXPECT_EQ(camera->OpenCamera(), 0);
        EXPECT_EQ(camera->CloseCamera(), 0);
    }
    // Silent, it cuts rounds short and stays.
    vcam::Faults dead;
    dead.silent = true;
    remote.SetFaults(dead);
    Start(siteB, "sw1", "10.2.0.5", "B-1", "west");
    Round();
    EXPECT_TRUE(Item("upstairs (C-1)"));
    EXPECT_FALSE(Item("west(B-1)"));
    // Deleted, it stays away, and rounds are whole again.
    remote.SetFaults({});
    tree()->setCurrentItem(Item("upstairs (C-1)"));
    list->OnActionDeleteCam();
    Round();
    EXPECT_THAT(Tree(), ElementsAre("GigE", "  nic0[10.1.0.1]", "  nic1[10.2.0.1]", "    west(B-1)", "USB"));
}

} // namespace
} // namespace devices
