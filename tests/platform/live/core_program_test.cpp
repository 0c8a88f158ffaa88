// kolt_live --core: the same picture and figures by way of QCamera.
#include "ProgramFixture.h"

#include <csignal>
#include <regex>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace live_test {
namespace {

class CoreProgram : public Program {
protected:
    void StartCore(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), "--core");
        Start(std::move(arguments));
    }
    bool ShowsPicture(double left = 0, double top = 0, double width = 640, double height = 480,
                      int tolerance = 12) {
        return Eventually([=, this] {
            return bool(ShowsPatches(desktop.Look(window), left, top, width, height, tolerance));
        });
    }
};

TEST_F(CoreProgram, ShowsThePictureAndItsFigures) {
    StartCamera(Colour());
    StartCore();
    ASSERT_TRUE(FindWindow());
    EXPECT_TRUE(ShowsPicture());
    EXPECT_TRUE(Eventually([this] {
        return std::regex_search(
            desktop.Title(window),
            std::regex(R"(VC000777 \(127\.0\.0\.5\) - 640x480 BayerRG8 - [1-9]\d*\.\d fps - )"
                       R"(\d+\.\d MB/s - lost 0)"));
    })) << desktop.Title(window);
    EXPECT_TRUE(live->waitForOutput("shown "));
    EXPECT_THAT(live->output(),
                AllOf(HasSubstr("by the camera core"), HasSubstr("frames of 640 x 480 BayerRG8"),
                      HasSubstr("  lost 0  resent 0  errors 0  no buffer 0  ")));
    live->signal(SIGTERM);
    EXPECT_EQ(live->waitForExit(), 0) << live->output();
    EXPECT_THAT(live->output(), HasSubstr("in all "));
    EXPECT_FALSE(camera->IsControlled());
    EXPECT_TRUE(Eventually([this] { return !camera->IsStreaming(); })) << "after the frame under way";
}

TEST_F(CoreProgram, KeepsTheShapeAndTurnsThePicture) {
    StartCamera(Colour());
    StartCore({"--engine", "2"});
    ASSERT_TRUE(FindWindow());
    ASSERT_TRUE(ShowsPicture());
    desktop.Resize(window, 1000, 300); // 400 x 300 in the middle
    EXPECT_TRUE(ShowsPicture(300, 0, 400, 300, 30));
    desktop.Resize(window, 480, 640);
    desktop.Press(window, 'r'); // the picture's top is now at the right
    const vcam::Patch patch = camera->Patches().front();
    const auto x = static_cast<uint32_t>(480 - 1 - (patch.y + patch.height / 2));
    const auto y = static_cast<uint32_t>(patch.x + patch.width / 2);
    EXPECT_TRUE(Eventually([&] {
        return desktop.Look(window).Shows(x, y, {patch.red, patch.green, patch.blue}, 30);
    }));
    desktop.Press(window, 'q');
    EXPECT_EQ(live->waitForExit(), 0);
}

TEST_F(CoreProgram, WritesScreenshotAndXml) {
    StartCamera(Colour(mono12Packed));
    const std::string shot = out / "window.png";
    const std::string xml = out / "camera.xml";
    const Finished finished = Run({"--core", "--seconds", "3", "--screenshot", shot, "--xml", xml,
                                   "--packet-size", "1500", "--display-rate", "30"});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output, AllOf(HasSubstr("packet size 1500 bytes"), HasSubstr("wrote " + shot)));
    EXPECT_EQ(Read(xml), camera->Xml());
    EXPECT_TRUE(ShowsPatches(ReadPicture(shot), 0, 0, 640, 480, 12, false));
}

TEST_F(CoreProgram, AChangedFrameSizeIsFollowed) {
    StartCamera(Colour(mono8));
    StartCore();
    ASSERT_TRUE(live->waitForOutput("frames of 640 x 480 Mono8"));
    vcam::Faults faults;
    faults.changedWidth = 320;
    faults.changedHeight = 240;
    camera->SetFaults(faults);
    EXPECT_TRUE(live->waitForOutput("frames of 320 x 240 Mono8"));
}

TEST_F(CoreProgram, ADeadCameraIsReported) {
    StartCamera(Colour());
    StartCore();
    ASSERT_TRUE(live->waitForOutput("frames of"));
    vcam::Faults dead;
    dead.silent = true;
    camera->SetFaults(dead);
    EXPECT_EQ(live->waitForExit(std::chrono::seconds(20)), 4);
    EXPECT_THAT(live->output(),
                AllOf(HasSubstr("the camera is lost"), Not(HasSubstr("--reconnect")), HasSubstr("in all ")));
}

TEST_F(CoreProgram, TellsWhyItCannotOpen) {
    vcam::Config config = Colour();
    config.faults.denyControl = true;
    StartCamera(config);
    const Finished denied = Run({"--core", "--camera", "127.0.0.5"});
    EXPECT_EQ(denied.exitCode, 1);
    EXPECT_THAT(denied.output, AllOf(HasSubstr("OpenCamera failed with code -103"),
                                     HasSubstr("Failed to get the permission. The device is in use.")));
    EXPECT_EQ(Run({"--core", "--camera", "nobody"}).exitCode, 3);
}

TEST_F(CoreProgram, AScreenshotWithoutAPictureIsAFailure) {
    vcam::Config config = Colour();
    config.faults.streamSilent = true;
    StartCamera(config);
    const std::string path = out / "window.png";
    const Finished finished = Run({"--core", "--seconds", "1", "--screenshot", path});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.output, HasSubstr("no screenshot: no picture came"));
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(CoreProgram, LeavesTheSettingsOfTheMainProgramAlone) {
    StartCamera(Colour());
    const fs::path settings = fs::path(program).parent_path() / "LocalConfig.ini";
    const fs::path pictures = fs::path(program).parent_path() / "Data";
    const std::string before = Read(settings);
    const bool hadPictures = fs::exists(pictures); // the main program was used from here
    EXPECT_EQ(Run({"--core", "--seconds", "0.5"}).exitCode, 0);
    EXPECT_EQ(Read(settings), before);
    EXPECT_EQ(fs::exists(pictures), hadPictures);
}

} // namespace
} // namespace live_test
