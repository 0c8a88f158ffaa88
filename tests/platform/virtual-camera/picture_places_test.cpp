// Where places of the scene lie in a picture, and what the automatic functions measure there.
#include "Picture/PicturePlaces.h"
#include "Picture/SceneMeasure.h"
#include "Picture/Tone.h"
#include "Picture/WebScene.h"
#include "picture_rig.h"

#include <cmath>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace {

using namespace kolt::test;
using vcam::PictureSettings;
using vcam::Rect;

struct Row {
    const char* name;
    uint32_t binningHorizontal, binningVertical, offsetX, offsetY, width, height;
    bool reverseX, reverseY;
    Rect place;
    std::string cover, whole; // "x,y wxh"; "-" for none
};

std::string Text(const std::optional<Rect>& rect) {
    if (!rect)
        return "-";
    return std::to_string(rect->x) + ',' + std::to_string(rect->y) + ' ' + std::to_string(rect->width) + 'x' +
           std::to_string(rect->height);
}

TEST(PicturePlaces, FollowRegionBinningAndReversal) {
    constexpr uint32_t kAll = vcam::kEndless;
    const Row rows[] = {
        {"as it is", 1, 1, 0, 0, 320, 240, false, false, {10, 20, 30, 40}, "10,20 30x40", "10,20 30x40"},
        {"in a region", 1, 1, 4, 6, 100, 100, false, false, {10, 20, 30, 40}, "6,14 30x40", "6,14 30x40"},
        {"cut by the region", 1, 1, 20, 30, 100, 100, false, false, {10, 20, 30, 40}, "0,0 20x30", "-"},
        {"cut at the far side", 1, 1, 0, 0, 32, 32, false, false, {10, 20, 30, 40}, "10,20 22x12", "-"},
        {"left of the region", 1, 1, 40, 0, 100, 100, false, false, {10, 20, 30, 40}, "-", "-"},
        {"below the region", 1, 1, 0, 0, 100, 20, false, false, {10, 20, 30, 40}, "-", "-"},
        {"binned", 2, 4, 0, 0, 160, 60, false, false, {10, 20, 30, 40}, "5,5 15x10", "5,5 15x10"},
        {"binned, not on its grid",
         4,
         2,
         0,
         0,
         80,
         120,
         false,
         false,
         {10, 21, 30, 40},
         "2,10 8x21",
         "3,11 7x19"},
        {"less than a binned pixel", 4, 4, 0, 0, 80, 60, false, false, {5, 5, 2, 2}, "1,1 1x1", "-"},
        {"binned in a region",
         2,
         2,
         5,
         10,
         100,
         100,
         false,
         false,
         {10, 20, 30, 40},
         "0,0 15x20",
         "0,0 15x20"},
        {"mirrored", 1, 1, 0, 0, 320, 240, true, true, {10, 20, 30, 40}, "280,180 30x40", "280,180 30x40"},
        {"mirrored in a region",
         1,
         1,
         4,
         6,
         100,
         100,
         true,
         false,
         {10, 20, 30, 40},
         "64,14 30x40",
         "64,14 30x40"},
        {"cut and mirrored", 1, 1, 20, 30, 100, 100, true, true, {10, 20, 30, 40}, "80,70 20x30", "-"},
        {"endless", 1, 1, 4, 0, 100, 77, false, false, {10, 0, 30, kAll}, "6,0 30x77", "6,0 30x77"},
        {"endless and binned",
         2,
         2,
         0,
         3,
         100,
         77,
         true,
         true,
         {10, 0, 30, kAll},
         "80,0 15x77",
         "80,0 15x77"},
    };
    for (const Row& row : rows) {
        PictureSettings s;
        s.binningHorizontal = row.binningHorizontal;
        s.binningVertical = row.binningVertical;
        s.offsetX = row.offsetX;
        s.offsetY = row.offsetY;
        s.width = row.width;
        s.height = row.height;
        s.reverseX = row.reverseX;
        s.reverseY = row.reverseY;
        EXPECT_EQ(Text(vcam::CoverInPicture(s, row.place)), row.cover) << row.name;
        EXPECT_EQ(Text(vcam::WholeInPicture(s, row.place)), row.whole) << row.name;
    }
}

