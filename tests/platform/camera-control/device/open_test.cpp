// Handles, opening, control, XML and registers, through the exported calls against a virtual camera.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "Base/GCException.h"
#include "CameraRig.h"

namespace kolt::test {
namespace {

constexpr std::uint32_t kUnusedAddress = 0x7FFE'FEFD; // 127.254.254.253

std::uint32_t call(void* handle) {
    return OV_CC_OpenDevice(handle, OV_ACCESS_EXCLUSIVE, 0);
}

// Every call that takes a handle, with otherwise valid arguments.
std::vector<std::pair<const char*, std::function<std::uint32_t(void*)>>> allCalls() {
    static std::vector<std::uint8_t> buffer(64);
    static _OV_CC_FRAME_OUT_INFO_ frame;
    static _OV_CC_DEVICE_INFO_ record;
    static _OV_MATCH_INFO_NET_DETECT_ detect;
    static _OV_ALL_MATCH_INFO_ query{OV_MATCH_INFO_NET_DETECT, 0, &detect, sizeof detect, 0};
    static OVX_CC_STATISTICS statistics{};
    static std::uint32_t length;
    statistics.size = sizeof statistics;
    return {
        {"OpenDevice", call},
        {"CloseDevice", OV_CC_CloseDevice},
        {"GetDeviceInfo", [](void* h) { return OV_CC_GetDeviceInfo(h, &record); }},
        {"RegisterExceptionCallBack",
         [](void* h) { return OV_CC_RegisterExceptionCallBack(h, nullptr, nullptr); }},
        {"SetImageNodeNum", [](void* h) { return OV_CC_SetImageNodeNum(h, 4); }},
        {"SetThrowAbnormalImage", [](void* h) { return OV_CC_SetThrowAbnormalImage(h, 1); }},
        {"StartGrabbing", OV_CC_StartGrabbing},
        {"StopGrabbing", OV_CC_StopGrabbing},
        {"GetOneFrameTimeout",
         [](void* h) { return OV_CC_GetOneFrameTimeout(h, buffer.data(), 64, &frame, 0); }},
        {"GetAllMatchInfo", [](void* h) { return OV_CC_GetAllMatchInfo(h, &query); }},
        {"ForceIp", [](void* h) { return OV_GIGE_ForceIp(h, 0x0A000001); }},
        {"GetGenICamXML", [](void* h) { return OV_XML_GetGenICamXML(h, buffer.data(), 64, &length); }},
        {"OVX_GetStatistics", [](void* h) { return OVX_CC_GetStatistics(h, &statistics); }},
        {"OVX_SetOption", [](void* h) { return OVX_CC_SetOption(h, OVX_OPTION_PACKET_RESEND, 1); }},
        {"DestroyHandle", OV_CC_DestroyHandle},
    };
}

TEST(CameraHandle, NullGarbageAndDestroyedHandlesAreRefusedByEveryCall) {
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.transport.gige.currentIp = kUnusedAddress;
    void* destroyed = nullptr;
    ASSERT_EQ(OV_CC_CreateHandle(&destroyed, &record), OV_STATUS_OK);
    ASSERT_EQ(OV_CC_DestroyHandle(destroyed), OV_STATUS_OK);
    int onStack = 0;
    for (void* handle : {static_cast<void*>(nullptr), destroyed, static_cast<void*>(&onStack),
                         reinterpret_cast<void*>(~std::uintptr_t{0}), reinterpret_cast<void*>(16)}) {
        for (const auto& [name, function] : allCalls()) {
            EXPECT_EQ(function(handle), OV_STATUS_INVALID_HANDLE) << name << " of " << handle;
        }
        EXPECT_LE(OV_CC_GetOptimalPacketSize(handle), 0);
        EXPECT_EQ(OV_CC_GetTlProxy(handle), nullptr);
    }
}

TEST(CameraHandle, IsMadeForADeviceThatIsNotThereAndRefusesWhatNeedsAnOpenOne) {
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.transport.gige.currentIp = kUnusedAddress;
    const Handle handle(record);
    EXPECT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_CALL_ORDER);
    EXPECT_EQ(OV_CC_StartGrabbing(handle), OV_STATUS_CALL_ORDER);
    EXPECT_EQ(OV_CC_StopGrabbing(handle), OV_STATUS_CALL_ORDER);
    EXPECT_EQ(fetch(handle, 0).status, OV_STATUS_CALL_ORDER);
    EXPECT_LE(OV_CC_GetOptimalPacketSize(handle), 0);
    EXPECT_EQ(OV_CC_GetTlProxy(handle), nullptr);
    std::uint32_t length = 7;
    EXPECT_EQ(OV_XML_GetGenICamXML(handle, nullptr, 0, &length), OV_STATUS_CALL_ORDER);
    _OV_MATCH_INFO_NET_DETECT_ detect{};
    _OV_ALL_MATCH_INFO_ query{OV_MATCH_INFO_NET_DETECT, 0, &detect, sizeof detect, 0};
    EXPECT_EQ(OV_CC_GetAllMatchInfo(handle, &query), OV_STATUS_CALL_ORDER);
    // These only note what is wanted.
    EXPECT_EQ(OV_CC_SetImageNodeNum(handle, 3), OV_STATUS_OK);
    EXPECT_EQ(OV_CC_SetThrowAbnormalImage(handle, 1), OV_STATUS_OK);
    EXPECT_EQ(OV_CC_RegisterExceptionCallBack(handle, Messages::callback, nullptr), OV_STATUS_OK);
}

TEST(CameraHandle, NullArgumentsAndUnknownLayersAreRefused) {
    void* handle = &handle;
    _OV_CC_DEVICE_INFO_ record{};
    EXPECT_EQ(OV_CC_CreateHandle(nullptr, &record), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_CC_CreateHandle(&handle, nullptr), OV_STATUS_INVALID_PARAMETER);
    record.nTLayerType = 2;
    EXPECT_EQ(OV_CC_CreateHandle(&handle, &record), OV_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(OV_CC_CreateHandleWithoutLog(nullptr, nullptr), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_CC_EnumDevices(OV_TLAYER_USB3, nullptr), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_CC_IsDeviceAccessible(nullptr, OV_ACCESS_EXCLUSIVE) & 0xFF, 0U);
}

TEST(CameraOpen, TakesExclusiveControlAndGivesItBack) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const _OV_CC_DEVICE_INFO_ record = recordOf(camera.Address());
    const Handle first(record);
    const Handle second(record);
    EXPECT_EQ(OV_CC_IsDeviceAccessible(&record, OV_ACCESS_EXCLUSIVE) & 0xFF, 1U);
    ASSERT_EQ(first.open(), OV_STATUS_OK);
    EXPECT_TRUE(camera.IsControlled());
    std::uint32_t privilege = 0;
    ASSERT_TRUE(camera.ReadRegister(0x0A00, privilege));
    EXPECT_EQ(privilege & 1, 1U) << "exclusive access";
    EXPECT_EQ(first.open(), OV_STATUS_CALL_ORDER);
    EXPECT_EQ(second.open(), OV_STATUS_ACCESS_DENIED);
    EXPECT_EQ(OV_CC_IsDeviceAccessible(&record, OV_ACCESS_EXCLUSIVE) & 0xFF, 0U);
    EXPECT_EQ(OV_CC_CloseDevice(first), OV_STATUS_OK);
    EXPECT_FALSE(camera.IsControlled());
    EXPECT_EQ(OV_CC_CloseDevice(first), OV_STATUS_CALL_ORDER);
    EXPECT_EQ(second.open(), OV_STATUS_OK);
    EXPECT_EQ(first.open(), OV_STATUS_ACCESS_DENIED);
}

// A port that nothing listens on, an address that nobody has, no address at all.
TEST(CameraOpen, SaysThatNoCameraAnswers) {
    for (const char* address : {"127.254.254.253", "0.0.0.0"}) {
        const Handle handle(recordOf(address));
        const auto begun = Clock::now();
        EXPECT_EQ(handle.open(), OV_STATUS_NETWORK) << address;
        EXPECT_LT(millisecondsSince(begun), 20000);
        EXPECT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_CALL_ORDER);
    }
}

