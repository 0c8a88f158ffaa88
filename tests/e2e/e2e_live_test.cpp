// Finding, connecting, live view, stopping, disconnecting.
#include "e2e/E2eFixture.h"

#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvMainWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QRenderWidget.h"

#include <QTabBar>
#include <QTreeWidget>

namespace e2e {
namespace {

TEST_F(E2e, StartsAndFindsCameras) {
    AddCamera("east");
    AddCamera("west");
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    EXPECT_TRUE(EventuallyGui([this] { return Item("east(E-1)") && Item("west(E-2)"); }));
    EXPECT_EQ(Gui([this] { return window->windowTitle(); }), "KOLT CAPTURE 1.0.0");
    EXPECT_EQ(Gui([this] { return Item("east(E-1)")->parent()->text(0); }), "nic0[10.1.0.1]");
    for (const int action : {QOrvToolBar::kConnect, QOrvToolBar::kStart, QOrvToolBar::kRecord})
        EXPECT_FALSE(ToolEnabled(action)) << action;
    Screenshot("start-cameras-found");
    // The strip is plain where the tabs end.
    const QRect strip = Gui([this] {
        const auto* const tabs = Central()->findChild<QTabBar*>();
        const QRect last = tabs->tabRect(tabs->count() - 1);
        return QRect(OnScreen(*tabs, last.topRight() + QPoint(2, 0)),
                     QSize(tabs->width() - last.right() - 4, tabs->height()));
    });
    ASSERT_GT(strip.width(), 20);
    EXPECT_TRUE(Eventually([&] {
        const QImage seen = desktop.Grab(strip);
        QImage plain(seen.size(), seen.format());
        plain.fill(seen.pixel(0, 0));
        return seen == plain;
    }));
    ClickItem("east(E-1)");
    EXPECT_TRUE(Eventually([this] { return ToolEnabled(QOrvToolBar::kConnect); }));
    EXPECT_FALSE(ToolEnabled(QOrvToolBar::kStart));
    Screenshot("start-camera-selected");
}

TEST_F(E2e, LiveViewFromDoubleClickToDisconnect) {
    auto& camera = AddCamera("east", [](vcam::Config& config) {
        config.model = vcam::Model::Colour;
        config.pixelFormat = 0x01080009; // BayerRG8
    });
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    EXPECT_TRUE(LogHas("east(E-1) connected."));
    EXPECT_TRUE(EventuallyGui([this] { return Item("east(E-1)")->font(0).bold(); }));
    EXPECT_TRUE(ToolEnabled(QOrvToolBar::kStart));
    EXPECT_FALSE(ToolEnabled(QOrvToolBar::kRecord));
    Screenshot("live-connected");

    ASSERT_NO_FATAL_FAILURE(StartLive());
    EXPECT_TRUE(camera.IsStreaming());
    EXPECT_TRUE(LogHas("east(E-1) started live view."));
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(camera));
    for (const int action : {QOrvToolBar::kConnect, QOrvToolBar::kStart, QOrvToolBar::kCapture,
                             QOrvToolBar::kRecord, QOrvToolBar::kZoomIn, QOrvToolBar::kFit})
        EXPECT_TRUE(ToolEnabled(action)) << action;
    EXPECT_TRUE(EventuallyGui([this] { return Render()->Preview()->IsRendering(); }));
    Screenshot("live-streaming");

    // The same button ends it, and the last picture stays.
    ClickTool(QOrvToolBar::kStart);
    EXPECT_TRUE(LogHas("east(E-1) stopped the live view."));
    EXPECT_TRUE(Eventually([&] { return !camera.IsStreaming(); }));
    EXPECT_TRUE(Eventually([this] { return !ToolEnabled(QOrvToolBar::kRecord); }));
    EXPECT_TRUE(ToolEnabled(QOrvToolBar::kCapture)) << "the last picture can be saved";
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(camera));
    Screenshot("live-stopped");

    ClickTool(QOrvToolBar::kConnect);
    EXPECT_TRUE(LogHas("east(E-1) disconnected."));
    EXPECT_TRUE(Eventually([&] { return !camera.IsControlled(); }));
    EXPECT_EQ(Gui([this] { return Central()->CurrentCameraID(); }), -1);
    EXPECT_TRUE(EventuallyGui([this] { return !Item("east(E-1)")->font(0).bold(); }));
    Screenshot("live-disconnected");
}

// The whole way through the title bar's menus.
TEST_F(E2e, LiveViewByTheMenus) {
    auto& camera = AddCamera("east");
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ClickItem(ItemOf(0));
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_CAMERA, ACTION_CONNECT));
    EXPECT_TRUE(Eventually([&] { return camera.IsControlled(); }));
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_CAMERA, ACTION_CONTINOUS_SHOT));
    EXPECT_TRUE(Eventually([&] { return camera.IsStreaming(); }));
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(camera));
    EXPECT_EQ(Gui([this] { return window->GetAction(ACTION_CONTINOUS_SHOT)->text(); }), "Stop Acquisition");
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_CAMERA, ACTION_CONTINOUS_SHOT));
    EXPECT_TRUE(Eventually([&] { return !camera.IsStreaming(); }));
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_CAMERA, ACTION_CONNECT));
    EXPECT_TRUE(Eventually([&] { return !camera.IsControlled(); }));
    EXPECT_TRUE(LogHas("east(E-1) disconnected."));
}

} // namespace
} // namespace e2e
