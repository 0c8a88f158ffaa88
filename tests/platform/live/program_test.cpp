// kolt_live through the C contract alone, as a person runs it.
#include "ProgramFixture.h"

#include "CameraRecord.h"
#include "support/Places.h"

#include <algorithm>
#include <csignal>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;
using kolt::test::ChildProcess;
using kolt::test::Finished;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace live_test {
namespace {

TEST_F(Program, HelpAndVersion) {
    const Finished help = Run({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, HasSubstr("usage: kolt_live"));
    const Finished version = Run({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    for (const char* library : {"/libOvCameraControl.so", "/libOvMediaKit.so", "/libOVRender.so"})
        EXPECT_THAT(version.output, HasSubstr(KOLT_BIN_DIR + std::string(library)));
}

TEST_F(Program, WrongArgumentsEndWithTwo) {
    const Finished finished = Run({"--lists"});
    EXPECT_EQ(finished.exitCode, 2);
    EXPECT_THAT(finished.output, AllOf(HasSubstr("unknown option '--lists'"), HasSubstr("kolt_live --help")));
}

TEST_F(Program, ListsEveryField) {
    vcam::Config config = Colour();
    config.manufacturer = "Maker of cameras";
    config.deviceVersion = "3.1.4";
    config.manufacturerInfo = "info of it";
    StartCamera(config);
    vcam::Config other;
    other.address = "127.0.0.6";
    other.serial = "VC000778";
    vcam::VirtualCamera second(other);
    second.Start();
    const Finished finished = Run({"--list"});
    EXPECT_EQ(finished.exitCode, 0);
    for (const char* text :
         {"2 cameras", "GigE Vision", "VC000777", "on the desk", "127.0.0.5", "255.0.0.0", "free",
          "Maker of cameras", "3.1.4", "info of it", "VC000778", "127.0.0.6", "127.0.0.1"})
        EXPECT_THAT(finished.output, HasSubstr(text));
}

TEST_F(Program, ListTellsACameraInUse) {
    StartCamera(Colour());
    Start({"--headless", "1000000"});
    ASSERT_TRUE(live->waitForOutput("opened"));
    EXPECT_THAT(Run({"--list"}).output, HasSubstr("in use"));
}

TEST_F(Program, WithoutACamera) {
    const Finished list = Run({"--list"});
    EXPECT_EQ(list.exitCode, 0);
    EXPECT_THAT(list.output, HasSubstr("0 cameras"));
    const Finished headless = Run({"--headless", "1"});
    EXPECT_EQ(headless.exitCode, 3);
    EXPECT_THAT(headless.output, AllOf(HasSubstr("no camera found"), HasSubstr("hint")));
    EXPECT_EQ(Run({"--seconds", "1"}).exitCode, 3);
}

TEST_F(Program, FetchesAsManyFramesAsWanted) {
    StartCamera(Colour());
    const Finished finished = Run({"--headless", "50"});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output,
                AllOf(HasSubstr("opened "), HasSubstr("VC000777 (127.0.0.5)"),
                      HasSubstr("frames of 640 x 480 BayerRG8, 307200 bytes"), HasSubstr("in all "),
                      HasSubstr("  frames 50  "), HasSubstr("  lost 0  resent 0  errors 0  no buffer 0  ")));
    EXPECT_FALSE(camera->IsControlled());
}

TEST_F(Program, SaysTheFiguresEverySecond) {
    StartCamera(Colour());
    const Finished finished = Run({"--headless", "210"}); // 4.2 seconds
    const std::regex line(
        R"(\n {4}\d\.\d s  frames \d+  (\d+)\.\d+ fps  (\d+)\.\d MB/s  shown 0\.0 fps  lost 0  )"
        R"(resent 0  errors 0  no buffer 0  CPU \d+\.\d %)");
    int lines = 0;
    int least = 1000;
    int most = 0;
    for (auto match = std::sregex_iterator(finished.output.begin(), finished.output.end(), line);
         match != std::sregex_iterator(); ++match, ++lines) {
        const int frames = std::stoi((*match)[1]);
        least = std::min(least, frames);
        most = std::max(most, frames);
        // Frames of 307200 bytes.
        EXPECT_NEAR(std::stoi((*match)[2]), frames * 0.3072, 2) << finished.output;
    }
    // Four of them; a busy machine may hold one up for more than a second.
    EXPECT_GE(lines, 2) << finished.output;
    EXPECT_LE(lines, 6) << finished.output;
    // 50 frames a second; where one has fewer, those that waited come in the next.
    EXPECT_LE(least, 60);
    EXPECT_GT(most, 5);
}

TEST_F(Program, FewerFramesThanWantedIsAFailure) {
    vcam::Config config = Colour();
    config.faults.streamSilent = true;
    StartCamera(config);
    const Finished silent = Run({"--headless", "50", "--seconds", "1"});
    EXPECT_EQ(silent.exitCode, 5);
    EXPECT_THAT(silent.output,
                AllOf(HasSubstr("only 0 of 50 frames came"), HasSubstr("hint: is the camera waiting "
                                                                       "for a trigger")));
    camera->SetFaults({});
    const Finished few = Run({"--headless", "1000000", "--seconds", "3"});
    EXPECT_EQ(few.exitCode, 5);
    EXPECT_THAT(few.output, AllOf(HasSubstr(" of 1000000 frames came"), Not(HasSubstr("trigger"))));
}

TEST_F(Program, GivesUpByItselfWhenNothingComes) {
    vcam::Config config = Colour();
    config.faults.streamSilent = true;
    StartCamera(config);
    const Finished finished = Run({"--headless", "1"});
    EXPECT_EQ(finished.exitCode, 5);
    // It slept meanwhile: a loop that spins takes a whole core.
    std::smatch cpu;
    const std::regex total(R"(in all .*CPU (\d+)\.\d %)");
    ASSERT_TRUE(std::regex_search(finished.output, cpu, total)) << finished.output;
    EXPECT_LT(std::stoi(cpu[1]), 50);
}

TEST_F(Program, SelectsByEveryName) {
    StartCamera(Colour());
    vcam::Config other;
    other.address = "127.0.0.6";
    other.serial = "VC000778";
    vcam::VirtualCamera second(other);
    second.Start();
    const std::string list = Run({"--list"}).output;
    std::smatch mac;
    const std::regex row(R"(VC000777.*(([0-9A-F]{2}:){5}[0-9A-F]{2}))");
    ASSERT_TRUE(std::regex_search(list, mac, row)) << list;
    for (const std::string& selector : {std::string("127.0.0.5"), std::string("VC000777"),
                                        std::string("on the desk"), mac[1].str(), std::string("1")})
        EXPECT_THAT(Run({"--headless", "1", "--camera", selector}).output, HasSubstr("VC000777 (127.0.0.5)"))
            << selector;
    const Finished unknown = Run({"--headless", "1", "--camera", "nobody"});
    EXPECT_EQ(unknown.exitCode, 3);
    EXPECT_THAT(unknown.output, HasSubstr("no camera is called 'nobody' (2 in sight)"));
}

TEST_F(Program, TakesTheFirstCameraThatIsFree) {
    StartCamera(Colour());
    vcam::Config other;
    other.address = "127.0.0.6";
    other.serial = "VC000778";
    vcam::VirtualCamera second(other);
    second.Start();
    Start({"--camera", "127.0.0.5", "--headless", "1000000"});
    ASSERT_TRUE(live->waitForOutput("opened"));
    EXPECT_THAT(Run({"--headless", "1"}).output, HasSubstr("VC000778"));
}

TEST_F(Program, ReachesACameraThatIsNotListed) {
    vcam::Config config = Colour();
    config.address = "127.0.0.77";
    StartCamera(config);
    const Finished finished = Run({"--headless", "5", "--camera", "127.0.0.77"});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output,
                AllOf(HasSubstr("trying it as a remote camera"), HasSubstr("VC000777 (127.0.0.77)")));
}

TEST_F(Program, AnAddressWhereNothingAnswers) {
    const Finished finished = Run({"--headless", "5", "--camera", "127.0.0.78"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.output, AllOf(HasSubstr("cannot open 127.0.0.78"), HasSubstr("hint")));
}

TEST_F(Program, ASecondInstanceIsToldWhoHoldsTheCamera) {
    StartCamera(Colour());
    Start({"--headless", "1000000"});
    ASSERT_TRUE(live->waitForOutput("opened"));
    const Finished second = Run({"--headless", "1"});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_THAT(second.output, AllOf(HasSubstr("cannot open"), HasSubstr("VC000777"),
                                     HasSubstr("access denied: another program or host has control"),
                                     HasSubstr("0x80000203"), HasSubstr("hint: end the other KOLT CAPTURE")));
    EXPECT_EQ(live->waitForExit(std::chrono::milliseconds(0)), std::nullopt);
}

class ProgramFormats : public Program, public testing::WithParamInterface<uint32_t> {};

TEST_P(ProgramFormats, ShowTheSamePicture) {
    StartCamera(Colour(GetParam()));
    const std::string path = out / "window.png";
    const bool colour = Colour(GetParam()).model == vcam::Model::Colour;
    Start({"--screenshot", path});
    ASSERT_TRUE(FindWindow());
    const auto shows = [&](const Shot& shot) { return ShowsPatches(shot, 0, 0, 640, 480, 12, colour); };
    ASSERT_TRUE(Eventually([&] { return bool(shows(desktop.Look(window))); }))
        << shows(desktop.Look(window)).message();
    desktop.Press(window, 'q');
    ASSERT_EQ(live->waitForExit(), 0) << live->output();
    const Shot shot = ReadPicture(path);
    ASSERT_EQ(shot.width, 640U);
    ASSERT_EQ(shot.height, 480U);
    EXPECT_TRUE(shows(shot)) << live->output();
}

TEST_F(Program, AScreenshotWithoutAPictureIsAFailure) {
    vcam::Config config = Colour();
    config.faults.streamSilent = true;
    StartCamera(config);
    const std::string path = out / "window.png";
    const Finished finished = Run({"--seconds", "1", "--screenshot", path});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.output, HasSubstr("no screenshot: no picture came"));
    EXPECT_FALSE(fs::exists(path));
}

INSTANTIATE_TEST_SUITE_P(Table, ProgramFormats,
                         testing::Values(mono8, mono12, mono12Packed, bayerRg8, bayerRg12Packed, rgb8, uyvy,
                                         yuyv));

TEST_F(Program, TheWindowShowsTheCameraAndItsFigures) {
    StartCamera(Colour());
    Start({});
    ASSERT_TRUE(FindWindow());
    EXPECT_TRUE(Eventually([this] { return bool(ShowsPatches(desktop.Look(window), 0, 0, 640, 480, 12)); }));
    EXPECT_TRUE(Eventually([this] {
        return std::regex_search(
            desktop.Title(window),
            std::regex(R"(VC000777 \(127\.0\.0\.5\) - 640x480 BayerRG8 - [1-9]\d*\.\d fps - )"
                       R"(\d+\.\d MB/s - lost 0)"));
    })) << desktop.Title(window);
    EXPECT_TRUE(live->waitForOutput("shown "));
}

TEST_F(Program, TheWindowCanBeResizedAndKeepsTheShape) {
    StartCamera(Colour());
    Start({"--engine", "2"});
    ASSERT_TRUE(FindWindow());
    desktop.Resize(window, 1000, 300); // 400 x 300 in the middle
    EXPECT_TRUE(
        Eventually([this] { return bool(ShowsPatches(desktop.Look(window), 300, 0, 400, 300, 30)); }));
    const Shot shot = desktop.Look(window);
    const Rgb border = {0x14, 0x18, 0x1D};
    EXPECT_TRUE(shot.Shows(100, 150, border, 0));
    EXPECT_TRUE(shot.Shows(900, 150, border, 0));
}

TEST_F(Program, ALargePictureFitsOnTheScreen) {
    vcam::Config config = Colour(mono8);
    config.sensorWidth = 4096;
    config.sensorHeight = 2160;
    config.frameRate = 5;
    StartCamera(config);
    Start({});
    ASSERT_TRUE(FindWindow());
    EXPECT_TRUE(Eventually([this] { return desktop.SizeOf(window)[0] == 1536; }));
    EXPECT_EQ(desktop.SizeOf(window)[1], 810U);
}

TEST_F(Program, EndsByKeyAndByTheCloseButton) {
    StartCamera(Colour());
    for (int way = 0; way < 3; ++way) {
        Start({});
        ASSERT_TRUE(FindWindow());
        if (way == 2)
            desktop.AskToClose(window);
        else
            desktop.Press(window, way == 0 ? 'q' : 0xFF1B);
        EXPECT_EQ(live->waitForExit(), 0) << way;
        EXPECT_THAT(live->output(), HasSubstr("in all "));
        EXPECT_FALSE(camera->IsControlled());
    }
}

TEST_F(Program, EndsBySignalAndGivesTheCameraBack) {
    StartCamera(Colour());
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Start({});
        ASSERT_TRUE(live->waitForOutput("frames of"));
        live->signal(number);
        EXPECT_EQ(live->waitForExit(), 0) << number;
        EXPECT_THAT(live->output(), HasSubstr("in all "));
        EXPECT_FALSE(camera->IsControlled());
        EXPECT_TRUE(Eventually([this] { return !camera->IsStreaming(); })) << "after the frame under way";
    }
}

TEST_F(Program, ASignalBeforeEnoughFramesIsNotSuccess) {
    StartCamera(Colour());
    Start({"--headless", "1000000"});
    ASSERT_TRUE(live->waitForOutput("fps"));
    live->signal(SIGINT);
    EXPECT_EQ(live->waitForExit(), 5);
    EXPECT_THAT(live->output(), HasSubstr("until the run was ended"));
}

TEST_F(Program, EndsWhenNobodyReadsItsOutput) {
    StartCamera(Colour());
    const Finished finished =
        kolt::test::run({"bash", "-c", program + " --headless 1000000 | head -n 1; echo ${PIPESTATUS[0]}"});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_THAT(finished.output, HasSubstr("\n5\n"));
    EXPECT_FALSE(camera->IsControlled());
}

TEST_F(Program, ADeadCameraIsReported) {
    StartCamera(Colour());
    Start({});
    ASSERT_TRUE(live->waitForOutput("frames of"));
    vcam::Faults dead;
    dead.silent = true;
    camera->SetFaults(dead);
    EXPECT_EQ(live->waitForExit(std::chrono::seconds(20)), 4);
    EXPECT_THAT(live->output(),
                AllOf(HasSubstr("the camera is lost"), HasSubstr("--reconnect"), HasSubstr("in all ")));
}

TEST_F(Program, ReconnectsToACameraThatComesBack) {
    StartCamera(Colour());
    Start({"--reconnect"});
    ASSERT_TRUE(live->waitForOutput("frames of"));
    vcam::Faults dead;
    dead.silent = true;
    camera->SetFaults(dead);
    ASSERT_TRUE(live->waitForOutput("waiting for "));
    ASSERT_TRUE(FindWindow());
    camera.reset();
    StartCamera(Colour());
    const size_t before = live->output().size();
    ASSERT_TRUE(Eventually([&] {
        live->waitForOutput("never", std::chrono::milliseconds(50));
        return live->output().find("frames of", before) != std::string::npos;
    })) << live->output();
    EXPECT_TRUE(camera->IsControlled());
    desktop.Press(window, 'q');
    EXPECT_EQ(live->waitForExit(), 0);
}

TEST_F(Program, WhileItWaitsForACameraItStillListens) {
    StartCamera(Colour());
    Start({"--reconnect"});
    ASSERT_TRUE(live->waitForOutput("frames of"));
    camera.reset();
    ASSERT_TRUE(live->waitForOutput("waiting for "));
    live->signal(SIGINT);
    EXPECT_EQ(live->waitForExit(), 4);
}

TEST_F(Program, AChangedFrameSizeIsFollowed) {
    StartCamera(Colour(mono8));
    Start({});
    ASSERT_TRUE(live->waitForOutput("frames of 640 x 480 Mono8"));
    vcam::Faults faults;
    faults.changedWidth = 320;
    faults.changedHeight = 240;
    camera->SetFaults(faults);
    EXPECT_TRUE(live->waitForOutput("frames of 320 x 240 Mono8"));
}

TEST_F(Program, LostPacketsAreShown) {
    vcam::Config config = Colour();
    config.faults.lossPerMille = 2;
    config.faults.ignoreResend = true;
    config.faults.losePayloadOnly = true;
    StartCamera(config);
    const Finished shown = Run({"--headless", "100"});
    EXPECT_EQ(shown.exitCode, 0) << shown.output;
    EXPECT_THAT(shown.output, testing::ContainsRegex("in all .*  lost [1-9][0-9]*  .*  incomplete [1-9]"));
    const Finished dropped = Run({"--headless", "20", "--drop-incomplete"});
    EXPECT_EQ(dropped.exitCode, 0) << dropped.output;
    EXPECT_THAT(dropped.output, Not(HasSubstr("incomplete")));
    EXPECT_THAT(dropped.output, testing::ContainsRegex("in all .*  errors [1-9]"));
}

TEST_F(Program, SetsThePacketSize) {
    StartCamera(Colour());
    uint32_t value = 0;
    Start({"--packet-size", "4000", "--headless", "1000000"});
    ASSERT_TRUE(live->waitForOutput("packet size 4000 bytes, was "));
    ASSERT_TRUE(camera->ReadRegister(packetSizeRegister, value));
    EXPECT_EQ(value & 0xFFFF, 4000U);
    live.reset();
    ASSERT_TRUE(Eventually([this] { return !camera->IsControlled(); }));
    const Finished best = Run({"--packet-size", "auto", "--headless", "5"});
    EXPECT_EQ(best.exitCode, 0) << best.output;
    ASSERT_TRUE(camera->ReadRegister(packetSizeRegister, value));
    EXPECT_GT(value & 0xFFFF, 4000U); // loopback carries large packets
}

TEST_F(Program, WritesTheXml) {
    StartCamera(Colour());
    const std::string path = out / "camera.xml";
    const Finished finished = Run({"--xml", path, "--headless", "1"});
    EXPECT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_EQ(Read(path), camera->Xml());
}

TEST_F(Program, SavesEveryFormat) {
    StartCamera(Colour(rgb8));
    for (const char* name : {"frame.png", "frame.ppm", "frame.bmp", "frame.jpg"}) {
        const std::string path = out / name;
        const Finished finished = Run({"--save", path});
        ASSERT_EQ(finished.exitCode, 0) << name << "\n" << finished.output;
        EXPECT_THAT(finished.output, HasSubstr("wrote " + path));
        const Shot shot = ReadPicture(path);
        EXPECT_EQ(shot.width, 640U) << name;
        EXPECT_EQ(shot.height, 480U) << name;
        EXPECT_TRUE(ShowsPatches(shot, 0, 0, 640, 480, std::string(name) == "frame.jpg" ? 12 : 0)) << name;
    }
    const std::string raw = out / "frame.raw";
    ASSERT_EQ(Run({"--save", raw}).exitCode, 0);
    EXPECT_EQ(fs::file_size(raw), 640U * 480 * 3);
    const Finished pgm = Run({"--save", out / "frame.pgm"});
    EXPECT_EQ(pgm.exitCode, 1);
    EXPECT_THAT(pgm.output, HasSubstr("use .png, .ppm or .raw"));
}

TEST_F(Program, SavesTheLastOfSeveralFramesWithAllBits) {
    StartCamera(Colour(mono12));
    const std::string path = out / "frame.pgm";
    const Finished finished = Run({"--save", path, "--headless", "3"});
    ASSERT_EQ(finished.exitCode, 0) << finished.output;
    EXPECT_THAT(finished.output, HasSubstr("frames 3  "));
    EXPECT_EQ(Read(path).substr(0, 16), "P5\n640 480\n4095\n");
    EXPECT_EQ(fs::file_size(path), 16U + 640 * 480 * 2);
}

TEST_F(Program, AFileThatCannotBeWrittenIsAFailure) {
    StartCamera(Colour(mono8));
    const Finished finished = Run({"--save", "/nonexistent/frame.png"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.output, HasSubstr("/nonexistent/frame.png: No such file or directory"));
}

TEST_F(Program, WithoutADisplayItSaysWhatToDo) {
    StartCamera(Colour());
    const Finished finished = Run({}, {{"DISPLAY", ""}});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.output, AllOf(HasSubstr("there is no display"), HasSubstr("--headless")));
    EXPECT_EQ(Run({"--headless", "3"}, {{"DISPLAY", ""}}).exitCode, 0);
}

} // namespace
} // namespace live_test
