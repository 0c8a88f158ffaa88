// kolt_live as a person runs it: the real program with the real libraries, a virtual camera, and a virtual
// display. Each test has a network of its own, so that no other test's camera is in sight.
#ifndef LIVE_TEST_PROGRAM_FIXTURE_H
#define LIVE_TEST_PROGRAM_FIXTURE_H

#include "Desktop.h"

#include "VirtualCamera.h"

#include "support/ChildProcess.h"
#include "support/NetworkNamespace.h"
#include "support/Places.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace live_test {

namespace fs = std::filesystem;
using kolt::test::ChildProcess;
using kolt::test::Finished;

inline const std::string program = KOLT_BIN_DIR "/kolt_live";

constexpr uint32_t mono8 = 0x01080001;
constexpr uint32_t mono12 = 0x01100005;
constexpr uint32_t mono12Packed = 0x010C0006;
constexpr uint32_t bayerRg8 = 0x01080009;
constexpr uint32_t bayerRg12Packed = 0x010C002B;
constexpr uint32_t rgb8 = 0x02180014;
constexpr uint32_t uyvy = 0x0210001F;
constexpr uint32_t yuyv = 0x02100032;
constexpr uint32_t packetSizeRegister = 0x0D04;

inline std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Program : public testing::Test {
protected:
    void SetUp() override {
        const char* kept = std::getenv("KOLT_TEST_OUT");
        out = kept == nullptr ? fs::path(testing::TempDir()) / "kolt_live" : fs::path(kept) / "live";
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(test->test_suite_name()) + "_" + test->name();
        std::replace(name.begin(), name.end(), '/', '_');
        out /= name;
        fs::create_directories(out);
    }

    static vcam::Config Colour(uint32_t format = bayerRg8) {
        vcam::Config config;
        config.address = "127.0.0.5";
        config.serial = "VC000777";
        config.userName = "on the desk";
        config.sensorWidth = 640;
        config.sensorHeight = 480;
        config.pixelFormat = format;
        config.frameRate = 50;
        if (format == mono8 || format == mono12 || format == mono12Packed)
            config.model = vcam::Model::Mono;
        return config;
    }

    void StartCamera(const vcam::Config& config) {
        camera = std::make_unique<vcam::VirtualCamera>(config);
        camera->Start();
    }

    static Finished Run(std::vector<std::string> arguments, const ChildProcess::Environment& changed = {}) {
        arguments.insert(arguments.begin(), program);
        return kolt::test::run(arguments, changed);
    }

    void Start(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), program);
        live = std::make_unique<ChildProcess>(arguments);
    }

    bool FindWindow() {
        return Eventually([this] { return (window = desktop.Find("kolt_live - ")) != 0; });
    }

    /// The patches of known colour, where the picture fills the rectangle of the shot.
    testing::AssertionResult ShowsPatches(const Shot& shot, double left, double top, double width,
                                          double height, int tolerance, bool colour = true) const {
        const auto patches = camera->Patches();
        if (patches.empty())
            return testing::AssertionFailure() << "the camera tells no patches";
        for (const vcam::Patch& patch : patches) {
            const double x = left + (patch.x + patch.width / 2.0) * width / 640;
            const double y = top + (patch.y + patch.height / 2.0) * height / 480;
            Rgb wanted = {patch.red, patch.green, patch.blue};
            const auto column = static_cast<uint32_t>(x);
            const auto row = static_cast<uint32_t>(y);
            if (!colour) // a grey camera sees the brightness alone (ITU-R BT.601)
                wanted.fill(
                    static_cast<uint8_t>(0.299 * patch.red + 0.587 * patch.green + 0.114 * patch.blue));
            if (!shot.Shows(column, row, wanted, tolerance))
                return testing::AssertionFailure() << patch.name << " is not at " << column << ", " << row;
        }
        return testing::AssertionSuccess();
    }

    kolt::test::NetworkNamespace network;
    kolt::test::NamespaceScope inside{network};
    Desktop desktop;
    fs::path out;
    std::unique_ptr<vcam::VirtualCamera> camera;
    std::unique_ptr<ChildProcess> live;
    xcb_window_t window = 0;
};

} // namespace live_test

#endif
