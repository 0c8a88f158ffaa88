#include "Camera/Boundary/OvMediaKit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

/* A handle keeps its work buffers: the second call of a kind allocates nothing. */

namespace {
std::atomic<std::size_t> allocations{0};
std::atomic<bool> exhausted{false}; // no memory is to be had

void* Allocate(std::size_t size, std::size_t alignment) {
    ++allocations;
    if (exhausted) {
        throw std::bad_alloc();
    }
    void* const block = std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

// Not inlined: the compiler would take free() for the wrong partner of operator new.
[[gnu::noinline]] void Free(void* block) {
    std::free(block);
}
} // namespace

void* operator new(std::size_t size) {
    return Allocate(size, alignof(std::max_align_t));
}
void* operator new[](std::size_t size) {
    return Allocate(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    Free(block);
}

namespace {

TEST(Allocation, OnlyTheFirstConversionOfASizeAllocates) {
    void* const handle = OV_MP_CreateHandle();
    constexpr std::uint16_t kWidth = 700;
    constexpr std::uint16_t kHeight = 500;
    std::vector<std::uint8_t> pixels(4U * kWidth * kHeight);
    std::vector<std::uint8_t> result(4U * kWidth * kHeight);
    const auto convert = [&](std::uint32_t type, std::uint16_t width, std::uint32_t method, bool inPlace) {
        _OV_CONVERT_PIXEL_INFO_ record{};
        record.width = width;
        record.height = kHeight;
        record.sourceType = type;
        record.source = pixels.data();
        record.sourceLength = static_cast<std::uint32_t>(pixels.size());
        record.destinationType = OV_PIXEL_RGB8;
        record.destination = inPlace ? pixels.data() : result.data();
        record.destinationCapacity = static_cast<std::uint32_t>(result.size());
        record.bayerMethod = method;
        ASSERT_EQ(OV_MP_ConvertPixelType(handle, &record), OV_STATUS_OK);
    };
    const std::size_t before = allocations;
    convert(OV_PIXEL_BAYER_RG8, kWidth, 2, false);
    EXPECT_GT(allocations, before) << "the counter doesn't count";
    convert(OV_PIXEL_RGB8, kWidth, 0, true);
    const std::size_t warm = allocations;
    for (std::uint32_t type = 0; type <= 27; ++type) {
        for (std::uint32_t method = 0; method < 3; ++method) {
            convert(type, kWidth, method, false);
            convert(type, kWidth - 100, method, true);
        }
    }
    EXPECT_EQ(allocations, warm);
    convert(OV_PIXEL_BAYER_RG8, 800, 2, false);
    EXPECT_GT(allocations, warm) << "a wider picture wants more room";
    OV_MP_DestroyHandle(handle);
}

TEST(Allocation, WithoutMemoryThereIsAStatusAndLaterAPicture) {
    void* const handle = OV_MP_CreateHandle();
    std::vector<std::uint8_t> pixels(64U * 64U, 100);
    std::vector<std::uint8_t> result(3U * 64U * 64U, 7);
    _OV_CONVERT_PIXEL_INFO_ record{};
    record.width = 64;
    record.height = 64;
    record.sourceType = OV_PIXEL_BAYER_RG8;
    record.source = pixels.data();
    record.sourceLength = static_cast<std::uint32_t>(pixels.size());
    record.destinationType = OV_PIXEL_RGB8;
    record.destination = result.data();
    record.destinationCapacity = static_cast<std::uint32_t>(result.size());
    record.destinationLength = 99;
    exhausted = true;
    void* const none = OV_MP_CreateHandle();
    const std::uint32_t status = OV_MP_ConvertPixelType(handle, &record);
    exhausted = false;
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(status, OV_STATUS_RESOURCE);
    EXPECT_EQ(record.destinationLength, 0U);
    EXPECT_EQ(result, std::vector<std::uint8_t>(result.size(), 7));
    EXPECT_EQ(OV_MP_ConvertPixelType(handle, &record), OV_STATUS_OK);
    EXPECT_EQ(result, std::vector<std::uint8_t>(result.size(), 100));
    OV_MP_DestroyHandle(handle);
}

/* A buffer that couldn't grow is gone, but the next call makes it anew. */
TEST(Allocation, AFailureToGrowIsNotRemembered) {
    void* const handle = OV_MP_CreateHandle();
    std::vector<std::uint8_t> pixels(512U * 8U, 50);
    std::vector<std::uint8_t> result(512U * 8U, 0);
    const auto convert = [&](std::uint16_t width) {
        _OV_CONVERT_PIXEL_INFO_ record{};
        record.width = width;
        record.height = 8;
        record.sourceType = OV_PIXEL_BAYER_GB8;
        record.source = pixels.data();
        record.sourceLength = static_cast<std::uint32_t>(pixels.size());
        record.destinationType = OV_PIXEL_MONO8;
        record.destination = result.data();
        record.destinationCapacity = static_cast<std::uint32_t>(result.size());
        record.bayerMethod = OV_BAYER_HAMILTON;
        return OV_MP_ConvertPixelType(handle, &record);
    };
    ASSERT_EQ(convert(64), OV_STATUS_OK);
    exhausted = true;
    const std::uint32_t status = convert(512);
    exhausted = false;
    EXPECT_EQ(status, OV_STATUS_RESOURCE);
    EXPECT_EQ(convert(64), OV_STATUS_OK);
    EXPECT_EQ(convert(512), OV_STATUS_OK);
    EXPECT_EQ(result, std::vector<std::uint8_t>(result.size(), 50));
    OV_MP_DestroyHandle(handle);
}

/* libjpeg-turbo's own pools come from malloc and aren't counted; everything of ours is. */
TEST(Allocation, OnlyTheFirstFileOfASizeAllocates) {
    void* const handle = OV_MP_CreateHandle();
    std::vector<std::uint8_t> pixels(320 * 200, 77);
    std::vector<std::uint8_t> output(320 * 200 * 4);
    for (const std::uint32_t kind : {OV_IMAGE_BMP, OV_IMAGE_JPEG}) {
        std::size_t before = 0;
        for (int i = 0; i < 5; ++i) {
            _OV_IMAGE_INFO_ record{};
            record.sourceType = OV_PIXEL_BAYER_RG8;
            record.source = pixels.data();
            record.sourceLength = static_cast<std::uint32_t>(pixels.size());
            record.width = 320;
            record.height = 200;
            record.imageType = kind;
            record.output = output.data();
            record.outputCapacity = static_cast<std::uint32_t>(output.size());
            record.jpegQuality = 90;
            ASSERT_EQ(OV_MP_SaveImage(handle, &record), OV_STATUS_OK);
            if (i == 0) {
                before = allocations;
            }
        }
        EXPECT_EQ(allocations, before) << kind;
    }
    OV_MP_DestroyHandle(handle);
}

} // namespace
