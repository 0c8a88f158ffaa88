// Packets made by hand, and the frames that become of them.
#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "gvsp/FrameAssembler.h"

namespace kolt::cc {
namespace {

using std::chrono::milliseconds;
using End = ClosedFrame::End;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kPlace = 100;
constexpr std::uint32_t kWidth = 50;
constexpr std::uint32_t kHeight = 19; // 950 bytes of Mono8: ten packets of data, the last one half full
constexpr std::size_t kFrame = std::size_t{kWidth} * kHeight;
constexpr std::uint32_t kData = 10;
constexpr std::uint32_t kTrailerId = kData + 1;
constexpr std::uint32_t kMono8 = 0x01080001;
constexpr std::uint16_t kUnavailable = 0x800C;

struct Seen {
    std::uint64_t blockId;
    End end;
    std::uint32_t lost;
    Bytes bytes;
};

// An assembler and the ring that it believes to have.
class Assembler : public testing::Test {
protected:
    void SetUp() override { make({}); }
    void TearDown() override {
        assembler->abandon();
        recycleAll();
        for (const auto& [block, count] : outstanding) {
            EXPECT_EQ(count, 0U) << "kept and not given back, of block " << block;
        }
    }
    void make(const std::function<void(FrameAssembler::Rules&)>& change) {
        FrameAssembler::Rules rules;
        rules.place = kPlace;
        rules.frameBytes = kFrame;
        if (change) {
            change(rules);
        }
        FrameAssembler::Hooks hooks;
        hooks.release = [this](std::uint16_t block, std::uint32_t count) { giveBack(block, count); };
        hooks.acquire = [this]() -> AssembledFrame* {
            if (room == 0) {
                return nullptr;
            }
            --room;
            frames.push_back(std::make_unique<AssembledFrame>());
            return frames.back().get();
        };
        hooks.closed = [this](AssembledFrame& frame) {
            Bytes bytes(frame.length(), 0xEE);
            frame.copyTo(bytes.data());
            seen.push_back({frame.blockId(), frame.end(), frame.lostPackets(), std::move(bytes)});
            frame.clear([this](std::uint16_t block, std::uint32_t count) { giveBack(block, count); });
            ++room;
        };
        assembler = std::make_unique<FrameAssembler>(rules, hooks);
    }
    void giveBack(std::uint16_t block, std::uint32_t count) {
        ASSERT_GE(outstanding[block], count);
        outstanding[block] -= count;
    }
    void recycleAll() {
        for (const auto& frame : frames) {
            frame->clear([this](std::uint16_t block, std::uint32_t count) { giveBack(block, count); });
        }
    }

    // The picture of a frame.
    static std::uint8_t pixel(std::uint64_t blockId, std::size_t at) {
        return static_cast<std::uint8_t>(blockId * 31 + at * 7 + at / 256 + 1);
    }
    static Bytes picture(std::uint64_t blockId, std::size_t bytes = kFrame) {
        Bytes all(bytes);
        for (std::size_t at = 0; at < bytes; ++at) {
            all[at] = pixel(blockId, at);
        }
        return all;
    }

