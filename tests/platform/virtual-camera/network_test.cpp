// The camera on a network of its own: broadcasts, foreign subnets, and an address that really changes.
#include "Device/FeatureRegisters.h"
#include "Device/ModelTraits.h"
#include "VirtualCamera.h"
#include "arv_client.h"
#include "raw_client.h"
#include "support/ChildProcess.h"
#include "support/NetworkNamespace.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace kolt::test;
using vcam::Config;
using vcam::VirtualCamera;

// Host "host0" 192.168.77.1/24 at one end of a cable, the cameras' "cam0" without an address at the other.
class VirtualCameraOnANetwork : public testing::Test {
protected:
    VirtualCameraOnANetwork() {
        NetworkNamespace::cable(host, "host0", "192.168.77.1/24", field, "cam0", "");
    }
    ~VirtualCameraOnANetwork() override {
        field.call([this] { cameras.clear(); });
    }
    VirtualCamera& Add(const std::string& address, const std::string& mask,
                       vcam::Model model = vcam::Model::Colour) {
        Config config;
        config.interface = "cam0";
        config.address = address;
        config.mask = mask;
        config.gateway = "0.0.0.0";
        config.serial = "N" + std::to_string(cameras.size());
        config.sensorWidth = 320;
        config.sensorHeight = 240;
        config.rebootMs = 300;
        config.model = model;
        cameras.push_back(std::make_unique<VirtualCamera>(config));
        field.call([this] { cameras.back()->Start(); });
        return *cameras.back();
    }
    std::string AddressesOf(const NetworkNamespace& where, const std::string& interface) {
        const NamespaceScope scope(where);
        return run({"ip", "-4", "-o", "address", "show", "dev", interface}).output;
    }
    // What answers to one broadcast from the host, by serial number.
    std::map<std::string, Answer> Discover(uint8_t flags, size_t expected) {
        std::map<std::string, Answer> found;
        host.call([&] {
            RawClient client("255.255.255.255", "", "host0");
            client.Send(RawClient::Command(0x0002, {}, 9, flags));
            while (found.size() < expected) {
                const auto answer = client.Receive(milliseconds(3000));
                if (!answer)
                    return;
                found[reinterpret_cast<const char*>(answer->payload.data()) + 0xD8] = *answer;
            }
        });
        return found;
    }
    Answer Force(const Bytes& record, const std::string& address, const std::string& mask) {
        Answer answer;
        const std::vector<uint8_t> mac(record.begin() + 10, record.begin() + 16);
        host.call([&] {
            RawClient client("255.255.255.255", "", "host0");
            answer = client.Ask(0x0004, RawClient::ForceIp(mac, address, mask, "192.168.77.1"), 0x11);
        });
        return answer;
    }

    NetworkNamespace host, field;
    std::vector<std::unique_ptr<VirtualCamera>> cameras;
};

TEST_F(VirtualCameraOnANetwork, BroadcastFindsAllBehindOneInterface) {
    for (const char* address : {"192.168.77.20", "192.168.77.21", "192.168.77.22"})
        Add(address, "255.255.255.0");
    for (const uint8_t flags : {0x01, 0x11}) {
        const auto found = Discover(flags, 3);
        ASSERT_EQ(found.size(), 3u);
        EXPECT_EQ(found.at("N0").from, Ip("192.168.77.20"));
        EXPECT_EQ(found.at("N2").from, Ip("192.168.77.22"));
        EXPECT_EQ(Be32(found.at("N1").payload, 0x24), Ip("192.168.77.21"));
        EXPECT_EQ(Be32(found.at("N1").payload, 0x34), Ip("255.255.255.0"));
    }
    host.call([] { // the broadcast address of the subnet does as well
        RawClient client("192.168.77.255", "", "host0");
        EXPECT_EQ(client.Ask(0x0002, {}).status, kOk);
    });
}

// Neither side has a route to the other, yet they are on one wire. The answer comes by unicast, or by
// broadcast where the asker allows it.
TEST_F(VirtualCameraOnANetwork, CameraOfAForeignSubnetIsSeen) {
    Add("10.55.0.9", "255.255.0.0");
    for (const uint8_t flags : {0x01, 0x11}) {
        const auto found = Discover(flags, 1);
        ASSERT_EQ(found.size(), 1u) << "flags " << int(flags);
        EXPECT_EQ(found.at("N0").from, Ip("10.55.0.9"));
    }
}

