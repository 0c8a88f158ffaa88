#include "Picture/Scene.h"

#include "VirtualCamera.h"

#include <algorithm>
#include <cmath>

namespace vcam {

namespace {

constexpr uint32_t kGlyphCell = 6; // five columns of ink and a gap
constexpr uint32_t kGlyphRows = 7;
constexpr uint32_t kCounterDigits = 10;
constexpr uint32_t kStripBits = 32;
constexpr Rgb8 kWhite{255, 255, 255};
constexpr Rgb8 kBlack{0, 0, 0};
constexpr Rgb8 kBandGround{24, 28, 40};
constexpr Rgb8 kBall{250, 120, 20};
constexpr Rgb8 kBar{230, 230, 230};
constexpr double kPi = 3.14159265358979323846;

uint32_t Share(uint32_t whole, uint32_t thousandths) {
    return static_cast<uint32_t>(uint64_t{whole} * thousandths / 1000);
}

bool InRows(const Rect& place, uint32_t y) {
    return y >= place.y && y < place.y + place.height;
}

} // namespace

void Span(Rgb8* row, uint32_t x0, uint32_t x1, uint32_t from, uint32_t to, Rgb8 colour) {
    from = std::max(from, x0);
    to = std::min(to, x1);
    for (uint32_t x = from; x < to; ++x)
        row[x - x0] = colour;
}

std::vector<ScenePatch> SceneGeometry::Patches() const {
    struct Named {
        const char* name;
        Rgb8 colour;
    };
    static constexpr Named kPatches[] = {
        {"white", {235, 235, 235}}, {"yellow", {200, 200, 20}},  {"cyan", {20, 200, 200}},
        {"green", {20, 180, 20}},   {"magenta", {200, 20, 200}}, {"red", {200, 20, 20}},
        {"blue", {20, 20, 200}},    {"grey", {100, 100, 100}},
    };
    std::vector<ScenePatch> patches;
    const uint32_t pitch = m_width / 9;
    const uint32_t left = (m_width - 8 * pitch) / 2;
    uint32_t index = 0;
    for (const Named& named : kPatches) {
        const Rect place{left + index * pitch, Share(m_height, 400), pitch, Share(m_height, 140)};
        patches.push_back({named.name, place, named.colour});
        ++index;
    }
    return patches;
}

Rect SceneGeometry::MotionBand() const {
    return {Share(m_width, 60), Share(m_height, 620), Share(m_width, 880), Share(m_height, 260)};
}

uint32_t SceneGeometry::GlyphScale() const {
    return std::max(1u, std::min(m_height / 120, m_width / 160));
}

Rect SceneGeometry::CounterPlace() const {
    // Even numbers, since some pixel formats share bytes between two pixels.
    return {Share(m_width, 60) / 4 * 4, Share(m_height, 270), kCounterDigits * kGlyphCell * GlyphScale(),
            kGlyphRows * GlyphScale()};
}

Rect SceneGeometry::StripPlace() const {
    const uint32_t square = std::max(1u, Share(m_width, 800) / kStripBits);
    const uint32_t left = (m_width - square * kStripBits) / 2 / 4 * 4;
    return {left, Share(m_height, 915), square * kStripBits, std::max(2u, Share(m_height, 50))};
}

Rect SceneGeometry::StripSquare(uint32_t bit) const {
    const Rect strip = StripPlace();
    const uint32_t square = strip.width / kStripBits;
    return {strip.x + (kStripBits - 1 - bit) * square, strip.y, square, strip.height};
}

AreaScene::AreaScene(uint32_t width, uint32_t height, const std::string& label)
    : m_geometry(width, height), m_still(size_t{width} * height) {
    DrawBackground();
    DrawMarks(label);
}

void AreaScene::Fill(Rect place, Rgb8 colour) {
    const uint32_t width = m_geometry.Width();
    const uint32_t right = std::min(place.x + place.width, width);
    const uint32_t bottom = std::min(place.y + place.height, m_geometry.Height());
    for (uint32_t y = place.y; y < bottom; ++y) {
        for (uint32_t x = place.x; x < right; ++x)
            m_still[size_t{y} * width + x] = colour;
    }
}

void AreaScene::Text(uint32_t x, uint32_t y, uint32_t scale, const std::string& text, Rgb8 colour) {
    for (const char character : text) {
        for (uint32_t row = 0; row < kGlyphRows; ++row) {
            for (uint32_t column = 0; column < 5; ++column) {
                if (GlyphInk(character, column, row))
                    Fill({x + column * scale, y + row * scale, scale, scale}, colour);
            }
        }
        x += kGlyphCell * scale;
    }
}

void AreaScene::DrawBackground() {
    const uint32_t width = m_geometry.Width();
    const uint32_t height = m_geometry.Height();
    const uint32_t grid = std::max(8u, width / 24);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            const bool line = x % grid == 0 || y % grid == 0;
            const auto lift = static_cast<uint8_t>(line ? 30 : 0);
            m_still[size_t{y} * width + x] = {static_cast<uint8_t>(40 + Share(60, x * 1000 / width) + lift),
                                              static_cast<uint8_t>(60 + Share(60, y * 1000 / height) + lift),
                                              static_cast<uint8_t>(90 + lift)};
        }
    }
    // The grey wedge, dark to bright.
    const uint32_t left = Share(width, 60);
    const uint32_t right = Share(width, 940);
    for (uint32_t x = left; x < right; ++x) {
        const auto grey = static_cast<uint8_t>((x - left) * 255 / (right - left));
        Fill({x, Share(height, 560), 1, Share(height, 40)}, {grey, grey, grey});
    }
}

