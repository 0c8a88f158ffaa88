/* Arguments, states and results of the exported calls. */
#include "Harness.h"
#include "Ways.h"
#include "XServer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <future>
#include <limits>
#include <thread>
#include <vector>

namespace kolt::tests {
namespace {

const uint8_t kPixels[64 * 3] = {};

/* Every call with this handle gives 0. */
void expectNothingWorks(void* handle) {
    tagVRRotation record = rotation(90);
    record.axes = &record.axis;
    const VRDrawCallBack callback = [](void*, uint32_t, uint32_t, void*, uint32_t, uint32_t) {};
    EXPECT_EQ(VR_AddSubPort(handle, 1, 0, 0), 0);
    EXPECT_EQ(VR_DelSubPort(handle, 0), 0);
    EXPECT_EQ(VR_SetVerticalSyncPeriod(handle, 0, 0), 0);
    EXPECT_EQ(VR_SetCallBack(handle, 0, 1, callback, nullptr), 0);
    EXPECT_EQ(VR_UpdateFrameData(handle, kPixels, 8, 8, 0), 0);
    EXPECT_EQ(VR_Display(handle, 0, 1), 0);
    EXPECT_EQ(VR_WndResolutionChange(handle, 0, &kAll), 0);
    EXPECT_EQ(VR_SetDisplayRect(handle, 0, &kAll, &kAll), 0);
    EXPECT_EQ(VR_Rotate(handle, 0, &record), 0);
}

TEST(Handle, NullAndForeignGiveZero) {
    int foreign = 0;
    for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&foreign)}) {
        EXPECT_EQ(VR_Init(handle, VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, 1), 0);
        expectNothingWorks(handle);
        EXPECT_EQ(VR_DestroyHandle(handle), 0U);
    }
}

TEST(Handle, DestroyedGivesZero) {
    const XClient client;
    void* handle = VR_CreateHandle();
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(VR_Init(handle, VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, 1), 1);
    EXPECT_EQ(VR_DestroyHandle(handle), 1U);
    EXPECT_EQ(VR_DestroyHandle(handle), 0U);
    EXPECT_EQ(VR_Init(handle, VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, 1), 0);
    expectNothingWorks(handle);
    void* next = VR_CreateHandle();
    EXPECT_NE(next, handle) << "a stale handle must never mean another";
    EXPECT_EQ(VR_DestroyHandle(next), 1U);
}

TEST(Handle, NothingWorksBeforeInit) {
    const RenderHandle handle;
    expectNothingWorks(handle.get());
}

struct InitCase {
    uint32_t format;
    uint32_t engine;
    uint32_t count;
    int32_t result;
};

class Init : public testing::TestWithParam<InitCase> {};

TEST_P(Init, ChecksItsArguments) {
    const RenderHandle handle;
    EXPECT_EQ(VR_Init(handle.get(), GetParam().format, GetParam().engine, GetParam().count),
              GetParam().result);
    if (GetParam().result == 0) {
        expectNothingWorks(handle.get());
        EXPECT_EQ(VR_Init(handle.get(), VR_PIXEL_MONO8, 2, 1), 1)
            << "a refused call leaves the handle as it was";
    }
    EXPECT_EQ(VR_Init(handle.get(), VR_PIXEL_MONO8, 2, 1), 0) << "a handle is initialised once";
}

INSTANTIATE_TEST_SUITE_P(Cases, Init,
                         testing::Values(InitCase{VR_PIXEL_RGB8, 1, 1, 1}, InitCase{VR_PIXEL_RGB8, 2, 1, 1},
                                         InitCase{VR_PIXEL_MONO8, 1, 1, 1}, InitCase{VR_PIXEL_MONO8, 2, 1, 1},
                                         InitCase{VR_PIXEL_MONO8, 2, 64, 1},
                                         InitCase{VR_PIXEL_MONO8, 2, 65, 0},
                                         InitCase{VR_PIXEL_MONO8, 2, 0, 0}, InitCase{VR_PIXEL_MONO8, 0, 1, 0},
                                         InitCase{VR_PIXEL_MONO8, 3, 1, 0}, InitCase{0, 2, 1, 0},
                                         InitCase{0x42000, 2, 1, 0}, InitCase{0xFFFFFFFF, 2, 1, 0}));