    Bytes header(std::uint64_t blockId, std::uint8_t format, std::uint32_t id, std::uint16_t status) const {
        Bytes bytes(extended ? gvsp::kExtendedHeaderSize : gvsp::kHeaderSize, 0);
        store16(bytes.data(), status);
        bytes[4] = format;
        if (extended) {
            bytes[4] |= 0x80;
            store32(&bytes[8], static_cast<std::uint32_t>(blockId >> 32));
            store32(&bytes[12], static_cast<std::uint32_t>(blockId));
            store32(&bytes[16], id);
        } else {
            store16(&bytes[2], static_cast<std::uint16_t>(blockId));
            bytes[5] = static_cast<std::uint8_t>(id >> 16);
            store16(&bytes[6], static_cast<std::uint16_t>(id));
        }
        return bytes;
    }
    bool send(const Bytes& packet) {
        sent.push_back(packet); // stays where it is, as in the ring
        const auto block = static_cast<std::uint16_t>(sent.size() / 4);
        ++outstanding[block]; // may be given back before add() returns
        const bool kept = assembler->add(sent.back().data(), sent.back().size(), block, now);
        outstanding[block] -= kept ? 0 : 1;
        return kept;
    }
    void leader(std::uint64_t blockId, std::uint16_t type = 1, std::uint32_t height = kHeight) {
        Bytes packet = header(blockId, gvsp::kLeader, 0, 0);
        Bytes body(36, 0);
        store16(&body[2], type);
        store32(&body[8], 1000 + static_cast<std::uint32_t>(blockId));
        store32(&body[12], kMono8);
        store32(&body[16], kWidth);
        store32(&body[20], height);
        packet.insert(packet.end(), body.begin(), body.end());
        send(packet);
    }
    void data(std::uint64_t blockId, std::uint32_t id, std::size_t frame = kFrame) {
        Bytes packet = header(blockId, gvsp::kData, id, 0);
        for (std::size_t at = (id - 1) * kPlace; at < std::min(id * kPlace, frame); ++at) {
            packet.push_back(pixel(blockId, at));
        }
        send(packet);
    }
    void trailer(std::uint64_t blockId, std::uint32_t id = kTrailerId) {
        Bytes packet = header(blockId, gvsp::kTrailer, id, 0);
        packet.resize(packet.size() + 8);
        send(packet);
    }
    void refusal(std::uint64_t blockId, std::uint32_t id, std::uint16_t status = kUnavailable) {
        send(header(blockId, gvsp::kData, id, status));
    }
    // All packets of a frame but some.
    void frame(std::uint64_t blockId, const std::vector<std::uint32_t>& without = {}) {
        for (std::uint32_t id = 0; id <= kTrailerId; ++id) {
            if (std::find(without.begin(), without.end(), id) == without.end()) {
                packet(blockId, id);
            }
        }
    }
    void packet(std::uint64_t blockId, std::uint32_t id) {
        if (id == 0) {
            leader(blockId);
        } else if (id < kTrailerId) {
            data(blockId, id);
        } else {
            trailer(blockId);
        }
    }
    // The requests at this time, as "block:first-last".
    std::vector<std::string> tick(milliseconds later = milliseconds(0)) {
        now += later;
        std::vector<gvsp::ResendRequest> requests;
        wakeAt = assembler->tick(now, requests);
        std::vector<std::string> texts;
        for (const gvsp::ResendRequest& request : requests) {
            EXPECT_EQ(request.extended, extended);
            texts.push_back(std::to_string(request.blockId) + ":" + std::to_string(request.first) + "-" +
                            std::to_string(request.last));
        }
        return texts;
    }
    const TallyTotals& tally() const { return assembler->counters().tally; }
    const TransportCounters& transport() const { return assembler->counters().transport; }

    using Requests = std::vector<std::string>;
    bool extended = false;
    std::size_t room = 8;
    RingClock::time_point now{std::chrono::hours(1)};
    RingClock::time_point wakeAt;
    std::deque<Bytes> sent;
    std::map<std::uint16_t, std::uint32_t> outstanding;
    std::vector<std::unique_ptr<AssembledFrame>> frames;
    std::vector<Seen> seen;
    std::unique_ptr<FrameAssembler> assembler;
};

TEST_F(Assembler, WholeFramesComeInOrderAsTheyWereSent) {
    for (const bool wide : {false, true}) {
        extended = wide;
        make({});
        seen.clear();
        const std::uint64_t first = wide ? 0x1'2345'FFFEULL : 65533;
        std::vector<std::uint64_t> ids;
        for (std::uint64_t index = 0; index < 5; ++index) {
            ids.push_back(wide || first + index <= 65535 ? first + index : first + index - 65535);
            frame(ids.back());
        }
        ASSERT_EQ(seen.size(), 5U);
        for (std::size_t index = 0; index < 5; ++index) {
            EXPECT_EQ(seen[index].blockId, ids[index]);
            EXPECT_EQ(seen[index].end, End::complete);
            EXPECT_EQ(seen[index].lost, 0U);
            EXPECT_EQ(seen[index].bytes, picture(ids[index]));
        }
        EXPECT_EQ(tally().frames, 5U);
        EXPECT_EQ(tally().vanishedFrames + tally().lostPackets, 0U);
        EXPECT_EQ(transport().received, 5U * (kTrailerId + 1));
        EXPECT_EQ(transport().useful(), transport().received);
        EXPECT_EQ(tick(), Requests{});
        EXPECT_EQ(wakeAt, RingClock::time_point::max()) << "nothing to wait for";
    }
}

TEST_F(Assembler, TheLeaderTellsOfTheFrame) {
    leader(7);
    data(7, 1);
    ASSERT_EQ(frames.size(), 1U);
    const gvsp::Leader& told = frames[0]->leader();
    EXPECT_TRUE(frames[0]->hasLeader());
    EXPECT_TRUE(told.hasImage);
    EXPECT_EQ(told.width, kWidth);
    EXPECT_EQ(told.height, kHeight);
    EXPECT_EQ(told.pixelFormat, kMono8);
    EXPECT_EQ(told.timestamp, 1007U);
}

TEST_F(Assembler, PacketsMayOvertakeEachOtherAlsoFromFrameToFrame) {
    make([](auto& rules) { rules.resend = false; });
    for (const std::uint32_t id : {0U, 2U, 1U, 4U, 3U, 5U, 6U, 8U, 7U, 9U, 10U}) {
        packet(1, id);
    }
    leader(2);
    data(2, 1);
    trailer(1);
    for (std::uint32_t id = 2; id <= kTrailerId; ++id) {
        packet(2, id);
    }
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].bytes, picture(1));
    EXPECT_EQ(seen[1].bytes, picture(2));
    EXPECT_EQ(tally().frames, 2U);
}

