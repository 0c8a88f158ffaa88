#include "Statistics.h"

#include <gmock/gmock.h>

using live::RatesBetween;
using live::Sample;
using live::TransportCounters;
using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

/// A clock that stands where the test puts it.
Sample At(std::chrono::milliseconds time) {
    Sample sample;
    sample.time = std::chrono::steady_clock::time_point(1000s) + time;
    sample.transport = TransportCounters{};
    return sample;
}

TEST(Statistics, RatesAreDifferencesOverTime) {
    Sample before = At(0ms);
    before.frames = 100;
    before.shown = 50;
    before.cpu = 1s;
    before.transport->receivedBytes = 1'000'000;
    Sample now = At(2000ms);
    now.frames = 160;
    now.shown = 80;
    now.cpu = 1500ms;
    now.transport->receivedBytes = 125'000'000;
    const live::Rates rates = RatesBetween(before, now);
    EXPECT_DOUBLE_EQ(rates.seconds, 2);
    EXPECT_DOUBLE_EQ(rates.frames, 30);
    EXPECT_DOUBLE_EQ(rates.shown, 15);
    EXPECT_DOUBLE_EQ(rates.megabytes, 62);
    EXPECT_DOUBLE_EQ(rates.cpuPercent, 25);
}

TEST(Statistics, NoTimeNoRates) {
    Sample now = At(0ms);
    now.frames = 10;
    now.cpu = 1s;
    const live::Rates rates = RatesBetween(At(0ms), now);
    EXPECT_EQ(rates.frames, 0);
    EXPECT_EQ(rates.cpuPercent, 0);
    EXPECT_EQ(RatesBetween(At(5ms), now).frames, 0);
}

TEST(Statistics, CountersOfANewStreamCountFromZero) {
    Sample before = At(0ms);
    before.frames = 1000;
    before.transport->receivedBytes = 5'000'000'000;
    Sample now = At(1000ms);
    now.frames = 30;
    now.transport->receivedBytes = 60'000'000;
    EXPECT_DOUBLE_EQ(RatesBetween(before, now).frames, 30);
    EXPECT_DOUBLE_EQ(RatesBetween(before, now).megabytes, 60);
}

TEST(Statistics, BytesBeyond32Bits) {
    Sample now = At(1000ms);
    now.transport->receivedBytes = 10'000'000'000;
    EXPECT_DOUBLE_EQ(RatesBetween(At(0ms), now).megabytes, 10000);
}

TEST(Statistics, MoreThanOneCore) {
    Sample now = At(1000ms);
    now.cpu = 1750ms;
    EXPECT_DOUBLE_EQ(RatesBetween(At(0ms), now).cpuPercent, 175);
}

TEST(Statistics, TheLine) {
    Sample before = At(9000ms);
    before.frames = 270;
    Sample now = At(10000ms);
    now.frames = 300;
    now.shown = 30;
    now.cpu = 55ms;
    now.transport = TransportCounters{62'208'000, 7, 9, 2, 1};
    EXPECT_EQ(live::StatisticsLine(At(0ms), before, now),
              "   10.0 s  frames 300  30.00 fps  62.2 MB/s  shown 30.0 fps  lost 7  resent 9  errors 2  "
              "no buffer 1  CPU 5.5 %");
}

TEST(Statistics, RareCountsOnlyAppearWhenThereAreAny) {
    Sample now = At(1000ms);
    now.incomplete = 3;
    now.oversize = 4;
    now.grabErrors = 5;
    const std::string line = live::StatisticsLine(At(0ms), At(0ms), now);
    EXPECT_THAT(line, HasSubstr("incomplete 3  too large 4  fetch errors 5  CPU"));
}

TEST(Statistics, CountersThatTheLibraryDoesNotTellAreNotZero) {
    Sample now = At(1000ms);
    now.transport.reset();
    EXPECT_THAT(live::StatisticsLine(At(0ms), At(0ms), now), HasSubstr("lost ?  resent ?  errors ?"));
}

TEST(Statistics, TheSummaryIsOverTheWholeRun) {
    Sample now = At(4000ms);
    now.frames = 100;
    EXPECT_THAT(live::SummaryLine(At(0ms), now),
                testing::StartsWith("in all     4.0 s  frames 100  25.00 fps"));
}

TEST(Statistics, ProcessTimeGrowsWithWork) {
    const auto before = live::ProcessCpuTime();
    EXPECT_GT(before, 0ns);
    volatile unsigned sink = 0;
    while (live::ProcessCpuTime() == before)
        sink = sink + 1;
    EXPECT_GT(live::ProcessCpuTime(), before);
}

TEST(Beat, OncePerPeriodAndNeverBefore) {
    const auto start = At(0ms).time;
    live::Beat beat(start, 1s);
    EXPECT_FALSE(beat.IsDue(start + 999ms));
    EXPECT_TRUE(beat.IsDue(start + 1000ms));
    EXPECT_FALSE(beat.IsDue(start + 1000ms));
    EXPECT_EQ(beat.Next(), start + 2s);
}

TEST(Beat, ALateOneDoesNotShiftTheNext) {
    const auto start = At(0ms).time;
    live::Beat beat(start, 1s);
    EXPECT_TRUE(beat.IsDue(start + 1900ms));
    EXPECT_EQ(beat.Next(), start + 2s);
}

TEST(Beat, MissedOnesAreLeftOut) {
    const auto start = At(0ms).time;
    live::Beat beat(start, 1s);
    EXPECT_TRUE(beat.IsDue(start + 5500ms));
    EXPECT_FALSE(beat.IsDue(start + 5900ms));
    EXPECT_EQ(beat.Next(), start + 6s);
}

TEST(Title, HasRoomForThreeFigures) {
    live::Rates rates;
    rates.frames = 29.97;
    rates.megabytes = 62.15;
    Sample sample = At(0ms);
    sample.transport->lostPackets = 7;
    EXPECT_EQ(live::TitleFigures(rates, sample), "30.0 fps - 62.1 MB/s - lost 7");
    sample.transport.reset();
    EXPECT_THAT(live::TitleFigures(rates, sample), HasSubstr("lost 0"));
}

} // namespace
