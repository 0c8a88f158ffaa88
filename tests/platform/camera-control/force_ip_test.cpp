// Force IP: choice of mask and gateway, and the exchange with scripted cameras.
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <linux/neighbour.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include "CameraSite.h"
#include "find/DeviceFinder.h"
#include "find/ForceIp.h"
#include "find/Ipv4.h"
#include "find/Neighbours.h"

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
using test::word32;

std::uint32_t address(const std::string& text) {
    return parseIpv4(text).value_or(0);
}

struct NetworkCase {
    const char* name;
    const char* ip;
    const char* cameraMask;
    const char* cameraGateway;
    const char* hostGateway;
    const char* mask;
    const char* gateway;
};

void PrintTo(const NetworkCase& c, std::ostream* out) {
    *out << c.name;
}

class NetworkFor : public testing::TestWithParam<NetworkCase> {};

// The host is 192.168.1.10/24.
TEST_P(NetworkFor, ANewAddress) {
    const NetworkCase& c = GetParam();
    HostInterface interface;
    interface.addresses = {{address("192.168.1.10"), address("255.255.255.0"), 0}};
    const Network network = networkFor(address(c.ip), {address(c.cameraMask), address(c.cameraGateway)},
                                       interface, address(c.hostGateway));
    EXPECT_EQ(toText(network.mask), c.mask);
    EXPECT_EQ(toText(network.gateway), c.gateway);
}

const NetworkCase kNetworks[] = {
    {"all_of_the_cameras", "192.168.1.50", "255.255.255.0", "192.168.1.1", "192.168.1.2", "255.255.255.0",
     "192.168.1.1"},
    {"wider_mask_that_holds_the_host", "192.168.1.50", "255.255.0.0", "0.0.0.0", "0.0.0.0", "255.255.0.0",
     "0.0.0.0"},
    {"mask_that_leaves_the_host_out", "192.168.1.50", "255.255.255.240", "192.168.1.49", "0.0.0.0",
     "255.255.255.0", "192.168.1.49"},
    {"no_mask", "192.168.1.50", "0.0.0.0", "0.0.0.0", "0.0.0.0", "255.255.255.0", "0.0.0.0"},
    {"mask_with_holes", "192.168.1.50", "255.0.255.0", "0.0.0.0", "0.0.0.0", "255.255.255.0", "0.0.0.0"},
    {"gateway_of_the_old_subnet", "192.168.1.50", "255.255.255.0", "169.254.0.1", "0.0.0.0", "255.255.255.0",
     "0.0.0.0"},
    {"gateway_of_the_host_instead", "192.168.1.50", "255.255.255.0", "169.254.0.1", "192.168.1.2",
     "255.255.255.0", "192.168.1.2"},
    {"no_gateway_the_hosts_instead", "192.168.1.50", "255.255.255.0", "0.0.0.0", "192.168.1.2",
     "255.255.255.0", "192.168.1.2"},
    {"gateway_is_the_new_address", "192.168.1.1", "255.255.255.0", "192.168.1.1", "0.0.0.0", "255.255.255.0",
     "0.0.0.0"},
    {"the_networks_own_address", "192.168.4.0", "255.255.255.0", "0.0.0.0", "0.0.0.0", "255.255.255.0",
     "0.0.0.0"},
    {"broadcast_under_the_cameras_mask", "10.7.255.255", "255.255.0.0", "0.0.0.0", "0.0.0.0", "255.255.255.0",
     "0.0.0.0"},
    {"a_foreign_subnet", "10.7.1.2", "255.0.0.0", "10.0.0.1", "192.168.1.2", "255.0.0.0", "10.0.0.1"},
    {"a_subnet_of_two", "192.168.1.11", "255.255.255.254", "0.0.0.0", "0.0.0.0", "255.255.255.254",
     "0.0.0.0"},
};

INSTANTIATE_TEST_SUITE_P(Table, NetworkFor, testing::ValuesIn(kNetworks),
                         [](const auto& row) { return row.param.name; });

TEST(DefaultGateway, IsReadFromTheKernelsTable) {
    const std::string table = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\n"
                              "ka0\t0000010A\t00000000\t0001\t0\t0\t0\t00FFFFFF\n"
                              "ka1\t00000000\t0101A8C0\t0003\t0\t0\t0\t00000000\n"
                              "ka0\t00000000\tFE00010A\t0003\t0\t0\t0\t00000000\n"
                              "broken\n";
    EXPECT_EQ(defaultGatewayFrom(table, "ka0"), address("10.1.0.254"));
    EXPECT_EQ(defaultGatewayFrom(table, "ka1"), address("192.168.1.1"));
    EXPECT_EQ(defaultGatewayFrom(table, "ka2"), 0U);
    EXPECT_EQ(defaultGatewayFrom("", "ka0"), 0U);
    const NetworkNamespace host;
    const CameraSite site(host, "ka0", "10.1.0.1/24");
    host.ip("route add default via 10.1.0.254");
    host.call([] { EXPECT_EQ(defaultGateway("ka0"), address("10.1.0.254")); });
}

