// scripts/run, from its set-up on: with the programs of this build, in a network of its own, without a
// display.
#include "Desktop.h"

#include "VirtualCamera.h"

#include "support/ChildProcess.h"
#include "support/NetworkNamespace.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>

namespace fs = std::filesystem;
using kolt::test::ChildProcess;
using live_test::Eventually;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

/// The programs that hold the mark in their environment: those that the script started, and it itself.
std::vector<std::string> Marked(const std::string& mark) {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::ifstream environment(entry.path() / "environ", std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(environment), {}};
        if (text.find(mark) == std::string::npos)
            continue;
        std::ifstream name(entry.path() / "comm");
        std::string line;
        std::getline(name, line);
        found.push_back(line);
    }
    return found;
}

class RunScript : public testing::Test {
protected:
    void SetUp() override {
        const char* kept = std::getenv("KOLT_TEST_OUT");
        out = kept == nullptr ? fs::path(testing::TempDir()) / "kolt_run" : fs::path(kept) / "run";
        std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        std::replace(name.begin(), name.end(), '/', '_');
        out /= name;
        fs::create_directories(out);
        fs::remove(out / "kolt_live.png");
        mark = "run-script-" + std::to_string(getpid());
    }

    void Start(std::vector<std::string> arguments, const std::string& display = "") {
        arguments.insert(arguments.begin(), KOLT_SOURCE_DIR "/scripts/run");
        script = std::make_unique<ChildProcess>(arguments,
                                                ChildProcess::Environment{{"KOLT_RUN_BIN", KOLT_BIN_DIR},
                                                                          {"KOLT_RUN_OUT", out},
                                                                          {"KOLT_MARK", mark},
                                                                          {"DISPLAY", display}});
    }

    testing::AssertionResult NothingIsLeft() const {
        if (Eventually([this] { return Marked("KOLT_MARK=" + mark).empty(); }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << testing::PrintToString(Marked("KOLT_MARK=" + mark));
    }

    kolt::test::NetworkNamespace network;
    kolt::test::NamespaceScope inside{network};
    fs::path out;
    std::string mark;
    std::unique_ptr<ChildProcess> script;
};

TEST_F(RunScript, LeavesAScreenshotAndNothingElse) {
    Start({});
    EXPECT_EQ(script->waitForExit(), 0) << script->output();
    EXPECT_THAT(script->output(), AllOf(HasSubstr("virtual camera at 127.0.0.1"), HasSubstr("no display"),
                                        HasSubstr(out.string() + "/kolt_live.png"),
                                        HasSubstr("1920 x 1080 BayerRG8"), HasSubstr("in all")));
    const live_test::Shot shot = live_test::ReadPicture(out / "kolt_live.png");
    EXPECT_EQ(shot.width, 1536U);
    EXPECT_EQ(shot.height, 864U);
    // The corners of the test picture: red, green, blue, yellow.
    EXPECT_TRUE(shot.Shows(8, 8, {220, 30, 35}, 30));
    EXPECT_TRUE(shot.Shows(1528, 8, {30, 200, 30}, 30));
    EXPECT_TRUE(shot.Shows(8, 856, {40, 60, 230}, 30));
    EXPECT_TRUE(shot.Shows(1528, 856, {225, 215, 30}, 30));
    EXPECT_TRUE(NothingIsLeft());
}

TEST_F(RunScript, TakesTheNextAddressWhereTheFirstIsTaken) {
    vcam::Config config;
    vcam::VirtualCamera other(config);
    other.Start();
    Start({"--headless", "3"});
    EXPECT_EQ(script->waitForExit(), 0) << script->output();
    EXPECT_THAT(script->output(), AllOf(HasSubstr("virtual camera at 127.0.0.2"), HasSubstr("(127.0.0.2)"),
                                        Not(HasSubstr("no display"))));
    EXPECT_TRUE(NothingIsLeft());
}

TEST_F(RunScript, WithACameraItStartsNone) {
    vcam::Config config;
    config.serial = "VC000779";
    vcam::VirtualCamera other(config);
    other.Start();
    Start({"--camera", "VC000779", "--headless", "3"});
    EXPECT_EQ(script->waitForExit(), 0) << script->output();
    EXPECT_THAT(script->output(),
                AllOf(Not(HasSubstr("virtual camera at")), HasSubstr("VC000779 (127.0.0.1)")));
}

TEST_F(RunScript, HandsTheExitCodeOn) {
    Start({"--camera", "nobody", "--headless", "3"});
    EXPECT_EQ(script->waitForExit(), 3) << script->output();
}

class RunScriptEnds : public RunScript, public testing::WithParamInterface<int> {};

TEST_P(RunScriptEnds, WithAllItsChildren) {
    Start({});
    ASSERT_TRUE(script->waitForOutput("frames of")) << script->output();
    EXPECT_GE(Marked("KOLT_MARK=" + mark).size(), 4U); // the script, the camera, Xvfb, kolt_live
    script->signal(GetParam());
    EXPECT_TRUE(script->waitForExit().has_value());
    EXPECT_TRUE(NothingIsLeft());
}

INSTANTIATE_TEST_SUITE_P(Signals, RunScriptEnds, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGKILL));

} // namespace
