// The camera's GVCP side over real sockets, asked in bytes written out by hand.
#include "Device/FeatureRegisters.h"
#include "VendorRegisters.h"
#include "VirtualCamera.h"
#include "raw_client.h"
#include "support/LoopbackAddress.h"

#include <cstring>
#include <gtest/gtest.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {

using namespace kolt::test;
using vcam::Config;
using vcam::Faults;
using vcam::VirtualCamera;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kCcp = 0x0A00;
constexpr uint32_t kHeartbeat = 0x0938;

class VirtualCameraControl : public testing::Test {
protected:
    VirtualCameraControl() {
        Config config;
        config.address = LoopbackAddress(0);
        config.sensorWidth = 320;
        config.sensorHeight = 240;
        config.serial = "T100";
        config.userName = "left";
        const auto process = static_cast<uint32_t>(getpid()); // others may force addresses on loopback too
        mac = {0x02,
               0x11,
               uint8_t(process >> 24),
               uint8_t(process >> 16),
               uint8_t(process >> 8),
               uint8_t(process)};
        std::copy(mac.begin(), mac.end(), config.mac.begin());
        camera = std::make_unique<VirtualCamera>(config);
        camera->Start();
    }
    template<class Change>
    void ChangeFaults(Change change) {
        Faults faults = camera->GetFaults();
        change(faults);
        camera->SetFaults(faults);
    }
    std::vector<uint8_t> mac;
    std::unique_ptr<VirtualCamera> camera;
};

TEST_F(VirtualCameraControl, DiscoveryTellsTheWholeRecord) {
    RawClient client(camera->Address());
    const Answer answer = client.Ask(0x0002, {}, 0x11);
    ASSERT_EQ(answer.status, kOk);
    EXPECT_EQ(answer.code, 0x0003);
    const Bytes& p = answer.payload;
    ASSERT_EQ(p.size(), 248u);
    EXPECT_EQ(Be16(p, 0), 2);
    EXPECT_EQ(Be16(p, 10), 0x0211);
    EXPECT_EQ(Be32(p, 12), static_cast<uint32_t>(getpid()));
    EXPECT_EQ(Be32(p, 0x24), Ip(camera->Address()));
    EXPECT_EQ(Be32(p, 0x34), 0xFF000000u);
    EXPECT_EQ(Be32(p, 0x44), 0u);
    const auto text = [&p](size_t at) { return std::string(reinterpret_cast<const char*>(p.data()) + at); };
    EXPECT_EQ(text(0x48), "KOLT");
    EXPECT_EQ(text(0x68), "KV-2000C");
    EXPECT_EQ(text(0x88), "1.0.0");
    EXPECT_EQ(text(0xA8), "Camera in software");
    EXPECT_EQ(text(0xD8), "T100");
    EXPECT_EQ(text(0xE8), "left");
    EXPECT_EQ(answer.from, Ip(camera->Address()));
}

TEST_F(VirtualCameraControl, DiscoveryByBroadcastFindsAllOnLoopback) {
    Config second;
    second.address = LoopbackAddress(1);
    second.serial = "T101";
    VirtualCamera other(second);
    other.Start();
    for (const char* to : {"255.255.255.255", "127.255.255.255"}) {
        RawClient client("", "127.0.0.1", "lo");
        client.SendTo(to, RawClient::Command(0x0002, {}, 77, 0x11));
        std::set<uint32_t> found;
        while (found.count(Ip(camera->Address())) + found.count(Ip(other.Address())) < 2) {
            const auto answer = client.Receive(milliseconds(3000));
            ASSERT_TRUE(answer) << to;
            EXPECT_EQ(answer->id, 77);
            found.insert(answer->from);
        }
    }
}

struct ErrorCase {
    const char* name;
    uint16_t code;
    Bytes payload;
    uint16_t status;
};

Bytes Words(std::initializer_list<uint32_t> words) {
    Bytes bytes;
    for (const uint32_t word : words)
        Push32(bytes, word);
    return bytes;
}

