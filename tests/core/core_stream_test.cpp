// Streams: counts, rates, triggers, sizes, losses.
#include "core/CoreFixture.h"

#include "Common/QLocalCfg.h"

#include <cmath>
#include <thread>

namespace core {
namespace {

using Streaming = Fixture;

TEST_F(Streaming, FramesRatesAndState) {
    StartDevice([](vcam::Config& c) { c.frameRate = 50; });
    ASSERT_NO_FATAL_FAILURE(Stream());
    EXPECT_TRUE(device->IsStreaming());
    ASSERT_TRUE(WaitForFrames(100));
    EXPECT_TRUE(WaitUntil([&] { return std::abs(camera->GetActualFrameRate() - 50.0f) < 5.0f; }))
        << camera->GetActualFrameRate();
    EXPECT_EQ(camera->GetWidth(), 640u);
    EXPECT_EQ(camera->GetHeight(), 480u);
    constexpr double kMegabits = 640 * 480 * 8 * 50 / 1e6;
    EXPECT_TRUE(WaitUntil([&] { return std::abs(camera->GetActualBandWidth() - kMegabits) < 40; }))
        << camera->GetActualBandWidth();
    EXPECT_EQ(camera->StopGettingFrame(), 0);
    EXPECT_TRUE(WaitUntil([&] { return !device->IsStreaming(); }));
}

TEST_F(Streaming, TheDisplayReachesTheConfiguredRate) {
    StartDevice([](vcam::Config& c) { c.frameRate = 100; });
    ASSERT_NO_FATAL_FAILURE(Stream());
    const Window window(640, 480);
    camera->SetPlayWnd(window.Id());
    EXPECT_TRUE(WaitUntil([&] { return camera->GetActualDisplayRate() >= 28.0f; }))
        << camera->GetActualDisplayRate();
}

TEST_F(Streaming, ASlowCameraIsDrawnFrameByFrame) {
    StartDevice([](vcam::Config& c) { c.frameRate = 5; });
    ASSERT_NO_FATAL_FAILURE(Stream());
    const Window window(640, 480);
    camera->SetPlayWnd(window.Id());
    EXPECT_TRUE(WaitUntil([&] { return camera->GetActualDisplayRate() >= 4.0f; }))
        << "the display isn't starved";
}

TEST_F(Streaming, SoftwareTrigger) {
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_EQ(camera->SetEnumerationNodePropertyValue("TriggerMode", 1), 1);
    int mode = 0;
    ASSERT_EQ(camera->GetTriggerMode(mode), 1);
    ASSERT_EQ(mode, 1);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    EXPECT_EQ(camera->GetRecvFrameNum(), 0) << "the free run has stopped";
    for (int i = 1; i <= 3; ++i) {
        ASSERT_EQ(camera->OnTimerSoftwareTrig(), 1);
        ASSERT_TRUE(WaitForFrames(i));
    }
    EXPECT_EQ(camera->GetRecvFrameNum(), 3);
}

TEST_F(Streaming, ResentPacketsLoseNoFrame) {
    StartDevice([](vcam::Config& c) { c.faults.lossPerMille = 5; });
    QLocalCfg::Instance()->SetAutoCheckThrowFrame(true);
    ASSERT_NO_FATAL_FAILURE(Stream());
    ASSERT_TRUE(WaitForFrames(200));
    // Waiting for a trigger the camera begins no more, and all that it has sent arrives.
    ASSERT_EQ(camera->SetEnumerationNodePropertyValue("TriggerMode", 1), 1);
    EXPECT_TRUE(WaitUntil([&] {
        const vcam::Counters counters = device->GetCounters();
        return counters.framesStarted == counters.framesCompleted + counters.framesAborted &&
               camera->GetRecvFrameNum() + 2 >= static_cast<int64_t>(counters.framesCompleted);
    })) << Story();
    ASSERT_EQ(camera->StopGettingFrame(), 0);
    EXPECT_GT(device->GetCounters().packetsDropped, 0u);
}

TEST_F(Streaming, AChangedSizeInTheStream) {
    struct Seen {
        std::atomic<int> width{0};
    } seen;
    ASSERT_NO_FATAL_FAILURE(Connect());
    camera->SetFrameSizeChangedCallBack(
        [](int width, int, void* user) { static_cast<Seen*>(user)->width = width; }, &seen);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    ASSERT_TRUE(WaitUntil([&] { return seen.width == 640; }));
    vcam::Faults faults;
    faults.changedWidth = 320;
    faults.changedHeight = 240;
    device->SetFaults(faults);
    EXPECT_TRUE(WaitUntil([&] { return seen.width == 320; }));
    EXPECT_TRUE(WaitUntil([&] { return camera->GetHeight() == 240; }));
}

TEST_F(Streaming, TransportParametersAreLockedWhileStreaming) {
    ASSERT_NO_FATAL_FAILURE(Stream());
    EXPECT_EQ(camera->SetIntegerNodePropertyValue("Width", 320), 0);
    char remark[513] = {};
    EXPECT_NE(camera->GetLastErrorRemark(remark, 513), nullptr);
    ASSERT_EQ(camera->StopGettingFrame(), 0);
    EXPECT_EQ(camera->SetIntegerNodePropertyValue("Width", 320), 1);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    EXPECT_TRUE(WaitUntil([&] { return camera->GetWidth() == 320; }));
}

TEST_F(Streaming, RoundsOfStartAndStopLeakNothing) {
    camera->SetDisplayMode(10); // the render handle, with its thread, comes and goes at moments of its own
    ASSERT_NO_FATAL_FAILURE(Stream());
    ASSERT_TRUE(WaitForFrames(1));
    ASSERT_EQ(camera->StopGettingFrame(), 0);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    ASSERT_TRUE(WaitForFrames(1));
    ASSERT_EQ(camera->StopGettingFrame(), 0);
    const int descriptors = OpenDescriptors();
    const int threads = Threads();
    RoundTimes times;
    for (int round = 0; round < Rounds(20, 500); ++round) {
        times.Begin();
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0) << round;
        ASSERT_TRUE(WaitForFrames(1)) << "round " << round << "; " << Story();
        ASSERT_EQ(camera->StopGettingFrame(), 0) << round;
        times.End();
    }
    times.ExpectNoGrowth();
    // A thread leaves /proc a moment after it was joined.
    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() <= descriptors && Threads() <= threads; }))
        << OpenDescriptors() << " of " << descriptors << " descriptors, " << Threads() << " of " << threads
        << " threads";
}

TEST_F(Streaming, RoundsOfOpenAndCloseLeakNothing) {
    ASSERT_NO_FATAL_FAILURE(Connect());
    camera->CloseCamera();
    ASSERT_NO_FATAL_FAILURE(Connect());
    camera->CloseCamera();
    const int descriptors = OpenDescriptors();
    const int threads = Threads();
    RoundTimes times;
    for (int round = 0; round < Rounds(10, 200); ++round) {
        times.Begin();
        ASSERT_EQ(camera->OpenCamera(), 0) << round;
        ASSERT_EQ(camera->CloseCamera(), 0) << round;
        times.End();
    }
    times.ExpectNoGrowth();
    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() <= descriptors && Threads() <= threads; }))
        << OpenDescriptors() << " of " << descriptors << " descriptors, " << Threads() << " of " << threads
        << " threads";
}

} // namespace
} // namespace core
