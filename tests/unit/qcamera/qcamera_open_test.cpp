#include "QCameraFixture.h"

#include <cstring>
#include <thread>

namespace {

using Opening = QCameraFixture;
using Strings = std::vector<std::string>;

TEST_F(Opening, CallsInOrder) {
    ASSERT_EQ(camera->OpenCamera(), 0);
    EXPECT_EQ(
        doubles.Calls({"OV_"}),
        (Strings{"OV_CC_CreateHandle", "OV_CC_OpenDevice", "OV_CC_RegisterExceptionCallBack",
                 "OV_XML_GetGenICamXML", "OV_CC_GetTlProxy", "OV_MP_CreateHandle",
                 "OV_CC_SetThrowAbnormalImage", "OV_CC_GetOptimalPacketSize", "OV_CC_SetImageNodeNum"}));
    EXPECT_EQ(camera->GetCameraState(), 1);
    EXPECT_TRUE(camera->IsConnect());
    EXPECT_FALSE(camera->IsShotting());
    EXPECT_EQ(doubles.LastThrowAbnormal(), 1u);
    EXPECT_EQ(doubles.LastImageNodeNum(), 6u);
    EXPECT_EQ(Register(reg::PacketSize), 1496u) << "1500 on the grid of 8 from 576";
}

TEST_F(Opening, ASecondOpenChangesNothing) {
    Open();
    doubles.ForgetCalls();
    EXPECT_EQ(camera->OpenCamera(), 0);
    EXPECT_TRUE(doubles.Calls({"OV_"}).empty());
}

TEST_F(Opening, PacketSizeIsLeftAloneWhenSwitchedOff) {
    QLocalCfg::Instance()->SetAutoCheckNetwork(false);
    QLocalCfg::Instance()->SetAutoCheckThrowFrame(false);
    Open();
    EXPECT_EQ(doubles.CountOf("OV_CC_GetOptimalPacketSize"), 0);
    EXPECT_EQ(doubles.LastThrowAbnormal(), 0u);
    EXPECT_EQ(Register(reg::PacketSize), 1500u);
}

struct StatusRow {
    const char* call;
    uint32_t status;
    int code;
    bool handleStays;
};

class OpeningStatus : public QCameraFixture, public testing::WithParamInterface<StatusRow> {};

void PrintTo(const StatusRow& row, std::ostream* out) {
    *out << row.call << "_" << std::hex << row.status;
}

TEST_P(OpeningStatus, EndsTheOpening) {
    const StatusRow& row = GetParam();
    doubles.SetResult(row.call, row.status);
    EXPECT_EQ(camera->OpenCamera(), row.code);
    EXPECT_EQ(camera->GetCameraState(), 0);
    EXPECT_EQ(doubles.CountOf("OV_CC_CloseDevice"), 0) << "nothing is closed";
    EXPECT_EQ(doubles.OpenHandles('c'), row.handleStays ? 1 : 0);
    EXPECT_EQ(doubles.CountOf("OV_MP_CreateHandle"), 0);
    // A later attempt reuses the handle.
    doubles.SetResult(row.call, 0);
    EXPECT_EQ(camera->OpenCamera(), 0);
    EXPECT_EQ(doubles.CountOf("OV_CC_CreateHandle"), row.handleStays ? 1 : 2);
}

INSTANTIATE_TEST_SUITE_P(All, OpeningStatus,
                         testing::Values(StatusRow{"OV_CC_CreateHandle", 0x80000004, -5, false},
                                         StatusRow{"OV_CC_CreateHandle", 0x80000203, -5, false},
                                         StatusRow{"OV_CC_OpenDevice", 0x80000203, -103, true},
                                         StatusRow{"OV_CC_OpenDevice", 0x80000206, -56, true},
                                         StatusRow{"OV_CC_OpenDevice", 0x80000005, -105, true},
                                         StatusRow{"OV_CC_RegisterExceptionCallBack", 0x80000000, -50, true},
                                         StatusRow{"OV_XML_GetGenICamXML", 0x80000007, -57, true},
                                         StatusRow{"OV_XML_GetGenICamXML", 0x80000001, -51, true}));

TEST_F(Opening, AnUnreachableCameraIsNotTried) {
    camera->SetCameraReachable(false);
    EXPECT_EQ(camera->OpenCamera(), -56);
    EXPECT_EQ(doubles.OpenHandles('c'), 1) << "the handle stays";
    EXPECT_EQ(doubles.CountOf("OV_CC_OpenDevice"), 0);
    EXPECT_EQ(static_cast<int>(camera->CloseCamera()), 0);
    EXPECT_EQ(doubles.OpenHandles('c'), 0);
}

TEST_F(Opening, XmlThatIsNone) {
    Script("this is not XML");
    EXPECT_EQ(camera->OpenCamera(), -1);
    EXPECT_EQ(doubles.CountOf("OV_CC_GetTlProxy"), 0);
    EXPECT_EQ(camera->GetCameraState(), 0);
}

TEST_F(Opening, AnEmptyXml) {
    Script("");
    EXPECT_EQ(camera->OpenCamera(), -1);
}

TEST_F(Opening, AnXmlNestedWithoutEnd) {
    std::string xml;
    for (int i = 0; i < 100000; ++i)
        xml += "<a>";
    for (int i = 0; i < 100000; ++i)
        xml += "</a>";
    Script(xml);
    EXPECT_EQ(camera->OpenCamera(), -1) << "and neither a crash nor a hang";
}

TEST_F(Opening, XmlThatNoNodeMapCanBeMadeOf) {
    Script("<html><body/></html>");
    EXPECT_EQ(camera->OpenCamera(), -12);
    EXPECT_EQ(camera->GetCameraState(), 0);
}

TEST_F(Opening, WithoutMemoryForTheXml) {
    support::FailAllocations(0x300000);
    EXPECT_EQ(camera->OpenCamera(), -4);
    EXPECT_TRUE(doubles.Calls().empty());
    support::FailAllocations({});
    EXPECT_EQ(camera->OpenCamera(), 0);
}

TEST_F(Opening, NoTransportProxy) {
    doubles.SetTlProxy(false);
    EXPECT_EQ(camera->OpenCamera(), -11);
    EXPECT_EQ(camera->GetCameraState(), 0);
}

TEST_F(Opening, NoMediaHandleLeavesTheStateOpen) {
    doubles.SetResult("OV_MP_CreateHandle", 0);
    EXPECT_EQ(camera->OpenCamera(), -21);
    EXPECT_EQ(camera->GetCameraState(), 1);
    EXPECT_TRUE(camera->GetNodeMapRef());
    EXPECT_EQ(doubles.CountOf("OV_CC_SetImageNodeNum"), 0);
    camera->CloseCamera();
    EXPECT_FALSE(camera->GetNodeMapRef());
}

TEST_F(Opening, AnXmlThatFillsTheFirstBufferIsReadAgain) {
    doubles.SetXmlLength(3145728);
    camera->OpenCamera();
    EXPECT_EQ(doubles.CountOf("OV_XML_GetGenICamXML"), 2);
}

TEST_F(Opening, AnXmlBeyondTheCapacityEndsInTheLibrarysStatus) {
    doubles.SetXmlLength(5000000);
    EXPECT_EQ(camera->OpenCamera(), -52) << "the second read still tells the first capacity";
    EXPECT_EQ(doubles.CountOf("OV_XML_GetGenICamXML"), 2);
}

TEST_F(Opening, AnXmlJustBelowTheLimitIsReadOnce) {
    doubles.SetXmlLength(3145727);
    EXPECT_EQ(camera->OpenCamera(), 0);
    EXPECT_EQ(doubles.CountOf("OV_XML_GetGenICamXML"), 1);
}

TEST_F(Opening, TheDriverLineGoesToTheLog) {
    std::vector<std::string> lines;
    QObject receiver;
    QObject::connect(QFunction::Instance(), &QFunction::SigShowMessage, &receiver,
                     [&](int level, const QString& source, const QString& text) {
                         lines.push_back(QString("%1|%2|%3").arg(level).arg(source, text).toStdString());
                     });
    Open();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "2|KOLT CAPTURE|The GigE driver is not enabled or uninstalled.");
    QFunction::Release();
}

