// What the library writes to the terminal: nothing, unless OV_CC_LOG asks for it, and never for a handle made
// without log.
#include <string>

#include <gtest/gtest.h>

#include "CameraRig.h"
#include "support/ChildProcess.h"
#include "support/Places.h"

namespace kolt::test {
namespace {

constexpr const char* kProbe = KOLT_BIN_DIR "/camera_control_log_probe";
constexpr const char* kNobody = "127.254.254.253";

Finished probe(const std::string& address, const char* handle, const char* level) {
    return run({kProbe, address, handle}, {{"OV_CC_LOG", level}});
}

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class LogTest : public testing::Test {
protected:
    LogTest() : camera_(smallCamera()) { camera_.Start(); }
    vcam::VirtualCamera camera_;
};

TEST_F(LogTest, IsSilentUnlessAskedFor) {
    for (const char* level : {"", "off", "INFO", "1"}) {
        const Finished good = probe(camera_.Address(), "log", level);
        EXPECT_EQ(good.exitCode, 0) << level;
        EXPECT_EQ(good.output, "") << level;
        const Finished bad = probe(kNobody, "log", level);
        EXPECT_EQ(bad.exitCode, 1) << level;
        EXPECT_EQ(bad.output, "") << level;
    }
}

TEST_F(LogTest, ErrorTellsOfFailuresAlone) {
    EXPECT_EQ(probe(camera_.Address(), "log", "error").output, "");
    const Finished bad = probe(kNobody, "log", "error");
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_TRUE(has(bad.output, "[OvCameraControl ")) << bad.output;
    EXPECT_TRUE(has(bad.output, std::string(kNobody) + ": ")) << "whose handle it is: " << bad.output;
    EXPECT_TRUE(has(bad.output, "does not answer (0x80000206)")) << bad.output;
}

TEST_F(LogTest, InfoAndDebugTellOfEachStep) {
    for (const char* level : {"info", "debug"}) {
        const Finished good = probe(camera_.Address(), "log", level);
        EXPECT_EQ(good.exitCode, 0);
        std::size_t at = 0;
        for (const char* step :
             {": opened\n", ": grabbing, 76800 bytes a frame\n", ": grabbing stopped\n", ": closed\n"}) {
            at = good.output.find(camera_.Address() + step, at);
            EXPECT_NE(at, std::string::npos) << level << step << good.output;
        }
        EXPECT_TRUE(has(probe(kNobody, "log", level).output, "does not answer")) << level;
    }
}

TEST_F(LogTest, AHandleWithoutLogIsSilentWhateverIsAskedFor) {
    for (const char* level : {"error", "info", "debug"}) {
        const Finished good = probe(camera_.Address(), "silent", level);
        EXPECT_EQ(good.exitCode, 0);
        EXPECT_FALSE(has(good.output, "OvCameraControl")) << good.output;
        const Finished bad = probe(kNobody, "silent", level);
        EXPECT_EQ(bad.exitCode, 1);
        EXPECT_FALSE(has(bad.output, "OvCameraControl")) << bad.output;
    }
}

} // namespace
} // namespace kolt::test