class Calls : public testing::Test {
protected:
    XClient client;
    xcb_window_t window = client.makeWindow(10, 10, 80, 60);
    RenderHandle handle{VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, window};
    const Source picture = noise(40, 30, 3);
};

TEST_F(Calls, PortsMustExist) {
    tagVRRotation record = rotation(90);
    record.axes = &record.axis;
    const VRDrawCallBack callback = [](void*, uint32_t, uint32_t, void*, uint32_t, uint32_t) {};
    ASSERT_EQ(handle.update(picture), 1);
    EXPECT_EQ(VR_DelSubPort(handle.get(), 5), 0);
    EXPECT_EQ(VR_SetVerticalSyncPeriod(handle.get(), 5, 1), 0);
    EXPECT_EQ(VR_SetCallBack(handle.get(), 5, 1, callback, nullptr), 0);
    EXPECT_EQ(VR_Display(handle.get(), 5, window), 0);
    EXPECT_EQ(VR_WndResolutionChange(handle.get(), 5, &kAll), 0);
    EXPECT_EQ(VR_SetDisplayRect(handle.get(), 5, &kAll, &kAll), 0);
    EXPECT_EQ(VR_Rotate(handle.get(), 5, &record), 0);
    EXPECT_EQ(VR_AddSubPort(handle.get(), window, 5, 0), 1);
    EXPECT_EQ(VR_Rotate(handle.get(), 5, &record), 1);
    EXPECT_EQ(VR_SetVerticalSyncPeriod(handle.get(), 5, 0xFFFFFFFF), 1);
    EXPECT_EQ(VR_Display(handle.get(), 5, 0), 1);
    EXPECT_EQ(VR_DelSubPort(handle.get(), 5), 1);
    EXPECT_EQ(VR_DelSubPort(handle.get(), 5), 0);
}

TEST_F(Calls, PortsAreLimited) {
    for (uint32_t port = 1; port < 64; ++port) {
        ASSERT_EQ(VR_AddSubPort(handle.get(), window, port * 1000, 0), 1) << port;
    }
    EXPECT_EQ(VR_AddSubPort(handle.get(), window, 3, 0), 0);
    EXPECT_EQ(VR_AddSubPort(handle.get(), window, 1000, 0), 1) << "one that is there may be added again";
    EXPECT_EQ(VR_DelSubPort(handle.get(), 1000), 1);
    EXPECT_EQ(VR_AddSubPort(handle.get(), window, 3, 0), 1);
}

TEST_F(Calls, APortMayGetItsWindowLater) {
    ASSERT_EQ(handle.update(picture), 1);
    ASSERT_EQ(VR_AddSubPort(handle.get(), 0, 9, 0), 1);
    EXPECT_EQ(VR_Display(handle.get(), 9, 0), 0);
    EXPECT_EQ(VR_Display(handle.get(), 9, window), 1);
    EXPECT_EQ(VR_Display(handle.get(), 9, 0), 1);
}

TEST_F(Calls, AddingAPortAgainKeepsItsSettings) {
    ASSERT_EQ(handle.update(picture), 1);
    ASSERT_EQ(turn(handle.get(), 180), 1);
    const xcb_window_t other = client.makeWindow(300, 10, 90, 70);
    ASSERT_EQ(VR_AddSubPort(handle.get(), other, kPort, 0), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(becomes(client, 300, 10, expected(picture, 90, 70, {kAll, kAll, 2}), 0));
}

TEST_F(Calls, WindowNumbersHave32Bits) {
    ASSERT_EQ(handle.update(picture), 1);
    const uint64_t large = (uint64_t{1} << 32) | window;
    EXPECT_EQ(VR_AddSubPort(handle.get(), large, 1, 0), 0);
    EXPECT_EQ(VR_Display(handle.get(), kPort, large), 0);
    EXPECT_EQ(handle.display(), 1) << "the port keeps its window";
}

TEST_F(Calls, FramesMustHaveASize) {
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), nullptr, 8, 8, 0), 0);
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), kPixels, 0, 8, 0), 0);
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), kPixels, 8, 0, 0), 0);
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), kPixels, 0xFFFFFFFF, 0xFFFFFFFF, 0), 0);
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), kPixels, 0x80000000, 2, 0), 0);
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), kPixels, (1U << 20) + 1, 1, 0), 0);
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), kPixels, 1U << 20, 1U << 20, 0), 0);
    EXPECT_EQ(handle.display(), 0) << "none of these is a picture";
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), kPixels, 1, 1, 0), 1);
    EXPECT_EQ(handle.display(), 1);
}

