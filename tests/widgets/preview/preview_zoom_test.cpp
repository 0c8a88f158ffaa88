#include "UI/MainWindow/CPreviewZoom.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr double kNear = 2e-4; // fractions are floats

CPreviewZoom Zoom(int windowWidth, int windowHeight, int rawWidth, int rawHeight) {
    CPreviewZoom zoom;
    zoom.SetWindow(windowWidth, windowHeight);
    zoom.SetRaw(rawWidth, rawHeight);
    return zoom;
}

void ExpectRect(const tagVRRectF& r, double top, double bottom, double left, double right) {
    EXPECT_NEAR(r.top, top, kNear);
    EXPECT_NEAR(r.bottom, bottom, kNear);
    EXPECT_NEAR(r.left, left, kNear);
    EXPECT_NEAR(r.right, right, kNear);
}

// Picture pixel under a window pixel, from the rectangles alone.
double PictureX(const CPreviewZoom& z, double x, double window) {
    const auto& s = z.Source();
    const auto& d = z.Destination();
    return s.left + (x / window - d.left) / (d.right - d.left) * (s.right - s.left);
}

TEST(PreviewZoomTable, IsTheStatedOne) {
    const auto& t = CPreviewZoom::Table();
    ASSERT_EQ(t.size(), 48U);
    EXPECT_FLOAT_EQ(t[0], 0.08F);
    EXPECT_FLOAT_EQ(t[2], 0.2F);
    EXPECT_FLOAT_EQ(t[16], 0.95F);
    EXPECT_FLOAT_EQ(t[17], 1.0F);
    EXPECT_FLOAT_EQ(t[18], 1.5F);
    EXPECT_FLOAT_EQ(t[47], 16.0F);
    for (size_t i = 1; i < t.size(); ++i)
        EXPECT_LT(t[i - 1], t[i]);
}

struct FitCase {
    int windowWidth, windowHeight, rawWidth, rawHeight;
    double top, bottom, left, right;
    int scaledWidth, scaledHeight, index, percent;
};

class PreviewFit : public testing::TestWithParam<FitCase> {};

TEST_P(PreviewFit, ShowsTheWholePictureAsLargeAsPossible) {
    const FitCase& c = GetParam();
    CPreviewZoom z;
    z.SetWindow(c.windowWidth, c.windowHeight);
    const _ZOOM_OUTCOME_ outcome = z.SetRaw(c.rawWidth, c.rawHeight);
    EXPECT_TRUE(outcome.setDisplayRect);
    ASSERT_TRUE(outcome.zoomState);
    EXPECT_TRUE(outcome.zoomState->zoomIn);
    EXPECT_FALSE(outcome.zoomState->zoomOut);
    ExpectRect(z.Source(), 0, 1, 0, 1);
    ExpectRect(z.Destination(), c.top, c.bottom, c.left, c.right);
    EXPECT_NEAR(z.Scaled().x, c.scaledWidth, 1);
    EXPECT_NEAR(z.Scaled().y, c.scaledHeight, 1);
    EXPECT_EQ(z.Index(), c.index);
    EXPECT_NEAR(z.Percent().value_or(-1), c.percent, 1);
    EXPECT_TRUE(z.IsFit());
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, PreviewFit,
    testing::Values(FitCase{1000, 700, 1000, 700, 0, 1, 0, 1, 1000, 700, 17, 100},
                    FitCase{1000, 700, 2000, 1000, 1 / 7.0, 6 / 7.0, 0, 1, 1000, 500, 7, 50},
                    FitCase{1000, 700, 1000, 1400, 0, 1, 0.25, 0.75, 500, 700, 7, 50},
                    FitCase{1000, 700, 100, 70, 0, 1, 0, 1, 1000, 700, 35, 1000},
                    FitCase{100, 100, 10000, 100, 0.495, 0.505, 0, 1, 100, 1, 0, 1},   // below the table
                    FitCase{1640, 1640, 100, 100, 0, 1, 0, 1, 1640, 1640, 47, 1640})); // above it

