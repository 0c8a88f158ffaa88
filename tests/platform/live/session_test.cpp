#include "Session.h"

#include "CameraDouble.h"
#include "Records.h"

#include <gmock/gmock.h>

#include <poll.h>

using live::Failure;
using live::Session;
using live_test::CameraDouble;
using live_test::Gige;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

bool WaitFor(int fd) {
    pollfd entry = {fd, POLLIN, 0};
    return poll(&entry, 1, 20000) == 1;
}

class SessionTest : public testing::Test {
protected:
    void SetUp() override { camera.Reset(); }

    void OpenAndStart(const Session::Settings& settings) {
        ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), settings)) << "opening failed";
        ASSERT_FALSE(session.Start()) << "starting failed";
    }

    /// The number of a frame's first byte, once it is there.
    live::Frame* NextFrame() {
        if (!WaitFor(frames.Fd()))
            return nullptr;
        return frames.Take();
    }

    static CameraDouble::Delivery Frame(size_t bytes, uint8_t value = 1) {
        return {OV_STATUS_OK, std::vector<uint8_t>(bytes, value), 0, 0};
    }

    CameraDouble& camera = CameraDouble::Get();
    live::FrameMailbox frames;
    Session session{frames};
};

TEST_F(SessionTest, MakesTheCallsInTheirOrder) {
    Session::Settings settings;
    settings.buffers = 12;
    settings.dropIncomplete = true;
    OpenAndStart(settings);
    camera.Deliver(Frame(10));
    ASSERT_NE(NextFrame(), nullptr);
    session.Close();
    EXPECT_THAT(camera.Calls(),
                ElementsAre("OV_CC_CreateHandle", "OV_CC_OpenDevice 1 0", "OV_CC_RegisterExceptionCallBack",
                            "OV_CC_SetThrowAbnormalImage 1", "OV_CC_SetImageNodeNum 12",
                            "OV_CC_StartGrabbing", "OV_CC_GetOneFrameTimeout", "OV_CC_StopGrabbing",
                            "OV_CC_RegisterExceptionCallBack null", "OV_CC_CloseDevice",
                            "OV_CC_DestroyHandle"));
}

TEST_F(SessionTest, HandsFramesOver) {
    OpenAndStart({});
    camera.Deliver(Frame(100, 7));
    const live::Frame* frame = NextFrame();
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->number, 1U);
    EXPECT_EQ(frame->info.frameLength, 100U);
    EXPECT_EQ(frame->pixels.Data()[99], 7);
}

TEST_F(SessionTest, ARemoteCameraIsAskedForItsRecord) {
    camera.live = Gige("172.16.0.9", "S9");
    ASSERT_FALSE(session.Open(live::RemoteRecord(live_test::Ip("172.16.0.9")), {}));
    EXPECT_EQ(live::SerialOf(session.Device()), "S9");
}

struct OpenFault {
    const char* call;
    uint32_t status;
    bool remote;
    bool handleMade;
};

class SessionOpenFaults : public SessionTest, public testing::WithParamInterface<OpenFault> {};

TEST_P(SessionOpenFaults, NameTheCallAndLeaveNothingOpen) {
    const OpenFault& fault = GetParam();
    camera.Answer(fault.call, fault.status);
    const auto device = fault.remote ? live::RemoteRecord(live_test::Ip("10.0.0.5")) : Gige("10.0.0.5", "S1");
    const Failure failure = session.Open(device, {});
    ASSERT_TRUE(failure);
    EXPECT_STREQ(failure.call, fault.call);
    EXPECT_EQ(failure.status, fault.status);
    const std::string last = camera.Calls().back();
    EXPECT_EQ(last, fault.handleMade ? "OV_CC_DestroyHandle" : fault.call);
}

INSTANTIATE_TEST_SUITE_P(
    Table, SessionOpenFaults,
    testing::Values(OpenFault{"OV_CC_CreateHandle", OV_STATUS_INVALID_PARAMETER, false, false},
                    OpenFault{"OV_CC_GetDeviceInfo", OV_STATUS_NETWORK, true, true},
                    OpenFault{"OV_CC_OpenDevice", OV_STATUS_ACCESS_DENIED, false, true},
                    OpenFault{"OV_CC_RegisterExceptionCallBack", OV_STATUS_RESOURCE, false, true}),
    [](const testing::TestParamInfo<OpenFault>& row) { return std::string(row.param.call); });