TEST_F(VirtualCameraControl, ErrorsHaveTheirCodes) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    const std::vector<ErrorCase> cases = {
        {"read of nothing", 0x0080, Words({0x0BAD0000}), kInvalidAddress},
        {"read at an odd address", 0x0080, Words({0x0002}), kBadAlignment},
        {"read without an address", 0x0080, {}, kInvalidHeader},
        {"read with half an address", 0x0080, {1, 2}, kInvalidHeader},
        {"read of a write-only register", 0x0080, Words({0x0944}), kAccessDenied},
        {"write of nothing", 0x0082, Words({0x0BAD0000, 1}), kInvalidAddress},
        {"write of a read-only register", 0x0082, Words({0x0024, 1}), kWriteProtect},
        {"write at an odd address", 0x0082, Words({0x0A02, 1}), kBadAlignment},
        {"write without a value", 0x0082, Words({0x0A00}), kInvalidHeader},
        {"write out of range", 0x0082, Words({vcam::feature::kWidth, 328}), kInvalidParameter},
        {"write off the step", 0x0082, Words({vcam::feature::kWidth, 100}), kInvalidParameter},
        {"write of an unknown entry", 0x0082, Words({vcam::feature::kPixelFormat, 1}), kInvalidParameter},
        {"heartbeat too short", 0x0082, Words({kHeartbeat, 100}), kInvalidParameter},
        {"memory read of nothing", 0x0084, Words({0x0BAD0000, 8}), kInvalidAddress},
        {"memory read at an odd address", 0x0084, Words({0x0001, 8}), kBadAlignment},
        {"memory read of an odd count", 0x0084, Words({0x0000, 7}), kBadAlignment},
        {"memory read of too much", 0x0084, Words({0x0000, 540}), kInvalidParameter},
        {"memory read of none", 0x0084, Words({0x0000, 0}), kInvalidParameter},
        {"memory read without a count", 0x0084, Words({0x0000}), kInvalidHeader},
        {"memory write of a read-only register", 0x0086, Words({0x0048, 1}), kWriteProtect},
        {"memory write of nothing", 0x0086, Words({0x0048}), kInvalidHeader},
        {"memory write of an odd count", 0x0086, {0, 0, 0, 0xE8, 1}, kBadAlignment},
        {"action", 0x0100, Words({1, 2, 3}), kNotImplemented},
        {"unknown command", 0x0300, {}, kNotImplemented},
    };
    for (const ErrorCase& c : cases) {
        const Answer answer = client.Ask(c.code, c.payload);
        EXPECT_EQ(answer.status, c.status) << c.name;
        EXPECT_EQ(answer.code, c.code + 1) << c.name;
    }
}

TEST_F(VirtualCameraControl, SeveralRegistersInOneCommand) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    const Answer written =
        client.WriteRegisters({{vcam::feature::kWidth, 160}, {vcam::feature::kHeight, 120}});
    EXPECT_EQ(written.status, kOk);
    EXPECT_EQ(written.payload, Words({2}));
    const Answer read = client.ReadRegisters({vcam::feature::kWidth, vcam::feature::kHeight, kCcp});
    EXPECT_EQ(read.status, kOk);
    EXPECT_EQ(read.payload, Words({160, 120, 2}));
    const Answer half = client.WriteRegisters(
        {{vcam::feature::kWidth, 64}, {vcam::feature::kWidth, 1}, {vcam::feature::kHeight, 64}});
    EXPECT_EQ(half.status, kInvalidParameter);
    EXPECT_EQ(half.payload, Words({1})) << "one was written before the bad one";
    EXPECT_EQ(client.Read(vcam::feature::kWidth), 64u);
    EXPECT_EQ(client.Read(vcam::feature::kHeight), 120u);
    const Answer some = client.ReadRegisters({vcam::feature::kWidth, 0x0BAD0000, vcam::feature::kHeight});
    EXPECT_EQ(some.status, kInvalidAddress);
    EXPECT_EQ(some.payload, Words({64}));
}

