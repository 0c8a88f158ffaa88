#include "QCameraFixture.h"

#include <cstring>

namespace {

using Strings = std::vector<std::string>;

class Display : public QCameraFixture {
protected:
    // Starts, shows in window 0x77 and waits for the first drawing.
    void Show(uint32_t format = 0x01080001) {
        SetRegister(reg::PixelFormat, format);
        Open();
        SetRegister(reg::PixelFormat, format);
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
        camera->SetPlayWnd(0x77);
        doubles.PushFrame(Frame(0x40, 64, 48, camera->GetFrameSize()));
        ASSERT_TRUE(doubles.WaitForCount("VR_Display", 1));
    }
};

TEST_F(Display, MakesTheRenderHandleInOrder) {
    Show();
    EXPECT_EQ(doubles.Calls({"VR_C", "VR_I", "VR_A", "VR_SetV", "VR_SetC"}),
              (Strings{"VR_CreateHandle", "VR_Init", "VR_AddSubPort", "VR_SetVerticalSyncPeriod",
                       "VR_SetCallBack"}));
    EXPECT_EQ(doubles.LastVrFormat(), 0x40000u);
    EXPECT_EQ(doubles.LastVrEngine(), 1u);
    EXPECT_EQ(doubles.LastPictureSize(), (std::pair<uint32_t, uint32_t>{64, 48}));
    EXPECT_EQ(doubles.LastPicture(), std::vector<uint8_t>(64 * 48, 0x40));
    EXPECT_EQ(doubles.LastWindow(), 0x77u);
    EXPECT_EQ(doubles.CountOf("OV_MP_ConvertPixelType"), 0) << "grey goes as it is";
}

TEST_F(Display, EngineTwoFromTheNextStart) {
    Show();
    camera->SetVREngineMode(2);
    EXPECT_FALSE(camera->IsGDIRender());
    camera->StopGettingFrame();
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    EXPECT_TRUE(camera->IsGDIRender());
    doubles.PushFrame(Frame(1));
    EXPECT_TRUE(doubles.WaitUntil([&] { return doubles.LastVrEngine() == 2; }));
}

TEST_F(Display, ChoosingAnEngineRebuildsTheView) {
    int calls = 0;
    camera->SetFrameSizeChangedCallBack([](int, int, void* user) { ++*static_cast<int*>(user); }, &calls);
    camera->SetVREngineMode(1);
    EXPECT_EQ(calls, 1);
    camera->SetFrameSizeChangedCallBack([](int, int, void*) { FAIL() << "without a user pointer"; }, nullptr);
    camera->SetVREngineMode(2);
}

struct FormatRow {
    const char* name;
    uint32_t code;
    uint32_t vr;
    int64_t target; // -1: no conversion
    uint32_t source;
    bool sourceIsFrameSize;
};

void PrintTo(const FormatRow& row, std::ostream* out) {
    *out << row.name;
}

class DisplayFormat : public Display, public testing::WithParamInterface<FormatRow> {};

TEST_P(DisplayFormat, IsConvertedForTheRenderLibrary) {
    const FormatRow& row = GetParam();
    camera->SetBayerInterpolation(2);
    Show(row.code);
    EXPECT_EQ(doubles.LastVrFormat(), row.vr);
    if (row.target < 0) {
        EXPECT_EQ(doubles.CountOf("OV_MP_ConvertPixelType"), 0);
        return;
    }
    const _OV_CONVERT_PIXEL_INFO_ record = doubles.LastConversion();
    EXPECT_EQ(record.destinationType, static_cast<uint32_t>(row.target));
    EXPECT_EQ(record.sourceType, row.source);
    EXPECT_EQ(record.width, 64);
    EXPECT_EQ(record.height, 48);
    EXPECT_EQ(record.sourceLength, camera->GetFrameSize());
    EXPECT_EQ(record.bayerMethod, 2u);
    EXPECT_NE(record.source, record.destination) << "by way of the scratch buffer";
}

INSTANTIATE_TEST_SUITE_P(All, DisplayFormat,
                         testing::Values(FormatRow{"Mono8", 0x01080001, 0x40000, -1, 0, false},
                                         FormatRow{"RGB8", 0x02180014, 0x2000, -1, 0, false},
                                         FormatRow{"Mono10", 0x01100003, 0x40000, 0, 1, false},
                                         FormatRow{"Mono12", 0x01100005, 0x40000, 0, 2, false},
                                         FormatRow{"Mono12Packed", 0x010C0006, 0x40000, 0, 4, false},
                                         FormatRow{"BayerRG8", 0x01080009, 0x2000, 27, 6, true},
                                         FormatRow{"BayerRG12", 0x01100011, 0x2000, 27, 21, true},
                                         FormatRow{"BayerRG12Packed", 0x010C002B, 0x2000, 27, 22, true},
                                         FormatRow{"UYVY", 0x0210001F, 0x2000, 27, 25, false},
                                         FormatRow{"YUYV", 0x02100032, 0x2000, 27, 26, false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Display, EveryFrameIsDrawnOrSkipped) {
    Show();
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().redrawn >= 2; }));
    camera->SetDisplayMode(10);
    for (uint8_t i = 2; i <= 6; ++i)
        PushAndWait(Frame(i));
    EXPECT_GE(camera->GetCounters().undrawn, 4) << "a drawing may have been under way";
    camera->SetDisplayMode(8);
    _CAMERA_COUNTERS_ counters{};
    ASSERT_TRUE(doubles.WaitUntil([&] {
        counters = camera->GetCounters();
        return counters.undrawn == 0 && counters.displayed - counters.redrawn + counters.skipped == 6;
    }));
    EXPECT_EQ(counters.received, 6);
    EXPECT_GE(counters.skipped, 3);
    camera->ClearRevFrameNum();
    EXPECT_EQ(camera->GetCounters().skipped, 0);
    PushAndWait(Frame(7));
    ASSERT_TRUE(doubles.WaitUntil([&] {
        counters = camera->GetCounters();
        return counters.displayed - counters.redrawn + counters.skipped + counters.undrawn == 1;
    }));
}

