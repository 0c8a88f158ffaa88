#include "Camera/Boundary/OvMediaKit.h"

#include "reference/ConvertReference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

class ConvertCall : public ::testing::Test {
protected:
    ConvertCall() : handle_(OV_MP_CreateHandle()) {}
    ~ConvertCall() override { OV_MP_DestroyHandle(handle_); }

    /* A right record for a picture of that type and size; the pixels are 0, 1, 2, ... */
    _OV_CONVERT_PIXEL_INFO_ Record(std::uint32_t type, std::uint16_t width, std::uint16_t height,
                                   std::uint32_t to) {
        source_.assign(OV_MP_GetPixelSize(type, width, height, 0), 0);
        for (std::size_t i = 0; i < source_.size(); ++i) {
            source_[i] = static_cast<std::uint8_t>(i);
        }
        destination_.assign(OV_MP_GetPixelSize(to, width, height, 0), 0xEE);
        _OV_CONVERT_PIXEL_INFO_ record{};
        record.width = width;
        record.height = height;
        record.sourceType = type;
        record.source = source_.data();
        record.sourceLength = static_cast<std::uint32_t>(source_.size());
        record.destinationType = to;
        record.destination = destination_.data();
        record.destinationCapacity = static_cast<std::uint32_t>(destination_.size());
        return record;
    }

    void* handle_;
    std::vector<std::uint8_t> source_;
    std::vector<std::uint8_t> destination_;
};

TEST(PixelSize, IsThatOfTheFormat) {
    const struct {
        std::uint32_t type;
        std::uint32_t halves; // bytes of two pixels
    } rows[] = {{0, 2},  {1, 4},  {2, 4},  {3, 3},  {4, 3},  {5, 2},  {6, 2},  {7, 2},  {8, 2},  {9, 4},
                {10, 3}, {11, 4}, {12, 3}, {13, 4}, {14, 3}, {15, 4}, {16, 3}, {17, 4}, {18, 3}, {19, 4},
                {20, 3}, {21, 4}, {22, 3}, {23, 4}, {24, 3}, {25, 4}, {26, 4}, {27, 6}, {32, 8}};
    for (const auto& row : rows) {
        EXPECT_EQ(OV_MP_GetPixelSize(row.type, 2448, 2048, 0), 2448U * 2048U / 2U * row.halves) << row.type;
        EXPECT_EQ(OV_MP_GetPixelSize(row.type, 3, 1, 0), 3U * row.halves / 2U) << row.type;
        EXPECT_EQ(OV_MP_GetPixelSize(row.type, 0, 5, 0), 0U) << row.type;
        EXPECT_EQ(OV_MP_GetPixelSize(row.type, 5, 0, 0), 0U) << row.type;
    }
}

TEST(PixelSize, IsZeroForUnknownTypesAndForSizesBeyond32Bits) {
    for (const std::uint32_t type : {28U, 29U, 31U, 33U, 100U, 0x01080001U, UINT32_MAX}) {
        EXPECT_EQ(OV_MP_GetPixelSize(type, 16, 16, 0), 0U) << type;
    }
    EXPECT_EQ(OV_MP_GetPixelSize(OV_PIXEL_MONO8, 65536, 65535, 0), 65536U * 65535U);
    EXPECT_EQ(OV_MP_GetPixelSize(OV_PIXEL_MONO8, 65536, 65536, 0), 0U);
    EXPECT_EQ(OV_MP_GetPixelSize(OV_PIXEL_MONO10, 65536, 32767, 0), 65536U * 32767U * 2U);
    EXPECT_EQ(OV_MP_GetPixelSize(OV_PIXEL_MONO10, 65536, 32768, 0), 0U);
    EXPECT_EQ(OV_MP_GetPixelSize(OV_PIXEL_RGB32, UINT32_MAX, UINT32_MAX, 0), 0U);
    EXPECT_EQ(OV_MP_GetPixelSize(OV_PIXEL_MONO10_PACKED, UINT32_MAX, 1, 0), 0U);
}