// A camera that takes a new address as real ones do: its card gets it, then it answers from there.
class MovableCamera {
public:
    MovableCamera(std::uint64_t mac, std::string ip, std::string card)
        : mac_(mac), ip_(std::move(ip)), card_(std::move(card)) {}

    ScriptedCamera::Script script() {
        return [this](const Bytes& request) -> std::vector<Bytes> {
            const std::uint16_t id = word16(request, 6);
            if (word16(request, 2) != 4) {
                ScriptedIdentity identity;
                identity.mac = mac_;
                identity.ip = ip_;
                identity.mask = toText(mask_);
                identity.gateway = toText(gateway_);
                return ScriptedCamera::obedient(identity)(request);
            }
            const std::uint64_t mac =
                (static_cast<std::uint64_t>(word16(request, 10)) << 32) | word32(request, 12);
            if (mac != mac_)
                return {};
            ++forced;
            if (refusal != 0)
                return {acknowledge(refusal, 5, {}, id)};
            if (ignore)
                return {};
            ip_ = toText(word32(request, 28));
            mask_ = word32(request, 44);
            gateway_ = word32(request, 60);
            const std::string commands =
                "ip address flush dev " + card_ + "; ip address add " + ip_ + "/24 broadcast + dev " + card_;
            EXPECT_EQ(std::system(commands.c_str()), 0);
            return mute ? std::vector<Bytes>() : std::vector<Bytes>{acknowledge(0, 5, {}, id)};
        };
    }

    std::atomic<int> forced{0};
    std::atomic<std::uint16_t> refusal{0};
    std::atomic<bool> ignore{false}; // hears it and does nothing
    std::atomic<bool> mute{false};   // does it and doesn't answer
    std::atomic<std::uint32_t> mask_{0xFFFFFF00U};
    std::atomic<std::uint32_t> gateway_{0};

private:
    std::uint64_t mac_;
    std::string ip_;
    std::string card_;
};

_OV_CC_DEVICE_INFO_ recordOf(std::uint64_t mac, const std::string& ip, const std::string& hostInterface) {
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.macHigh = static_cast<std::uint32_t>(mac >> 32);
    record.macLow = static_cast<std::uint32_t>(mac);
    record.transport.gige.currentIp = address(ip);
    record.transport.gige.currentSubnetMask = 0xFFFFFF00U;
    record.transport.gige.hostInterface = address(hostInterface);
    return record;
}

class ForceIpTest : public testing::Test {
protected:
    NetworkNamespace host_;
    CameraSite site_{host_, "ka0", "10.1.0.1/24"};
    MovableCamera camera_{0x0A0B0C0D0E0F, "169.254.3.3", "mv0"};
    ForceIpTiming quick_{milliseconds(100), 2, milliseconds(1000)};

    std::uint32_t force(const std::string& ip, const std::string& hostInterface = "10.1.0.1") {
        const NamespaceScope inside(host_);
        return forceIpOfCamera(recordOf(0x0A0B0C0D0E0F, "169.254.3.3", hostInterface), address(ip), quick_);
    }
};

TEST_F(ForceIpTest, ACameraOfAForeignSubnetGetsTheAddress) {
    camera_.mask_ = 0xFFFF0000U;
    camera_.gateway_ = address("169.254.0.1");
    site_.add("169.254.3.3/16", camera_.script());
    EXPECT_EQ(force("10.1.0.50"), OV_STATUS_OK);
    EXPECT_EQ(camera_.forced, 1);
    EXPECT_EQ(toText(camera_.mask_), "255.255.0.0"); // its own: it holds the host
    EXPECT_EQ(camera_.gateway_, 0U);                 // its own is of no use there
    const NamespaceScope inside(host_);
    _OV_CC_DEVICE_INFO_ live{};
    EXPECT_EQ(queryDeviceInfo(recordOf(0, "10.1.0.50", "0.0.0.0"), live), OV_STATUS_OK);
    EXPECT_EQ(live.macHigh, 0x0A0BU);
    EXPECT_EQ(live.macLow, 0x0C0D0E0FU);
}