TEST(PreviewZoom, NothingHappensWithoutAPictureOrAWindow) {
    CPreviewZoom z;
    EXPECT_FALSE(z.Fit(true).setDisplayRect);
    EXPECT_FALSE(z.ZoomIn(1, 1).zoomState);
    EXPECT_FALSE(z.ZoomOut(1, 1).zoomState);
    EXPECT_FALSE(z.ActualSize().setDisplayRect);
    EXPECT_FALSE(z.ApplyResize().setDisplayRect);
    z.Drag(100, 100);
    EXPECT_FALSE(z.PixelAt(0, 0));
    EXPECT_FALSE(z.Percent());
    EXPECT_FALSE(z.SetRaw(0, 10).setDisplayRect);
    EXPECT_FALSE(z.SetRaw(10, -1).setDisplayRect);
    EXPECT_EQ(z.Index(), CPreviewZoom::kIndexOfOne);
    EXPECT_FALSE(z.SetRaw(640, 480).setDisplayRect) << "no window yet";
    z.SetWindow(320, 240);
    EXPECT_TRUE(z.Fit(true).setDisplayRect);
}

TEST(PreviewZoom, ThePointUnderThePointerStaysWhileZoomingInAndOut) {
    for (const double pointer : {0.0, 137.0, 500.0, 999.0}) {
        CPreviewZoom z = Zoom(1000, 700, 4000, 2800);
        z.ActualSize();
        z.Drag(0, 0);
        const double before = PictureX(z, pointer, 1000);
        for (int i = 0; i < 6; ++i)
            z.ZoomIn(pointer, 350);
        EXPECT_NEAR(PictureX(z, pointer, 1000), before, 1e-3) << pointer;
        for (int i = 0; i < 6; ++i)
            z.ZoomOut(pointer, 350);
        EXPECT_NEAR(PictureX(z, pointer, 1000), before, 1e-3) << pointer;
        EXPECT_EQ(z.Scaled().x, 4000);
    }
}

TEST(PreviewZoom, ZoomingOutStopsOnceTheWholePictureFits) {
    CPreviewZoom z = Zoom(1000, 700, 4000, 2800);
    z.ActualSize();
    for (int i = 0; i < 60; ++i)
        z.ZoomOut(500, 350);
    EXPECT_TRUE(z.IsFit());
    EXPECT_EQ(z.Index(), 2); // 0.2: the first that fits
    ExpectRect(z.Source(), 0, 1, 0, 1);
    const _ZOOM_OUTCOME_ outcome = z.ZoomOut(500, 350);
    ASSERT_TRUE(outcome.zoomState);
    EXPECT_TRUE(outcome.zoomState->zoomIn);
    EXPECT_FALSE(outcome.zoomState->zoomOut);
    EXPECT_EQ(z.Index(), 2);
}

TEST(PreviewZoom, TheLastStepForbidsMoreAndIsNeverLeft) {
    CPreviewZoom z = Zoom(1000, 700, 4000, 2800);
    z.SetIndex(45);
    EXPECT_TRUE(z.ZoomIn(500, 350).zoomState->zoomIn);
    EXPECT_EQ(z.Index(), 46);
    EXPECT_FALSE(z.ZoomIn(500, 350).zoomState->zoomIn);
    EXPECT_EQ(z.Index(), 47);
    const _ZOOM_OUTCOME_ outcome = z.ZoomIn(500, 350);
    EXPECT_FALSE(outcome.zoomState->zoomIn);
    EXPECT_TRUE(outcome.zoomState->zoomOut);
    EXPECT_EQ(z.Index(), 47);
    EXPECT_EQ(z.Scaled().x, 64000);
}

TEST(PreviewZoom, TheFirstStepIsNeverLeft) {
    CPreviewZoom z = Zoom(100, 70, 40000, 28000); // does not fit even at 0.08
    z.SetIndex(1);
    const _ZOOM_OUTCOME_ outcome = z.ZoomOut(50, 35);
    EXPECT_EQ(z.Index(), 0);
    EXPECT_FALSE(outcome.zoomState->zoomOut);
    z.ZoomOut(50, 35);
    EXPECT_EQ(z.Index(), 0);
}

