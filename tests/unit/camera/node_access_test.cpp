#include "Camera/QCameraNodeAccess.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(NodeAccess, Remarks) {
    EXPECT_EQ(IntegerRemark(255), "Error code:0xff");
    EXPECT_EQ(IntegerRemark(-1), "Error code:0xffffffff");
    EXPECT_EQ(UnknownRemark(), "Unknow error.");
    try {
        throw OUT_OF_RANGE_EXCEPTION("Value %d is too large", 7);
    } catch (const GenICam_3_0::GenericException& error) {
        const QString remark = GenericRemark(error);
        EXPECT_TRUE(remark.startsWith("what:")) << remark.toStdString();
        EXPECT_TRUE(remark.contains("Value 7 is too large"));
        EXPECT_TRUE(remark.contains(QString(" SourceFileName:") + error.GetSourceFileName()));
    }
}

TEST(NodeAccess, NarrowingKeepsTheSenseOfHugeNumbers) {
    EXPECT_EQ(NarrowToFloat(1.5), 1.5f);
    EXPECT_EQ(NarrowToFloat(1e300), std::numeric_limits<float>::infinity());
    EXPECT_EQ(NarrowToFloat(-1e300), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(NarrowToFloat(std::nan(""))));
}

TEST(NodeAccess, NumbersOfSymbols) {
    EXPECT_EQ(NumberOfSymbol("On", {{"On", 1}, {"Off", 0}}, 9), 1);
    EXPECT_EQ(NumberOfSymbol("Off", {{"On", 1}, {"Off", 0}}, 9), 0);
    EXPECT_EQ(NumberOfSymbol("Burst", {{"On", 1}, {"Off", 0}}, 9), 9);
}

struct GridRow {
    long long optimum, increment, maximum, minimum, result;
};

TEST(NodeAccess, PacketSizesOnTheGrid) {
    const GridRow rows[] = {
        {1500, 4, 9000, 576, 1500},  {1501, 4, 9000, 576, 1500}, {9216, 4, 9000, 576, 9000},
        {100, 4, 9000, 576, 576},    {1500, 1, 9000, 576, 1500}, {1500, 0, 9000, 576, 1500},
        {1500, -3, 9000, 576, 1500}, {0, 8, 9000, 220, 220},     {1500, 8, 9000, 221, 1493},
    };
    for (const GridRow& row : rows)
        EXPECT_EQ(PacketSizeOnGrid(row.optimum, row.increment, row.maximum, row.minimum), row.result)
            << row.optimum;
    const long long lowest = std::numeric_limits<long long>::min();
    const long long highest = std::numeric_limits<long long>::max();
    EXPECT_EQ(PacketSizeOnGrid(highest, 1, highest, lowest), highest);
}

TEST(NodeAccess, IntegersOfTexts) {
    EXPECT_EQ(IntegerOfText("8"), 8);
    EXPECT_EQ(IntegerOfText(" 0x10 "), 16);
    EXPECT_EQ(IntegerOfText("0X1f"), 31);
    EXPECT_EQ(IntegerOfText("eight"), 0);
    EXPECT_EQ(IntegerOfText(""), 0);
}

} // namespace