TEST_F(Opening, WithoutAThreadTheProcessEnds) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            support::FailThreads(1);
            camera->OpenCamera();
        },
        testing::ExitedWithCode(1), "");
    EXPECT_EXIT(
        {
            support::FailThreads(1, 1);
            camera->OpenCamera();
        },
        testing::ExitedWithCode(1), "")
        << "the second of the two";
}

// --- closing
// ----------------------------------------------------------------------------------------------------------------

using Close = QCameraFixture;

TEST_F(Close, ANeverOpenedCamera) {
    camera->SetDisplayMode(10);
    EXPECT_EQ(camera->CloseCamera(), -4);
    EXPECT_TRUE(camera->IsDisplay()) << "the display flag is dealt with first";
    EXPECT_TRUE(doubles.Calls().empty());
}

TEST_F(Close, CallsInOrder) {
    Open();
    doubles.ForgetCalls();
    EXPECT_EQ(camera->CloseCamera(), 0);
    EXPECT_EQ(doubles.Calls(), (Strings{"OV_CC_CloseDevice", "OV_CC_DestroyHandle", "OV_MP_DestroyHandle"}));
    EXPECT_EQ(camera->GetCameraState(), 0);
    EXPECT_FALSE(camera->GetNodeMapRef());
    EXPECT_FALSE(camera->IsHaveFrameData());
    EXPECT_EQ(camera->CloseCamera(), -4) << "a second time";
}

