// Discovery in networks of the test: what is found, what is not, and what is dropped.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <sys/resource.h>
#include <thread>

#include "CameraSite.h"
#include "find/DiscoverySettings.h"
#include "find/GigeDiscovery.h"
#include "find/Ipv4.h"
#include "platform/virtual-camera/eventually.h"
#include "support/HeldUp.h"

namespace kolt::cc {
namespace {

using std::chrono::milliseconds;
using test::acknowledge;
using test::Bytes;
using test::CameraSite;
using test::NamespaceScope;
using test::NetworkNamespace;
using test::ScriptedCamera;
using test::ScriptedIdentity;
using test::word16;

DiscoveryResult discoverFrom(const NetworkNamespace& host, bool confine = true) {
    const NamespaceScope inside(host);
    DiscoveryQuestion question;
    EXPECT_EQ(wholeHostQuestion(question), 0);
    question.confine = confine;
    return discoverGige(question);
}

ScriptedIdentity identity(std::uint64_t mac, const std::string& serial = "S1") {
    ScriptedIdentity result;
    result.mac = mac;
    result.serial = serial;
    return result;
}

std::uint32_t address(const std::string& text) {
    return parseIpv4(text).value_or(0);
}

TEST(Discovery, TheRecordIsComplete) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    ScriptedIdentity camera = identity(0xA1B2C3D4E5F6, "SN-0815");
    camera.mask = "255.255.255.0";
    camera.gateway = "10.1.0.254";
    camera.userName = "top left";
    site.add("10.1.0.5/24", camera);
    const DiscoveryResult result = discoverFrom(host);
    EXPECT_EQ(result.status, OV_STATUS_OK);
    ASSERT_EQ(result.cameras.size(), 1U);
    _OV_CC_DEVICE_INFO_ record;
    std::memset(&record, 0xEE, sizeof record);
    fillRecord(result.cameras[0], record);
    EXPECT_EQ(record.majorVersion, 2);
    EXPECT_EQ(record.minorVersion, 0);
    EXPECT_EQ(record.macHigh, 0xA1B2U);
    EXPECT_EQ(record.macLow, 0xC3D4E5F6U);
    EXPECT_EQ(record.nTLayerType, 1U);
    const auto& gige = record.transport.gige;
    EXPECT_EQ(gige.ipConfigOptions, 7U);
    EXPECT_EQ(gige.ipConfigCurrent, 5U);
    EXPECT_EQ(gige.currentIp, address("10.1.0.5"));
    EXPECT_EQ(gige.currentSubnetMask, address("255.255.255.0"));
    EXPECT_EQ(gige.defaultGateway, address("10.1.0.254"));
    EXPECT_STREQ(gige.manufacturerName, "Scripted");
    EXPECT_STREQ(gige.modelName, "Model-1");
    EXPECT_STREQ(gige.deviceVersion, "1.2.3");
    EXPECT_STREQ(gige.manufacturerInfo, "info");
    EXPECT_STREQ(gige.serialNumber, "SN-0815");
    EXPECT_STREQ(gige.userDefinedName, "top left");
    EXPECT_EQ(gige.hostInterface, address("10.1.0.1"));
    EXPECT_TRUE(
        std::all_of(std::begin(record.reserved), std::end(record.reserved), [](auto b) { return b == 0; }));
    EXPECT_TRUE(
        std::all_of(std::begin(gige.reserved), std::end(gige.reserved), [](auto b) { return b == 0; }));
}

TEST(Discovery, TextsThatFillTheirFieldGetTheirNul) {
    FoundCamera camera;
    camera.answer.modelName = std::string(32, 'm');
    camera.answer.manufacturerInfo = std::string(48, 'i');
    camera.answer.serialNumber = std::string(16, 's');
    camera.answer.userDefinedName = std::string(16, 'u');
    _OV_CC_DEVICE_INFO_ record;
    fillRecord(camera, record);
    EXPECT_EQ(std::string(record.transport.gige.modelName), std::string(31, 'm'));
    EXPECT_EQ(std::string(record.transport.gige.manufacturerInfo), std::string(47, 'i'));
    EXPECT_EQ(std::string(record.transport.gige.serialNumber), std::string(15, 's'));
    EXPECT_EQ(std::string(record.transport.gige.userDefinedName), std::string(15, 'u'));
}

TEST(Discovery, ACameraOfAForeignSubnetIsSeen) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    site.add("172.31.5.5/24", identity(1, "by unicast"));
    site.add("169.254.7.7/16", identity(2, "by broadcast")).answerByBroadcast(true);
    const DiscoveryResult result = discoverFrom(host);
    ASSERT_EQ(result.cameras.size(), 2U);
    EXPECT_EQ(result.cameras[0].answer.currentIp, address("172.31.5.5"));
    EXPECT_EQ(result.cameras[1].answer.currentIp, address("169.254.7.7"));
    for (const FoundCamera& camera : result.cameras)
        EXPECT_EQ(camera.hostInterface, address("10.1.0.1"));
}

