// What reaches the screen.
#include "core/CoreFixture.h"

#include <cmath>
#include <ostream>

namespace core {
namespace {

struct FormatRow {
    const char* name;
    uint32_t code;
    bool colour;
};

void PrintTo(const FormatRow& row, std::ostream* out) {
    *out << row.name;
}

class Picture : public Fixture, public testing::WithParamInterface<FormatRow> {};

bool IsNear(uint32_t pixel, const vcam::Patch& patch, bool colour) {
    const int red = static_cast<int>(pixel >> 16 & 255);
    const int green = static_cast<int>(pixel >> 8 & 255);
    const int blue = static_cast<int>(pixel & 255);
    constexpr int kTolerance = 12;
    if (colour)
        return std::abs(red - patch.red) <= kTolerance && std::abs(green - patch.green) <= kTolerance &&
               std::abs(blue - patch.blue) <= kTolerance;
    const double luma = 0.299 * patch.red + 0.587 * patch.green + 0.114 * patch.blue;
    return std::abs(red - luma) <= kTolerance && red == green && green == blue;
}

// Every patch of known colour stands on the screen where it belongs: sizes, conversion, channel order and
// drawing in one.
TEST_P(Picture, PatchesOnTheScreen) {
    StartDevice([](vcam::Config& c) { c.pixelFormat = GetParam().code; });
    const Window window(640, 480);
    ASSERT_NO_FATAL_FAILURE(Stream());
    camera->SetBayerInterpolation(1);
    camera->SetPlayWnd(window.Id());
    ASSERT_TRUE(WaitForDrawn(3));
    const auto patches = device->Patches();
    ASSERT_GE(patches.size(), 3u);
    for (const vcam::Patch& patch : patches) {
        const int x = static_cast<int>(patch.x + patch.width / 2);
        const int y = static_cast<int>(patch.y + patch.height / 2);
        EXPECT_TRUE(WaitUntil([&] { return IsNear(window.Pixel(x, y), patch, GetParam().colour); }))
            << patch.name << " at " << x << "," << y << " is " << std::hex << window.Pixel(x, y)
            << " and not " << static_cast<int>(patch.red) << " " << static_cast<int>(patch.green) << " "
            << static_cast<int>(patch.blue);
    }
    EXPECT_EQ(camera->GetCounters().drawsRefused, 0);
}

INSTANTIATE_TEST_SUITE_P(
    All, Picture,
    testing::Values(FormatRow{"Mono8", 0x01080001, false}, FormatRow{"Mono12", 0x01100005, false},
                    FormatRow{"Mono12Packed", 0x010C0006, false}, FormatRow{"BayerRG8", 0x01080009, true},
                    FormatRow{"BayerRG12Packed", 0x010C002B, true}, FormatRow{"RGB8", 0x02180014, true},
                    FormatRow{"UYVY", 0x0210001F, true}, FormatRow{"YUYV", 0x02100032, true}),
    [](const auto& row) { return std::string(row.param.name); });

using View = Fixture;

TEST_F(View, AfterAStopANewWindowShowsTheLastFrame) {
    StartDevice();
    ASSERT_NO_FATAL_FAILURE(Stream());
    {
        const Window first(640, 480);
        camera->SetPlayWnd(first.Id());
        ASSERT_TRUE(WaitForDrawn(2));
        ASSERT_EQ(camera->StopGettingFrame(), 0);
        camera->SetPlayWnd(0);
    }
    const Window second(640, 480);
    camera->SetPlayWnd(second.Id());
    const vcam::Patch patch = device->Patches().front();
    EXPECT_TRUE(WaitUntil([&] {
        return IsNear(second.Pixel(static_cast<int>(patch.x + patch.width / 2),
                                   static_cast<int>(patch.y + patch.height / 2)),
                      patch, false);
    }));
}

TEST_F(View, DisplayOffStopsTheDrawingAlone) {
    ASSERT_NO_FATAL_FAILURE(Stream());
    const Window window(320, 240);
    camera->SetPlayWnd(window.Id());
    ASSERT_TRUE(WaitForDrawn(2));
    camera->SetDisplayMode(10);
    ASSERT_TRUE(WaitUntil([&] {
        const int64_t drawn = camera->GetCounters().displayed;
        const int64_t received = camera->GetRecvFrameNum();
        WaitForFrames(received + 5);
        return camera->GetCounters().displayed == drawn;
    }));
    camera->SetDisplayMode(8);
    EXPECT_TRUE(WaitForDrawn(camera->GetCounters().displayed + 2));
}

} // namespace
} // namespace core
