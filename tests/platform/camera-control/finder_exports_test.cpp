// Finding cameras through the exported calls.
#include <cstring>
#include <gtest/gtest.h>

#include "Camera/Boundary/OvCameraControl.h"
#include "OvCameraControlX.h"
#include "VirtualCamera.h"
#include "support/NetworkNamespace.h"

namespace {

using kolt::test::NamespaceScope;
using kolt::test::NetworkNamespace;

TEST(FinderExports, ListAskAndMoveACamera) {
    const NetworkNamespace network;
    const NamespaceScope inside(network);
    vcam::Config config;
    config.address = "127.0.0.4";
    config.serial = "EXPORTED";
    vcam::VirtualCamera camera(config);
    camera.Start();
    _OV_CC_DEVICE_INFO_LIST_ list{};
    ASSERT_EQ(OV_CC_EnumDevices(OV_TLAYER_GIGE | OV_TLAYER_USB3, &list), OV_STATUS_OK);
    ASSERT_EQ(list.deviceCount, 1U);
    const _OV_CC_DEVICE_INFO_ record = *list.devices[0];
    EXPECT_STREQ(record.transport.gige.serialNumber, "EXPORTED");
    EXPECT_EQ(OV_CC_IsDeviceAccessible(&record, OV_ACCESS_EXCLUSIVE) & 0xFF, 1U);
    EXPECT_EQ(OV_CC_IsDeviceAccessible(nullptr, OV_ACCESS_EXCLUSIVE) & 0xFF, 0U);

    // By its address alone.
    _OV_CC_DEVICE_INFO_ bare{};
    bare.nTLayerType = OV_TLAYER_GIGE;
    bare.transport.gige.currentIp = 0x7F000004;
    void* handle = nullptr;
    ASSERT_EQ(OV_CC_CreateHandleWithoutLog(&handle, &bare), OV_STATUS_OK);
    _OV_CC_DEVICE_INFO_ live{};
    EXPECT_EQ(OV_CC_GetDeviceInfo(handle, &live), OV_STATUS_OK);
    EXPECT_EQ(std::memcmp(&live, &record, sizeof live), 0);
    EXPECT_EQ(OV_GIGE_ForceIp(handle, 0x7F000006), OV_STATUS_OK);
    EXPECT_EQ(camera.Address(), "127.0.0.6");
    EXPECT_EQ(OV_CC_GetDeviceInfo(handle, &live), OV_STATUS_OK);
    EXPECT_EQ(live.transport.gige.currentIp, 0x7F000006U);
    EXPECT_EQ(OV_CC_DestroyHandle(handle), OV_STATUS_OK);
    EXPECT_EQ(OV_CC_GetDeviceInfo(handle, &live), OV_STATUS_INVALID_HANDLE);
    EXPECT_EQ(OV_GIGE_ForceIp(handle, 0x7F000007), OV_STATUS_INVALID_HANDLE);
}

TEST(FinderExports, AnAddressThatAnotherCameraHasIsAConflict) {
    const NetworkNamespace network;
    const NamespaceScope inside(network);
    vcam::Config config;
    config.address = "127.0.0.4";
    vcam::VirtualCamera camera(config);
    camera.Start();
    config.address = "127.0.0.5";
    vcam::VirtualCamera other(config);
    other.Start();
    _OV_CC_DEVICE_INFO_ bare{};
    bare.nTLayerType = OV_TLAYER_GIGE;
    bare.transport.gige.currentIp = 0x7F000004;
    void* handle = nullptr;
    ASSERT_EQ(OV_CC_CreateHandle(&handle, &bare), OV_STATUS_OK);
    EXPECT_EQ(OV_GIGE_ForceIp(handle, 0x7F000005), OV_STATUS_IP_CONFLICT);
    EXPECT_EQ(camera.Address(), "127.0.0.4");
    EXPECT_EQ(OV_CC_OpenDevice(handle, OV_ACCESS_EXCLUSIVE, 0), OV_STATUS_OK)
        << "the handle means the same camera";
    EXPECT_TRUE(camera.IsControlled());
    EXPECT_EQ(OV_CC_DestroyHandle(handle), OV_STATUS_OK);
}

TEST(FinderExports, StatisticsFillWhatTheCallerKnows) {
    const NetworkNamespace network;
    const NamespaceScope inside(network);
    _OV_CC_DEVICE_INFO_LIST_ list{};
    OVX_CC_FINDER_STATISTICS before{};
    before.size = sizeof before;
    ASSERT_EQ(OVX_CC_GetFinderStatistics(&before), OV_STATUS_OK);
    ASSERT_EQ(OV_CC_EnumDevices(OV_TLAYER_GIGE, &list), OV_STATUS_OK);
    OVX_CC_FINDER_STATISTICS after;
    std::memset(&after, 0xEE, sizeof after);
    after.size = 16;
    ASSERT_EQ(OVX_CC_GetFinderStatistics(&after), OV_STATUS_OK);
    EXPECT_EQ(after.calls, before.calls + 1);
    EXPECT_EQ(after.found, 0xEEEEEEEEEEEEEEEEU);
    after.size = 4;
    EXPECT_EQ(OVX_CC_GetFinderStatistics(&after), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OVX_CC_GetFinderStatistics(nullptr), OV_STATUS_INVALID_PARAMETER);
}

TEST(FinderExports, TheSearchCanBeTurnedElsewhere) {
    const NetworkNamespace network;
    const NamespaceScope inside(network);
    vcam::Config config;
    config.address = "127.3.2.1";
    vcam::VirtualCamera camera(config);
    camera.Start();
    _OV_CC_DEVICE_INFO_LIST_ list{};
    ASSERT_EQ(OVX_CC_SetDiscovery(nullptr, "127.3.2.1"), OV_STATUS_OK);
    ASSERT_EQ(OV_CC_EnumDevices(OV_TLAYER_GIGE, &list), OV_STATUS_OK);
    EXPECT_EQ(list.deviceCount, 1U);
    ASSERT_EQ(OVX_CC_SetDiscovery("none0", nullptr), OV_STATUS_OK);
    ASSERT_EQ(OV_CC_EnumDevices(OV_TLAYER_GIGE, &list), OV_STATUS_OK);
    EXPECT_EQ(list.deviceCount, 0U);
    ASSERT_EQ(OVX_CC_SetDiscovery("", ""), OV_STATUS_OK);
}

} // namespace
