// The test pictures: colours in every format, motion, orientation, exposure, gain, and the stamped frame
// number.
#include "VirtualCamera.h"
#include "picture_rig.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

using namespace kolt::test;
using vcam::Painter;
using vcam::PictureSettings;
Colour ColourOf(const vcam::ScenePatch& patch) {
    return {double(patch.colour.red), double(patch.colour.green), double(patch.colour.blue)};
}

class PictureFormats : public testing::TestWithParam<FormatFacts> {};

TEST_P(PictureFormats, PatchesHaveTheirColours) {
    const FormatFacts& format = GetParam();
    const Picture picture = Paint(Whole(format.code));
    ASSERT_EQ(picture.size(), kWidth * kHeight * ((format.code >> 16) & 0xFF) / 8);
    const double tolerance = format.kind == 'u' || format.kind == 'y' ? 3.0 : 1.01;
    for (const vcam::ScenePatch& patch : TheScene()->Geometry().Patches()) {
        for (uint32_t y = patch.place.y; y < patch.place.y + patch.place.height; ++y) {
            // YUV shares colours between two pixels, so the patch's edge is left out
            for (uint32_t x = patch.place.x + 1; x + 1 < patch.place.x + patch.place.width; ++x) {
                const PixelReading reading = ReadPixel(format, picture, kWidth, x, y);
                ASSERT_LE(Difference(reading, ColourOf(patch)), tolerance)
                    << patch.name << " at " << x << "," << y;
            }
        }
    }
}

TEST_P(PictureFormats, StampedFrameEqualsOneThatWasPaintedAnew) {
    for (const int variant : {0, 1, 2, 3, 4}) {
        PictureSettings settings = Whole(GetParam().code);
        settings.reverseX = (variant & 1) != 0;
        settings.reverseY = (variant & 2) != 0;
        if (variant == 4) { // a region that cuts both counters
            settings.offsetX = 30;
            settings.offsetY = 66;
            settings.width = 64;
            settings.height = 160;
        }
        Picture stamped(vcam::PictureBytes(settings));
        Painter painter(TheScene());
        painter.Paint(settings, 3, 16, 1234567, stamped.data());
        painter.Stamp(settings, 3, 16, 98760, stamped.data());
        EXPECT_EQ(stamped, Paint(settings, 3, 98760)) << "variant " << variant;
    }
}

