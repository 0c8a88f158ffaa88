// Finding, asking and moving real cameras: the virtual ones, which share no code with the finder.
#include <chrono>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <thread>

#include "VirtualCamera.h"
#include "find/DeviceFinder.h"
#include "find/GvcpClient.h"
#include "find/Ipv4.h"
#include "find/XmlFetch.h"
#include "support/NetworkNamespace.h"

namespace kolt::cc {
namespace {

using std::chrono::milliseconds;
using test::NamespaceScope;
using test::NetworkNamespace;

std::uint32_t address(const std::string& text) {
    return parseIpv4(text).value_or(0);
}

vcam::Config config(const std::string& ip, const std::string& serial, const std::string& interface = "") {
    vcam::Config result;
    result.address = ip;
    result.serial = serial;
    result.interface = interface;
    return result;
}

// A camera started in a network.
std::unique_ptr<vcam::VirtualCamera> startIn(const NetworkNamespace& network, const vcam::Config& settings) {
    const NamespaceScope inside(network);
    auto camera = std::make_unique<vcam::VirtualCamera>(settings);
    camera->Start();
    return camera;
}

_OV_CC_DEVICE_INFO_ bareRecord(const std::string& ip) {
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.transport.gige.currentIp = address(ip);
    return record;
}

// What is seen from a network, by serial number.
std::map<std::string, _OV_CC_DEVICE_INFO_> seenFrom(const NetworkNamespace& network) {
    const NamespaceScope inside(network);
    _OV_CC_DEVICE_INFO_LIST_ list{};
    EXPECT_EQ(enumerateDevices(5, &list), OV_STATUS_OK);
    std::map<std::string, _OV_CC_DEVICE_INFO_> seen;
    for (std::uint32_t i = 0; i < list.deviceCount; ++i)
        seen.emplace(list.devices[i]->transport.gige.serialNumber, *list.devices[i]);
    EXPECT_EQ(seen.size(), list.deviceCount);
    return seen;
}

class VirtualCameras : public testing::Test {
protected:
    void SetUp() override {
        NetworkNamespace::cable(host_, "ka0", "10.1.0.1/24", site_, "kb0", "10.1.0.2/24");
    }