TEST_F(VirtualCameraControl, MemoryIsReadAndWrittenInBlocks) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    Bytes name(16);
    name[0] = 'n';
    name[1] = 'u';
    const Answer written = client.WriteMemory(0x00E8, name);
    EXPECT_EQ(written.status, kOk);
    EXPECT_EQ(written.payload, Words({16}));
    const Answer read = client.ReadMemory(0x00D8, 32);
    ASSERT_EQ(read.status, kOk);
    EXPECT_EQ(Be32(read.payload, 0), 0x00D8u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(read.payload.data()) + 4), "T100");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(read.payload.data()) + 20), "nu");
    EXPECT_EQ(client.ReadMemory(vcam::feature::kXml, 536).payload.size(), 540u);
}

TEST_F(VirtualCameraControl, NoAnswerWhereNoneIsWanted) {
    RawClient client(camera->Address());
    Bytes payload = Words({kCcp, 2});
    client.Send(RawClient::Command(0x0082, payload, 5, 0x00));
    EXPECT_EQ(client.Read(kCcp), 2u) << "the next answer is that of this read";
}

TEST_F(VirtualCameraControl, GarbageIsCountedAndIgnored) {
    RawClient client(camera->Address());
    client.Send({});
    client.Send({0x42});
    client.Send({0x41, 1, 0, 2, 0, 0, 0, 1});
    client.Send({0x42, 1, 0, 0x80, 0, 99, 0, 1, 1, 2, 3, 4});
    client.Send(Bytes(1400, 0x42));
    EXPECT_EQ(client.Read(kCcp), 0u);
    EXPECT_TRUE(Eventually([&] { return camera->GetCounters().badCommands == 5; }))
        << camera->GetCounters().badCommands;
}

TEST_F(VirtualCameraControl, WritesWantControl) {
    RawClient client(camera->Address());
    EXPECT_EQ(client.Write(vcam::feature::kWidth, 160), kAccessDenied);
    EXPECT_EQ(client.Read(vcam::feature::kWidth), 320u);
    ASSERT_EQ(client.TakeControl(), kOk);
    EXPECT_EQ(client.Write(vcam::feature::kWidth, 160), kOk);
    EXPECT_TRUE(camera->IsControlled());
    EXPECT_EQ(client.Read(0x0A04), client.Port());
    EXPECT_EQ(client.Read(0x0A14), Ip("127.0.0.1"));
    EXPECT_EQ(client.TakeControl(0), kOk);
    EXPECT_FALSE(camera->IsControlled());
    EXPECT_EQ(camera->GetCounters().accessDenied, 1u);
}

TEST_F(VirtualCameraControl, SecondClientIsRefused) {
    RawClient first(camera->Address());
    RawClient second(camera->Address());
    ASSERT_EQ(first.TakeControl(2), kOk);
    EXPECT_EQ(second.TakeControl(2), kAccessDenied);
    EXPECT_EQ(second.TakeControl(1), kAccessDenied);
    EXPECT_EQ(second.TakeControl(0), kAccessDenied);
    EXPECT_EQ(second.Write(vcam::feature::kWidth, 160), kAccessDenied);
    EXPECT_EQ(second.Read(vcam::feature::kWidth), 320u) << "reading is free under control access";
    EXPECT_EQ(second.Read(kCcp), 2u);
    ASSERT_EQ(first.TakeControl(1), kOk);
    EXPECT_EQ(second.ReadRegisters({vcam::feature::kWidth}).status, kAccessDenied)
        << "not under exclusive access";
    EXPECT_EQ(second.ReadMemory(0, 16).status, kAccessDenied);
    EXPECT_EQ(second.Read(kCcp), 1u) << "who asks why may look";
    EXPECT_EQ(second.Ask(0x0002, {}).status, kOk) << "it is still found";
    EXPECT_EQ(first.TakeControl(0), kOk);
    EXPECT_EQ(second.TakeControl(1), kOk);
}

