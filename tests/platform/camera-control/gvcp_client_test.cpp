// The GVCP client against scripted peers on loopback.
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

#include "Camera/Boundary/OvStatus.h"
#include "ScriptedCamera.h"
#include "find/GvcpClient.h"
#include "find/Ipv4.h"
#include "platform/virtual-camera/eventually.h"

namespace kolt::cc {
namespace {

using std::chrono::milliseconds;
using test::acknowledge;
using test::Bytes;
using test::ScriptedCamera;
using test::word16;

constexpr std::uint32_t kLoopback = ipv4(127, 0, 0, 1);

GvcpPeer peerOf(const ScriptedCamera& camera) {
    GvcpPeer peer;
    peer.ip = kLoopback;
    peer.port = camera.port();
    return peer;
}

// Where an answer is to come, or none can.
GvcpTiming patient(unsigned attempts = 1) {
    return {milliseconds(20000), attempts, milliseconds(20000)};
}

// Where each attempt but the last is to fail: long enough for a busy machine to answer that one.
GvcpTiming quick(unsigned attempts) {
    return {milliseconds(1000), attempts, milliseconds(2000)};
}

Bytes value(std::uint32_t v) {
    Bytes bytes;
    test::append32(bytes, v);
    return bytes;
}

TEST(GvcpClient, ReadsARegister) {
    ScriptedCamera camera("127.0.0.1", 0, ScriptedCamera::obedient({}, {{0xA00, 0x42}}));
    GvcpClient client(peerOf(camera), patient());
    std::uint32_t v = 0;
    EXPECT_EQ(client.readRegister(0xA00, v), OV_STATUS_OK);
    EXPECT_EQ(v, 0x42U);
    EXPECT_EQ(client.readRegister(0xB00, v), OV_STATUS_INVALID_ADDRESS);
    EXPECT_EQ(v, 0x42U);
    EXPECT_EQ(client.dropped().total(), 0U);
}

TEST(GvcpClient, WritesARegister) {
    std::uint32_t address = 0;
    std::uint32_t written = 0;
    ScriptedCamera camera("127.0.0.1", 0, [&](const Bytes& request) -> std::vector<Bytes> {
        address = test::word32(request, 8);
        written = test::word32(request, 12);
        return {acknowledge(0, 0x83, value(1), word16(request, 6))};
    });
    GvcpClient client(peerOf(camera), patient());
    EXPECT_EQ(client.writeRegister(0xA00, 0xDEADBEEF), OV_STATUS_OK);
    EXPECT_EQ(address, 0xA00U);
    EXPECT_EQ(written, 0xDEADBEEFU);
}

TEST(GvcpClient, GivesTheCamerasRefusalsAsStatus) {
    ScriptedCamera camera("127.0.0.1", 0, [](const Bytes& request) -> std::vector<Bytes> {
        return {
            acknowledge(0x8006, static_cast<std::uint16_t>(word16(request, 2) + 1), {}, word16(request, 6))};
    });
    GvcpClient client(peerOf(camera), patient());
    EXPECT_EQ(client.writeRegister(0xA00, 2), OV_STATUS_ACCESS_DENIED);
    Bytes data(8);
    EXPECT_EQ(client.readMemory(0, data.data(), data.size()), OV_STATUS_ACCESS_DENIED);
    EXPECT_EQ(camera.received(), 2U);
}

TEST(GvcpClient, DiscoversOneCamera) {
    test::ScriptedIdentity identity;
    identity.serial = "42-43";
    ScriptedCamera camera("127.0.0.1", 0, ScriptedCamera::obedient(identity));
    GvcpClient client(peerOf(camera), patient());
    DiscoveryAnswer answer;
    EXPECT_EQ(client.discover(answer), OV_STATUS_OK);
    EXPECT_EQ(answer.serialNumber, "42-43");
    EXPECT_EQ(client.localAddress(), kLoopback);
}

TEST(GvcpClient, ReadsMemoryOfAnyAlignmentAndLengthInAllowedPieces) {
    Bytes block(4096);
    for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    std::vector<std::pair<std::uint32_t, unsigned>> pieces;
    const auto obedient = ScriptedCamera::obedient({}, {}, {{0x1000, block}});
    ScriptedCamera camera("127.0.0.1", 0, [&](const Bytes& request) {
        pieces.emplace_back(test::word32(request, 8), word16(request, 14));
        return obedient(request);
    });
    GvcpClient client(peerOf(camera), patient());
    const std::pair<std::uint32_t, std::size_t> cases[] = {{0, 4},    {1, 1},    {3, 2},    {0, 536},
                                                           {0, 537},  {2, 536},  {1, 2000}, {3, 4093},
                                                           {4095, 1}, {0, 4096}, {534, 3},  {100, 0}};
    for (const auto& [offset, length] : cases) {
        Bytes data(length + 2, 0xEE);
        ASSERT_EQ(client.readMemory(0x1000 + offset, data.data() + 1, length), OV_STATUS_OK) << offset;
        EXPECT_EQ(data.front(), 0xEE);
        EXPECT_EQ(data.back(), 0xEE);
        const auto begin = block.begin() + offset;
        EXPECT_EQ(Bytes(data.begin() + 1, data.end() - 1),
                  Bytes(begin, begin + static_cast<std::ptrdiff_t>(length)));
    }
    for (const auto& [address, count] : pieces) {
        EXPECT_EQ(address % 4, 0U);
        EXPECT_EQ(count % 4, 0U);
        EXPECT_LE(count, 536U);
        EXPECT_GE(count, 4U);
    }
}

TEST(GvcpClient, MemoryBeyondTheAddressSpaceIsRefusedWithoutAsking) {
    ScriptedCamera camera("127.0.0.1", 0, ScriptedCamera::obedient({}));
    GvcpClient client(peerOf(camera), patient());
    Bytes data(16);
    EXPECT_EQ(client.readMemory(0xFFFFFFF8U, data.data(), 16), OV_STATUS_INVALID_ADDRESS);
    EXPECT_EQ(camera.received(), 0U);
}

TEST(GvcpClient, AsksAgainWithTheSameIdWhenAnAnswerIsLost) {
    std::vector<std::uint16_t> ids;
    ScriptedCamera camera("127.0.0.1", 0, [&](const Bytes& request) -> std::vector<Bytes> {
        ids.push_back(word16(request, 6));
        if (ids.size() < 3)
            return {};
        return {acknowledge(0, 0x81, value(5), word16(request, 6))};
    });
    GvcpClient client(peerOf(camera), quick(3));
    std::uint32_t v = 0;
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_OK);
    EXPECT_EQ(v, 5U);
    ASSERT_EQ(ids.size(), 3U);
    EXPECT_EQ(ids[0], ids[1]);
    EXPECT_EQ(ids[1], ids[2]);
    EXPECT_NE(ids[0], 0);
}

TEST(GvcpClient, SilenceIsANetworkErrorAfterAllAttempts) {
    ScriptedCamera camera("127.0.0.1", 0, [](const Bytes&) { return std::vector<Bytes>{}; });
    GvcpClient client(peerOf(camera), {milliseconds(60), 3, milliseconds(60000)});
    std::uint32_t v = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_NETWORK);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, milliseconds(180));
    EXPECT_LT(took, milliseconds(20000));
    EXPECT_TRUE(test::Eventually([&] { return camera.received() == 3; })) << camera.received();
}

