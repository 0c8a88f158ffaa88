#include "Picture/Painter.h"

#include "Picture/PicturePlaces.h"
#include "Picture/TestPattern.h"

#include <algorithm>
#include <cstring>

namespace vcam {

namespace {

Moment MomentOf(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number) {
    return {phase, phases, number, settings.height * settings.binningVertical};
}

// With its neighbours that sharpness mixes in, and to even columns, since some formats share bytes between
// two pixels.
Rect Widened(const Rect& place, uint32_t reach, const PictureSettings& settings) {
    const uint32_t left = (place.x - std::min(place.x, reach)) & ~1u;
    const uint32_t right = std::min(settings.width, (place.x + place.width + reach + 1) & ~1u);
    const uint32_t top = place.y - std::min(place.y, reach);
    const uint32_t bottom = std::min(settings.height, place.y + place.height + reach);
    return {left, top, right - left, bottom - top};
}

} // namespace

void Painter::Paint(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number,
                    uint8_t* to) {
    const Moment moment = MomentOf(settings, phase, phases, number);
    if (settings.testPattern != TestPattern::Off) {
        PaintPattern(settings, moment, to);
        return;
    }
    m_rows.Prepare(settings);
    PaintRect(settings, {0, 0, settings.width, settings.height}, moment, to);
}

void Painter::Stamp(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number,
                    uint8_t* to) {
    const Moment moment = MomentOf(settings, phase, phases, number);
    if (settings.testPattern != TestPattern::Off)
        return;
    m_rows.Prepare(settings);
    for (const CounterPlace& counter : m_rows.GetScene().Counters())
        StampCounter(settings, counter, moment, to);
}

// Every `cell` rows of the place look the same; of each cell a pair of rows is painted (two, for Bayer) and
// copied down.
void Painter::StampCounter(const PictureSettings& settings, const CounterPlace& counter, const Moment& moment,
                           uint8_t* to) {
    const std::optional<Rect> cover = CoverInPicture(settings, counter.place);
    const PixelFormat* format = FindPixelFormat(settings.pixelFormat);
    if (!cover || format == nullptr)
        return;
    const Rect place = Widened(*cover, m_rows.Reach(), settings);
    if (counter.cell < 3 || settings.binningVertical != 1 || m_rows.DependsOnPlace()) {
        PaintRect(settings, place, moment, to);
        return;
    }
    const auto cellOf = [&](uint32_t y) {
        const uint32_t row = settings.offsetY + (settings.reverseY ? settings.height - 1 - y : y);
        return (row - counter.place.y) / counter.cell;
    };
    for (uint32_t y = place.y; y < place.y + place.height; ++y) {
        if (y >= place.y + 2 && cellOf(y) == cellOf(y - 2)) {
            uint8_t* here = to + format->BytesFor(size_t{y} * settings.width + place.x);
            const uint8_t* above = to + format->BytesFor(size_t{y - 2} * settings.width + place.x);
            std::memcpy(here, above, format->BytesFor(place.width));
        } else {
            PaintRect(settings, {place.x, y, place.width, 1}, moment, to);
        }
    }
}

void Painter::PaintRect(const PictureSettings& settings, Rect place, const Moment& moment, uint8_t* to) {
    const PixelFormat* format = FindPixelFormat(settings.pixelFormat);
    if (format == nullptr)
        return;
    m_rows.Begin(place.x, place.x + place.width, moment);
    for (uint32_t y = place.y; y < place.y + place.height; ++y) {
        uint8_t* row = to + format->BytesFor(size_t{y} * settings.width + place.x);
        EncodeRow(*format, m_rows.Row(y), place.width, place.x, y, row);
    }
}

void Painter::PaintPattern(const PictureSettings& settings, const Moment& moment, uint8_t* to) {
    const PixelFormat* format = FindPixelFormat(settings.pixelFormat);
    if (format == nullptr)
        return;
    std::vector<Rgb12> row(settings.width);
    const double round = static_cast<double>(moment.phase) / moment.phases;
    for (uint32_t y = 0; y < settings.height; ++y) {
        TestPatternRow(settings, y, 0, settings.width, round, row.data());
        EncodeRow(*format, row.data(), row.size(), 0, y, to + format->BytesFor(size_t{y} * settings.width));
    }
}

} // namespace vcam