TEST_F(Assembler, DoubledPacketsAreCountedAndNotKept) {
    leader(1);
    leader(1);
    data(1, 1);
    data(1, 1);
    for (std::uint32_t id = 2; id <= kTrailerId; ++id) {
        packet(1, id);
    }
    EXPECT_EQ(transport().duplicated, 2U);
    trailer(1);
    EXPECT_EQ(transport().ignored, 1U) << "the frame is over";
    EXPECT_EQ(tally().frames, 1U);
}

TEST_F(Assembler, WhatIsMissingIsAskedForOnceItIsSureAndAgainLater) {
    for (const std::uint32_t id : {0U, 1U, 4U, 5U, 7U}) {
        packet(1, id);
    }
    EXPECT_EQ(tick(), Requests{}) << "it may have been overtaken";
    EXPECT_EQ(wakeAt, now + milliseconds(1));
    EXPECT_EQ(tick(milliseconds(1)), (Requests{"1:2-3", "1:6-6"}));
    EXPECT_EQ(tick(milliseconds(5)), Requests{});
    data(1, 3);
    EXPECT_EQ(tick(milliseconds(15)), (Requests{"1:2-2", "1:6-6"}));
    data(1, 2);
    data(1, 6);
    for (const std::uint32_t id : {8U, 9U, 10U, 11U}) {
        packet(1, id);
    }
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].bytes, picture(1));
    EXPECT_EQ(assembler->counters().requestedPackets, 5U);
    EXPECT_EQ(assembler->counters().resentPackets, 3U);
    EXPECT_EQ(tally().lostPackets, 0U);
}

TEST_F(Assembler, ALostEndIsAskedForWhenTheNextFrameBeginsOrNothingComes) {
    frame(1, {10, 11});
    EXPECT_EQ(tick(milliseconds(5)), Requests{}) << "it may be on its way";
    leader(2);
    EXPECT_EQ(tick(), Requests{});
    EXPECT_EQ(tick(milliseconds(1)), (Requests{"1:10-11"}));
    data(1, 10);
    trailer(1);
    EXPECT_EQ(seen.size(), 1U);
    for (std::uint32_t id = 1; id <= kData; ++id) {
        data(2, id);
    }
    tick();
    EXPECT_EQ(wakeAt, now + milliseconds(20)) << "the trailer's turn";
    EXPECT_EQ(tick(milliseconds(20)), Requests{});
    EXPECT_EQ(tick(milliseconds(1)), (Requests{"2:11-11"}));
    trailer(2);
    EXPECT_EQ(tally().frames, 2U);
}

TEST_F(Assembler, ALostLeaderIsAskedForToo) {
    frame(1, {0});
    tick();
    EXPECT_EQ(tick(milliseconds(1)), (Requests{"1:0-0"}));
    leader(1);
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].end, End::complete);
}

