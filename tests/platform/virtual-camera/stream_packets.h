// A camera and a receiver that takes its stream packet by packet.
#ifndef KOLT_TESTS_VCAM_STREAM_PACKETS_H
#define KOLT_TESTS_VCAM_STREAM_PACKETS_H

#include "Device/FeatureRegisters.h"
#include "VirtualCamera.h"
#include "raw_client.h"
#include "support/LoopbackAddress.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace kolt::test {

using vcam::Config;
using vcam::VirtualCamera;
namespace feature = vcam::feature;

constexpr auto kQuiet = milliseconds(10000); // longer than any machine is busy
constexpr uint32_t kMultiFrame = 2;
constexpr uint32_t kPayloadOf1500 = 1500 - 36;

class VirtualCameraStreamPackets : public testing::Test {
protected:
    void Start(const std::function<void(Config&)>& change = {}) {
        Config config;
        config.address = LoopbackAddress(0);
        config.sensorWidth = 320;
        config.sensorHeight = 240;
        config.frameRate = 200;
        if (change)
            change(config);
        camera = std::make_unique<VirtualCamera>(config);
        camera->Start();
        client = std::make_unique<RawClient>(camera->Address());
        OpenChannel(*client, receiver);
    }
    // Takes `count` frames and collects all that comes of them.
    void Take(uint32_t count) {
        ASSERT_EQ(client
                      ->WriteRegisters({{feature::kAcquisitionMode, kMultiFrame},
                                        {feature::kAcquisitionFrameCount, count},
                                        {feature::kAcquisitionStart, 1}})
                      .status,
                  kOk);
        receiver.CollectUntil([this] { return !camera->IsStreaming(); });
    }
    void TakeResent(uint64_t requests) {
        receiver.CollectUntil([this, requests] { return camera->GetCounters().resendsServed >= requests; });
    }
    static uint32_t PacketsOf(size_t bytes, uint32_t perPacket) {
        return static_cast<uint32_t>((bytes + perPacket - 1) / perPacket) + 2;
    }
    void ExpectWhole(const RawFrame& frame, size_t bytes, uint32_t perPacket = kPayloadOf1500) {
        const uint32_t packets = PacketsOf(bytes, perPacket);
        EXPECT_EQ(frame.Packets(), packets);
        EXPECT_FALSE(frame.leader.empty());
        EXPECT_EQ(frame.trailerId, packets - 1);
        size_t sum = 0;
        uint32_t expected = 1;
        for (const auto& [id, data] : frame.payload) {
            EXPECT_EQ(id, expected++);
            if (id < packets - 2) {
                EXPECT_EQ(data.size(), perPacket);
            }
            sum += data.size();
        }
        EXPECT_EQ(sum, bytes);
    }

    RawReceiver receiver;
    std::unique_ptr<VirtualCamera> camera;
    std::unique_ptr<RawClient> client;
};

} // namespace kolt::test

#endif
