#include "Picture/WebScene.h"

#include <algorithm>
#include <cmath>

namespace vcam {

namespace {

constexpr uint32_t kBits = 32;
constexpr uint32_t kGlyphCell = 6;
constexpr uint32_t kDigits = 8;
constexpr Rgb8 kWhite{255, 255, 255};
constexpr Rgb8 kBlack{0, 0, 0};
constexpr Rgb8 kRulerGround{24, 28, 40};
constexpr Rgb8 kCloth{96, 88, 72};
constexpr Rgb8 kThread{240, 236, 220};
constexpr Rgb8 kKnot{40, 30, 24};
constexpr uint64_t kKnots = 24;

uint32_t Share(uint32_t whole, uint32_t thousandths) {
    return static_cast<uint32_t>(uint64_t{whole} * thousandths / 1000);
}

// How far `at` lies behind `from` on a circle, at most half of it either way.
int64_t Around(uint64_t at, uint64_t from, uint64_t length) {
    const uint64_t ahead = (at + length - from) % length;
    return ahead * 2 <= length ? static_cast<int64_t>(ahead)
                               : static_cast<int64_t>(ahead) - static_cast<int64_t>(length);
}

} // namespace

Rect WebGeometry::CodePlace() const {
    const uint32_t cell = std::max(1u, m_width / 200);
    return {Share(m_width, 10) / 2 * 2, 0, kBits * cell, kEndless};
}

Rect WebGeometry::CodeCell(uint32_t bit) const {
    const Rect place = CodePlace();
    const uint32_t cell = place.width / kBits;
    return {place.x + (kBits - 1 - bit) * cell, 0, cell, kEndless};
}

uint32_t WebGeometry::GlyphScale() const {
    return std::max(1u, m_width / 640);
}

Rect WebGeometry::RulerPlace() const {
    const Rect code = CodePlace();
    // Narrow sensors have no room for the digits; the ticks stay.
    const uint32_t room =
        m_width < 320 ? Share(m_width, 60) : Share(m_width, 40) + kDigits * kGlyphCell * GlyphScale();
    return {code.x + code.width, 0, room / 2 * 2, kEndless};
}

std::vector<ScenePatch> WebGeometry::Patches() const {
    std::vector<ScenePatch> stripes = SceneGeometry(m_width, 1000).Patches(); // names and colours
    const Rect ruler = RulerPlace();
    const uint32_t pitch = Share(m_width, 40);
    uint32_t left = ruler.x + ruler.width + Share(m_width, 20);
    for (ScenePatch& stripe : stripes) {
        stripe.place = {left, 0, pitch, kEndless};
        left += pitch;
    }
    return stripes;
}

Rect WebGeometry::ClothPlace() const {
    const Rect last = Patches().back().place;
    const uint32_t left = last.x + last.width + Share(m_width, 20);
    const uint32_t right = Share(m_width, 985);
    return {left, 0, right > left ? right - left : 0, kEndless};
}

WebScene::WebScene(uint32_t width)
    : m_geometry(width)
    , m_width(width)
    , m_code(m_geometry.CodePlace())
    , m_ruler(m_geometry.RulerPlace())
    , m_cloth(m_geometry.ClothPlace())
    , m_stripes(m_geometry.Patches()) {}

std::vector<CounterPlace> WebScene::Counters() const {
    return {{{m_code.x, 0, m_code.width + m_ruler.width, kEndless}, 1}};
}

void WebScene::Row(uint32_t y, uint32_t x0, uint32_t x1, const Moment& moment, Rgb8* to) const {
    std::fill(to, to + (x1 - x0), kRulerGround);
    for (const ScenePatch& stripe : m_stripes)
        Span(to, x0, x1, stripe.place.x, stripe.place.x + stripe.place.width, stripe.colour);
    if (x1 > m_cloth.x) {
        const uint64_t length = uint64_t{moment.rows} * moment.phases;
        RowCloth((uint64_t{moment.rows} * moment.phase + y) % length, length, x0, x1, to);
    }
    // Modulo 2^32 as the cells have room for.
    const uint32_t line = (moment.number - 1) * moment.rows + y;
    RowCode(line, x0, x1, to);
    RowRuler(line, x0, x1, to);
}

void WebScene::RowCode(uint32_t line, uint32_t x0, uint32_t x1, Rgb8* to) const {
    const uint32_t cell = m_code.width / kBits;
    uint32_t x = m_code.x;
    for (uint32_t bit = kBits; bit-- > 0; x += cell)
        Span(to, x0, x1, x, x + cell, ((line >> bit) & 1) != 0 ? kWhite : kBlack);
}

void WebScene::RowRuler(uint32_t line, uint32_t x0, uint32_t x1, Rgb8* to) const {
    const uint32_t within = line % 100;
    if (line % 10 == 0) {
        const uint32_t tick = Share(m_width, within == 0 ? 30 : 12);
        Span(to, x0, x1, m_ruler.x, m_ruler.x + std::min(tick, m_ruler.width), kWhite);
    }
    const uint32_t scale = m_geometry.GlyphScale();
    const uint32_t top = 2;
    if (m_width < 320 || within < top || within >= top + 7 * scale)
        return;
    const uint32_t row = (within - top) / scale;
    uint32_t rest = line - within;
    for (uint32_t digit = kDigits; digit-- > 0; rest /= 10) {
        const char character = static_cast<char>('0' + rest % 10);
        const uint32_t left = m_ruler.x + Share(m_width, 35) + digit * kGlyphCell * scale;
        for (uint32_t column = 0; column < 5; ++column) {
            if (GlyphInk(character, column, row))
                Span(to, x0, x1, left + column * scale, left + (column + 1) * scale, kWhite);
        }
    }
}

// The cloth repeats after all phases, so it has no seam there.
void WebScene::RowCloth(uint64_t at, uint64_t length, uint32_t x0, uint32_t x1, Rgb8* to) const {
    const Rect& place = m_cloth;
    Span(to, x0, x1, place.x, place.x + place.width, kCloth);
    if (place.width < 8)
        return;
    const double radius = place.width / 24.0;
    for (uint64_t knot = 0; knot < kKnots; ++knot) {
        const uint64_t centre = length * knot / kKnots;
        const auto away = static_cast<double>(Around(at, centre, length));
        if (std::abs(away) >= radius)
            continue;
        const double half = std::sqrt(radius * radius - away * away);
        const double x =
            place.x + place.width * (0.1 + 0.8 * static_cast<double>(knot * 7 % kKnots) / kKnots);
        Span(to, x0, x1, static_cast<uint32_t>(x - half), static_cast<uint32_t>(x + half) + 1, kKnot);
    }
    // There and back about two widths of the cloth, so that a step of one line is a step of one pixel.
    const uint32_t thickness = std::max(2u, m_width / 400);
    const uint32_t swing = place.width - thickness;
    const uint64_t waves = std::max<uint64_t>(1, (length + swing) / (uint64_t{2} * swing));
    const uint64_t turn = at * waves % length; // of `length`
    const uint64_t there = std::min(turn, length - turn) * 2;
    const auto x = place.x + static_cast<uint32_t>(there * swing / length);
    Span(to, x0, x1, x, x + thickness, kThread);
}

bool ReadLineNumber(const uint8_t* grey, uint32_t width, uint32_t& line) {
    const WebGeometry geometry(width);
    line = 0;
    for (uint32_t bit = 0; bit < kBits; ++bit) {
        const Rect cell = geometry.CodeCell(bit);
        const uint8_t value = grey[cell.x + cell.width / 2];
        if (value > 170)
            line |= 1u << bit;
        else if (value >= 85)
            return false;
    }
    return true;
}

} // namespace vcam