TEST_F(ForceIpTest, OnlyTheCameraMeantAndOnlyItsInterfaceAreTold) {
    site_.add("169.254.3.3/16", camera_.script());
    MovableCamera other(0x0A0B0C0D0E10, "169.254.3.4", "mv1");
    site_.add("169.254.3.4/16", other.script());
    CameraSite elsewhere(host_, "ka1", "10.2.0.1/24");
    MovableCamera twin(0x0A0B0C0D0E0F, "10.2.0.5", "mv0"); // the same camera's other socket
    ScriptedCamera& twinPeer = elsewhere.add("10.2.0.5/24", twin.script());
    EXPECT_EQ(force("10.1.0.50"), OV_STATUS_OK);
    EXPECT_EQ(camera_.forced, 1);
    EXPECT_EQ(other.forced, 0);
    EXPECT_EQ(twin.forced, 0);
    EXPECT_EQ(twinPeer.received(4), 0U);
}

TEST_F(ForceIpTest, ARecordWithoutMacIsFoundByItsAddress) {
    site_.add("169.254.3.3/16", camera_.script());
    const NamespaceScope inside(host_);
    EXPECT_EQ(forceIpOfCamera(recordOf(0, "169.254.3.3", "0.0.0.0"), address("10.1.0.51"), quick_),
              OV_STATUS_OK);
    EXPECT_EQ(camera_.forced, 1);
}

TEST_F(ForceIpTest, AnotherCameraAtTheAddressIsAConflict) {
    site_.add("169.254.3.3/16", camera_.script());
    site_.add("10.1.0.50/24", ScriptedIdentity{});
    EXPECT_EQ(force("10.1.0.50"), OV_STATUS_IP_CONFLICT);
    EXPECT_EQ(camera_.forced, 0);
}

TEST_F(ForceIpTest, AnyOtherHostAtTheAddressIsAConflict) {
    site_.add("169.254.3.3/16", camera_.script());
    site_.addHost("10.1.0.60/24");
    EXPECT_EQ(force("10.1.0.60"), OV_STATUS_IP_CONFLICT);
    EXPECT_EQ(camera_.forced, 0);
}

TEST_F(ForceIpTest, SignsOfLifeAreSeenAndTheCamerasOwnIsNone) {
    site_.addHost("10.1.0.60/24");
    const NamespaceScope inside(host_);
    std::vector<HostInterface> interfaces;
    ASSERT_EQ(listHostInterfaces(interfaces), 0);
    const HostInterface* card = findInterface(interfaces, address("10.1.0.1"));
    ASSERT_NE(card, nullptr);
    EXPECT_FALSE(knownNeighbour(card->index, address("10.1.0.60")).has_value());
    EXPECT_TRUE(somebodyAnswersAt(*card, address("10.1.0.60"), 1, milliseconds(2000)));
    const auto computer = knownNeighbour(card->index, address("10.1.0.60"));
    ASSERT_TRUE(computer.has_value());
    EXPECT_FALSE(somebodyAnswersAt(*card, address("10.1.0.60"), computer->mac, milliseconds(2000)));
    EXPECT_FALSE(somebodyAnswersAt(*card, address("10.1.0.61"), 1, milliseconds(50)));
    // A camera there speaks for itself.
    ScriptedIdentity camera;
    camera.ip = "10.1.0.70";
    site_.add("10.1.0.70/24", ScriptedCamera::obedient(camera));
    EXPECT_TRUE(somebodyAnswersAt(*card, address("10.1.0.70"), 1, milliseconds(2000)));
    EXPECT_FALSE(somebodyAnswersAt(*card, address("172.16.0.61"), 1, milliseconds(2000)));
}

// One RTM_NEWNEIGH message as the kernel writes it.
Bytes neighbourMessage(int interfaceIndex, std::uint16_t state, const std::string& ip, const Bytes& mac) {
    Bytes bytes(sizeof(nlmsghdr) + sizeof(ndmsg));
    const auto attribute = [&](std::uint16_t type, const Bytes& value) {
        const rtattr header{static_cast<unsigned short>(sizeof(rtattr) + value.size()), type};
        const std::size_t at = bytes.size();
        bytes.resize(at + sizeof header + ((value.size() + 3) & ~std::size_t{3}));
        std::memcpy(&bytes[at], &header, sizeof header);
        std::copy(value.begin(), value.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(at + sizeof header));
    };
    Bytes destination;
    test::append32(destination, address(ip));
    attribute(NDA_DST, destination);
    attribute(NDA_LLADDR, mac);
    nlmsghdr header{};
    header.nlmsg_type = RTM_NEWNEIGH;
    header.nlmsg_len = static_cast<std::uint32_t>(bytes.size());
    ndmsg body{};
    body.ndm_family = AF_INET;
    body.ndm_ifindex = interfaceIndex;
    body.ndm_state = state;
    std::memcpy(bytes.data(), &header, sizeof header);
    std::memcpy(&bytes[sizeof header], &body, sizeof body);
    return bytes;
}