TEST_F(Display, AFailedConversionStillDraws) {
    doubles.SetResult("OV_MP_ConvertPixelType", 0x80000001);
    Show(0x01080009);
    EXPECT_GE(camera->GetCounters().displayed, 1);
}

TEST_F(Display, AFailedRenderIsRetried) {
    Open();
    doubles.SetResult("VR_CreateHandle", 0);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    camera->SetPlayWnd(0x77);
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitForCount("VR_CreateHandle", 3));
    EXPECT_EQ(doubles.CountOf("VR_UpdateFrameData"), 0);
    doubles.SetResult("VR_CreateHandle", 1);
    EXPECT_TRUE(doubles.WaitForCount("VR_Display", 1));
}

TEST_F(Display, ARenderThatDoesNotBecomeReadyDrawsNothing) {
    Open();
    doubles.SetResult("VR_Init", 0);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitForCount("VR_Init", 1));
    SleepEx(80);
    EXPECT_EQ(doubles.CountOf("VR_UpdateFrameData"), 0);
    EXPECT_EQ(doubles.CountOf("VR_AddSubPort"), 0);
}

TEST_F(Display, ARefusedCallbackToo) {
    Open();
    doubles.SetResult("VR_SetCallBack", 0);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitForCount("VR_SetCallBack", 1));
    SleepEx(80);
    EXPECT_EQ(doubles.CountOf("VR_UpdateFrameData"), 0);
}

TEST_F(Display, AChangedFormatInTheStreamGetsANewHandle) {
    Show();
    SetRegister(reg::PixelFormat, 0x01080009);
    EXPECT_TRUE(doubles.WaitUntil([&] { return doubles.LastVrFormat() == 0x2000; }));
    // The display buffer was made for one byte a pixel: a picture of three isn't read out of it.
    EXPECT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().drawsRefused > 0; }));
}

