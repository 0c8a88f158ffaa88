#include "Camera/Boundary/OvMediaKit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <set>
#include <thread>
#include <vector>

namespace {

std::vector<void*> BadHandles() {
    static int something = 0;
    void* const destroyed = OV_MP_CreateHandle();
    EXPECT_EQ(OV_MP_DestroyHandle(destroyed), OV_STATUS_OK);
    return {nullptr,
            reinterpret_cast<void*>(1),
            reinterpret_cast<void*>(0xDEADBEEF),
            reinterpret_cast<void*>(~0ULL),
            &something,
            destroyed};
}

TEST(MediaHandle, IsMadeAndDestroyedOnce) {
    void* const handle = OV_MP_CreateHandle();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(OV_MP_DestroyHandle(handle), OV_STATUS_OK);
    EXPECT_EQ(OV_MP_DestroyHandle(handle), OV_STATUS_INVALID_HANDLE);
}

TEST(MediaHandle, IsNeverGivenOutTwice) {
    std::set<void*> seen;
    for (int i = 0; i < 1000; ++i) {
        void* const handle = OV_MP_CreateHandle();
        EXPECT_TRUE(seen.insert(handle).second);
        ASSERT_EQ(OV_MP_DestroyHandle(handle), OV_STATUS_OK);
    }
}

TEST(MediaHandle, BadHandlesAreRefusedByEveryCall) {
    for (void* const bad : BadHandles()) {
        _OV_CONVERT_PIXEL_INFO_ convert{};
        EXPECT_EQ(OV_MP_DestroyHandle(bad), OV_STATUS_INVALID_HANDLE);
        EXPECT_EQ(OV_MP_ConvertPixelType(bad, &convert), OV_STATUS_INVALID_HANDLE);
        EXPECT_EQ(OV_MP_ConvertPixelType(bad, nullptr), OV_STATUS_INVALID_HANDLE);
        EXPECT_EQ(OV_MP_InputData(bad, nullptr, 0), OV_STATUS_INVALID_HANDLE);
        EXPECT_EQ(OV_MP_StopRecord(bad), OV_STATUS_INVALID_HANDLE);
    }
}

TEST(MediaHandle, RecordingIsNotSupported) {
    void* const handle = OV_MP_CreateHandle();
    const std::uint8_t byte = 0;
    EXPECT_EQ(OV_MP_InputData(handle, &byte, 1), OV_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(OV_MP_InputData(handle, nullptr, 0), OV_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(OV_MP_StopRecord(handle), OV_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(OV_MP_DestroyHandle(handle), OV_STATUS_OK);
}

} // namespace