TEST(PreviewZoom, ADirectionThatFitsIsCentredTheOtherIsCut) {
    CPreviewZoom z = Zoom(1000, 1000, 4000, 400);
    z.SetIndex(CPreviewZoom::kIndexOfOne - 1);
    z.ZoomIn(500, 500);
    EXPECT_NEAR(z.Source().right - z.Source().left, 0.25, kNear);
    EXPECT_NEAR(z.Source().bottom - z.Source().top, 1, kNear);
    EXPECT_NEAR(z.Destination().left, 0, kNear);
    EXPECT_NEAR(z.Destination().right, 1, kNear);
    EXPECT_NEAR(z.Destination().top, 0.3, kNear);
    EXPECT_NEAR(z.Destination().bottom, 0.7, kNear);
    EXPECT_FALSE(z.IsFit());
}

TEST(PreviewZoom, ActualSizeIsCentredOrFitted) {
    CPreviewZoom large = Zoom(1000, 700, 4000, 350);
    const _ZOOM_OUTCOME_ outcome = large.ActualSize();
    EXPECT_TRUE(outcome.setDisplayRect);
    EXPECT_TRUE(outcome.zoomState->zoomIn && outcome.zoomState->zoomOut);
    ExpectRect(large.Source(), 0, 1, 0.375, 0.625);
    ExpectRect(large.Destination(), 0.25, 0.75, 0, 1);
    EXPECT_EQ(large.Percent(), 100);
    EXPECT_FALSE(large.IsFit());
    CPreviewZoom small = Zoom(1000, 700, 500, 350);
    small.ActualSize();
    EXPECT_TRUE(small.IsFit()); // deliberate: it fills the window
    EXPECT_EQ(small.Percent(), 200);
}

TEST(PreviewZoom, AFrameOfTheSameSizeAppliesTheSameStepAgain) {
    CPreviewZoom z = Zoom(1000, 700, 4000, 2800);
    z.ActualSize();
    z.ZoomIn(500, 350);
    const tagVRRectF before = z.Source();
    EXPECT_TRUE(z.SetRaw(4000, 2800).setDisplayRect);
    EXPECT_EQ(z.Index(), 18);
    ExpectRect(z.Source(), before.top, before.bottom, before.left, before.right);
    z.SetIndex(0);
    z.SetRaw(4000, 2800);
    EXPECT_EQ(z.Index(), 1); // deliberate: nothing to step back to
    EXPECT_TRUE(z.SetRaw(2000, 2800).setDisplayRect);
    EXPECT_TRUE(z.IsFit()) << "another size fits anew";
}

TEST(PreviewZoom, AResizeKeepsWhatIsShown) {
    CPreviewZoom fitted = Zoom(1000, 700, 4000, 2800);
    fitted.SetWindow(500, 700);
    EXPECT_TRUE(fitted.ApplyResize().setDisplayRect);
    EXPECT_TRUE(fitted.IsFit());
    EXPECT_EQ(fitted.Scaled().x, 500);
    CPreviewZoom zoomed = Zoom(1000, 700, 4000, 2800);
    zoomed.ActualSize();
    const tagVRRectF before = zoomed.Source();
    zoomed.SetWindow(2000, 1400);
    EXPECT_TRUE(zoomed.ApplyResize().setDisplayRect);
    ExpectRect(zoomed.Source(), before.top, before.bottom, before.left, before.right);
    ExpectRect(zoomed.Destination(), 0, 1, 0, 1);
    EXPECT_EQ(zoomed.Percent(), 200);
    EXPECT_NEAR(zoomed.PixelAt(0, 0)->x, 1500, 1);
    EXPECT_NEAR(zoomed.PixelAt(1999, 0)->x, 2499, 1);
}

TEST(PreviewZoom, ThePictureFollowsTheHandAndStopsAtItsEdges) {
    CPreviewZoom z = Zoom(1000, 700, 4000, 2800);
    z.ActualSize();
    z.Drag(100, -50);
    EXPECT_NEAR(z.Source().left, 0.375 - 0.025, kNear);
    EXPECT_NEAR(z.Source().right, 0.625 - 0.025, kNear);
    EXPECT_NEAR(z.Source().top, 0.375 + 50 / 2800.0, kNear);
    z.Drag(100000, 100000);
    ExpectRect(z.Source(), 0, 0.25, 0, 0.25);
    z.Drag(-100000, -100000);
    ExpectRect(z.Source(), 0.75, 1, 0.75, 1);
}

