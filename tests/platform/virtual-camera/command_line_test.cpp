#include "CommandLine.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using vcam::ParseCommandLine;

TEST(CommandLine, NothingIsOneCameraOnLoopback) {
    const auto options = ParseCommandLine({});
    ASSERT_EQ(options.cameras.size(), 1u);
    EXPECT_EQ(options.cameras[0].address, "127.0.0.1");
    EXPECT_FALSE(options.help);
    EXPECT_FALSE(options.silentAfter);
}

TEST(CommandLine, CountsUpAddressesSerialNumbersAndMacs) {
    const auto options = ParseCommandLine(
        {"--count", "3", "--address", "127.0.0.254", "--serial", "AB0099", "--mac", "02:00:00:00:00:ff"});
    ASSERT_EQ(options.cameras.size(), 3u);
    EXPECT_EQ(options.cameras[2].address, "127.0.1.0");
    EXPECT_EQ(options.cameras[0].serial, "AB0099");
    EXPECT_EQ(options.cameras[1].serial, "AB0100");
    EXPECT_EQ(options.cameras[1].mac, (std::array<uint8_t, 6>{2, 0, 0, 0, 1, 0}));
    EXPECT_EQ(ParseCommandLine({"--count", "2", "--serial", "X"}).cameras[1].serial, "X1");
}

TEST(CommandLine, EachOptionReachesItsPlace) {
    const auto options = ParseCommandLine({"--interface",
                                           "eth7",
                                           "--mask",
                                           "255.255.0.0",
                                           "--gateway",
                                           "10.0.0.1",
                                           "--model",
                                           "mono",
                                           "--model-name",
                                           "M",
                                           "--user-name",
                                           "U",
                                           "--pixel-format",
                                           "Mono12",
                                           "--width",
                                           "640",
                                           "--height",
                                           "480",
                                           "--fps",
                                           "12.5",
                                           "--link-speed",
                                           "1000",
                                           "--max",
                                           "--mtu",
                                           "1500",
                                           "--zip",
                                           "--seed",
                                           "42",
                                           "--loss",
                                           "5",
                                           "--lose-resends",
                                           "--lose-payload-only",
                                           "--no-resend",
                                           "--silent-after",
                                           "1.5",
                                           "--no-stream",
                                           "--deny-control",
                                           "--refuse-writes",
                                           "--answer-delay",
                                           "700",
                                           "--no-pending",
                                           "--change-width",
                                           "320",
                                           "--change-height",
                                           "240",
                                           "--extra-bytes",
                                           "99",
                                           "--duplicate",
                                           "3",
                                           "--reorder",
                                           "4",
                                           "--broken-xml",
                                           "cyclic",
                                           "--statistics"});
    const vcam::Config& config = options.cameras.at(0);
    EXPECT_EQ(config.interface, "eth7");
    EXPECT_EQ(config.mask, "255.255.0.0");
    EXPECT_EQ(config.gateway, "10.0.0.1");
    EXPECT_EQ(config.model, vcam::Model::Mono);
    EXPECT_EQ(config.modelName, "M");
    EXPECT_EQ(config.userName, "U");
    EXPECT_EQ(config.pixelFormat, 0x01100005u);
    EXPECT_EQ(config.sensorWidth, 640u);
    EXPECT_EQ(config.sensorHeight, 480u);
    EXPECT_EQ(config.frameRate, 12.5);
    EXPECT_EQ(config.linkSpeedMbps, 1000u);
    EXPECT_TRUE(config.unpaced);
    EXPECT_EQ(config.mtu, 1500u);
    EXPECT_TRUE(config.zippedXml);
    EXPECT_EQ(config.seed, 42u);
    const vcam::Faults& faults = config.faults;
    EXPECT_EQ(faults.lossPerMille, 5u);
    EXPECT_TRUE(faults.resendsLoseToo);
    EXPECT_TRUE(faults.losePayloadOnly);
    EXPECT_TRUE(faults.ignoreResend);
    EXPECT_TRUE(faults.streamSilent);
    EXPECT_TRUE(faults.denyControl);
    EXPECT_TRUE(faults.refuseWrites);
    EXPECT_EQ(faults.answerDelayMs, 700u);
    EXPECT_FALSE(faults.announcePending);
    EXPECT_EQ(faults.changedWidth, 320u);
    EXPECT_EQ(faults.changedHeight, 240u);
    EXPECT_EQ(faults.extraBytes, 99u);
    EXPECT_EQ(faults.duplicatePerMille, 3u);
    EXPECT_EQ(faults.reorderPerMille, 4u);
    EXPECT_EQ(faults.xml, vcam::XmlFault::Cyclic);
    EXPECT_EQ(options.silentAfter, std::chrono::milliseconds(1500));
    EXPECT_TRUE(options.statistics);
}

TEST(CommandLine, SaysWhatIsWrong) {
    const std::vector<std::vector<std::string>> wrong = {{"--no-such-option"},
                                                         {"--fps"},
                                                         {"--fps", "fast"},
                                                         {"--count", "0"},
                                                         {"--loss", "1001"},
                                                         {"--mac", "02:00"},
                                                         {"--mac", "02:00:00:00:00:0g"},
                                                         {"--model", "round"},
                                                         {"--pixel-format", "Mono7"},
                                                         {"--count", "2", "--address", "here"},
                                                         {"--broken-xml", "odd"},
                                                         {"--width", "-1"},
                                                         {"--seed", ""}};
    for (const auto& arguments : wrong)
        EXPECT_THROW(ParseCommandLine(arguments), std::invalid_argument) << arguments.front();
}

TEST(CommandLine, HelpNamesEveryOption) {
    EXPECT_TRUE(ParseCommandLine({"--help"}).help);
    const std::string help = vcam::HelpText();
    for (const char* option :
         {"--address", "--interface", "--count", "--loss", "--silent-after", "--max", "--broken-xml"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
}

} // namespace
