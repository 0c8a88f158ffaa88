#include "Picture/Tone.h"

#include <algorithm>
#include <cmath>

namespace vcam {

namespace {

constexpr double kWhite = 4095.0;
constexpr double kPi = 3.14159265358979323846;
constexpr double kNoiseUnit = 8.0; // steps of 12 bits for each doubling of the light by gain

uint16_t Component(double value) {
    return static_cast<uint16_t>(std::lround(std::clamp(value, 0.0, kWhite)));
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
    MakeCurve(settings);
    for (size_t c = 0; c < 3; ++c) {
        for (size_t value = 0; value < 256; ++value)
            m_both[c][value] = m_curve[m_light[c][value]];
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
        float others = 0;
        for (size_t in = 0; in < 3; ++in) {
            const double cb = ((in == 2 ? 1.0 : 0.0) - kLuma[in]) / 1.772;
            const double cr = ((in == 0 ? 1.0 : 0.0) - kLuma[in]) / 1.402;
            const double turnedCb = along * cb - across * cr;
            const double turnedCr = across * cb + along * cr;
            const double share = kLuma[in] + kFromCb[out] * turnedCb + kFromCr[out] * turnedCr;
            // 4096ths, so that sums of them are exact.
            m_matrix[3 * out + in] = static_cast<float>(std::round(share * 4096) / 4096);
            others += in == out ? 0 : m_matrix[3 * out + in];
        }
        m_matrix[4 * out] = 1 - others; // rounding must not tint a grey
    }
}

void Tone::MakeCurve(const PictureSettings& settings) {
    const bool table = settings.lookupEnable && settings.lookup != nullptr;
    m_hasCurve = settings.gammaEnable || table;
    for (size_t value = 0; value < m_curve.size(); ++value) {
        auto out = static_cast<uint16_t>(value);
        if (settings.gammaEnable)
            out = Component(kWhite * Curved(static_cast<double>(value) / kWhite, settings));
        if (table)
            out = std::min((*settings.lookup)[out >> 2], kMostLookupValue);
        m_curve[value] = out;
    }
}

Rgb12 Tone::Whole(Rgb8 scene) const {
    Rgb12 c{m_light[0][scene.red], m_light[1][scene.green], m_light[2][scene.blue]};
    if (m_hasMatrix) {
        const auto mixed = [this, light = c](size_t out) {
            return static_cast<uint16_t>(Mixed(&m_matrix[3 * out], light.red, light.green, light.blue));
        };
        c = {mixed(0), mixed(1), mixed(2)};
    }
    return {m_curve[c.red], m_curve[c.green], m_curve[c.blue]};
}

Rgb12 ExpectedColour(const PictureSettings& settings, Rgb8 scene) {
    return Tone(settings).Whole(scene);
}

} // namespace vcam
