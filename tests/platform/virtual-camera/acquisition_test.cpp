// When the camera takes frames, and when it doesn't: stop and abort, locks, rate, triggers, chunks.
#include "Device/BootstrapRegisters.h"
#include "eventually.h"
#include "stream_packets.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

using namespace kolt::test;
using vcam::Faults;

TEST_F(VirtualCameraStreamPackets, StopCompletesTheFrameUnderWay) {
    Start([](Config& config) { config.linkSpeedMbps = 10; }); // a frame takes 60 ms
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    ASSERT_TRUE(receiver.Packet(milliseconds(3000)));
    ASSERT_EQ(client->Write(feature::kAcquisitionStop, 1), kOk);
    receiver.CollectUntil([this] {
        const vcam::Counters now = camera->GetCounters();
        return now.framesStarted == now.framesCompleted;
    });
    const vcam::Counters counters = camera->GetCounters();
    EXPECT_EQ(counters.framesAborted, 0u);
    EXPECT_EQ(counters.framesStarted, counters.framesCompleted);
    EXPECT_FALSE(receiver.frames.rbegin()->second.trailer.empty());
}

TEST_F(VirtualCameraStreamPackets, AbortCutsTheFrameUnderWay) {
    Start([](Config& config) { // a frame takes 5 seconds
        config.linkSpeedMbps = 2;
        config.sensorWidth = 1280;
        config.sensorHeight = 960;
    });
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    ASSERT_TRUE(receiver.Packet(milliseconds(3000)));
    ASSERT_EQ(client->Write(feature::kAcquisitionAbort, 1), kOk);
    receiver.Collect(milliseconds(100), [] { return false; });
    EXPECT_TRUE(Eventually([this] { return camera->GetCounters().framesAborted == 1; }));
    EXPECT_TRUE(receiver.frames[1].trailer.empty());
}

TEST_F(VirtualCameraStreamPackets, WhatMattersToTheStreamIsLockedWhileItRuns) {
    Start();
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    EXPECT_EQ(client->Write(feature::kWidth, 160), kWriteProtect);
    EXPECT_EQ(client->Write(feature::kPixelFormat, 0x01100005), kWriteProtect);
    EXPECT_EQ(client->Write(vcam::bootstrap::kStreamPacketSize, 9000), kWriteProtect);
    const uint64_t longer = 0x40BF400000000000; // 8000.0
    EXPECT_EQ(client->WriteMemory(feature::kExposureTime, {0x40, 0xBF, 0x40, 0, 0, 0, 0, 0}).status, kOk);
    EXPECT_EQ(client->Read64(feature::kExposureTime), longer);
    ASSERT_EQ(client->Write(feature::kAcquisitionStop, 1), kOk);
    EXPECT_EQ(client->Write(feature::kWidth, 160), kOk);
}

TEST_F(VirtualCameraStreamPackets, LostHeartbeatClosesTheStream) {
    Start([](Config& config) { config.frameRate = 20; });
    ASSERT_EQ(client->Write(0x0938, 500), kOk);
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    receiver.CollectUntil([this] { return !camera->IsStreaming(); }); // until it falls silent by itself
    EXPECT_FALSE(camera->IsStreaming());
    EXPECT_EQ(camera->GetCounters().heartbeatsExpired, 1u);
}

TEST_F(VirtualCameraStreamPackets, FramesComeAtTheRateSet) {
    Start([](Config& config) { config.frameRate = 50; });
    Take(26);
    std::vector<double> gaps; // milliseconds
    for (uint16_t i = 2; i <= 26; ++i)
        gaps.push_back(double(Be64(receiver.frames[i].leader, 12) - Be64(receiver.frames[i - 1].leader, 12)) /
                       1e6);
    // The median: a camera that was held up is late with some frames.
    std::nth_element(gaps.begin(), gaps.begin() + 12, gaps.end());
    EXPECT_NEAR(gaps[12], 20.0, 1.0);
}

