// The camera's answers without sockets, in time that the test makes; and what the fuzzer found or began with.
#include "Device/FeatureRegisters.h"
#include "Network/GvcpResponder.h"
#include "support/Places.h"
#include "virtual-camera/FuzzCommands.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

using namespace vcam;
using namespace std::chrono_literals;

class Outlet : public GvcpResponder::Outlet {
public:
    void Send(const Peer& to, const Bytes& answer, bool) override { sent.push_back({to, answer}); }
    Status Move(uint32_t, uint32_t, uint32_t) override { return Status::Success; }
    void Reboot() override {}
    void RequestResend(const ResendRequest& request) override { resends.push_back(request); }
    std::vector<std::pair<Peer, Bytes>> sent;
    std::vector<ResendRequest> resends;
};

class GvcpResponderTest : public testing::Test {
protected:
    GvcpResponderTest() : model({}, faults, counters), responder(model, faults, counters, outlet) {}

    void Ask(uint16_t port, uint16_t code, const Bytes& payload, uint16_t id) {
        Bytes datagram = {
            0x42,       1, uint8_t(code >> 8), uint8_t(code), 0, uint8_t(payload.size()), uint8_t(id >> 8),
            uint8_t(id)};
        datagram.insert(datagram.end(), payload.begin(), payload.end());
        responder.Receive(datagram, {1, port}, now);
    }
    static Bytes Words(std::initializer_list<uint32_t> words) {
        Bytes bytes;
        for (const uint32_t word : words)
            Append32(bytes, word);
        return bytes;
    }
    uint16_t LastStatus() const { return Get16(outlet.sent.back().second.data()); }

    FaultPanel faults;
    CounterBoard counters;
    DeviceModel model;
    Outlet outlet;
    GvcpResponder responder;
    Clock::time_point now{1h};
};

TEST_F(GvcpResponderTest, NothingIsDueWithoutAnOwner) {
    EXPECT_FALSE(responder.NextDeadline());
    Ask(9, 0x0080, Words({0x0A00}), 1);
    EXPECT_FALSE(responder.NextDeadline());
}

TEST_F(GvcpResponderTest, HeartbeatIsDueFromTheLastCommandOfTheOwner) {
    Ask(9, 0x0082, Words({0x0A00, 2}), 1);
    EXPECT_EQ(responder.NextDeadline(), now + 3s);
    now += 2s;
    Ask(8, 0x0080, Words({0x0A00}), 2);
    EXPECT_EQ(responder.NextDeadline(), now + 1s) << "another's commands don't count";
    Ask(9, 0x0002, {}, 3);
    EXPECT_EQ(responder.NextDeadline(), now + 3s) << "any command of the owner does";
    now += 2999ms;
    responder.Work(now);
    EXPECT_TRUE(responder.IsControlled());
    now += 1ms;
    responder.Work(now);
    EXPECT_FALSE(responder.IsControlled());
    EXPECT_EQ(counters.Get().heartbeatsExpired, 1u);
    EXPECT_FALSE(responder.NextDeadline());
}

TEST_F(GvcpResponderTest, DelayedAnswersComeWhenEachIsDue) {
    Faults slow;
    slow.answerDelayMs = 500;
    slow.announcePending = false;
    faults.Set(slow);
    Ask(9, 0x0080, Words({0x0A00}), 1);
    slow.answerDelayMs = 100;
    faults.Set(slow);
    Ask(9, 0x0080, Words({0x0A00}), 2);
    EXPECT_TRUE(outlet.sent.empty());
    EXPECT_EQ(responder.NextDeadline(), now + 100ms) << "the later one is due first";
    responder.Work(now + 100ms);
    ASSERT_EQ(outlet.sent.size(), 1u);
    EXPECT_EQ(Get16(outlet.sent[0].second.data() + 6), 2);
    EXPECT_EQ(responder.NextDeadline(), now + 500ms);
    responder.Work(now + 500ms);
    ASSERT_EQ(outlet.sent.size(), 2u);
    EXPECT_EQ(Get16(outlet.sent[1].second.data() + 6), 1);
    EXPECT_FALSE(responder.NextDeadline());
}

TEST_F(GvcpResponderTest, DeadCameraForgetsItsDelayedAnswers) {
    Faults slow;
    slow.answerDelayMs = 100;
    slow.announcePending = false;
    faults.Set(slow);
    Ask(9, 0x0080, Words({0x0A00}), 1);
    slow.silent = true;
    faults.Set(slow);
    responder.Work(now + 100ms);
    EXPECT_TRUE(outlet.sent.empty());
    EXPECT_FALSE(responder.NextDeadline());
}

TEST_F(GvcpResponderTest, SameWriteWithAnotherIdOrFromAnotherPortIsExecuted) {
    Ask(9, 0x0082, Words({0x0A00, 2}), 1);
    Ask(9, 0x0082, Words({feature::kWidth, 640}), 2);
    model.Memory().Set32(feature::kWidth, 1920);
    Ask(9, 0x0082, Words({feature::kWidth, 640}), 2);
    EXPECT_EQ(model.Memory().Get32(feature::kWidth), 1920u) << "repeated: answered only";
    EXPECT_EQ(LastStatus(), 0);
    Ask(8, 0x0082, Words({feature::kWidth, 640}), 2);
    EXPECT_EQ(LastStatus(), 0x8006) << "another's command gets an answer of its own";
    Ask(9, 0x0082, Words({feature::kWidth, 640}), 3);
    EXPECT_EQ(model.Memory().Get32(feature::kWidth), 640u);
}

TEST_F(GvcpResponderTest, ResendRequestsArePassedOnWithoutAnAnswer) {
    Ask(9, 0x0040, {0, 0, 0, 7, 0, 0, 0, 1, 0, 0, 0, 3}, 1);
    ASSERT_EQ(outlet.resends.size(), 1u);
    EXPECT_EQ(outlet.resends[0].blockId, 7u);
    EXPECT_TRUE(outlet.sent.empty());
    Ask(9, 0x0040, {0, 0, 0, 7}, 2);
    EXPECT_EQ(outlet.resends.size(), 1u) << "cut";
}

TEST(VirtualCameraFuzz, CorpusIsAnswered) {
    unsigned count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(KOLT_SOURCE_DIR "/fuzz/virtual-camera/corpus")) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        fuzz::FuzzVirtualCamera(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        ++count;
    }
    EXPECT_GE(count, 11u);
}

} // namespace