TEST(Neighbours, TheKernelsAnswerIsReadForOneInterfaceAndAddress) {
    Bytes dump;
    const auto add = [&](const Bytes& message) { dump.insert(dump.end(), message.begin(), message.end()); };
    add(neighbourMessage(3, NUD_REACHABLE, "10.1.0.60", {1, 1, 1, 1, 1, 1}));
    add(neighbourMessage(2, NUD_STALE, "10.1.0.61", {2, 2, 2, 2, 2, 2}));
    add(neighbourMessage(2, NUD_REACHABLE, "10.1.0.60", {0, 1, 2, 3, 4, 5}));
    add(neighbourMessage(2, NUD_REACHABLE, "10.1.0.62", {}));
    add(neighbourMessage(2, NUD_FAILED, "10.1.0.64", {3, 3, 3, 3, 3, 3}));
    const auto ask = [&](std::size_t length, const char* ip) {
        return parseNeighbours(dump.data(), length, 2, address(ip));
    };
    const auto confirmed = ask(dump.size(), "10.1.0.60");
    ASSERT_TRUE(confirmed.has_value());
    EXPECT_EQ(confirmed->mac, 0x000102030405U);
    EXPECT_TRUE(confirmed->confirmed);
    const auto remembered = ask(dump.size(), "10.1.0.61");
    ASSERT_TRUE(remembered.has_value());
    EXPECT_EQ(remembered->mac, 0x020202020202U);
    EXPECT_FALSE(remembered->confirmed);
    EXPECT_FALSE(ask(dump.size(), "10.1.0.62").has_value());
    EXPECT_FALSE(ask(dump.size(), "10.1.0.63").has_value());
    EXPECT_FALSE(ask(dump.size(), "10.1.0.64").has_value());
    // Cut anywhere, it is read as far as it goes.
    for (std::size_t length = 0; length <= dump.size(); ++length) {
        const Bytes part(dump.begin(), dump.begin() + static_cast<std::ptrdiff_t>(length));
        const auto found = parseNeighbours(part.data(), part.size(), 2, address("10.1.0.60"));
        EXPECT_TRUE(!found || found->mac == 0x000102030405U);
    }
}

TEST_F(ForceIpTest, TheHostsOwnAddressIsAConflict) {
    site_.add("169.254.3.3/16", camera_.script());
    EXPECT_EQ(force("10.1.0.1"), OV_STATUS_IP_CONFLICT);
    EXPECT_EQ(camera_.forced, 0);
}

TEST_F(ForceIpTest, ItsOwnAddressIsNoConflict) {
    MovableCamera near(0x0A0B0C0D0E0F, "10.1.0.50", "mv0");
    site_.add("10.1.0.50/24", near.script());
    EXPECT_EQ(force("10.1.0.50"), OV_STATUS_OK);
    EXPECT_EQ(near.forced, 1);
}

TEST_F(ForceIpTest, ACameraThatIgnoresItIsANetworkError) {
    site_.add("169.254.3.3/16", camera_.script());
    camera_.ignore = true;
    EXPECT_EQ(force("10.1.0.50"), OV_STATUS_NETWORK);
    EXPECT_EQ(camera_.forced, 2);
}

TEST_F(ForceIpTest, ACameraThatMovesWithoutAWordIsFoundAtItsNewAddress) {
    site_.add("169.254.3.3/16", camera_.script());
    camera_.mute = true;
    EXPECT_EQ(force("10.1.0.50"), OV_STATUS_OK);
}

TEST_F(ForceIpTest, ARefusalIsItsStatus) {
    site_.add("169.254.3.3/16", camera_.script());
    camera_.refusal = 0x8006;
    EXPECT_EQ(force("10.1.0.50"), OV_STATUS_ACCESS_DENIED);
    EXPECT_EQ(camera_.forced, 1);
}

TEST_F(ForceIpTest, ACameraThatIsNotThereIsANetworkError) {
    EXPECT_EQ(force("10.1.0.50"), OV_STATUS_NETWORK);
    EXPECT_EQ(force("10.1.0.50", "10.99.0.1"), OV_STATUS_NETWORK);
}

TEST_F(ForceIpTest, BadArgumentsAreRefused) {
    for (const char* ip : {"0.0.0.0", "0.1.2.3", "224.0.0.1", "255.255.255.255"})
        EXPECT_EQ(force(ip), OV_STATUS_INVALID_PARAMETER) << ip;
    site_.add("169.254.3.3/16", camera_.script());
    EXPECT_EQ(force("127.0.0.5"), OV_STATUS_INVALID_PARAMETER);
    _OV_CC_DEVICE_INFO_ usb{};
    usb.nTLayerType = OV_TLAYER_USB3;
    EXPECT_EQ(forceIp(usb, address("10.1.0.50")), OV_STATUS_NOT_SUPPORTED);
}

} // namespace
} // namespace kolt::cc
