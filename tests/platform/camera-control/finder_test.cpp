// Enumeration, device queries and access checks from above, on scripted cameras and a bus of doubles.
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <sys/resource.h>
#include <thread>

#include "CameraSite.h"
#include "FakeUsbBus.h"
#include "find/DiscoverySettings.h"
#include "find/Finder.h"
#include "find/Ipv4.h"
#include "find/RecordStore.h"
#include "support/HeldUp.h"

namespace kolt::cc {
namespace {

using std::chrono::milliseconds;
using test::acknowledge;
using test::Bytes;
using test::CameraSite;
using test::FakeUsbBus;
using test::NamespaceScope;
using test::NetworkNamespace;
using test::ScriptedCamera;
using test::ScriptedIdentity;
using test::word16;

std::uint32_t address(const std::string& text) {
    return parseIpv4(text).value_or(0);
}

ScriptedIdentity identity(std::uint64_t mac, const std::string& ip) {
    ScriptedIdentity result;
    result.mac = mac;
    result.ip = ip;
    return result;
}

_OV_CC_DEVICE_INFO_ gigeRecord(const std::string& ip, const std::string& hostInterface = "0.0.0.0",
                               std::uint64_t mac = 0) {
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.macHigh = static_cast<std::uint32_t>(mac >> 32);
    record.macLow = static_cast<std::uint32_t>(mac);
    record.transport.gige.currentIp = address(ip);
    record.transport.gige.hostInterface = address(hostInterface);
    return record;
}

// A network with one interface, and a bus of doubles.
class FinderTest : public testing::Test {
protected:
    NetworkNamespace host_;
    CameraSite site_{host_, "ka0", "10.1.0.1/24"};
    FakeUsbBus bus_;
    Finder finder_{bus_};
    test::HeldUp heldUp_;
    _OV_CC_DEVICE_INFO_LIST_ list_{};
};

TEST_F(FinderTest, ListsBothLayersWithinHalfASecond) {
    site_.add("10.1.0.5/24", identity(1, ""));
    bus_.cameras.emplace_back();
    const NamespaceScope inside(host_);
    const auto start = heldUp_.mark();
    ASSERT_EQ(finder_.enumerate(5, &list_), OV_STATUS_OK);
    EXPECT_LT(heldUp_.tookSince(start), 500);
    ASSERT_EQ(list_.deviceCount, 2U);
    EXPECT_EQ(list_.devices[0]->nTLayerType, 1U);
    EXPECT_EQ(list_.devices[0]->transport.gige.currentIp, address("10.1.0.5"));
    EXPECT_EQ(list_.devices[1]->nTLayerType, 4U);
    EXPECT_STREQ(list_.devices[1]->transport.usb3.serialNumber, "U-77");
    EXPECT_EQ(list_.devices[2], nullptr);
    EXPECT_EQ(finder_.statistics().calls, 1U);
    EXPECT_EQ(finder_.statistics().found, 2U);
}

TEST_F(FinderTest, ListsOnlyTheLayersAskedFor) {
    ScriptedCamera& camera = site_.add("10.1.0.5/24", identity(1, ""));
    bus_.cameras.emplace_back();
    const NamespaceScope inside(host_);
    ASSERT_EQ(finder_.enumerate(OV_TLAYER_USB3, &list_), OV_STATUS_OK);
    ASSERT_EQ(list_.deviceCount, 1U);
    EXPECT_EQ(list_.devices[0]->nTLayerType, 4U);
    EXPECT_EQ(camera.received(), 0U);
    ASSERT_EQ(finder_.enumerate(OV_TLAYER_GIGE, &list_), OV_STATUS_OK);
    ASSERT_EQ(list_.deviceCount, 1U);
    EXPECT_EQ(list_.devices[0]->nTLayerType, 1U);
}

TEST_F(FinderTest, BadArgumentsAreRefused) {
    EXPECT_EQ(finder_.enumerate(5, nullptr), OV_STATUS_INVALID_PARAMETER);
    list_.deviceCount = 7;
    EXPECT_EQ(finder_.enumerate(0, &list_), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(finder_.enumerate(2, &list_), OV_STATUS_INVALID_PARAMETER);
    _OV_CC_DEVICE_INFO_ live{};
    EXPECT_EQ(finder_.query(_OV_CC_DEVICE_INFO_{}, live), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(finder_.query(gigeRecord("0.0.0.0"), live), OV_STATUS_INVALID_PARAMETER);
    EXPECT_FALSE(finder_.accessible(nullptr, OV_ACCESS_EXCLUSIVE));
}

TEST_F(FinderTest, AFailureOfOneLayerFailsTheCallAndListsNothing) {
    bus_.status = OV_STATUS_RESOURCE;
    list_.deviceCount = 7;
    const NamespaceScope inside(host_);
    EXPECT_EQ(finder_.enumerate(5, &list_), OV_STATUS_RESOURCE);
    EXPECT_EQ(list_.deviceCount, 0U);
}

TEST_F(FinderTest, WithoutDescriptorsEachCallSaysSo) {
    _OV_CC_DEVICE_INFO_ live{};
    const auto record = gigeRecord("10.1.0.5");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::uint32_t enumerated = finder_.enumerate(OV_TLAYER_GIGE, &list_);
    const std::uint32_t queried = finder_.query(record, live);
    const std::uint32_t forced = forceIp(record, address("10.1.0.6"));
    const bool accessible = finder_.accessible(&record, OV_ACCESS_EXCLUSIVE);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(enumerated, OV_STATUS_RESOURCE);
    EXPECT_EQ(queried, OV_STATUS_RESOURCE);
    EXPECT_EQ(forced, OV_STATUS_RESOURCE);
    EXPECT_FALSE(accessible);
}

TEST_F(FinderTest, BeyondTheListsEndTheFirst256AreGiven) {
    // One card that speaks for 300 cameras without an address, 50 at each question.
    std::uint64_t next = 0;
    site_.add("10.1.0.5/24", [&](const Bytes& request) {
        std::vector<Bytes> answers;
        for (const std::uint64_t end = next + 50; next < end; ++next)
            answers.push_back(acknowledge(0, 3, test::discoveryPayload(identity(0x1000 + next, "0.0.0.0")),
                                          word16(request, 6)));
        return answers;
    });
    const NamespaceScope inside(host_);
    ASSERT_EQ(finder_.enumerate(5, &list_), OV_STATUS_OK);
    ASSERT_EQ(list_.deviceCount, 256U);
    for (std::uint32_t i = 0; i < 256; ++i)
        EXPECT_EQ(list_.devices[i]->macLow, 0x1000 + i);
    EXPECT_EQ(finder_.statistics().found, 300U);
    EXPECT_EQ(finder_.statistics().beyondLimit, 44U);
}

TEST_F(FinderTest, RubbishIsCounted) {
    site_.add("10.1.0.5/24", [](const Bytes&) { return std::vector<Bytes>{Bytes(3)}; });
    const NamespaceScope inside(host_);
    ASSERT_EQ(finder_.enumerate(5, &list_), OV_STATUS_OK);
    EXPECT_EQ(list_.deviceCount, 0U);
    EXPECT_EQ(finder_.statistics().dropped.tooShort, 6U);
}

TEST(RecordStore, RecordsStayUntilTheSameThreadCallsAgain) {
    std::vector<_OV_CC_DEVICE_INFO_> records(2);
    records[0].macLow = 1;
    records[1].macLow = 2;
    _OV_CC_DEVICE_INFO_LIST_ mine{};
    publishRecords(records, mine);
    std::thread([&] {
        std::vector<_OV_CC_DEVICE_INFO_> others(3);
        _OV_CC_DEVICE_INFO_LIST_ theirs{};
        publishRecords(others, theirs);
        EXPECT_NE(theirs.devices[0], mine.devices[0]);
    }).join();
    ASSERT_EQ(mine.deviceCount, 2U);
    EXPECT_EQ(mine.devices[0]->macLow, 1U);
    EXPECT_EQ(mine.devices[1]->macLow, 2U);
    publishRecords({}, mine);
    EXPECT_EQ(mine.deviceCount, 0U);
    EXPECT_EQ(mine.devices[0], nullptr);
}

TEST(RecordStore, AListOutlivesItsThread) {
    _OV_CC_DEVICE_INFO_LIST_ list{};
    std::thread([&] {
        std::vector<_OV_CC_DEVICE_INFO_> records(1);
        records[0].macLow = 77;
        publishRecords(records, list);
    }).join();
    EXPECT_EQ(list.devices[0]->macLow, 77U);
}

TEST(RecordStore, ThreadsThatComeAndGoReuseTheStores) {
    const auto publishOnce = [] {
        std::thread([] {
            _OV_CC_DEVICE_INFO_LIST_ list{};
            publishRecords(std::vector<_OV_CC_DEVICE_INFO_>(1), list);
        }).join();
    };
    publishOnce();
    const std::size_t before = recordStoreCount();
    for (int i = 0; i < 50; ++i)
        publishOnce();
    EXPECT_EQ(recordStoreCount(), before);
}

TEST_F(FinderTest, ThreadsThatEnumerateTogetherKeepTheirOwnRecords) {
    for (int i = 0; i < 4; ++i)
        site_.add("10.1.0." + std::to_string(10 + i) + "/24",
                  identity(static_cast<std::uint64_t>(i + 1), ""));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            const NamespaceScope inside(host_);
            for (int round = 0; round < 3; ++round) {
                _OV_CC_DEVICE_INFO_LIST_ list{};
                EXPECT_EQ(finder_.enumerate(5, &list), OV_STATUS_OK);
                ASSERT_EQ(list.deviceCount, 4U);
                for (std::uint32_t i = 0; i < 4; ++i)
                    EXPECT_EQ(list.devices[i]->macLow, i + 1);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(FinderTest, ABareAddressIsEnoughForARecord) {
    site_.add("10.1.0.5/24", identity(0x20304, ""));
    site_.add("10.1.0.6/24", identity(0x20305, ""));
    const NamespaceScope inside(host_);
    _OV_CC_DEVICE_INFO_ live{};
    const auto start = heldUp_.mark();
    ASSERT_EQ(finder_.query(gigeRecord("10.1.0.5"), live), OV_STATUS_OK);
    EXPECT_LT(heldUp_.tookSince(start), 400);
    EXPECT_EQ(live.nTLayerType, 1U);
    EXPECT_EQ(live.macLow, 0x20304U);
    EXPECT_EQ(live.transport.gige.currentIp, address("10.1.0.5"));
    EXPECT_EQ(live.transport.gige.hostInterface, address("10.1.0.1"));
    EXPECT_STREQ(live.transport.gige.modelName, "Model-1");
}

TEST_F(FinderTest, ACameraBehindARouterIsAskedByRoute) {
    // host 10.1.0.1 -- 10.1.0.2 router 10.77.0.1 -- 10.77.0.5 camera
    NetworkNamespace router;
    NetworkNamespace::cable(host_, "ka1", "10.2.0.1/24", router, "rt0", "10.2.0.2/24");
    CameraSite remote(router, "rt1", "10.77.0.1/24");
    remote.add("10.77.0.5/24", identity(9, ""));
    remote.network().ip("route add default via 10.77.0.1");
    ASSERT_EQ(router.command({"sh", "-c", "echo 1 > /proc/sys/net/ipv4/ip_forward"}), 0);
    host_.ip("route add 10.77.0.0/24 via 10.2.0.2");
    const NamespaceScope inside(host_);
    ASSERT_EQ(finder_.enumerate(5, &list_), OV_STATUS_OK);
    EXPECT_EQ(list_.deviceCount, 0U);
    _OV_CC_DEVICE_INFO_ live{};
    ASSERT_EQ(finder_.query(gigeRecord("10.77.0.5"), live), OV_STATUS_OK);
    EXPECT_EQ(live.macLow, 9U);
    EXPECT_EQ(live.transport.gige.hostInterface, address("10.2.0.1"));
    // Tied to an interface of this host: it keeps that one.
    ASSERT_EQ(finder_.query(gigeRecord("10.77.0.5", "10.1.0.1"), live), OV_STATUS_OK);
    EXPECT_EQ(live.transport.gige.hostInterface, address("10.1.0.1"));
    // Tied to an address that isn't ours: the route's.
    ASSERT_EQ(finder_.query(gigeRecord("10.77.0.5", "10.99.0.1"), live), OV_STATUS_OK);
    EXPECT_EQ(live.transport.gige.hostInterface, address("10.2.0.1"));
    EXPECT_FALSE(finder_.accessible(&live, OV_ACCESS_EXCLUSIVE)); // it has no such register
    // Asked one by one it is listed as well, but no broadcast gets there to give it another address.
    const DiscoverySettings before = discoverySettings();
    setDiscoverySettings(parseDiscoverySettings("", "10.77.0.5"));
    ASSERT_EQ(finder_.enumerate(5, &list_), OV_STATUS_OK);
    ASSERT_EQ(list_.deviceCount, 1U);
    EXPECT_EQ(list_.devices[0]->transport.gige.hostInterface, address("10.2.0.1"));
    EXPECT_EQ(forceIp(gigeRecord("10.77.0.5"), address("10.77.0.6")), OV_STATUS_NETWORK);
    setDiscoverySettings(before);
}

TEST_F(FinderTest, ACameraOfAForeignSubnetIsAskedByBroadcastOnItsInterface) {
    site_.add("172.31.5.5/24", identity(5, "172.31.5.5"));
    const NamespaceScope inside(host_);
    _OV_CC_DEVICE_INFO_ live{};
    ASSERT_EQ(finder_.query(gigeRecord("172.31.5.5", "10.1.0.1", 5), live), OV_STATUS_OK);
    EXPECT_EQ(live.transport.gige.currentIp, address("172.31.5.5"));
    EXPECT_EQ(live.transport.gige.hostInterface, address("10.1.0.1"));
}

TEST_F(FinderTest, ACameraThatMovedIsFoundByItsMac) {
    site_.add("10.1.0.9/24", identity(5, ""));
    const NamespaceScope inside(host_);
    _OV_CC_DEVICE_INFO_ live{};
    ASSERT_EQ(finder_.query(gigeRecord("10.1.0.5", "10.1.0.1", 5), live), OV_STATUS_OK);
    EXPECT_EQ(live.transport.gige.currentIp, address("10.1.0.9"));
}

TEST_F(FinderTest, AnotherCameraAtTheAddressIsWhatLivesThereNow) {
    site_.add("10.1.0.5/24", identity(6, ""));
    const NamespaceScope inside(host_);
    _OV_CC_DEVICE_INFO_ live{};
    ASSERT_EQ(finder_.query(gigeRecord("10.1.0.5", "0.0.0.0", 5), live), OV_STATUS_OK);
    EXPECT_EQ(live.macLow, 6U);
}

TEST_F(FinderTest, ACameraSilentToDiscoveryIsReadFromItsRegisters) {
    const ScriptedIdentity camera = identity(8, "192.168.200.200"); // as behind an address translation
    const auto obedient = ScriptedCamera::obedient(camera, {}, {{0, test::discoveryPayload(camera)}});
    site_.add("10.1.0.5/24", [=](const Bytes& request) {
        return word16(request, 2) == 2 ? std::vector<Bytes>() : obedient(request);
    });
    const NamespaceScope inside(host_);
    _OV_CC_DEVICE_INFO_ live{};
    ASSERT_EQ(finder_.query(gigeRecord("10.1.0.5"), live), OV_STATUS_OK);
    EXPECT_EQ(live.macLow, 8U);
    EXPECT_EQ(live.transport.gige.currentIp, address("10.1.0.5"));
    EXPECT_EQ(live.transport.gige.hostInterface, address("10.1.0.1"));
}

TEST_F(FinderTest, AnAddressWhereNobodyLivesIsANetworkErrorInBoundedTime) {
    const NamespaceScope inside(host_);
    _OV_CC_DEVICE_INFO_ live{};
    live.macLow = 0x1234;
    for (const char* ip : {"10.1.0.99", "203.0.113.5", "127.0.0.99"}) {
        const auto start = heldUp_.mark();
        EXPECT_EQ(finder_.query(gigeRecord(ip), live), OV_STATUS_NETWORK) << ip;
        EXPECT_LT(heldUp_.tookSince(start), 1500);
    }
    EXPECT_EQ(live.macLow, 0x1234U);
}

TEST_F(FinderTest, AccessIsThePrivilegeRegistersAnswer) {
    const struct {
        std::uint32_t privilege;
        bool accessible;
    } table[] = {{0, true}, {1, false}, {2, false}, {3, false}, {6, false}, {4, true}};
    int last = 10;
    for (const auto& row : table) {
        const std::string ip = "10.1.0." + std::to_string(last++);
        site_.add(ip + "/24", ScriptedCamera::obedient(identity(1, ip), {{0xA00, row.privilege}}));
        const NamespaceScope inside(host_);
        for (const char* hostInterface : {"0.0.0.0", "10.1.0.1", "10.99.0.1"}) {
            const auto record = gigeRecord(ip, hostInterface);
            EXPECT_EQ(finder_.accessible(&record, OV_ACCESS_EXCLUSIVE), row.accessible) << row.privilege;
        }
        const auto record = gigeRecord(ip);
        EXPECT_FALSE(finder_.accessible(&record, 2));
    }
}

TEST_F(FinderTest, WhoRefusesTheRegisterOrDoesNotAnswerIsNotAccessible) {
    site_.add("10.1.0.5/24", [](const Bytes& request) -> std::vector<Bytes> {
        return {acknowledge(0x8006, 0x81, {}, word16(request, 6))};
    });
    const NamespaceScope inside(host_);
    for (const char* ip : {"10.1.0.5", "10.1.0.6", "0.0.0.0"}) {
        const auto record = gigeRecord(ip);
        EXPECT_FALSE(finder_.accessible(&record, OV_ACCESS_EXCLUSIVE)) << ip;
    }
}

TEST_F(FinderTest, UsbDevicesAreAskedBySerialNumberOrGuid) {
    bus_.cameras.emplace_back();
    auto& second = bus_.cameras.emplace_back();
    second.device.address = 4;
    second.strings[17] = "U-78";
    second.strings[11] = "ABCD00000002";
    second.claimable = false;
    _OV_CC_DEVICE_INFO_ known{};
    known.nTLayerType = OV_TLAYER_USB3;
    _OV_CC_DEVICE_INFO_ live{};
    EXPECT_EQ(finder_.query(known, live), OV_STATUS_PRECONDITION);
    std::strcpy(known.transport.usb3.serialNumber, "U-78");
    ASSERT_EQ(finder_.query(known, live), OV_STATUS_OK);
    EXPECT_EQ(live.transport.usb3.deviceNumber, 0x0204U);
    EXPECT_FALSE(finder_.accessible(&known, OV_ACCESS_EXCLUSIVE));
    std::memset(known.transport.usb3.serialNumber, 0, 64);
    std::strcpy(known.transport.usb3.deviceGuid, "ABCD00000001");
    ASSERT_EQ(finder_.query(known, live), OV_STATUS_OK);
    EXPECT_EQ(live.transport.usb3.deviceNumber, 0x0203U);
    EXPECT_TRUE(finder_.accessible(&known, OV_ACCESS_EXCLUSIVE));
    std::strcpy(known.transport.usb3.deviceGuid, "another");
    EXPECT_EQ(finder_.query(known, live), OV_STATUS_PRECONDITION);
    EXPECT_FALSE(finder_.accessible(&known, OV_ACCESS_EXCLUSIVE));
}

TEST_F(FinderTest, TheSystemsFinderWorksInANetworkOfItsOwn) {
    site_.add("10.1.0.5/24", identity(1, ""));
    const NamespaceScope inside(host_);
    ASSERT_EQ(enumerateDevices(5, &list_), OV_STATUS_OK);
    ASSERT_EQ(list_.deviceCount, 1U);
    _OV_CC_DEVICE_INFO_ live{};
    EXPECT_EQ(queryDeviceInfo(*list_.devices[0], live), OV_STATUS_OK);
    EXPECT_FALSE(isDeviceAccessible(list_.devices[0], OV_ACCESS_EXCLUSIVE));
    EXPECT_GE(finderStatistics().calls, 1U);
}

} // namespace
} // namespace kolt::cc