TEST_F(VirtualCameraStreamPackets, PauseBetweenPacketsIsKept) {
    Start();
    ASSERT_EQ(client->Write(vcam::bootstrap::kStreamPacketDelay, 1000000), kOk); // ticks: 1 ms
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(
        client->WriteRegisters({{feature::kAcquisitionMode, 1}, {feature::kAcquisitionStart, 1}}).status,
        kOk);
    receiver.Collect(kQuiet, [this] { return !receiver.frames[1].trailer.empty(); });
    const uint32_t packets = PacketsOf(320 * 240, kPayloadOf1500);
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(packets - 1));
    double rate = 0;
    const uint64_t bits = client->Read64(feature::kResultingFrameRate);
    std::memcpy(&rate, &bits, sizeof rate);
    EXPECT_LT(rate, 1000.0 / packets) << "the camera knows that it can't be faster";
}

TEST_F(VirtualCameraStreamPackets, SoftwareTriggerTakesOneFrameEach) {
    Start();
    ASSERT_EQ(client->WriteRegisters({{feature::kTriggerSets, 1}, {feature::kAcquisitionStart, 1}}).status,
              kOk);
    EXPECT_FALSE(receiver.Packet(milliseconds(150))) << "no free run";
    for (uint16_t i = 1; i <= 3; ++i) {
        ASSERT_EQ(client->Write(feature::kTriggerSoftware, 1), kOk);
        receiver.Collect(kQuiet, [this, i] { return !receiver.frames[i].trailer.empty(); });
        ExpectWhole(receiver.frames[i], 320 * 240);
    }
    EXPECT_EQ(camera->GetCounters().triggersAccepted, 3u);
    EXPECT_FALSE(receiver.Packet(milliseconds(50)));
}

TEST_F(VirtualCameraStreamPackets, LineTriggerWantsItsSource) {
    Start();
    ASSERT_EQ(client
                  ->WriteRegisters({{feature::kTriggerSets, 1},
                                    {feature::kTriggerSets + feature::kTriggerSourceOffset, 2},
                                    {feature::kAcquisitionStart, 1}})
                  .status,
              kOk);
    camera->FireLine(0);
    ASSERT_EQ(client->Write(feature::kTriggerSoftware, 1), kOk);
    EXPECT_FALSE(receiver.Packet(milliseconds(100)));
    camera->FireLine(1);
    EXPECT_TRUE(receiver.Packet(milliseconds(3000)));
    EXPECT_THROW(camera->FireLine(4), std::out_of_range);
}

