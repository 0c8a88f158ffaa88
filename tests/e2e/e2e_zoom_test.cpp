// Zoom, drag and the read-out of pixels, checked by what stands on the screen.
#include "e2e/E2eFixture.h"

#include "Common/QLocalCfg.h"
#include "UI/MainWindow/QOrvMainWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QRenderWidget.h"
#include "UI/MainWindow/StatusItems.h"

namespace e2e {
namespace {

class Zoom : public E2e {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(E2e::SetUp());
        camera = &AddCamera("east", [](vcam::Config& config) {
            config.model = vcam::Model::Colour;
            config.pixelFormat = 0x02180014; // RGB8
            config.frameRate = 15;
        });
        Gui([] { QLocalCfg::Instance()->SetStatusShowFlage(0x1FFF); });
        ASSERT_NO_FATAL_FAILURE(StartProgram());
        ASSERT_NO_FATAL_FAILURE(Connect());
        ASSERT_NO_FATAL_FAILURE(StartLive());
    }
    int Percent() const {
        return Gui([this] { return Render()->Preview()->Zoom().Percent().value_or(0); });
    }
    bool PercentBecomes(const std::function<bool(int)>& isSo) const {
        return Eventually([&] { return isSo(Percent()); });
    }
    // The picture's pixel at a place of the screen.
    QPoint PixelAt(QPoint screen) const {
        return Gui([&] {
            const QPreviewWidget& preview = *Render()->Preview();
            int x = -1;
            int y = -1;
            preview.GetPtLocateInRawVideo(screen - OnScreen(preview, {}), x, y);
            return QPoint(x, y);
        });
    }
    QPoint PatchPoint(const vcam::Patch& patch) const {
        return PicturePoint(patch.x + patch.width / 2.0, patch.y + patch.height / 2.0);
    }
    vcam::Patch Patch(const std::string& name) const {
        for (const vcam::Patch& patch : camera->Patches()) {
            if (patch.name == name)
                return patch;
        }
        ADD_FAILURE() << name;
        return {};
    }
    vcam::VirtualCamera* camera = nullptr;
};

TEST_F(Zoom, ByWheelAboutThePointer) {
    const int fit = Percent();
    EXPECT_GT(fit, 100) << "640 pixels in a window of about 1000";
    const QPoint at = PatchPoint(camera->Patches().front());
    desktop.Wheel(at, 2);
    EXPECT_TRUE(PercentBecomes([](int now) { return now == 200; })) << Percent();
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(*camera));
    // Larger than the window in both directions: what is under the pointer stays there.
    const QPoint pixel = PixelAt(at);
    desktop.Wheel(at, 3);
    EXPECT_TRUE(PercentBecomes([](int now) { return now == 350; })) << Percent();
    EXPECT_LE((PixelAt(at) - pixel).manhattanLength(), 3) << PixelAt(at).x() << "," << PixelAt(at).y();
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(*camera));
    EXPECT_TRUE(Eventually([&] { return StatusText(kStatusZoom) == "Zoom: 350%"; }));
    Screenshot("zoom-wheel-in");
    desktop.Wheel(at, -3);
    EXPECT_TRUE(PercentBecomes([](int now) { return now == 200; })) << Percent();
    desktop.Wheel(at, -4);
    EXPECT_TRUE(PercentBecomes([&](int now) { return now == fit; })) << "no smaller than the window";
    EXPECT_TRUE(Eventually([this] { return !ToolEnabled(QOrvToolBar::kZoomOut); }));
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(*camera));
    desktop.Wheel(at, 40);
    EXPECT_TRUE(PercentBecomes([&](int now) { return now == 1600; })) << Percent();
    EXPECT_TRUE(Eventually([this] { return !ToolEnabled(QOrvToolBar::kZoomIn); }));
    EXPECT_TRUE(EventuallyGui([this] { return !window->GetAction(ACTION_ZOOM_IN)->isEnabled(); }));
    Screenshot("zoom-most");
}

TEST_F(Zoom, ByButtonsAndMenu) {
    const int fit = Percent();
    ClickTool(QOrvToolBar::kZoomIn);
    EXPECT_TRUE(PercentBecomes([&](int now) { return now > fit; }));
    ClickTool(QOrvToolBar::kZoomIn);
    EXPECT_TRUE(PercentBecomes([&](int now) { return now == 200; })) << Percent();
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(*camera));
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_VIEW, ACTION_ZOOM_IN));
    EXPECT_TRUE(PercentBecomes([&](int now) { return now == 250; })) << Percent();
    ClickTool(QOrvToolBar::kZoomOut);
    EXPECT_TRUE(PercentBecomes([&](int now) { return now == 200; })) << Percent();
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_VIEW, ACTION_ZOOM_OUT));
    EXPECT_TRUE(PercentBecomes([&](int now) { return now == 150; })) << Percent();

    ClickTool(QOrvToolBar::kActualSize);
    EXPECT_TRUE(PercentBecomes([&](int now) { return now == fit; })) << "all of it has room: it fits";
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_VIEW, ACTION_ZOOM_IN));
    EXPECT_TRUE(PercentBecomes([&](int now) { return now != fit; }));
    ClickTool(QOrvToolBar::kFit);
    EXPECT_TRUE(PercentBecomes([&](int now) { return now == fit; }));
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(*camera));
    Screenshot("zoom-fit");
}

