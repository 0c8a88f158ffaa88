// Cameras that change, go, can't be reached or can't be shown.
#include "e2e/E2eFixture.h"

#include "Device/FeatureRegisters.h"
#include "UI/Controls/QHintAdjustDlg.h"
#include "UI/MainWindow/QForceIPWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QRenderWidget.h"
#include "UI/MainWindow/StatusItems.h"

#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

namespace e2e {
namespace {

using testing::HasSubstr;

class Trouble : public E2e {
protected:
    long Current() const {
        return Gui([this] { return Central()->CurrentCameraID(); });
    }
    const kolt::test::NetworkNamespace& site = World::instance->site;
};

TEST_F(Trouble, TheSecondCameraClosesTheFirst) {
    auto& east = AddCamera("east");
    auto& west = AddCamera("west");
    auto& taken = AddCamera("taken");
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect(0));
    ASSERT_NO_FATAL_FAILURE(StartLive());
    const long first = Current();
    // Of the open one a double click does nothing.
    const auto before = Log();
    DoubleClickItem(ItemOf(0));
    DoubleClickItem(ItemOf(1));
    EXPECT_TRUE(LogHas("west(E-2) connected."));
    auto after = Log();
    after.erase(after.begin(), after.begin() + static_cast<long>(before.size()));
    after.erase(std::remove(after.begin(), after.end(), "The GigE driver is not enabled or uninstalled."),
                after.end());
    EXPECT_THAT(after, testing::ElementsAre("east(E-1) stopped the live view.", "east(E-1) disconnected.",
                                            "west(E-2) connected."));
    EXPECT_TRUE(Eventually([&] { return !east.IsControlled() && !east.IsStreaming(); }));
    EXPECT_TRUE(west.IsControlled());
    EXPECT_NE(Current(), first);
    ASSERT_NO_FATAL_FAILURE(StartLive());
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(west));
    Screenshot("second-camera");

    // One that can't be opened: the one before is closed all the same.
    vcam::Faults faults;
    faults.denyControl = true;
    taken.SetFaults(faults);
    DoubleClickItem(ItemOf(2));
    EXPECT_THAT(WaitForMessage(), HasSubstr("Connecting camera failed."));
    Screenshot("camera-taken");
    ASSERT_NO_FATAL_FAILURE(AnswerQuestion(true));
    EXPECT_EQ(Current(), -1);
    EXPECT_TRUE(Eventually([&] { return !west.IsControlled(); }));
}

TEST_F(Trouble, TheCableIsPulledWhileGrabbing) {
    auto& camera = AddCamera("east");
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_NO_FATAL_FAILURE(StartLive());
    const long lost = Current();
    site.ip("link set sw0 down");
    EXPECT_TRUE(LogHas("\"east(E-1)\" is offline."));
    EXPECT_TRUE(Eventually([this] { return !HasItem("east(E-1)"); }));
    EXPECT_EQ(Current(), -1);
    EXPECT_TRUE(EventuallyGui([this] { return !Render()->Preview()->IsRendering(); }));
    EXPECT_TRUE(Eventually([this] { return StatusText(kStatusAcquisitionRate).isEmpty(); }))
        << "an empty row";
    Screenshot("cable-pulled");
    // It comes back as a new camera and can be used as before.
    site.ip("link set sw0 up");
    ASSERT_TRUE(Eventually([this] {
        Refresh();
        return HasItem("east(E-1)");
    }));
    ASSERT_NO_FATAL_FAILURE(Connect());
    EXPECT_GT(Current(), lost);
    ASSERT_NO_FATAL_FAILURE(StartLive());
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(camera));
    Screenshot("cable-back");
}

TEST_F(Trouble, TheCameraDiesWhileRecording) {
    auto& camera = AddCamera("east");
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_NO_FATAL_FAILURE(StartLive());
    const QString path = folder.filePath("video.raw");
    ClickTool(QOrvToolBar::kRecord);
    ASSERT_NO_FATAL_FAILURE(AnswerFileDialog("Save Record", path));
    EXPECT_TRUE(Eventually([&] { return QFileInfo(path).size() > 20 * 640 * 480; }));
    camera.Stop();
    ASSERT_NO_FATAL_FAILURE(ExpectNotice("Video files saved.")) << "what was recorded is saved";
    EXPECT_TRUE(LogHas("\"east(E-1)\" is offline."));
    EXPECT_TRUE(Eventually([this] { return !HasItem("east(E-1)"); }));
    EXPECT_EQ(QFileInfo(path).size() % (640 * 480), 0);
    EXPECT_TRUE(Eventually([this] { return !ToolEnabled(QOrvToolBar::kRecord); }));
    Screenshot("camera-died");
}

