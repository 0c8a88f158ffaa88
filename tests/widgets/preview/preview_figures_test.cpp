#include "UI/MainWindow/PreviewFigures.h"

#include <gtest/gtest.h>

namespace {

struct ColourCase {
    int r, g, b, y, u, v;
};

class PreviewYuv : public testing::TestWithParam<ColourCase> {};

TEST_P(PreviewYuv, FollowsTheFactorsAndStaysInRange) {
    const ColourCase& c = GetParam();
    const _YUV_ yuv = YuvOf(c.r, c.g, c.b);
    EXPECT_EQ(yuv.y, c.y);
    EXPECT_EQ(yuv.u, c.u);
    EXPECT_EQ(yuv.v, c.v);
}

INSTANTIATE_TEST_SUITE_P(Colours, PreviewYuv,
                         testing::Values(ColourCase{0, 0, 0, 0, 128, 128},
                                         ColourCase{255, 255, 255, 255, 128, 128},
                                         ColourCase{255, 0, 0, 76, 90, 255}, // V would be 284
                                         ColourCase{0, 255, 0, 149, 54, 0},  // V would be -3
                                         ColourCase{0, 0, 255, 29, 239, 102},
                                         ColourCase{10, 20, 30, 18, 133, 120}));

struct Tick {
    int64_t bytes, lost;
    int packetSize;
    bool serious;
};

TEST(NetworkWatch, TellsALossAboveATenthAndAboveAHundred) {
    CNetworkWatch watch;
    const Tick ticks[] = {
        {1000 * 1000, 100, 1000, false}, // a tenth exactly, a hundred exactly
        {2000 * 1000, 300, 1000, true},  // 200 of 1000
        {3000 * 1000, 400, 1000, false}, // 100 of 1000
        {3000 * 1000, 900, 1000, false}, // nothing received in this tick
        {4000 * 1000, 1001, 1000, true}, // 101 of 1000
    };
    for (const Tick& tick : ticks) {
        EXPECT_EQ(watch.Update(tick.bytes, tick.lost, tick.packetSize), tick.serious) << tick.lost;
    }
}

TEST(NetworkWatch, FewLossesAreNeverSerious) {
    CNetworkWatch watch;
    EXPECT_FALSE(watch.Update(1000, 99, 1000));
    EXPECT_FALSE(watch.Update(2000, 100, 1000)) << "one of one, but a hundred in all";
    EXPECT_TRUE(watch.Update(3000, 101, 1000));
    watch.Reset();
    EXPECT_FALSE(watch.Update(3000000, 101, 1000));
}

TEST(NetworkWatch, WithoutAPacketSizeNothingIsTold) {
    CNetworkWatch watch;
    EXPECT_FALSE(watch.Update(1000000, 5000, 0));
    EXPECT_FALSE(watch.Update(2000000, 9000, -1));
}

TEST(ShownFigures, LossesBelowAHundredAreShownAsNone) {
    EXPECT_EQ(ShownLoss(0), 0);
    EXPECT_EQ(ShownLoss(99), 0);
    EXPECT_EQ(ShownLoss(100), 100);
}

TEST(ShownFigures, TheDisplayRateIsNotAboveWhatComesAndWhatIsSet) {
    EXPECT_FLOAT_EQ(ShownDisplayRate(25, 100, 30), 25);
    EXPECT_FLOAT_EQ(ShownDisplayRate(35, 100, 30), 30);
    EXPECT_FLOAT_EQ(ShownDisplayRate(35, 20, 30), 20);
    EXPECT_FLOAT_EQ(ShownDisplayRate(35, -1, 30), -1);
}

} // namespace