TEST_F(ConvertCall, GreyBecomesThreeEqualChannels) {
    auto record = Record(OV_PIXEL_MONO8, 3, 2, OV_PIXEL_RGB8);
    ASSERT_EQ(OV_MP_ConvertPixelType(handle_, &record), OV_STATUS_OK);
    EXPECT_EQ(record.destinationLength, 18U);
    EXPECT_EQ(destination_,
              (std::vector<std::uint8_t>{0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5, 5, 5}));
}

TEST_F(ConvertCall, BadRecordsAreRefused) {
    EXPECT_EQ(OV_MP_ConvertPixelType(handle_, nullptr), OV_STATUS_INVALID_PARAMETER);
    const auto refused = [&](const char* what, std::uint32_t status, auto change) {
        auto record = Record(OV_PIXEL_BAYER_RG8, 8, 6, OV_PIXEL_RGB8);
        record.destinationLength = 99;
        change(record);
        const std::vector<std::uint8_t> before = destination_;
        EXPECT_EQ(OV_MP_ConvertPixelType(handle_, &record), status) << what;
        EXPECT_EQ(record.destinationLength, 0U) << what;
        EXPECT_EQ(destination_, before) << what;
    };
    using Record = _OV_CONVERT_PIXEL_INFO_;
    refused("no source", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.source = nullptr; });
    refused("no destination", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.destination = nullptr; });
    refused("no width", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.width = 0; });
    refused("no height", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.height = 0; });
    refused("short source", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.sourceLength = 47; });
    refused("empty source", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.sourceLength = 0; });
    refused("short destination", OV_STATUS_BUFFER_FULL, [](Record& r) { r.destinationCapacity = 143; });
    refused("empty destination", OV_STATUS_BUFFER_FULL, [](Record& r) { r.destinationCapacity = 0; });
    refused("unknown method", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.bayerMethod = 3; });
    refused("unknown method", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.bayerMethod = UINT32_MAX; });
    refused("one column of a mosaic", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.width = 1; });
    refused("one row of a mosaic", OV_STATUS_INVALID_PARAMETER, [](Record& r) { r.height = 1; });
    refused("odd width of UYVY", OV_STATUS_INVALID_PARAMETER, [](Record& r) {
        r.sourceType = OV_PIXEL_YUV422_PACKED;
        r.width = 3;
    });
    refused("odd width of YUYV", OV_STATUS_INVALID_PARAMETER, [](Record& r) {
        r.sourceType = OV_PIXEL_YUV422_YUYV;
        r.width = 3;
    });
    for (const std::uint32_t type : {28U, 31U, 33U, 0x01080001U, UINT32_MAX}) {
        refused("unknown source type", OV_STATUS_NOT_SUPPORTED, [&](Record& r) { r.sourceType = type; });
    }
    for (const std::uint32_t type : {1U, 5U, 26U, 28U, 31U, 33U, UINT32_MAX}) {
        refused("unknown destination type", OV_STATUS_NOT_SUPPORTED,
                [&](Record& r) { r.destinationType = type; });
    }
    // 65535 x 65535 x 4 is more than the capacity's 32 bits can say.
    refused("sizes beyond 32 bits", OV_STATUS_BUFFER_FULL, [](Record& r) {
        r.sourceType = OV_PIXEL_MONO8;
        r.width = 65535;
        r.height = 65535;
        r.sourceLength = UINT32_MAX;
        r.destinationType = OV_PIXEL_RGB32;
        r.destinationCapacity = UINT32_MAX;
    });
}

TEST_F(ConvertCall, MethodIsNotLookedAtWithoutAMosaic) {
    auto record = Record(OV_PIXEL_MONO12_PACKED, 4, 2, OV_PIXEL_MONO8);
    record.bayerMethod = 77;
    ASSERT_EQ(OV_MP_ConvertPixelType(handle_, &record), OV_STATUS_OK);
    EXPECT_EQ(destination_, (std::vector<std::uint8_t>{0, 2, 3, 5, 6, 8, 9, 11}));
}

