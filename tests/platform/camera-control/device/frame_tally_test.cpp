// Counting of lost packets and frames, from scripted counters.
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "gvsp/FrameTally.h"

namespace kolt::cc {
namespace {

using End = ClosedFrame::End;

TEST(BlockIds, GapsBetweenTwoNumbers) {
    const std::vector<std::tuple<std::uint64_t, std::uint64_t, std::uint64_t>> rows{
        {1, 2, 0},     {1, 3, 1},         {10, 20, 9},       {65535, 1, 0},     {65535, 2, 1}, {65534, 1, 1},
        {65530, 3, 7}, {65535, 65536, 0}, {70000, 70001, 0}, {70000, 70004, 3}, {70000, 5, 0}, {5, 5, 0},
        {40, 1, 0},    {1, 60000, 0},     {1, 32768, 32766}, {5, 0, 0},
    };
    for (const auto& [last, next, missing] : rows) {
        EXPECT_EQ(missingBetween(last, next), missing) << last << " to " << next;
    }
    EXPECT_EQ(blockIdAfter(5, 2), 7U);
    EXPECT_EQ(blockIdAfter(65535, 1), 1U) << "0 is skipped";
    EXPECT_EQ(blockIdAfter(65535, 0), 65535U);
    EXPECT_EQ(blockIdAfter(70000, 1), 70001U);
}

TEST(BlockIds, FramesBeforeTheFirstOneThatWasSeen) {
    for (const auto& [first, missing] : std::vector<std::pair<std::uint64_t, std::uint64_t>>{
             {1, 0}, {2, 1}, {100, 99}, {101, 0}, {0, 0}, {65535, 0}, {~std::uint64_t{0}, 0}}) {
        EXPECT_EQ(missingBeforeFirst(first), missing) << first;
    }
}

// Frames of 10 packets: leader, 8 of data, trailer.
class Tally : public testing::Test {
protected:
    static constexpr std::size_t kPlaces = 8;

    void begin(FrameTally& tally) {
        ++counters.received;
        tally.frameBegun(counters);
    }
    void receive(std::uint64_t packets) { counters.received += packets; }
    std::uint32_t close(FrameTally& tally, End end, std::uint64_t id, std::size_t unfilled = 0,
                        bool leader = true) {
        ClosedFrame frame;
        frame.end = end;
        frame.blockId = id;
        frame.leaderCame = leader;
        frame.places = kPlaces;
        frame.unfilled = unfilled;
        return tally.frameClosed(frame, counters);
    }
    void complete(FrameTally& tally, std::uint64_t id) {
        begin(tally);
        receive(9);
        EXPECT_EQ(close(tally, End::complete, id), 0U);
    }

