// The scene of a line-scan camera: lines go on from frame to frame, none missing, none twice.
#include "Picture/PicturePlaces.h"
#include "Picture/WebScene.h"
#include "picture_rig.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace kolt::test;
using vcam::PictureSettings;

std::shared_ptr<const vcam::WebScene> Web(uint32_t width) {
    return std::make_shared<const vcam::WebScene>(width);
}

PictureSettings Lines(uint32_t width, uint32_t height, uint32_t format = kMono) {
    PictureSettings settings = Whole(format);
    settings.width = width;
    settings.height = height;
    return settings;
}

Picture PaintWeb(const std::shared_ptr<const vcam::WebScene>& web, const PictureSettings& settings,
                 uint32_t phase, uint32_t phases, uint32_t number) {
    vcam::Painter painter(web);
    Picture picture(vcam::PictureBytes(settings));
    painter.Paint(settings, phase, phases, number, picture.data());
    return picture;
}

TEST(WebScene, EachLineCarriesItsNumberOverManyFrames) {
    for (const uint32_t width : {64u, 320u, 2048u}) {
        const auto web = Web(width);
        const PictureSettings settings = Lines(width, 50);
        uint32_t expected = 0;
        for (uint32_t number = 1; number <= 20; ++number) {
            const Picture frame = PaintWeb(web, settings, (number + 5) % 8, 8, number);
            for (uint32_t y = 0; y < settings.height; ++y, ++expected) {
                uint32_t line = 0;
                ASSERT_TRUE(vcam::ReadLineNumber(frame.data() + size_t{y} * width, width, line));
                ASSERT_EQ(line, expected) << "width " << width << " frame " << number << " row " << y;
            }
        }
    }
}

TEST(WebScene, NumbersWrapAt32Bits) {
    const auto web = Web(320);
    const Picture frame = PaintWeb(web, Lines(320, 16), 0, 8, 0x10000001); // begins at 2^32
    uint32_t line = 1;
    ASSERT_TRUE(vcam::ReadLineNumber(frame.data(), 320, line));
    EXPECT_EQ(line, 0u);
}

TEST(WebScene, GreyIsNoNumber) {
    const std::vector<uint8_t> grey(320, 128);
    uint32_t line = 0;
    EXPECT_FALSE(vcam::ReadLineNumber(grey.data(), 320, line));
}

TEST(WebScene, TheCombShowsAMissingLine) {
    const auto web = Web(640);
    const PictureSettings settings = Lines(640, 100);
    const Picture frame = PaintWeb(web, settings, 0, 8, 1);
    const vcam::Rect cell = web->Geometry().CodeCell(0);
    for (uint32_t y = 1; y < settings.height; ++y)
        ASSERT_NE(frame[size_t{y} * 640 + cell.x], frame[size_t{y - 1} * 640 + cell.x]) << y;
}

// The thread's left edge in a row; it is the brightest thing on the cloth.
uint32_t ThreadAt(const Picture& frame, uint32_t width, uint32_t y, const vcam::Rect& cloth) {
    for (uint32_t x = cloth.x; x < cloth.x + cloth.width; ++x) {
        if (frame[size_t{y} * width + x] > 200)
            return x;
    }
    return 0;
}

TEST(WebScene, TheThreadHasNoStepBetweenLinesFramesAndRoundsOfTheRing) {
    const uint32_t width = 1024;
    const auto web = Web(width);
    const vcam::Rect cloth = web->Geometry().ClothPlace();
    for (const uint32_t height : {16u, 100u, 750u}) {
        const PictureSettings settings = Lines(width, height);
        uint32_t last = 0;
        uint32_t least = width;
        uint32_t most = 0;
        for (uint32_t number = 1; number <= 9; ++number) {
            const Picture frame = PaintWeb(web, settings, (number + 6) % 8, 8, number);
            for (uint32_t y = 0; y < height; ++y) {
                const uint32_t x = ThreadAt(frame, width, y, cloth);
                ASSERT_NE(x, 0u) << number << ' ' << y;
                const int step = std::abs(static_cast<int>(x) - static_cast<int>(last));
                // few lines let the thread go at more than a pixel a line
                ASSERT_TRUE(last == 0 || height == 16 || step <= 2) << number << ' ' << y;
                least = std::min(least, x);
                most = std::max(most, x);
                last = x;
            }
        }
        EXPECT_GT(most - least, cloth.width * 9 / 10) << height;
    }
}

TEST(WebScene, MotionGoesDownTheFrame) {
    const auto web = Web(1024);
    const vcam::Rect cloth = web->Geometry().ClothPlace();
    const PictureSettings settings = Lines(1024, 400);
    const Picture frame = PaintWeb(web, settings, 0, 8, 1);
    uint32_t moved = 0;
    for (uint32_t y = 1; y < 400; ++y)
        moved += ThreadAt(frame, 1024, y, cloth) != ThreadAt(frame, 1024, y - 1, cloth) ? 1 : 0;
    EXPECT_GT(moved, 300u);
}