TEST(PreviewZoom, PixelsAreThoseUnderThePointer) {
    CPreviewZoom z = Zoom(1000, 700, 1000, 350);
    EXPECT_FALSE(z.PixelAt(500, 174)) << "above the picture";
    ASSERT_TRUE(z.PixelAt(500, 176));
    EXPECT_EQ(z.PixelAt(500, 176)->x, 500);
    EXPECT_EQ(z.PixelAt(500, 176)->y, 1);
    EXPECT_FALSE(z.PixelAt(500, 525)) << "below it";
    EXPECT_FALSE(z.PixelAt(-1, 300));
    EXPECT_FALSE(z.PixelAt(1000, 300));
    EXPECT_EQ(z.PixelAt(999, 524)->x, 999);
    EXPECT_EQ(z.PixelAt(999, 524)->y, 349);
}

struct Turn {
    const char* name;
    _PREVIEW_ROTATION_ rotation;
};

class PreviewTurned : public testing::TestWithParam<Turn> {
protected:
    // The camera's picture fraction that is seen at a fraction of the (fully covered) window.
    static std::pair<double, double> CameraPoint(const CPreviewZoom& z, const _PREVIEW_ROTATION_& r, double x,
                                                 double y) {
        double u = x, v = y; // along the camera's axes, in the shown part
        if (r.half)
            u = 1 - x, v = 1 - y;
        else if (r.right)
            u = y, v = 1 - x;
        else if (r.turned)
            u = 1 - y, v = x;
        const tagVRRectF& s = z.Source();
        return {s.left + u * (s.right - s.left), s.top + v * (s.bottom - s.top)};
    }
};

TEST_P(PreviewTurned, ThePointUnderThePointerStays) {
    const _PREVIEW_ROTATION_ r = GetParam().rotation;
    CPreviewZoom z;
    z.SetWindow(1000, 1000);
    z.SetRaw(4000, 3000);
    z.SetRotation(r);
    if (r.reversed)
        z.SwapRaw();
    z.ActualSize();
    const auto before = CameraPoint(z, r, 0.2, 0.7);
    z.ZoomIn(200, 700);
    const auto after = CameraPoint(z, r, 0.2, 0.7);
    EXPECT_NEAR(after.first, before.first, 1e-3);
    EXPECT_NEAR(after.second, before.second, 1e-3);
}

TEST_P(PreviewTurned, ThePictureFollowsTheHand) {
    const _PREVIEW_ROTATION_ r = GetParam().rotation;
    CPreviewZoom z;
    z.SetWindow(1000, 1000);
    z.SetRaw(4000, 3000);
    z.SetRotation(r);
    if (r.reversed)
        z.SwapRaw();
    z.ActualSize();
    const auto held = CameraPoint(z, r, 0.4, 0.4);
    z.Drag(100, -50);
    const auto now = CameraPoint(z, r, 0.5, 0.35);
    EXPECT_NEAR(now.first, held.first, 1e-3);
    EXPECT_NEAR(now.second, held.second, 1e-3);
}

INSTANTIATE_TEST_SUITE_P(Turns, PreviewTurned,
                         testing::Values(Turn{"None", {}}, Turn{"Right", {true, true, false, true}},
                                         Turn{"Half", {false, true, true, false}},
                                         Turn{"Left", {true, true, false, false}}),
                         [](const testing::TestParamInfo<Turn>& turn) {
                             return std::string(turn.param.name);
                         });

TEST(PreviewZoom, AQuarterTurnExchangesTheSidesAndFitsAgain) {
    CPreviewZoom z = Zoom(1000, 700, 2000, 1000);
    z.SwapRaw();
    z.Fit(true);
    EXPECT_EQ(z.Raw().x, 1000);
    EXPECT_EQ(z.Raw().y, 2000);
    EXPECT_EQ(z.Scaled().y, 700);
}

} // namespace