TEST_F(Calls, ARefusedFrameLeavesTheLast) {
    ASSERT_EQ(handle.update(picture), 1);
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), nullptr, 40, 30, 0), 0);
    EXPECT_EQ(VR_UpdateFrameData(handle.get(), kPixels, 0, 0, 0), 0);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(becomes(client, 10, 10, expected(picture, 80, 60, {}), 0));
}

TEST_F(Calls, PixelsAreTakenOverDuringTheCall) {
    Source changing = picture;
    ASSERT_EQ(handle.update(changing), 1);
    ASSERT_EQ(handle.display(), 1);
    for (uint8_t& byte : changing.bytes) {
        byte = 0;
    }
    client.fill(window, 0xFF0000);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(becomes(client, 10, 10, expected(picture, 80, 60, {}), 0));
}

TEST_F(Calls, BadRectanglesAreRefusedAndChangeNothing) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const tagVRRectF part{0.5F, 1, 0, 0.5F};
    ASSERT_EQ(handle.update(picture), 1);
    ASSERT_EQ(VR_SetDisplayRect(handle.get(), kPort, &part, &kAll), 1);
    EXPECT_EQ(VR_SetDisplayRect(handle.get(), kPort, nullptr, &kAll), 0);
    EXPECT_EQ(VR_SetDisplayRect(handle.get(), kPort, &kAll, nullptr), 0);
    EXPECT_EQ(VR_WndResolutionChange(handle.get(), kPort, nullptr), 0);
    for (const tagVRRectF& bad : {tagVRRectF{0, 0, 0, 0}, tagVRRectF{1, 0, 0, 1}, tagVRRectF{0, 1, 1, 0},
                                  tagVRRectF{nan, 1, 0, 1}, tagVRRectF{0, 1, 0, infinity}}) {
        EXPECT_EQ(VR_SetDisplayRect(handle.get(), kPort, &bad, &kAll), 0);
        EXPECT_EQ(VR_SetDisplayRect(handle.get(), kPort, &kAll, &bad), 0) << "also not half of it";
        EXPECT_EQ(VR_WndResolutionChange(handle.get(), kPort, &bad), 0);
    }
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(becomes(client, 10, 10, expected(picture, 80, 60, {part, kAll, 0}), 0));
}