TEST(Discovery, OneCameraOnTwoInterfacesIsTwo) {
    const NetworkNamespace host;
    CameraSite left(host, "ka0", "10.1.0.1/24");
    CameraSite right(host, "ka1", "10.1.1.1/24");
    left.add("10.1.0.5/24", identity(7));
    right.add("10.1.1.5/24", identity(7));
    const DiscoveryResult result = discoverFrom(host);
    ASSERT_EQ(result.cameras.size(), 2U);
    EXPECT_EQ(result.cameras[0].hostInterface, address("10.1.0.1"));
    EXPECT_EQ(result.cameras[1].hostInterface, address("10.1.1.1"));
}

TEST(Discovery, CamerasWithEqualNamesAndSerialsAreTwo) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    site.add("10.1.0.5/24", identity(1, "same"));
    site.add("10.1.0.6/24", identity(2, "same"));
    EXPECT_EQ(discoverFrom(host).cameras.size(), 2U);
}

TEST(Discovery, CamerasOfOneAddressAreTwo) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    site.add("10.1.0.5/24", [](const Bytes& request) {
        std::vector<Bytes> answers;
        for (const std::uint64_t mac : {1U, 2U}) {
            ScriptedIdentity camera = identity(mac);
            camera.ip = "10.1.0.5";
            answers.push_back(acknowledge(0, 3, test::discoveryPayload(camera), word16(request, 6)));
        }
        return answers;
    });
    EXPECT_EQ(discoverFrom(host).cameras.size(), 2U);
}

TEST(Discovery, ACameraThatAnswersManyTimesIsOne) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    ScriptedIdentity camera = identity(1);
    camera.ip = "10.1.0.5";
    const auto obedient = ScriptedCamera::obedient(camera);
    ScriptedCamera& chatty = site.add("10.1.0.5/24", [=](const Bytes& request) {
        return std::vector<Bytes>(3, obedient(request).front());
    });
    const DiscoveryResult result = discoverFrom(host);
    EXPECT_EQ(result.cameras.size(), 1U);
    EXPECT_EQ(result.dropped.total(), 0U);
    // Asked three times, at both broadcast addresses.
    EXPECT_EQ(chatty.received(), 6U);
}

TEST(Discovery, ACameraThatMissesTheFirstTwoQuestionsIsFound) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    ScriptedIdentity camera = identity(1);
    camera.ip = "10.1.0.5";
    const auto obedient = ScriptedCamera::obedient(camera);
    int asked = 0;
    site.add("10.1.0.5/24",
             [&](const Bytes& request) { return ++asked <= 4 ? std::vector<Bytes>() : obedient(request); });
    EXPECT_EQ(discoverFrom(host).cameras.size(), 1U);
}

TEST(Discovery, TheHostInterfaceIsTheAddressOfTheCamerasSubnet) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    host.ip("address add 192.168.9.1/24 broadcast + dev ka0");
    site.add("192.168.9.5/24", identity(1));
    site.add("10.1.0.5/24", identity(2));
    const DiscoveryResult result = discoverFrom(host);
    ASSERT_EQ(result.cameras.size(), 2U);
    EXPECT_EQ(result.cameras[0].hostInterface, address("192.168.9.1"));
    EXPECT_EQ(result.cameras[1].hostInterface, address("10.1.0.1"));
}