TEST(PicturePlaces, PatchesHidePerRegionPatternAndBorder) {
    PictureSettings settings = Whole(kRgb);
    const auto all = vcam::PatchesInPicture(settings, TheScene()->Patches());
    ASSERT_EQ(all.size(), 8u);
    EXPECT_EQ(all[5].name, "red");
    EXPECT_EQ(all[5].red, 200);
    EXPECT_EQ(all[5].blue, 20);

    PictureSettings cut = settings;
    cut.offsetX = all[1].place.x + 1; // into the second
    cut.width = kWidth - cut.offsetX;
    EXPECT_EQ(vcam::PatchesInPicture(cut, TheScene()->Patches()).size(), 6u);

    PictureSettings pattern = settings;
    pattern.testPattern = vcam::TestPattern::White;
    EXPECT_TRUE(vcam::PatchesInPicture(pattern, TheScene()->Patches()).empty());

    PictureSettings sharp = settings;
    sharp.sharpnessEnable = true;
    sharp.sharpness = 100;
    const auto inner = vcam::PatchesInPicture(sharp, TheScene()->Patches());
    ASSERT_EQ(inner.size(), 8u);
    EXPECT_EQ(inner[0].place.x, all[0].place.x + 1);
    EXPECT_EQ(inner[0].place.height, all[0].place.height - 2);
    EXPECT_EQ(inner[0].red, all[0].red) << "within the border sharpness changes nothing";
}

/* Means for automatic functions. */

const vcam::ScenePatch& PatchNamed(const std::string& name) {
    static const auto patches = TheScene()->Patches();
    for (const vcam::ScenePatch& patch : patches) {
        if (name == patch.name)
            return patch;
    }
    throw std::out_of_range(name);
}

vcam::SceneMeans Means(const PictureSettings& settings, const Rect& area) {
    return vcam::MeasureScene(*TheScene(), settings, area, {0, 16, 1, settings.height});
}

TEST(SceneMeasure, AreaOfOnePatchHasItsColour) {
    const PictureSettings settings = Whole(kRgb);
    for (const vcam::ScenePatch& patch : TheScene()->Patches()) {
        const vcam::SceneMeans means = Means(settings, patch.place);
        const vcam::Rgb12 colour = vcam::ExpectedColour(settings, patch.colour);
        EXPECT_EQ(means.red, colour.red) << patch.name;
        EXPECT_EQ(means.green, colour.green) << patch.name;
        EXPECT_EQ(means.blue, colour.blue) << patch.name;
        EXPECT_NEAR(means.luminance, 0.299 * colour.red + 0.587 * colour.green + 0.114 * colour.blue, 1e-6);
    }
}

TEST(SceneMeasure, AreaCountsInPixelsOfTheWholeSensorAfterBinning) {
    PictureSettings settings = Whole(kRgb);
    settings.binningHorizontal = 2;
    settings.binningVertical = 4;
    settings.offsetX = 6;
    settings.offsetY = 4;
    settings.width = 140;
    settings.height = 50;
    settings.reverseX = true; // no matter: the area belongs to the sensor
    const Rect patch = PatchNamed("magenta").place;
    const Rect area{patch.x / 2 + 1, patch.y / 4 + 1, patch.width / 2 - 2, patch.height / 4 - 2};
    const vcam::SceneMeans means = Means(settings, area);
    EXPECT_EQ(means.red, 3212);
    EXPECT_EQ(means.green, 321);
    EXPECT_EQ(means.blue, 3212);
}

TEST(SceneMeasure, OnlyTheRegionCounts) {
    PictureSettings settings = Whole(kRgb);
    const Rect white = PatchNamed("white").place;
    settings.offsetX = white.x;
    settings.offsetY = white.y;
    settings.width = white.width;
    settings.height = white.height;
    const double bright = 235 * 4095 / 255.0;
    EXPECT_NEAR(Means(settings, {0, 0, kWidth, kHeight}).green, bright, 1) << "cut to the region";
    EXPECT_NEAR(Means(settings, {0, 0, 4, 4}).green, bright, 1) << "beside the region: all of it";
    EXPECT_NEAR(Means(settings, {0, 0, 0, 0}).green, bright, 1) << "empty: all of it";
}

