/* What stands on the screen, through the exported calls, for every engine and every way to the server. */
#include "Ways.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace kolt::tests {
namespace {

class Drawing : public EveryWay {
protected:
    /* Draws once in a new window and compares the screen. */
    void check(const Source& source, int width, int height, const Shown& shown, int tolerance) {
        const xcb_window_t window = client.makeWindow(40, 30, width, height);
        client.fill(window, 0xFF00FF);
        {
            const RenderHandle handle(formatOf(source.channels), engine(), window);
            ASSERT_TRUE(handle.ready());
            ASSERT_EQ(turn(handle.get(), 90.0F * static_cast<float>(shown.quarterTurns)), 1);
            ASSERT_EQ(VR_SetDisplayRect(handle.get(), kPort, &shown.source, &shown.destination), 1);
            ASSERT_EQ(handle.update(source), 1);
            ASSERT_EQ(handle.display(window), 1);
            EXPECT_TRUE(becomes(client, 40, 30, expected(source, width, height, shown), tolerance))
                << source.width << "x" << source.height << "x" << source.channels << " in " << width << "x"
                << height << " turned " << shown.quarterTurns << ", source " << shown.source.top << " "
                << shown.source.bottom << " " << shown.source.left << " " << shown.source.right;
        }
        client.destroy(window);
        client.sync();
    }
};

KOLT_EVERY_WAY(Drawing);

constexpr int kReduced = 5; /* two passes of eight bits, and weights in 64ths */
/* More than three columns in one are first averaged in pairs, which shifts weight between neighbours. */
constexpr int kStronglyReduced = 24;

TEST_P(Drawing, OneToOneIsExactInEveryTurn) {
    for (const int channels : {1, 3}) {
        const Source source = noise(201, 99, channels);
        for (int turns = 0; turns < 4; ++turns) {
            const bool swapped = turns % 2 != 0;
            check(source, swapped ? 99 : 201, swapped ? 201 : 99, {kAll, kAll, turns}, 0);
        }
    }
}

TEST_P(Drawing, EnlargedShowsTheSensorsPixels) {
    for (const int channels : {1, 3}) {
        const Source source = noise(31, 23, channels);
        for (int turns = 0; turns < 4; ++turns) {
            check(source, 217, 180, {kAll, kAll, turns}, 0);
        }
    }
}

TEST_P(Drawing, ReducedShowsTheMean) {
    for (const int channels : {1, 3}) {
        const Source source = ramps(533, 401, channels);
        const Source busy = noise(533, 401, channels);
        for (int turns = 0; turns < 4; ++turns) {
            check(source, 211, 190, {kAll, kAll, turns}, kReduced);
            check(busy, 211, 190, {kAll, kAll, turns}, kReduced);
        }
    }
}

TEST_P(Drawing, StronglyReducedShowsTheMean) {
    for (const int channels : {1, 3}) {
        const Source busy = noise(1003, 641, channels);
        check(busy, 47, 31, {kAll, kAll, 0}, kReduced + 3);
        check(busy, 31, 47, {kAll, kAll, 1}, kReduced + 3);
        check(busy, 211, 190, {kAll, kAll, 2}, kStronglyReduced);
    }
}

TEST_P(Drawing, PartsOfThePicture) {
    const Source source = noise(120, 80, 3);
    for (int turns = 0; turns < 4; ++turns) {
        check(source, 160, 130, {{0.25F, 0.75F, 0.125F, 0.5F}, kAll, turns}, 0);
        check(source, 90, 85, {{0.1F, 0.93F, 0.05F, 0.99F}, kAll, turns}, kReduced);
    }
}

TEST_P(Drawing, OverTheEdgesOfThePicture) {
    const Source source = noise(120, 80, 3);
    for (int turns = 0; turns < 4; ++turns) {
        check(source, 300, 200, {{-0.5F, 0.75F, -0.25F, 0.5F}, kAll, turns}, 0);
        check(source, 300, 200, {{0.5F, 1.5F, 0.75F, 1.25F}, kAll, turns}, 0);
    }
    check(source, 50, 50, {{2, 3, 0, 1}, kAll, 0}, 0);
}

TEST_P(Drawing, PartsOfTheWindow) {
    const Source source = noise(60, 40, 3);
    for (int turns = 0; turns < 4; ++turns) {
        check(source, 200, 160, {kAll, {0.25F, 0.75F, 0.1F, 0.8F}, turns}, 0);
        check(source, 200, 160, {kAll, {-0.5F, 0.5F, 0.5F, 1.75F}, turns}, 0);
    }
    check(source, 50, 50, {kAll, {0, 1, 1.5F, 2}, 0}, 0);
}

TEST_P(Drawing, OddSizes) {
    const int sizes[][2] = {{1, 1}, {1, 37}, {37, 1}, {2, 3}, {5, 5}, {7, 4}, {17, 16}, {33, 15}};
    for (const auto& picture : sizes) {
        for (const auto& window : sizes) {
            for (const int channels : {1, 3}) {
                const Source source = noise(picture[0], picture[1], channels);
                check(source, window[0], window[1], {kAll, kAll, (picture[0] + window[1]) % 4},
                      kStronglyReduced);
            }
        }
    }
}

/* A sheet for looking at, kept as render-<way>.ppm: a scene in every turn, and parts that are clipped at the
 * edges. */
TEST_P(Drawing, ASceneInEveryTurn) {
    const Source source = scene(320, 240, 3);
    const tagVRRectF corner{0.5F, 1.25F, -0.25F, 0.5F};
    const tagVRRectF middle{0.125F, 0.875F, 0.25F, 0.75F};
    std::vector<Shown> views;
    for (int turns = 0; turns < 4; ++turns) {
        views.push_back({kAll, kAll, turns});
    }
    for (int turns = 0; turns < 4; ++turns) {
        views.push_back({corner, kAll, turns});
    }
    for (int turns = 0; turns < 4; ++turns) {
        views.push_back({{0.25F, 0.5F, 0.25F, 0.5F}, middle, turns});
    }
    constexpr int kCell = 210;
    constexpr int kWindow = 200;
    std::vector<std::unique_ptr<RenderHandle>> handles;
    for (size_t i = 0; i < views.size(); ++i) {
        const int x = static_cast<int>(i % 4) * kCell;
        const int y = static_cast<int>(i / 4) * kCell;
        const xcb_window_t window = client.makeWindow(x, y, kWindow, kWindow);
        handles.push_back(std::make_unique<RenderHandle>(formatOf(3), engine(), window));
        void* handle = handles.back()->get();
        ASSERT_EQ(turn(handle, 90.0F * static_cast<float>(views[i].quarterTurns)), 1);
        ASSERT_EQ(VR_SetDisplayRect(handle, kPort, &views[i].source, &views[i].destination), 1);
        ASSERT_EQ(handles.back()->update(source), 1);
        ASSERT_EQ(handles.back()->display(), 1);
        EXPECT_TRUE(becomes(client, x, y, expected(source, kWindow, kWindow, views[i]), kReduced)) << i;
    }
    client.screenshot(0, 0, 4 * kCell, 3 * kCell).save(std::string("render-") + GetParam().name + ".ppm");
}

} // namespace
} // namespace kolt::tests
