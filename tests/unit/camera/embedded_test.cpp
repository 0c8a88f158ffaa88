#include "Camera/EmbeddedImageInfo.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

_EMBEDDED_IMAGE_INFO_ Decode(const Bytes& bytes, uint64_t selector) {
    return DecodeEmbeddedBlock(bytes.data(), bytes.size(), selector);
}

bool IsAllZero(const _EMBEDDED_IMAGE_INFO_& info) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&info);
    for (size_t i = 0; i < sizeof info; ++i)
        if (bytes[i] != 0)
            return false;
    return true;
}

TEST(Embedded, SelectorZeroGivesZeros) {
    EXPECT_TRUE(IsAllZero(Decode(Bytes(64, 0xFF), 0)));
    EXPECT_TRUE(IsAllZero(DecodeEmbeddedBlock(nullptr, 64, 511)));
}

TEST(Embedded, Timestamp) {
    const auto info = Decode({0x34, 0xD2, 0x5A, 0xAB}, 1);
    EXPECT_EQ(info.secondCount, 0xABu >> 3);
    EXPECT_EQ(info.cycleCount, ((0xABu & 7u) << 10) + (0x5Au << 2) + (0xD2u >> 6));
    EXPECT_EQ(info.cycleOffset, ((0xD2u & 63u) << 8) + 0x34u);
    const auto largest = Decode({0xFF, 0xFF, 0xFF, 0xFF}, 1);
    EXPECT_EQ(largest.secondCount, 31u);
    EXPECT_EQ(largest.cycleCount, 8191u);
    EXPECT_EQ(largest.cycleOffset, 16383u);
}

TEST(Embedded, GainIsSignedThousandths) {
    EXPECT_FLOAT_EQ(Decode({0x70, 0x17, 0, 0}, 2).gain, 6.0f);
    EXPECT_FLOAT_EQ(Decode({0x18, 0xFC, 0xFF, 0xFF}, 2).gain, -1.0f);
}

TEST(Embedded, ExposureLeavesItsMark) {
    const auto info = Decode({0x10, 0x27, 0, 0}, 4);
    EXPECT_FLOAT_EQ(info.exposure, 10000.0f);
    EXPECT_EQ(info.exposureParsed, 1.0f);
    EXPECT_EQ(Decode({0x10, 0x27, 0, 0}, 8).exposureParsed, 0.0f);
    EXPECT_FLOAT_EQ(Decode({0xFF, 0xFF, 0xFF, 0xFF}, 4).exposure, 4294967296.0f) << "unsigned";
}

TEST(Embedded, PlainNumbers) {
    EXPECT_EQ(Decode({1, 2, 3, 4}, 8).brightness, 0x04030201u);
    EXPECT_EQ(Decode({1, 2, 3, 4}, 32).frameNumber, 0x04030201u);
    EXPECT_EQ(Decode({1, 2, 3, 4}, 64).triggerCount, 0x04030201u);
}

TEST(Embedded, WhiteBalanceTakesEightBytes) {
    const auto info = Decode({1, 2, 3, 4, 5, 6, 7, 8, 0xAA, 0xBB, 0xCC, 0xDD}, 16 | 32);
    EXPECT_EQ(info.red, 0x0201u);
    EXPECT_EQ(info.green, 0x0403u);
    EXPECT_EQ(info.blue, 0x08070605u);
    EXPECT_EQ(info.frameNumber, 0xDDCCBBAAu) << "behind it";
}

TEST(Embedded, AlarmSkipsItsLastTwoBytes) {
    const auto info = Decode({5, 9, 0xFF, 0xFF, 2, 0, 0, 0, 0, 0, 0, 0}, 128 | 256);
    EXPECT_EQ(info.input, 5u);
    EXPECT_EQ(info.output, 9u);
    EXPECT_EQ(info.offsetX, 2u);
}

// The same bytes but for the lowest bit of the first.
TEST(Embedded, TwoFormsOfTheRegion) {
    const auto wide = Decode({0x11, 0x02, 0x23, 0x04, 0x35, 0x06, 0x47, 0x08}, 256);
    EXPECT_EQ(wide.offsetX, 0x0210u);
    EXPECT_EQ(wide.offsetY, 0x0423u);
    EXPECT_EQ(wide.width, 0x0634u) << "even";
    EXPECT_EQ(wide.height, 0x0847u);
    const auto packed = Decode({0x10, 0x32, 0x23, 0x04, 0x35, 0x76, 0x47, 0x08}, 256);
    EXPECT_EQ(packed.offsetX, 0x0210u);
    EXPECT_EQ(packed.offsetY, (0x23u << 4) + 3u);
    EXPECT_EQ(packed.width, 0x0635u);
    EXPECT_EQ(packed.height, (0x47u << 4) + 0x8000u + 7u);
}

TEST(Embedded, FieldsFollowTheSelectedOnesOnly) {
    Bytes bytes(12, 0);
    bytes[4] = 0x21; // wide form
    bytes[5] = 0x01;
    const auto info = Decode(bytes, 1 | 256);
    EXPECT_EQ(info.offsetX, 0x0120u) << "at byte 4";
}

TEST(Embedded, AllNineInOrder) {
    Bytes bytes;
    for (uint8_t i = 0; i < 44; ++i)
        bytes.push_back(i);
    const auto info = Decode(bytes, 511);
    EXPECT_EQ(info.brightness, 0x0F0E0D0Cu);
    EXPECT_EQ(info.red, 0x1110u);
    EXPECT_EQ(info.frameNumber, 0x1B1A1918u);
    EXPECT_EQ(info.triggerCount, 0x1F1E1D1Cu);
    EXPECT_EQ(info.input, 0x20u);
    EXPECT_EQ(info.output, 0x21u);
    EXPECT_EQ(info.offsetX, ((0x25u & 15u) << 8) + 0x24u);
}

TEST(Embedded, NeverReadsBehindTheBuffer) {
    for (size_t size = 0; size < 44; ++size) {
        const Bytes bytes(size, 0xFF);
        const auto info = DecodeEmbeddedBlock(bytes.data(), size, 511);
        EXPECT_EQ(info.offsetX, 0u) << size;
    }
    EXPECT_NE(Decode(Bytes(44, 0xFF), 511).offsetX, 0u);
}

TEST(Embedded, HigherSelectorBitsMeanNothing) {
    EXPECT_TRUE(IsAllZero(Decode(Bytes(64, 0xFF), ~uint64_t{511})));
}

} // namespace