TEST_F(SessionTest, SettingsThatFailAreToldAndNoObstacle) {
    camera.Answer("OV_CC_SetImageNodeNum", OV_STATUS_NOT_SUPPORTED);
    camera.Answer("OV_CC_SetThrowAbnormalImage", OV_STATUS_NOT_SUPPORTED);
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), {}));
    EXPECT_THAT(session.Notes(), ElementsAre(HasSubstr("OV_CC_SetThrowAbnormalImage: this camera"),
                                             HasSubstr("OV_CC_SetImageNodeNum: this camera")));
}

TEST_F(SessionTest, AFailedStartIsToldAndClosesCleanly) {
    camera.Answer("OV_CC_StartGrabbing", OV_STATUS_RESOURCE);
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), {}));
    const Failure failure = session.Start();
    EXPECT_STREQ(failure.call, "OV_CC_StartGrabbing");
    session.Close();
    EXPECT_EQ(camera.Calls().back(), "OV_CC_DestroyHandle");
    EXPECT_THAT(camera.Calls(), testing::Not(testing::Contains("OV_CC_StopGrabbing")));
}

TEST_F(SessionTest, AFrameLargerThanTheBufferIsCountedAndTheNextOneFits) {
    Session::Settings settings;
    settings.firstCapacity = 100;
    OpenAndStart(settings);
    camera.Deliver(Frame(1000));
    ASSERT_TRUE(camera.WaitUntilFetched());
    camera.Deliver(Frame(1000, 9));
    const live::Frame* frame = NextFrame();
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->pixels.Data()[999], 9);
    live::Sample sample;
    session.Count(sample);
    EXPECT_EQ(sample.frames, 1U);
    EXPECT_EQ(sample.oversize, 1U);
}

TEST_F(SessionTest, ALibraryThatDoesNotTellTheSizeIsOfferedTwiceAsMuch) {
    Session::Settings settings;
    settings.firstCapacity = 100;
    OpenAndStart(settings);
    // 100, 200, 400 are too small for 500 bytes; told length 1 says nothing.
    for (int i = 0; i < 3; ++i)
        camera.Deliver({OV_STATUS_OK, std::vector<uint8_t>(500), 0, 1});
    ASSERT_TRUE(camera.WaitUntilFetched());
    camera.Deliver(Frame(500, 3));
    ASSERT_NE(NextFrame(), nullptr);
    live::Sample sample;
    session.Count(sample);
    EXPECT_EQ(sample.oversize, 3U);
}

TEST_F(SessionTest, AnAbsurdFrameSizeEndsTheStreamInsteadOfTheMachine) {
    OpenAndStart({});
    camera.Deliver({OV_STATUS_BUFFER_FULL, {}, 0, 0xFFFFFFFF});
    ASSERT_TRUE(WaitFor(session.Fd()));
    EXPECT_EQ(session.GrabFailure().status, OV_STATUS_BUFFER_FULL);
}

TEST_F(SessionTest, IncompleteFramesAreDeliveredAndCounted) {
    OpenAndStart({});
    camera.Deliver({OV_STATUS_OK, std::vector<uint8_t>(10), 1, 0});
    ASSERT_NE(NextFrame(), nullptr);
    live::Sample sample;
    session.Count(sample);
    EXPECT_EQ(sample.frames, 1U);
    EXPECT_EQ(sample.incomplete, 1U);
}

TEST_F(SessionTest, APassingFaultIsCountedAndTheStreamGoesOn) {
    OpenAndStart({});
    camera.Deliver({OV_STATUS_NETWORK, {}, 0, 0});
    camera.Deliver({OV_STATUS_PACKET, {}, 0, 0});
    camera.Deliver(Frame(10));
    ASSERT_NE(NextFrame(), nullptr);
    live::Sample sample;
    session.Count(sample);
    EXPECT_EQ(sample.grabErrors, 2U);
    EXPECT_FALSE(session.GrabFailure());
}

class SessionFinalFaults : public SessionTest, public testing::WithParamInterface<uint32_t> {};