TEST_F(VirtualCameraOnANetwork, ForceIpBringsAForeignCameraHome) {
    VirtualCamera& camera = Add("10.55.0.9", "255.255.0.0");
    VirtualCamera& other = Add("10.55.0.10", "255.255.0.0");
    EXPECT_NE(AddressesOf(field, "cam0").find("10.55.0.9/16"), std::string::npos);
    const auto found = Discover(0x11, 2);
    ASSERT_EQ(found.size(), 2u);

    const Answer answer = Force(found.at("N0").payload, "192.168.77.30", "255.255.255.0");
    EXPECT_EQ(answer.status, kOk);
    EXPECT_EQ(answer.code, 0x0005);
    EXPECT_EQ(camera.Address(), "192.168.77.30");
    EXPECT_EQ(other.Address(), "10.55.0.10");
    const std::string addresses = AddressesOf(field, "cam0");
    EXPECT_NE(addresses.find("192.168.77.30/24"), std::string::npos) << addresses;
    EXPECT_EQ(addresses.find("10.55.0.9/"), std::string::npos) << addresses;
    EXPECT_NE(addresses.find("10.55.0.10/16"), std::string::npos) << addresses;

    host.call([] { // and can be reached like any other: registers and stream
        RawClient client("192.168.77.30");
        EXPECT_EQ(client.Read(0x0024), Ip("192.168.77.30"));
        EXPECT_EQ(client.Read(0x0034), Ip("255.255.255.0"));
        EXPECT_EQ(client.Read(0x0044), Ip("192.168.77.1"));
        ArvClient arv("192.168.77.30", "192.168.77.1");
        arv.StartStream();
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(arv.Next().status, ARV_BUFFER_STATUS_SUCCESS);
        arv.StopStream();
    });
    field.call([this] { cameras.clear(); });
    EXPECT_EQ(AddressesOf(field, "cam0"), "") << "all that was added is taken away again";
}

TEST_F(VirtualCameraOnANetwork, ForceIpWithinTheSubnetMovesToo) {
    VirtualCamera& camera = Add("192.168.77.20", "255.255.255.0");
    const auto found = Discover(0x11, 1);
    EXPECT_EQ(Force(found.at("N0").payload, "192.168.77.21", "255.255.255.0").status, kOk);
    EXPECT_EQ(camera.Address(), "192.168.77.21");
    EXPECT_EQ(Force(found.at("N0").payload, "192.168.77.21", "255.255.0.0").status, kOk)
        << "another mask only";
    EXPECT_NE(AddressesOf(field, "cam0").find("192.168.77.21/16"), std::string::npos)
        << AddressesOf(field, "cam0");
    Add("192.168.77.25", "255.255.255.0");
    EXPECT_EQ(Force(found.at("N0").payload, "192.168.77.25", "255.255.255.0").status, 0x8FFF) << "taken";
    EXPECT_NE(AddressesOf(field, "cam0").find("192.168.77.25/24"), std::string::npos)
        << "by the other camera still";
    EXPECT_EQ(Force(found.at("N0").payload, "127.0.0.5", "255.0.0.0").status, kInvalidParameter);
    EXPECT_EQ(Force(found.at("N0").payload, "192.168.77.255", "255.255.255.0").status, kInvalidParameter);
    EXPECT_EQ(camera.Address(), "192.168.77.21");
}

// What a person does who gives a camera an address for good: configure it, reset it, find it there.
TEST_F(VirtualCameraOnANetwork, PersistentAddressIsTakenUpByAReset) {
    VirtualCamera& camera = Add("192.168.77.30", "255.255.255.0");
    host.call([&] {
        RawClient client("192.168.77.30");
        ASSERT_EQ(client.TakeControl(), kOk);
        ASSERT_EQ(client.Write(0x064C, Ip("192.168.77.31")), kOk);
        ASSERT_EQ(client.Write(0x065C, Ip("255.255.255.0")), kOk);
        ASSERT_EQ(client.Write(0x0014, 1), kOk);
        ASSERT_EQ(client.Write(vcam::feature::kDeviceReset, 1), kOk);
        RawClient moved("192.168.77.31");
        ASSERT_TRUE(Eventually([&] { return moved.Ask(0x0002, {}, 0x11, milliseconds(100)).Came(); }));
        EXPECT_EQ(moved.Read(0x0024), Ip("192.168.77.31"));
    });
    EXPECT_EQ(camera.Address(), "192.168.77.31");
    const std::string addresses = AddressesOf(field, "cam0");
    EXPECT_NE(addresses.find("192.168.77.31/24"), std::string::npos) << addresses;
    EXPECT_EQ(addresses.find("192.168.77.30"), std::string::npos) << addresses;
}

