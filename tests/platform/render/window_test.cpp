/* What happens to the window behind the library's back: resized, covered, hidden, moved, destroyed. */
#include "Ways.h"

#include <gtest/gtest.h>

namespace kolt::tests {
namespace {

constexpr int kX = 40;
constexpr int kY = 30;
constexpr uint32_t kForeign = 0xC000C0;

class Window : public EveryWay {
protected:
    Window() : m_window(client.makeWindow(kX, kY, 200, 150)) { client.fill(m_window, kForeign); }

    testing::AssertionResult shows(int x, int y, int width, int height, const Shown& shown = {}) {
        // Where more than three columns become one, neighbours may share weight.
        const int tolerance = width * 3 < m_source.width ? kCoarse : kTolerance;
        return becomes(client, x, y, expected(m_source, width, height, shown), tolerance);
    }

    static constexpr int kTolerance = 5;
    static constexpr int kCoarse = 24;
    const Source m_source = noise(97, 61, 3);
    xcb_window_t m_window;
};

KOLT_EVERY_WAY(Window);

TEST_P(Window, IsRedrawnWhenUncovered) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(handle.update(m_source), 1);
    ASSERT_EQ(handle.display(), 1);
    ASSERT_TRUE(shows(kX, kY, 200, 150));
    const xcb_window_t cover = client.makeWindow(kX + 50, kY + 20, 300, 60);
    client.fill(cover, kForeign);
    const Picture covered = client.screenshot(kX + 60, kY + 30, 1, 1);
    ASSERT_EQ(covered.at(0, 0), (Rgb{0xC0, 0, 0xC0}));
    client.destroy(cover);
    EXPECT_TRUE(shows(kX, kY, 200, 150));
}

TEST_P(Window, IsRedrawnWhenResized) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(handle.update(m_source), 1);
    ASSERT_EQ(handle.display(), 1);
    const int sizes[][2] = {{300, 150}, {300, 260}, {90, 40}, {1, 1},
                            {1, 200},   {640, 3},   {97, 61}, {700, 500}};
    for (const auto& size : sizes) {
        client.resize(m_window, size[0], size[1]);
        EXPECT_TRUE(shows(kX, kY, size[0], size[1])) << size[0] << " x " << size[1];
        EXPECT_EQ(handle.display(), 1);
        EXPECT_TRUE(shows(kX, kY, size[0], size[1])) << size[0] << " x " << size[1] << " drawn again";
    }
}

TEST_P(Window, ShowsNewRectanglesOfAStillPicture) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(handle.update(m_source), 1);
    ASSERT_EQ(handle.display(), 1);
    Shown shown;
    shown.source = {0.25F, 0.5F, 0.5F, 0.75F};
    ASSERT_EQ(VR_SetDisplayRect(handle.get(), kPort, &shown.source, &shown.destination), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(shows(kX, kY, 200, 150, shown));
    shown.quarterTurns = 1;
    ASSERT_EQ(turn(handle.get(), 90), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(shows(kX, kY, 200, 150, shown));
    shown.destination = {0.5F, 1, 0.25F, 0.5F};
    ASSERT_EQ(VR_WndResolutionChange(handle.get(), kPort, &shown.destination), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(shows(kX, kY, 200, 150, shown));
}

TEST_P(Window, ShowsTheNewestPictureAfterEveryKindOfChange) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    for (uint32_t round = 0; round < 12; ++round) {
        // Same size, same settings; another size; a change between update and display; two updates before one
        // display.
        const Source source = round % 4 == 1 ? noise(64, 80, 3, round) : noise(97, 61, 3, round);
        Shown shown;
        shown.quarterTurns = static_cast<int>(round / 4);
        if (round % 4 == 3) {
            ASSERT_EQ(handle.update(noise(97, 61, 3, 1000 + round)), 1);
        }
        ASSERT_EQ(handle.update(source), 1);
        if (round % 4 == 0) {
            ASSERT_EQ(turn(handle.get(), 90.0F * static_cast<float>(shown.quarterTurns)), 1);
        }
        if (round % 4 == 2) {
            client.resize(m_window, 200, 100 + static_cast<int>(round));
            client.sync();
        }
        ASSERT_EQ(handle.display(), 1);
        const int height =
            round < 2 ? 150 : 100 + static_cast<int>(round - round % 4 + (round % 4 < 2 ? -2 : 2));
        EXPECT_TRUE(becomes(client, kX, kY, expected(source, 200, height, shown), kTolerance))
            << "round " << round;
    }
}

TEST_P(Window, IsRedrawnWhenShownAgain) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(handle.update(m_source), 1);
    ASSERT_EQ(handle.display(), 1);
    client.unmap(m_window);
    client.sync();
    EXPECT_EQ(handle.display(), 1) << "hidden is no failure";
    client.map(m_window);
    EXPECT_TRUE(shows(kX, kY, 200, 150));
}