    NetworkNamespace host_;
    NetworkNamespace site_;
};

TEST_F(VirtualCameras, AreListedWithAllTheyTell) {
    vcam::Config settings = config("10.1.0.5", "VC-5", "kb0");
    settings.mac = {0x02, 0x11, 0x22, 0x33, 0x44, 0x55};
    settings.userName = "above the belt";
    settings.gateway = "10.1.0.254";
    settings.modelName = "Model X";
    settings.manufacturerInfo = "hello";
    const auto camera = startIn(site_, settings);
    const auto seen = seenFrom(host_);
    ASSERT_EQ(seen.size(), 1U);
    const _OV_CC_DEVICE_INFO_& record = seen.at("VC-5");
    EXPECT_EQ(record.macHigh, 0x0211U);
    EXPECT_EQ(record.macLow, 0x22334455U);
    const auto& gige = record.transport.gige;
    EXPECT_EQ(gige.currentIp, address("10.1.0.5"));
    EXPECT_EQ(gige.currentSubnetMask, address("255.255.255.0"));
    EXPECT_EQ(gige.defaultGateway, address("10.1.0.254"));
    EXPECT_EQ(gige.hostInterface, address("10.1.0.1"));
    EXPECT_STREQ(gige.manufacturerName, "KOLT");
    EXPECT_STREQ(gige.modelName, "Model X");
    EXPECT_STREQ(gige.deviceVersion, "1.0.0");
    EXPECT_STREQ(gige.manufacturerInfo, "hello");
    EXPECT_STREQ(gige.userDefinedName, "above the belt");
    EXPECT_NE(gige.ipConfigOptions, 0U);
    EXPECT_NE(gige.ipConfigCurrent, 0U);
}

TEST_F(VirtualCameras, OnLoopbackAndOnTheHostsOwnCardAreListed) {
    const auto first = startIn(host_, config("127.0.0.1", "L1"));
    const auto second = startIn(host_, config("127.0.0.9", "L9"));
    const auto own = startIn(host_, config("10.1.0.1", "OWN"));
    const auto seen = seenFrom(host_);
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_EQ(seen.at("L1").transport.gige.hostInterface, address("127.0.0.1"));
    EXPECT_EQ(seen.at("L9").transport.gige.currentIp, address("127.0.0.9"));
    EXPECT_EQ(seen.at("OWN").transport.gige.hostInterface, address("10.1.0.1"));
}

TEST_F(VirtualCameras, OfAForeignSubnetAreListed) {
    vcam::Config settings = config("172.30.0.5", "FAR", "kb0");
    settings.mask = "255.255.0.0";
    const auto camera = startIn(site_, settings);
    const auto seen = seenFrom(host_);
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen.at("FAR").transport.gige.hostInterface, address("10.1.0.1"));
}

TEST_F(VirtualCameras, AreAccessibleUntilSomebodyHoldsThem) {
    const auto camera = startIn(site_, config("10.1.0.5", "VC", "kb0"));
    const auto record = bareRecord("10.1.0.5");
    const NamespaceScope inside(host_);
    EXPECT_TRUE(isDeviceAccessible(&record, OV_ACCESS_EXCLUSIVE));
    GvcpPeer peer;
    peer.ip = address("10.1.0.5");
    GvcpClient holder(peer);
    ASSERT_EQ(holder.writeRegister(gvcp::kControlChannelPrivilege, gvcp::kExclusiveAccess), OV_STATUS_OK);
    EXPECT_FALSE(isDeviceAccessible(&record, OV_ACCESS_EXCLUSIVE));
    // Whoever holds it, it still tells who it is.
    _OV_CC_DEVICE_INFO_ live{};
    EXPECT_EQ(queryDeviceInfo(record, live), OV_STATUS_OK);
    EXPECT_STREQ(live.transport.gige.serialNumber, "VC");
    ASSERT_EQ(holder.writeRegister(gvcp::kControlChannelPrivilege, 0), OV_STATUS_OK);
    EXPECT_TRUE(isDeviceAccessible(&record, OV_ACCESS_EXCLUSIVE));
}

TEST_F(VirtualCameras, ThatFallSilentAreNetworkErrors) {
    const auto camera = startIn(site_, config("10.1.0.5", "VC", "kb0"));
    vcam::Faults silent;
    silent.silent = true;
    camera->SetFaults(silent);
    EXPECT_TRUE(seenFrom(host_).empty());
    const auto record = bareRecord("10.1.0.5");
    const NamespaceScope inside(host_);
    _OV_CC_DEVICE_INFO_ live{};
    EXPECT_EQ(queryDeviceInfo(record, live), OV_STATUS_NETWORK);
    EXPECT_FALSE(isDeviceAccessible(&record, OV_ACCESS_EXCLUSIVE));
}

TEST_F(VirtualCameras, ThatAnswerSlowlyAskForPatienceAndGetIt) {
    const auto camera = startIn(site_, config("10.1.0.5", "VC", "kb0"));
    vcam::Faults slow;
    slow.answerDelayMs = 700;
    camera->SetFaults(slow);
    const auto record = bareRecord("10.1.0.5");
    const NamespaceScope inside(host_);
    EXPECT_TRUE(isDeviceAccessible(&record, OV_ACCESS_EXCLUSIVE));
    EXPECT_GE(camera->GetCounters().pendingAnswers, 1U);
}

TEST_F(VirtualCameras, TakeANewAddress) {
    vcam::Config settings = config("169.254.8.8", "VC", "kb0");
    settings.mask = "255.255.0.0";
    const auto camera = startIn(site_, settings);
    const auto other = startIn(site_, config("10.1.0.6", "OTHER", "kb0"));
    const auto before = seenFrom(host_);
    ASSERT_EQ(before.size(), 2U);
    {
        const NamespaceScope inside(host_);
        EXPECT_EQ(forceIp(before.at("VC"), address("10.1.0.6")), OV_STATUS_IP_CONFLICT);
        EXPECT_EQ(forceIp(before.at("VC"), address("10.1.0.7")), OV_STATUS_OK);
    }
    EXPECT_EQ(camera->Address(), "10.1.0.7");
    EXPECT_EQ(camera->GetCounters().forcedAddresses, 1U);
    EXPECT_EQ(other->GetCounters().forcedAddresses, 0U);
    const auto after = seenFrom(host_);
    ASSERT_EQ(after.size(), 2U);
    EXPECT_EQ(after.at("VC").transport.gige.currentIp, address("10.1.0.7"));
    EXPECT_EQ(after.at("VC").macLow, before.at("VC").macLow);
}

TEST_F(VirtualCameras, OnLoopbackTakeANewAddress) {
    const auto camera = startIn(host_, config("127.0.0.2", "VC"));
    const auto other = startIn(host_, config("127.0.0.3", "OTHER"));
    const auto before = seenFrom(host_);
    ASSERT_EQ(before.size(), 2U);
    {
        const NamespaceScope inside(host_);
        EXPECT_EQ(forceIp(before.at("VC"), address("127.0.0.3")), OV_STATUS_IP_CONFLICT);
        EXPECT_EQ(forceIp(before.at("VC"), address("10.1.0.9")), OV_STATUS_INVALID_PARAMETER);
        EXPECT_EQ(forceIp(before.at("VC"), address("127.0.5.5")), OV_STATUS_OK);
    }
    EXPECT_EQ(camera->Address(), "127.0.5.5");
}

TEST_F(VirtualCameras, ThatSomebodyHoldsKeepTheirAddress) {
    const auto camera = startIn(site_, config("10.1.0.5", "VC", "kb0"));
    const auto record = seenFrom(host_).at("VC");
    const NamespaceScope inside(host_);
    GvcpPeer peer;
    peer.ip = address("10.1.0.5");
    GvcpClient holder(peer);
    ASSERT_EQ(holder.writeRegister(gvcp::kControlChannelPrivilege, gvcp::kControlAccess), OV_STATUS_OK);
    EXPECT_NE(forceIp(record, address("10.1.0.7")), OV_STATUS_OK);
    EXPECT_EQ(camera->Address(), "10.1.0.5");
}

struct XmlCase {
    const char* name;
    vcam::XmlFault fault;
    bool zipped;
    std::uint32_t status;
};

void PrintTo(const XmlCase& c, std::ostream* out) {
    *out << c.name;
}

class VirtualCameraXml : public testing::TestWithParam<XmlCase> {};

TEST_P(VirtualCameraXml, IsFetchedOrRefused) {
    const XmlCase& c = GetParam();
    const NetworkNamespace host;
    vcam::Config settings = config("127.0.0.1", "VC");
    settings.zippedXml = c.zipped;
    settings.faults.xml = c.fault;
    const auto camera = startIn(host, settings);
    const NamespaceScope inside(host);
    GvcpPeer peer;
    peer.ip = address("127.0.0.1");
    GvcpClient client(peer);
    std::vector<std::uint8_t> xml;
    const std::uint32_t status = fetchXml(
        [&](std::uint64_t at, std::uint8_t* destination, std::size_t length) {
            return client.readMemory(static_cast<std::uint32_t>(at), destination, length);
        },
        xml);
    EXPECT_EQ(status, c.status);
    if (c.fault == vcam::XmlFault::None) {
        EXPECT_EQ(std::string(xml.begin(), xml.end()), camera->Xml());
    }
    EXPECT_EQ(xml.empty(), c.status != OV_STATUS_OK);
}

// A truncated or cyclic XML is XML as far as this part can tell: the node map refuses it.
const XmlCase kXmlCases[] = {
    {"plain", vcam::XmlFault::None, false, OV_STATUS_OK},
    {"zipped", vcam::XmlFault::None, true, OV_STATUS_OK},
    {"truncated", vcam::XmlFault::Truncated, false, OV_STATUS_OK},
    {"truncated_and_zipped", vcam::XmlFault::Truncated, true, OV_STATUS_OK},
    {"no_xml", vcam::XmlFault::NotXml, false, OV_STATUS_PACKET},
    {"huge", vcam::XmlFault::Huge, false, OV_STATUS_OK},
    {"http", vcam::XmlFault::HttpLocation, false, OV_STATUS_NOT_SUPPORTED},
    {"damaged_archive", vcam::XmlFault::BadZip, false, OV_STATUS_PACKET},
    {"no_location", vcam::XmlFault::NoLocation, false, OV_STATUS_PACKET},
    {"longer_than_the_memory", vcam::XmlFault::TooLong, false, OV_STATUS_INVALID_ADDRESS},
    {"cyclic", vcam::XmlFault::Cyclic, false, OV_STATUS_OK},
};

INSTANTIATE_TEST_SUITE_P(Table, VirtualCameraXml, testing::ValuesIn(kXmlCases),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace kolt::cc