TEST_F(ConvertCall, CallsAreThoseOfTheReference) {
    for (std::uint32_t type = 0; type <= 32; type = type == 27 ? 32 : type + 1) {
        for (const std::uint32_t to : {0U, 27U, 32U}) {
            for (std::uint32_t method = 0; method < 3; ++method) {
                auto record = Record(type, 38, 12, to);
                record.bayerMethod = method;
                const std::vector<std::uint8_t> expected =
                    reference::Convert({type, 38, 12, source_}, method, to);
                ASSERT_EQ(OV_MP_ConvertPixelType(handle_, &record), OV_STATUS_OK);
                EXPECT_EQ(record.destinationLength, expected.size());
                ASSERT_TRUE(destination_ == expected) << type << " to " << to << " method " << method;
            }
        }
    }
}

/* Fewer bytes than the capacity are written; a source with bytes to spare is fine. */
TEST_F(ConvertCall, MoreRoomThanNeededIsFine) {
    auto record = Record(OV_PIXEL_MONO10, 5, 3, OV_PIXEL_MONO8);
    const std::vector<std::uint8_t> expected = reference::Convert({OV_PIXEL_MONO10, 5, 3, source_}, 0, 0);
    source_.resize(45, 0x77); // three bytes a pixel, as the program sends
    destination_.resize(60, 0xEE);
    record.source = source_.data();
    record.sourceLength = 45;
    record.destination = destination_.data();
    record.destinationCapacity = 60;
    ASSERT_EQ(OV_MP_ConvertPixelType(handle_, &record), OV_STATUS_OK);
    EXPECT_EQ(record.destinationLength, 15U);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), destination_.begin()));
    EXPECT_EQ(std::count(destination_.begin() + 15, destination_.end(), 0xEE), 45);
}

/* An odd number of packed pixels: the last one's low bits have no byte of their own, and aren't asked for. */
TEST_F(ConvertCall, OddWidthsOfPackedPicturesRunOnOverRowEnds) {
    for (const std::uint32_t type : {3U, 4U, 10U, 12U, 14U, 16U, 18U, 20U, 22U, 24U}) {
        auto record = Record(type, 7, 5, OV_PIXEL_RGB8);
        ASSERT_EQ(source_.size(), 52U);
        const std::vector<std::uint8_t> expected = reference::Convert({type, 7, 5, source_}, 0, 27);
        ASSERT_EQ(OV_MP_ConvertPixelType(handle_, &record), OV_STATUS_OK);
        EXPECT_TRUE(destination_ == expected) << type;
        record.sourceLength = 51;
        EXPECT_EQ(OV_MP_ConvertPixelType(handle_, &record), OV_STATUS_INVALID_PARAMETER);
    }
}

/* Where the result lies on the source, wholly or in part, it is as right as elsewhere. */
TEST_F(ConvertCall, OverlapIsRight) {
    for (std::uint32_t type = 0; type <= 32; type = type == 27 ? 32 : type + 1) {
        for (const std::uint32_t to : {0U, 27U, 32U}) {
            for (const int shift : {-64, -1, 0, 1, 64}) {
                auto record = Record(type, 34, 10, to);
                record.bayerMethod = 1;
                const std::vector<std::uint8_t> expected = reference::Convert({type, 34, 10, source_}, 1, to);
                std::vector<std::uint8_t> shared(source_.size() + destination_.size() + 128);
                std::uint8_t* const source = shared.data() + 64;
                std::copy(source_.begin(), source_.end(), source);
                record.source = source;
                record.destination = source + shift;
                ASSERT_EQ(OV_MP_ConvertPixelType(handle_, &record), OV_STATUS_OK);
                ASSERT_TRUE(std::equal(expected.begin(), expected.end(), record.destination))
                    << type << " to " << to << " shifted by " << shift;
            }
        }
    }
}

} // namespace