    TransportCounters counters;
};

TEST_F(Tally, CompleteFramesLoseNothing) {
    FrameTally tally(true, false);
    for (std::uint64_t id = 65530; id < 65540; ++id) {
        complete(tally, id > 65535 ? id - 65535 : id);
    }
    EXPECT_EQ(tally.totals().frames, 10U);
    EXPECT_EQ(tally.totals().lostPackets, 0U);
    EXPECT_EQ(tally.totals().vanishedFrames, 0U);
}

TEST_F(Tally, FramesBeforeTheFirstVanish) {
    FrameTally tally(true, false);
    complete(tally, 4);
    complete(tally, 5);
    EXPECT_EQ(tally.totals().vanishedFrames, 3U);
    EXPECT_EQ(tally.totals().lostPackets, 30U);
    FrameTally withoutIds(false, false);
    complete(withoutIds, 4);
    EXPECT_EQ(withoutIds.totals().vanishedFrames, 0U);
}

TEST_F(Tally, LeaderPayloadAndTrailerCountOneByOne) {
    struct Row {
        bool leader;
        std::size_t unfilled;
        bool trailer;
    };
    for (const Row row : {Row{true, 3, true}, Row{false, 0, true}, Row{true, 0, false}, Row{false, 2, false},
                          Row{true, 8, true}, Row{true, 1, false}}) {
        FrameTally tally(true, false);
        counters = {};
        complete(tally, 1);
        begin(tally);
        const std::uint32_t lost =
            (row.leader ? 0 : 1) + static_cast<std::uint32_t>(row.unfilled) + (row.trailer ? 0 : 1);
        receive(9 - lost);
        begin(tally); // the next frame ends this one
        EXPECT_EQ(close(tally, End::incomplete, 2, row.unfilled, row.leader), lost);
        EXPECT_EQ(tally.totals().lostPackets, lost);
        EXPECT_EQ(tally.totals().incompleteFrames, 1U);
        receive(9);
        EXPECT_EQ(close(tally, End::complete, 3), 0U);
        EXPECT_EQ(tally.totals().vanishedFrames, 0U);
    }
}

TEST_F(Tally, LastFrameClosedByTimeCountsAgainstTheCountersOfNow) {
    FrameTally tally(true, false);
    begin(tally);
    receive(7); // two are missing: one of data, and the trailer
    EXPECT_EQ(close(tally, End::incomplete, 1, 1), 2U);
}

TEST_F(Tally, WithResendTheTrailerIsOnlyBlamedWhenNothingElseExplainsTheFailure) {
    FrameTally tally(true, true);
    begin(tally);
    receive(8);
    begin(tally);
    EXPECT_EQ(close(tally, End::incomplete, 1, 0), 1U) << "the trailer";
    receive(5); // late answers for frame 2 came in between, so the counters say nothing
    begin(tally);
    EXPECT_EQ(close(tally, End::incomplete, 2, 3), 3U);
}

TEST_F(Tally, FramesOfWhichNothingCameAreKnownByTheGapInTheNumbers) {
    FrameTally tally(true, false);
    complete(tally, 65534);
    complete(tally, 3); // 65535, 1 and 2 are missing
    EXPECT_EQ(tally.totals().vanishedFrames, 3U);
    EXPECT_EQ(tally.totals().lostPackets, 30U);
}

TEST_F(Tally, AFrameWithoutLeaderHasNoNumberAndLeavesNoGap) {
    FrameTally tally(true, false);
    complete(tally, 1);
    begin(tally);
    receive(8);
    begin(tally);
    EXPECT_EQ(close(tally, End::incomplete, 9 /* of an earlier use of the buffer */, 0, false), 1U);
    EXPECT_EQ(tally.blockId(), 2U);
    receive(9);
    close(tally, End::complete, 3);
    EXPECT_EQ(tally.totals().vanishedFrames, 0U);
    EXPECT_EQ(tally.totals().lostPackets, 1U);
    EXPECT_EQ(tally.blockId(), 3U);
}

TEST_F(Tally, PacketsWithoutABufferAreNotLostOnTheWay) {
    FrameTally tally(true, false);
    complete(tally, 1);
    counters.received += 20; // frames 2 and 3 found no buffer
    counters.ignored += 20;
    counters.underruns += 20;
    EXPECT_EQ(tally.unbufferedNow(counters.underruns), 2U);
    complete(tally, 4);
    EXPECT_EQ(tally.totals().unbufferedFrames, 2U);
    EXPECT_EQ(tally.unbufferedNow(counters.underruns), 0U);
    EXPECT_EQ(tally.totals().vanishedFrames, 0U);
    EXPECT_EQ(tally.totals().lostPackets, 0U);
}

TEST_F(Tally, AFrameThatFoundItsBufferHalfWayIsIncompleteButLostNothingOnTheWay) {
    FrameTally tally(true, false);
    complete(tally, 1);
    counters.received += 14; // frame 2, and the leader and three of frame 3
    counters.ignored += 14;
    counters.underruns += 14;
    begin(tally);
    receive(5);
    begin(tally);
    EXPECT_EQ(close(tally, End::incomplete, 0, 3, false), 4U) << "absent from this frame";
    receive(9);
    close(tally, End::complete, 4);
    EXPECT_EQ(tally.totals().lostPackets, 0U);
    EXPECT_EQ(tally.totals().unbufferedFrames + tally.totals().incompleteFrames, 2U);
}

TEST_F(Tally, DuplicatesAndLatePacketsDoNotCover) {
    FrameTally tally(true, false);
    begin(tally);
    receive(9); // of these two are copies, so two are missing
    counters.duplicated += 2;
    begin(tally);
    EXPECT_EQ(close(tally, End::incomplete, 1, 1), 2U);
}

TEST_F(Tally, UnfitAndAbortedFramesAreNoLossOnTheWay) {
    FrameTally tally(true, false);
    begin(tally);
    receive(30);
    EXPECT_EQ(close(tally, End::unfit, 1), 0U);
    begin(tally);
    EXPECT_EQ(close(tally, End::aborted, 2, 5), 0U);
    tally.restarted();
    EXPECT_TRUE(tally.isRestarted());
    begin(tally);
    receive(3);
    EXPECT_EQ(close(tally, End::cut, 4, 6), 0U);
    EXPECT_FALSE(tally.isRestarted());
    complete(tally, 5);
    EXPECT_EQ(tally.totals().lostPackets, 0U);
    EXPECT_EQ(tally.totals().unfitFrames, 4U) << "the first, two of the pause, and the one that was cut";
    EXPECT_EQ(tally.totals().vanishedFrames, 0U);
}

TEST_F(Tally, WithoutPacketsThereIsNothingToLose) {
    FrameTally tally(false, false);
    EXPECT_EQ(close(tally, End::complete, 1), 0U);
    EXPECT_EQ(close(tally, End::incomplete, 900, 5), 0U);
    EXPECT_EQ(tally.totals().lostPackets, 0U);
    EXPECT_EQ(tally.totals().vanishedFrames, 0U);
    EXPECT_EQ(tally.totals().incompleteFrames, 1U);
}

} // namespace
} // namespace kolt::cc
