#include "QCameraFixture.h"

#include <cmath>
#include <cstring>
#include <thread>

namespace {

using Strings = std::vector<std::string>;

class Stream : public QCameraFixture {
protected:
    std::vector<uint8_t> GrabBuffer() {
        std::vector<uint8_t> bytes(camera->GetFrameSize());
        camera->GetFrameBuf(bytes.data(), 0);
        return bytes;
    }
};

TEST_F(Stream, StartCallsInOrder) {
    Open();
    doubles.ForgetCalls();
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    const Strings calls = doubles.Calls({"OV_CC_Start", "OV_MP_Destroy", "VR_Del"});
    EXPECT_EQ(calls, (Strings{"OV_MP_DestroyHandle", "OV_CC_StartGrabbing"}));
    EXPECT_EQ(camera->GetCameraState(), 2);
    EXPECT_EQ(Register(reg::TLParamsLocked), 1u);
    EXPECT_EQ(camera->GetFrameSize(), 64u * 48u);
    EXPECT_EQ(camera->GetPixelType(), OV_GVSP_MONO8);
}

TEST_F(Stream, StopCallsInOrder) {
    Start();
    doubles.ForgetCalls();
    EXPECT_EQ(camera->StopGettingFrame(), 0);
    EXPECT_EQ(doubles.Calls({"OV_CC_Stop", "OV_CC_Close"}), (Strings{"OV_CC_StopGrabbing"}));
    EXPECT_EQ(camera->GetCameraState(), 1);
    EXPECT_EQ(Register(reg::TLParamsLocked), 0u);
    EXPECT_EQ(camera->StopGettingFrame(), -17) << "not grabbing";
}

TEST_F(Stream, StopOfAClosedCamera) {
    EXPECT_EQ(camera->StopGettingFrame(), -17);
}

TEST_F(Stream, ARefusedStopLeavesTheStreamRunning) {
    Start();
    doubles.SetResult("OV_CC_StopGrabbing", 0x80000206);
    EXPECT_EQ(camera->StopGettingFrame(), -56);
    EXPECT_EQ(camera->GetCameraState(), 2);
    PushAndWait(Frame(3));
    doubles.SetResult("OV_CC_StopGrabbing", 0);
    EXPECT_EQ(camera->StopGettingFrame(), 0);
}

TEST_F(Stream, ARefusedStart) {
    Open();
    doubles.SetResult("OV_CC_StartGrabbing", 0x80000203);
    EXPECT_EQ(camera->OnStartGettingFrame(true), -103);
    EXPECT_EQ(camera->GetCameraState(), 1);
    EXPECT_EQ(Register(reg::TLParamsLocked), 0u);
    EXPECT_EQ(doubles.CountOf("OV_CC_GetOneFrameTimeout"), 0);
    doubles.SetResult("OV_CC_StartGrabbing", 0);
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    PushAndWait(Frame(1));
}

// --- without memory
// ---------------------------------------------------------------------------------------------------------

TEST_F(Stream, WithoutItsBuffersTheStreamDoesNotStart) {
    Open();
    SetRegister(reg::PixelFormat, 0x01080009); // four bytes a pixel on the display
    for (const size_t from : {size_t{64} * 48, size_t{64} * 48 * 4}) {
        support::FailAllocations(from);
        EXPECT_EQ(camera->OnStartGettingFrame(true), -2) << from;
        EXPECT_EQ(camera->GetCameraState(), 1);
    }
    EXPECT_EQ(doubles.CountOf("OV_CC_StartGrabbing"), 0);
    EXPECT_EQ(camera->SaveCurrentFrame(), -4);
    support::FailAllocations({});
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    PushAndWait(Frame(1));
}

TEST_F(Stream, WithoutAQueueNothingIsGrabbed) {
    Open();
    support::FailAllocations(size_t{64} * 48, 2); // grab and display buffer come first
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    doubles.PushFrame(Frame(1));
    camera->SetImgSave();
    SleepEx(30);
    EXPECT_EQ(camera->GetRecvFrameNum(), 0);
    EXPECT_EQ(camera->StopGettingFrame(), 0);
    support::FailAllocations({});
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetRecvFrameNum() == 1; }));
}

