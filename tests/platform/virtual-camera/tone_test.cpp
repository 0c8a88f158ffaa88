// What colours of the scene become under each setting, against numbers worked out apart from the camera's
// tables.
#include "Picture/Tone.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>

namespace vcam {

static bool operator==(const Rgb12& a, const Rgb12& b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

static void PrintTo(const Rgb12& c, std::ostream* out) {
    *out << c.red << ' ' << c.green << ' ' << c.blue;
}

} // namespace vcam

namespace {

using vcam::ExpectedColour;
using vcam::LookupTable;
using vcam::PictureSettings;
using vcam::Rgb12;
using vcam::Rgb8;

using Change = std::function<void(PictureSettings&)>;

// Every scene component in 12 bits when nothing is done to it: 8 bits, spread.
Rgb12 Untouched(Rgb8 c) {
    const auto spread = [](uint8_t v) { return static_cast<uint16_t>(std::lround(v * 4095 / 255.0)); };
    return {spread(c.red), spread(c.green), spread(c.blue)};
}

std::shared_ptr<const LookupTable> Table(const std::function<int(int)>& entry) {
    auto table = std::make_shared<LookupTable>();
    for (int i = 0; i < 1024; ++i)
        (*table)[static_cast<size_t>(i)] = static_cast<uint16_t>(entry(i));
    return table;
}

TEST(Tone, NeutralIsTheSceneItself) {
    const PictureSettings neutral;
    for (int v = 0; v < 256; ++v) {
        const Rgb8 c{static_cast<uint8_t>(v), static_cast<uint8_t>(255 - v), 128};
        ASSERT_EQ(ExpectedColour(neutral, c), Untouched(c)) << v;
        ASSERT_EQ(ExpectedColour(neutral, c).red >> 4, v) << "8 bits come back as they were";
    }
}

struct Row {
    const char* name;
    Change change;
    Rgb8 scene;
    Rgb12 expected;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class ToneRows : public testing::TestWithParam<Row> {};

TEST_P(ToneRows, HaveTheirNumbers) {
    PictureSettings settings;
    GetParam().change(settings);
    EXPECT_EQ(ExpectedColour(settings, GetParam().scene), GetParam().expected);
}

// 100 of 255 is 1605.9 of 4095, 200 is 3211.8, 20 is 321.2.
INSTANTIATE_TEST_SUITE_P(
    Effects, ToneRows,
    testing::Values(
        Row{"ExposureDoubles", [](auto& s) { s.exposure = 8000; }, {100, 20, 0}, {3212, 642, 0}},
        Row{"ExposureHalves", [](auto& s) { s.exposure = 2000; }, {100, 20, 255}, {803, 161, 2048}},
        Row{"ExposureSaturates", [](auto& s) { s.exposure = 16000; }, {100, 64, 20}, {4095, 4095, 1285}},
        Row{"GainOf20dBIsTen", [](auto& s) { s.gain = 20; }, {20, 10, 100}, {3212, 1606, 4095}},
        Row{"BlackLevelLiftsAll", [](auto& s) { s.blackLevel = 100; }, {0, 100, 255}, {100, 1706, 4095}},
        Row{"NegativeBlackLevelCutsAtZero",
            [](auto& s) { s.blackLevel = -400; },
            {20, 100, 255},
            {0, 1206, 3695}},
        Row{"RedGain", [](auto& s) { s.balance[0] = 1536; }, {100, 100, 100}, {2409, 1606, 1606}},
        Row{"GreenGain", [](auto& s) { s.balance[1] = 512; }, {100, 100, 100}, {1606, 803, 1606}},
        Row{"BlueGain", [](auto& s) { s.balance[2] = 2048; }, {100, 100, 100}, {1606, 1606, 3212}},
        Row{"GainOfZeroTakesAColourAway",
            [](auto& s) { s.balance[2] = 0; },
            {100, 100, 100},
            {1606, 1606, 0}},
        Row{"BlackLevelComesAfterBalance",
            [](auto& s) {
                s.balance[0] = 2048;
                s.blackLevel = 100;
            },
            {100, 100, 100},
            {3312, 1706, 1706}},
        Row{"SquareRootGamma",
            [](auto& s) {
                s.gammaEnable = true;
                s.gamma = 0.5;
            },
            {64, 0, 255},
            {2052, 0, 4095}}, // 4095 * sqrt(1028 / 4095)
        Row{"GammaOfTwo",
            [](auto& s) {
                s.gammaEnable = true;
                s.gamma = 2;
            },
            {128, 0, 255},
            {1032, 0, 4095}}, // 4095 * (2056 / 4095)^2
        Row{"GammaWithoutItsSwitch", [](auto& s) { s.gamma = 2; }, {100, 100, 100}, {1606, 1606, 1606}},
        Row{"SrgbCurve",
            [](auto& s) {
                s.gammaEnable = true;
                s.gammaCurve = vcam::GammaCurve::Srgb;
                s.gamma = 3; // not asked
            },
            {128, 0, 255},
            {3017, 0, 4095}}, // 1.055 * 0.50208^(1/2.4) - 0.055 = 0.73672
        Row{"HueWithoutItsSwitch", [](auto& s) { s.hue = 90; }, {200, 20, 20}, {3212, 321, 321}},
        Row{"SaturationWithoutItsSwitch", [](auto& s) { s.saturation = 0; }, {200, 20, 20}, {3212, 321, 321}},
        Row{"NoSaturationIsLuma",
            [](auto& s) {
                s.saturationEnable = true;
                s.saturation = 0;
            },
            {200, 20, 20},
            {1186, 1186, 1186}}, // 321.2 + 0.299 * 2890.6, give or take rounding
        Row{"HueLeavesGreys",
            [](auto& s) {
                s.hueEnable = true;
                s.hue = 77;
            },
            {100, 100, 100},
            {1606, 1606, 1606}},
        Row{"SaturationLeavesGreys",
            [](auto& s) {
                s.saturationEnable = true;
                s.saturation = 333;
            },
            {20, 20, 20},
            {321, 321, 321}},
        Row{"TableInverts",
            [](auto& s) {
                s.lookupEnable = true;
                s.lookup = Table([](int i) { return 4095 - 4 * i; });
            },
            {100, 0, 255},
            {4095 - 4 * 401, 4095, 4095 - 4 * 1023}},
        Row{"TableWithoutItsSwitch",
            [](auto& s) { s.lookup = Table([](int) { return 7; }); },
            {100, 0, 255},
            {1606, 0, 4095}},
        Row{"SwitchWithoutATable", [](auto& s) { s.lookupEnable = true; }, {100, 0, 255}, {1606, 0, 4095}},
        Row{"TableValuesAreCutTo12Bits",
            [](auto& s) {
                s.lookupEnable = true;
                s.lookup = Table([](int) { return 0xFFFF; });
            },
            {100, 0, 255},
            {4095, 4095, 4095}},
        Row{"TableComesAfterGamma",
            [](auto& s) {
                s.gammaEnable = true;
                s.gamma = 0.5;
                s.lookupEnable = true;
                s.lookup = Table([](int i) { return i == 2052 / 4 ? 1000 : 0; });
            },
            {64, 0, 255},
            {1000, 0, 0}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(Tone, IdentityTableTakesTwoBits) {
    PictureSettings settings;
    settings.lookupEnable = true;
    settings.lookup = std::make_shared<LookupTable>(vcam::IdentityLookup());
    for (int v = 0; v < 256; ++v) {
        const auto c = static_cast<uint8_t>(v);
        ASSERT_NEAR(ExpectedColour(settings, {c, c, c}).red, Untouched({c, c, c}).red, 3) << v;
    }
}

// Colour differences of BT.601, turned and stretched; by the definition, not by the camera's matrix.
Rgb12 Turned(Rgb8 scene, double degrees, double stretch) {
    const double r = scene.red * 4095 / 255.0;
    const double g = scene.green * 4095 / 255.0;
    const double b = scene.blue * 4095 / 255.0;
    const double y = 0.299 * r + 0.587 * g + 0.114 * b;
    const double cb = (b - y) / 1.772;
    const double cr = (r - y) / 1.402;
    const double a = degrees * std::acos(-1.0) / 180;
    const double newCb = stretch * (cb * std::cos(a) - cr * std::sin(a));
    const double newCr = stretch * (cb * std::sin(a) + cr * std::cos(a));
    const double red = y + 1.402 * newCr;
    const double blue = y + 1.772 * newCb;
    const double green = (y - 0.299 * red - 0.114 * blue) / 0.587;
    const auto cut = [](double v) { return static_cast<uint16_t>(std::lround(std::clamp(v, 0.0, 4095.0))); };
    return {cut(red), cut(green), cut(blue)};
}

TEST(Tone, HueAndSaturationAsColourDifferences) {
    const Rgb8 colours[] = {{200, 20, 20},  {20, 180, 20}, {20, 20, 200},
                            {200, 200, 20}, {90, 130, 70}, {255, 255, 255}};
    for (const int hue : {-180, -90, -37, 0, 10, 60, 120, 180}) {
        for (const int saturation : {0, 40, 100, 150, 400}) {
            PictureSettings settings;
            settings.hueEnable = settings.saturationEnable = true;
            settings.hue = hue;
            settings.saturation = saturation;
            for (const Rgb8& colour : colours) {
                const Rgb12 got = ExpectedColour(settings, colour);
                const Rgb12 wanted = Turned(colour, hue, saturation / 100.0);
                ASSERT_NEAR(got.red, wanted.red, 3) << hue << ' ' << saturation;
                ASSERT_NEAR(got.green, wanted.green, 3) << hue << ' ' << saturation;
                ASSERT_NEAR(got.blue, wanted.blue, 3) << hue << ' ' << saturation;
            }
        }
    }
}

TEST(Tone, GreysStayGreyUnderEveryHueAndSaturation) {
    for (int hue = -180; hue <= 180; hue += 7) {
        for (const int saturation : {0, 33, 100, 177, 400}) {
            PictureSettings settings;
            settings.hueEnable = settings.saturationEnable = true;
            settings.hue = hue;
            settings.saturation = saturation;
            for (const uint8_t v : {1, 20, 100, 235, 255})
                ASSERT_EQ(ExpectedColour(settings, {v, v, v}), Untouched({v, v, v}))
                    << hue << ' ' << saturation;
        }
    }
}

TEST(Tone, PositiveHueTurnsRedToYellowAndNegativeToMagenta) {
    PictureSettings settings;
    settings.hueEnable = true;
    settings.hue = 45;
    const Rgb12 ahead = ExpectedColour(settings, {200, 20, 20});
    EXPECT_GT(ahead.green, ahead.blue + 500);
    settings.hue = -45;
    const Rgb12 back = ExpectedColour(settings, {200, 20, 20});
    EXPECT_GT(back.blue, back.green + 500);
}

TEST(Tone, EnabledButNeutralChangesNoBit) {
    PictureSettings settings;
    settings.hueEnable = settings.saturationEnable = settings.gammaEnable = settings.sharpnessEnable = true;
    for (int v = 0; v < 256; ++v) {
        const Rgb8 c{static_cast<uint8_t>(v), static_cast<uint8_t>(255 - v), 7};
        ASSERT_EQ(ExpectedColour(settings, c), Untouched(c)) << v;
    }
}

TEST(Tone, NoiseGrowsWithGainFromNone) {
    PictureSettings settings;
    EXPECT_EQ(vcam::Tone(settings).Noise(), 0);
    double last = 0;
    for (const double gain : {1.0, 6.0, 12.0, 24.0}) {
        settings.gain = gain;
        EXPECT_GT(vcam::Tone(settings).Noise(), last);
        last = vcam::Tone(settings).Noise();
    }
}

TEST(Tone, ExtremesStayInRange) {
    for (const double exposure : {0.0, 1e-3, 1e7}) {
        for (const double gain : {-20.0, 0.0, 60.0}) {
            for (const int black : {-100000, 0, 100000}) {
                PictureSettings settings;
                settings.exposure = exposure;
                settings.gain = gain;
                settings.blackLevel = black;
                settings.gammaEnable = true;
                settings.gamma = exposure > 1 ? 1000 : -5;
                settings.hueEnable = settings.saturationEnable = true;
                settings.hue = 100000;
                settings.saturation = black;
                const Rgb12 colour = ExpectedColour(settings, {200, 100, 50});
                EXPECT_LE(std::max({colour.red, colour.green, colour.blue}), 4095);
            }
        }
    }
}

} // namespace