TEST_F(Close, WhileGrabbingStopsFirst) {
    Start();
    camera->SetPlayWnd(0x55);
    PushAndWait(Frame(9));
    ASSERT_TRUE(doubles.WaitForCount("VR_Display", 1));
    doubles.ForgetCalls();
    EXPECT_EQ(camera->CloseCamera(), 0);
    const Strings calls =
        doubles.Calls({"OV_CC_StopG", "OV_CC_Close", "OV_CC_Destroy", "OV_MP_Destroy", "VR_De"});
    EXPECT_EQ(calls, (Strings{"OV_CC_StopGrabbing", "OV_CC_CloseDevice", "OV_CC_DestroyHandle",
                              "VR_DelSubPort", "VR_DestroyHandle", "OV_MP_DestroyHandle"}));
    EXPECT_EQ(camera->GetWidth(), 0u);
    EXPECT_EQ(camera->GetRecvFrameNum(), 0);
    EXPECT_EQ(camera->GetPlayWnd(), 0u);
    EXPECT_EQ(Register(reg::TLParamsLocked), 0u);
}

TEST_F(Close, AndOpenAgain) {
    for (int round = 0; round < 5; ++round) {
        ASSERT_EQ(camera->OpenCamera(), 0) << round;
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0) << round;
        ASSERT_EQ(camera->CloseCamera(), 0) << round;
    }
}

TEST_F(Close, TheDestructorClosesAGrabbingCamera) {
    Start();
    camera->ReleaseRef();
    camera = nullptr;
    EXPECT_EQ(doubles.CountOf("OV_CC_DestroyHandle"), 1);
}

// --- disconnect
// -------------------------------------------------------------------------------------------------------------

struct Lost {
    std::atomic<long> id{-1};
    std::atomic<int> calls{0};
    std::thread::id thread;
};

void OnLost(void* user, long id) {
    auto* lost = static_cast<Lost*>(user);
    lost->id = id;
    lost->thread = std::this_thread::get_id();
    ++lost->calls;
}

using Disconnect = QCameraFixture;

TEST_F(Disconnect, StopsTheThreadsAndTellsTheOwnerOnTheLibrarysThread) {
    Start();
    Lost lost;
    camera->SetCameraDisconnectCallBackInfo(OnLost, &lost);
    doubles.Disconnect();
    EXPECT_EQ(lost.calls, 1);
    EXPECT_EQ(lost.id, 7);
    EXPECT_NE(lost.thread, std::this_thread::get_id());
    EXPECT_EQ(camera->GetCameraState(), 2) << "the state stays until the owner closes";
    EXPECT_EQ(doubles.CountOf("OV_CC_StopGrabbing"), 0);
    const int64_t received = camera->GetRecvFrameNum();
    doubles.PushFrame(Frame(1));
    SleepEx(30);
    EXPECT_EQ(camera->GetRecvFrameNum(), received) << "no grab thread any more";
    EXPECT_EQ(camera->CloseCamera(), 0);
}

TEST_F(Disconnect, OtherMessagesMeanNothing) {
    Start();
    Lost lost;
    camera->SetCameraDisconnectCallBackInfo(OnLost, &lost);
    doubles.Disconnect(0x8002);
    doubles.Disconnect(0);
    EXPECT_EQ(lost.calls, 0);
    PushAndWait(Frame(1));
}

TEST_F(Disconnect, WithoutACallback) {
    Start();
    doubles.Disconnect();
    doubles.Disconnect();
    EXPECT_EQ(camera->GetCameraState(), 2);
}