TEST(Discovery, LoopbackCamerasAreFoundByTheirAddresses) {
    const NetworkNamespace host;
    std::vector<std::unique_ptr<ScriptedCamera>> cameras;
    {
        const NamespaceScope inside(host);
        std::uint64_t mac = 0;
        for (const char* ip : {"127.0.0.1", "127.0.0.2", "127.0.0.16", "127.0.0.17", "127.9.9.9"}) {
            ScriptedIdentity camera = identity(++mac);
            camera.ip = ip;
            cameras.push_back(
                std::make_unique<ScriptedCamera>(ip, std::uint16_t{3956}, ScriptedCamera::obedient(camera)));
        }
    }
    const DiscoveryResult result = discoverFrom(host);
    ASSERT_EQ(result.cameras.size(), 3U);
    EXPECT_EQ(result.cameras[2].answer.currentIp, address("127.0.0.16"));
    for (const FoundCamera& camera : result.cameras)
        EXPECT_EQ(camera.hostInterface, address("127.0.0.1"));

    const DiscoverySettings before = discoverySettings();
    setDiscoverySettings(parseDiscoverySettings("", "127.9.9.9 127.0.0.1"));
    const DiscoveryResult more = discoverFrom(host);
    setDiscoverySettings(before);
    ASSERT_EQ(more.cameras.size(), 4U);
    EXPECT_EQ(more.cameras[3].answer.currentIp, address("127.9.9.9"));
    EXPECT_EQ(more.cameras[3].hostInterface, address("127.0.0.1"));
}

TEST(Discovery, ACameraOnTheHostsOwnAddressIsFound) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    ScriptedIdentity camera = identity(1);
    camera.ip = "10.1.0.1";
    std::unique_ptr<ScriptedCamera> own;
    {
        const NamespaceScope inside(host);
        own = std::make_unique<ScriptedCamera>("10.1.0.1", std::uint16_t{3956},
                                               ScriptedCamera::obedient(camera));
    }
    for (const bool confine : {true, false}) {
        const DiscoveryResult result = discoverFrom(host, confine);
        ASSERT_EQ(result.cameras.size(), 1U) << confine;
        EXPECT_EQ(result.cameras[0].hostInterface, address("10.1.0.1"));
    }
}

TEST(Discovery, OnlyTheAllowedInterfacesAreAsked) {
    const NetworkNamespace host;
    CameraSite left(host, "ka0", "10.1.0.1/24");
    CameraSite right(host, "ka1", "10.1.1.1/24");
    ScriptedCamera& unasked = left.add("10.1.0.5/24", identity(1));
    right.add("10.1.1.5/24", identity(2));
    const DiscoverySettings before = discoverySettings();
    setDiscoverySettings(parseDiscoverySettings("ka1", ""));
    const DiscoveryResult result = discoverFrom(host);
    setDiscoverySettings(before);
    ASSERT_EQ(result.cameras.size(), 1U);
    EXPECT_EQ(result.cameras[0].answer.mac, 2U);
    EXPECT_EQ(unasked.received(), 0U);
}

TEST(Discovery, ANetworkWithoutInterfacesIsAnsweredAtOnce) {
    const NetworkNamespace host;
    host.ip("link set lo down");
    // Long before the time for answers is over; a busy machine may hold one call up.
    EXPECT_TRUE(test::Eventually([&] {
        const auto start = std::chrono::steady_clock::now();
        const DiscoveryResult result = discoverFrom(host);
        const auto took = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(result.status, OV_STATUS_OK);
        EXPECT_TRUE(result.cameras.empty());
        return took < milliseconds(200);
    }));
}

HostInterface cardOf(const std::string& name) {
    HostInterface interface;
    interface.name = name;
    interface.index = 77;
    interface.up = interface.running = interface.broadcast = true;
    interface.addresses = {{address("10.1.0.1"), address("255.0.0.0"), 0}};
    return interface;
}

TEST(Discovery, AnInterfaceThatVanishedSinceItWasListedIsNoError) {
    const NetworkNamespace host;
    const NamespaceScope inside(host);
    DiscoveryQuestion question;
    question.interfaces = {cardOf("ka7")};
    const DiscoveryResult result = discoverGige(question);
    EXPECT_EQ(result.status, OV_STATUS_OK);
    EXPECT_TRUE(result.cameras.empty());
}

// Cameras that were not asked must not look like cameras that are gone.
TEST(Discovery, WithoutDescriptorsItSaysSo) {
    DiscoveryQuestion question;
    question.interfaces = {cardOf("lo")};
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const DiscoveryResult result = discoverGige(question);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(result.status, OV_STATUS_RESOURCE);
}