TEST_F(Display, Modes) {
    Show();
    camera->SetDisplayMode(9);
    EXPECT_EQ(camera->GetConfigRate(), 60);
    camera->SetDisplayMode(77);
    EXPECT_EQ(camera->GetConfigRate(), 60) << "other values do nothing";
    EXPECT_TRUE(camera->IsDisplay());
    camera->SetDisplayMode(10);
    EXPECT_FALSE(camera->IsDisplay());
    EXPECT_EQ(camera->GetConfigRate(), 60);
    SleepEx(60);
    const auto before = camera->GetCounters();
    PushAndWait(Frame(2));
    PushAndWait(Frame(3));
    SleepEx(80);
    EXPECT_EQ(camera->GetCounters().displayed, before.displayed) << "stands still";
    EXPECT_EQ(camera->GetRecvFrameNum(), before.received + 2) << "the grab side goes on";
    camera->SetDisplayMode(8);
    EXPECT_TRUE(camera->IsDisplay());
    EXPECT_EQ(camera->GetConfigRate(), 30);
    EXPECT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().displayed > before.displayed; }));
}

TEST_F(Display, AStoppedStreamIsDrawnOnceInANewWindow) {
    Show();
    camera->StopGettingFrame();
    SleepEx(60);
    doubles.ForgetCalls();
    SleepEx(60);
    EXPECT_EQ(doubles.CountOf("VR_Display"), 0);
    camera->SetPlayWnd(0x88);
    ASSERT_TRUE(doubles.WaitForCount("VR_Display", 1));
    EXPECT_EQ(doubles.LastWindow(), 0x88u);
    SleepEx(80);
    EXPECT_EQ(doubles.CountOf("VR_Display"), 1);
    camera->SetPlayWnd(0);
    SleepEx(80);
    EXPECT_EQ(doubles.CountOf("VR_Display"), 1) << "no window, no refresh";
}

TEST_F(Display, WithoutAWindowNothingIsPresented) {
    Open();
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitForCount("VR_UpdateFrameData", 1));
    EXPECT_EQ(doubles.CountOf("VR_Display"), 0);
    camera->SetDisplayFrame();
    EXPECT_EQ(doubles.CountOf("VR_Display"), 0);
    camera->SubPortDisplay(1, 0x99);
    EXPECT_EQ(doubles.CountOf("VR_Display"), 0);
    camera->SetPlayWnd(0x77);
    camera->SubPortDisplay(1, 0x99);
    EXPECT_GE(doubles.CountOf("VR_Display"), 1);
}