TEST_F(VirtualCameraStreamPackets, TriggerDelayComesFirst) {
    Start();
    const uint32_t delay = feature::kTriggerSets + feature::kTriggerDelayOffset;
    ASSERT_EQ(client->WriteMemory(delay, {0x41, 0x08, 0x6A, 0, 0, 0, 0, 0}).status, kOk); // 200 000 us
    ASSERT_EQ(client->WriteRegisters({{feature::kTriggerSets, 1}, {feature::kAcquisitionStart, 1}}).status,
              kOk);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(client->WriteRegisters({{feature::kTriggerSoftware, 1}}).status, kOk);
    ASSERT_TRUE(receiver.Packet(milliseconds(3000)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(200));
}

TEST_F(VirtualCameraStreamPackets, TriggersThatCannotBeTakenAreCounted) {
    Start();
    ASSERT_EQ(client->Write(feature::kTriggerSets, 1), kOk);
    ASSERT_EQ(client->Write(feature::kTriggerSoftware, 1), kOk);
    EXPECT_EQ(camera->GetCounters().triggersMissed, 1u) << "no acquisition";
    ASSERT_EQ(client->WriteMemory(feature::kExposureTime, {0x41, 0x3E, 0x84, 0x80, 0, 0, 0, 0}).status,
              kOk); // 2 s
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    ASSERT_EQ(client->Write(feature::kTriggerSoftware, 1), kOk);
    ASSERT_EQ(client->Write(feature::kTriggerSoftware, 1), kOk);
    EXPECT_EQ(camera->GetCounters().triggersMissed, 2u) << "the first is still being exposed";
    receiver.Collect(kQuiet, [this] { return !receiver.frames[1].trailer.empty(); });
    EXPECT_EQ(camera->GetCounters().framesStarted, 1u);
}

TEST_F(VirtualCameraStreamPackets, AcquisitionTriggerStartsTheFreeRun) {
    Start();
    ASSERT_EQ(client
                  ->WriteRegisters({{feature::kTriggerSets + feature::kTriggerSetStride, 1},
                                    {feature::kAcquisitionStart, 1}})
                  .status,
              kOk);
    EXPECT_FALSE(receiver.Packet(milliseconds(150)));
    ASSERT_EQ(client->Write(feature::kTriggerSoftware, 1), kOk);
    receiver.Collect(kQuiet, [this] { return receiver.frames.size() >= 3; });
    EXPECT_GE(receiver.frames.size(), 3u);
}

TEST_F(VirtualCameraStreamPackets, SingleFrameIsOne) {
    Start();
    ASSERT_EQ(
        client->WriteRegisters({{feature::kAcquisitionMode, 1}, {feature::kAcquisitionStart, 1}}).status,
        kOk);
    receiver.CollectUntil([this] { return !camera->IsStreaming(); });
    EXPECT_EQ(receiver.frames.size(), 1u);
    ASSERT_EQ(client->Write(feature::kAcquisitionStart, 1), kOk);
    receiver.frames.clear();
    receiver.CollectUntil([this] { return !camera->IsStreaming(); });
    EXPECT_EQ(receiver.frames.size(), 1u);
    EXPECT_EQ(receiver.frames.begin()->first, 1) << "block ids begin anew";
}

// The reader of a chunk walks from the end: data, id, length.
TEST_F(VirtualCameraStreamPackets, ChunksFollowThePicture) {
    Start();
    ASSERT_EQ(client->WriteRegisters({{feature::kChunkModeActive, 1}, {feature::kChunkEnable + 4, 0}}).status,
              kOk);
    const uint32_t payload = client->Read(feature::kPayloadSize);
    EXPECT_EQ(payload, 320u * 240 + 8 + 3 * 16);
    Take(2);
    ExpectWhole(receiver.frames[2], payload);
    Bytes data;
    for (const auto& [id, bytes] : receiver.frames[2].payload)
        data.insert(data.end(), bytes.begin(), bytes.end());
    std::map<uint32_t, Bytes> chunks;
    size_t end = data.size();
    while (end >= 8) {
        const uint32_t length = Be32(data, end - 4);
        const uint32_t id = Be32(data, end - 8);
        ASSERT_LE(length, end - 8);
        chunks[id] = Bytes(data.begin() + static_cast<long>(end - 8 - length),
                           data.begin() + static_cast<long>(end - 8));
        end -= 8 + length;
    }
    EXPECT_EQ(end, 0u);
    ASSERT_EQ(chunks.size(), 4u);
    EXPECT_EQ(chunks[1].size(), 320u * 240);
    EXPECT_EQ(Be64(chunks[0x1001], 0), 2u) << "frame number";
    EXPECT_EQ(chunks.count(0x1002), 0u) << "the timestamp was switched off";
    double exposure = 0;
    const uint64_t bits = Be64(chunks[0x1003], 0);
    std::memcpy(&exposure, &bits, sizeof exposure);
    EXPECT_EQ(exposure, 4000.0);
    const Bytes& trailer = receiver.frames[2].trailer;
    ASSERT_EQ(trailer.size(), 24u);
    EXPECT_EQ(Be16(trailer, 10), 0x4001);
    EXPECT_EQ(Be32(trailer, 16), payload);
}

// Block ids are 16 bits wide and jump over 0.

} // namespace