TEST(Discovery, TheWaitCanEndAtTheCameraWanted) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    site.add("10.1.0.5/24", identity(1));
    const NamespaceScope inside(host);
    DiscoveryQuestion question;
    ASSERT_EQ(wholeHostQuestion(question), 0);
    question.total = std::chrono::seconds(60);
    question.stopWhen = [](const FoundCamera& camera) { return camera.answer.mac == 1; };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(discoverGige(question).cameras.size(), 1U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

struct BadAnswer {
    const char* name;
    std::function<Bytes(std::uint16_t id)> datagram;
    std::uint64_t DropCounters::*counter;
};

void PrintTo(const BadAnswer& answer, std::ostream* out) {
    *out << answer.name;
}

class DiscoveryRubbish : public testing::TestWithParam<BadAnswer> {};

// A camera that answers rubbish first and properly afterwards.
TEST_P(DiscoveryRubbish, IsDroppedAndCounted) {
    const BadAnswer& c = GetParam();
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    ScriptedIdentity camera = identity(1);
    camera.ip = "10.1.0.5";
    const auto obedient = ScriptedCamera::obedient(camera);
    int asked = 0;
    site.add("10.1.0.5/24", [&](const Bytes& request) -> std::vector<Bytes> {
        if (asked++ == 0)
            return {c.datagram(word16(request, 6))};
        return obedient(request);
    });
    const DiscoveryResult result = discoverFrom(host);
    ASSERT_EQ(result.cameras.size(), 1U);
    EXPECT_EQ(result.cameras[0].answer.mac, 1U);
    EXPECT_EQ(result.dropped.*c.counter, 1U);
    EXPECT_EQ(result.dropped.total(), 1U);
}

Bytes recordOf(const std::string& ip) {
    ScriptedIdentity other = identity(99);
    other.ip = ip;
    return test::discoveryPayload(other);
}

const BadAnswer kBadAnswers[] = {
    {"short", [](std::uint16_t) { return Bytes(7); }, &DropCounters::tooShort},
    {"cut_record", [](std::uint16_t id) { return acknowledge(0, 3, Bytes(200), id); },
     &DropCounters::wrongLength},
    {"length_beyond_the_end",
     [](std::uint16_t id) {
         Bytes bytes = acknowledge(0, 3, Bytes(248), id);
         bytes[4] = 0xFF;
         return bytes;
     },
     &DropCounters::wrongLength},
    {"huge", [](std::uint16_t id) { return acknowledge(0, 3, Bytes(9000), id); }, &DropCounters::wrongLength},
    {"other_id",
     [](std::uint16_t id) {
         return acknowledge(0, 3, recordOf("10.1.0.5"), static_cast<std::uint16_t>(id + 1));
     },
     &DropCounters::wrongId},
    {"other_acknowledge", [](std::uint16_t id) { return acknowledge(0, 0x81, Bytes(4), id); },
     &DropCounters::wrongCommand},
    {"an_error", [](std::uint16_t id) { return acknowledge(0x8FFF, 3, {}, id); }, &DropCounters::errorStatus},
    {"pending", [](std::uint16_t id) { return acknowledge(0, 0x89, Bytes(4), id); },
     &DropCounters::errorStatus},
    {"a_record_of_another_address",
     [](std::uint16_t id) { return acknowledge(0, 3, recordOf("10.1.0.77"), id); },
     &DropCounters::wrongSource},
};

INSTANTIATE_TEST_SUITE_P(Table, DiscoveryRubbish, testing::ValuesIn(kBadAnswers),
                         [](const auto& row) { return row.param.name; });

TEST(Discovery, AnswersFromAnotherPortAreDroppedAndCounted) {
    const NetworkNamespace host;
    CameraSite site(host, "ka0", "10.1.0.1/24");
    site.add("10.1.0.5/24", identity(1)).answerFromForeignPort(true);
    const DiscoveryResult result = discoverFrom(host);
    EXPECT_TRUE(result.cameras.empty());
    EXPECT_EQ(result.dropped.wrongSource, 6U);
}

TEST(Discovery, AFloodOnOneInterfaceDoesNotHideTheOthers) {
    const NetworkNamespace host;
    CameraSite noisy(host, "ka0", "10.1.0.1/24");
    CameraSite quiet(host, "ka1", "10.1.1.1/24");
    std::atomic<std::uint32_t> sent{0};
    noisy.add("10.1.0.5/24", [&](const Bytes& request) {
        // Each with another MAC, so that none is a duplicate; no address, so that the source fits.
        std::vector<Bytes> answers;
        for (int i = 0; i < 20000; ++i) {
            ScriptedIdentity fake = identity(0x100000 + sent++);
            fake.ip = "0.0.0.0";
            answers.push_back(acknowledge(0, 3, test::discoveryPayload(fake), word16(request, 6)));
        }
        return answers;
    });
    for (int i = 0; i < 4; ++i)
        quiet.add("10.1.1." + std::to_string(10 + i) + "/24", identity(static_cast<std::uint64_t>(i + 1)));
    const test::HeldUp heldUp;
    const auto start = heldUp.mark();
    const DiscoveryResult result = discoverFrom(host);
    EXPECT_LT(heldUp.tookSince(start), 3000);
    const auto found = std::count_if(result.cameras.begin(), result.cameras.end(),
                                     [](const FoundCamera& camera) { return camera.answer.mac <= 4; });
    EXPECT_EQ(found, 4);
    EXPECT_LE(result.cameras.size(), kMaxAnswersPerInterface + 4);
}

// 16 cameras behind 4 interfaces.
class FourInterfaces : public testing::Test {
protected:
    void SetUp() override {
        for (int i = 0; i < 4; ++i) {
            const std::string net = "10.1." + std::to_string(i) + ".";
            sites_.push_back(std::make_unique<CameraSite>(host_, "ka" + std::to_string(i), net + "1/24"));
            for (int k = 0; k < 4; ++k)
                sites_.back()->add(net + std::to_string(10 + k) + "/24",
                                   identity(static_cast<std::uint64_t>(0x100 + i * 4 + k)));
        }
    }

    static void expectAll(const DiscoveryResult& result) {
        std::set<std::pair<std::uint32_t, std::uint64_t>> seen;
        for (const FoundCamera& camera : result.cameras) {
            EXPECT_EQ(camera.hostInterface & 0xFFFFFF00U, camera.answer.currentIp & 0xFFFFFF00U);
            seen.emplace(camera.hostInterface, camera.answer.mac);
        }
        EXPECT_EQ(seen.size(), 16U);
        EXPECT_EQ(result.cameras.size(), 16U);
    }

    NetworkNamespace host_;
    std::vector<std::unique_ptr<CameraSite>> sites_;
};

TEST_F(FourInterfaces, AllSixteenCamerasAreFoundInEveryCall) {
    const int rounds = std::getenv("KOLT_SOAK") != nullptr ? 100 : 20;
    double longest = 0;
    const test::HeldUp heldUp;
    for (int round = 0; round < rounds; ++round) {
        const auto start = heldUp.mark();
        const DiscoveryResult result = discoverFrom(host_);
        longest = std::max(longest, heldUp.tookSince(start));
        expectAll(result);
    }
    RecordProperty("longest_ms", static_cast<int>(longest));
    std::printf("%d calls, the longest took %.0f ms\n", rounds, longest);
    EXPECT_LT(longest, 500) << "without what the machine kept from it";
}

TEST_F(FourInterfaces, AlsoWhereSocketsCanNotBeConfined) {
    expectAll(discoverFrom(host_, false));
}

TEST_F(FourInterfaces, AlsoFromSeveralThreadsAtOnce) {
    std::vector<std::thread> threads;
    std::vector<DiscoveryResult> results(6);
    for (DiscoveryResult& result : results)
        threads.emplace_back([&] { result = discoverFrom(host_); });
    for (std::thread& thread : threads)
        thread.join();
    for (const DiscoveryResult& result : results)
        expectAll(result);
}

TEST_F(FourInterfaces, TheOrderIsTheSameInEveryCall) {
    const DiscoveryResult first = discoverFrom(host_);
    const DiscoveryResult second = discoverFrom(host_);
    ASSERT_EQ(first.cameras.size(), second.cameras.size());
    for (std::size_t i = 0; i < first.cameras.size(); ++i)
        EXPECT_EQ(first.cameras[i].answer.mac, second.cameras[i].answer.mac);
    EXPECT_TRUE(std::is_sorted(first.cameras.begin(), first.cameras.end(), [](const auto& a, const auto& b) {
        return std::tie(a.interfaceIndex, a.answer.mac) < std::tie(b.interfaceIndex, b.answer.mac);
    }));
}

TEST_F(FourInterfaces, AnUnpluggedInterfaceDoesNotDisturbTheOthers) {
    sites_[1]->network().ip("link set dev mv0 down");
    host_.ip("link set ka2 down");
    const DiscoveryResult result = discoverFrom(host_);
    EXPECT_EQ(result.status, OV_STATUS_OK);
    EXPECT_EQ(result.cameras.size(), 11U);
}

} // namespace
} // namespace kolt::cc
