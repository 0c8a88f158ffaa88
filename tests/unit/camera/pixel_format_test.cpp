#include "Camera/PixelFormat.h"

#include <gtest/gtest.h>
#include <ostream>

namespace {

struct Row {
    int64_t code;
    uint32_t media;
    uint32_t frame2;   // frame size in halves of n
    uint32_t display2; // display size in halves of n
    uint32_t gdiFrame2;
    uint32_t gdiDisplay2;
    uint32_t vr; // 0 for none
    uint32_t gdiTarget;
    uint32_t vrTarget;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << std::hex << row.code;
}

class PixelFormats : public testing::TestWithParam<Row> {};

TEST_P(PixelFormats, Row) {
    const Row& row = GetParam();
    const uint32_t n = 101; // odd: halves are rounded down
    const auto sizes = FrameSizesOf(row.code, n);
    ASSERT_TRUE(sizes);
    EXPECT_EQ(sizes->frame, row.frame2 * n / 2);
    EXPECT_EQ(sizes->display, row.display2 * n / 2);
    const auto gdi = GdiFrameSizesOf(row.code, n);
    ASSERT_TRUE(gdi);
    EXPECT_EQ(gdi->frame, row.gdiFrame2 * n / 2);
    EXPECT_EQ(gdi->display, row.gdiDisplay2 * n / 2);
    EXPECT_EQ(GetConvertPixelFormat(row.code), row.media);
    tagVRPixelFormat format{};
    ASSERT_TRUE(GetVRPixelFormat(row.code, format));
    EXPECT_EQ(static_cast<uint32_t>(format), row.vr);
    EXPECT_EQ(GetGDIDisplayPixelFormat(row.code), row.gdiTarget);
    EXPECT_EQ(GetVRDisplayPixelFormat(row.code), row.vrTarget);
}

constexpr uint32_t kGrey = 0x40000;
constexpr uint32_t kColour = 0x2000;

Row Mono(int64_t code, uint32_t media, uint32_t f, uint32_t d, uint32_t gf) {
    return {code, media, f, d, gf, 6, kGrey, 0, media};
}
Row Bayer(int64_t code, uint32_t media, uint32_t f) {
    return {code, media, f, 8, f, 8, kColour, 32, 32};
}

INSTANTIATE_TEST_SUITE_P(
    All, PixelFormats,
    testing::Values(
        Row{0x01080001, 0, 2, 2, 2, 6, kGrey, 0, 0}, Mono(0x01100003, 1, 6, 8, 4),
        Mono(0x01100005, 2, 6, 8, 4), Mono(0x010C0004, 3, 3, 3, 3), Mono(0x010C0006, 4, 3, 3, 3),
        Bayer(0x01080008, 5, 2), Bayer(0x01080009, 6, 2), Bayer(0x0108000A, 7, 2), Bayer(0x0108000B, 8, 2),
        Bayer(0x0110000E, 9, 4), Bayer(0x010C0028, 10, 3), Bayer(0x0110000F, 11, 4), Bayer(0x010C0029, 12, 3),
        Bayer(0x0110000D, 13, 4), Bayer(0x010C0027, 14, 3), Bayer(0x0110000C, 15, 4),
        Bayer(0x010C0026, 16, 3), Bayer(0x01100012, 17, 4), Bayer(0x010C002C, 18, 3),
        Bayer(0x01100013, 19, 4), Bayer(0x010C002D, 20, 3), Bayer(0x01100011, 21, 4),
        Bayer(0x010C002B, 22, 3), Bayer(0x01100010, 23, 4), Bayer(0x010C002A, 24, 3),
        Row{0x0210001F, 25, 6, 8, 4, 6, kColour, 27, 25}, Row{0x02100032, 26, 6, 8, 4, 6, kColour, 27, 26},
        Row{0x02180014, 27, 6, 6, 6, 6, kColour, 27, 27}, Row{0x80180001, 0, 6, 6, 6, 6, kColour, 27, 27}));

TEST(PixelFormats, UnknownCodes) {
    for (const int64_t code :
         {int64_t{-1}, int64_t{0}, int64_t{0x01100025}, int64_t{0x0210003A}, int64_t{0x0110002E}}) {
        EXPECT_FALSE(FrameSizesOf(code, 100)) << code;
        EXPECT_FALSE(GdiFrameSizesOf(code, 100)) << code;
        tagVRPixelFormat format{};
        EXPECT_FALSE(GetVRPixelFormat(code, format)) << code;
        EXPECT_EQ(GetConvertPixelFormat(code), 0u);
        EXPECT_EQ(GetGDIDisplayPixelFormat(code), 0u);
        EXPECT_EQ(GetVRDisplayPixelFormat(code), 0u);
    }
}

TEST(PixelFormats, Families) {
    EXPECT_TRUE(IsBayer16(0x0110002E));
    EXPECT_TRUE(IsBayer16(0x01100031));
    EXPECT_FALSE(IsBayer16(0x01100032));
    EXPECT_TRUE(IsBayer12(0x01100010));
    EXPECT_FALSE(IsBayer12(0x0110000F));
    EXPECT_TRUE(IsJPGFormat(OV_GVSP_JPEG));
    EXPECT_FALSE(IsJPGFormat(OV_GVSP_MONO8));
    EXPECT_FALSE(IsJPGFormat(static_cast<int32_t>(0x80180001))) << "sign-extended is another code";
}

} // namespace