TEST_F(Stream, WithoutASaveBufferThePictureGoesOn) {
    Open();
    const int nodes = QLocalCfg::Instance()->GetImgSaveBufferSize();
    support::FailAllocations(size_t{64} * 48, 2 + nodes); // grab and display buffer, the queue's nodes
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    camera->SetPlayWnd(0x77);
    camera->SetImgSave();
    for (int i = 0; i < nodes + 2; ++i)
        PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitForCount("VR_Display", 1));
    EXPECT_EQ(camera->SaveCurrentFrame(), -4);
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().queued == nodes + 2; }));
    EXPECT_EQ(camera->StopGettingFrame(), 0);
    const _CAMERA_COUNTERS_ counters = camera->GetCounters();
    EXPECT_EQ(counters.overwritten, 2);
    EXPECT_EQ(counters.cleared, nodes);
    support::FailAllocations({});
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->SaveCurrentFrame() == 0; }));
}

TEST_F(Stream, FramesThatComeAtOnceAreCounted) {
    Open();
    for (int round = 0; round < 100; ++round) {
        doubles.PushFrame(Frame(1));
        doubles.PushFrame(Frame(2));
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetRecvFrameNum() == 2; }))
            << camera->GetRecvFrameNum() << " in round " << round;
        ASSERT_EQ(camera->StopGettingFrame(), 0);
        EXPECT_EQ(camera->GetRecvFrameNum(), 2) << "stays";
    }
}

TEST_F(Stream, ACompressedCameraCantStart) {
    Open();
    SetRegister(reg::ImageCompressionMode, 1);
    EXPECT_EQ(camera->OnStartGettingFrame(true), -28);
    EXPECT_EQ(camera->GetCameraState(), 1);
    EXPECT_EQ(doubles.CountOf("OV_CC_StartGrabbing"), 0);
}

TEST_F(Stream, AStrangeFormatTakesThePayloadSize) {
    Open();
    SetRegister(reg::PixelFormat, 0x01100025);
    SetRegister(reg::PayloadSize, 7777);
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    EXPECT_EQ(camera->GetFrameSize(), 7777u);
    PushAndWait(Frame(1, 64, 48, 7777));
    SleepEx(60);
    EXPECT_EQ(doubles.CountOf("VR_CreateHandle"), 0) << "streams with nothing on screen";
}

TEST_F(Stream, AStrangeFormatWithoutAPayloadSize) {
    Script(support::CameraXml({"PayloadSize"}));
    Open();
    SetRegister(reg::PixelFormat, 0x01100025);
    EXPECT_EQ(camera->OnStartGettingFrame(true), -20);
}

TEST_F(Stream, AnUnreadableFormatKeepsTheSizes) {
    Script(support::CameraXml({"PixelFormat"}));
    Open();
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    EXPECT_EQ(camera->GetPixelType(), -1);
    EXPECT_EQ(camera->GetFrameSize(), 0u);
}

TEST_F(Stream, StartAgainWhileGrabbingOnlyClears) {
    Start();
    PushAndWait(Frame(1));
    doubles.ForgetCalls();
    EXPECT_EQ(camera->OnStartGettingFrame(false), 0);
    EXPECT_EQ(camera->GetRecvFrameNum(), 1);
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    EXPECT_EQ(camera->GetRecvFrameNum(), 0);
    EXPECT_EQ(doubles.CountOf("OV_CC_StartGrabbing"), 0);
}

TEST_F(Stream, FramesArriveInTheGrabBuffer) {
    Start();
    PushAndWait(Frame(0x5A));
    EXPECT_EQ(camera->GetRecvFrameNum(), 1);
    EXPECT_TRUE(camera->IsHaveFrameData());
    EXPECT_EQ(GrabBuffer(), std::vector<uint8_t>(64 * 48, 0x5A));
    EXPECT_EQ(camera->GetWidth(), 64u);
    EXPECT_EQ(camera->GetHeight(), 48u);
    EXPECT_EQ(doubles.LastFrameCapacity(), 64u * 48u + 2048u);
}

TEST_F(Stream, AfterAStopTheLastFrameAndTheCountStay) {
    Start();
    PushAndWait(Frame(0x5A));
    camera->StopGettingFrame();
    EXPECT_EQ(camera->GetRecvFrameNum(), 1);
    EXPECT_EQ(GrabBuffer()[0], 0x5A);
    EXPECT_TRUE(camera->IsHaveFrameData());
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    EXPECT_EQ(camera->GetRecvFrameNum(), 0);
    EXPECT_EQ(GrabBuffer()[0], 0) << "a new buffer is cleared";
}