TEST_P(Window, MayMoveToAnotherParent) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(handle.update(m_source), 1);
    ASSERT_EQ(handle.display(), 1);
    const xcb_window_t parent = client.makeWindow(400, 100, 400, 400);
    client.fill(parent, kForeign);
    client.reparent(m_window, parent, 30, 50);
    EXPECT_TRUE(shows(430, 150, 200, 150)) << "without a call";
    EXPECT_EQ(handle.display(), 1);
    EXPECT_TRUE(shows(430, 150, 200, 150));
    client.reparent(m_window, 0, kX, kY);
    EXPECT_TRUE(shows(kX, kY, 200, 150));
}

TEST_P(Window, MayBeDestroyed) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(handle.update(m_source), 1);
    ASSERT_EQ(handle.display(), 1);
    client.destroy(m_window);
    client.sync();
    EXPECT_TRUE(eventually([&] { return handle.display() == 0; }));
    EXPECT_EQ(handle.display(), 0);
    EXPECT_EQ(handle.update(m_source), 1) << "the picture is kept for the next window";
    const xcb_window_t next = client.makeWindow(300, 200, 120, 90);
    EXPECT_EQ(handle.display(next), 1);
    EXPECT_TRUE(shows(300, 200, 120, 90));
}

TEST_P(Window, MayBeOneThatNeverWas) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), 0x7FFFFFF);
    ASSERT_EQ(handle.update(m_source), 1);
    EXPECT_EQ(handle.display(), 0);
    EXPECT_EQ(handle.display(0x7FFFFFE), 0);
    EXPECT_EQ(handle.display(m_window), 1);
    EXPECT_TRUE(shows(kX, kY, 200, 150));
}

TEST_P(Window, MayChangeBetweenDrawings) {
    const xcb_window_t other = client.makeWindow(400, 200, 150, 200);
    client.fill(other, kForeign);
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(handle.update(m_source), 1);
    ASSERT_EQ(handle.display(), 1);
    ASSERT_TRUE(shows(kX, kY, 200, 150));
    ASSERT_EQ(handle.display(other), 1);
    EXPECT_TRUE(shows(400, 200, 150, 200));
    ASSERT_EQ(handle.display(), 1) << "without an argument the last window";
    // The first window is the program's alone again: nothing draws over what it draws.
    client.fill(m_window, kForeign);
    client.resize(m_window, 180, 140);
    client.sync();
    ASSERT_EQ(handle.display(), 1);
    ASSERT_TRUE(shows(400, 200, 150, 200));
    EXPECT_TRUE(client.children(m_window).empty());
    const Picture first = client.screenshot(kX, kY, 180, 140);
    EXPECT_EQ(first.at(90, 70), (Rgb{0xC0, 0, 0xC0}));
    ASSERT_EQ(handle.display(m_window), 1);
    EXPECT_TRUE(shows(kX, kY, 180, 140));
}

