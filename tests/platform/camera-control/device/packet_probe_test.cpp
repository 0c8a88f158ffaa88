// Test packets: what arrives, and the largest packet that a network carries.
#include "CameraRig.h"
#include "device/PacketProbe.h"
#include "find/UdpSocket.h"
#include "support/NetworkNamespace.h"

#include <gtest/gtest.h>
#include <vector>

namespace kolt::test {
namespace {

using std::chrono::milliseconds;

constexpr std::uint32_t kHere = 0x7F000001, kCamera = 0x7F000005, kStranger = 0x7F000006;
constexpr std::uint32_t kHeaders = 28; // IP, UDP
constexpr milliseconds kSoon(2), kPatience(10'000);

void sendPacket(std::uint32_t from, std::uint16_t port, std::uint32_t size) {
    cc::UdpSocket socket;
    cc::UdpOptions options;
    options.bindIp = from;
    ASSERT_EQ(socket.open(options), 0);
    const std::vector<std::uint8_t> data(size - kHeaders);
    ASSERT_EQ(socket.send(data.data(), data.size(), kHere, port), 0);
}

TEST(PacketProbe, TakesThePacketOfTheSizeFromTheCamera) {
    cc::PacketProbe probe(kHere, kCamera);
    ASSERT_NE(probe.port(), 0);
    sendPacket(kCamera, probe.port(), 1499);
    sendPacket(kStranger, probe.port(), 1500);
    EXPECT_FALSE(probe.arrives(1500, kSoon));
    sendPacket(kCamera, probe.port(), 9000);
    sendPacket(kCamera, probe.port(), 1500);
    EXPECT_TRUE(probe.arrives(1500, kPatience)) << "after one of another size";
    EXPECT_FALSE(probe.arrives(1500, kSoon)) << "it was taken";
}

TEST(PacketProbe, WithoutAnAddressOfThisHostThereIsNoSocket) {
    cc::PacketProbe probe(0x08080808, kCamera);
    EXPECT_EQ(probe.port(), 0);
    EXPECT_FALSE(probe.arrives(1500, kSoon));
    EXPECT_EQ(cc::pathMtu(0x08080808, kCamera), 0U);
}

// A camera at the far end of a cable: a test packet of what the cable carries is enough.
TEST(PacketProbe, TheCableTellsTheLargestPacket) {
    for (const std::uint32_t mtu : {1500U, 4000U, 9000U}) {
        const NetworkNamespace near, far;
        NetworkNamespace::cable(near, "eth1", "10.1.0.1/24", far, "cam0", "10.1.0.2/24");
        near.ip("link set eth1 mtu " + std::to_string(mtu));
        far.ip("link set cam0 mtu " + std::to_string(mtu));
        vcam::Config config = smallCamera();
        config.interface = "cam0";
        config.address = "10.1.0.2";
        std::unique_ptr<vcam::VirtualCamera> camera;
        {
            const NamespaceScope there(far);
            camera = std::make_unique<vcam::VirtualCamera>(config);
            camera->Start();
        }
        {
            const NamespaceScope here(near);
            EXPECT_EQ(cc::pathMtu(0x0A010001, 0x0A010002), mtu);
            const Handle handle(recordOf(camera->Address()));
            ASSERT_EQ(handle.open(), OV_STATUS_OK);
            EXPECT_EQ(OV_CC_GetOptimalPacketSize(handle), static_cast<std::int32_t>(mtu));
            std::uint32_t port = 1;
            EXPECT_TRUE(camera->ReadRegister(0x0D00, port));
            EXPECT_EQ(port, 0U) << "the channel points nowhere";
        }
        camera->Stop();
    }
}

} // namespace
} // namespace kolt::test