TEST(CameraOpen, KnowsOnlyTheExclusiveAccessMode) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    for (const std::uint32_t mode : {0U, 2U, 7U, ~0U}) {
        EXPECT_EQ(OV_CC_OpenDevice(handle, mode, 0), OV_STATUS_INVALID_PARAMETER) << mode;
    }
    EXPECT_EQ(OV_CC_OpenDevice(handle, OV_ACCESS_EXCLUSIVE, 77), OV_STATUS_OK) << "the key is not looked at";
}

TEST(CameraOpen, ACameraThatDeniesControlIsHeldByAnother) {
    vcam::Config config = smallCamera();
    config.faults.denyControl = true;
    vcam::VirtualCamera camera(config);
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    EXPECT_EQ(handle.open(), OV_STATUS_ACCESS_DENIED);
    camera.SetFaults({});
    EXPECT_EQ(handle.open(), OV_STATUS_OK);
}

TEST(CameraOpen, GoesByTheHostInterfaceOfTheRecord) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    _OV_CC_DEVICE_INFO_ record = recordOf(camera.Address());
    record.transport.gige.hostInterface = 0x7F00'0001;
    {
        const Handle handle(record);
        EXPECT_EQ(handle.open(), OV_STATUS_OK);
    }
    record.transport.gige.hostInterface = 0x0102'0304; // none of this host
    const Handle handle(record);
    EXPECT_EQ(handle.open(), OV_STATUS_NETWORK);
}