TEST_F(VirtualCameraControl, HeartbeatKeepsAndSilenceLosesControl) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    ASSERT_EQ(client.WriteRegisters({{kHeartbeat, 2000}, {0x0D18, Ip("127.0.0.1")}, {0x0D00, 9}}).status,
              kOk);
    ASSERT_EQ(client.Write(vcam::feature::kTLParamsLocked, 1), kOk);
    for (int i = 0; i < 8; ++i) { // longer in sum than the time-out
        std::this_thread::sleep_for(milliseconds(300));
        EXPECT_EQ(client.Read(kCcp), 2u);
    }
    const auto start = Clock::now();
    EXPECT_TRUE(Eventually([&] { return !camera->IsControlled(); }));
    EXPECT_GE(Clock::now() - start, milliseconds(1950));
    EXPECT_EQ(client.Read(kCcp), 0u);
    EXPECT_EQ(client.Read(0x0D00), 0u) << "the stream channel is closed";
    EXPECT_EQ(client.Read(vcam::feature::kTLParamsLocked), 0u);
    EXPECT_EQ(camera->GetCounters().heartbeatsExpired, 1u);
    RawClient next(camera->Address());
    EXPECT_EQ(next.TakeControl(), kOk);
}

TEST_F(VirtualCameraControl, HeartbeatCanBeSwitchedOff) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    ASSERT_EQ(client.WriteRegisters({{kHeartbeat, 500}, {0x0954, 1}}).status, kOk);
    std::this_thread::sleep_for(milliseconds(800)); // nothing to wait for: nothing must happen
    EXPECT_TRUE(camera->IsControlled());
    EXPECT_EQ(camera->GetCounters().heartbeatsExpired, 0u);
}

TEST_F(VirtualCameraControl, RepeatedWriteIsAnsweredButNotExecutedAgain) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    ASSERT_EQ(client.Write(vcam::feature::kTriggerSets, 1), kOk); // trigger on: software triggers are counted
    const uint64_t before = camera->GetCounters().triggersMissed;
    const Bytes trigger = RawClient::Command(0x0082, Words({vcam::feature::kTriggerSoftware, 1}), 4711);
    for (int i = 0; i < 3; ++i) {
        client.Send(trigger);
        const auto answer = client.Receive(milliseconds(3000));
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->id, 4711);
        EXPECT_EQ(answer->status, kOk);
    }
    EXPECT_EQ(camera->GetCounters().triggersMissed, before + 1);
}

TEST_F(VirtualCameraControl, SlowAnswersAreAnnounced) {
    RawClient client(camera->Address());
    ChangeFaults([](Faults& faults) { faults.answerDelayMs = 300; });
    const auto start = Clock::now();
    EXPECT_EQ(client.Read(kCcp), 0u);
    EXPECT_GE(Clock::now() - start, milliseconds(300));
    EXPECT_EQ(client.Pendings(), 1u);
    EXPECT_EQ(camera->GetCounters().pendingAnswers, 1u);
    EXPECT_TRUE(Eventually([&] { // a busy machine may hold one up
        const auto asked = Clock::now();
        EXPECT_EQ(client.Ask(0x0002, {}).status, kOk);
        return Clock::now() - asked < milliseconds(290);
    })) << "discovery is not slow";
}

TEST_F(VirtualCameraControl, PendingAnswerTellsATimeThatIsEnough) {
    RawClient client(camera->Address());
    ChangeFaults([](Faults& faults) { faults.answerDelayMs = 1500; });
    client.Send(RawClient::Command(0x0080, Words({kCcp}), 9));
    const auto pending = client.Receive(milliseconds(3000));
    ASSERT_TRUE(pending);
    EXPECT_EQ(pending->code, 0x0089);
    EXPECT_EQ(pending->id, 9);
    ASSERT_EQ(pending->payload.size(), 4u);
    EXPECT_GE(Be16(pending->payload, 2), 1500);
    // A repeated command is not executed twice, only announced again.
    client.Send(RawClient::Command(0x0080, Words({kCcp}), 9));
    const auto again = client.Receive(milliseconds(10000));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->code, 0x0089);
    const auto answer = client.Receive(milliseconds(10000));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->code, 0x0081);
    EXPECT_FALSE(client.Receive(milliseconds(1800)));
}

