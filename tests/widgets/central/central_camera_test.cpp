// Opening, closing, live view and lost cameras.
#include "CentralFixture.h"

#include "UI/Controls/QHintAdjustDlg.h"
#include "UI/MainWindow/QForceIPWidget.h"
#include "UI/MainWindow/QPreviewWidget.h"

#include <QCloseEvent>
#include <thread>

namespace central {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace reg = support::camera_register;

constexpr uint32_t kAccessDenied = 0x80000203;
// The camera core says so at each connection.
const char kNoDriver[] = "2 The GigE driver is not enabled or uninstalled.";

// --- connecting

TEST_F(Central, ConnectWithoutASelectedCameraDoesNothing) {
    Make(1);
    Do(21);
    window->DeviceList()->findChild<QTreeWidget*>("deviceTree")->setCurrentItem(nullptr);
    Do(21);
    EXPECT_EQ(window->CurrentCameraID(), -1);
    EXPECT_EQ(doubles.CountOf("OV_CC_OpenDevice"), 0);
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(Central, ConnectOpensTheSelectedCameraAndTellsTheViewsInOrder) {
    ScriptedParts script;
    Make(2, script.Make());
    Select(1);
    QSignalSpy menu(window, &QOrvCentralWindow::SigUpdateMenuBarActions);
    QSignalSpy engine(window, &QOrvCentralWindow::SigVREngineChanged);
    Do(21);
    EXPECT_EQ(window->CurrentCameraID(), Id(1));
    EXPECT_EQ(QCameraContainer::Instance()->GetCurrentCameraID(), Id(1));
    EXPECT_THAT(Log(), ElementsAre(kNoDriver, "0 " + Name(1) + " connected."));
    const std::string id = std::to_string(Id(1));
    EXPECT_THAT(script.Told(), ElementsAre("editor open " + id, "embedded open " + id));
    ASSERT_EQ(menu.count(), 1);
    EXPECT_EQ(menu[0], QVariantList({5, static_cast<int>(Id(1))}));
    ASSERT_EQ(engine.count(), 1) << "the menu's rules run again with the engine";
    EXPECT_EQ(engine[0][0].toUInt(), 0U);
    EXPECT_EQ(window->RenderArea()->Preview()->GetCameraID(), Id(1));
    EXPECT_TRUE(window->DeviceList()->GetCameraItem(Id(1))->font(0).bold());
    EXPECT_TRUE(Enabled(21));
    EXPECT_TRUE(Enabled(22));
    EXPECT_FALSE(Enabled(0));
    EXPECT_FALSE(Enabled(23));
    Do(21);
    EXPECT_EQ(window->CurrentCameraID(), -1);
    EXPECT_EQ(QCameraContainer::Instance()->GetCurrentCameraID(), -1);
    EXPECT_THAT(Log(), ElementsAre("0 " + Name(1) + " disconnected."));
    EXPECT_THAT(script.Told(), ElementsAre("editor close " + id, "embedded close " + id));
    EXPECT_FALSE(window->DeviceList()->GetCameraItem(Id(1))->font(0).bold());
    EXPECT_TRUE(Enabled(21));
    EXPECT_FALSE(Enabled(22));
}

TEST_F(Central, TheConnectButtonRefusesASecondClickFor200Ms) {
    Make(1);
    Select(1);
    QImageButton* const connect = window->ToolBar()->button(21);
    QTest::mouseClick(connect, Qt::LeftButton);
    QTest::mouseClick(connect, Qt::LeftButton);
    EXPECT_EQ(window->CurrentCameraID(), Id(1)) << "the second click would have disconnected";
    EXPECT_TRUE(devices::WaitFor([&] {
        QTest::mouseClick(connect, Qt::LeftButton);
        return window->CurrentCameraID() == -1;
    }));
}

TEST_F(Central, OpeningTheOpenCameraDoesNothing) {
    Make(1);
    window->OnOpenCamera(Id(1));
    Log();
    doubles.ForgetCalls();
    window->OnOpenCamera(Id(1));
    window->OnOpenCamera(-1);
    window->OnOpenCamera(999999);
    EXPECT_EQ(window->CurrentCameraID(), -1) << "an unknown camera leaves none open";
    EXPECT_EQ(doubles.CountOf("OV_CC_OpenDevice"), 0);
}

TEST_F(Central, ASecondCameraClosesTheFirst) {
    Make(2);
    Live();
    window->OnOpenCamera(Id(2));
    EXPECT_EQ(window->CurrentCameraID(), Id(2));
    EXPECT_FALSE(Camera(Id(1)).IsConnect());
    EXPECT_TRUE(Camera(Id(2)).IsConnect());
    EXPECT_THAT(Log(),
                ElementsAre("0 " + Name(1) + " stopped the live view.", "0 " + Name(1) + " disconnected.",
                            kNoDriver, "0 " + Name(2) + " connected."));
}

TEST_F(Central, ASecondCameraThatRefusesLeavesNoneOpen) {
    Make(2);
    window->OnOpenCamera(Id(1));
    Log();
    doubles.SetResult("OV_CC_OpenDevice", kAccessDenied);
    window->OnOpenCamera(Id(2));
    EXPECT_EQ(window->CurrentCameraID(), -1);
    EXPECT_FALSE(Camera(Id(1)).IsConnect());
    const std::string reason =
        QFunction::GenerateCameraOperateError(QFunction::GenerateORVErrCode(kAccessDenied)).toStdString();
    EXPECT_THAT(Messages(), ElementsAre("Connecting camera failed.|" + reason + "|1"));
    EXPECT_THAT(Log(), ElementsAre("0 " + Name(1) + " disconnected.",
                                   "1 Connecting " + Name(2) + " failed.(" + reason + ")"));
}

TEST_F(Central, AnUnreachableCameraBringsTheAddressDialogAndNoMessage) {
    Make(0);
    devices::Gige foreign;
    foreign.ip = 0xC0A80114;
    doubles.SetDevices({devices::GigeRecord(foreign)});
    window->DeviceList()->OnBtnRefresh();
    ASSERT_TRUE(devices::WaitFor([&] { return window->DeviceList()->GetCameraItem(Id(1)) != nullptr; }));
    devices::DialogWatch<QForceIPWidget> dialog([](QForceIPWidget& it) { it.reject(); });
    window->OnOpenCamera(Id(1));
    EXPECT_EQ(dialog.Seen(), 1);
    EXPECT_EQ(window->CurrentCameraID(), -1);
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_EQ(doubles.CountOf("OV_CC_OpenDevice"), 0);
}

struct SpeedCase {
    const char* what;
    int speed; // -1: no such feature
    bool hint;
};

class LinkSpeed : public Central, public testing::WithParamInterface<SpeedCase> {};

TEST_P(LinkSpeed, BelowAGigabitGivesAHint) {
    if (GetParam().speed < 0)
        doubles.Reset(support::CameraXml({"DeviceLinkSpeed"}));
    support::FillCameraRegisters(doubles.Port());
    if (GetParam().speed >= 0)
        doubles.Port().StoreInteger(reg::DeviceLinkSpeed, 4, GetParam().speed,
                                    support::MemoryPort::Order::Little);
    Make(1);
    window->OnOpenCamera(Id(1));
    EXPECT_EQ(window->CurrentCameraID(), Id(1)) << "the camera is connected all the same";
    const std::vector<std::string> hint = {
        "The network speed is less than 1.0 Gbps.\nPlease check the network connection.||2"};
    EXPECT_EQ(Messages(), GetParam().hint ? hint : std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Speeds, LinkSpeed,
                         testing::Values(SpeedCase{"Gigabit", 1000, false}, SpeedCase{"JustBelow", 999, true},
                                         SpeedCase{"Fast", 100, true}, SpeedCase{"Zero", 0, true},
                                         SpeedCase{"NotTold", -1, false}),
                         [](const auto& row) { return std::string(row.param.what); });

TEST_F(Central, ACloseThatFailsClosesTheViewsAllTheSame) {
    ScriptedParts script;
    Make(1, script.Make());
    window->OnOpenCamera(Id(1));
    Log();
    script.Told();
    ASSERT_EQ(Camera(Id(1)).CloseCamera(), 0); // behind the window's back: its own close finds no handle
    window->OnCloseCamera(Id(1));
    const std::string reason = QFunction::GenerateCameraOperateError(-4).toStdString();
    EXPECT_THAT(Log(), ElementsAre("1 Disconnecting " + Name(1) + " failed: " + reason));
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_EQ(window->CurrentCameraID(), -1);
    EXPECT_EQ(script.Told().size(), 2U) << "both views were told";
}

TEST_F(Central, ClosingACameraThatHasGoneDoesNothing) {
    Make(1);
    window->OnOpenCamera(Id(1));
    Log();
    window->OnCloseCamera(999999);
    EXPECT_EQ(window->CurrentCameraID(), Id(1));
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(Central, ClosingTheWindowClosesTheCamera) {
    Make(1);
    Live();
    ASSERT_TRUE(window->close());
    EXPECT_EQ(window->CurrentCameraID(), -1);
    EXPECT_FALSE(Camera(Id(1)).IsConnect());
    EXPECT_FALSE(window->DeviceList()->IsDetecting());
    window->DeviceList()->StartDevDetectThread();
    EXPECT_FALSE(window->DeviceList()->IsDetecting()) << "no round outlives the window";
}

TEST_F(Central, AWindowThatIsDestroyedClosesTheCamera) {
    Make(1);
    Live();
    frame.reset();
    EXPECT_FALSE(Camera(Id(1)).IsConnect());
}

// --- live view

TEST_F(Central, StartBringsTheCameraUpToDateWithTheChoices) {
    ScriptedParts script;
    Make(1, script.Make());
    Do(9);
    Do(20);
    window->OnOpenCamera(Id(1));
    Log();
    script.Told();
    QSignalSpy mode(window, &QOrvCentralWindow::SigDisplayModeChanged);
    QSignalSpy marks(window, &QOrvCentralWindow::SigUpdateMenuActions);
    Do(22);
    QCamera& camera = Camera(Id(1));
    EXPECT_TRUE(camera.IsShotting());
    EXPECT_EQ(camera.GetConfigRate(), 60);
    EXPECT_TRUE(camera.IsGDIRender());
    ASSERT_EQ(mode.count(), 1);
    EXPECT_EQ(mode[0][0].toInt(), 9);
    std::vector<int> told;
    for (const auto& call : marks)
        told.push_back(call[0].toInt());
    EXPECT_THAT(told, ElementsAre(9, 11, 18, 2)) << "display rate, both render modes, engine";
    EXPECT_THAT(Log(), ElementsAre("0 " + Name(1) + " started live view."));
    EXPECT_THAT(script.Told(), ElementsAre("editor start"));
    EXPECT_EQ(Title().toStdString(), Name(1));
    EXPECT_EQ(frame->focusWidget(), window->RenderArea());
    for (const int action : {0, 2, 3, 4, 5, 21, 22, 23})
        EXPECT_TRUE(Enabled(action)) << action;
    Do(22);
    EXPECT_FALSE(camera.IsShotting());
    EXPECT_THAT(Log(), ElementsAre("0 " + Name(1) + " stopped the live view."));
    EXPECT_THAT(script.Told(), ElementsAre("editor stop"));
    EXPECT_FALSE(Enabled(23));
}

TEST_F(Central, AJpegCameraConnectsAndRefusesLiveView) {
    doubles.Port().StoreInteger(reg::ImageCompressionMode, 4, 1, support::MemoryPort::Order::Little);
    Make(1);
    window->OnOpenCamera(Id(1));
    ASSERT_EQ(window->CurrentCameraID(), Id(1));
    Log();
    Do(22);
    EXPECT_FALSE(Camera(Id(1)).IsShotting());
    EXPECT_EQ(Camera(Id(1)).GetCameraState(), 1);
    EXPECT_THAT(Messages(), ElementsAre("Failed to start live view.|No support image format.|1"));
    EXPECT_THAT(Log(),
                ElementsAre("1 " + Name(1) + " failed to start live view. (No support image format.)"));
    EXPECT_EQ(doubles.CountOf("OV_CC_StartGrabbing"), 0);
}

TEST_F(Central, AStartThatFailsStopsTheRenderArea) {
    ScriptedParts script;
    Make(1, script.Make());
    window->OnOpenCamera(Id(1));
    Log();
    script.Told();
    doubles.SetResult("OV_CC_StartGrabbing", kAccessDenied);
    Do(22);
    const std::string reason =
        QFunction::GenerateCameraOperateError(QFunction::GenerateORVErrCode(kAccessDenied)).toStdString();
    EXPECT_THAT(Messages(), ElementsAre("Failed to start live view.|" + reason + "|1"));
    EXPECT_THAT(Log(), ElementsAre("1 " + Name(1) + " failed to start live view. (" + reason + ")"));
    EXPECT_FALSE(window->RenderArea()->Preview()->IsRendering());
    EXPECT_EQ(Title(), QString());
    EXPECT_THAT(script.Told(), IsEmpty());
    EXPECT_EQ(Camera(Id(1)).GetCameraState(), 1);
}

TEST_F(Central, AStopThatFailsIsALineInTheLogOnly) {
    Make(1);
    Live();
    QSignalSpy menu(window, &QOrvCentralWindow::SigUpdateMenuBarActions);
    doubles.SetResult("OV_CC_StopGrabbing", kAccessDenied);
    Do(22);
    EXPECT_THAT(Log(), ElementsAre("1 " + Name(1) + " failed to stop the live view. (" + Name(1) + ")"));
    EXPECT_THAT(Messages(), IsEmpty());
    EXPECT_EQ(menu.count(), 0) << "the tool state stays";
    doubles.SetResult("OV_CC_StopGrabbing", 0);
}

using CentralDeathTest = Central;

TEST_F(CentralDeathTest, LiveViewWithoutACameraIsAnAssertion) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            Make(0);
            window->OnToolBarBtnClicked(22);
        },
        "m_lCurCameraID >= 0");
}

TEST_F(Central, TheSpareTimersSlotStopsTheLiveView) {
    Make(1);
    Live();
    window->OnSingleStopRander();
    EXPECT_FALSE(Camera(Id(1)).IsShotting());
    window->OnAcquisitionModeChanged(); // nothing follows
    EXPECT_EQ(window->CurrentCameraID(), Id(1));
}

// --- lost cameras

TEST_F(Central, ALostCameraIsClosedToldAndTakenOut) {
    Make(2);
    Live();
    const std::string name = Name(1);
    const long id = Id(1);
    doubles.Disconnect();
    ASSERT_TRUE(devices::WaitFor([&] { return window->CurrentCameraID() == -1; }));
    EXPECT_THAT(Log(), ElementsAre("0 " + name + " stopped the live view.", "0 " + name + " disconnected.",
                                   "1 \"" + name + "\" is offline."));
    EXPECT_EQ(window->DeviceList()->GetCameraItem(id), nullptr);
    EXPECT_EQ(QCameraContainer::Instance()->GetCamera(id), nullptr);
    EXPECT_EQ(Title(), QString());
    window->DeviceList()->OnBtnRefresh();
    ASSERT_TRUE(devices::WaitFor([&] { return QCameraContainer::Instance()->GetTotalCameraNum() == 2; }));
    EXPECT_EQ(QCameraContainer::Instance()->GetCamera(id), nullptr) << "the id isn't used again";
}

TEST_F(Central, AnotherCameraThatIsLostGoesWithoutALine) {
    Make(2);
    window->OnOpenCamera(Id(1));
    Log();
    std::thread([&] { QOrvCentralWindow::ORVCamDisconnectCallBack(window, Id(2)); }).join();
    ASSERT_TRUE(devices::WaitFor([&] { return window->DeviceList()->GetCameraItem(Id(2)) == nullptr; }));
    EXPECT_EQ(window->CurrentCameraID(), Id(1));
    EXPECT_THAT(Log(), IsEmpty());
    QOrvCentralWindow::ORVCamDisconnectCallBack(nullptr, Id(1)); // nobody to tell
    window->OnCameraDisconnect(Id(2));                           // gone already
    EXPECT_EQ(window->CurrentCameraID(), Id(1));
}

TEST_F(Central, ALostCameraClosesTheToolPanel) {
    ScriptedParts script;
    Make(1, script.Make());
    window->OnOpenCamera(Id(1));
    script.onPanelExec = [&] { script.panel->hide(); };
    Do(29);
    script.Told();
    window->OnCameraDisconnect(Id(1));
    EXPECT_EQ(script.panel, nullptr);
}

// --- packet loss

TEST_F(Central, TheLossHintStandsInTheCornerOnce) {
    Make(1);
    Live();
    QSignalSpy shown(window, &QOrvCentralWindow::SigAdjustShowMsg);
    window->OnLossPacketSerious();
    QHintAdjustDlg* const hint = window->AdjustHint();
    ASSERT_TRUE(hint->isVisible());
    EXPECT_FALSE(hint->isModal());
    const QPoint corner = window->mapToGlobal(QPoint(window->width(), window->height()));
    EXPECT_EQ(hint->frameGeometry().right() + 1, corner.x());
    EXPECT_EQ(hint->frameGeometry().bottom() + 1, corner.y() - 20);
    window->OnLossPacketSerious();
    EXPECT_EQ(shown.count(), 1);
    ASSERT_EQ(shown[0], QVariantList({"Hint", "The packet loss is too much.Please adjust the bandwidth."}));
    window->OnCloseCamera(Id(1));
    EXPECT_FALSE(hint->isVisible()) << "it speaks of a camera that is closed";
}

TEST_F(Central, IgnoreHoldsUntilTheNextConnection) {
    Make(1);
    Live();
    QSignalSpy shown(window, &QOrvCentralWindow::SigAdjustShowMsg);
    window->OnSigAdjustMsgBtn(false);
    window->OnLossPacketSerious();
    EXPECT_EQ(shown.count(), 0);
    EXPECT_TRUE(Camera(Id(1)).IsShotting());
    window->OnCloseCamera(Id(1));
    window->OnOpenCamera(Id(1));
    window->OnLossPacketSerious();
    EXPECT_EQ(shown.count(), 1);
}

TEST_F(Central, ToAdjustStopsTheStreamAndOpensTheNetworkOptions) {
    ScriptedParts script;
    Make(1, script.Make());
    Live();
    script.Told();
    QSignalSpy shown(window, &QOrvCentralWindow::SigAdjustShowMsg);
    window->OnLossPacketSerious();
    script.onOptions = [this] { EXPECT_FALSE(window->AdjustHint()->isVisible()) << "not over the options"; };
    window->OnSigAdjustMsgBtn(true);
    EXPECT_FALSE(Camera(Id(1)).IsShotting());
    EXPECT_THAT(script.Told(), ElementsAre("editor stop", "options"));
    EXPECT_TRUE(script.lastOptions.networkPage);
    window->OnLossPacketSerious();
    EXPECT_EQ(shown.count(), 2) << "the next loss is told again";
}

} // namespace
} // namespace central
