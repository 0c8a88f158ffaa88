// scripts/with-xvfb: displays of their own, also beside servers in other network namespaces.
#include "support/ChildProcess.h"
#include "support/NetworkNamespace.h"
#include "support/Places.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <set>

using kolt::test::ChildProcess;
using namespace std::chrono_literals;

namespace {

const std::string withXvfb = KOLT_SOURCE_DIR "/scripts/with-xvfb";

std::string displayOf(ChildProcess& child) {
    EXPECT_TRUE(child.waitForOutput("\n"));
    return child.output();
}

TEST(WithXvfb, HandsOnExitCodeAndInput) {
    EXPECT_EQ(kolt::test::run({withXvfb, "sh", "-c", "exit 7"}).exitCode, 7);
    EXPECT_EQ(kolt::test::run({"sh", "-c", "echo text | " + withXvfb + " cat"}).output, "text\n");
}

TEST(WithXvfb, DisplaysAreApartInEveryNetworkNamespace) {
    const std::vector<std::string> command = {withXvfb, "sh", "-c", "echo $DISPLAY; exec sleep 1000"};
    ChildProcess first(command);
    std::set<std::string> displays = {displayOf(first)};
    const kolt::test::NetworkNamespace network;
    const kolt::test::NamespaceScope inside(network);
    ChildProcess second(command);
    ChildProcess third(command);
    displays.insert(displayOf(second));
    displays.insert(displayOf(third));
    EXPECT_EQ(displays.size(), 3U);
}

TEST(WithXvfb, ASignalEndsCommandAndDisplay) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        ChildProcess child({withXvfb, "sh", "-c", "echo $DISPLAY; exec sleep 1000"});
        const std::string display = displayOf(child);
        const std::string socket = "/tmp/.X11-unix/X" + display.substr(1, display.size() - 2);
        EXPECT_TRUE(std::filesystem::exists(socket)) << socket;
        child.signal(number);
        EXPECT_EQ(child.waitForExit(), 128 + SIGTERM) << number;
        EXPECT_FALSE(std::filesystem::exists(socket)) << socket;
    }
}

} // namespace