TEST_P(PictureFormats, AreKnownToTheCamera) {
    const vcam::PixelFormat* format = vcam::FindPixelFormat(GetParam().code);
    ASSERT_NE(format, nullptr);
    EXPECT_STREQ(format->name, GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(All, PictureFormats, testing::ValuesIn(AllFormats()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(Picture, TheCameraHasNoFurtherFormats) {
    EXPECT_EQ(vcam::PixelFormats().size(), AllFormats().size());
    EXPECT_EQ(vcam::FindPixelFormat(0x12345678), nullptr);
}

TEST(Picture, CornersTellTheOrientation) {
    const auto corners = [](bool reverseX, bool reverseY) {
        PictureSettings settings = Whole(kRgb);
        settings.reverseX = reverseX;
        settings.reverseY = reverseY;
        const Picture picture = Paint(settings);
        std::string seen;
        for (const auto& [x, y] :
             {std::pair(3u, 3u), {kWidth - 4, 3u}, {3u, kHeight - 4}, {kWidth - 4, kHeight - 4}}) {
            const Colour c = RgbAt(picture, settings, x, y);
            seen += c.red > 200 && c.green > 200 ? 'Y'
                    : c.red > 200                ? 'R'
                    : c.green > 150              ? 'G'
                    : c.blue > 200               ? 'B'
                                                 : '?';
        }
        return seen;
    };
    EXPECT_EQ(corners(false, false), "RGBY");
    EXPECT_EQ(corners(true, false), "GRYB");
    EXPECT_EQ(corners(false, true), "BYRG");
    EXPECT_EQ(corners(true, true), "YBGR");
}

TEST(Picture, RegionIsCutFromTheSensor) {
    PictureSettings whole = Whole(kRgb);
    const Picture big = Paint(whole);
    PictureSettings region = whole;
    region.offsetX = 64;
    region.offsetY = 96;
    region.width = 128;
    region.height = 64;
    const Picture cut = Paint(region);
    for (uint32_t y = 0; y < region.height; ++y) {
        const auto from = big.begin() + ((y + region.offsetY) * kWidth + region.offsetX) * 3;
        ASSERT_TRUE(std::equal(from, from + region.width * 3, cut.begin() + y * region.width * 3))
            << "row " << y;
    }
}

TEST(Picture, LargerThanTheSensorIsBlackBeyondIt) {
    PictureSettings settings = Whole(kMono);
    settings.width = kWidth + 32;
    settings.height = kHeight + 16;
    const Picture picture = Paint(settings);
    EXPECT_EQ(picture[settings.width - 1], 0);
    EXPECT_EQ(picture[size_t{settings.width} * kHeight + 5], 0);
    EXPECT_NE(picture[5], 0);
}

TEST(Picture, ExposureAndGainBrightenTheSame) {
    PictureSettings dark = Whole(kMono);
    dark.exposure = vcam::kNominalExposure / 2;
    const uint32_t x = TheScene()->Geometry().Patches()[7].place.x + 4; // the grey patch, 100
    const uint32_t y = TheScene()->Geometry().Patches()[7].place.y + 4;
    EXPECT_EQ(Paint(dark)[y * kWidth + x], 50);
    PictureSettings bright = Whole(kMono);
    bright.exposure = vcam::kNominalExposure * 2;
    EXPECT_EQ(Paint(bright)[y * kWidth + x], 200);
    bright.exposure *= 4;
    EXPECT_EQ(Paint(bright)[y * kWidth + x], 255) << "saturates";
}

TEST(Picture, GainBringsNoise) {
    const auto spread = [](double gain) {
        PictureSettings settings = Whole(0x01100005);
        settings.gain = gain;
        settings.exposure = vcam::kNominalExposure / 4;
        const Picture picture = Paint(settings);
        const vcam::Rect place = TheScene()->Geometry().Patches()[7].place;
        double sum = 0, squares = 0, count = 0;
        for (uint32_t y = place.y; y < place.y + place.height; ++y) {
            for (uint32_t x = place.x; x < place.x + place.width; ++x) {
                const size_t at = (y * kWidth + x) * 2;
                const double value = picture[at] + 256.0 * picture[at + 1];
                sum += value;
                squares += value * value;
                ++count;
            }
        }
        const double mean = sum / count;
        return std::pair(mean, squares / count - mean * mean);
    };
    const auto [meanStill, noiseStill] = spread(0);
    const auto [meanSix, noiseSix] = spread(6.0206);
    const auto [meanTwelve, noiseTwelve] = spread(12.0412);
    EXPECT_EQ(noiseStill, 0);
    EXPECT_NEAR(meanSix, 2 * meanStill, 0.05 * meanStill);
    EXPECT_NEAR(meanTwelve, 4 * meanStill, 0.1 * meanStill);
    EXPECT_GT(noiseSix, 10);
    EXPECT_GT(noiseTwelve, 2 * noiseSix);
}

TEST(Picture, BallAndBarMove) {
    const vcam::Rect band = TheScene()->Geometry().MotionBand();
    const auto centre = [&](uint32_t phase) { // of what is orange
        const PictureSettings settings = Whole(kRgb);
        const Picture picture = Paint(settings, phase);
        double x = 0, y = 0, count = 0;
        for (uint32_t row = band.y; row < band.y + band.height; ++row) {
            for (uint32_t column = band.x; column < band.x + band.width; ++column) {
                const Colour c = RgbAt(picture, settings, column, row);
                if (c.red > 200 && c.blue < 60) {
                    x += column;
                    y += row;
                    ++count;
                }
            }
        }
        EXPECT_GT(count, 20);
        return std::pair(x / count, y / count);
    };
    const double middleX = band.x + band.width / 2.0;
    const double middleY = band.y + band.height / 2.0;
    EXPECT_GT(centre(0).first, middleX + 50) << "right";
    EXPECT_GT(centre(4).second, middleY + 5) << "then below: clockwise";
    EXPECT_LT(centre(8).first, middleX - 50) << "then left";
    EXPECT_LT(centre(12).second, middleY - 5) << "then above";
    EXPECT_NE(Paint(Whole(kMono), 1), Paint(Whole(kMono), 2));
}

TEST(Picture, FrameNumberCanBeReadBack) {
    for (const uint32_t number : {0u, 1u, 12345u, 0xFFFFFFFFu, 0x80000001u}) {
        const Picture picture = Paint(Whole(kMono), 0, number);
        uint32_t read = 1;
        ASSERT_TRUE(vcam::ReadFrameNumber(picture.data(), kWidth, kWidth, kHeight, read));
        EXPECT_EQ(read, number);
    }
    const Picture grey(kWidth * kHeight, 128);
    uint32_t read = 0;
    EXPECT_FALSE(vcam::ReadFrameNumber(grey.data(), kWidth, kWidth, kHeight, read));
}

TEST(Picture, DigitsShowTheFrameNumber) {
    const vcam::Rect place = TheScene()->Geometry().CounterPlace();
    const uint32_t scale = TheScene()->Geometry().GlyphScale();
    const Picture picture = Paint(Whole(kMono), 0, 40721);
    const std::string expected = "0000040721";
    for (uint32_t digit = 0; digit < expected.size(); ++digit) {
        for (uint32_t row = 0; row < 7; ++row) {
            for (uint32_t column = 0; column < 5; ++column) {
                const uint32_t x = place.x + (digit * 6 + column) * scale;
                const uint32_t y = place.y + row * scale;
                ASSERT_EQ(picture[y * kWidth + x] > 127, vcam::GlyphInk(expected[digit], column, row))
                    << "digit " << digit;
            }
        }
    }
}

TEST(Picture, TestPatternsAreIndependentOfTheScene) {
    PictureSettings settings = Whole(kMono);
    settings.exposure = 10;
    settings.testPattern = vcam::TestPattern::HorizontalRamp;
    const Picture ramp = Paint(settings);
    EXPECT_EQ(ramp[0], 0);
    EXPECT_NEAR(ramp[kWidth / 2], 127, 1);
    EXPECT_GE(ramp[kWidth - 1], 253);
    settings.testPattern = vcam::TestPattern::VerticalRamp;
    EXPECT_NEAR(Paint(settings)[size_t{kHeight} / 2 * kWidth], 127, 1);
    settings.testPattern = vcam::TestPattern::White;
    EXPECT_EQ(Paint(settings), Picture(kWidth * kHeight, 255));
    settings.testPattern = vcam::TestPattern::Black;
    EXPECT_EQ(Paint(settings), Picture(kWidth * kHeight, 0));
    settings.testPattern = vcam::TestPattern::MovingRamp;
    EXPECT_EQ(Paint(settings, 8)[0], ramp[kWidth / 2]);
    settings.testPattern = vcam::TestPattern::ColourBars;
    settings.pixelFormat = kRgb;
    const Colour third = RgbAt(Paint(settings), settings, kWidth * 5 / 16, 0);
    EXPECT_EQ(third.red, 0);
    EXPECT_EQ(third.green, 255);
    EXPECT_EQ(third.blue, 255);
}

// Nothing overlaps at the smallest and at odd-shaped sensors; a picture of each is kept to be looked at.
TEST(Picture, FitsEverySensor) {
    for (const auto& [width, height] :
         {std::pair(1920u, 1080u), {2448u, 2048u}, {64u, 64u}, {4096u, 64u}, {64u, 4096u}}) {
        const auto scene = std::make_shared<const vcam::AreaScene>(width, height, "VC000001");
        PictureSettings settings = Whole(kRgb);
        settings.width = width;
        settings.height = height;
        Picture picture(vcam::PictureBytes(settings));
        Painter(scene).Paint(settings, 2, 16, 1234567890, picture.data());
        for (const vcam::ScenePatch& patch : scene->Geometry().Patches()) {
            const Colour c = RgbAt(picture, settings, patch.place.x + patch.place.width / 2,
                                   patch.place.y + patch.place.height / 2);
            EXPECT_NEAR(c.red, patch.colour.red, 1) << width << "x" << height << " " << patch.name;
        }
        Picture grey(size_t{width} * height);
        for (size_t i = 0; i < grey.size(); ++i)
            grey[i] = picture[3 * i + 1];
        uint32_t number = 0;
        EXPECT_TRUE(vcam::ReadFrameNumber(grey.data(), width, width, height, number))
            << width << "x" << height;
        EXPECT_EQ(number, 1234567890u);
        const char* out = std::getenv("KOLT_TEST_OUT");
        if (out != nullptr && width >= 1000 && height >= 1000) {
            std::filesystem::create_directories(out);
            std::ofstream file(std::string(out) + "/vcam-" + std::to_string(width) + ".ppm",
                               std::ios::binary);
            file << "P6 " << width << ' ' << height << " 255\n";
            file.write(reinterpret_cast<const char*>(picture.data()),
                       static_cast<std::streamsize>(picture.size()));
        }
    }
}

} // namespace
