// How a camera starts, stops, and starts again as after power-up.
#include "Device/FeatureRegisters.h"
#include "VendorRegisters.h"
#include "VirtualCamera.h"
#include "raw_client.h"
#include "support/LoopbackAddress.h"

#include <gtest/gtest.h>
#include <system_error>
#include <thread>

namespace {

using namespace kolt::test;
using vcam::Config;
using vcam::VirtualCamera;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kCcp = 0x0A00;

class VirtualCameraReset : public testing::Test {
protected:
    VirtualCameraReset() {
        Config config;
        config.address = LoopbackAddress(0);
        config.sensorWidth = 320;
        config.sensorHeight = 240;
        config.rebootMs = 200;
        camera = std::make_unique<VirtualCamera>(config);
        camera->Start();
    }
    // Through a connection of its own, at the address where the camera is now.
    void Reset() {
        const uint64_t before = camera->GetCounters().resets;
        RawClient client(camera->Address());
        ASSERT_EQ(client.TakeControl(), kOk);
        ASSERT_EQ(client.Write(vcam::feature::kDeviceReset, 1), kOk) << "answered first";
        ASSERT_TRUE(Eventually([&] { return camera->GetCounters().resets > before; }));
        ASSERT_TRUE(Eventually(
            [&] { return RawClient(camera->Address()).Ask(0x0002, {}, 0x11, milliseconds(50)).Came(); }));
    }
    void Configure(const std::string& persistent, uint32_t flags) {
        RawClient client(camera->Address());
        ASSERT_EQ(client.TakeControl(), kOk);
        ASSERT_EQ(client.Write(0x064C, Ip(persistent)), kOk);
        ASSERT_EQ(client.Write(0x065C, Ip("255.0.0.0")), kOk);
        ASSERT_EQ(client.Write(0x066C, Ip("127.0.0.9")), kOk);
        ASSERT_EQ(client.Write(0x0014, flags), kOk);
        ASSERT_EQ(client.TakeControl(0), kOk);
    }
    std::unique_ptr<VirtualCamera> camera;
};

TEST_F(VirtualCameraReset, StartsAgainAsAfterPowerUp) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    ASSERT_EQ(client.Write(vcam::feature::kWidth, 160), kOk);
    ASSERT_EQ(client.Write(vcam::feature::kTLParamsLocked, 1), kOk);
    ASSERT_EQ(client.Write(vcam::kVendorLossPerMille, 7), kOk);
    const auto asked = Clock::now();
    ASSERT_EQ(client.Write(vcam::feature::kDeviceReset, 1), kOk) << "answered first";
    ASSERT_TRUE(Eventually([&] { return client.Ask(0x0002, {}, 0x11, milliseconds(20)).Came(); }));
    EXPECT_GE(Clock::now() - asked, milliseconds(200)) << "a reset takes its time";
    EXPECT_FALSE(camera->IsControlled());
    EXPECT_EQ(client.Read(kCcp), 0u);
    EXPECT_EQ(client.Read(vcam::feature::kWidth), 320u);
    EXPECT_EQ(client.Read(vcam::feature::kTLParamsLocked), 0u);
    EXPECT_EQ(client.Read(0x0024), Ip(camera->Address()));
    EXPECT_EQ(camera->GetFaults().lossPerMille, 7u) << "the test rig's own stays";
    EXPECT_EQ(camera->GetCounters().resets, 1u);
    EXPECT_EQ(client.Write(vcam::feature::kWidth, 160), kAccessDenied) << "the control is gone";
}

TEST_F(VirtualCameraReset, AskedForFromInsideWorksToo) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    ASSERT_TRUE(camera->WriteRegister(vcam::feature::kDeviceReset, 1));
    EXPECT_TRUE(Eventually([&] { return camera->GetCounters().resets == 1 && !camera->IsControlled(); }));
}

TEST_F(VirtualCameraReset, TakesUpThePersistentAddressAndLeavesItAgain) {
    const std::string first = camera->Address();
    const std::string kept = LoopbackAddress(1);
    Configure(kept, 2);
    Reset();
    EXPECT_EQ(camera->Address(), first) << "not switched on";
    Configure(kept, 1);
    Reset();
    ASSERT_EQ(camera->Address(), kept);
    RawClient moved(kept);
    EXPECT_EQ(moved.Read(0x0024), Ip(kept));
    EXPECT_EQ(moved.Read(0x0034), Ip("255.0.0.0"));
    EXPECT_EQ(moved.Read(0x0044), Ip("127.0.0.9"));
    EXPECT_EQ(moved.Read(0x0014), 5u);

    camera->Stop();
    camera->Start();
    EXPECT_EQ(camera->Address(), kept) << "also after its power was cut";
    Configure(kept, 2);
    Reset();
    EXPECT_EQ(camera->Address(), first);
}

