#include "Network/Pacing.h"

#include <gtest/gtest.h>

namespace {

using namespace vcam;
using namespace std::chrono_literals;

const PacketPacer::Clock::time_point kStart{10s};

TEST(PacketPacer, WithoutSpeedAndDelayEverythingMayLeave) {
    const PacketPacer pacer(kStart, 1500, 0, 0);
    EXPECT_EQ(pacer.Allowed(1000, kStart, 64), 64u);
}

TEST(PacketPacer, LinkSpeedSpreadsPackets) {
    // 1250 bytes at 1000 Mbit/s take 10 us
    const PacketPacer pacer(kStart, 1250, 1000, 0);
    EXPECT_EQ(pacer.Due(0), kStart);
    EXPECT_EQ(pacer.Due(100), kStart + 1ms);
    EXPECT_EQ(pacer.Allowed(0, kStart, 64), 25u) << "one quantum of 250 us";
    EXPECT_EQ(pacer.Allowed(25, kStart, 64), 0u);
    EXPECT_EQ(pacer.Allowed(25, kStart + 250us, 64), 25u);
    EXPECT_EQ(pacer.Allowed(25, kStart + 1ms, 64), 64u) << "late: it catches up, in full batches";
}

TEST(PacketPacer, DelayBetweenPacketsCountsForEach) {
    const PacketPacer pacer(kStart, 1500, 0, 1000000);
    EXPECT_EQ(pacer.Due(3), kStart + 3ms);
    EXPECT_EQ(pacer.Allowed(3, kStart + 2999us, 64), 0u);
    EXPECT_EQ(pacer.Allowed(3, kStart + 3ms, 64), 1u) << "longer than a quantum: one at a time";
}

TEST(FramePacer, KeepsTheRateThoughFramesComeLate) {
    FramePacer pacer;
    pacer.Restart(kStart);
    EXPECT_EQ(pacer.Next(), kStart);
    pacer.Begin(kStart + 3ms, 10000);
    EXPECT_EQ(pacer.Next(), kStart + 10ms) << "counted from when it was due, not from when it came";
    pacer.Begin(kStart + 10ms, 10000);
    EXPECT_EQ(pacer.Next(), kStart + 20ms);
}

TEST(FramePacer, MakesUpForNoMissedFrames) {
    FramePacer pacer;
    pacer.Restart(kStart);
    pacer.Begin(kStart + 500ms, 10000);
    EXPECT_EQ(pacer.Next(), kStart + 500ms);
    pacer.Begin(kStart + 500ms, 10000);
    EXPECT_EQ(pacer.Next(), kStart + 510ms);
}

} // namespace