TEST(GvcpClient, AClosedPortIsANetworkErrorAtOnce) {
    GvcpPeer peer;
    peer.ip = kLoopback;
    {
        ScriptedCamera gone("127.0.0.1", 0, ScriptedCamera::obedient({}));
        peer.port = gone.port();
    }
    GvcpClient client(peer, {milliseconds(60000), 3, milliseconds(60000)});
    std::uint32_t v = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_NETWORK);
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(20000));
}

TEST(GvcpClient, APortThatWasClosedAndOpensAgainIsReadable) {
    GvcpPeer peer;
    peer.ip = kLoopback;
    auto camera =
        std::make_unique<ScriptedCamera>("127.0.0.1", std::uint16_t{0}, ScriptedCamera::obedient({}));
    peer.port = camera->port();
    camera.reset();
    GvcpClient client(peer, patient(3));
    std::uint32_t v = 0;
    EXPECT_EQ(client.readRegister(4, v), OV_STATUS_NETWORK);
    camera = std::make_unique<ScriptedCamera>("127.0.0.1", peer.port, ScriptedCamera::obedient({}, {{4, 9}}));
    EXPECT_EQ(client.readRegister(4, v), OV_STATUS_OK);
    EXPECT_EQ(v, 9U);
}

std::vector<Bytes> pendingOnly(const Bytes& request, std::uint16_t pendingMs) {
    const auto high = static_cast<std::uint8_t>(pendingMs >> 8);
    return {acknowledge(0, 0x89, {0, 0, high, static_cast<std::uint8_t>(pendingMs)}, word16(request, 6))};
}

