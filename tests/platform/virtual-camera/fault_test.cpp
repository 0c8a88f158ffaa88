// The camera's stream packet by packet: what it loses, repeats, cuts and counts on purpose.
#include "Device/BootstrapRegisters.h"
#include "eventually.h"
#include "stream_packets.h"

#include <cstring>

namespace {

using namespace kolt::test;
using vcam::Faults;

TEST_F(VirtualCameraStreamPackets, FramesAreWholeAndCounted) {
    Start();
    Take(3);
    ASSERT_EQ(receiver.frames.size(), 3u);
    for (uint16_t block = 1; block <= 3; ++block) {
        ExpectWhole(receiver.frames[block], 320 * 240);
        const Bytes& leader = receiver.frames[block].leader;
        EXPECT_EQ(Be32(leader, 8 + 12), 0x01080001u);
        EXPECT_EQ(Be32(leader, 8 + 16), 320u);
        EXPECT_EQ(Be32(leader, 8 + 20), 240u);
    }
    EXPECT_LT(Be64(receiver.frames[1].leader, 12), Be64(receiver.frames[2].leader, 12)) << "timestamps grow";
    const vcam::Counters counters = camera->GetCounters();
    const uint32_t packets = PacketsOf(320 * 240, kPayloadOf1500);
    EXPECT_EQ(counters.framesStarted, 3u);
    EXPECT_EQ(counters.framesCompleted, 3u);
    EXPECT_EQ(counters.packetsOfFrames, 3u * packets);
    EXPECT_EQ(counters.packetsSent, 3u * packets);
    EXPECT_EQ(counters.packetsMissing, 0u);
    EXPECT_EQ(counters.bytesSent, 3u * (320 * 240 + 8u * packets + 36 + 8));
    EXPECT_FALSE(camera->IsStreaming()) << "the acquisition ended by itself";
}

class PacketSizes : public VirtualCameraStreamPackets, public testing::WithParamInterface<uint32_t> {};

TEST_P(PacketSizes, CutTheFrame) {
    Start();
    ASSERT_EQ(client->Write(vcam::bootstrap::kStreamPacketSize, GetParam()), kOk);
    Take(1);
    ExpectWhole(receiver.frames[1], 320 * 240, GetParam() - 36);
}

INSTANTIATE_TEST_SUITE_P(Some, PacketSizes, testing::Values(576u, 1500u, 4000u, 9000u, 16000u, 16384u));

TEST_F(VirtualCameraStreamPackets, PacketSizeHasLimits) {
    Start();
    for (const uint32_t size : {0u, 572u, 1501u, 16388u, 65532u})
        EXPECT_EQ(client->Write(vcam::bootstrap::kStreamPacketSize, size), kInvalidParameter) << size;
}

// Every packet that didn't come is in the camera's books, frame by frame.
TEST_F(VirtualCameraStreamPackets, LossIsExactlyAccounted) {
    Start([](Config& config) {
        config.faults.lossPerMille = 100;
        config.seed = 7;
    });
    Take(40);
    const uint32_t packets = PacketsOf(320 * 240, kPayloadOf1500);
    std::map<uint16_t, uint32_t> lost;
    uint64_t sum = 0;
    for (uint16_t block = 1; block <= 40; ++block) {
        const auto missing = packets - static_cast<uint32_t>(receiver.frames[block].Packets());
        if (missing > 0)
            lost[block] = missing;
        sum += missing;
    }
    const vcam::Counters counters = camera->GetCounters();
    EXPECT_EQ(counters.packetsMissing, sum);
    EXPECT_EQ(counters.packetsDropped, sum);
    EXPECT_EQ(counters.packetsSent, 40u * packets - sum);
    EXPECT_EQ(counters.framesMissingPackets, lost.size());
    EXPECT_NEAR(double(sum), 4.0 * packets, 2.0 * packets) << "about one in ten";
    std::map<uint16_t, uint32_t> told;
    for (const vcam::FrameLoss& frame : camera->LossyFrames()) {
        told[frame.blockId] = frame.missing;
        EXPECT_EQ(frame.packets, packets);
    }
    EXPECT_EQ(told, lost);
}

TEST_F(VirtualCameraStreamPackets, LossFollowsTheSeedAlone) {
    const auto pattern = [this](uint64_t seed) {
        receiver.frames.clear();
        Start([seed](Config& config) {
            config.faults.lossPerMille = 50;
            config.seed = seed;
        });
        Take(10);
        std::set<std::pair<uint16_t, uint32_t>> came;
        for (const auto& [block, frame] : receiver.frames) {
            for (const auto& [id, data] : frame.payload)
                came.insert({block, id});
        }
        camera.reset();
        return came;
    };
    const auto first = pattern(1);
    EXPECT_EQ(pattern(1), first);
    EXPECT_NE(pattern(2), first);
}

TEST_F(VirtualCameraStreamPackets, LosePayloadOnlySparesTheEdges) {
    Start([](Config& config) {
        config.faults.lossPerMille = 1000;
        config.faults.losePayloadOnly = true;
    });
    Take(3);
    for (uint16_t block = 1; block <= 3; ++block) {
        EXPECT_FALSE(receiver.frames[block].leader.empty());
        EXPECT_FALSE(receiver.frames[block].trailer.empty());
        EXPECT_TRUE(receiver.frames[block].payload.empty());
    }
}

TEST_F(VirtualCameraStreamPackets, ResendFillsTheGapsAndTheBooks) {
    Start([](Config& config) { config.faults.lossPerMille = 200; });
    Take(4);
    const uint32_t packets = PacketsOf(320 * 240, kPayloadOf1500);
    const uint64_t missing = camera->GetCounters().packetsMissing;
    ASSERT_GT(missing, 0u);
    for (uint16_t block = 1; block <= 4; ++block)
        client->RequestResend(block, 0, 0xFFFFFF); // "to the end"
    TakeResent(4);
    for (uint16_t block = 1; block <= 4; ++block) {
        ExpectWhole(receiver.frames[block], 320 * 240);
        EXPECT_EQ(receiver.frames[block].resent, packets);
    }
    const vcam::Counters counters = camera->GetCounters();
    EXPECT_EQ(counters.packetsMissing, 0u);
    EXPECT_EQ(counters.framesMissingPackets, 0u);
    EXPECT_EQ(counters.packetsDropped, missing);
    EXPECT_EQ(counters.resendRequests, 4u);
    EXPECT_EQ(counters.packetsRequested, 4u * packets);
    EXPECT_EQ(counters.packetsResent, 4u * packets);
    EXPECT_EQ(counters.packetsSent, 4u * packets) << "first times only";
    EXPECT_TRUE(camera->LossyFrames().empty());
}

TEST_F(VirtualCameraStreamPackets, ResentPacketsAreTheSameBytes) {
    Start();
    Take(2);
    const RawFrame before = receiver.frames[2];
    receiver.frames.clear();
    client->RequestResend(2, 3, 5);
    TakeResent(1);
    ASSERT_EQ(receiver.frames[2].payload.size(), 3u);
    for (uint32_t id = 3; id <= 5; ++id)
        EXPECT_EQ(receiver.frames[2].payload[id], before.payload.at(id));
}

TEST_F(VirtualCameraStreamPackets, ResendsCanBeLostToo) {
    Start([](Config& config) {
        config.faults.lossPerMille = 500;
        config.faults.resendsLoseToo = true;
    });
    Take(1);
    client->RequestResend(1, 0, 0xFFFFFF);
    TakeResent(1);
    const uint32_t packets = PacketsOf(320 * 240, kPayloadOf1500);
    const vcam::Counters counters = camera->GetCounters();
    EXPECT_GT(counters.resendsDropped, 0u);
    EXPECT_EQ(counters.packetsResent + counters.resendsDropped, packets);
    EXPECT_EQ(counters.packetsMissing, packets - receiver.frames[1].Packets());
}

TEST_F(VirtualCameraStreamPackets, UnknownFrameIsUnavailable) {
    Start();
    Take(1);
    client->RequestResend(77, 4, 6);
    TakeResent(1);
    EXPECT_EQ(receiver.frames[77].unavailable, (std::set<uint32_t>{4, 5, 6}));
    EXPECT_EQ(camera->GetCounters().packetsUnavailable, 3u);
    EXPECT_EQ(camera->GetCounters().packetsResent, 0u);
}

TEST_F(VirtualCameraStreamPackets, NonsensicalResendsDoNoHarm) {
    Start();
    Take(1);
    client->RequestResend(1, 50000, 60000); // beyond the end
    client->RequestResend(1, 9, 3);         // backwards
    client->RequestResend(0, 0, 0xFFFFFF);
    client->RequestResend(9, 5, 2);
    client->RequestResend(1, 1, 1);
    TakeResent(5);
    EXPECT_EQ(camera->GetCounters().packetsResent, 1u);
    EXPECT_EQ(camera->GetCounters().resendRequests, 5u);
}

TEST_F(VirtualCameraStreamPackets, ResendCanBeSwitchedOff) {
    Start([](Config& config) { config.faults.ignoreResend = true; });
    Take(1);
    receiver.frames.clear();
    client->RequestResend(1, 0, 0xFFFFFF);
    receiver.Collect(milliseconds(150), [] { return false; });
    EXPECT_TRUE(receiver.frames.empty());
    EXPECT_TRUE(Eventually([this] { return camera->GetCounters().resendRequests == 1; }));
}

TEST_F(VirtualCameraStreamPackets, DuplicatesAndDisorderAreMadeAndCounted) {
    Start([](Config& config) {
        config.faults.duplicatePerMille = 100;
        config.faults.reorderPerMille = 100;
        config.linkSpeedMbps = 0; // whole batches
    });
    Take(10);
    unsigned copies = 0;
    for (auto& [block, frame] : receiver.frames) {
        ExpectWhole(frame, 320 * 240);
        copies += frame.copies;
    }
    const vcam::Counters counters = camera->GetCounters();
    EXPECT_EQ(counters.packetsDuplicated, copies);
    EXPECT_GT(copies, 0u);
    EXPECT_GT(counters.packetsReordered, 0u);
    unsigned disorder = 0;
    for (auto& [block, frame] : receiver.frames)
        disorder += frame.disorder;
    EXPECT_GT(disorder, 0u);
}

TEST_F(VirtualCameraStreamPackets, SizeChangesInMidStream) {
    Start([](Config& config) { config.frameRate = 50; });
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    receiver.Collect(kQuiet, [this] { return receiver.frames.size() >= 3; });
    Faults faults = camera->GetFaults();
    faults.changedWidth = 160;
    faults.changedHeight = 400;
    camera->SetFaults(faults);
    receiver.Collect(kQuiet, [this] {
        const RawFrame& last = receiver.frames.rbegin()->second;
        return !last.trailer.empty() && Be32(last.leader, 24) == 160;
    });
    ASSERT_EQ(client->Write(feature::kAcquisitionStop, 1), kOk);
    receiver.CollectUntil([this] { return !camera->IsStreaming(); });
    EXPECT_EQ(Be32(receiver.frames[1].leader, 24), 320u);
    const RawFrame& last = receiver.frames.rbegin()->second;
    EXPECT_EQ(Be32(last.leader, 24), 160u);
    EXPECT_EQ(Be32(last.leader, 28), 400u);
    ExpectWhole(last, 160 * 400);
    EXPECT_EQ(client->Read(feature::kWidth), 320u) << "the registers say nothing of it";
    EXPECT_EQ(client->Read(feature::kPayloadSize), 320u * 240);
}

TEST_F(VirtualCameraStreamPackets, MoreBytesThanAnnounced) {
    Start([](Config& config) { config.faults.extraBytes = 5000; });
    Take(2);
    EXPECT_EQ(Be32(receiver.frames[2].leader, 24), 320u);
    ExpectWhole(receiver.frames[2], 320 * 240 + 5000);
    EXPECT_EQ(client->Read(feature::kPayloadSize), 320u * 240);
}

TEST_F(VirtualCameraStreamPackets, NarrowPathSwallowsBigPackets) {
    Start([](Config& config) { config.mtu = 1500; });
    Take(1);
    ExpectWhole(receiver.frames[1], 320 * 240);
    receiver.frames.clear();
    ASSERT_EQ(client->Write(vcam::bootstrap::kStreamPacketSize, 4040), kOk);
    Take(1);
    EXPECT_EQ(receiver.frames[1].Packets(), 3u) << "leader, the short last packet and trailer";
    const uint32_t big = PacketsOf(320 * 240, 4040 - 36) - 3;
    EXPECT_EQ(camera->GetCounters().packetsTooBig, big);
    EXPECT_EQ(camera->GetCounters().packetsMissing, big);
}

TEST_F(VirtualCameraStreamPackets, TestPacketHasTheSizeSet) {
    Start([](Config& config) { config.mtu = 1500; });
    const auto fire = [this](uint32_t size) {
        EXPECT_EQ(client->Write(vcam::bootstrap::kStreamPacketSize, 0xC0000000 | size), kOk);
        return receiver.Packet(milliseconds(size <= 1500 ? 10000 : 300));
    };
    const auto packet = fire(1400);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->size(), 1400u - 28);
    EXPECT_EQ(Be16(*packet, 2), 0) << "block id of test packets";
    const auto whole = fire(1500);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->size(), 1500u - 28);
    EXPECT_FALSE(fire(1504)) << "does not pass the narrow path";
    EXPECT_EQ(camera->GetCounters().testPackets, 2u);
    EXPECT_EQ(camera->GetCounters().packetsTooBig, 1u);
    EXPECT_EQ(client->Read(vcam::bootstrap::kStreamPacketSize), 0x40000000u | 1504)
        << "the bit clears itself";
}