TEST_F(Assembler, HalfAFrameIsNotAskedFor) {
    make([](auto& rules) { rules.frameBytes = 100 * kPlace; });
    leader(1, 1, 200); // 100 packets of data
    data(1, 1, 100 * kPlace);
    data(1, 60, 100 * kPlace);
    EXPECT_EQ(tick(milliseconds(1)), Requests{});
    EXPECT_EQ(tick(milliseconds(50)), Requests{});
    tick(milliseconds(200));
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].lost, 99U) << "98 of data and the trailer";
    EXPECT_EQ(assembler->counters().requestedPackets, 0U);
}

TEST_F(Assembler, AFrameWhoseRestTheCameraRefusesIsOverAtOnce) {
    frame(1, {3, 4});
    frame(2);
    EXPECT_TRUE(seen.empty()) << "frames come in their order";
    tick();
    EXPECT_EQ(tick(milliseconds(1)), (Requests{"1:3-4"}));
    refusal(1, 3, gvsp::kNotYetAvailable);
    refusal(1, 4);
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(tick(milliseconds(20)), (Requests{"1:3-3"})) << "not yet is not never";
    refusal(1, 3);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].end, End::incomplete);
    EXPECT_EQ(seen[0].lost, 2U);
    Bytes expected = picture(1);
    std::fill_n(expected.begin() + 2 * kPlace, 2 * kPlace, std::uint8_t{0});
    EXPECT_EQ(seen[0].bytes, expected);
    EXPECT_EQ(seen[1].end, End::complete);
    EXPECT_EQ(transport().errors, 3U);
    refusal(9, 3);
    EXPECT_EQ(transport().errors, 4U) << "of a frame that is not there";
}

TEST_F(Assembler, ARefusedPacketMayComeAllTheSame) {
    frame(1, {3, 4});
    tick();
    tick(milliseconds(1));
    refusal(1, 3);
    data(1, 3);
    data(1, 4);
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].bytes, picture(1));
}

TEST_F(Assembler, AFrameWaitsForItsRestForALimitedTime) {
    frame(1, {3});
    frame(2);
    tick();
    for (int round = 0; round < 9; ++round) {
        tick(milliseconds(20));
        EXPECT_TRUE(seen.empty());
    }
    tick(milliseconds(20));
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].blockId, 1U);
    EXPECT_EQ(seen[0].lost, 1U);
    EXPECT_EQ(tally().incompleteFrames, 1U);
    EXPECT_EQ(tally().lostPackets, 1U);
    data(1, 3);
    EXPECT_EQ(transport().ignored, 1U) << "too late";
}

TEST_F(Assembler, WithoutResendTheNextFrameEndsAnIncompleteOne) {
    make([](auto& rules) { rules.resend = false; });
    const struct {
        std::vector<std::uint32_t> lost;
    } rows[] = {{{0}}, {{11}}, {{3}}, {{10}}, {{0, 11}}, {{1, 2, 5, 11}}, {{10, 11}}};
    std::uint64_t id = 0;
    for (const auto& row : rows) {
        seen.clear();
        frame(++id, row.lost);
        EXPECT_EQ(tick(milliseconds(30)), Requests{});
        EXPECT_TRUE(seen.empty());
        frame(++id);
        ASSERT_EQ(seen.size(), 2U);
        EXPECT_EQ(seen[0].end, End::incomplete);
        EXPECT_EQ(seen[0].lost, row.lost.size());
        EXPECT_EQ(seen[0].bytes.size(), kFrame) << "whichever packets came";
        EXPECT_EQ(seen[1].end, End::complete);
    }
    EXPECT_EQ(tally().lostPackets, 12U);
}

TEST_F(Assembler, FramesOfWhichNothingCameAreTold) {
    frame(1);
    frame(5);
    EXPECT_EQ(tally().vanishedFrames, 3U);
    EXPECT_EQ(tally().lostPackets, 3U * (kTrailerId + 1));
}

TEST_F(Assembler, FramesBeforeTheFirstOneAreTold) {
    frame(3);
    frame(4);
    EXPECT_EQ(tally().vanishedFrames, 2U);
    EXPECT_EQ(tally().lostPackets, 2U * (kTrailerId + 1));
}