TEST(CameraOpen, WaitsForACameraThatAsksForPatience) {
    vcam::Config config = smallCamera();
    config.faults.answerDelayMs = 4;
    vcam::VirtualCamera camera(config);
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    EXPECT_EQ(handle.open(), OV_STATUS_OK);
    EXPECT_GT(camera.GetCounters().pendingAnswers, 0U);
}

TEST(CameraOpen, WorksAnyNumberOfTimesOnOneHandle) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    for (int round = 0; round < 5; ++round) {
        ASSERT_EQ(handle.open(), OV_STATUS_OK) << round;
        ASSERT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_OK) << round;
        ASSERT_FALSE(camera.IsControlled());
    }
}

TEST(CameraOpen, DestroyingAnOpenHandleGivesTheCameraBack) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    {
        const Handle handle(recordOf(camera.Address()));
        ASSERT_EQ(handle.open(), OV_STATUS_OK);
        ASSERT_EQ(OV_CC_StartGrabbing(handle), OV_STATUS_OK);
        EXPECT_TRUE(eventually([&] { return camera.IsStreaming(); }));
    }
    EXPECT_FALSE(camera.IsControlled());
    EXPECT_TRUE(eventually([&] { return !camera.IsStreaming(); })) << "after the frame that was under way";
}

TEST(CameraDeviceInfo, IsReadFromTheLiveDeviceOpenOrNot) {
    vcam::Config config = smallCamera();
    config.serial = "SN-77";
    config.userName = "west gate";
    vcam::VirtualCamera camera(config);
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    for (const bool open : {false, true}) {
        if (open) {
            ASSERT_EQ(handle.open(), OV_STATUS_OK);
        }
        _OV_CC_DEVICE_INFO_ record{};
        ASSERT_EQ(OV_CC_GetDeviceInfo(handle, &record), OV_STATUS_OK);
        EXPECT_STREQ(record.transport.gige.serialNumber, "SN-77");
        EXPECT_STREQ(record.transport.gige.userDefinedName, "west gate");
        EXPECT_EQ(record.transport.gige.currentIp, recordOf(camera.Address()).transport.gige.currentIp);
    }
    EXPECT_EQ(OV_CC_GetDeviceInfo(handle, nullptr), OV_STATUS_INVALID_PARAMETER);
    camera.Stop();
    _OV_CC_DEVICE_INFO_ record{};
    EXPECT_EQ(OV_CC_GetDeviceInfo(handle, &record), OV_STATUS_NETWORK);
}