void AreaScene::DrawMarks(const std::string& label) {
    const uint32_t width = m_geometry.Width();
    const uint32_t height = m_geometry.Height();
    const uint32_t mark = std::max(4u, std::min(width, height) / 14);
    Fill({0, 0, mark, mark}, {220, 30, 30});
    Fill({width - mark, 0, mark, mark}, {30, 200, 30});
    Fill({0, height - mark, mark, mark}, {40, 60, 230});
    Fill({width - mark, height - mark, mark, mark}, {220, 210, 30});

    // Arrow, then the word.
    const uint32_t tip = Share(height, 30);
    const uint32_t arrow = Share(height, 90);
    for (uint32_t row = 0; row < arrow; ++row)
        Fill({width / 2 - row, tip + row, 2 * row + 1, 1}, kWhite);
    const uint32_t scale = m_geometry.GlyphScale();
    Text(width / 2 - 9 * scale * 2, tip + arrow + 2 * scale, scale * 2, "TOP", kWhite);

    const Rect counter = m_geometry.CounterPlace();
    Fill({counter.x - std::min(counter.x, scale), counter.y - scale, counter.width + scale,
          counter.height + 2 * scale},
         kBlack);
    const auto letters = static_cast<uint32_t>(label.size());
    const uint32_t labelWidth = letters * kGlyphCell * scale;
    const uint32_t edge = Share(width, 940);
    Text(edge > labelWidth ? edge - labelWidth : 0, counter.y, scale, label, kWhite);

    for (const ScenePatch& patch : m_geometry.Patches())
        Fill(patch.place, patch.colour);
    Fill(m_geometry.MotionBand(), kBandGround);
}

std::vector<CounterPlace> AreaScene::Counters() const {
    const Rect strip = m_geometry.StripPlace();
    return {{m_geometry.CounterPlace(), m_geometry.GlyphScale()}, {strip, strip.height}};
}

void AreaScene::Row(uint32_t y, uint32_t x0, uint32_t x1, const Moment& moment, Rgb8* to) const {
    const Rgb8* still = m_still.data() + size_t{y} * m_geometry.Width();
    std::copy(still + x0, still + x1, to);
    if (InRows(m_geometry.MotionBand(), y))
        RowMotion(y, x0, x1, static_cast<double>(moment.phase) / moment.phases, to);
    if (InRows(m_geometry.CounterPlace(), y))
        RowCounter(y, x0, x1, moment.number, to);
    if (InRows(m_geometry.StripPlace(), y))
        RowStrip(y, x0, x1, moment.number, to);
}

void AreaScene::RowMotion(uint32_t y, uint32_t x0, uint32_t x1, double phase, Rgb8* to) const {
    const Rect band = m_geometry.MotionBand();
    const uint32_t barWidth = std::max(2u, band.width / 100);
    const auto bar = band.x + static_cast<uint32_t>(phase * (band.width - barWidth));
    Span(to, x0, x1, bar, bar + barWidth, kBar);

    const double radius = band.height * 0.18;
    const double angle = 2 * kPi * phase;
    const double centreX = band.x + band.width / 2.0 + std::cos(angle) * (band.width / 2.0 - radius);
    const double centreY = band.y + band.height / 2.0 + std::sin(angle) * (band.height / 2.0 - radius);
    const double above = y + 0.5 - centreY;
    if (std::abs(above) >= radius)
        return;
    const double half = std::sqrt(radius * radius - above * above);
    Span(to, x0, x1, static_cast<uint32_t>(std::max(0.0, centreX - half)),
         static_cast<uint32_t>(centreX + half), kBall);
}

void AreaScene::RowCounter(uint32_t y, uint32_t x0, uint32_t x1, uint32_t number, Rgb8* to) const {
    const Rect place = m_geometry.CounterPlace();
    const uint32_t scale = m_geometry.GlyphScale();
    const uint32_t row = (y - place.y) / scale;
    Span(to, x0, x1, place.x, place.x + place.width, kBlack);
    uint32_t rest = number;
    for (uint32_t digit = kCounterDigits; digit-- > 0; rest /= 10) {
        const char character = static_cast<char>('0' + rest % 10);
        const uint32_t left = place.x + digit * kGlyphCell * scale;
        for (uint32_t column = 0; column < 5; ++column) {
            if (GlyphInk(character, column, row))
                Span(to, x0, x1, left + column * scale, left + (column + 1) * scale, kWhite);
        }
    }
}

void AreaScene::RowStrip(uint32_t, uint32_t x0, uint32_t x1, uint32_t number, Rgb8* to) const {
    for (uint32_t bit = 0; bit < kStripBits; ++bit) {
        const Rect square = m_geometry.StripSquare(bit);
        Span(to, x0, x1, square.x, square.x + square.width, ((number >> bit) & 1) != 0 ? kWhite : kBlack);
    }
}

bool ReadFrameNumber(const uint8_t* grey, uint32_t stride, uint32_t width, uint32_t height,
                     uint32_t& number) {
    const SceneGeometry geometry(width, height);
    number = 0;
    for (uint32_t bit = 0; bit < kStripBits; ++bit) {
        const Rect square = geometry.StripSquare(bit);
        if (square.x + square.width > width || square.y + square.height > height)
            return false;
        const uint8_t value =
            grey[size_t{square.y + square.height / 2} * stride + square.x + square.width / 2];
        if (value > 170)
            number |= 1u << bit;
        else if (value >= 85)
            return false;
    }
    return true;
}

} // namespace vcam
