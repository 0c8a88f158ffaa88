// scripts/run, from its set-up on: with the programs of this build, in a network of its own, without a
// display.
#include "Desktop.h"

#include "VirtualCamera.h"

#include "support/ChildProcess.h"
#include "support/NetworkNamespace.h"
#include "support/Places.h"

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
        fs::remove(out / "KOLT_CAPTURE.png");
        mark = "run-script-" + std::to_string(getpid());
    }

    void Start(std::vector<std::string> arguments, const std::string& display = "") {
        arguments.insert(arguments.begin(), KOLT_SOURCE_DIR "/scripts/run");
        script = std::make_unique<ChildProcess>(arguments, ChildProcess::Environment{{"KOLT_RUN_BIN", bin},
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
    fs::path bin = KOLT_BIN_DIR;
    fs::path out;
    std::string mark;
    std::unique_ptr<ChildProcess> script;
};

TEST_F(RunScript, LiveLeavesAScreenshotAndNothingElse) {
    Start({"--live"});
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
    Start({"--live", "--headless", "3"});
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
    Start({"--live", "--camera", "VC000779", "--headless", "3"});
    EXPECT_EQ(script->waitForExit(), 0) << script->output();
    EXPECT_THAT(script->output(),
                AllOf(Not(HasSubstr("virtual camera at")), HasSubstr("VC000779 (127.0.0.1)")));
}

TEST_F(RunScript, HandsTheExitCodeOn) {
    Start({"--live", "--camera", "nobody", "--headless", "3"});
    EXPECT_EQ(script->waitForExit(), 3) << script->output();
}

/// With the main program, from a folder of its own: it writes its settings beside itself.
class RunProgram : public RunScript {
protected:
    void SetUp() override {
        RunScript::SetUp();
        bin = out / "bin";
        fs::remove_all(bin);
        fs::create_directories(bin);
        for (const char* file : {"KOLT_CAPTURE", "kolt_live", "kolt_virtual_camera", "libOvCameraControl.so",
                                 "libOvMediaKit.so", "libOVRender.so", "libGenApi_gcc421_v3_0.so",
                                 "libGCBase_gcc421_v3_0.so", "KOLT_en.qm", "qt_zh_CN.qm"}) {
            std::error_code elsewhere;
            fs::create_hard_link(fs::path(KOLT_BIN_DIR) / file, bin / file, elsewhere);
            if (elsewhere)
                fs::copy_file(fs::path(KOLT_BIN_DIR) / file, bin / file);
        }
    }
    void TearDown() override { fs::remove_all(bin); }
};

TEST_F(RunProgram, PlaysTheTourWithoutADisplay) {
    Start({});
    EXPECT_EQ(script->waitForExit(std::chrono::seconds(240)), 0) << script->output();
    EXPECT_GT(std::distance(fs::directory_iterator(out / "tour"), fs::directory_iterator()), 5);
    EXPECT_FALSE(fs::exists(out / "KOLT_CAPTURE.png"));
    EXPECT_TRUE(NothingIsLeft());
}

TEST_F(RunProgram, WithArgumentsLeavesAScreenshotAndNothingElse) {
    Start({"-nograb"});
    EXPECT_EQ(script->waitForExit(), 0) << script->output();
    EXPECT_THAT(script->output(), AllOf(HasSubstr("virtual camera at 127.0.0.1"), HasSubstr("no display"),
                                        HasSubstr(out.string() + "/KOLT_CAPTURE.png")));
    const live_test::Shot shot = live_test::ReadPicture(out / "KOLT_CAPTURE.png");
    ASSERT_EQ(shot.width, 1920U);
    ASSERT_EQ(shot.height, 1080U);
    // The window's size on a first start is that of its frame, in the middle; its title bar is white.
    EXPECT_TRUE(shot.Shows(960, 150, {255, 255, 255}, 4));
    EXPECT_TRUE(NothingIsLeft());
}

TEST_F(RunProgram, WithoutACameraStartsNone) {
    Start({"--no-camera"});
    EXPECT_EQ(script->waitForExit(), 0) << script->output();
    EXPECT_THAT(script->output(), AllOf(HasSubstr("no display"), Not(HasSubstr("virtual camera at"))));
    EXPECT_TRUE(fs::exists(out / "KOLT_CAPTURE.png"));
    EXPECT_TRUE(NothingIsLeft());
}

TEST_F(RunProgram, TakesTheDisplayThatIsThere) {
    const std::string lines =
        "scripts/run >&2 & run=$!\n"
        "timeout 60 xdotool search --sync --onlyvisible --class KOLT_CAPTURE getwindowname\n"
        "kill $run; wait $run; echo ended $?";
    script = std::make_unique<ChildProcess>(
        std::vector<std::string>{"env", "--chdir=" KOLT_SOURCE_DIR, "scripts/with-xvfb", "bash", "-c", lines},
        ChildProcess::Environment{
            {"KOLT_RUN_BIN", bin}, {"KOLT_RUN_OUT", out}, {"KOLT_MARK", mark}, {"DISPLAY", ""}});
    EXPECT_EQ(script->waitForExit(), 0) << script->output();
    EXPECT_THAT(script->output(),
                AllOf(HasSubstr("KOLT CAPTURE"), HasSubstr("ended 143"), Not(HasSubstr("no display"))));
    EXPECT_FALSE(fs::exists(out / "KOLT_CAPTURE.png"));
    EXPECT_TRUE(NothingIsLeft());
}

TEST_F(RunProgram, TellsItsUse) {
    Start({"--help"});
    EXPECT_EQ(script->waitForExit(), 0);
    EXPECT_THAT(script->output(), AllOf(HasSubstr("scripts/run --live"), HasSubstr("--no-camera")));
    EXPECT_TRUE(NothingIsLeft());
}

struct Ending {
    const char* program;
    int signal;
    size_t processes; ///< the script, the camera, Xvfb, its script, and what the script starts
};
void PrintTo(const Ending& ending, std::ostream* out) {
    *out << ending.program << " by signal " << ending.signal << ", " << ending.processes << " processes";
}
class RunScriptEnds : public RunProgram, public testing::WithParamInterface<Ending> {};

TEST_P(RunScriptEnds, WithAllItsChildren) {
    const bool live = GetParam().program == std::string("kolt_live");
    Start({live ? "--live" : "-nograb"});
    ASSERT_TRUE(script->waitForOutput(live ? "frames of" : "no display")) << script->output();
    ASSERT_TRUE(Eventually([this] { return Marked("KOLT_MARK=" + mark).size() >= GetParam().processes; }));
    script->signal(GetParam().signal);
    EXPECT_TRUE(script->waitForExit().has_value());
    EXPECT_TRUE(NothingIsLeft());
}

INSTANTIATE_TEST_SUITE_P(Signals, RunScriptEnds,
                         testing::Values(Ending{"kolt_live", SIGINT, 5}, Ending{"kolt_live", SIGTERM, 5},
                                         Ending{"kolt_live", SIGHUP, 5}, Ending{"kolt_live", SIGKILL, 5},
                                         Ending{"KOLT_CAPTURE", SIGINT, 7},
                                         Ending{"KOLT_CAPTURE", SIGKILL, 7}),
                         [](const auto& row) {
                             return row.param.program + ("_" + std::to_string(row.param.signal));
                         });

} // namespace
