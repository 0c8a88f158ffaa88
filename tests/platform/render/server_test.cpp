/* Servers other than the usual one: other depths, none, one that goes away or hangs. */
#include "Ways.h"
#include "XServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace kolt::tests {
namespace {

class OtherServer : public testing::TestWithParam<Way> {
protected:
    OtherServer() {
        if (GetParam().variable != nullptr) {
            m_variable.emplace(GetParam().variable, "1");
        }
    }

private:
    std::optional<EnvironmentChange> m_variable;
};

KOLT_EVERY_WAY(OtherServer);

/* Colours as a screen of few bits shows them. */
Picture quantised(Picture picture, int red, int green, int blue) {
    const auto reduce = [](int value, int bits) {
        const int most = (1 << bits) - 1;
        const int kept = (value * most + 127) / 255;
        return (kept * 255 + most / 2) / most;
    };
    for (Rgb& p : picture.pixels) {
        p = {reduce(p.red, red), reduce(p.green, green), reduce(p.blue, blue)};
    }
    return picture;
}

TEST_P(OtherServer, DepthOf16) {
    const XServer server("800x600x16");
    const EnvironmentChange display("DISPLAY", server.display().c_str());
    const XClient client;
    ASSERT_EQ(client.screen()->root_depth, 16);
    for (const int channels : {1, 3}) {
        for (int turns = 0; turns < 4; ++turns) {
            const xcb_window_t window = client.makeWindow(10, 10, 161, 119);
            const RenderHandle handle(formatOf(channels), GetParam().engine, window);
            const Source source = noise(61, 47, channels);
            const Shown shown{kAll, {0, 1, 0, 0.75F}, turns};
            ASSERT_EQ(turn(handle.get(), 90.0F * static_cast<float>(turns)), 1);
            ASSERT_EQ(VR_SetDisplayRect(handle.get(), kPort, &shown.source, &shown.destination), 1);
            ASSERT_EQ(handle.update(source), 1);
            ASSERT_EQ(handle.display(), 1);
            // A graphics driver may round to the few bits in its own way: one step apart.
            const int tolerance = GetParam().engine == VR_ENGINE_OPENGL ? 9 : 0;
            EXPECT_TRUE(
                becomes(client, 10, 10, quantised(expected(source, 161, 119, shown), 5, 6, 5), tolerance));
            client.destroy(window);
        }
    }
}

TEST_P(OtherServer, DepthOf30) {
    const XServer server("800x600x30");
    const EnvironmentChange display("DISPLAY", server.display().c_str());
    const XClient client;
    ASSERT_EQ(client.screen()->root_depth, 30);
    const xcb_window_t window = client.makeWindow(10, 10, 161, 119);
    const RenderHandle handle(VR_PIXEL_RGB8, GetParam().engine, window);
    const Source source = noise(61, 47, 3);
    ASSERT_EQ(handle.update(source), 1);
    for (int turns = 0; turns < 4; ++turns) {
        ASSERT_EQ(turn(handle.get(), 90.0F * static_cast<float>(turns)), 1);
        ASSERT_EQ(handle.display(), 1);
        EXPECT_TRUE(becomes(client, 10, 10, expected(source, 161, 119, {kAll, kAll, turns}), 1));
    }
}

TEST_P(OtherServer, PalettesAreRefused) {
    const XServer server("800x600x8");
    const EnvironmentChange display("DISPLAY", server.display().c_str());
    const XClient client;
    ASSERT_EQ(client.screen()->root_depth, 8);
    const xcb_window_t window = client.makeWindow(10, 10, 60, 60);
    const RenderHandle handle(VR_PIXEL_RGB8, GetParam().engine, window);
    ASSERT_TRUE(handle.ready());
    ASSERT_EQ(handle.update(noise(10, 10, 3)), 1);
    EXPECT_EQ(handle.display(), 0);
}

TEST_P(OtherServer, WithoutSharedMemory) {
    const XServer server("800x600x24", {"-extension", "MIT-SHM"});
    const EnvironmentChange display("DISPLAY", server.display().c_str());
    const XClient client;
    const xcb_window_t window = client.makeWindow(10, 10, 161, 119);
    const RenderHandle handle(VR_PIXEL_RGB8, GetParam().engine, window);
    const Source source = noise(61, 47, 3);
    ASSERT_EQ(handle.update(source), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(becomes(client, 10, 10, expected(source, 161, 119, {}), 0));
}

TEST_P(OtherServer, WithoutShapes) {
    const XServer server("800x600x24", {"-extension", "SHAPE"});
    const EnvironmentChange display("DISPLAY", server.display().c_str());
    const XClient client;
    const xcb_window_t window = client.makeWindow(10, 10, 161, 119);
    const RenderHandle handle(VR_PIXEL_RGB8, GetParam().engine, window);
    const Source source = noise(61, 47, 3);
    ASSERT_EQ(handle.update(source), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(becomes(client, 10, 10, expected(source, 161, 119, {}), 0));
}

TEST_P(OtherServer, GoneInTheMiddleOfDrawing) {
    XServer server;
    const EnvironmentChange display("DISPLAY", server.display().c_str());
    const XClient client;
    const xcb_window_t window = client.makeWindow(10, 10, 161, 119);
    const RenderHandle handle(VR_PIXEL_RGB8, GetParam().engine, window);
    const Source source = noise(61, 47, 3);
    ASSERT_EQ(handle.update(source), 1);
    ASSERT_EQ(handle.display(), 1);
    std::thread drawing([&] {
        EXPECT_TRUE(eventually([&] {
            handle.update(source);
            return handle.display() == 0;
        }));
    });
    server.kill();
    drawing.join();
    EXPECT_EQ(handle.display(), 0) << "for good";
    EXPECT_EQ(handle.update(source), 1) << "taking pixels over wants no server";
    EXPECT_EQ(VR_DelSubPort(handle.get(), kPort), 1);
    const RenderHandle next;
    EXPECT_EQ(VR_Init(next.get(), VR_PIXEL_RGB8, GetParam().engine, 1), 0) << "no display";
}

TEST(NoServer, InitFailsAndMayBeTriedAgain) {
    const RenderHandle handle;
    {
        const EnvironmentChange display("DISPLAY", ":64999");
        EXPECT_EQ(VR_Init(handle.get(), VR_PIXEL_RGB8, VR_ENGINE_OPENGL, 1), 0);
        EXPECT_EQ(VR_Init(handle.get(), VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, 1), 0);
    }
    {
        const EnvironmentChange display("DISPLAY", nullptr);
        EXPECT_EQ(VR_Init(handle.get(), VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, 1), 0);
    }
    EXPECT_EQ(VR_Init(handle.get(), VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, 1), 1);
}

TEST(HungServer, NeitherDrawingNorDestroyingHangs) {
    const XServer server;
    const EnvironmentChange display("DISPLAY", server.display().c_str());
    const XClient client;
    const xcb_window_t window = client.makeWindow(10, 10, 161, 119);
    const Source source = noise(61, 47, 3);
    const auto begin = std::chrono::steady_clock::now();
    {
        const RenderHandle handle(VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, window);
        ASSERT_EQ(handle.update(source), 1);
        ASSERT_EQ(handle.display(), 1);
        server.freeze();
        // Two drawings are under way without an answer; the third finds no free memory.
        EXPECT_TRUE(eventually([&] {
            handle.update(source);
            return handle.display() == 0;
        }));
        EXPECT_EQ(handle.update(source), 1) << "taking pixels over never waits for the server";
        EXPECT_EQ(turn(handle.get(), 90), 1);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(25));
    server.resume();
    const RenderHandle next(VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, window);
    ASSERT_EQ(next.update(source), 1);
    ASSERT_EQ(next.display(), 1);
    EXPECT_TRUE(becomes(client, 10, 10, expected(source, 161, 119, {}), 0));
}

/* A toolkit's window that may be translucent has 32 bits: all must stay opaque. */
TEST(TranslucentWindow, IsPaintedOpaque) {
    const XClient client;
    xcb_visualid_t visual = 0;
    for (xcb_depth_iterator_t d = xcb_screen_allowed_depths_iterator(client.screen()); d.rem > 0;
         xcb_depth_next(&d)) {
        for (xcb_visualtype_iterator_t v = xcb_depth_visuals_iterator(d.data);
             d.data->depth == 32 && v.rem > 0; xcb_visualtype_next(&v)) {
            visual = v.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR ? v.data->visual_id : visual;
        }
    }
    ASSERT_NE(visual, 0U) << "the test server has a visual of 32 bits";
    xcb_connection_t* x = client.get();
    const xcb_colormap_t colormap = xcb_generate_id(x);
    xcb_create_colormap(x, XCB_COLORMAP_ALLOC_NONE, colormap, client.screen()->root, visual);
    const xcb_window_t window = xcb_generate_id(x);
    const uint32_t values[] = {0, 0, 1, colormap};
    xcb_create_window(
        x, 32, window, client.screen()->root, 10, 10, 90, 70, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP, values);
    client.map(window);
    client.sync();
    const Source source = noise(31, 23, 3);
    const tagVRRectF middle{0.25F, 0.75F, 0.25F, 0.75F};
    for (int turns = 0; turns < 2; ++turns) {
        const RenderHandle handle(VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, window);
        ASSERT_EQ(turn(handle.get(), 90.0F * static_cast<float>(turns)), 1);
        ASSERT_EQ(VR_WndResolutionChange(handle.get(), kPort, &middle), 1);
        ASSERT_EQ(handle.update(source), 1);
        ASSERT_EQ(handle.display(), 1);
        EXPECT_TRUE(becomes(client, 10, 10, expected(source, 90, 70, {kAll, middle, turns}), 5));
        xcb_get_image_reply_t* image = xcb_get_image_reply(
            x, xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0, 90, 70, ~0U), nullptr);
        ASSERT_NE(image, nullptr);
        const uint8_t* bytes = xcb_get_image_data(image);
        for (int i = 0; i < 90 * 70; ++i) {
            ASSERT_EQ(bytes[4 * i + 3], 0xFF) << "pixel " << i;
        }
        free(image);
    }
    client.destroy(window);
}

} // namespace
} // namespace kolt::tests