TEST_P(SessionFinalFaults, EndTheFetching) {
    OpenAndStart({});
    camera.Deliver({GetParam(), {}, 0, 0});
    ASSERT_TRUE(WaitFor(session.Fd()));
    EXPECT_EQ(session.GrabFailure().status, GetParam());
    EXPECT_STREQ(session.GrabFailure().call, "OV_CC_GetOneFrameTimeout");
}

INSTANTIATE_TEST_SUITE_P(Table, SessionFinalFaults,
                         testing::Values(OV_STATUS_INVALID_HANDLE, OV_STATUS_CALL_ORDER,
                                         OV_STATUS_INVALID_PARAMETER, OV_STATUS_NOT_SUPPORTED));

TEST_F(SessionTest, TheLimitIsExact) {
    Session::Settings settings;
    settings.frameLimit = 3;
    for (uint8_t i = 1; i <= 5; ++i)
        camera.Deliver(Frame(10, i));
    OpenAndStart(settings);
    ASSERT_TRUE(WaitFor(session.Fd()));
    EXPECT_TRUE(session.IsLimitReached());
    session.Stop();
    live::Sample sample;
    session.Count(sample);
    EXPECT_EQ(sample.frames, 3U);
    EXPECT_EQ(NextFrame()->pixels.Data()[0], 3);
}

TEST_F(SessionTest, TheDisconnectMessageWakesTheOwner) {
    OpenAndStart({});
    camera.Send(OV_EXCEPTION_DISCONNECT);
    EXPECT_TRUE(WaitFor(session.Fd()));
    EXPECT_TRUE(session.IsLost());
}

TEST_F(SessionTest, OtherMessagesMeanNothing) {
    OpenAndStart({});
    camera.Send(0x8002);
    EXPECT_FALSE(session.IsLost());
}

TEST_F(SessionTest, CanBeOpenedAgainAfterALoss) {
    OpenAndStart({});
    camera.Send(OV_EXCEPTION_DISCONNECT);
    session.Close();
    camera.Reset();
    OpenAndStart({});
    EXPECT_FALSE(session.IsLost());
    camera.Deliver(Frame(10));
    EXPECT_NE(NextFrame(), nullptr);
    live::Sample sample;
    session.Count(sample);
    EXPECT_EQ(sample.frames, 1U);
}

TEST_F(SessionTest, TheLibrarysCountersAreTakenOver) {
    OpenAndStart({});
    camera.net.receivedBytes = 5'000'000'000;
    camera.net.lostPackets = 2;
    camera.net.errorCount = 3;
    camera.net.lostFrames = 4;
    camera.net.resentPackets = 5;
    live::Sample sample;
    session.Count(sample);
    ASSERT_TRUE(sample.transport.has_value());
    EXPECT_EQ(sample.transport->receivedBytes, 5'000'000'000);
    EXPECT_EQ(sample.transport->lostPackets, 2);
    EXPECT_EQ(sample.transport->errors, 3U);
    EXPECT_EQ(sample.transport->lostFrames, 4U);
    EXPECT_EQ(sample.transport->resentPackets, 5U);
    EXPECT_THAT(camera.Calls(), testing::Contains("OV_CC_GetAllMatchInfo 1 40"));
    camera.Answer("OV_CC_GetAllMatchInfo", OV_STATUS_NOT_SUPPORTED);
    session.Count(sample);
    EXPECT_FALSE(sample.transport.has_value());
}

TEST_F(SessionTest, ReadsTheXml) {
    camera.xml = "<RegisterDescription/>";
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), {}));
    std::string xml;
    ASSERT_FALSE(session.ReadXml(xml));
    EXPECT_EQ(xml, camera.xml);
}

TEST_F(SessionTest, ReadsAnXmlLargerThanTheFirstGuess) {
    camera.xml = std::string(5'000'000, 'x');
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), {}));
    std::string xml;
    ASSERT_FALSE(session.ReadXml(xml));
    EXPECT_EQ(xml, camera.xml);
    EXPECT_EQ(camera.xmlCapacitySeen, 5'000'000U);
}

