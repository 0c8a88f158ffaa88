// Handles, opening, control, XML and registers, through the exported calls against a virtual camera.
#include <array>
#include <atomic>
#include <cstring>
#include <string>
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

} // namespace
} // namespace kolt::test