TEST_F(Stream, ShortTimeoutsWhileFramesAreRare) {
    Start();
    ASSERT_TRUE(doubles.WaitUntil([&] { return !doubles.FrameTimeouts().empty(); }));
    EXPECT_EQ(doubles.FrameTimeouts().front(), 100u);
    doubles.SetFreeRun(Frame(1), 5000);
    ASSERT_TRUE(doubles.WaitUntil([&] { return doubles.FrameTimeouts().back() == 1000; }))
        << "the long one above 10 frames per second";
}

TEST_F(Stream, FailuresAreRetriedAndCounted) {
    Start();
    doubles.SetResult("OV_CC_GetOneFrameTimeout", 0x80000206);
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().grabErrors >= 3; }));
    doubles.SetResult("OV_CC_GetOneFrameTimeout", 0);
    PushAndWait(Frame(1));
}

TEST_F(Stream, TimeoutsAreNoErrors) {
    Start();
    doubles.SetResult("OV_CC_GetOneFrameTimeout", 0x80000007);
    ASSERT_TRUE(doubles.WaitForCount("OV_CC_GetOneFrameTimeout", 5));
    EXPECT_EQ(camera->GetCounters().grabErrors, 0);
}

TEST_F(Stream, AFrameBeyondTheSlackIsCounted) {
    Start();
    doubles.PushFrame(Frame(1, 64, 48, 64 * 48 + 2049));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().grabErrors == 1; }));
    PushAndWait(Frame(1, 64, 48, 64 * 48 + 2048));
}

struct SizeSeen {
    std::atomic<int> width{0}, height{0}, calls{0};
};

TEST_F(Stream, TheFirstFrameRaisesTheSizeChangedCallback) {
    SizeSeen seen;
    camera->SetFrameSizeChangedCallBack(
        [](int width, int height, void* user) {
            auto* s = static_cast<SizeSeen*>(user);
            s->width = width;
            s->height = height;
            ++s->calls;
        },
        &seen);
    Start();
    SleepEx(40);
    EXPECT_EQ(seen.calls, 0) << "the display waits for the first frame";
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return seen.calls == 1; }));
    EXPECT_EQ(seen.width, 64);
    EXPECT_EQ(seen.height, 48);
    PushAndWait(Frame(1));
    PushAndWait(Frame(2, 32, 16));
    ASSERT_TRUE(doubles.WaitUntil([&] { return seen.calls == 2; })) << "a changed size within the stream";
    EXPECT_EQ(seen.width, 32);
    EXPECT_EQ(seen.height, 16);
}

TEST_F(Stream, TriggerModeAndPixelSizeAreReadAtTheStart) {
    SetRegister(reg::TriggerMode, 6);
    SetRegister(reg::PixelSize, 12);
    Start();
    PushAndWait(Frame(1));
    // 12 bits a pixel show in the bandwidth.
    doubles.SetFreeRun(Frame(1), 2000);
    EXPECT_TRUE(doubles.WaitUntil([&] { // two readings, between which the rate may change
        const double band = camera->GetActualBandWidth();
        const double wanted = 64 * 48 * 12 * camera->GetActualFrameRate() / 1e6;
        return band > 0 && std::abs(band - wanted) < 0.1 * wanted;
    })) << camera->GetActualBandWidth()
        << " Mbps at " << camera->GetActualFrameRate() << " fps";
}

TEST_F(Stream, TheSmallerRateIsTold) {
    Start();
    doubles.SetFreeRun(Frame(1), 2000);
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetActualFrameRate() > 20; }));
    double rate = 12.5;
    uint64_t bits = 0;
    std::memcpy(&bits, &rate, 8);
    doubles.Port().StoreInteger(reg::ResultingFrameRate, 8, bits, support::MemoryPort::Order::Little);
    EXPECT_TRUE(doubles.WaitUntil([&] { return camera->GetActualFrameRate() == 12.5f; }));
    doubles.StopFreeRun();
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetActualFrameRate() == 0.0f; })) << "decays";
    EXPECT_GT(camera->GetActualDisplayRate(), 0.0f) << "the display rate keeps its last value";
}

TEST_F(Stream, WithoutATellingNodeTheMeasuredRateCounts) {
    Script(support::CameraXml({"ResultingFrameRate"}));
    Start();
    doubles.SetFreeRun(Frame(1), 2000);
    EXPECT_TRUE(doubles.WaitUntil([&] { return camera->GetActualFrameRate() > 20; }));
}