TEST(GvcpClient, APendingAnswerProlongsTheWait) {
    ScriptedCamera camera("127.0.0.1", 0, [](const Bytes& request) {
        auto answers = pendingOnly(request, 20000);
        answers.push_back(acknowledge(0, 0x81, value(77), word16(request, 6)));
        return answers;
    });
    camera.pauseBetweenAnswers(1400);
    GvcpClient client(peerOf(camera), {milliseconds(1000), 1, milliseconds(30000)});
    std::uint32_t v = 0;
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_OK);
    EXPECT_EQ(v, 77U);
    EXPECT_EQ(camera.received(), 1U);
}

TEST(GvcpClient, APendingAnswerThatNeverFollowsEndsWithItsTime) {
    ScriptedCamera camera("127.0.0.1", 0, [](const Bytes& request) { return pendingOnly(request, 1500); });
    GvcpClient client(peerOf(camera), {milliseconds(1000), 1, milliseconds(60000)});
    std::uint32_t v = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_NETWORK);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, milliseconds(1500)) << "longer than without it";
    EXPECT_LT(took, milliseconds(20000));
}

TEST(GvcpClient, PatienceHasALimitWhateverTheCameraAsksFor) {
    ScriptedCamera camera("127.0.0.1", 0, [](const Bytes& request) { return pendingOnly(request, 65535); });
    GvcpClient client(peerOf(camera), {milliseconds(1000), 2, milliseconds(1250)});
    std::uint32_t v = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_NETWORK);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, milliseconds(1250));
    EXPECT_LT(took, milliseconds(20000));
}

struct RubbishCase {
    const char* name;
    std::function<Bytes(std::uint16_t id)> datagram;
    std::uint64_t DropCounters::*counter;
};

void PrintTo(const RubbishCase& c, std::ostream* out) {
    *out << c.name;
}

class GvcpClientRubbish : public testing::TestWithParam<RubbishCase> {};

// Rubbish in front of the right answer is dropped and counted, and the answer behind it taken.
TEST_P(GvcpClientRubbish, IsDroppedAndCounted) {
    const RubbishCase& c = GetParam();
    ScriptedCamera camera("127.0.0.1", 0, [&](const Bytes& request) -> std::vector<Bytes> {
        const std::uint16_t id = word16(request, 6);
        return {c.datagram(id), c.datagram(id), acknowledge(0, 0x81, value(3), id)};
    });
    GvcpClient client(peerOf(camera), {milliseconds(20000), 1, milliseconds(1000)});
    std::uint32_t v = 0;
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_OK);
    EXPECT_EQ(v, 3U);
    EXPECT_EQ(client.dropped().*c.counter, 2U);
    EXPECT_EQ(client.dropped().total(), 2U);
}

const RubbishCase kRubbish[] = {
    {"short", [](std::uint16_t) { return Bytes(5); }, &DropCounters::tooShort},
    {"nothing", [](std::uint16_t) { return Bytes(); }, &DropCounters::tooShort},
    {"other_id",
     [](std::uint16_t id) { return acknowledge(0, 0x81, value(4), static_cast<std::uint16_t>(id + 1)); },
     &DropCounters::wrongId},
    {"other_command", [](std::uint16_t id) { return acknowledge(0, 0x85, value(4), id); },
     &DropCounters::wrongCommand},
    {"cut",
     [](std::uint16_t id) {
         Bytes bytes = acknowledge(0, 0x81, value(4), id);
         bytes.pop_back();
         return bytes;
     },
     &DropCounters::wrongLength},
    {"longer_than_any_answer", [](std::uint16_t id) { return acknowledge(0, 0x81, Bytes(5000), id); },
     &DropCounters::wrongLength},
};

INSTANTIATE_TEST_SUITE_P(Table, GvcpClientRubbish, testing::ValuesIn(kRubbish),
                         [](const auto& row) { return row.param.name; });

