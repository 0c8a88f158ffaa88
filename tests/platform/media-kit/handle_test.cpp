#include "Camera/Boundary/OvMediaKit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
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

/*
 * A picture on display while others are saved: calls on one handle from several threads, each with right
 * results, and the handle's end in the middle of them.
 */
TEST(MediaHandle, ServesSeveralThreadsAndMayEndInTheMiddle) {
    constexpr std::uint16_t kSide = 640; // large enough for the worker threads
    std::vector<std::uint8_t> source(kSide * kSide);
    for (std::size_t i = 0; i < source.size(); ++i) {
        source[i] = static_cast<std::uint8_t>(i * 7);
    }
    const auto convert = [&](void* handle, std::uint32_t method, std::vector<std::uint8_t>& result) {
        _OV_CONVERT_PIXEL_INFO_ record{};
        record.width = kSide;
        record.height = kSide;
        record.sourceType = OV_PIXEL_BAYER_GB8;
        record.source = source.data();
        record.sourceLength = static_cast<std::uint32_t>(source.size());
        record.destinationType = OV_PIXEL_RGB8;
        record.destination = result.data();
        record.destinationCapacity = static_cast<std::uint32_t>(result.size());
        record.bayerMethod = method;
        return OV_MP_ConvertPixelType(handle, &record);
    };
    void* const handle = OV_MP_CreateHandle();
    std::vector<std::vector<std::uint8_t>> expected(3, std::vector<std::uint8_t>(3 * source.size()));
    for (std::uint32_t method = 0; method < 3; ++method) {
        ASSERT_EQ(convert(handle, method, expected[method]), OV_STATUS_OK);
    }
    std::atomic<int> good{0};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (std::uint32_t method = 0; method < 3; ++method) {
        threads.emplace_back([&, method] {
            std::vector<std::uint8_t> result(3 * source.size());
            std::uint32_t status = OV_STATUS_OK;
            while ((status = convert(handle, method, result)) == OV_STATUS_OK) {
                if (result != expected[method]) {
                    ++wrong;
                }
                ++good;
            }
            if (status != OV_STATUS_INVALID_HANDLE) {
                ++wrong;
            }
        });
    }
    while (good < 12) {
        std::this_thread::yield();
    }
    EXPECT_EQ(OV_MP_DestroyHandle(handle), OV_STATUS_OK);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

std::size_t ThreadsNamed(const std::string& beginning) {
    std::size_t count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "comm");
        std::string name;
        std::getline(file, name);
        count += name.rfind(beginning, 0) == 0 ? 1U : 0U;
    }
    return count;
}

bool ThreadsBecome(std::size_t expected) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (ThreadsNamed("ov-media-") != expected) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

/* Helpers come with the first large picture, are few and named, and are gone when the handle is. */
TEST(MediaHandle, OwnsAFewNamedThreadsAndEndsThem) {
    constexpr std::uint16_t kSide = 640;
    std::vector<std::uint8_t> source(kSide * kSide);
    std::vector<std::uint8_t> result(3 * source.size());
    _OV_CONVERT_PIXEL_INFO_ record{};
    record.width = kSide;
    record.height = 10;
    record.sourceType = OV_PIXEL_MONO8;
    record.source = source.data();
    record.sourceLength = static_cast<std::uint32_t>(source.size());
    record.destinationType = OV_PIXEL_RGB8;
    record.destination = result.data();
    record.destinationCapacity = static_cast<std::uint32_t>(result.size());
    void* const handle = OV_MP_CreateHandle();
    ASSERT_EQ(OV_MP_ConvertPixelType(handle, &record), OV_STATUS_OK);
    EXPECT_EQ(ThreadsNamed("ov-media-"), 0U) << "a small picture wants no help";
    const std::size_t expected = std::clamp(std::thread::hardware_concurrency(), 1U, 4U) - 1;
    record.height = kSide;
    ASSERT_EQ(OV_MP_ConvertPixelType(handle, &record), OV_STATUS_OK);
    ASSERT_EQ(OV_MP_ConvertPixelType(handle, &record), OV_STATUS_OK);
    // A thread names itself once it runs, and one that was joined is listed for a moment longer.
    EXPECT_TRUE(ThreadsBecome(expected));
    ASSERT_EQ(OV_MP_DestroyHandle(handle), OV_STATUS_OK);
    EXPECT_TRUE(ThreadsBecome(0));
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