TEST(SceneMeasure, LightFollowsExposureAndGainAlone) {
    PictureSettings settings = Whole(kRgb);
    const Rect grey = PatchNamed("grey").place;
    settings.exposure = 2000;
    EXPECT_NEAR(Means(settings, grey).green, 803, 1);
    EXPECT_NEAR(Means(settings, grey).luminance, 803, 1);
    settings.gain = 6.0206;
    EXPECT_NEAR(Means(settings, grey).green, 1606, 1);
    settings.balance = {2048, 2048, 2048};
    settings.blackLevel = 50;
    settings.gammaEnable = true;
    settings.gamma = 0.5;
    const vcam::SceneMeans means = Means(settings, grey);
    EXPECT_NEAR(means.green, 1606, 1);
    EXPECT_NEAR(means.luminance, std::sqrt((2 * 1605.9 + 50) / 4095) * 4095, 2) << "as it comes out";
}

TEST(SceneMeasure, ALoopOnTheLuminanceFindsTheExposure) {
    PictureSettings settings = Whole(kRgb);
    settings.exposure = 200;
    const double target = 1500;
    for (int frame = 0; frame < 20; ++frame)
        settings.exposure *= target / std::max(1.0, Means(settings, {0, 0, kWidth, kHeight}).luminance);
    EXPECT_NEAR(Means(settings, {0, 0, kWidth, kHeight}).luminance, target, 5);
}

TEST(SceneMeasure, GreyWorldMakesTheMeansEqual) {
    const Rect areas[] = {{0, 0, kWidth, kHeight}, PatchNamed("yellow").place, {20, 100, 60, 20}};
    for (const Rect& area : areas) {
        PictureSettings settings = Whole(kRgb);
        settings.exposure = 1000; // no clipping, which would hide a difference
        settings.balance = vcam::GreyWorldBalance(Means(settings, area));
        EXPECT_EQ(settings.balance[1], vcam::kNeutralBalance);
        // What the picture shows then: the area's light through the new gains.
        const vcam::SceneMeans means = Means(settings, area);
        const double red = means.red * settings.balance[0] / 1024;
        const double blue = means.blue * settings.balance[2] / 1024;
        EXPECT_NEAR(red, means.green, 0.01 * means.green);
        if (settings.balance[2] < vcam::kMostBalance) {
            EXPECT_NEAR(blue, means.green, 0.01 * means.green);
        }
    }
}

TEST(SceneMeasure, GreyWorldKeepsItsLimits) {
    const auto balance = [](double red, double green, double blue) {
        vcam::SceneMeans means;
        means.red = red;
        means.green = green;
        means.blue = blue;
        return vcam::GreyWorldBalance(means);
    };
    using Gains = std::array<uint32_t, 3>;
    EXPECT_EQ(balance(1000, 1000, 1000), (Gains{1024, 1024, 1024}));
    EXPECT_EQ(balance(500, 1000, 2000), (Gains{2048, 1024, 512}));
    EXPECT_EQ(balance(0, 1000, 1), (Gains{4095, 1024, 4095}));
    EXPECT_EQ(balance(4000, 0, 4000), (Gains{1, 1024, 1}));
    EXPECT_EQ(balance(0, 0, 0), (Gains{4095, 1024, 4095}));
}

TEST(SceneMeasure, AWebIsMeasuredLineByLine) {
    const vcam::WebScene web(640);
    PictureSettings settings = Whole(kMono);
    settings.width = 640;
    settings.height = 500;
    const Rect stripe = web.Patches().at(3).place;
    const Rect area{stripe.x, 10, stripe.width, 100};
    const vcam::SceneMeans means = vcam::MeasureScene(web, settings, area, {2, 16, 3, 500});
    EXPECT_NEAR(means.green, 180 * 4095 / 255.0, 1);
    EXPECT_NEAR(means.red, 20 * 4095 / 255.0, 1);
}

TEST(SceneMeasure, FramesLargerThanTheSensorAreMeasuredWhereTheyShowIt) {
    PictureSettings settings = Whole(kMono);
    settings.width = 4 * kWidth;
    settings.height = 4 * kHeight;
    const Rect all{0, 0, settings.width, settings.height};
    EXPECT_GT(Means(settings, all).luminance, 100);
    EXPECT_EQ(Means(settings, {kWidth, kHeight, 10, 10}).luminance, 0);
}

} // namespace
