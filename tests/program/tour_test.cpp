// scripts/tour, from its set-up on: with the programs of this build, without a display.
#include "support/ChildProcess.h"
#include "support/Places.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <regex>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using kolt::test::ChildProcess;
using testing::HasSubstr;

namespace {

constexpr auto kPatience = std::chrono::seconds(220);

class Tour : public testing::Test {
protected:
    void SetUp() override {
        const char* kept = std::getenv("KOLT_TEST_OUT");
        out = (kept ? fs::path(kept) : fs::path(testing::TempDir())) /
              testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::remove_all(out);
    }

    // The exit code.
    int Play(std::vector<std::string> arguments, const std::string& bin = KOLT_BIN_DIR) {
        arguments.insert(arguments.begin(), KOLT_SOURCE_DIR "/scripts/tour");
        ChildProcess tour(arguments, {{"KOLT_RUN_BIN", bin},
                                      {"KOLT_TOUR_PATIENCE", bin == KOLT_BIN_DIR ? "" : "3"},
                                      {"DISPLAY", ""},
                                      {"WAYLAND_DISPLAY", ""}});
        const auto code = tour.waitForExit(kPatience);
        said = tour.output();
        return code.value_or(-1);
    }

    int StepsSaid() const {
        const std::regex step("(^|\n) ?[0-9]+\\. [A-Z1]");
        return static_cast<int>(
            std::distance(std::sregex_iterator(said.begin(), said.end(), step), std::sregex_iterator()));
    }

    std::vector<std::string> Pictures() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(out))
            if (entry.path().extension() == ".png")
                names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    fs::path out;
    std::string said;
};

TEST_F(Tour, PlaysEveryStepAndLeavesAPictureOfEach) {
    ASSERT_EQ(Play({"--fast", "--out", out.string()}), 0) << said;
    const std::vector<std::string> pictures = Pictures();
    EXPECT_EQ(StepsSaid(), 17) << said;
    ASSERT_EQ(pictures.size(), 17U) << testing::PrintToString(pictures);
    EXPECT_EQ(pictures.front(), "01-start.png");
    EXPECT_EQ(pictures.back(), "17-exit.png");
    for (const std::string& picture : pictures) {
        std::ifstream file(out / picture, std::ios::binary);
        std::string head(24, '\0');
        file.read(head.data(), 24);
        ASSERT_TRUE(file) << picture;
        const auto number = [&head](size_t at) {
            return static_cast<unsigned char>(head[at]) * 256 + static_cast<unsigned char>(head[at + 1]);
        };
        EXPECT_EQ(number(18), 1303) << picture; // the window's width in a PNG's header
        EXPECT_EQ(number(22), 821) << picture;
    }
    EXPECT_TRUE(fs::exists(out / "files/snapshot.bmp"));
}

TEST_F(Tour, SaysWhatDidNotComeTrue) {
    fs::create_directories(out / "bin");
    for (const char* name : {"KOLT_CAPTURE", "libnone.so", "none.qm"})
        std::ofstream(out / "bin" / name) << "#!/bin/sh\nexec sleep 60\n";
    fs::permissions(out / "bin/KOLT_CAPTURE", fs::perms::owner_all);
    fs::create_symlink(KOLT_BIN_DIR "/kolt_virtual_camera", out / "bin/kolt_virtual_camera");
    EXPECT_EQ(Play({"--fast", "--out", out.string()}, (out / "bin").string()), 1) << said;
    EXPECT_THAT(said, HasSubstr("step 1: the main window did not come true"));
    EXPECT_TRUE(fs::exists(out / "failed.png"));
}

TEST_F(Tour, TellsItsParameters) {
    EXPECT_EQ(Play({"--help"}), 0);
    EXPECT_THAT(said, testing::AllOf(HasSubstr("--fast"), HasSubstr("--out DIR"), HasSubstr("--help")));
    EXPECT_EQ(Play({"--slow"}), 2);
    EXPECT_THAT(said, HasSubstr("what is --slow?"));
    EXPECT_EQ(Play({"--out"}), 2);
}

} // namespace