TEST_F(VirtualCameraOnANetwork, AnAddressThatWasThereBeforeStays) {
    field.ip("address add 192.168.77.40/24 broadcast + dev cam0");
    Add("192.168.77.40", "");
    const auto found = Discover(0x01, 1);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(Force(found.at("N0").payload, "192.168.77.41", "255.255.255.0").status, kOk);
    EXPECT_EQ(AddressesOf(field, "cam0").find("192.168.77.40/24"), std::string::npos)
        << "the camera has moved";
    EXPECT_EQ(Force(found.at("N0").payload, "192.168.77.42", "255.255.255.0").status, kOk);
    field.call([this] { cameras.clear(); });
    EXPECT_EQ(AddressesOf(field, "cam0").find("192.168.77.42/24"), std::string::npos);
    EXPECT_NE(AddressesOf(field, "cam0").find("192.168.77.40/24"), std::string::npos);
}

TEST_F(VirtualCameraOnANetwork, AravisToolListsReadsAndWrites) {
    Add("192.168.77.20", "255.255.255.0");
    Add("192.168.77.21", "255.255.255.0");
    const NamespaceScope scope(host);
    const Finished list = run({"arv-tool-0.8"});
    EXPECT_EQ(list.exitCode, 0);
    EXPECT_NE(list.output.find("KOLT-KV-2000C-N0 (192.168.77.20)"), std::string::npos) << list.output;
    EXPECT_NE(list.output.find("KOLT-KV-2000C-N1 (192.168.77.21)"), std::string::npos) << list.output;
    const Finished control =
        run({"arv-tool-0.8", "-n", "KOLT-N1", "control", "DeviceSerialNumber", "Width=160", "Width",
             "PixelFormat=RGB8Packed", "PayloadSize", "ExposureTime=2500.5", "ExposureTime", "R[0x0024]"});
    EXPECT_EQ(control.exitCode, 0);
    for (const char* line : {"DeviceSerialNumber = N1", "Width = 160", "PixelFormat = RGB8Packed",
                             "PayloadSize = 115200", "ExposureTime = 2500.5", "0xc0a84d15"})
        EXPECT_NE(control.output.find(line), std::string::npos) << line << " in\n" << control.output;
    const Finished features = run({"arv-tool-0.8", "-a", "192.168.77.20", "features"});
    EXPECT_NE(features.output.find("AcquisitionFrameRate"), std::string::npos) << features.output;
    const Finished values = run({"arv-tool-0.8", "-a", "192.168.77.20", "values"});
    EXPECT_NE(values.output.find("'HeightMax' = 240"), std::string::npos) << values.output;
    const Finished xml = run({"arv-tool-0.8", "-a", "192.168.77.20", "genicam"});
    EXPECT_NE(xml.output.find("</RegisterDescription>"), std::string::npos);
    const Finished network = run({"arv-tool-0.8", "-a", "192.168.77.20", "network", "mode"});
    EXPECT_NE(network.output.find("Mode: DHCP"), std::string::npos) << network.output;
}

TEST_F(VirtualCameraOnANetwork, AravisToolReadsEveryModel) {
    for (const vcam::ModelTraits& traits : vcam::kModels) {
        const std::string address = "192.168.77." + std::to_string(40 + static_cast<int>(traits.model));
        Add(address, "255.255.255.0", traits.model);
        const NamespaceScope scope(host);
        for (const char* what : {"features", "values"}) {
            const Finished list = run({"arv-tool-0.8", "-a", address, what});
            EXPECT_EQ(list.exitCode, 0) << traits.option;
            EXPECT_NE(list.output.find("Width"), std::string::npos) << traits.option;
            EXPECT_EQ(list.output.find("CRITICAL"), std::string::npos) << list.output;
            EXPECT_EQ(list.output.find("WARNING"), std::string::npos) << list.output;
            EXPECT_EQ(list.output.find("rror:"), std::string::npos) << list.output;
        }
        const Finished type = run({"arv-tool-0.8", "-a", address, "control", "DeviceScanType"});
        EXPECT_NE(type.output.find(traits.lineScan ? "Linescan" : "Areascan"), std::string::npos)
            << type.output;
    }
}

} // namespace
