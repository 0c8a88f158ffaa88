// Settings in whole pictures: every pixel format under every effect, Bayer tiles in place, binning, sharpness
// and noise, and frames that are stamped anew.
#include "Picture/PicturePlaces.h"
#include "Picture/WebScene.h"
#include "picture_rig.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <set>

namespace {

using namespace kolt::test;
using vcam::PictureSettings;

struct Effect {
    const char* name;
    std::function<void(PictureSettings&)> apply;
};

const std::vector<Effect>& Effects() {
    static const auto table = [] {
        auto made = std::make_shared<vcam::LookupTable>();
        for (size_t i = 0; i < made->size(); ++i)
            (*made)[i] = static_cast<uint16_t>(4095 - 4 * i);
        return made;
    }();
    static const std::vector<Effect> effects = {
        {"Neutral", [](auto&) {}},
        {"Exposure", [](auto& s) { s.exposure = 1700; }},
        {"BlackLevel", [](auto& s) { s.blackLevel = 500; }},
        {"Balance",
         [](auto& s) {
             s.balance = {1400, 900, 700};
         }},
        {"Hue", [](auto& s) { s.hueEnable = true, s.hue = 70; }},
        {"Saturation", [](auto& s) { s.saturationEnable = true, s.saturation = 40; }},
        {"Gamma", [](auto& s) { s.gammaEnable = true, s.gamma = 0.6; }},
        {"Srgb", [](auto& s) { s.gammaEnable = true, s.gammaCurve = vcam::GammaCurve::Srgb; }},
        {"Lookup", [](auto& s) { s.lookupEnable = true, s.lookup = table; }},
        {"Sharpness", [](auto& s) { s.sharpnessEnable = true, s.sharpness = 60; }},
        {"Binning2x2",
         [](auto& s) {
             s.binningHorizontal = s.binningVertical = 2;
             s.width /= 2, s.height /= 2;
         }},
        {"Binning4x1", [](auto& s) { s.binningHorizontal = 4, s.width /= 4; }},
        {"Binning1x4", [](auto& s) { s.binningVertical = 4, s.height /= 4; }},
        {"Reversed", [](auto& s) { s.reverseX = s.reverseY = true; }},
        {"Region", [](auto& s) { s.offsetX = 33, s.offsetY = 51, s.width = 240, s.height = 100; }},
        {"Hdr",
         [](auto& s) {
             s.hdrEnable = true;
             s.hdr[2] = {2500, 0};
             s = vcam::SettingsOfFrame(s, 6);
         }},
        {"AllTogether",
         [](auto& s) {
             s.binningHorizontal = 2, s.binningVertical = 4;
             s.offsetX = 7, s.offsetY = 3, s.width = 144, s.height = 50;
             s.reverseX = true;
             s.exposure = 3000, s.blackLevel = 60, s.balance = {1200, 1000, 1100};
             s.hueEnable = s.saturationEnable = s.gammaEnable = s.sharpnessEnable = s.lookupEnable = true;
             s.hue = -20, s.saturation = 130, s.gamma = 0.8, s.sharpness = 30;
             s.lookup = table;
         }},
    };
    return effects;
}

class EffectFormats : public testing::TestWithParam<FormatFacts> {};
class SingleComponentFormats : public testing::TestWithParam<FormatFacts> {};

std::vector<FormatFacts> MonoAndBayer() {
    std::vector<FormatFacts> formats;
    for (const FormatFacts& format : AllFormats()) {
        if (format.kind == 'b' || format.kind == 'm')
            formats.push_back(format);
    }
    return formats;
}

// The patch's colour in the decoded picture, for each effect.
TEST_P(EffectFormats, PatchesReadAsExpected) {
    const FormatFacts& format = GetParam();
    const double tolerance = format.kind == 'u' || format.kind == 'y' ? 4.0 : 1.51;
    for (const Effect& effect : Effects()) {
        PictureSettings settings = Whole(format.code);
        effect.apply(settings);
        const Picture picture = Paint(settings);
        const auto patches = vcam::PatchesInPicture(settings, TheScene()->Patches());
        ASSERT_GE(patches.size(), 6u) << effect.name;
        for (const vcam::PicturePatch& patch : patches) {
            const Colour expected{double(patch.red), double(patch.green), double(patch.blue)};
            // YUV shares colours between two pixels, so the patch's edge is left out
            for (uint32_t y = patch.place.y; y < patch.place.y + patch.place.height; ++y) {
                for (uint32_t x = patch.place.x + 1; x + 1 < patch.place.x + patch.place.width; ++x)
                    ASSERT_LE(Difference(ReadPixel(format, picture, settings.width, x, y), expected),
                              tolerance)
                        << effect.name << ' ' << patch.name << " at " << x << ',' << y;
            }
        }
    }
}

// Every pixel of a Bayer or mono picture, against the RGB picture of the same settings: tiles stay in the
// order that the format names, whatever cuts, mirrors and shrinks the picture.
TEST_P(SingleComponentFormats, EachPixelIsThatOfTheColourPicture) {
    const FormatFacts& format = GetParam();
    std::vector<Effect> cuts = Effects();
    for (const int variant : {0, 1, 2, 3, 4, 5, 6, 7}) {
        cuts.push_back({"odd offsets", [variant](auto& s) {
                            s.offsetX = 11 + (variant & 1), s.offsetY = 20 + (variant >> 1 & 1);
                            s.width = 96, s.height = 60;
                            s.reverseX = (variant & 4) != 0, s.reverseY = (variant & 2) != 0;
                        }});
    }
    for (const Effect& cut : cuts) {
        PictureSettings settings = Whole(format.code);
        cut.apply(settings);
        const Picture picture = Paint(settings);
        settings.pixelFormat = kRgb;
        const Picture colours = Paint(settings);
        for (uint32_t y = 0; y < settings.height; ++y) {
            for (uint32_t x = 0; x < settings.width; ++x) {
                const Colour colour = RgbAt(colours, settings, x, y);
                const PixelReading reading = ReadPixel(format, picture, settings.width, x, y);
                // bits beyond 8, and the rounding of luma's weights
                ASSERT_LE(Difference(reading, colour), format.kind == 'm' ? 1.6 : 0.95)
                    << cut.name << " at " << x << ',' << y;
            }
        }
    }
}

TEST_P(EffectFormats, StampedFrameEqualsOneThatWasPaintedAnew) {
    std::vector<Effect> effects = Effects();
    effects.push_back({"Noise", [](auto& s) { s.gain = 12; }});
    effects.push_back({"Noise, reversed and sharpened", [](auto& s) {
                           s.gain = 12;
                           s.reverseX = true;
                           s.sharpnessEnable = true, s.sharpness = 100;
                           s.width -= 32, s.offsetX = 32;
                       }});
    for (const Effect& effect : effects) {
        PictureSettings settings = Whole(GetParam().code);
        effect.apply(settings);
        Picture stamped(vcam::PictureBytes(settings));
        vcam::Painter painter(TheScene());
        painter.Paint(settings, 3, 16, 1234567, stamped.data());
        const Picture before = stamped;
        painter.Stamp(settings, 3, 16, 98760, stamped.data());
        EXPECT_EQ(stamped, Paint(settings, 3, 98760)) << effect.name;
        EXPECT_NE(stamped, before) << effect.name;
    }
}

INSTANTIATE_TEST_SUITE_P(All, EffectFormats, testing::ValuesIn(AllFormats()),
                         [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(All, SingleComponentFormats, testing::ValuesIn(MonoAndBayer()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(Effects, EachChangesThePicture) {
    const Picture neutral = Paint(Whole(kRgb));
    for (size_t i = 1; i < Effects().size(); ++i) {
        PictureSettings settings = Whole(kRgb);
        Effects()[i].apply(settings);
        EXPECT_NE(Paint(settings), neutral) << Effects()[i].name;
    }
}

/* Rows before they are packed, 12 bits a component. */

using Rows = std::vector<std::vector<vcam::Rgb12>>;

Rows RowsOf(const PictureSettings& settings, uint32_t phase = 0) {
    vcam::RowMaker maker(TheScene());
    maker.Prepare(settings);
    maker.Begin(0, settings.width, {phase, 16, 1, settings.height * settings.binningVertical});
    Rows rows;
    for (uint32_t y = 0; y < settings.height; ++y) {
        const vcam::Rgb12* row = maker.Row(y);
        rows.emplace_back(row, row + settings.width);
    }
    return rows;
}

constexpr uint16_t vcam::Rgb12::*kComponents[] = {&vcam::Rgb12::red, &vcam::Rgb12::green, &vcam::Rgb12::blue};

TEST(Binning, IsTheMeanOfItsPixels) {
    const Rows single = RowsOf(Whole(kRgb));
    for (const uint32_t across : {1u, 2u, 4u}) {
        for (const uint32_t down : {1u, 2u, 4u}) {
            PictureSettings settings = Whole(kRgb);
            settings.binningHorizontal = across;
            settings.binningVertical = down;
            settings.offsetX = 5;
            settings.offsetY = 3;
            settings.width = kWidth / across - 8;
            settings.height = kHeight / down - 4;
            const Rows binned = RowsOf(settings);
            for (uint32_t y = 0; y < settings.height; ++y) {
                for (uint32_t x = 0; x < settings.width; ++x) {
                    for (const auto component : kComponents) {
                        double sum = 0;
                        for (uint32_t j = 0; j < down; ++j) {
                            for (uint32_t i = 0; i < across; ++i)
                                sum += single[(y + 3) * down + j][(x + 5) * across + i].*component;
                        }
                        ASSERT_NEAR(binned[y][x].*component, sum / (across * down), 0.51)
                            << across << 'x' << down << " at " << x << ',' << y;
                    }
                }
            }
        }
    }
}

TEST(Binning, MirrorsAfterwards) {
    PictureSettings settings = Whole(kRgb);
    settings.binningHorizontal = settings.binningVertical = 2;
    settings.width = kWidth / 2 - 10;
    settings.height = kHeight / 2 - 6;
    settings.offsetX = 4;
    settings.offsetY = 2;
    const Rows straight = RowsOf(settings);
    settings.reverseX = settings.reverseY = true;
    const Rows mirrored = RowsOf(settings);
    for (uint32_t y = 0; y < settings.height; ++y) {
        for (uint32_t x = 0; x < settings.width; ++x)
            ASSERT_EQ(mirrored[y][x].blue, straight[settings.height - 1 - y][settings.width - 1 - x].blue);
    }
}

TEST(Sharpness, AddsAShareOfTheDifferenceFromTheNeighbours) {
    for (const int32_t sharpness : {0, 10, 50, 100}) {
        PictureSettings settings = Whole(kRgb);
        const Rows soft = RowsOf(settings);
        settings.sharpnessEnable = true;
        settings.sharpness = sharpness;
        const Rows sharp = RowsOf(settings);
        int changed = 0;
        for (uint32_t y = 0; y < kHeight; ++y) {
            for (uint32_t x = 0; x < kWidth; ++x) {
                for (const auto component : kComponents) {
                    const double middle = soft[y][x].*component;
                    const double mean = (soft[y == 0 ? 0 : y - 1][x].*component +
                                         soft[std::min(y + 1, kHeight - 1)][x].*component +
                                         soft[y][x == 0 ? 0 : x - 1].*component +
                                         soft[y][std::min(x + 1, kWidth - 1)].*component) /
                                        4.0;
                    const double wanted =
                        std::clamp(middle + (middle - mean) * sharpness / 100.0, 0.0, 4095.0);
                    // the share is a whole number of 4096ths
                    ASSERT_NEAR(sharp[y][x].*component, wanted, 0.52 + std::abs(middle - mean) / 1024)
                        << sharpness << " at " << x << ',' << y;
                    changed += sharp[y][x].*component != soft[y][x].*component;
                }
            }
        }
        EXPECT_EQ(changed > 1000, sharpness > 0);
    }
}

TEST(Sharpness, NeedsItsSwitch) {
    PictureSettings settings = Whole(kRgb);
    settings.sharpness = 100;
    EXPECT_EQ(Paint(settings), Paint(Whole(kRgb)));
}

// Standard deviation of a plain patch, one component.
double Spread(const Rows& rows, const vcam::Rect& place) {
    double sum = 0;
    double squares = 0;
    for (uint32_t y = place.y; y < place.y + place.height; ++y) {
        for (uint32_t x = place.x; x < place.x + place.width; ++x) {
            sum += rows[y][x].green;
            squares += double{rows[y][x].green * 1.0} * rows[y][x].green;
        }
    }
    const double count = place.width * place.height;
    return std::sqrt(std::max(0.0, squares / count - sum / count * (sum / count)));
}

PictureSettings Noisy(double gain) {
    PictureSettings settings = Whole(kRgb);
    settings.gain = gain;
    settings.exposure = vcam::kNominalExposure / std::pow(10, gain / 20); // as bright as before
    return settings;
}

TEST(Noise, GrowsWithGainAndIsNotThereWithout) {
    const vcam::Rect grey = TheScene()->Geometry().Patches().back().place;
    EXPECT_EQ(Spread(RowsOf(Noisy(0)), grey), 0);
    double last = 0;
    for (const double gain : {3.0, 6.0, 12.0, 20.0}) {
        const double spread = Spread(RowsOf(Noisy(gain)), grey);
        EXPECT_NEAR(spread, 8 * (std::pow(10, gain / 20) - 1), 0.1 * spread + 0.5) << gain;
        EXPECT_GT(spread, last);
        last = spread;
    }
}

TEST(Noise, DiffersFromFrameToFrameAndFromRowToRow) {
    std::set<std::vector<uint16_t>> seen;
    const vcam::Rect grey = TheScene()->Geometry().Patches().back().place;
    size_t rows = 0;
    for (uint32_t phase = 0; phase < 16; ++phase) {
        const Rows frame = RowsOf(Noisy(12), phase);
        for (uint32_t y = grey.y; y < grey.y + grey.height; ++y, ++rows) {
            std::vector<uint16_t> row;
            for (uint32_t x = grey.x; x < grey.x + grey.width; ++x)
                row.push_back(frame[y][x].green);
            seen.insert(row);
        }
    }
    EXPECT_GT(seen.size(), rows * 19 / 20) << "a row may come again, but rarely";
}

TEST(Noise, IsTheSameAgainForTheSamePhase) {
    EXPECT_EQ(Paint(Noisy(9), 5), Paint(Noisy(9), 5));
    EXPECT_NE(Paint(Noisy(9), 5), Paint(Noisy(9), 6));
}

TEST(Noise, NeighboursHaveNothingInCommon) {
    const Rows frame = RowsOf(Noisy(12));
    const vcam::Rect grey = TheScene()->Geometry().Patches().back().place;
    const double level = vcam::ExpectedColour(Noisy(12), {100, 100, 100}).green;
    const auto correlation = [&](uint32_t dx, uint32_t dy) {
        double product = 0;
        double square = 0;
        for (uint32_t y = grey.y; y + dy < grey.y + grey.height; ++y) {
            for (uint32_t x = grey.x; x + dx < grey.x + grey.width; ++x) {
                product += (frame[y][x].green - level) * (frame[y + dy][x + dx].green - level);
                square += std::pow(frame[y][x].green - level, 2);
            }
        }
        return product / square;
    };
    EXPECT_LT(std::abs(correlation(1, 0)), 0.15);
    EXPECT_LT(std::abs(correlation(0, 1)), 0.15);
    EXPECT_LT(std::abs(correlation(1, 1)), 0.15);
}

TEST(Noise, BinningCalmsIt) {
    PictureSettings settings = Noisy(12);
    const vcam::Rect grey = TheScene()->Geometry().Patches().back().place;
    const double single = Spread(RowsOf(settings), grey);
    settings.binningHorizontal = settings.binningVertical = 2;
    settings.width /= 2;
    settings.height /= 2;
    const auto place = vcam::WholeInPicture(settings, grey);
    ASSERT_TRUE(place);
    EXPECT_NEAR(Spread(RowsOf(settings), *place), single / 2, single / 10);
}

TEST(Hdr, FramesFollowTheirSets) {
    PictureSettings settings = Whole(kMono12);
    settings.hdrEnable = true;
    for (uint32_t set = 0; set < 4; ++set)
        settings.hdr[set] = {1000.0 * (set + 1), 0};
    const vcam::Rect grey = TheScene()->Geometry().Patches().back().place;
    for (uint32_t number = 1; number <= 8; ++number) {
        const PictureSettings of = vcam::SettingsOfFrame(settings, number);
        const Picture picture = Paint(of, 0, number);
        const size_t at = (size_t{grey.y + 4} * kWidth + grey.x + 4) * 2;
        const int value = picture[at] + 256 * picture[at + 1];
        EXPECT_NEAR(value, 100 * 4095 / 255.0 * (number % 4 + 1) / 4, 1.5) << number;
    }
}

} // namespace