TEST_F(Disconnect, WhileTheMainThreadStops) {
    for (int round = 0; round < 20; ++round) {
        ASSERT_EQ(camera->OpenCamera(), 0);
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
        Lost lost;
        camera->SetCameraDisconnectCallBackInfo(OnLost, &lost);
        std::thread library([this] { doubles.Disconnect(); });
        camera->StopGettingFrame();
        library.join();
        camera->CloseCamera();
    }
}

// --- identity
// ---------------------------------------------------------------------------------------------------------------

using Identity = QCameraFixture;

TEST_F(Identity, Names) {
    char buffer[200];
    EXPECT_TRUE(camera->SetCameraName(std::string(128, 'n').c_str())) << "128 characters pass";
    EXPECT_STREQ(camera->GetCameraName(buffer, sizeof buffer), std::string(128, 'n').c_str());
    EXPECT_FALSE(camera->SetCameraName(std::string(129, 'x').c_str()));
    EXPECT_FALSE(camera->SetCameraName(nullptr));
    EXPECT_EQ(camera->GetCameraName(buffer, 128), nullptr) << "not above the length";
    EXPECT_EQ(camera->GetCameraName(buffer, 129), buffer);
    EXPECT_EQ(camera->GetCameraName(nullptr, 500), nullptr);
    EXPECT_TRUE(camera->SetCameraName(""));
    EXPECT_STREQ(camera->GetCameraName(buffer, 1), "");
}

_OV_CC_DEVICE_INFO_ GigeRecord(const char* maker = "", const char* model = "") {
    _OV_CC_DEVICE_INFO_ info{};
    info.nTLayerType = OV_TLAYER_GIGE;
    info.transport.gige.currentIp = 0x0A000002;
    std::strncpy(info.transport.gige.manufacturerName, maker, 31);
    std::strncpy(info.transport.gige.modelName, model, 31);
    return info;
}

TEST_F(Identity, OfTheRecord) {
    camera->SetOVCCDevInfo(GigeRecord("GEV", "KV-1042"));
    EXPECT_EQ(camera->GetTLayerType(), 1u);
    EXPECT_EQ(camera->GetCameraType(), 1u);
    EXPECT_EQ(camera->GetIP(), 0x0A000002u);
    EXPECT_EQ(camera->GetCameraModelName(), "KV-1042");
    _OV_CC_DEVICE_INFO_ usb{};
    usb.nTLayerType = OV_TLAYER_USB3;
    std::strncpy(usb.transport.usb3.modelName, "U-7", 63);
    camera->SetOVCCDevInfo(usb);
    EXPECT_EQ(camera->GetCameraModelName(), "U-7");
    usb.nTLayerType = 2;
    camera->SetOVCCDevInfo(usb);
    EXPECT_EQ(camera->GetCameraModelName(), "");
}

TEST_F(Identity, ATextThatFillsItsField) {
    _OV_CC_DEVICE_INFO_ info = GigeRecord();
    std::memset(info.transport.gige.modelName, 'm', 32);
    std::memset(info.transport.gige.deviceVersion, 'v', 32);
    camera->SetOVCCDevInfo(info);
    EXPECT_EQ(camera->GetCameraModelName().size(), 32);
}

TEST_F(Identity, ReachabilityCountsForGigeAlone) {
    camera->SetCameraReachable(false);
    EXPECT_TRUE(camera->IsGigECameraReachable()) << "no GigE camera";
    camera->SetOVCCDevInfo(GigeRecord());
    EXPECT_FALSE(camera->IsGigECameraReachable());
    camera->SetCameraReachable(true);
    EXPECT_TRUE(camera->IsGigECameraReachable());
}

TEST_F(Identity, OtherMakers) {
    for (const char* maker : {"Zelkovant", "zelkovant", "GEV", "U3V"}) {
        camera->SetOVCCDevInfo(GigeRecord(maker));
        EXPECT_FALSE(camera->IsOtherCamera()) << maker;
        _OV_CC_DEVICE_INFO_ usb{};
        usb.nTLayerType = OV_TLAYER_USB3;
        std::strncpy(usb.transport.usb3.manufacturerName, maker, 63);
        camera->SetOVCCDevInfo(usb);
        EXPECT_FALSE(camera->IsOtherCamera()) << maker;
    }
    for (const char* maker : {"", "gev", "Zelkovant ", "Someone"}) {
        camera->SetOVCCDevInfo(GigeRecord(maker));
        EXPECT_TRUE(camera->IsOtherCamera()) << maker;
    }
}

