#include "Camera/FrameRate.h"

#include <gtest/gtest.h>
#include <ostream>

namespace {

TEST(RateMeter, FramesOverTheElapsedSecond) {
    CRateMeter meter;
    float rate = 0;
    meter.Tick(0, 0, rate);
    for (int i = 1; i <= 30; ++i)
        meter.Tick(i, i * 33.4, rate);
    EXPECT_EQ(rate, 0.0f) << "the second is full with the next pass";
    meter.Tick(31, 31 * 33.4, rate);
    EXPECT_NEAR(rate, 31 * 1000.0 / (30 * 33.4), 0.01);
}

TEST(RateMeter, DecaysToZeroInTheSecondWithoutFrames) {
    CRateMeter meter;
    float rate = 0;
    meter.Tick(0, 0, rate);
    for (int ms = 10; ms <= 1020; ms += 10)
        meter.Tick(ms / 10, ms, rate);
    EXPECT_GT(rate, 90.0f);
    for (int ms = 1030; ms <= 4500; ms += 100)
        meter.Tick(102, ms, rate);
    EXPECT_EQ(rate, 0.0f);
}

TEST(RateMeter, TheTimerWaitsForTheFirstFrame) {
    CRateMeter meter;
    float rate = 0;
    for (int ms = 0; ms <= 5000; ms += 100)
        meter.Tick(0, ms, rate);
    meter.Tick(1, 5100, rate);
    EXPECT_EQ(rate, 0.0f);
    for (int i = 1; i <= 10; ++i)
        meter.Tick(1 + i, 5100 + i * 100, rate);
    EXPECT_NEAR(rate, 10.0f, 1.1f);
}

TEST(RateMeter, TheMarkStartsAgainWithTheCount) {
    CRateMeter meter;
    float rate = 0;
    meter.Tick(0, 0, rate);
    meter.Tick(100, 1000, rate);
    meter.Tick(100, 1001, rate);
    EXPECT_NEAR(rate, 100.0f, 0.2f);
    meter.ClearMark();
    meter.Tick(0, 1100, rate);
    meter.Tick(50, 2100, rate);
    meter.Tick(50, 2101, rate);
    EXPECT_NEAR(rate, 50.0f, 0.2f) << "not below zero";
}

struct PaceRow {
    int config;
    float actual;
    float display;
    bool trigger;
    int interval;
    int adjustment;
};

void PrintTo(const PaceRow& row, std::ostream* out) {
    *out << row.config << "_" << row.actual << "_" << row.display << (row.trigger ? "_trigger" : "");
}

class Pace : public testing::TestWithParam<PaceRow> {};

TEST_P(Pace, FirstStep) {
    CDisplayPacer pacer;
    const PaceRow& row = GetParam();
    EXPECT_EQ(pacer.Step(row.config, row.actual, row.display, row.trigger), row.interval);
    EXPECT_EQ(pacer.GetAdjustment(), row.adjustment);
}

INSTANTIATE_TEST_SUITE_P(
    All, Pace,
    testing::Values(PaceRow{30, 30.0f, 30.0f, false, 33, 0},  // on target
                    PaceRow{30, 120.0f, 29.9f, false, 33, 0}, // short of 1 is no shortfall
                    PaceRow{30, 120.0f, 28.9f, false, 32, 1}, PaceRow{30, 120.0f, 31.9f, false, 33, 0},
                    PaceRow{30, 120.0f, 32.0f, false, 34, -1}, PaceRow{60, 24.9f, 24.0f, false, 41, 0},
                    PaceRow{60, 120.0f, 60.0f, false, 16, 0},
                    PaceRow{30, 0.0f, 0.0f, false, 30, 0},   // no frames
                    PaceRow{30, 0.9f, 0.0f, false, 30, 0},   // truncated to none
                    PaceRow{30, 0.0f, 25.0f, false, 31, -1}, // the rate of the last second stays
                    PaceRow{30, 1.0f, 1.0f, false, 1000, 0}, PaceRow{30, 1.0f, 1.0f, true, 30, 0},
                    PaceRow{60, 100.0f, 60.0f, true, 16, 0}, PaceRow{0, 50.0f, 0.0f, false, 30, 0},
                    PaceRow{-5, 50.0f, 0.0f, false, 30, 0}));

TEST(Pacer, TheAdjustmentGoesOnAndTheIntervalStaysInRange) {
    CDisplayPacer pacer;
    for (int i = 0; i < 100; ++i)
        EXPECT_GE(pacer.Step(30, 30.0f, 0.0f, false), 1);
    EXPECT_EQ(pacer.GetAdjustment(), 100) << "not bounded";
    EXPECT_EQ(pacer.Step(30, 30.0f, 0.0f, false), 1);
    for (int i = 0; i < 2000; ++i)
        EXPECT_LE(pacer.Step(30, 30.0f, 90.0f, false), 1000);
    EXPECT_EQ(pacer.Step(30, 30.0f, 90.0f, false), 1000);
}

TEST(Pacer, RatesThatNoNumberHolds) {
    CDisplayPacer pacer;
    EXPECT_EQ(pacer.Step(30, -1.0f, -1.0f, false), 30);
    EXPECT_EQ(pacer.Step(30, 1e30f, 1e30f, false), 34);
}

TEST(Bandwidth, MegabitsAndForJpegMegabytes) {
    EXPECT_FLOAT_EQ(BandwidthOf(false, 0, 1920, 1080, 8, 30.0f), 497.664f);
    EXPECT_FLOAT_EQ(BandwidthOf(true, 500000, 1920, 1080, 8, 30.0f), 15.0f);
    EXPECT_FLOAT_EQ(BandwidthOf(false, 0, 0, 0, 8, 30.0f), 0.0f);
}

} // namespace