TEST_F(VirtualCameraReset, StaysWhereItIsWhenThePersistentAddressIsTaken) {
    Config second;
    second.address = LoopbackAddress(2);
    second.serial = "T102";
    VirtualCamera other(second);
    other.Start();
    const std::string first = camera->Address();
    Configure(other.Address(), 1);
    Reset();
    EXPECT_EQ(camera->Address(), first);
    EXPECT_EQ(RawClient(first).Read(0x064C), Ip(other.Address())) << "kept for the next time";
    other.Stop();
    Reset();
    EXPECT_EQ(camera->Address(), second.address);
}

TEST_F(VirtualCameraReset, ForcedAddressDoesNotOutliveIt) {
    const std::string first = camera->Address();
    const std::string forced = LoopbackAddress(3);
    const uint32_t high = RawClient(first).Read(0x0008);
    const uint32_t low = RawClient(first).Read(0x000C);
    const std::vector<uint8_t> mac = {uint8_t(high >> 8), uint8_t(high),     uint8_t(low >> 24),
                                      uint8_t(low >> 16), uint8_t(low >> 8), uint8_t(low)};
    RawClient client(first);
    client.Ask(0x0004, RawClient::ForceIp(mac, forced, "255.0.0.0", "0.0.0.0"));
    ASSERT_TRUE(Eventually([&] { return camera->Address() == forced; }));
    Reset();
    EXPECT_EQ(camera->Address(), first);
}

TEST_F(VirtualCameraReset, KeepsWhatIsKeptWithoutPower) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    Bytes name(16);
    name[0] = 'x';
    ASSERT_EQ(client.WriteMemory(0x00E8, name).status, kOk);
    ASSERT_EQ(client.Write(vcam::feature::kWidth, 64), kOk);
    ASSERT_EQ(client.Write(vcam::feature::kUserSetSelector, 1), kOk);
    ASSERT_EQ(client.Write(vcam::feature::kUserSetSave, 1), kOk);
    ASSERT_EQ(client.Write(vcam::feature::kUserSetDefault, 1), kOk);
    camera->Stop();
    camera->Start();
    RawClient again(camera->Address());
    EXPECT_EQ(again.ReadMemory(0x00E8, 4).payload.at(4), 'x');
    EXPECT_EQ(again.Read(vcam::feature::kWidth), 64u);
    EXPECT_EQ(again.Read(vcam::feature::kUserSetDefault), 1u);
}

TEST(VirtualCameraStart, SaysWhyItCannot) {
    Config config;
    config.address = LoopbackAddress(10);
    VirtualCamera first(config);
    first.Start();
    VirtualCamera second(config);
    EXPECT_THROW(second.Start(), std::system_error) << "the address is taken";
    config.address = "not an address";
    EXPECT_THROW(VirtualCamera(config).Start(), std::invalid_argument);
    config.address = "198.51.100.1";
    EXPECT_THROW(VirtualCamera(config).Start(), std::invalid_argument) << "no interface has it";
    config.interface = "nosuchif0";
    EXPECT_THROW(VirtualCamera(config).Start(), std::invalid_argument);
    VirtualCamera idle;
    EXPECT_THROW(idle.GetCounters(), std::logic_error);
}

TEST(VirtualCameraStart, StopsAndStartsAfresh) {
    Config config;
    config.address = LoopbackAddress(11);
    VirtualCamera camera(config);
    for (int round = 0; round < 20; ++round) {
        camera.Start();
        RawClient client(camera.Address());
        EXPECT_EQ(client.Read(kCcp), 0u);
        EXPECT_EQ(client.TakeControl(), kOk);
        camera.Stop();
        EXPECT_FALSE(client.Ask(0x0002, {}, 1, milliseconds(20)).Came());
    }
}

TEST(VirtualCameraStart, ManyCamerasInOneProcess) {
    std::vector<std::unique_ptr<VirtualCamera>> cameras;
    for (unsigned i = 0; i < 16; ++i) {
        Config config;
        config.address = LoopbackAddress(20 + i);
        config.serial = "M" + std::to_string(i);
        config.sensorWidth = 64;
        config.sensorHeight = 64;
        cameras.push_back(std::make_unique<VirtualCamera>(config));
        cameras.back()->Start();
    }
    for (unsigned i = 0; i < 16; ++i) {
        const Answer answer = RawClient(LoopbackAddress(20 + i)).Ask(0x0002, {});
        ASSERT_EQ(answer.status, kOk);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(answer.payload.data()) + 0xD8),
                  "M" + std::to_string(i));
    }
}

} // namespace
