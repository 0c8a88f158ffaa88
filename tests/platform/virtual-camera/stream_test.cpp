// The camera's stream as an Aravis client receives it.
#include "VirtualCamera.h"
#include "arv_client.h"
#include "support/LoopbackAddress.h"

#include <gtest/gtest.h>

namespace {

using namespace kolt::test;

vcam::Config SmallCamera(unsigned index) {
    vcam::Config config;
    config.address = LoopbackAddress(index);
    config.sensorWidth = 320;
    config.sensorHeight = 240;
    return config;
}

TEST(VirtualCameraStream, Mono8ArrivesWholeAndInOrder) {
    vcam::VirtualCamera camera(SmallCamera(0));
    camera.Start();
    ArvClient client(camera.Address());
    ASSERT_TRUE(client.Controls());
    client.StartStream();
    uint32_t last = 0;
    for (int i = 0; i < 10; ++i) {
        const ArvFrame frame = client.Next();
        ASSERT_EQ(frame.status, ARV_BUFFER_STATUS_SUCCESS);
        EXPECT_EQ(frame.pixelFormat, 0x01080001u);
        EXPECT_EQ(frame.width, 320u);
        EXPECT_EQ(frame.height, 240u);
        uint32_t number = 0;
        ASSERT_TRUE(vcam::ReadFrameNumber(frame.pixels.data(), 320, 320, 240, number));
        EXPECT_GT(number, last);
        EXPECT_EQ(number, frame.id);
        last = number;
    }
    client.StopStream();
    EXPECT_GE(camera.GetCounters().framesCompleted, 10u);
    EXPECT_EQ(camera.GetCounters().packetsMissing, 0u);
}

} // namespace