TEST_F(VirtualCameraStreamPackets, SilenceEndsTheStreamAtOnce) {
    Start([](Config& config) { config.frameRate = 100; });
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    receiver.Collect(kQuiet, [this] { return receiver.frames.size() >= 3; });
    Faults faults;
    faults.silent = true;
    camera->SetFaults(faults);
    receiver.Collect(milliseconds(100), [] { return false; });
    EXPECT_FALSE(receiver.Packet(milliseconds(200)));
    faults.silent = false;
    camera->SetFaults(faults);
    EXPECT_TRUE(receiver.Packet(milliseconds(3000)));
}

TEST_F(VirtualCameraStreamPackets, StreamAloneCanBeSilent) {
    Start([](Config& config) { config.faults.streamSilent = true; });
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    EXPECT_FALSE(receiver.Packet(milliseconds(200)));
    EXPECT_EQ(client->Read(0x0A00), 2u);
}

TEST_F(VirtualCameraStreamPackets, ClosedChannelSendsNothingMore) {
    Start([](Config& config) {
        config.unpaced = true;
        config.sensorWidth = 1280;
        config.sensorHeight = 960;
    });
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    receiver.Collect(kQuiet, [this] { return receiver.frames.size() >= 5; });
    ASSERT_EQ(client->Write(vcam::bootstrap::kStreamHostPort, 0), kOk);
    while (receiver.Packet(milliseconds(0))) { // all that was on its way when the answer came
    }
    EXPECT_FALSE(receiver.Packet(milliseconds(150)));
    EXPECT_FALSE(camera->IsStreaming());
    const vcam::Counters counters = camera->GetCounters();
    EXPECT_EQ(counters.framesStarted, counters.framesCompleted + counters.framesAborted);
}

