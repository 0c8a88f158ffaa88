#include "Picture/Painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <tuple>
#include <utility>

namespace vcam {

std::array<uint16_t, 256> ToneCurve(const PictureSettings& settings) {
    const double factor = settings.exposure / kNominalExposure * std::pow(10.0, settings.gain / 20.0);
    std::array<uint16_t, 256> curve{};
    for (size_t value = 0; value < curve.size(); ++value) {
        const double toned = static_cast<double>(value) * 4095.0 / 255.0 * factor;
        curve[value] = static_cast<uint16_t>(std::min(4095.0, toned + 0.5));
    }
    return curve;
}

void Painter::Prepare(const PictureSettings& settings) {
    if (settings == m_prepared)
        return;
    m_prepared = settings;
    m_curve = ToneCurve(settings);
    // Gain lifts the noise with the picture; at gain 0 there is none, so that a test can compare exactly.
    m_noise =
        settings.gain > 0 ? static_cast<int>(256.0 * 8.0 * (std::pow(10.0, settings.gain / 20.0) - 1.0)) : 0;
    if (m_noise > 0 && m_noiseTable.empty()) {
        std::mt19937 generator(20090);
        std::normal_distribution<double> normal(0.0, 256.0);
        m_noiseTable.resize(size_t{1} << 13);
        for (int16_t& value : m_noiseTable)
            value = static_cast<int16_t>(std::clamp(normal(generator), -1000.0, 1000.0));
    }
}

void Painter::Paint(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number,
                    uint8_t* to) {
    Prepare(settings);
    PaintRect(settings, {0, 0, settings.width, settings.height}, phase, phases, number, to);
}

void Painter::Stamp(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number,
                    uint8_t* to) {
    if (settings.testPattern != TestPattern::Off)
        return;
    Prepare(settings);
    const SceneGeometry& geometry = m_scene->Geometry();
    StampRect(settings, geometry.CounterPlace(), geometry.GlyphScale(), phase, phases, number, to);
    StampRect(settings, geometry.StripPlace(), geometry.StripPlace().height, phase, phases, number, to);
}

// Every `cell` rows of the place look the same; of each cell a pair of rows is painted (two, for Bayer) and
// copied down.
void Painter::StampRect(const PictureSettings& settings, Rect place, uint32_t cell, uint32_t phase,
                        uint32_t phases, uint32_t number, uint8_t* to) {
    // From the sensor to the picture, cut to what the picture shows.
    const int64_t left = int64_t{place.x} - settings.offsetX;
    const int64_t top = int64_t{place.y} - settings.offsetY;
    int64_t x0 = std::max<int64_t>(0, left);
    int64_t x1 = std::min<int64_t>(settings.width, left + place.width);
    int64_t y0 = std::max<int64_t>(0, top);
    int64_t y1 = std::min<int64_t>(settings.height, top + place.height);
    if (x0 >= x1 || y0 >= y1)
        return;
    if (settings.reverseX)
        std::tie(x0, x1) = std::pair(settings.width - x1, settings.width - x0);
    if (settings.reverseY)
        std::tie(y0, y1) = std::pair(settings.height - y1, settings.height - y0);
    // Even columns, since some formats share bytes between two pixels.
    const auto first = static_cast<uint32_t>(x0 & ~int64_t{1});
    const auto width =
        static_cast<uint32_t>(std::min<int64_t>(settings.width, (x1 + 1) & ~int64_t{1})) - first;
    const auto cellOf = [&](int64_t y) {
        return ((settings.reverseY ? settings.height - 1 - y : y) - top) / cell;
    };
    const PixelFormat* format = FindPixelFormat(settings.pixelFormat);
    for (int64_t y = y0; y < y1; ++y) {
        const auto row = static_cast<uint32_t>(y);
        if (y >= y0 + 2 && cellOf(y) == cellOf(y - 2)) {
            uint8_t* here = to + format->BytesFor(size_t{row} * settings.width + first);
            const uint8_t* above = to + format->BytesFor(size_t{row - 2} * settings.width + first);
            std::memcpy(here, above, format->BytesFor(width));
        } else {
            PaintRect(settings, {first, row, width, 1}, phase, phases, number, to);
        }
    }
}

void Painter::PaintRect(const PictureSettings& settings, Rect place, uint32_t phase, uint32_t phases,
                        uint32_t number, uint8_t* to) {
    const PixelFormat* format = FindPixelFormat(settings.pixelFormat);
    if (format == nullptr)
        return;
    const double round = static_cast<double>(phase) / phases;
    m_sceneRow.resize(place.width);
    m_row.resize(place.width);
    for (uint32_t y = place.y; y < place.y + place.height; ++y) {
        if (settings.testPattern == TestPattern::Off) {
            SceneRow(settings, y, place.x, place.x + place.width, round, number);
            if (m_noise > 0)
                AddNoise(settings, y, place.x, phase);
        } else {
            PatternRow(settings, y, place.x, place.x + place.width, round);
        }
        uint8_t* row = to + format->BytesFor(size_t{y} * settings.width + place.x);
        EncodeRow(*format, m_row.data(), place.width, place.x, y, row);
    }
}

void Painter::SceneRow(const PictureSettings& s, uint32_t y, uint32_t x0, uint32_t x1, double phase,
                       uint32_t number) {
    const SceneGeometry& geometry = m_scene->Geometry();
    const uint32_t width = x1 - x0;
    const uint32_t sensorY = s.offsetY + (s.reverseY ? s.height - 1 - y : y);
    const uint32_t sensorX = s.offsetX + (s.reverseX ? s.width - x1 : x0);
    // A frame may be made larger than the sensor on purpose: black then.
    const uint32_t right = std::min(sensorX + width, geometry.Width());
    const uint32_t inside = sensorY < geometry.Height() && right > sensorX ? right - sensorX : 0;
    if (inside > 0)
        m_scene->Row(sensorY, sensorX, right, phase, number, m_sceneRow.data());
    std::fill(m_sceneRow.begin() + inside, m_sceneRow.end(), Rgb8{0, 0, 0});
    for (uint32_t i = 0; i < width; ++i) {
        const Rgb8& c = m_sceneRow[s.reverseX ? width - 1 - i : i];
        m_row[i] = {m_curve[c.red], m_curve[c.green], m_curve[c.blue]};
    }
}

void Painter::PatternRow(const PictureSettings& s, uint32_t y, uint32_t x0, uint32_t x1, double phase) {
    static constexpr Rgb12 kBars[] = {{4095, 4095, 4095}, {4095, 4095, 0}, {0, 4095, 4095}, {0, 4095, 0},
                                      {4095, 0, 4095},    {4095, 0, 0},    {0, 0, 4095},    {0, 0, 0}};
    const auto shift = static_cast<uint32_t>(phase * s.width);
    for (uint32_t x = x0; x < x1; ++x) {
        uint16_t grey = 0;
        switch (s.testPattern) {
        case TestPattern::Off:
        case TestPattern::Black:
            break;
        case TestPattern::White:
            grey = 4095;
            break;
        case TestPattern::HorizontalRamp:
            grey = static_cast<uint16_t>(uint64_t{x} * 4095 / s.width);
            break;
        case TestPattern::VerticalRamp:
            grey = static_cast<uint16_t>(uint64_t{y} * 4095 / s.height);
            break;
        case TestPattern::MovingRamp:
            grey = static_cast<uint16_t>(uint64_t{(x + shift) % s.width} * 4095 / s.width);
            break;
        case TestPattern::ColourBars:
            m_row[x - x0] = kBars[x * 8 / s.width];
            continue;
        }
        m_row[x - x0] = {grey, grey, grey};
    }
}

void Painter::AddNoise(const PictureSettings&, uint32_t y, uint32_t x0, uint32_t phase) {
    const size_t mask = m_noiseTable.size() - 1;
    size_t at = (size_t{y} * 7919 + size_t{phase} * 104729) * 31 + size_t{x0} * 3;
    const auto shaken = [&](uint16_t value) {
        const int moved = value + ((m_noiseTable[at++ & mask] * m_noise) >> 16);
        return static_cast<uint16_t>(std::clamp(moved, 0, 4095));
    };
    for (Rgb12& pixel : m_row)
        pixel = {shaken(pixel.red), shaken(pixel.green), shaken(pixel.blue)};
}

} // namespace vcam