TEST_F(Display, Rectangles) {
    tagVRRectF source{};
    tagVRRectF destination{};
    EXPECT_TRUE(QCamera::SetRect(&source, 0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(source.left, 0.1f);
    EXPECT_EQ(source.right, 0.2f);
    EXPECT_EQ(source.top, 0.3f);
    EXPECT_EQ(source.bottom, 0.4f);
    EXPECT_FALSE(QCamera::SetRect(nullptr, 0, 1, 0, 1));
    EXPECT_EQ(camera->SetDisplayRect(&source, &destination), -4) << "no render handle";
    Show();
    EXPECT_EQ(camera->SetDisplayRect(nullptr, &destination), -4);
    EXPECT_EQ(camera->SetDisplayRect(&source, nullptr), -4);
    EXPECT_EQ(camera->SetDisplayRect(&source, &destination), 0);
    EXPECT_EQ(doubles.LastRects().first.top, 0.3f);
    EXPECT_EQ(camera->SetSecondPortDisplayRect(&source, &destination), 0);
}

TEST_F(Display, Colours) {
    tagVRColor colour{};
    EXPECT_TRUE(QCamera::SetColor(&colour, 0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(colour.red, 0.1f);
    EXPECT_EQ(colour.alpha, 0.4f);
    EXPECT_FALSE(QCamera::SetColor(nullptr, 0, 0, 0, 0));
    EXPECT_EQ(camera->SetBackgroundColor(&colour), 0);
    EXPECT_EQ(camera->GetPointColor(1, 1, &colour), 0);
}

struct AngleRow {
    int turns; // to the left
    bool reverse, half, right90, zoom;
};

TEST_F(Display, AngleTests) {
    const AngleRow rows[] = {
        {0, false, false, false, true},  {1, true, false, false, false},  {2, false, true, false, false},
        {3, true, false, true, false},   {4, false, false, false, true},  {5, true, false, false, false},
        {6, false, true, false, false},  {7, true, false, false, false},  {-1, true, false, true, false},
        {-2, false, true, false, false}, {-3, true, false, false, false}, {-4, false, false, false, true},
    };
    camera->RotateLeft();
    EXPECT_TRUE(camera->IsMeetZoomCondition()) << "without a render handle nothing turns";
    Show();
    for (const AngleRow& row : rows) {
        camera->StopGettingFrame();
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
        doubles.ForgetCalls();
        doubles.PushFrame(Frame(1));
        ASSERT_TRUE(doubles.WaitForCount("VR_Display", 1));
        for (int i = 0; i < row.turns; ++i)
            camera->RotateLeft();
        for (int i = 0; i > row.turns; --i)
            camera->RotateRight();
        EXPECT_EQ(camera->IsNeedReverseXYAfterRotate(), row.reverse) << row.turns;
        EXPECT_EQ(camera->IsRotate180Degree(), row.half) << row.turns;
        EXPECT_EQ(camera->IsRotateRight90Degree(), row.right90) << row.turns;
        EXPECT_EQ(camera->IsMeetZoomCondition(), row.zoom) << row.turns;
        if (row.turns != 0) {
            EXPECT_EQ(doubles.LastRotation().axis.angle, 90.0f * static_cast<float>(row.turns));
            EXPECT_EQ(doubles.LastRotation().axisCount, 1u);
            EXPECT_EQ(doubles.LastRotation().axis.z, 1.0f);
        }
    }
}

TEST_F(Display, RotationIsRepeatedForAnotherPort) {
    camera->RotatebySecondDisplayPort(1);
    EXPECT_EQ(doubles.CountOf("VR_Rotate"), 0);
    Show();
    camera->RotateLeft();
    camera->RotatebySecondDisplayPort(1);
    EXPECT_EQ(doubles.CountOf("VR_Rotate"), 2);
    EXPECT_EQ(doubles.LastRotation().axis.angle, 90.0f);
}

TEST_F(Display, HandlesAreWaitedFor) {
    Show();
    EXPECT_NE(camera->GetVividRenderHandle(), nullptr);
    camera->SetTriggerMode(1);
    EXPECT_EQ(camera->GetGDIRenderHandle(), nullptr) << "nothing makes it; the trigger mode ends the wait";
}

TEST_F(Display, FrameSizesOfTheOtherPath) {
    Show();
    EXPECT_TRUE(camera->GenerateGDIFrameSize());
    EXPECT_EQ(camera->GetFrameSize(), 64u * 48u);
    camera->ChangeGDIToDisplayFrame(OV_GVSP_MONO8);
    EXPECT_EQ(doubles.CountOf("OV_MP_ConvertPixelType"), 0) << "no scratch buffer yet";
}

TEST_F(Display, BayerTests) {
    Open();
    const std::pair<uint32_t, bool> rows[] = {{0x01080001, false}, {0x01080009, true},  {0x01100011, true},
                                              {0x010C002B, true},  {0x02180014, false}, {0x0210001F, false}};
    for (const auto& [code, bayer] : rows) {
        SetRegister(reg::PixelFormat, code);
        EXPECT_EQ(camera->IsBayerFrame(), bayer) << std::hex << code;
        EXPECT_EQ(camera->GetPixelType(), code) << "stored";
    }
    SetRegister(reg::PixelFormat, 0x01100011);
    camera->IsBayerFrame();
    EXPECT_TRUE(camera->IsBayerFrame12());
    doubles.Port().FailReads(5);
    EXPECT_FALSE(camera->IsBayerFrame());
}

// --- JPEG and white balance
// -------------------------------------------------------------------------------------------------

TEST_F(Display, JpegDecoding) {
    uint8_t out[16];
    const uint8_t in[4] = {0xFF, 0xD8, 0xFF, 0xD9};
    EXPECT_EQ(camera->ParserJPG(nullptr, 4, out), 0);
    EXPECT_EQ(camera->ParserJPG(in, 4, out), 1) << "a media handle is made";
    EXPECT_EQ(doubles.LastDecode().decodeKind, 1u);
    EXPECT_EQ(doubles.LastDecode().sourceLength, 4u);
    doubles.SetResult("OV_MP_Decode", 0x80000004);
    EXPECT_EQ(camera->ParserJPG(in, 4, out), 0);
    doubles.SetResult("OV_MP_Decode", 0);
    Open();
    camera->CloseCamera();
    doubles.SetResult("OV_MP_CreateHandle", 0);
    EXPECT_EQ(camera->ParserJPG(in, 4, out), 0);
}

TEST_F(Display, ACameraThatCompressesInTheStreamIsDecoded) {
    Show(0x02180014); // its buffers hold three bytes a pixel
    SetRegister(reg::ImageCompressionMode, 1);
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetPixelType() == OV_GVSP_JPEG; }));
    PushAndWait(Frame(0x5D, 64, 48, 1234));
    ASSERT_TRUE(doubles.WaitUntil([&] { return doubles.LastDecode().sourceLength == 1234; }));
    EXPECT_EQ(doubles.LastDecode().destinationCapacity, 64u * 48u * 3u);
    EXPECT_EQ(doubles.LastVrFormat(), 0x2000u);
    const int drawn = doubles.CountOf("VR_UpdateFrameData");
    EXPECT_TRUE(doubles.WaitForCount("VR_UpdateFrameData", drawn + 1));
    EXPECT_EQ(doubles.CountOf("OV_MP_ConvertPixelType"), 0) << "the decoder's picture goes as it is";
}

TEST_F(Display, WhiteBalanceInModeOnceMeasuresAndSwitchesOff) {
    Show();
    std::vector<uint8_t> data(64 * 48);
    camera->BayerFrameWb(OV_GVSP_BAYER_RG8, nullptr);
    EXPECT_EQ(doubles.CountOf("OV_MP_WhiteBalanceProcess"), 0);
    camera->SetBayerWbMode(BAYER_WB_ONCE);
    camera->BayerFrameWb(OV_GVSP_BAYER_RG8, data.data());
    EXPECT_EQ(doubles.CountOf("OV_MP_GetWhiteBalance"), 1);
    EXPECT_EQ(doubles.CountOf("OV_MP_WhiteBalanceProcess"), 1);
    EXPECT_EQ(doubles.LastImage().sourceType, 6u);
    EXPECT_EQ(doubles.LastImage().outputCapacity, 64u * 48u);
    _OV_WHITE_BALANCE_PARAM_ gains{};
    camera->GetBayerWb(gains);
    EXPECT_EQ(gains.red, 11);
    camera->BayerFrameWb(OV_GVSP_BAYER_RG8, data.data());
    EXPECT_EQ(doubles.CountOf("OV_MP_GetWhiteBalance"), 1) << "off now, still applied";
    EXPECT_EQ(doubles.CountOf("OV_MP_WhiteBalanceProcess"), 2);
}

TEST_F(Display, ContinuousWhiteBalanceMeasuresEveryTwentyFrames) {
    Show();
    std::vector<uint8_t> data(64 * 48);
    camera->SetBayerWbMode(BAYER_WB_OFF);
    camera->BayerFrameWb(OV_GVSP_BAYER_RG8, data.data()); // the count is 1 afterwards, whatever it was
    camera->SetBayerWbMode(BAYER_WB_CONTINUOUS);
    for (int i = 0; i < 19; ++i)
        camera->BayerFrameWb(OV_GVSP_BAYER_RG8, data.data());
    EXPECT_EQ(doubles.CountOf("OV_MP_GetWhiteBalance"), 0);
    camera->BayerFrameWb(OV_GVSP_BAYER_RG8, data.data());
    EXPECT_EQ(doubles.CountOf("OV_MP_GetWhiteBalance"), 1);
    for (int i = 0; i < 20; ++i)
        camera->BayerFrameWb(OV_GVSP_BAYER_RG8, data.data());
    EXPECT_EQ(doubles.CountOf("OV_MP_GetWhiteBalance"), 2);
}

} // namespace
