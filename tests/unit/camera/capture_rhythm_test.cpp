#include "Camera/CaptureRhythm.h"

#include <gtest/gtest.h>

namespace {

TEST(Capture, QualityOneToHundredBecomesFiftyToNinetyNine) {
    const std::pair<int, int> rows[] = {{1, 50},   {40, 69}, {50, 74}, {99, 98},
                                        {100, 99}, {0, 50},  {-7, 50}, {5000, 99}};
    for (const auto& [setting, quality] : rows)
        EXPECT_EQ(JpegQualityOf(setting), quality) << setting;
}

TEST(Capture, UnitsOfTime) {
    EXPECT_EQ(MillisecondsOf(3, 1), 3000);
    EXPECT_EQ(MillisecondsOf(3, 2), 180000);
    EXPECT_EQ(MillisecondsOf(3, 3), 10800000);
    EXPECT_EQ(MillisecondsOf(3, 0), 0);
    EXPECT_EQ(MillisecondsOf(3, 4), 0);
    EXPECT_EQ(MillisecondsOf(2000000000, 3), 7200000000000000) << "beyond 32 bits";
}

TEST(Capture, FolderNamesStayInTheFolder) {
    EXPECT_EQ(SafeFolderName("Line 3 east(KV-1042)"), "Line 3 east(KV-1042)");
    EXPECT_EQ(SafeFolderName("../../etc"), "....etc");
    EXPECT_EQ(SafeFolderName(".."), "_");
    EXPECT_EQ(SafeFolderName("/..*"), "_");
    EXPECT_EQ(SafeFolderName("."), "_");
    EXPECT_EQ(SafeFolderName("a/b\\c:d"), "abcd");
    EXPECT_EQ(SafeFolderName(""), "");
}

TEST(Capture, FileNames) {
    EXPECT_EQ(SeriesFileName("/data/cam", "Image_", "1", 0), "/data/cam/Image_1.bmp");
    EXPECT_EQ(SeriesFileName("/data/cam", "Image_", "1", 1), "/data/cam/Image_1.jpg");
    EXPECT_EQ(SeriesFileName("/data/cam", "Image_", "1", 2), "/data/cam/Image_1.raw");
    EXPECT_EQ(SeriesFileName("/data/cam", "Image_", "1", 77), "/data/cam/Image_1.raw");
    EXPECT_EQ(SeriesFileName("/data/cam", "", "20261120131500123", 1), "/data/cam/20261120131500123.jpg");
    EXPECT_EQ(SeriesFileName("/data/%1", "%2", "%3", 0), "/data/%1/%2%3.bmp")
        << "percent signs are no placeholders";
}

} // namespace
