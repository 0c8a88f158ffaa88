// scripts/second-try: what may run again and what may not, with a ctest that only notes what it is asked.
#include "support/ChildProcess.h"
#include "support/Places.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace fs = std::filesystem;
using kolt::test::Finished;
using testing::HasSubstr;
using testing::Not;

namespace {

class SecondTry : public testing::Test {
protected:
    void SetUp() override {
        folder = fs::path(testing::TempDir()) / ("kolt_second_try_" + std::to_string(getpid()));
        fs::create_directories(folder / "build/dev/Testing/Temporary");
        const fs::path ctest = folder / "ctest";
        // Knows four tests with the label.
        std::ofstream(ctest)
            << "#!/bin/sh\n"
               "echo \"$@\" >>"
            << (folder / "calls")
            << "\ncase \"$*\" in\n"
               "*-N*) printf '  Test   #7: E2e.Clicks\\n  Test  #18: Roads/Loss.Comes/Plain\\n  "
               "Test #119: Tour.Plays\\n  Test #120: Lost.Idle\\n\\nTotal Tests: 4\\n' ;;\n"
               "*--rerun-failed*) exit \"$KOLT_AGAIN\" ;;\nesac\n";
        fs::permissions(ctest, fs::perms::owner_all);
    }
    void TearDown() override { fs::remove_all(folder); }

    // After a run in which these failed, and where the second one ends with `again`.
    Finished After(const std::vector<std::string>& failed, int again = 0) {
        if (!failed.empty()) {
            std::ofstream noted(folder / "build/dev/Testing/Temporary/LastTestsFailed.log");
            for (size_t i = 0; i < failed.size(); ++i)
                noted << i + 7 << ':' << failed[i] << '\n';
        }
        const char* const path = std::getenv("PATH");
        return kolt::test::run({KOLT_SOURCE_DIR "/scripts/second-try"},
                               {{"PATH", folder.string() + ':' + (path ? path : "")},
                                {"KOLT_BUILD", (folder / "build").string()},
                                {"KOLT_AGAIN", std::to_string(again)}});
    }
    std::string Calls() const {
        std::ifstream file(folder / "calls");
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    fs::path folder;
};

TEST_F(SecondTry, WhatLivesOnRealTimeRunsOnceMoreAndAlone) {
    const Finished finished = After({"E2e.Clicks", "Roads/Loss.Comes/Plain", "Tour.Plays"});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(Calls(), HasSubstr("--rerun-failed -j1"));
    for (const char* name : {"E2e.Clicks", "Roads/Loss.Comes/Plain", "Tour.Plays"})
        EXPECT_THAT(finished.output, HasSubstr("passed at the second try: " + std::string(name)));
}

TEST_F(SecondTry, WhatFailsTwiceHasFailed) {
    const Finished finished = After({"E2e.Clicks"}, 8);
    EXPECT_NE(finished.exitCode, 0);
    EXPECT_THAT(finished.output, HasSubstr("failed twice"));
    EXPECT_THAT(finished.output, Not(HasSubstr("passed at")));
}

TEST_F(SecondTry, PlainLogicGetsNone) {
    // The second is the beginning of a name that may.
    for (const char* name : {"Formula.Adds", "E2e.Click"}) {
        const Finished finished = After({"E2e.Clicks", name});
        EXPECT_NE(finished.exitCode, 0);
        EXPECT_THAT(finished.output, HasSubstr(std::string(name) + " does not live on real time"));
    }
    EXPECT_THAT(Calls(), Not(HasSubstr("--rerun-failed")));
}

TEST_F(SecondTry, ManyFailuresGetNone) {
    const Finished finished = After({"E2e.Clicks", "Roads/Loss.Comes/Plain", "Tour.Plays", "Lost.Idle"});
    EXPECT_NE(finished.exitCode, 0);
    EXPECT_THAT(finished.output, HasSubstr("4 tests failed"));
    EXPECT_THAT(Calls(), Not(HasSubstr("--rerun-failed")));
}

TEST_F(SecondTry, AFailureThatIsNoTestGetsNone) {
    const Finished finished = After({});
    EXPECT_NE(finished.exitCode, 0);
    EXPECT_THAT(finished.output, HasSubstr("no test is noted as failed"));
    EXPECT_EQ(Calls(), "");
}

} // namespace