TEST_F(Zoom, ActualSizeOfALargePicture) {
    // A second camera whose picture is larger than the window.
    auto& large = AddCamera("large", [](vcam::Config& config) {
        config.sensorWidth = 1920;
        config.sensorHeight = 1080;
        config.frameRate = 5;
    });
    Refresh();
    ASSERT_TRUE(Eventually([this] { return HasItem("large(E-2)"); }));
    DoubleClickItem("large(E-2)");
    ASSERT_TRUE(Eventually([&] { return large.IsControlled(); }));
    ASSERT_NO_FATAL_FAILURE(StartLive());
    EXPECT_TRUE(PercentBecomes([](int now) { return now > 30 && now < 100; })) << Percent();
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(large));
    Screenshot("zoom-large-fit");
    ClickTool(QOrvToolBar::kActualSize);
    EXPECT_TRUE(PercentBecomes([](int now) { return now == 100; })) << Percent();
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(large));
    // One pixel of the picture is one of the screen.
    const QPoint centre = PreviewCentre();
    EXPECT_EQ(PixelAt(centre + QPoint(100, 50)) - PixelAt(centre), QPoint(100, 50));
    Screenshot("zoom-actual-size");
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_VIEW, ACTION_ZOOM_TO_FIT));
    EXPECT_TRUE(PercentBecomes([](int now) { return now < 100; }));
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_VIEW, ACTION_ZOOM_RESUME));
    EXPECT_TRUE(PercentBecomes([](int now) { return now == 100; }));
}

TEST_F(Zoom, DragMovesThePicture) {
    const QPoint centre = PreviewCentre();
    desktop.Wheel(centre, 7);
    EXPECT_TRUE(PercentBecomes([](int now) { return now == 450; })) << Percent();
    const QPoint to = centre + QPoint(160, -120);
    const QPoint pixel = PixelAt(centre);
    desktop.Drag(centre, to);
    // A hand's last steps below 20 pixels don't count, so the picture may lag by that much.
    EXPECT_TRUE(Eventually([&] { return (PixelAt(to) - pixel).manhattanLength() <= 2 * 20 * 100 / 450 + 2; }))
        << "the picture goes with the pointer";
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(*camera));
    Screenshot("zoom-dragged");
    // To the edge and no further.
    const auto source = [this] { return Gui([this] { return Render()->Preview()->Zoom().Source(); }); };
    // The steps of one drag may still be under way when the next is made: what counts is the place before it.
    tagVRRectF before = source();
    for (int i = 0; i < 12 && (before.left > 0 || before.top > 0); ++i) {
        const QPoint from = centre - QPoint(300 - 20 * i, 200);
        desktop.Drag(from, from + QPoint(400, 400));
        EXPECT_TRUE(Eventually([&] { return source().left != before.left || source().top != before.top; }));
        before = source();
    }
    EXPECT_EQ(source().left, 0);
    EXPECT_EQ(source().top, 0);
    // The corner of the picture is red.
    EXPECT_TRUE(Eventually([this] {
        const QRgb corner = desktop.Pixel(PicturePoint(8, 8));
        return qRed(corner) > 180 && qGreen(corner) < 80 && qBlue(corner) < 80;
    }));
    Screenshot("zoom-dragged-to-the-corner");
}

TEST_F(Zoom, PixelsAreReadOut) {
    for (const vcam::Patch& patch : camera->Patches()) {
        const QPoint at = PatchPoint(patch);
        desktop.Move(at + QPoint(3, 0));
        desktop.Move(at);
        const auto near = [](int a, int b) { return std::abs(a - b) <= 2; };
        EXPECT_TRUE(Eventually([&] {
            int x = -9;
            int y = -9;
            int r = -9;
            int g = -9;
            int b = -9;
            return std::sscanf(StatusText(kStatusLocation).toUtf8().constData(), "Locate: %d, %d", &x, &y) ==
                       2 &&
                   std::sscanf(StatusText(kStatusRgb).toUtf8().constData(), "RGB: %d %d %d", &r, &g, &b) ==
                       3 &&
                   near(x, static_cast<int>(patch.x + patch.width / 2)) &&
                   near(y, static_cast<int>(patch.y + patch.height / 2)) && near(r, patch.red) &&
                   near(g, patch.green) && near(b, patch.blue);
        })) << patch.name
            << ": " << StatusText(kStatusLocation).toStdString() << " "
            << StatusText(kStatusRgb).toStdString();
        int luma = -9;
        EXPECT_TRUE(Eventually([&] {
            return std::sscanf(StatusText(kStatusYuv).toUtf8().constData(), "YUV: %d", &luma) == 1 &&
                   near(luma, static_cast<int>(0.299 * patch.red + 0.587 * patch.green + 0.114 * patch.blue));
        })) << luma;
    }
    Screenshot("pixel-read-out");
    // Beside the picture, but in the window.
    desktop.Move(PicturePoint(-20, 240));
    EXPECT_TRUE(Eventually([this] { return StatusText(kStatusLocation) == "Locate: --, --"; }))
        << StatusText(kStatusLocation).toStdString();
}

} // namespace
} // namespace e2e