TEST_F(Calls, AnglesAreNotReducedAndSnapToQuarters) {
    ASSERT_EQ(handle.update(picture), 1);
    const float degrees[] = {90, 450, 810, -270, 100, 61, -1000000 * 90.0F + 90};
    for (const float angle : degrees) {
        ASSERT_EQ(turn(handle.get(), 0), 1);
        ASSERT_EQ(turn(handle.get(), angle), 1);
        ASSERT_EQ(handle.display(), 1);
        EXPECT_TRUE(becomes(client, 10, 10, expected(picture, 80, 60, {kAll, kAll, 1}), 5)) << angle;
    }
    EXPECT_EQ(turn(handle.get(), std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(VR_Rotate(handle.get(), kPort, nullptr), 0);
    tagVRRotation tilted = rotation(180);
    tilted.axes = &tilted.axis;
    tilted.axis.x = 1;
    EXPECT_EQ(VR_Rotate(handle.get(), kPort, &tilted), 0);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(becomes(client, 10, 10, expected(picture, 80, 60, {kAll, kAll, 1}), 5));
}

/* ---- the callback ---- */

struct Seen {
    std::atomic<int> calls{0};
    std::thread::id thread;
    uint32_t port = 0;
    uint32_t mode = 0;
    uintptr_t drawable = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    void* handle = nullptr;
    uint32_t destroyed = 2;
};

void note(void* user, uint32_t port, uint32_t mode, void* drawable, uint32_t width, uint32_t height) {
    auto* seen = static_cast<Seen*>(user);
    seen->thread = std::this_thread::get_id();
    seen->port = port;
    seen->mode = mode;
    seen->drawable = reinterpret_cast<uintptr_t>(drawable);
    seen->width = width;
    seen->height = height;
    ++seen->calls;
}

TEST_F(Calls, TheCallbackComesAfterEachDrawingOnTheCallersThread) {
    Seen seen;
    ASSERT_EQ(VR_SetCallBack(handle.get(), kPort, 1, note, &seen), 1);
    EXPECT_EQ(handle.display(), 0);
    EXPECT_EQ(seen.calls, 0) << "nothing was drawn";
    ASSERT_EQ(handle.update(picture), 1);
    EXPECT_EQ(seen.calls, 0);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_EQ(seen.calls, 1);
    EXPECT_EQ(seen.thread, std::this_thread::get_id());
    EXPECT_EQ(seen.port, kPort);
    EXPECT_EQ(seen.mode, 1U);
    EXPECT_EQ(seen.drawable, window);
    EXPECT_EQ(seen.width, 80U);
    EXPECT_EQ(seen.height, 60U);
    EXPECT_EQ(VR_Display(handle.get(), kPort, 0x7FFFFFF), 0);
    EXPECT_EQ(seen.calls, 1) << "no drawing, no call";
}

TEST_F(Calls, TheCallbackWantsModeOneAndAFunction) {
    Seen seen;
    EXPECT_EQ(VR_SetCallBack(handle.get(), kPort, 0, note, &seen), 0);
    EXPECT_EQ(VR_SetCallBack(handle.get(), kPort, 2, note, &seen), 0);
    EXPECT_EQ(VR_SetCallBack(handle.get(), kPort, 1, nullptr, &seen), 0);
    ASSERT_EQ(handle.update(picture), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_EQ(seen.calls, 0);
}

TEST_F(Calls, TheCallbackMayCallTheLibrary) {
    struct Inner {
        void* handle;
        const Source* picture;
        int32_t updated = 0;
        int32_t turned = 0;
        int32_t removed = 0;
    } inner{handle.get(), &picture};
    const VRDrawCallBack callback = [](void* user, uint32_t port, uint32_t, void*, uint32_t, uint32_t) {
        auto* in = static_cast<Inner*>(user);
        in->updated = VR_UpdateFrameData(in->handle, in->picture->bytes.data(), 40, 30, 0);
        in->turned = turn(in->handle, 90);
        in->removed = VR_DelSubPort(in->handle, port);
    };
    ASSERT_EQ(VR_SetCallBack(handle.get(), kPort, 1, callback, &inner), 1);
    ASSERT_EQ(handle.update(picture), 1);
    EXPECT_EQ(handle.display(), 1);
    EXPECT_EQ(inner.updated, 1);
    EXPECT_EQ(inner.turned, 1);
    EXPECT_EQ(inner.removed, 1);
    EXPECT_EQ(handle.display(), 0);
}

TEST_F(Calls, TheCallbackMayDestroyItsHandle) {
    Seen seen;
    seen.handle = handle.get();
    const VRDrawCallBack callback = [](void* user, uint32_t, uint32_t, void*, uint32_t, uint32_t) {
        auto* s = static_cast<Seen*>(user);
        s->destroyed = VR_DestroyHandle(s->handle);
    };
    ASSERT_EQ(VR_SetCallBack(handle.get(), kPort, 1, callback, &seen), 1);
    ASSERT_EQ(handle.update(picture), 1);
    EXPECT_EQ(handle.display(), 1);
    EXPECT_EQ(seen.destroyed, 1U);
    EXPECT_EQ(handle.display(), 0);
}

TEST_F(Calls, DestroyingWaitsForACallbackThatRuns) {
    struct Gate {
        std::promise<void> entered;
        std::promise<void> leave;
        std::atomic<bool> left{false};
    } gate;
    const VRDrawCallBack callback = [](void* user, uint32_t, uint32_t, void*, uint32_t, uint32_t) {
        auto* g = static_cast<Gate*>(user);
        g->entered.set_value();
        g->leave.get_future().wait();
        g->left = true;
    };
    ASSERT_EQ(VR_SetCallBack(handle.get(), kPort, 1, callback, &gate), 1);
    ASSERT_EQ(handle.update(picture), 1);
    std::thread drawing([&] { EXPECT_EQ(handle.display(), 1); });
    gate.entered.get_future().wait();
    std::atomic<bool> destroyed{false};
    std::thread destroying([&] {
        EXPECT_EQ(VR_DestroyHandle(handle.get()), 1U);
        EXPECT_TRUE(gate.left);
        destroyed = true;
    });
    // The handle is out of use at once, even while the other call is on its way out.
    EXPECT_TRUE(eventually([&] { return handle.update(picture) == 0; }));
    EXPECT_FALSE(destroyed);
    gate.leave.set_value();
    destroying.join();
    drawing.join();
    EXPECT_TRUE(destroyed);
}

/* A drawing that waits for its turn comes back with the handle's end, not after a patience of seconds. */
TEST_F(Calls, DestroyingEndsTheDrawingsThatWait) {
    const auto begin = std::chrono::steady_clock::now();
    for (int round = 0; round < 100; ++round) {
        const RenderHandle destroyed(VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, window);
        ASSERT_EQ(destroyed.update(picture), 1);
        std::atomic<int> underWay{0};
        std::vector<std::thread> drawers;
        for (int i = 0; i < 3; ++i) {
            drawers.emplace_back([&] {
                while (destroyed.display() == 1) {
                    ++underWay;
                }
            });
        }
        EXPECT_TRUE(eventually([&] { return underWay > 3; }));
        EXPECT_EQ(VR_DestroyHandle(destroyed.get()), 1U);
        for (std::thread& drawer : drawers) {
            drawer.join();
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

/* ---- the display ---- */

TEST(Engine, OpenGlThatIsEmulatedGivesWayToSoftware) {
    const XClient client;
    const xcb_window_t window = client.makeWindow(10, 10, 80, 60);
    const Source picture = noise(40, 30, 3);
    {
        const EnvironmentChange plain("KOLT_RENDER_FORCE_GL", nullptr);
        const RenderHandle handle(VR_PIXEL_RGB8, VR_ENGINE_OPENGL, window);
        ASSERT_EQ(handle.update(picture), 1);
        ASSERT_EQ(handle.display(), 1);
        EXPECT_TRUE(becomes(client, 10, 10, expected(picture, 80, 60, {}), 0));
        EXPECT_TRUE(client.children(window).empty()) << "software draws into the window itself";
    }
    {
        const EnvironmentChange forced("KOLT_RENDER_FORCE_GL", "1");
        const RenderHandle handle(VR_PIXEL_RGB8, VR_ENGINE_OPENGL, window);
        ASSERT_EQ(handle.update(picture), 1);
        ASSERT_EQ(handle.display(), 1);
        EXPECT_EQ(client.children(window).size(), 1U) << "OpenGL into a child";
        EXPECT_TRUE(becomes(client, 10, 10, expected(picture, 80, 60, {}), 0));
    }
    {
        const EnvironmentChange forced("KOLT_RENDER_FORCE_GL", "1");
        const RenderHandle handle(VR_PIXEL_RGB8, VR_ENGINE_SOFTWARE, window);
        ASSERT_EQ(handle.update(picture), 1);
        ASSERT_EQ(handle.display(), 1);
        EXPECT_TRUE(client.children(window).empty()) << "engine 2 is software whatever is forced";
    }
}

TEST(Engine, APictureTooLargeForATextureIsDrawnInSoftware) {
    const EnvironmentChange forced("KOLT_RENDER_FORCE_GL", "1");
    const XClient client;
    const xcb_window_t window = client.makeWindow(10, 10, 300, 40);
    const RenderHandle handle(VR_PIXEL_MONO8, VR_ENGINE_OPENGL, window);
    Source large = noise(150000, 2, 1);
    tagVRRectF start{0, 1, 0, 300.0F / 150000};
    ASSERT_EQ(VR_SetDisplayRect(handle.get(), kPort, &start, &kAll), 1);
    ASSERT_EQ(handle.update(large), 1);
    ASSERT_EQ(handle.display(), 1);
    EXPECT_TRUE(client.children(window).empty());
    EXPECT_TRUE(becomes(client, 10, 10, expected(large, 300, 40, {start, kAll, 0}), 0));
}

} // namespace
} // namespace kolt::tests