TEST_F(VirtualCameraControl, SlowAnswersWithoutAnnouncement) {
    RawClient client(camera->Address());
    ChangeFaults([](Faults& faults) {
        faults.answerDelayMs = 150;
        faults.announcePending = false;
    });
    EXPECT_EQ(client.Read(kCcp), 0u);
    EXPECT_EQ(client.Pendings(), 0u);
}

TEST_F(VirtualCameraControl, DeniesControlOnDemand) {
    RawClient client(camera->Address());
    ChangeFaults([](Faults& faults) { faults.denyControl = true; });
    EXPECT_EQ(client.TakeControl(2), kAccessDenied);
    EXPECT_EQ(client.Read(kCcp), 2u) << "looks as if another host held it";
    EXPECT_FALSE(camera->IsControlled());
    ChangeFaults([](Faults& faults) { faults.denyControl = false; });
    EXPECT_EQ(client.TakeControl(2), kOk);
}

TEST_F(VirtualCameraControl, RefusesWritesOnDemand) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    ChangeFaults([](Faults& faults) { faults.refuseWrites = true; });
    EXPECT_EQ(client.Write(vcam::feature::kWidth, 160), kWriteProtect);
    EXPECT_EQ(client.Write(kHeartbeat, 1000), kOk) << "bootstrap registers stay as they are";
    EXPECT_EQ(client.Write(vcam::kVendorRefuseWrites, 0), kOk) << "and the way back stays open";
    EXPECT_EQ(client.Write(vcam::feature::kWidth, 160), kOk);
    EXPECT_EQ(camera->GetCounters().writesRefused, 1u);
}

TEST_F(VirtualCameraControl, DeadCameraAnswersNothingUntilItRevives) {
    RawClient client(camera->Address());
    ChangeFaults([](Faults& faults) { faults.silent = true; });
    EXPECT_FALSE(client.Ask(0x0002, {}, 0x11, milliseconds(150)).Came());
    EXPECT_FALSE(client.Ask(0x0080, Words({kCcp}), 1, milliseconds(150)).Came());
    EXPECT_EQ(camera->GetCounters().ignoredWhileSilent, 2u);
    ChangeFaults([](Faults& faults) { faults.silent = false; });
    EXPECT_EQ(client.Read(kCcp), 0u);
}

TEST_F(VirtualCameraControl, SecondConnectionMakesTroubleByVendorRegisters) {
    RawClient owner(camera->Address());
    RawClient other(camera->Address());
    ASSERT_EQ(owner.TakeControl(1), kOk);
    EXPECT_EQ(other.Write(vcam::kVendorLossPerMille, 5), kOk);
    EXPECT_EQ(camera->GetFaults().lossPerMille, 5u);
    EXPECT_EQ(other.Read(vcam::kVendorLossPerMille), 5u);
    EXPECT_EQ(other.Write(vcam::kVendorLossPerMille, 1001), kInvalidParameter);
    EXPECT_EQ(other.Read64(vcam::kVendorCounters), 0u);
    EXPECT_EQ(other.Write(vcam::kVendorSilenceMs, 300), kOk);
    EXPECT_FALSE(other.Ask(0x0002, {}, 1, milliseconds(100)).Came());
    EXPECT_TRUE(Eventually([&] { return other.Ask(0x0002, {}, 1, milliseconds(50)).Came(); }));
}

