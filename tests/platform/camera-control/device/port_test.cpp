// The port object that a node map is connected to, and the packet size.
#include <array>
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/GCException.h"
#include "CameraRig.h"
#include "GenApi/GenApi.h"

namespace kolt::test {
namespace {

using GenICam_3_0::AccessException;
using GenICam_3_0::GenericException;
using GenICam_3_0::InvalidArgumentException;
using GenICam_3_0::OutOfRangeException;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int64_t kManufacturer = 0x48; // text of 32 bytes
constexpr std::int64_t kUserName = 0xE8;     // text of 16 bytes, may be written

class CameraPortTest : public testing::Test {
protected:
    CameraPortTest() : camera_(smallCamera()) { camera_.Start(); }
    void open() { ASSERT_EQ(handle().open(), OV_STATUS_OK); }
    Handle& handle() {
        if (!handle_) {
            handle_ = std::make_unique<Handle>(recordOf(camera_.Address()));
        }
        return *handle_;
    }
    GenApi_3_0::IPort& port() { return handle().port(); }
    Bytes read(std::int64_t address, std::size_t length) {
        Bytes bytes(length, 0xCD);
        port().Read(bytes.data(), address, static_cast<std::int64_t>(length));
        return bytes;
    }

    vcam::VirtualCamera camera_;
    std::unique_ptr<Handle> handle_;
};

TEST_F(CameraPortTest, ReadsAnyAddressAndLength) {
    open();
    EXPECT_EQ(port().GetAccessMode(), GenApi_3_0::RW);
    EXPECT_STREQ(reinterpret_cast<const char*>(read(kManufacturer, 32).data()), "KOLT");
    constexpr std::int64_t kUrls = 0x200; // two texts of 512 bytes
    const Bytes all = read(kUrls, 1024);  // in several pieces
    EXPECT_EQ(std::memcmp(all.data(), "Local:", 6), 0);
    for (const std::int64_t at : {0, 1, 2, 3, 4, 5, 450, 451}) {
        for (const std::size_t length : {1U, 2U, 3U, 4U, 5U, 8U, 17U, 535U, 536U, 537U}) {
            const Bytes part = read(kUrls + at, length);
            EXPECT_EQ(std::memcmp(part.data(), all.data() + at, length), 0) << at << ", " << length;
        }
    }
    EXPECT_NO_THROW(port().Read(nullptr, 0, 0));
}

TEST_F(CameraPortTest, WritesAnyAddressAndLengthAndNothingBeside) {
    open();
    const Bytes name{'n', 'o', 'r', 't', 'h', ' ', 'g', 'a', 't', 'e', 0, 0, 0, 0, 0, 0};
    port().Write(name.data(), kUserName, 16);
    EXPECT_EQ(read(kUserName, 16), name);
    port().Write("OR", kUserName + 1, 2);
    port().Write("G", kUserName + 6, 1);
    port().Write("TH G", kUserName + 3, 4);
    Bytes changed = name;
    std::memcpy(changed.data() + 1, "ORTH G", 6);
    EXPECT_EQ(read(kUserName, 16), changed);
    EXPECT_NO_THROW(port().Write(nullptr, kUserName, 0));
}

TEST_F(CameraPortTest, ThrowsByTheKindOfRefusal) {
    open();
    std::array<std::uint8_t, 16> bytes{};
    EXPECT_THROW(port().Read(bytes.data(), 0x7FFF'0000, 4), OutOfRangeException)
        << "the camera has no such address";
    EXPECT_THROW(port().Read(bytes.data(), 0x1'0000'0000, 4), OutOfRangeException) << "beyond 32 bits";
    EXPECT_THROW(port().Read(bytes.data(), 0xFFFF'FFFE, 4), OutOfRangeException);
    EXPECT_THROW(port().Write(bytes.data(), kManufacturer, 4), AccessException) << "read only";
    EXPECT_THROW(port().Read(nullptr, 0, 4), InvalidArgumentException);
    EXPECT_THROW(port().Read(bytes.data(), -4, 4), InvalidArgumentException);
    EXPECT_THROW(port().Write(bytes.data(), 0, -1), InvalidArgumentException);
    EXPECT_THROW(port().Read(bytes.data(), 0, std::int64_t{1} << 40), GenericException)
        << "no memory is taken for it";
    EXPECT_NO_THROW(port().Read(bytes.data(), 0, 16)) << "none of that hurts the connection";
}

TEST_F(CameraPortTest, ThrowsWhenClosedAndWorksAgainAfterTheNextOpening) {
    open();
    GenApi_3_0::IPort& kept = port();
    std::array<std::uint8_t, 4> bytes{};
    ASSERT_EQ(OV_CC_CloseDevice(handle()), OV_STATUS_OK);
    EXPECT_EQ(kept.GetAccessMode(), GenApi_3_0::NA);
    EXPECT_THROW(kept.Read(bytes.data(), 0, 4), AccessException);
    EXPECT_THROW(kept.Write(bytes.data(), kUserName, 4), AccessException);
    EXPECT_EQ(OV_CC_GetTlProxy(handle()), nullptr);
    open();
    EXPECT_NO_THROW(kept.Read(bytes.data(), 0, 4)) << "one port for all openings of a handle";
}

TEST_F(CameraPortTest, ThrowsAfterTheHandleIsDestroyed) {
    open();
    GenApi_3_0::IPort& kept = port();
    handle_.reset();
    std::array<std::uint8_t, 4> bytes{};
    EXPECT_THROW(kept.Read(bytes.data(), 0, 4), AccessException);
    EXPECT_EQ(kept.GetAccessMode(), GenApi_3_0::NA);
}

TEST_F(CameraPortTest, ServesManyThreadsWhileTheDeviceIsClosedUnderThem) {
    open();
    GenApi_3_0::IPort& kept = port();
    std::atomic<bool> stop{false};
    std::atomic<int> good{0};
    std::atomic<int> refused{0};
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 4; ++reader) {
        readers.emplace_back([&] {
            std::array<char, 32> name{};
            while (!stop) {
                try {
                    kept.Read(name.data(), kManufacturer, 32);
                    EXPECT_STREQ(name.data(), "KOLT");
                    ++good;
                } catch (const AccessException&) {
                    ++refused;
                    std::this_thread::yield();
                }
            }
        });
    }
    for (int round = 0; round < 5; ++round) {
        const int before = good;
        EXPECT_TRUE(eventually([&] { return good > before + 20; }));
        EXPECT_EQ(OV_CC_CloseDevice(handle()), OV_STATUS_OK);
        const int refusedBefore = refused;
        EXPECT_TRUE(eventually([&] { return refused > refusedBefore; }));
        ASSERT_EQ(handle().open(), OV_STATUS_OK);
    }
    stop = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
}

TEST_F(CameraPortTest, CarriesANodeMap) {
    open();
    std::uint32_t length = 0;
    OV_XML_GetGenICamXML(handle(), nullptr, 0, &length);
    std::string xml(length, '\0');
    ASSERT_EQ(OV_XML_GetGenICamXML(handle(), reinterpret_cast<std::uint8_t*>(xml.data()), length, &length),
              OV_STATUS_OK);
    GenApi_3_0::CNodeMapRef map("Device");
    map._LoadXMLFromString(xml.c_str());
    ASSERT_TRUE(map._Connect(&port(), "Device"));
    const GenApi_3_0::CIntegerPtr width = map._GetNode("Width");
    EXPECT_EQ(width->GetValue(), 320);
    width->SetValue(160);
    const GenApi_3_0::CIntegerPtr payload = map._GetNode("PayloadSize");
    EXPECT_EQ(payload->GetValue(), 160 * 240);
    ASSERT_EQ(OV_CC_CloseDevice(handle()), OV_STATUS_OK);
    EXPECT_THROW(width->SetValue(320), GenericException);
}

TEST_F(CameraPortTest, RefusedWritesAreToldAsSuch) {
    open();
    vcam::Faults faults;
    faults.refuseWrites = true;
    camera_.SetFaults(faults);
    // Feature registers refuse now: the start of the acquisition is one.
    EXPECT_EQ(OV_CC_StartGrabbing(handle()), OV_STATUS_WRITE_PROTECTED);
    EXPECT_EQ(fetch(handle(), 0).status, OV_STATUS_CALL_ORDER);
    EXPECT_EQ(OV_CC_StopGrabbing(handle()), OV_STATUS_CALL_ORDER);
    camera_.SetFaults({});
    EXPECT_EQ(OV_CC_StartGrabbing(handle()), OV_STATUS_OK);
    EXPECT_EQ(fetch(handle()).status, OV_STATUS_OK);
}

std::uint32_t packetSizeOf(vcam::VirtualCamera& camera) {
    std::uint32_t value = 0;
    EXPECT_TRUE(camera.ReadRegister(0x0D04, value));
    return value & 0xFFFF;
}

TEST(PacketSize, IsTheLargestThatArrivesAndTheSettingStays) {
    for (const std::uint32_t mtu : {0U, 9000U, 1500U}) {
        vcam::Config config = smallCamera();
        config.mtu = mtu;
        vcam::VirtualCamera camera(config);
        camera.Start();
        const Handle handle(recordOf(camera.Address()));
        ASSERT_EQ(handle.open(), OV_STATUS_OK);
        const std::uint32_t before = packetSizeOf(camera);
        const std::int32_t best = OV_CC_GetOptimalPacketSize(handle);
        if (mtu != 0) {
            EXPECT_LE(best, static_cast<std::int32_t>(mtu));
            EXPECT_GT(best, static_cast<std::int32_t>(mtu) * 9 / 10);
        } else {
            EXPECT_GT(best, 9000);
        }
        EXPECT_EQ(packetSizeOf(camera), before);
        std::uint32_t port = 1;
        EXPECT_TRUE(camera.ReadRegister(0x0D00, port));
        EXPECT_EQ(port, 0U) << "the channel points nowhere";
        EXPECT_GT(camera.GetCounters().testPackets, 0U);
        // And a stream works afterwards.
        ASSERT_EQ(OV_CC_StartGrabbing(handle), OV_STATUS_OK);
        EXPECT_EQ(fetch(handle).status, OV_STATUS_OK);
        const std::uint64_t tests = camera.GetCounters().testPackets;
        EXPECT_EQ(OV_CC_GetOptimalPacketSize(handle), static_cast<std::int32_t>(before)) << "the one in use";
        EXPECT_EQ(camera.GetCounters().testPackets, tests) << "not measured while grabbing";
    }
}

} // namespace
} // namespace kolt::test
