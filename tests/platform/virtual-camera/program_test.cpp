// The program kolt_virtual_camera as a person starts it.
#include "VendorRegisters.h"
#include "arv_client.h"
#include "raw_client.h"
#include "support/ChildProcess.h"
#include "support/LoopbackAddress.h"
#include "support/Places.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

using namespace kolt::test;

const std::string kProgram = std::string(KOLT_BIN_DIR) + "/kolt_virtual_camera";

TEST(VirtualCameraProgram, SaysReadyStreamsAndEndsCleanly) {
    const std::string address = LoopbackAddress(0);
    ChildProcess program({kProgram, "--address", address, "--count", "2", "--serial", "P7", "--width", "320",
                          "--height", "240", "--fps", "50", "--statistics"});
    ASSERT_TRUE(program.waitForOutput("ready " + address + " " + LoopbackAddress(1) + "\n"))
        << program.output();
    {
        ArvClient client(LoopbackAddress(1));
        EXPECT_EQ(client.GetText("DeviceSerialNumber"), "P8");
        client.StartStream();
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(client.Next().status, ARV_BUFFER_STATUS_SUCCESS);
        client.StopStream();
    }
    program.signal(SIGINT);
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_NE(program.output().find(address + " frames=0 "), std::string::npos) << program.output();
    EXPECT_EQ(program.output().find(LoopbackAddress(1) + " frames=0 "), std::string::npos)
        << program.output();
    EXPECT_NE(program.output().find("missing=0"), std::string::npos);
}

TEST(VirtualCameraProgram, EndsAtSigtermToo) {
    ChildProcess program({kProgram, "--address", LoopbackAddress(0)});
    ASSERT_TRUE(program.waitForOutput("ready"));
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(), 0);
}

TEST(VirtualCameraProgram, DiesOnTime) {
    ChildProcess program({kProgram, "--address", LoopbackAddress(0), "--silent-after", "3"});
    ASSERT_TRUE(program.waitForOutput("ready"));
    RawClient client(LoopbackAddress(0));
    EXPECT_TRUE(client.Ask(0x0002, {}, 1, milliseconds(3000)).Came());
    EXPECT_TRUE(Eventually([&client] { return !client.Ask(0x0002, {}, 1, milliseconds(100)).Came(); }));
    program.signal(SIGINT);
    EXPECT_EQ(program.waitForExit(), 0) << "the program itself is alive";
}

TEST(VirtualCameraProgram, FaultsAreSwitchedWhileItRuns) {
    ChildProcess program({kProgram, "--address", LoopbackAddress(0), "--loss", "5"});
    ASSERT_TRUE(program.waitForOutput("ready"));
    RawClient client(LoopbackAddress(0));
    EXPECT_EQ(client.Read(vcam::kVendorLossPerMille), 5u);
    EXPECT_EQ(client.Write(vcam::kVendorLossPerMille, 0), kOk);
    EXPECT_EQ(client.Write(vcam::kVendorDenyControl, 1), kOk);
    EXPECT_EQ(client.TakeControl(), kAccessDenied);
}

TEST(VirtualCameraProgram, ExplainsItself) {
    const Finished help = run({kProgram, "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.output.find("--pixel-format"), std::string::npos);
    const Finished wrong = run({kProgram, "--nonsense"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_NE(wrong.output.find("unknown option \"--nonsense\""), std::string::npos) << wrong.output;
    const Finished taken = run({kProgram, "--address", "198.51.100.7"});
    EXPECT_EQ(taken.exitCode, 1);
    EXPECT_NE(taken.output.find("no interface has the address 198.51.100.7"), std::string::npos)
        << taken.output;
}

} // namespace
