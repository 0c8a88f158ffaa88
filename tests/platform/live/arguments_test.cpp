#include "ArgumentParser.h"

#include <gmock/gmock.h>

using live::Options;
using live::ParseArguments;
using testing::HasSubstr;

namespace {

Options Parsed(const std::vector<std::string>& arguments) {
    const live::ParsedArguments parsed = ParseArguments(arguments);
    EXPECT_EQ(parsed.error, "");
    return parsed.options;
}

TEST(Arguments, NoneMeansAWindowWithTheFirstFreeCamera) {
    const Options options = Parsed({});
    EXPECT_EQ(options.job, Options::Job::Show);
    EXPECT_FALSE(options.Headless());
    EXPECT_EQ(options.selector, "");
    EXPECT_EQ(options.engine, 1U);
    EXPECT_EQ(options.interpolation, 1U);
    EXPECT_EQ(options.packetSize, Options::PacketSize::AsItIs);
    EXPECT_FALSE(options.seconds.has_value());
    EXPECT_FALSE(options.dropIncomplete);
    EXPECT_FALSE(options.reconnect);
    EXPECT_FALSE(options.core);
}

TEST(Arguments, TheCoreIsForAWindow) {
    EXPECT_TRUE(Parsed({"--core"}).core);
    EXPECT_TRUE(Parsed({"--core", "--display-rate", "30", "--screenshot", "a.png"}).core);
}

TEST(Arguments, AllOfThemBehindASpace) {
    const Options options = Parsed({"--camera",          "192.168.3.4", "--engine",      "2",
                                    "--interpolation",   "0",           "--seconds",     "2.5",
                                    "--buffers",         "20",          "--xml",         "x.xml",
                                    "--display-rate",    "25",          "--screenshot",  "shot.PNG",
                                    "--drop-incomplete", "--reconnect", "--packet-size", "9000"});
    EXPECT_EQ(options.selector, "192.168.3.4");
    EXPECT_EQ(options.engine, 2U);
    EXPECT_EQ(options.interpolation, 0U);
    EXPECT_EQ(options.seconds, 2.5);
    EXPECT_EQ(options.buffers, 20U);
    EXPECT_EQ(options.xmlFile, "x.xml");
    EXPECT_EQ(options.displayRate, 25U);
    EXPECT_EQ(options.screenshotFile, "shot.PNG");
    EXPECT_TRUE(options.dropIncomplete);
    EXPECT_TRUE(options.reconnect);
    EXPECT_EQ(options.packetSize, Options::PacketSize::Fixed);
    EXPECT_EQ(options.packetBytes, 9000U);
}

TEST(Arguments, ValuesBehindAnEqualsSign) {
    const Options options = Parsed({"--camera=a=b", "--headless=50", "--packet-size=auto"});
    EXPECT_EQ(options.selector, "a=b");
    EXPECT_EQ(options.headlessFrames, 50U);
    EXPECT_EQ(options.packetSize, Options::PacketSize::Optimal);
}

TEST(Arguments, ASelectorMayLookLikeAnOption) {
    EXPECT_EQ(Parsed({"--camera", "--list"}).selector, "--list");
}

TEST(Arguments, SavingAloneWantsOneFrameWithoutAWindow) {
    const Options options = Parsed({"--save", "a.bmp"});
    EXPECT_TRUE(options.Headless());
    EXPECT_EQ(options.WantedFrames(), 1U);
    EXPECT_EQ(options.saveFile, "a.bmp");
}

TEST(Arguments, SavingWithHeadlessWantsThatManyFrames) {
    EXPECT_EQ(Parsed({"--save", "a.raw", "--headless", "7"}).WantedFrames(), 7U);
}

TEST(Arguments, TheFirstJobWins) {
    EXPECT_EQ(Parsed({"--help", "--list"}).job, Options::Job::Help);
    EXPECT_EQ(Parsed({"--list", "--help"}).job, Options::Job::List);
    EXPECT_EQ(Parsed({"-h"}).job, Options::Job::Help);
    EXPECT_EQ(Parsed({"--version"}).job, Options::Job::Version);
}

struct Refused {
    std::vector<std::string> arguments;
    const char* reason;
};

class RefusedArguments : public testing::TestWithParam<Refused> {};

TEST_P(RefusedArguments, SayWhy) {
    EXPECT_THAT(ParseArguments(GetParam().arguments).error, HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(
    Table, RefusedArguments,
    testing::Values(
        Refused{{"picture.bmp"}, "unexpected argument 'picture.bmp'"},
        Refused{{"-x"}, "unexpected argument '-x'"}, Refused{{"--"}, "unknown option '--'"},
        Refused{{"--lists"}, "unknown option '--lists'"}, Refused{{"--lis"}, "unknown option '--lis'"},
        Refused{{"--list=1"}, "--list takes no value"},
        Refused{{"--headless"}, "--headless wants a value: N"},
        Refused{{"--headless", "0"}, "wants a number from 1"},
        Refused{{"--headless", "-1"}, "--headless wants a number from 1 to 1000000000000, not '-1'"},
        Refused{{"--headless", "10x"}, "not '10x'"}, Refused{{"--headless="}, "wants a number"},
        Refused{{"--headless", "99999999999999999999999"}, "wants a number"},
        Refused{{"--seconds", "0"}, "wants a number from 0.1"},
        Refused{{"--seconds", "nan"}, "wants a number"}, Refused{{"--seconds", "inf"}, "wants a number"},
        Refused{{"--engine", "3"}, "from 1 to 2"}, Refused{{"--interpolation", "3"}, "from 0 to 2"},
        Refused{{"--display-rate", "0"}, "from 1 to 1000"}, Refused{{"--buffers", "1001"}, "from 1 to 1000"},
        Refused{{"--packet-size", "big"}, "'auto' or"}, Refused{{"--packet-size", "1502"}, "multiple of 4"},
        Refused{{"--packet-size", "219"}, "from 220"}, Refused{{"--packet-size", "16264"}, "to 16260"},
        Refused{{"--save", "a.gif"}, "ends in .bmp"}, Refused{{"--save", "a"}, ".raw"},
        Refused{{"--save", ""}, "wants a file name"}, Refused{{"--save", "dir/.png"}, "ends in .bmp"},
        Refused{{"--screenshot", "a.jpg"}, ".png or .ppm"}, Refused{{"--camera", ""}, "wants an address"},
        Refused{{"--xml", ""}, "wants a file name"},
        Refused{{"--screenshot", "a.png", "--headless", "3"}, "--screenshot wants a window"},
        Refused{{"--core", "--headless", "3"}, "--core wants a window"},
        Refused{{"--core", "--save", "a.png"}, "--core wants a window"},
        Refused{{"--core", "--reconnect"}, "--core does not reconnect"},
        Refused{{"--core", "--display-rate", "25"}, "--display-rate 30 or 60"},
        Refused{{"--reconnect", "--save", "a.png"}, "--reconnect is for the window"}));

TEST(Arguments, HelpNamesEveryOptionAndExitCode) {
    const std::string help = live::HelpText();
    for (const char* option :
         {"--list", "--camera SELECTOR", "--headless N", "--seconds N", "--save FILE", "--screenshot FILE",
          "--core", "--xml FILE", "--packet-size N|auto", "--buffers N", "--drop-incomplete", "--reconnect",
          "--engine 1|2", "--interpolation 0|1|2", "--display-rate N", "--help", "--version"})
        EXPECT_THAT(help, HasSubstr(option));
    for (const char* code : {"0 done", "1 a call failed", "2 wrong arguments", "3 no such camera",
                             "4 the camera was lost", "5 fewer frames"})
        EXPECT_THAT(help, HasSubstr(code));
}

TEST(Arguments, HelpFitsATerminal) {
    const std::string help = live::HelpText();
    for (size_t at = 0; at < help.size();) {
        const size_t end = help.find('\n', at);
        EXPECT_LE(end - at, 120U) << help.substr(at, end - at);
        at = end + 1;
    }
}

} // namespace