TEST_F(Assembler, FramesWithoutRoomAreCountedOnceAndNotAsLost) {
    room = 1;
    leader(1);
    frame(2);
    frame(3);
    EXPECT_EQ(tally().unbufferedFrames, 2U);
    EXPECT_EQ(transport().underruns, 2U * (kTrailerId + 1));
    for (std::uint32_t id = 1; id <= kTrailerId; ++id) {
        packet(1, id);
    }
    frame(4);
    EXPECT_EQ(tally().frames, 2U);
    EXPECT_EQ(tally().unbufferedFrames, 2U);
    EXPECT_EQ(tally().lostPackets + tally().vanishedFrames, 0U);
}

TEST_F(Assembler, OldNumbersAreLateUnlessTheCameraHasBegunAnew) {
    frame(150);
    leader(140);
    data(150, 2);
    EXPECT_EQ(transport().ignored, 2U);
    now += milliseconds(300);
    data(141, 1);
    EXPECT_EQ(transport().ignored, 3U) << "not a beginning";
    frame(1);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[1].blockId, 1U);
    EXPECT_EQ(tally().vanishedFrames, 0U);
    frame(60000);
    frame(3);
    EXPECT_EQ(tally().frames, 4U) << "far behind is no lateness";
}

TEST_F(Assembler, WhatIsNoPacketOfAFrameIsCountedAndDoesNoHarm) {
    Bytes noise(7, 0xFF);
    send(noise);
    extended = true;
    Bytes cut = header(1, gvsp::kData, 1, 0);
    cut.resize(19);
    send(cut);
    extended = false;
    for (const std::uint8_t format : {0, 4, 5, 6, 7, 0x0F, 0x7F}) {
        Bytes packet = header(1, format, 1, 0);
        packet.resize(50);
        send(packet);
    }
    send(header(1, gvsp::kData, 1, 0)); // no data
    Bytes long_ = header(1, gvsp::kData, 1, 0);
    long_.resize(gvsp::kHeaderSize + kPlace + 1);
    send(long_);
    send(header(1, gvsp::kLeader, 1, 0));  // leaders are the first
    send(header(1, gvsp::kTrailer, 1, 0)); // of a frame without data
    EXPECT_EQ(transport().errors, 13U);
    EXPECT_TRUE(frames.empty());
    send(header(1, gvsp::kLeader, 0, 0)); // tells nothing
    EXPECT_EQ(transport().errors, 14U);
    frame(0);
    EXPECT_EQ(transport().ignored, kTrailerId + 1) << "test packets";
    frame(1);
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].bytes, picture(1));
}

TEST_F(Assembler, PacketsBeyondTheTrailerAreErrors) {
    frame(1, {3});
    data(1, 12, 5000);
    trailer(1, 13);
    EXPECT_EQ(transport().errors, 2U);
    data(1, 3);
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].bytes, picture(1));
}

TEST_F(Assembler, AShortPacketInTheMidstIsAHole) {
    make([](auto& rules) { rules.resend = false; });
    leader(1);
    data(1, 1);
    Bytes packet = header(1, gvsp::kData, 2, 0);
    packet.resize(packet.size() + 40, 0x77);
    send(packet);
    for (std::uint32_t id = 3; id <= kTrailerId; ++id) {
        this->packet(1, id);
    }
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].end, End::incomplete);
    EXPECT_EQ(seen[0].lost, 1U);
    Bytes expected = picture(1);
    std::fill_n(expected.begin() + kPlace, 40, std::uint8_t{0x77});
    std::fill_n(expected.begin() + kPlace + 40, kPlace - 40, std::uint8_t{0});
    EXPECT_EQ(seen[0].bytes, expected);
}

TEST_F(Assembler, FramesThatGrowComeWholeAndTheSizeFollows) {
    frame(1);
    leader(2, 1, 10 * kHeight);
    for (std::uint32_t id = 1; id <= 95; ++id) {
        data(2, id, 10 * kFrame);
    }
    trailer(2, 96);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[1].bytes, picture(2, 10 * kFrame));
    EXPECT_EQ(assembler->frameBytes(), 10 * kFrame);
    EXPECT_EQ(assembler->counters().resizes, 1U);
    frame(3);
    EXPECT_EQ(assembler->frameBytes(), kFrame) << "as the camera is set";
    assembler->followSize(2 * kFrame);
    frame(4);
    EXPECT_EQ(assembler->frameBytes(), 2 * kFrame);
}