TEST_F(VirtualCameraControl, ForceIpMovesTheCameraOnLoopback) {
    const std::string before = camera->Address();
    const std::string after = LoopbackAddress(2);
    RawClient client(before, "127.0.0.1", "lo");
    const auto force = [&](const std::vector<uint8_t>& target, const std::string& address,
                           const std::string& mask) {
        client.SendTo(
            "255.255.255.255",
            RawClient::Command(0x0004, RawClient::ForceIp(target, address, mask, "127.0.0.9"), 50, 0x11));
        return client.Receive(milliseconds(500));
    };
    EXPECT_FALSE(force({2, 2, 2, 2, 2, 2}, after, "255.0.0.0")) << "another camera's MAC";
    const auto answer = force(mac, after, "255.255.0.0");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, kOk);
    EXPECT_EQ(answer->code, 0x0005);
    EXPECT_EQ(answer->id, 50);
    EXPECT_EQ(answer->from, Ip(after));
    EXPECT_EQ(camera->Address(), after);
    RawClient moved(after);
    EXPECT_EQ(moved.Read(0x0024), Ip(after));
    EXPECT_EQ(moved.Read(0x0034), Ip("255.255.0.0"));
    EXPECT_EQ(moved.Read(0x0044), Ip("127.0.0.9"));
    EXPECT_FALSE(RawClient(before).Ask(0x0002, {}, 1, milliseconds(150)).Came())
        << "gone from the old address";
    EXPECT_EQ(camera->GetCounters().forcedAddresses, 1u);

    EXPECT_EQ(force(mac, "10.1.2.3", "255.0.0.0")->status, kInvalidParameter) << "no loopback address";
    EXPECT_EQ(force(mac, before, "255.0.255.0")->status, kInvalidParameter) << "no mask";
    EXPECT_EQ(force(mac, "127.255.255.255", "255.0.0.0")->status, kInvalidParameter) << "a broadcast address";
    EXPECT_EQ(camera->Address(), after);
    ASSERT_EQ(moved.TakeControl(), kOk);
    EXPECT_EQ(force(mac, before, "255.0.0.0")->status, kAccessDenied) << "not while it is controlled";
    ASSERT_EQ(moved.TakeControl(0), kOk);
    EXPECT_EQ(force(mac, before, "255.0.0.0")->status, kOk);
    EXPECT_EQ(camera->Address(), before);
}

TEST_F(VirtualCameraControl, ForceIpToATakenAddressFailsAndChangesNothing) {
    Config second;
    second.address = LoopbackAddress(1);
    second.serial = "T101";
    VirtualCamera other(second);
    other.Start();
    RawClient client(camera->Address());
    const Answer answer =
        client.Ask(0x0004, RawClient::ForceIp(mac, other.Address(), "255.0.0.0", "0.0.0.0"));
    EXPECT_EQ(answer.status, 0x8FFF);
    EXPECT_EQ(client.Read(kCcp), 0u);
}

TEST_F(VirtualCameraControl, IpRegistersKeepTheirRules) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    EXPECT_EQ(client.Read(0x0010), 7u);
    EXPECT_EQ(client.Write(0x0014, 1), kOk);
    EXPECT_EQ(client.Read(0x0014), 5u) << "link-local configuration can't be given up";
    EXPECT_EQ(client.Write(0x064C, Ip("10.0.0.5")), kOk);
    EXPECT_EQ(client.Read(0x064C), Ip("10.0.0.5"));
}

TEST_F(VirtualCameraControl, TimestampIsLatchedAndReset) {
    RawClient client(camera->Address());
    ASSERT_EQ(client.TakeControl(), kOk);
    const auto latched = [&client] {
        EXPECT_EQ(client.Write(0x0944, 2), kOk);
        return uint64_t{client.Read(0x0948)} << 32 | client.Read(0x094C);
    };
    EXPECT_EQ(client.Read(0x0940), 1000000000u) << "ticks are nanoseconds";
    std::this_thread::sleep_for(milliseconds(30));
    const uint64_t first = latched();
    const uint64_t second = latched();
    EXPECT_GT(first, 30000000u);
    EXPECT_GT(second, first);
    const auto reset = Clock::now();
    EXPECT_EQ(client.Write(0x0944, 1), kOk);
    const uint64_t third = latched();
    EXPECT_LE(third, static_cast<uint64_t>(
                         std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - reset).count()));
}

TEST_F(VirtualCameraControl, TemperatureWanders) {
    RawClient client(camera->Address());
    const uint64_t first = client.Read64(vcam::feature::kDeviceTemperature);
    double degrees = 0;
    static_assert(sizeof degrees == sizeof first);
    std::memcpy(&degrees, &first, sizeof degrees);
    EXPECT_GT(degrees, 20);
    EXPECT_LT(degrees, 60);
    EXPECT_TRUE(Eventually([&] { return client.Read64(vcam::feature::kDeviceTemperature) != first; }));
}

} // namespace