TEST_F(Stream, TheLibrarysCountsAreTold) {
    _OV_MATCH_INFO_NET_DETECT_ counts{};
    EXPECT_EQ(camera->GetMatchInfoNetDetect(&counts), -4) << "not connected";
    Start();
    EXPECT_EQ(camera->GetMatchInfoNetDetect(nullptr), -4);
    ASSERT_EQ(camera->GetMatchInfoNetDetect(&counts), 0);
    EXPECT_EQ(counts.receivedBytes, 123456789012);
    EXPECT_EQ(counts.lostPackets, 17);
    doubles.SetResult("OV_CC_GetAllMatchInfo", OV_STATUS_RESOURCE);
    EXPECT_EQ(static_cast<uint32_t>(camera->GetMatchInfoNetDetect(&counts)), OV_STATUS_RESOURCE);
}

TEST_F(Stream, FiveHundredRounds) {
    Open();
    doubles.SetFreeRun(Frame(1), 200);
    for (int round = 0; round < 500; ++round) {
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
        ASSERT_EQ(camera->StopGettingFrame(), 0);
    }
    EXPECT_LE(doubles.OpenHandles('m'), 1);
    EXPECT_LE(doubles.OpenHandles('v'), 1);
}

TEST_F(Stream, WithoutAThreadTheProcessEnds) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (int after = 0; after < 3; ++after)
        EXPECT_EXIT(
            {
                camera->OpenCamera();
                support::FailThreads(1, after);
                camera->StartShot();
            },
            testing::ExitedWithCode(1), "")
            << after;
}

// --- embedded information on the grab thread
// --------------------------------------------------------------------------------

TEST_F(Stream, EmbeddedInformationOnlyWhileSomebodyLooks) {
    camera->SetOwner(&owner);
    SetRegister(reg::FrameSpecInfoReg, 32);
    Start();
    support::DoubleFrame frame = Frame(0);
    frame.pixels[0] = 77;
    PushAndWait(frame);
    long selector = 0;
    _EMBEDDED_IMAGE_INFO_ info{};
    camera->GetEmbeddedImageInfo(selector, info);
    EXPECT_EQ(info.frameNumber, 0u) << "nobody looks";
    owner.embedded = true;
    PushAndWait(frame);
    ASSERT_TRUE(doubles.WaitUntil([&] {
        camera->GetEmbeddedImageInfo(selector, info);
        return info.frameNumber == 77;
    }));
    EXPECT_EQ(selector, 32);
    // The register is read again only when something asks for it.
    SetRegister(reg::FrameSpecInfoReg, 8);
    PushAndWait(frame);
    camera->GetEmbeddedImageInfo(selector, info);
    EXPECT_EQ(selector, 32);
    camera->SetIntegerNodePropertyValue("FrameSpecInfo_Reg", 8);
    PushAndWait(frame);
    ASSERT_TRUE(doubles.WaitUntil([&] {
        camera->GetEmbeddedImageInfo(selector, info);
        return info.brightness == 77;
    }));
    EXPECT_EQ(info.frameNumber, 0u);
    SetRegister(reg::FrameSpecInfoReg, 0);
    camera->SetBooleanNodePropertyValue("FrameSpecInfo", 1);
    PushAndWait(frame);
    ASSERT_TRUE(doubles.WaitUntil([&] {
        camera->GetEmbeddedImageInfo(selector, info);
        return selector == 0;
    }));
}

TEST_F(Stream, ASelectorThatChangesWhileItIsReadIsReadOnceMore) {
    camera->SetOwner(&owner);
    owner.embedded = true;
    SetRegister(reg::FrameSpecInfoReg, 32);
    Open();
    std::atomic<bool> changed{false};
    doubles.Port().OnAccess([&](bool write, int64_t address, int64_t) {
        // As another thread whose write waits for the end of this reading.
        if (!write && address == reg::FrameSpecInfoReg && !changed.exchange(true))
            camera->RefreshEmbeddedInfo();
    });
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    PushAndWait(Frame(1));
    long selector = 0;
    _EMBEDDED_IMAGE_INFO_ info{};
    ASSERT_TRUE(doubles.WaitUntil([&] {
        camera->GetEmbeddedImageInfo(selector, info);
        return selector == 32;
    }));
    SetRegister(reg::FrameSpecInfoReg, 8);
    PushAndWait(Frame(1));
    EXPECT_TRUE(doubles.WaitUntil([&] {
        camera->GetEmbeddedImageInfo(selector, info);
        return selector == 8;
    }));
    doubles.Port().OnAccess({});
}

} // namespace
