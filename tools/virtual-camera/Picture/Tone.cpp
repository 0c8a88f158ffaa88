#include "Picture/Tone.h"

#include <algorithm>
#include <cmath>

namespace vcam {

namespace {

constexpr double kWhite = 4095.0;
constexpr double kPi = 3.14159265358979323846;
constexpr double kNoiseUnit = 8.0; // steps of 12 bits for each doubling of the light by gain

uint16_t Component(double value) {
    return static_cast<uint16_t>(std::clamp(value, 0.0, kWhite) + 0.5);
}

double Curved(double value, const PictureSettings& s) {
    if (s.gammaCurve == GammaCurve::Power)
        return std::pow(value, std::clamp(s.gamma, 0.1, 10.0));
    // IEC 61966-2-1
    return value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
}

} // namespace

Tone::Tone(const PictureSettings& settings) {
    const double lift = std::pow(10.0, settings.gain / 20.0);
    m_noise = settings.gain > 0 ? kNoiseUnit * (lift - 1.0) : 0; // none at 0, so that tests compare exactly
    MakeLight(settings);
    MakeMatrix(settings);
    MakeFinish(settings);
    for (size_t c = 0; c < 3; ++c) {
        for (size_t value = 0; value < 256; ++value)
            m_both[c][value] = m_finish[m_light[c][value]];
    }
}

void Tone::MakeLight(const PictureSettings& settings) {
    const double lift = settings.exposure / kNominalExposure * std::pow(10.0, settings.gain / 20.0);
    for (size_t c = 0; c < 3; ++c) {
        const double factor = lift * settings.balance[c] / kNeutralBalance;
        for (size_t value = 0; value < 256; ++value)
            m_light[c][value] =
                Component(static_cast<double>(value) * kWhite / 255.0 * factor + settings.blackLevel);
    }
}

// The colour differences Cb and Cr of BT.601 are turned by the hue and stretched by the saturation; luma
// stays.
void Tone::MakeMatrix(const PictureSettings& settings) {
    const double angle = settings.hueEnable ? settings.hue * kPi / 180.0 : 0.0;
    const double stretch = settings.saturationEnable ? std::max(0, settings.saturation) / 100.0 : 1.0;
    m_hasMatrix = angle != 0.0 || stretch != 1.0;
    static constexpr double kLuma[3] = {0.299, 0.587, 0.114};
    static constexpr double kFromCb[3] = {0.0, -0.344136, 1.772};
    static constexpr double kFromCr[3] = {1.402, -0.714136, 0.0};
    const double along = stretch * std::cos(angle);
    const double across = stretch * std::sin(angle);
    for (size_t out = 0; out < 3; ++out) {
        int32_t others = 0;
        for (size_t in = 0; in < 3; ++in) {
            const double cb = ((in == 2 ? 1.0 : 0.0) - kLuma[in]) / 1.772;
            const double cr = ((in == 0 ? 1.0 : 0.0) - kLuma[in]) / 1.402;
            const double turnedCb = along * cb - across * cr;
            const double turnedCr = across * cb + along * cr;
            const double share = kLuma[in] + kFromCb[out] * turnedCb + kFromCr[out] * turnedCr;
            m_matrix[3 * out + in] = static_cast<int32_t>(std::lround(share * 4096));
            others += in == out ? 0 : m_matrix[3 * out + in];
        }
        m_matrix[4 * out] = 4096 - others; // rounding must not tint a grey
    }
}

void Tone::MakeFinish(const PictureSettings& settings) {
    const bool table = settings.lookupEnable && settings.lookup != nullptr;
    m_hasCurve = settings.gammaEnable || table;
    for (size_t value = 0; value < m_finish.size(); ++value) {
        auto out = static_cast<uint16_t>(value);
        if (settings.gammaEnable)
            out = Component(kWhite * Curved(static_cast<double>(value) / kWhite, settings));
        if (table)
            out = std::min((*settings.lookup)[out >> 2], kMostLookupValue);
        m_finish[value] = out;
    }
}

Rgb12 Tone::Mix(const Rgb12& colour) const {
    const auto row = [&](size_t out) {
        const int32_t sum = m_matrix[3 * out] * colour.red + m_matrix[3 * out + 1] * colour.green +
                            m_matrix[3 * out + 2] * colour.blue;
        return static_cast<uint16_t>(std::clamp((sum + 2048) >> 12, 0, 4095));
    };
    return {row(0), row(1), row(2)};
}

Rgb12 ExpectedColour(const PictureSettings& settings, Rgb8 scene) {
    return Tone(settings).Whole(scene);
}

std::array<uint16_t, 256> ToneCurve(const PictureSettings& settings) {
    PictureSettings grey = settings;
    grey.hueEnable = grey.saturationEnable = false;
    const Tone tone(grey);
    std::array<uint16_t, 256> curve{};
    for (size_t value = 0; value < curve.size(); ++value) {
        const auto component = static_cast<uint8_t>(value);
        curve[value] = tone.Whole({component, component, component}).green;
    }
    return curve;
}

} // namespace vcam
