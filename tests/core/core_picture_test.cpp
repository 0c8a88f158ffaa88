// What reaches the screen.
#include "core/CoreFixture.h"

#include "Common/QLocalCfg.h"
#include "Picture/PixelFormat.h"

#include <QFile>
#include <QImage>

#include <cmath>
#include <ostream>

namespace vcam {

void PrintTo(const PixelFormat& format, std::ostream* out) {
    *out << format.name;
}

} // namespace vcam

namespace core {
namespace {

class Picture : public Fixture, public testing::WithParamInterface<vcam::PixelFormat> {};

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
// drawing in one, for every format that a camera may send.
TEST_P(Picture, PatchesOnTheScreen) {
    const vcam::PixelFormat& format = GetParam();
    const bool colour = format.layout != vcam::Layout::Mono;
    StartDevice([&](vcam::Config& c) {
        c.model = colour ? vcam::Model::Colour : vcam::Model::Mono;
        c.pixelFormat = format.code;
    });
    const Window window(640, 480);
    ASSERT_NO_FATAL_FAILURE(Stream());
    EXPECT_EQ(camera->GetPixelType(), static_cast<OvGvspPixelType>(format.code));
    EXPECT_GE(camera->GetFrameSize(), format.BytesFor(size_t{640} * 480)) << "a frame has room";
    camera->SetBayerInterpolation(1);
    camera->SetPlayWnd(window.Id());
    ASSERT_TRUE(WaitForDrawn(3));
    const auto patches = device->Patches();
    ASSERT_GE(patches.size(), 3u);
    for (const vcam::Patch& patch : patches) {
        const int x = static_cast<int>(patch.x + patch.width / 2);
        const int y = static_cast<int>(patch.y + patch.height / 2);
        EXPECT_TRUE(WaitUntil([&] { return IsNear(window.Pixel(x, y), patch, colour); }))
            << patch.name << " at " << x << "," << y << " is " << std::hex << window.Pixel(x, y)
            << " and not " << static_cast<int>(patch.red) << " " << static_cast<int>(patch.green) << " "
            << static_cast<int>(patch.blue);
    }
    EXPECT_EQ(camera->GetCounters().drawsRefused, 0);
}

// The snapshot of a frame in any format opens in another program.
TEST_P(Picture, SnapshotsReadBack) {
    const vcam::PixelFormat& format = GetParam();
    const bool colour = format.layout != vcam::Layout::Mono;
    StartDevice([&](vcam::Config& c) {
        c.model = colour ? vcam::Model::Colour : vcam::Model::Mono;
        c.pixelFormat = format.code;
    });
    QLocalCfg::Instance()->SetDataOutputFolder(folder.path());
    QLocalCfg::Instance()->SetImgQuality(100);
    ASSERT_NO_FATAL_FAILURE(Stream());
    ASSERT_TRUE(WaitForFrames(2));
    ASSERT_TRUE(WaitUntil([&] { return camera->SaveCurrentFrame() == 0; }));
    const QByteArray raw = folder.filePath("a.raw").toUtf8();
    ASSERT_EQ(camera->SnapRawData(raw.constData()), 0);
    EXPECT_EQ(QFile(raw).size(), static_cast<qint64>(camera->GetFrameSize()));
    for (const int type : {0, 1}) {
        const QByteArray path = folder.filePath(type == 0 ? "a.bmp" : "a.jpg").toUtf8();
        ASSERT_EQ(camera->SnapPicture(path.constData(), type), 0);
        const QImage image(QString::fromUtf8(path));
        ASSERT_EQ(image.size(), QSize(640, 480));
        for (const vcam::Patch& patch : device->Patches()) {
            const QRgb pixel = image.pixel(static_cast<int>(patch.x + patch.width / 2),
                                           static_cast<int>(patch.y + patch.height / 2));
            EXPECT_TRUE(IsNear(pixel & 0xFFFFFF, patch, colour)) << patch.name << " in " << path.constData();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Picture, testing::ValuesIn(vcam::PixelFormats()),
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