TEST_F(Assembler, MoreThanWasSaidIsTakenWithinBoundsAndTheBoundsFollow) {
    // 950 bytes announced, twice as much and some is believed; this is 500 packets.
    constexpr std::size_t kMuch = 500 * kPlace;
    std::uint64_t id = 0;
    while (tally().frames == 0 && id < 10) {
        leader(++id);
        for (std::uint32_t packet = 1; packet <= 500; ++packet) {
            data(id, packet, kMuch);
        }
        trailer(id, 501);
        tick(milliseconds(250));
    }
    EXPECT_EQ(seen.back().bytes, picture(id, kMuch));
    EXPECT_GE(tally().unfitFrames, 1U);
    EXPECT_EQ(tally().unfitFrames + 1, id);
    EXPECT_EQ(tally().lostPackets, 0U);
}

TEST_F(Assembler, PayloadsWithoutAnImageAreAsLongAsTheirPackets) {
    constexpr std::uint16_t kJpeg = 6;
    leader(1, kJpeg);
    EXPECT_FALSE(frames[0]->leader().hasImage);
    for (std::uint32_t id = 1; id <= 3; ++id) {
        data(1, id, 2 * kPlace + 33);
    }
    trailer(1, 4);
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].end, End::complete);
    EXPECT_EQ(seen[0].bytes, picture(1, 2 * kPlace + 33));
}

TEST_F(Assembler, AFrameSetAsideIsTheSameAndGoesOn) {
    for (const std::uint32_t id : {0U, 1U, 2U, 4U}) {
        packet(1, id);
    }
    AssembledFrame* const open = assembler->oldestInRing();
    ASSERT_NE(open, nullptr);
    EXPECT_TRUE(open->isInRing());
    ASSERT_TRUE(open->setAside([this](std::uint16_t block, std::uint32_t count) { giveBack(block, count); }));
    EXPECT_FALSE(open->isInRing());
    EXPECT_EQ(assembler->oldestInRing(), nullptr);
    for (Bytes& packet : sent) {
        std::fill(packet.begin(), packet.end(), std::uint8_t{0xCC}); // the ring goes on
    }
    for (const std::uint32_t id : {5U, 3U, 6U, 7U, 8U, 9U, 10U, 11U}) {
        packet(1, id);
        EXPECT_FALSE(open->isInRing());
    }
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].bytes, picture(1));
    EXPECT_EQ(seen[0].end, End::complete);
}

TEST_F(Assembler, WhatIsAbandonedIsGivenBackAndToldToNobody) {
    frame(1, {3});
    leader(2);
    data(2, 1);
    assembler->abandon();
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(tick(milliseconds(500)), Requests{});
}

TEST(GvspPackets, ResendCommandsInBothForms) {
    const Bytes narrow = gvsp::resendCommand(0x1234, {0xABCD, false, 5, 0x01F203});
    EXPECT_EQ(narrow, (Bytes{0x42, 0,    0, 0x40, 0, 12, 0x12, 0x34, 0,    0,
                             0xAB, 0xCD, 0, 0,    0, 5,  0,    0x01, 0xF2, 0x03}));
    const Bytes wide = gvsp::resendCommand(1, {0x0102030405060708, true, 0x11223344, 0x55667788});
    EXPECT_EQ(wide,
              (Bytes{0x42, 0x10, 0,    0x40, 0,    20,   0,    1,    0,    0,    0,    0,    0x11, 0x22,
                     0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08}));
}

TEST(GvspPackets, LeadersOfAnyLengthAreReadWithinIt) {
    Bytes bytes(36, 0);
    store16(&bytes[2], 0x4001); // an image with chunks
    store32(&bytes[12], kMono8);
    store32(&bytes[16], 640);
    store32(&bytes[20], 480);
    store32(&bytes[24], 3);
    store32(&bytes[28], 4);
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
        gvsp::Leader leader;
        EXPECT_EQ(gvsp::parseLeader(cut.data(), cut.size(), leader), length >= 12) << length;
        EXPECT_EQ(leader.hasImage, length >= 32) << length;
        if (length == 36) {
            EXPECT_EQ(leader.payloadType, 1U);
            EXPECT_EQ(leader.width, 640U);
            EXPECT_EQ(leader.offsetY, 4U);
        }
    }
}

} // namespace
} // namespace kolt::cc