TEST_F(Trouble, AnUnreachableCameraGetsAnAddress) {
    auto& camera = AddCamera("far", [](vcam::Config& config) {
        config.address = "172.30.0.5";
        config.mask = "255.255.0.0";
    });
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    const QString unreachable = "far(E-1)(Unreachable)";
    ASSERT_TRUE(Eventually([&] { return HasItem(unreachable); }));
    DoubleClickItem(unreachable);
    const auto* dialog = WaitForDialog<QForceIPWidget>();
    ASSERT_TRUE(dialog);
    Screenshot("unreachable-camera");
    ClickOn([dialog]() -> QWidget* { return dialog->GetCancelBtn(); });
    ASSERT_TRUE(NoDialog());
    EXPECT_EQ(Current(), -1);
    EXPECT_FALSE(camera.IsControlled());

    DoubleClickItem(unreachable);
    dialog = WaitForDialog<QForceIPWidget>();
    ASSERT_TRUE(dialog);
    ASSERT_NO_FATAL_FAILURE(ClickInto([dialog]() -> QWidget* { return dialog->findChild<QLineEdit*>(); }));
    // Keys go to the window that the window manager has made the active one.
    ASSERT_TRUE(EventuallyGui([dialog] { return dialog->isActiveWindow(); }));
    desktop.Tap(kolt::test::Desktop::kControl, 'a');
    desktop.Type("10.1.0.77");
    EXPECT_TRUE(EventuallyGui([dialog] { return dialog->findChild<QLineEdit*>()->text() == "10.1.0.77"; }));
    ClickOn([dialog]() -> QWidget* { return dialog->GetOKBtn(); });
    ASSERT_TRUE(NoDialog());
    ASSERT_TRUE(Eventually([this] {
        Refresh();
        return HasItem(ItemOf(0));
    }));
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_NO_FATAL_FAILURE(StartLive());
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(camera));
    Screenshot("unreachable-camera-reached");
}

TEST_F(Trouble, AJpegCameraIsRefused) {
    auto& camera = AddCamera("east");
    camera.WriteRegister(vcam::feature::kImageCompressionMode, 1);
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    ClickTool(QOrvToolBar::kStart);
    const std::string message = WaitForMessage();
    EXPECT_THAT(message, HasSubstr("Failed to start live view."));
    EXPECT_THAT(message, HasSubstr("No support image format."));
    Screenshot("jpeg-refused");
    ASSERT_NO_FATAL_FAILURE(AnswerQuestion(true));
    EXPECT_TRUE(LogHas("east(E-1) failed to start live view. (No support image format.)"));
    EXPECT_FALSE(camera.IsStreaming());
    EXPECT_TRUE(camera.IsControlled()) << "it stays connected";
    EXPECT_TRUE(ToolEnabled(QOrvToolBar::kStart));
}

class Loss : public Trouble {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(Trouble::SetUp());
        camera = &AddCamera("east");
        ASSERT_NO_FATAL_FAILURE(StartProgram());
        ASSERT_NO_FATAL_FAILURE(Connect());
        ASSERT_NO_FATAL_FAILURE(StartLive());
        Lose();
        ASSERT_TRUE(HintComes());
    }
    void Lose() {
        vcam::Faults faults;
        faults.lossPerMille = 400;
        faults.losePayloadOnly = true;
        faults.resendsLoseToo = true;
        faults.ignoreResend = true;
        camera->SetFaults(faults);
    }
    QHintAdjustDlg* Hint() const { return Central()->AdjustHint(); }
    // In the corner of the central window.
    bool HintComes() const {
        return EventuallyGui([this] {
            if (!Hint()->isVisible())
                return false;
            const QPoint corner = Central()->mapToGlobal(QPoint(Central()->width(), Central()->height()));
            const QPoint place = corner - QPoint(Hint()->width(), Hint()->height() + 20);
            if (desktop.PositionOf(static_cast<uint32_t>(Hint()->winId())) != place)
                return false;
            if (Hint()->pos() != place)
                Hint()->move(place); // so that Qt knows it, too
            return Hint()->pos() == place;
        });
    }
    // As the status bar counts them.
    int LostShown() const { return StatusText(kStatusPacketsLost).remove("LostPacket: ").toInt(); }
    vcam::VirtualCamera* camera = nullptr;
};

TEST_F(Loss, TheHintCanBeIgnored) {
    Screenshot("loss-hint");
    ClickOn([this]() -> QWidget* { return Hint()->GetCancelBtn(); });
    EXPECT_TRUE(EventuallyGui([this] { return !Hint()->isVisible(); }));
    EXPECT_TRUE(camera->IsStreaming());
    const int lost = LostShown();
    EXPECT_TRUE(Eventually([&] { return LostShown() > lost + 300; })) << "the loss goes on";
    EXPECT_FALSE(Gui([this] { return Hint()->isVisible(); })) << "and isn't told again";
    // With the next connection it is.
    ClickTool(QOrvToolBar::kConnect);
    EXPECT_TRUE(Eventually([this] { return !camera->IsControlled(); }));
    camera->SetFaults({});
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_NO_FATAL_FAILURE(StartLive());
    Lose();
    EXPECT_TRUE(HintComes());
}

TEST_F(Loss, TheHintLeadsToTheOptions) {
    ClickOn([this]() -> QWidget* { return Hint()->GetOKBtn(); });
    EXPECT_TRUE(Eventually([this] { return !camera->IsStreaming(); })) << "the stream is stopped";
    // There is no options window yet.
    EXPECT_THAT(WaitForMessage(), HasSubstr("Failed to open the Option window."));
    Screenshot("loss-to-adjust");
    ASSERT_NO_FATAL_FAILURE(AnswerQuestion(true));
    EXPECT_TRUE(camera->IsControlled());
    EXPECT_TRUE(LogHas("east(E-1) stopped the live view."));
}

} // namespace
} // namespace e2e
