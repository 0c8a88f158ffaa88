#include "Picture/PicturePlaces.h"

#include "Picture/Tone.h"

#include <algorithm>

namespace vcam {

namespace {

struct Range {
    int64_t from, to; // to is behind the last
};

// `outer`: pixels of the picture that have a part in the range, otherwise those that lie in it. Not cut to
// the picture.
Range InPicture(Range sensor, bool outer, uint32_t binning, uint32_t offset) {
    const int64_t pixels = std::max(1u, binning);
    const int64_t up = pixels - 1;
    const int64_t from = (sensor.from + (outer ? 0 : up)) / pixels;
    const int64_t to = (sensor.to + (outer ? up : 0)) / pixels;
    return {from - offset, to - offset};
}

Range Mirrored(Range range, bool reverse, uint32_t size) {
    return reverse ? Range{size - range.to, size - range.from} : range;
}

std::optional<Rect> RectOf(Range x, Range y) {
    if (x.from >= x.to || y.from >= y.to)
        return std::nullopt;
    return Rect{static_cast<uint32_t>(x.from), static_cast<uint32_t>(y.from),
                static_cast<uint32_t>(x.to - x.from), static_cast<uint32_t>(y.to - y.from)};
}

Range Rows(const Rect& place) {
    return {place.y, place.height == kEndless ? INT64_MAX / 8 : int64_t{place.y} + place.height};
}

Range Cut(Range range, uint32_t size) {
    return {std::max<int64_t>(range.from, 0), std::min<int64_t>(range.to, size)};
}

bool Contains(uint32_t size, Range range) {
    return range.from >= 0 && range.to <= size;
}

} // namespace

std::optional<Rect> CoverInPicture(const PictureSettings& s, const Rect& place) {
    const Range columns{place.x, int64_t{place.x} + place.width};
    const Range x = Cut(InPicture(columns, true, s.binningHorizontal, s.offsetX), s.width);
    const Range y = Cut(InPicture(Rows(place), true, s.binningVertical, s.offsetY), s.height);
    return RectOf(Mirrored(x, s.reverseX, s.width), Mirrored(y, s.reverseY, s.height));
}

std::optional<Rect> WholeInPicture(const PictureSettings& s, const Rect& place) {
    const Range columns{place.x, int64_t{place.x} + place.width};
    const Range x = InPicture(columns, false, s.binningHorizontal, s.offsetX);
    Range y = InPicture(Rows(place), false, s.binningVertical, s.offsetY);
    if (place.height == kEndless)
        y = Cut(y, s.height);
    if (!Contains(s.width, x) || !Contains(s.height, y))
        return std::nullopt;
    return RectOf(Mirrored(x, s.reverseX, s.width), Mirrored(y, s.reverseY, s.height));
}

std::vector<PicturePatch> PatchesInPicture(const PictureSettings& settings,
                                           const std::vector<ScenePatch>& patches) {
    std::vector<PicturePatch> visible;
    if (settings.testPattern != TestPattern::Off)
        return visible;
    const Tone tone(settings);
    const uint32_t border = settings.sharpnessEnable && settings.sharpness > 0 ? 1 : 0;
    for (const ScenePatch& patch : patches) {
        std::optional<Rect> place = WholeInPicture(settings, patch.place);
        if (!place || place->width <= 2 * border || place->height <= 2 * border)
            continue;
        place =
            Rect{place->x + border, place->y + border, place->width - 2 * border, place->height - 2 * border};
        const Rgb12 colour = tone.Whole(patch.colour);
        visible.push_back({patch.name, *place, static_cast<uint8_t>(colour.red >> 4),
                           static_cast<uint8_t>(colour.green >> 4), static_cast<uint8_t>(colour.blue >> 4)});
    }
    return visible;
}

} // namespace vcam
