#include "PixelFormat.h"

#include <gtest/gtest.h>

#include <set>

using live::FindPixelFormat;

namespace {

struct Row {
    OvGvspPixelType code;
    const char* name;
    uint32_t mediaType;
    bool colour;
    size_t bytesOf6x3; ///< 18 pixels
};

class PixelFormats : public testing::TestWithParam<Row> {};

TEST_P(PixelFormats, AreKnown) {
    const Row& row = GetParam();
    const live::PixelFormat* format = FindPixelFormat(static_cast<uint32_t>(row.code));
    ASSERT_NE(format, nullptr);
    EXPECT_STREQ(format->name, row.name);
    EXPECT_EQ(format->mediaType, row.mediaType);
    EXPECT_EQ(format->colour, row.colour);
    EXPECT_EQ(format->FrameBytes(6, 3), row.bytesOf6x3);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PixelFormats,
    testing::Values(
        Row{0x01080001, "Mono8", 0, false, 18}, Row{0x01100003, "Mono10", 1, false, 36},
        Row{0x01100005, "Mono12", 2, false, 36}, Row{0x010C0004, "Mono10Packed", 3, false, 27},
        Row{0x010C0006, "Mono12Packed", 4, false, 27}, Row{0x01080008, "BayerGR8", 5, true, 18},
        Row{0x01080009, "BayerRG8", 6, true, 18}, Row{0x0108000A, "BayerGB8", 7, true, 18},
        Row{0x0108000B, "BayerBG8", 8, true, 18}, Row{0x0110000E, "BayerGB10", 9, true, 36},
        Row{0x010C0028, "BayerGB10Packed", 10, true, 27}, Row{0x0110000F, "BayerBG10", 11, true, 36},
        Row{0x010C0029, "BayerBG10Packed", 12, true, 27}, Row{0x0110000D, "BayerRG10", 13, true, 36},
        Row{0x010C0027, "BayerRG10Packed", 14, true, 27}, Row{0x0110000C, "BayerGR10", 15, true, 36},
        Row{0x010C0026, "BayerGR10Packed", 16, true, 27}, Row{0x01100012, "BayerGB12", 17, true, 36},
        Row{0x010C002C, "BayerGB12Packed", 18, true, 27}, Row{0x01100013, "BayerBG12", 19, true, 36},
        Row{0x010C002D, "BayerBG12Packed", 20, true, 27}, Row{0x01100011, "BayerRG12", 21, true, 36},
        Row{0x010C002B, "BayerRG12Packed", 22, true, 27}, Row{0x01100010, "BayerGR12", 23, true, 36},
        Row{0x010C002A, "BayerGR12Packed", 24, true, 27}, Row{0x0210001F, "YUV422Packed", 25, true, 36},
        Row{0x02100032, "YUV422_YUYV_Packed", 26, true, 36}, Row{0x02180014, "RGB8Packed", 27, true, 54},
        Row{0x80180001, "JPEG", 27, true, 0}),
    [](const testing::TestParamInfo<Row>& row) { return std::string(row.param.name); });

TEST(PixelFormat, AnOddNumberOfPackedPixelsTakesAWholeLastByte) {
    EXPECT_EQ(FindPixelFormat(0x010C0006)->FrameBytes(5, 3), 23U);
}

TEST(PixelFormat, LargeFramesDoNotOverflow) {
    EXPECT_EQ(FindPixelFormat(0x02180014)->FrameBytes(65535, 65535), size_t{65535} * 65535 * 3);
}

TEST(PixelFormat, UnknownCodesAreShownAsNumbers) {
    EXPECT_EQ(FindPixelFormat(0x01080002), nullptr);
    EXPECT_EQ(live::PixelFormatName(0x01080002), "0x01080002");
    EXPECT_EQ(live::PixelFormatName(0x01080001), "Mono8");
}

TEST(PixelFormat, SensorDataIsGreyOrBayer) {
    EXPECT_TRUE(FindPixelFormat(0x010C002B)->IsSensorData());
    EXPECT_TRUE(FindPixelFormat(0x01100005)->IsSensorData());
    EXPECT_FALSE(FindPixelFormat(0x02180014)->IsSensorData());
    EXPECT_FALSE(FindPixelFormat(0x0210001F)->IsSensorData());
}

} // namespace