TEST_F(VirtualCameraStreamPackets, BlockIdsWrapPastZero) {
    Start([](Config& config) {
        config.unpaced = true;
        config.sensorWidth = 64;
        config.sensorHeight = 64;
    });
    ASSERT_EQ(client->WriteRegisters({{feature::kWidth, 32}, {feature::kHeight, 16}}).status, kOk);
    ASSERT_EQ(client->Write(0x0954, 1), kOk);
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    bool wrapped = false;
    uint16_t last = 0;
    while (!wrapped) {
        const auto packet = receiver.Packet(milliseconds(3000));
        ASSERT_TRUE(packet);
        const uint16_t block = Be16(*packet, 2);
        ASSERT_NE(block, 0);
        wrapped = block < last && last > 60000;
        last = block;
    }
    EXPECT_GE(camera->GetCounters().framesStarted, 65536u);
}

TEST_F(VirtualCameraStreamPackets, NobodyListeningIsNoError) {
    Start([](Config& config) { config.frameRate = 100; });
    { // a port that is closed: the system reports refusals to the sender
        const RawReceiver gone;
        ASSERT_EQ(client->Write(vcam::bootstrap::kStreamHostPort, gone.Port()), kOk);
    }
    ASSERT_EQ(client
                  ->WriteRegisters({{feature::kAcquisitionMode, kMultiFrame},
                                    {feature::kAcquisitionFrameCount, 5},
                                    {feature::kAcquisitionStart, 1}})
                  .status,
              kOk);
    EXPECT_TRUE(Eventually([this] { return !camera->IsStreaming(); }));
    const vcam::Counters counters = camera->GetCounters();
    EXPECT_EQ(counters.framesCompleted, 5u);
    EXPECT_EQ(counters.packetsSent, counters.packetsOfFrames);
    EXPECT_EQ(counters.sendErrors, 0u);
}

} // namespace