TEST(WebScene, RulerHasATickEveryTenLines) {
    const uint32_t width = 640;
    const auto web = Web(width);
    const vcam::Rect ruler = web->Geometry().RulerPlace();
    const PictureSettings settings = Lines(width, 130);
    for (const uint32_t number : {1u, 2u, 77u}) {
        const Picture frame = PaintWeb(web, settings, 0, 8, number);
        for (uint32_t y = 0; y < settings.height; ++y) {
            const uint32_t line = (number - 1) * settings.height + y;
            ASSERT_EQ(frame[size_t{y} * width + ruler.x] > 200, line % 10 == 0) << line;
        }
    }
}

TEST(WebScene, StripesHaveTheirColoursInEveryFormat) {
    const auto web = Web(640);
    for (const FormatFacts& format : AllFormats()) {
        PictureSettings settings = Lines(640, 40, format.code);
        settings.gammaEnable = true;
        settings.gamma = 0.8;
        const Picture frame = PaintWeb(web, settings, 3, 8, 2);
        const auto patches = vcam::PatchesInPicture(settings, web->Patches());
        ASSERT_EQ(patches.size(), 8u);
        for (const vcam::PicturePatch& patch : patches) {
            EXPECT_EQ(patch.place.height, 40u);
            const Colour colour{double(patch.red), double(patch.green), double(patch.blue)};
            for (uint32_t y = 0; y < 40; ++y) {
                for (uint32_t x = patch.place.x + 1; x + 1 < patch.place.x + patch.place.width; ++x)
                    ASSERT_LE(Difference(ReadPixel(format, frame, 640, x, y), colour), 3.0)
                        << format.name << ' ' << patch.name;
            }
        }
    }
}

TEST(WebScene, StampedFrameEqualsOneThatWasPaintedAnew) {
    const auto web = Web(640);
    for (const int variant : {0, 1, 2, 3}) {
        PictureSettings settings = Lines(640, 120, variant == 3 ? 0x010C0006 : kRgb);
        settings.reverseX = variant == 1;
        if (variant == 2) {
            settings.offsetX = 34;
            settings.width = 400;
            settings.gain = 6;
            settings.sharpnessEnable = true;
            settings.sharpness = 50;
        }
        vcam::Painter painter(web);
        Picture stamped(vcam::PictureBytes(settings));
        painter.Paint(settings, 5, 8, 5, stamped.data());
        painter.Stamp(settings, 5, 8, 13, stamped.data());
        EXPECT_EQ(stamped, PaintWeb(web, settings, 5, 8, 13)) << "variant " << variant;
    }
}

TEST(WebScene, BinnedLinesFollowOneAnotherToo) {
    const auto web = Web(640);
    PictureSettings settings = Lines(640, 60);
    settings.binningVertical = 2;
    uint32_t expected = 0;
    for (uint32_t number = 1; number <= 3; ++number) {
        const Picture frame = PaintWeb(web, settings, number, 8, number);
        for (uint32_t y = 0; y < settings.height; ++y, ++expected) {
            uint32_t pair = 0; // all bits but the last, which is the mean of 0 and 1
            for (uint32_t bit = 1; bit < 32; ++bit) {
                const vcam::Rect cell = web->Geometry().CodeCell(bit);
                pair |= frame[size_t{y} * 640 + cell.x] > 127 ? 1u << (bit - 1) : 0;
            }
            ASSERT_EQ(pair, expected) << number << ' ' << y;
        }
    }
}

TEST(WebScene, FramesOfFewLinesAreNotTakenFromTheLastOne) {
    const auto web = Web(320);
    for (const uint32_t height : {1u, 2u, 3u}) {
        PictureSettings settings = Lines(320, height);
        settings.sharpnessEnable = true;
        settings.sharpness = 50;
        vcam::Painter painter(web);
        Picture frame(vcam::PictureBytes(settings));
        for (uint32_t number = 1; number <= 4; ++number) {
            painter.Paint(settings, number % 4, 4, number, frame.data());
            ASSERT_EQ(frame, PaintWeb(web, settings, number % 4, 4, number)) << height << ' ' << number;
        }
    }
}

TEST(WebScene, FitsEveryWidth) {
    for (const uint32_t width : {64u, 80u, 320u, 640u, 1920u, 2048u, 16384u}) {
        const vcam::WebGeometry geometry(width);
        const vcam::Rect code = geometry.CodePlace();
        const vcam::Rect ruler = geometry.RulerPlace();
        EXPECT_LE(code.x + code.width, ruler.x) << width;
        uint32_t left = ruler.x + ruler.width;
        for (const vcam::ScenePatch& stripe : geometry.Patches()) {
            EXPECT_LE(left, stripe.place.x) << width;
            EXPECT_GE(stripe.place.width, 2u) << width;
            left = stripe.place.x + stripe.place.width;
        }
        EXPECT_LE(left, geometry.ClothPlace().x) << width;
        EXPECT_LE(geometry.ClothPlace().x + geometry.ClothPlace().width, width) << width;
    }
}

} // namespace
