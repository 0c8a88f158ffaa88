#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

using kolt::test::ChildProcess;
using namespace std::chrono_literals;

namespace {

TEST(ChildProcess, GivesOutputAndExitCode) {
    const auto finished = kolt::test::run({"sh", "-c", "echo out; echo err >&2; exit 3"});
    EXPECT_EQ(finished.exitCode, 3);
    EXPECT_EQ(finished.output, "out\nerr\n");
}

TEST(ChildProcess, AProgramThatIsMissingEndsWith127) {
    EXPECT_EQ(kolt::test::run({"/nonexistent/program"}).exitCode, 127);
}

TEST(ChildProcess, WaitsForAText) {
    ChildProcess child({"sh", "-c", "echo ready; exec sleep 1000"});
    EXPECT_TRUE(child.waitForOutput("ready"));
    EXPECT_FALSE(child.waitForOutput("never", 10ms));
    EXPECT_EQ(child.waitForExit(10ms), std::nullopt);
    child.signal(SIGTERM);
    EXPECT_EQ(child.waitForExit(), 128 + SIGTERM);
    EXPECT_FALSE(child.waitForOutput("never"));
}

TEST(ChildProcess, ChangesTheEnvironment) {
    EXPECT_EQ(
        kolt::test::run({"sh", "-c", "echo $KOLT_A${HOME-none}"}, {{"KOLT_A", "x"}, {"HOME", ""}}).output,
        "xnone\n");
}

TEST(ChildProcess, MoreOutputThanAPipeHolds) {
    EXPECT_EQ(kolt::test::run({"sh", "-c", "head -c 1000000 /dev/zero"}).output.size(), 1000000U);
}

TEST(ChildProcess, DoesNotOutliveItsObject) {
    pid_t pid = 0;
    {
        const ChildProcess child({"cat", "/dev/zero"});
        pid = child.pid();
        EXPECT_EQ(kill(pid, 0), 0);
    }
    EXPECT_EQ(kill(pid, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(ChildProcess, AGrandchildThatKeepsTheOutputOpenIsNotWaitedFor) {
    ChildProcess child({"sh", "-c", "sleep 1000 & echo $!"});
    ASSERT_EQ(child.waitForExit(), 0);
    kill(std::stoi(child.output()), SIGKILL);
}

} // namespace