TEST_P(Window, IsLeftAloneByADeletedPort) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(handle.update(m_source), 1);
    ASSERT_EQ(handle.display(), 1);
    ASSERT_TRUE(shows(kX, kY, 200, 150));
    ASSERT_EQ(VR_DelSubPort(handle.get(), kPort), 1);
    client.fill(m_window, kForeign);
    EXPECT_TRUE(client.children(m_window).empty()) << "nothing of the library is left in it";
    EXPECT_EQ(handle.display(m_window), 0);
    client.resize(m_window, 220, 150);
    client.sync();
    EXPECT_EQ(client.screenshot(kX + 10, kY + 10, 1, 1).at(0, 0), (Rgb{0xC0, 0, 0xC0}));
    ASSERT_EQ(VR_AddSubPort(handle.get(), m_window, kPort, 0), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(shows(kX, kY, 220, 150));
}

TEST_P(Window, IsLeftAloneByADestroyedHandle) {
    {
        const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
        ASSERT_EQ(handle.update(m_source), 1);
        ASSERT_EQ(handle.display(), 1);
        ASSERT_TRUE(shows(kX, kY, 200, 150));
    }
    client.fill(m_window, kForeign);
    EXPECT_TRUE(eventually([&] { return client.children(m_window).empty(); }));
    EXPECT_EQ(client.screenshot(kX + 10, kY + 10, 1, 1).at(0, 0), (Rgb{0xC0, 0, 0xC0}));
}

TEST_P(Window, IsNotTouchedBeforeThereIsAPicture) {
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    EXPECT_EQ(handle.display(), 0);
    client.resize(m_window, 210, 150);
    client.sync();
    EXPECT_EQ(handle.display(), 0);
    EXPECT_EQ(client.screenshot(kX + 10, kY + 10, 1, 1).at(0, 0), (Rgb{0xC0, 0, 0xC0}));
}

TEST_P(Window, SeveralPortsShowTheSamePictureDifferently) {
    const xcb_window_t second = client.makeWindow(400, 200, 150, 200);
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), m_window);
    ASSERT_EQ(VR_AddSubPort(handle.get(), second, 7, 0), 1);
    ASSERT_EQ(turn(handle.get(), 90, 7), 1);
    const tagVRRectF part{0, 0.5F, 0, 0.5F};
    ASSERT_EQ(VR_SetDisplayRect(handle.get(), kPort, &part, &kAll), 1);
    for (uint32_t seed = 1; seed < 4; ++seed) {
        const Source source = noise(97, 61, 3, seed);
        ASSERT_EQ(handle.update(source), 1);
        ASSERT_EQ(handle.display(), 1);
        ASSERT_EQ(VR_Display(handle.get(), 7, 0), 1);
        EXPECT_TRUE(becomes(client, kX, kY, expected(source, 200, 150, {part, kAll, 0}), kTolerance));
        EXPECT_TRUE(becomes(client, 400, 200, expected(source, 150, 200, {kAll, kAll, 1}), kTolerance));
    }
    ASSERT_EQ(VR_DelSubPort(handle.get(), 7), 1);
    EXPECT_EQ(VR_Display(handle.get(), 7, second), 0);
    EXPECT_EQ(handle.display(), 1);
}

TEST_P(Window, TwoHandlesDrawBesideEachOther) {
    const xcb_window_t second = client.makeWindow(400, 200, 150, 200);
    const RenderHandle first(VR_PIXEL_RGB8, engine(), m_window);
    const RenderHandle other(VR_PIXEL_MONO8, engine(), second);
    const Source grey = noise(50, 40, 1);
    ASSERT_EQ(first.update(m_source), 1);
    ASSERT_EQ(other.update(grey), 1);
    ASSERT_EQ(first.display(), 1);
    ASSERT_EQ(other.display(), 1);
    EXPECT_TRUE(shows(kX, kY, 200, 150));
    EXPECT_TRUE(becomes(client, 400, 200, expected(grey, 150, 200, {}), kTolerance));
}

} // namespace
} // namespace kolt::tests
