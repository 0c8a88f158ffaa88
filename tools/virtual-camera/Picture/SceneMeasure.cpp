#include "Picture/SceneMeasure.h"

#include "Picture/Tone.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace vcam {

namespace {

constexpr uint32_t kMostPoints = 64; // in each direction

// The part of the sensor that is both in the area and in the region, or else in the region.
Rect Seen(const PictureSettings& s, const Rect& area) {
    const auto common = [](uint32_t from, uint32_t size, uint32_t otherFrom, uint32_t otherSize) {
        const uint64_t first = std::max(from, otherFrom);
        const uint64_t last = std::min(uint64_t{from} + size, uint64_t{otherFrom} + otherSize);
        return std::pair(static_cast<uint32_t>(first),
                         static_cast<uint32_t>(last > first ? last - first : 0));
    };
    auto [x, width] = common(area.x, area.width, s.offsetX, s.width);
    auto [y, height] = common(area.y, area.height, s.offsetY, s.height);
    if (width == 0 || height == 0)
        std::tie(x, y, width, height) = std::tie(s.offsetX, s.offsetY, s.width, s.height);
    return {x * s.binningHorizontal, y * s.binningVertical, width * s.binningHorizontal,
            height * s.binningVertical};
}

PictureSettings LightAlone(const PictureSettings& settings) {
    PictureSettings plain;
    plain.exposure = settings.exposure;
    plain.gain = settings.gain;
    return plain;
}

} // namespace

SceneMeans MeasureScene(const Scene& scene, const PictureSettings& settings, const Rect& area,
                        const Moment& moment) {
    const Tone tone(settings);
    const Tone light(LightAlone(settings));
    Rect place = Seen(settings, area);
    place.width = std::min(place.width, scene.Width() - std::min(place.x, scene.Width()));
    place.height = std::min(place.height, scene.Height() - std::min(place.y, scene.Height()));
    const uint32_t across = std::min(kMostPoints, place.width);
    const uint32_t down = std::min(kMostPoints, place.height);
    SceneMeans means;
    std::vector<Rgb8> row(place.width);
    for (uint32_t j = 0; j < down; ++j) {
        const auto y = static_cast<uint32_t>((2 * uint64_t{j} + 1) * place.height / (2 * down));
        scene.Row(place.y + y, place.x, place.x + place.width, moment, row.data());
        for (uint32_t i = 0; i < across; ++i) {
            const Rgb8& colour = row[(2 * size_t{i} + 1) * place.width / (2 * across)];
            const Rgb12 raw = light.Whole(colour);
            const Rgb12 out = tone.Whole(colour);
            means.red += raw.red;
            means.green += raw.green;
            means.blue += raw.blue;
            means.luminance += 0.299 * out.red + 0.587 * out.green + 0.114 * out.blue;
        }
    }
    const double points = std::max(1.0, static_cast<double>(across) * down);
    for (double* mean : {&means.red, &means.green, &means.blue, &means.luminance})
        *mean /= points;
    return means;
}

std::array<uint32_t, 3> GreyWorldBalance(const SceneMeans& means) {
    const auto gain = [&means](double mean) {
        if (mean <= 0)
            return kMostBalance;
        const double wanted =
            std::clamp(kNeutralBalance * means.green / mean, 1.0, static_cast<double>(kMostBalance));
        return static_cast<uint32_t>(std::lround(wanted));
    };
    return {gain(means.red), kNeutralBalance, gain(means.blue)};
}

} // namespace vcam