TEST_F(Identity, ARecordFromTheCameraItself) {
    _OV_CC_DEVICE_INFO_ live = GigeRecord("GEV", "far");
    doubles.SetDeviceInfo(live);
    EXPECT_EQ(camera->GenerateOVCDevInfoByConnectDev(), 0);
    EXPECT_EQ(camera->GetCameraModelName(), "far");
    EXPECT_EQ(camera->GenerateOVCDevInfoByConnectDev(), 0);
    EXPECT_EQ(doubles.CountOf("OV_CC_CreateHandle"), 1) << "the handle is kept";
}

TEST_F(Identity, NoRecordFromTheCamera) {
    doubles.SetResult("OV_CC_CreateHandle", 0x80000004);
    EXPECT_EQ(camera->GenerateOVCDevInfoByConnectDev(), -5);
    doubles.SetResult("OV_CC_CreateHandle", 0);
    doubles.SetResult("OV_CC_GetDeviceInfo", 0x80000206);
    EXPECT_EQ(camera->GenerateOVCDevInfoByConnectDev(), -15);
}

TEST_F(Identity, InUseProbe) {
    EXPECT_FALSE(camera->OpenForCamState(false));
    EXPECT_TRUE(camera->OpenForCamState(true)) << "a reachable device counts as in use";
    doubles.SetResult("OV_CC_IsDeviceAccessible", 0x100);
    EXPECT_FALSE(camera->OpenForCamState(true)) << "only the low byte counts; it could be opened";
    EXPECT_EQ(doubles.CountOf("OV_CC_CloseDevice"), 1);
    doubles.SetResult("OV_CC_OpenDevice", 0x80000203);
    EXPECT_TRUE(camera->OpenForCamState(true));
    doubles.SetResult("OV_CC_OpenDevice", 0x80000206);
    EXPECT_FALSE(camera->OpenForCamState(true));
    EXPECT_EQ(doubles.OpenHandles('c'), 0);
    doubles.SetResult("OV_CC_CreateHandle", 0x80000004);
    EXPECT_FALSE(camera->OpenForCamState(true));
}

TEST_F(Identity, OfANewCamera) {
    QCamera* fresh = QCamera::NewInstance();
    EXPECT_EQ(fresh->GetCameraID(), -1);
    EXPECT_EQ(fresh->GetCameraState(), 0);
    EXPECT_EQ(fresh->GetConfigRate(), 30);
    EXPECT_TRUE(fresh->IsDisplay());
    EXPECT_FALSE(fresh->GetRemoteCamera());
    EXPECT_EQ(fresh->GetPixelType(), -1);
    _OV_WHITE_BALANCE_PARAM_ gains{};
    fresh->GetBayerWb(gains);
    EXPECT_EQ(gains.red, 1);
    EXPECT_EQ(gains.green, 1);
    EXPECT_EQ(gains.blue, 1);
    bool enable = true;
    unsigned interval = 0;
    fresh->GetAutoSoftwareTrig(enable, interval);
    EXPECT_FALSE(enable);
    EXPECT_EQ(interval, 1000u);
    fresh->AddRef();
    fresh->ReleaseRef();
}

TEST_F(Identity, AutomaticTrigger) {
    camera->SetAutoSoftwareTrig(true, 250);
    bool enable = false;
    unsigned interval = 0;
    camera->GetAutoSoftwareTrig(enable, interval);
    EXPECT_TRUE(enable);
    EXPECT_EQ(interval, 250u);
    EXPECT_EQ(camera->OnTimerSoftwareTrig(), 0) << "not connected";
    Open();
    EXPECT_EQ(camera->OnTimerSoftwareTrig(), 1);
    EXPECT_EQ(Register(reg::TriggerSoftware), 1u);
}

TEST_F(Identity, TheTriggerThreadFiresUntilItIsStopped) {
    Open();
    camera->SetAutoSoftwareTrig(true, 1);
    std::thread thread(QCamera::AutoSoftwareTrigThread, camera);
    for (int i = 0; i < 3; ++i) {
        SetRegister(reg::TriggerSoftware, 0);
        EXPECT_TRUE(doubles.WaitUntil([&] { return Register(reg::TriggerSoftware) == 1; })) << i;
    }
    camera->SetAutoSoftwareTrig(true, 3600000); // the stop ends the hour's wait
    camera->UnInitialize();
    thread.join();
    QCamera::AutoSoftwareTrigThread(camera); // with the flag set it ends at once
    delete camera;
    camera = nullptr;
}

} // namespace
