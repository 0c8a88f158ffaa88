// Lost, late, doubled and misplaced packets, frames of other sizes than promised: what arrives and what is
// counted, against what the virtual camera did.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "StreamRig.h"
#include "support/HeldUp.h"

namespace kolt::test {
namespace {

// KOLT_SOAK=1 runs the long form.
std::uint32_t frames(std::uint32_t usual, std::uint32_t soak) {
    return std::getenv("KOLT_SOAK") != nullptr ? soak : usual;
}

class Loss : public StreamRig {
protected:
    Loss() : StreamRig(lossy()) {}
    // Frames of 137 packets.
    static vcam::Config lossy() {
        vcam::Config config = smallCamera();
        config.sensorWidth = 512;
        config.sensorHeight = 384;
        config.frameRate = 100;
        return config;
    }
    void resend(bool on) {
        ASSERT_EQ(OVX_CC_SetOption(*handle_, OVX_OPTION_PACKET_RESEND, on ? 1 : 0), OV_STATUS_OK);
    }
    void lose(std::uint32_t perMille, const std::function<void(vcam::Faults&)>& more = {}) {
        setFaults([&](vcam::Faults& faults) {
            faults.lossPerMille = perMille;
            if (more) {
                more(faults);
            }
        });
    }
    // The numbers when all of a limited acquisition is accounted for, on both sides: the camera counts its
    // packets after the system has taken them, which may be after they were received here.
    OVX_CC_STATISTICS settled(std::uint64_t count) {
        EXPECT_TRUE(eventually([&] {
            const OVX_CC_STATISTICS now = handle_->statistics();
            return now.completeFrames + now.incompleteFrames + now.vanishedFrames >= count &&
                   !camera_.IsStreaming();
        })) << story();
        return handle_->statistics();
    }
};

INSTANTIATE_TEST_SUITE_P(Roads, Loss, testing::Values(Road::plainSocket, Road::packetSocket), roadName);

// The case that matters most: 5 in 1000 packets lost, and nothing is missing with resend on.
TEST_P(Loss, ResendBringsEveryFrameWhole) {
    const std::uint32_t count = frames(150, 1000);
    limitFrames(count);
    lose(5);
    start();
    const std::vector<Fetched> got = fetchAll(count);
    ASSERT_EQ(got.size(), count);
    for (std::uint32_t index = 0; index < count; ++index) {
        ASSERT_EQ(got[index].info.frameState, 0U) << index;
        ASSERT_EQ(got[index].info.blockId, index + 1);
        ASSERT_EQ(numberIn(got[index]), index + 1);
    }
    const OVX_CC_STATISTICS statistics = settled(count);
    // The camera, too, counts a packet only after it was sent.
    EXPECT_TRUE(eventually([&] { return camera_.GetCounters().packetsMissing == 0; })) << story();
    const vcam::Counters counters = camera_.GetCounters();
    EXPECT_GT(counters.packetsDropped, 0U);
    EXPECT_EQ(statistics.lostPackets, 0U);
    EXPECT_EQ(statistics.incompleteFrames + statistics.vanishedFrames + statistics.unbufferedFrames, 0U);
    EXPECT_EQ(statistics.resentPackets, counters.packetsDropped) << "each lost packet came on request";
    EXPECT_EQ(handle_->matchInfo().resentPackets, counters.packetsDropped);
    EXPECT_EQ(handle_->matchInfo().errorCount, 0U);
}

TEST_P(Loss, ResendBringsEveryFrameEvenWhenTheAnswersAreLostToo) {
    const HeldUp heldUp;
    lose(20, [](vcam::Faults& faults) { faults.resendsLoseToo = true; });
    // Which answers are lost depends on the order of the requests. About three in a round are; now and then
    // it is none.
    for (bool lostAndWhole = false, firstRound = true; !lostAndWhole; firstRound = false) {
        const auto begun = heldUp.mark();
        const std::uint64_t before = camera_.GetCounters().resendsDropped;
        limitFrames(60);
        start();
        const std::vector<Fetched> got = fetchAll(60);
        ASSERT_EQ(got.size(), 60U);
        const bool whole =
            settled(60).lostPackets == 0 &&
            std::all_of(got.begin(), got.end(), [](const Fetched& f) { return f.info.frameState == 0; });
        const std::uint64_t lostAnswers = camera_.GetCounters().resendsDropped - before;
        stop();
        // A frame is given up when no packet comes for a fifth of a second. A round of which the machine took
        // that much shows nothing.
        ASSERT_TRUE(whole || heldUp.lostSince(begun) > 200) << story();
        lostAndWhole = whole && lostAnswers > 0;
        if (!firstRound) {
            std::printf("           one more round: whole %d, lost answers %llu\n", whole ? 1 : 0,
                        static_cast<unsigned long long>(lostAnswers));
        }
    }
}

// Frame by frame and in sum, leaders and trailers included.
TEST_P(Loss, WithoutResendEveryLostPacketIsCountedOnceAndOnItsFrame) {
    const std::uint32_t count = frames(150, 1000);
    for (const std::uint32_t perMille : {5U, 60U}) {
        limitFrames(count + 1);
        resend(false);
        lose(perMille);
        const vcam::Counters before = camera_.GetCounters();
        start();
        // The last frame waits for one behind it that does not come, then for its time: it is counted like
        // the others.
        const std::vector<Fetched> got = fetchAll(count + 1);
        ASSERT_EQ(got.size(), count + 1);
        const OVX_CC_STATISTICS statistics = settled(count + 1);
        const vcam::Counters counters = camera_.GetCounters();
        EXPECT_EQ(statistics.lostPackets, counters.packetsMissing - before.packetsMissing);
        EXPECT_EQ(statistics.incompleteFrames, counters.framesMissingPackets - before.framesMissingPackets);
        EXPECT_EQ(handle_->matchInfo().lostPackets, static_cast<std::int64_t>(statistics.lostPackets));
        EXPECT_EQ(handle_->matchInfo().errorCount, statistics.incompleteFrames);
        EXPECT_EQ(statistics.receivedPackets, counters.packetsSent - before.packetsSent) << story();
        EXPECT_EQ(statistics.resentPackets + statistics.resendRequests, 0U);
        std::vector<std::uint32_t> lostOf(count + 2, 0);
        for (const vcam::FrameLoss& loss : camera_.LossyFrames()) {
            if (loss.blockId < lostOf.size()) {
                lostOf[loss.blockId] = loss.missing;
            }
        }
        for (std::uint32_t index = 0; index <= count; ++index) {
            const _OV_CC_FRAME_OUT_INFO_& info = got[index].info;
            ASSERT_EQ(info.blockId, index + 1) << "also where the leader is lost";
            EXPECT_EQ(info.lostPackets, lostOf[index + 1]) << "frame " << index + 1;
            EXPECT_EQ(info.frameState, lostOf[index + 1] > 0 ? 1U : 0U);
            EXPECT_EQ(info.frameLength, 512U * 384U);
            EXPECT_EQ(info.width, 512U) << "as the camera is set, where the leader is lost";
            EXPECT_EQ(info.height, 384U);
        }
        stop();
        lose(0);
    }
}

TEST_P(Loss, WhatDidNotComeIsZeroAndNothingOfAnEarlierFrame) {
    limitFrames(40);
    resend(false);
    ASSERT_EQ(OV_CC_SetImageNodeNum(*handle_, 2), OV_STATUS_OK); // buffers are used again soon
    lose(30, [](vcam::Faults& faults) { faults.losePayloadOnly = true; });
    start();
    std::uint32_t packet = 0;
    ASSERT_TRUE(camera_.ReadRegister(0x0D04, packet));
    const std::size_t place = (packet & 0xFFFF) - 36; // IP, UDP and GVSP headers
    std::size_t seen = 0;
    for (const Fetched& frame : fetchAll(40)) {
        std::size_t zero = 0;
        for (std::size_t at = 0; at < frame.pixels.size(); at += place) {
            const std::size_t bytes = std::min(place, frame.pixels.size() - at);
            const std::vector<std::uint8_t> none(bytes, 0);
            zero += std::memcmp(frame.pixels.data() + at, none.data(), bytes) == 0 ? 1 : 0;
        }
        EXPECT_EQ(zero, frame.info.lostPackets) << "frame " << frame.info.blockId;
        seen += zero;
    }
    settled(40);
    EXPECT_EQ(seen, camera_.GetCounters().packetsMissing);
}

TEST_P(Loss, IncompleteFramesAreDroppedWhenAskedForAndCountedAllTheSame) {
    limitFrames(60);
    resend(false);
    lose(4);
    ASSERT_EQ(OV_CC_SetThrowAbnormalImage(*handle_, 1), OV_STATUS_OK);
    start();
    std::size_t delivered = 0;
    for (Fetched frame = fetch(*handle_); frame.status == OV_STATUS_OK; frame = fetch(*handle_, 1000)) {
        EXPECT_EQ(frame.info.frameState, 0U);
        EXPECT_EQ(numberIn(frame), frame.info.blockId);
        ++delivered;
    }
    const OVX_CC_STATISTICS statistics = settled(60);
    const vcam::Counters counters = camera_.GetCounters();
    EXPECT_EQ(delivered, 60 - counters.framesMissingPackets);
    EXPECT_GT(delivered, 0U);
    EXPECT_EQ(statistics.droppedFrames, counters.framesMissingPackets);
    EXPECT_EQ(statistics.incompleteFrames, counters.framesMissingPackets);
    EXPECT_EQ(statistics.lostPackets, counters.packetsMissing);
    EXPECT_EQ(handle_->matchInfo().errorCount, counters.framesMissingPackets);
}

TEST_P(Loss, DroppingMayBeSwitchedWhileGrabbing) {
    resend(false);
    lose(30);
    start();
    const auto nextOf = [&](std::uint32_t state) {
        return eventually([&] {
            const Fetched frame = fetch(*handle_);
            return frame.status == OV_STATUS_OK && frame.info.frameState == state;
        });
    };
    EXPECT_TRUE(nextOf(1));
    ASSERT_EQ(OV_CC_SetThrowAbnormalImage(*handle_, 1), OV_STATUS_OK);
    lose(4);
    for (int round = 0; round < 10; ++round) {
        const Fetched frame = fetch(*handle_);
        ASSERT_EQ(frame.status, OV_STATUS_OK);
        EXPECT_EQ(frame.info.frameState, 0U);
    }
    ASSERT_EQ(OV_CC_SetThrowAbnormalImage(*handle_, 0), OV_STATUS_OK);
    EXPECT_TRUE(nextOf(1));
}

// The frames behind a hopeless one wait for it, but none is lost for want of a buffer.
TEST_P(Loss, ACameraThatIgnoresRequestsCostsItsLossyFramesAlone) {
    limitFrames(60);
    lose(1, [](vcam::Faults& faults) { faults.ignoreResend = true; });
    start();
    const std::vector<Fetched> got = fetchAll(60);
    ASSERT_EQ(got.size(), 60U);
    const OVX_CC_STATISTICS statistics = settled(60);
    const vcam::Counters counters = camera_.GetCounters();
    EXPECT_GT(counters.framesMissingPackets, 0U);
    EXPECT_EQ(statistics.incompleteFrames, counters.framesMissingPackets);
    EXPECT_EQ(statistics.lostPackets, counters.packetsMissing);
    EXPECT_EQ(statistics.unbufferedFrames, 0U);
    EXPECT_EQ(statistics.resentPackets, 0U);
}

TEST_P(Loss, DoubledAndMisplacedPacketsHurtNoFrame) {
    for (const bool on : {true, false}) {
        limitFrames(40);
        resend(on);
        setFaults([](vcam::Faults& faults) {
            faults.duplicatePerMille = 20;
            faults.reorderPerMille = 20;
        });
        start();
        const std::vector<Fetched> got = fetchAll(40);
        ASSERT_EQ(got.size(), 40U);
        std::size_t whole = 0;
        for (const Fetched& frame : got) {
            whole += frame.info.frameState == 0 && numberIn(frame) == frame.info.blockId ? 1 : 0;
        }
        stop();
        // Without resend a frame ends with the first packet of the next one, so one whose trailer was
        // overtaken is given up.
        EXPECT_GE(whole, on ? 40U : 36U);
        EXPECT_GT(camera_.GetCounters().packetsDuplicated, 0U);
        EXPECT_GT(camera_.GetCounters().packetsReordered, 0U);
    }
}

// A changed size in mid-stream: some frames are lost, and counted, then all come.
TEST_P(Loss, BuffersFollowFramesThatGrowAndShrink) {
    start();
    ASSERT_EQ(fetch(*handle_).status, OV_STATUS_OK);
    struct Size {
        std::uint32_t width;
        std::uint32_t height;
    };
    for (const Size size : {Size{512, 400}, Size{1024, 768}, Size{256, 192}, Size{0, 0}}) {
        setFaults([&](vcam::Faults& faults) {
            faults.changedWidth = size.width;
            faults.changedHeight = size.height;
        });
        const std::uint32_t width = size.width != 0 ? size.width : 512;
        const std::uint32_t height = size.height != 0 ? size.height : 384;
        EXPECT_TRUE(eventually([&] {
            const Fetched frame = fetch(*handle_);
            return frame.status == OV_STATUS_OK && frame.info.width == width && frame.info.height == height;
        })) << width;
        // And from then on one after another.
        std::uint64_t last = 0;
        for (int round = 0; round < 10; ++round) {
            const Fetched frame = fetch(*handle_);
            ASSERT_EQ(frame.status, OV_STATUS_OK);
            EXPECT_EQ(frame.info.frameLength, width * height);
            EXPECT_EQ(frame.info.frameState, 0U);
            EXPECT_TRUE(last == 0 || frame.info.blockId == last + 1);
            last = frame.info.blockId;
        }
    }
    EXPECT_GE(handle_->statistics().bufferExchanges, 1U);
    // What is received by ourselves needs no buffer of the right size beforehand.
    EXPECT_EQ(handle_->statistics().unfitFrames > 0, !isPacketSocket());
    EXPECT_EQ(handle_->statistics().vanishedFrames, 0U);
    EXPECT_EQ(handle_->statistics().lostPackets, 0U) << "none was lost on the way";
}

TEST_P(Loss, FramesThatCarryMoreThanTheySayComeWholeAfterTheFirst) {
    start();
    ASSERT_EQ(fetch(*handle_).status, OV_STATUS_OK);
    for (const std::uint32_t extra : {100U, 5000U}) {
        setFaults([&](vcam::Faults& faults) { faults.extraBytes = extra; });
        EXPECT_TRUE(eventually([&] {
            const Fetched frame = fetch(*handle_);
            return frame.status == OV_STATUS_OK && frame.info.frameLength == 512U * 384U + extra;
        })) << extra;
        EXPECT_TRUE(eventually([&] {
            return fetch(*handle_).status == OV_STATUS_OK &&
                   handle_->statistics().bufferSize == 512U * 384U + extra;
        })) << "no more room than they take, or requests for packets that don't exist would follow each loss";
        EXPECT_EQ(fetch(*handle_).info.frameState, 0U);
    }
    EXPECT_EQ(handle_->statistics().lostPackets, 0U);
}

} // namespace
} // namespace kolt::test