TEST(CameraForceIp, IsRefusedWhileOpen) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    ASSERT_EQ(handle.open(), OV_STATUS_OK);
    EXPECT_EQ(OV_GIGE_ForceIp(handle, 0x7F10'1010), OV_STATUS_CALL_ORDER);
    EXPECT_EQ(camera.GetCounters().forcedAddresses, 0U);
}

std::string xmlOf(void* handle) {
    std::uint32_t length = 0;
    EXPECT_EQ(OV_XML_GetGenICamXML(handle, nullptr, 0, &length), OV_STATUS_BUFFER_FULL);
    std::string xml(length, '\0');
    EXPECT_EQ(OV_XML_GetGenICamXML(handle, reinterpret_cast<std::uint8_t*>(xml.data()), length, &length),
              OV_STATUS_OK);
    EXPECT_EQ(length, xml.size());
    return xml;
}

TEST(CameraXml, IsTheCamerasOwnZippedOrNot) {
    for (const bool zipped : {false, true}) {
        vcam::Config config = smallCamera(zipped ? 1 : 0);
        config.zippedXml = zipped;
        vcam::VirtualCamera camera(config);
        camera.Start();
        const Handle handle(recordOf(camera.Address()));
        ASSERT_EQ(handle.open(), OV_STATUS_OK);
        EXPECT_EQ(xmlOf(handle), camera.Xml()) << (zipped ? "zipped" : "plain");
    }
}

TEST(CameraXml, TellsItsLengthWhenTheBufferIsTooSmallAndWritesNothing) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const Handle handle(recordOf(camera.Address()));
    ASSERT_EQ(handle.open(), OV_STATUS_OK);
    const auto whole = static_cast<std::uint32_t>(camera.Xml().size());
    std::vector<std::uint8_t> buffer(whole + 1, 0xAB);
    std::uint32_t length = 0;
    EXPECT_EQ(OV_XML_GetGenICamXML(handle, buffer.data(), whole - 1, &length), OV_STATUS_BUFFER_FULL);
    EXPECT_EQ(length, whole);
    EXPECT_EQ(buffer, std::vector<std::uint8_t>(whole + 1, 0xAB));
    EXPECT_EQ(OV_XML_GetGenICamXML(handle, buffer.data(), whole, &length), OV_STATUS_OK);
    EXPECT_EQ(buffer.back(), 0xAB) << "not a byte more";
    EXPECT_EQ(OV_XML_GetGenICamXML(handle, nullptr, 10, &length), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_XML_GetGenICamXML(handle, buffer.data(), whole, nullptr), OV_STATUS_INVALID_PARAMETER);
}

class BrokenXml : public testing::TestWithParam<std::tuple<vcam::XmlFault, std::vector<std::uint32_t>>> {};

// The statuses that are right for it; OV_STATUS_OK where the XML is odd, but readable.
TEST_P(BrokenXml, GivesAStatusAndTheCameraIsUsableAfterwards) {
    vcam::Config config = smallCamera();
    // 24 MB by the wire take their time, and are read whole in a test of the fetching alone.
    config.zippedXml = std::get<0>(GetParam()) == vcam::XmlFault::Huge;
    vcam::VirtualCamera camera(config);
    camera.Start();
    vcam::Faults faults;
    faults.xml = std::get<0>(GetParam());
    camera.SetFaults(faults);
    const Handle handle(recordOf(camera.Address()));
    const std::uint32_t status = handle.open();
    const auto& right = std::get<1>(GetParam());
    EXPECT_NE(std::find(right.begin(), right.end(), status), right.end()) << std::hex << status;
    if (status == OV_STATUS_OK) {
        // Whatever the XML says, none of these may crash or hang.
        OV_CC_StartGrabbing(handle);
        OV_CC_GetOptimalPacketSize(handle);
        OV_CC_StopGrabbing(handle);
        EXPECT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_OK);
    }
    EXPECT_FALSE(camera.IsControlled()) << "a failed opening leaves nothing behind";
    camera.SetFaults({});
    EXPECT_EQ(handle.open(), OV_STATUS_OK);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, BrokenXml,
    testing::Values(
        std::make_tuple(vcam::XmlFault::Truncated,
                        std::vector<std::uint32_t>{OV_STATUS_PACKET, OV_STATUS_GENICAM_GENERIC}),
        std::make_tuple(vcam::XmlFault::NotXml,
                        std::vector<std::uint32_t>{OV_STATUS_PACKET, OV_STATUS_GENICAM_GENERIC}),
        std::make_tuple(vcam::XmlFault::Huge, std::vector<std::uint32_t>{OV_STATUS_OK, OV_STATUS_PACKET}),
        std::make_tuple(vcam::XmlFault::HttpLocation, std::vector<std::uint32_t>{OV_STATUS_NOT_SUPPORTED}),
        std::make_tuple(vcam::XmlFault::BadZip, std::vector<std::uint32_t>{OV_STATUS_PACKET}),
        std::make_tuple(vcam::XmlFault::NoLocation, std::vector<std::uint32_t>{OV_STATUS_PACKET}),
        std::make_tuple(vcam::XmlFault::TooLong,
                        std::vector<std::uint32_t>{OV_STATUS_PACKET, OV_STATUS_INVALID_ADDRESS}),
        std::make_tuple(vcam::XmlFault::Cyclic, std::vector<std::uint32_t>{OV_STATUS_OK, OV_STATUS_PACKET,
                                                                           OV_STATUS_GENICAM_GENERIC})));

} // namespace
} // namespace kolt::test