TEST(GvcpClient, AnAnswerFromAnotherPortIsDroppedAndCounted) {
    ScriptedCamera camera("127.0.0.1", 0, ScriptedCamera::obedient({}, {{0, 1}}));
    camera.answerFromForeignPort(true);
    GvcpClient client(peerOf(camera), {milliseconds(1000), 2, milliseconds(1000)});
    std::uint32_t v = 0;
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_NETWORK);
    EXPECT_EQ(client.dropped().wrongSource, 2U);
}

TEST(GvcpClient, AFloodOfRubbishEndsWithTheTimeOut) {
    ScriptedCamera camera("127.0.0.1", 0, [](const Bytes&) { return std::vector<Bytes>(20000, Bytes(100)); });
    GvcpClient client(peerOf(camera), {milliseconds(100), 1, milliseconds(1000)});
    std::uint32_t v = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_NETWORK);
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(20000));
    EXPECT_GT(client.dropped().total(), 0U);
}

TEST(GvcpClient, AReadableCancelDescriptorEndsTheWait) {
    ScriptedCamera camera("127.0.0.1", 0, [](const Bytes&) { return std::vector<Bytes>{}; });
    GvcpClient client(peerOf(camera), {milliseconds(60000), 1, milliseconds(1000)});
    const int cancel = ::eventfd(0, EFD_CLOEXEC);
    client.setCancelDescriptor(cancel);
    std::thread canceller([&] {
        const std::uint64_t one = 1;
        EXPECT_EQ(::write(cancel, &one, sizeof one), static_cast<ssize_t>(sizeof one));
    });
    std::uint32_t v = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_NETWORK);
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(30000));
    canceller.join();
    ::close(cancel);
}

TEST(GvcpClient, AForeignSourceAddressOrInterfaceIsANetworkError) {
    GvcpPeer peer;
    peer.ip = kLoopback;
    peer.localIp = ipv4(203, 0, 113, 7);
    GvcpClient foreign(peer, patient());
    EXPECT_EQ(foreign.status(), OV_STATUS_NETWORK);
    std::uint32_t v = 0;
    EXPECT_EQ(foreign.readRegister(0, v), OV_STATUS_NETWORK);
    peer.localIp = 0;
    peer.interfaceName = "kolt-none0";
    EXPECT_EQ(GvcpClient(peer, patient()).status(), OV_STATUS_NETWORK);
}

TEST(GvcpClient, AConfinedClientReachesLoopback) {
    ScriptedCamera camera("127.0.0.1", 0, ScriptedCamera::obedient({}, {{0, 8}}));
    GvcpPeer peer = peerOf(camera);
    peer.interfaceName = "lo";
    peer.localIp = kLoopback;
    GvcpClient client(peer, patient(3));
    std::uint32_t v = 0;
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_OK);
    EXPECT_EQ(v, 8U);
}

TEST(UdpSocket, HandsItsDescriptorOn) {
    UdpSocket first;
    EXPECT_FALSE(first.isOpen());
    UdpOptions options;
    options.interfaceName = "lo";
    ASSERT_EQ(first.open(options), 0);
    EXPECT_TRUE(first.confined());
    const int descriptor = first.descriptor();
    UdpSocket second(std::move(first));
    EXPECT_EQ(second.descriptor(), descriptor);
    UdpSocket third;
    ASSERT_EQ(third.open({}), 0);
    EXPECT_FALSE(third.confined());
    third = std::move(second);
    EXPECT_EQ(third.descriptor(), descriptor);
    EXPECT_TRUE(third.confined());
}

TEST(GvcpClient, WithoutDescriptorsItSaysSo) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    GvcpClient client({kLoopback, 0, "", 3956}, patient());
    const std::uint32_t source = routeSource(kLoopback);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    std::uint32_t v = 0;
    EXPECT_EQ(client.status(), OV_STATUS_RESOURCE);
    EXPECT_EQ(client.readRegister(0, v), OV_STATUS_RESOURCE);
    EXPECT_EQ(source, 0U);
}

TEST(RouteSource, IsTheAddressFromWhichTheHostWouldSpeak) {
    EXPECT_EQ(routeSource(kLoopback), kLoopback);
}

} // namespace
} // namespace kolt::cc