TEST_F(SessionTest, AFailedXmlGivesNone) {
    camera.xml = "x";
    camera.Answer("OV_XML_GetGenICamXML", OV_STATUS_NETWORK);
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), {}));
    std::string xml = "before";
    EXPECT_EQ(session.ReadXml(xml).status, OV_STATUS_NETWORK);
    EXPECT_EQ(xml, "");
}

TEST_F(SessionTest, SetsAPacketSizeAndKeepsTheOtherBits) {
    Session::Settings settings;
    settings.packetBytes = 4000;
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), settings));
    EXPECT_EQ(camera.packetRegister, 0x40000000U + 4000U);
    EXPECT_THAT(session.Notes(), ElementsAre("packet size 4000 bytes, was 1500"));
}

TEST_F(SessionTest, AnOldTestPacketRequestIsNotRepeated) {
    camera.packetRegister = 0xC00005DC;
    Session::Settings settings;
    settings.packetBytes = 4000;
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), settings));
    EXPECT_EQ(camera.packetRegister, 0x40000000U + 4000U);
}

TEST_F(SessionTest, TellsWhatTheCameraMadeOfThePacketSize) {
    Session::Settings settings;
    settings.packetBytes = 16000;
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), settings));
    EXPECT_THAT(session.Notes(), ElementsAre("packet size 9000 bytes, was 1500, wanted 16000"));
}

TEST_F(SessionTest, SetsTheOptimalPacketSize) {
    Session::Settings settings;
    settings.optimalPacketSize = true;
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), settings));
    EXPECT_EQ(camera.packetRegister & 0xFFFF, 8228U);
}

TEST_F(SessionTest, AnUnknownOptimalPacketSizeChangesNothing) {
    camera.optimalPacketSize = 0;
    Session::Settings settings;
    settings.optimalPacketSize = true;
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), settings));
    EXPECT_EQ(camera.packetRegister, 0x400005DCU);
    EXPECT_THAT(session.Notes(), ElementsAre(HasSubstr("could not be found out (0): it stays at 1500")));
}

TEST_F(SessionTest, APortThatThrowsOrIsMissingIsTold) {
    Session::Settings settings;
    settings.packetBytes = 4000;
    camera.portTrouble = "register locked";
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), settings));
    EXPECT_THAT(session.Notes(), ElementsAre("the packet size could not be set to 4000: register locked"));
    camera.hasPort = false;
    ASSERT_FALSE(session.Open(Gige("10.0.0.5", "S1"), settings));
    EXPECT_THAT(session.Notes(), ElementsAre(HasSubstr("OV_CC_GetTlProxy gave no port")));
}

TEST_F(SessionTest, UsbHasNoPacketSize) {
    Session::Settings settings;
    settings.packetBytes = 4000;
    ASSERT_FALSE(session.Open(live_test::Usb("U1"), settings));
    EXPECT_THAT(session.Notes(), ElementsAre(HasSubstr("USB3")));
    EXPECT_EQ(camera.packetRegister, 0x400005DCU);
}

TEST_F(SessionTest, ListsDevicesOfBothLayersAndCopiesThem) {
    camera.devices = {Gige("10.0.0.5", "S1"), live_test::Usb("U2")};
    std::vector<live::DeviceRecord> devices(3);
    ASSERT_FALSE(live::ListDevices(devices));
    EXPECT_THAT(camera.Calls(), ElementsAre("OV_CC_EnumDevices 5"));
    ASSERT_EQ(devices.size(), 2U);
    camera.devices.clear();
    EXPECT_EQ(live::SerialOf(devices[1]), "U2");
}

TEST_F(SessionTest, AFailedListIsEmpty) {
    camera.devices = {Gige("10.0.0.5", "S1")};
    camera.Answer("OV_CC_EnumDevices", OV_STATUS_RESOURCE);
    std::vector<live::DeviceRecord> devices(3);
    EXPECT_EQ(live::ListDevices(devices).status, OV_STATUS_RESOURCE);
    EXPECT_TRUE(devices.empty());
}

TEST_F(SessionTest, OnlyTheLowByteTellsWhetherADeviceIsFree) {
    const auto device = Gige("10.0.0.5", "S1");
    camera.accessible = 0xFFFFFF00;
    EXPECT_FALSE(live::IsFree(device));
    camera.accessible = 0xABCDEF01;
    EXPECT_TRUE(live::IsFree(device));
}

} // namespace
