#include "UI/MainWindow/CPreviewZoom.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace {

float Fraction(double value) {
    return static_cast<float>(std::clamp(value, 0.0, 1.0));
}

int Ceiling(double value) {
    return static_cast<int>(std::ceil(value));
}

tagVRRectF Swapped(const tagVRRectF& r) {
    return {r.left, r.right, r.top, r.bottom};
}

// A direction of the picture that is larger than the window: the part that shows the point `fraction` of the
// picture `pixel` pixels from the window's start, moved inside the picture.
std::pair<float, float> PartUnderPointer(double fraction, double pixel, double window, double scaled) {
    double start = fraction - pixel / scaled;
    double end = fraction + (window - pixel) / scaled;
    if (start < 0) {
        end -= start;
        start = 0;
    }
    if (end > 1) {
        start -= end - 1;
        end = 1;
    }
    return {Fraction(start), Fraction(end)};
}

// A direction in which the picture fits: where in the window it stands.
std::pair<float, float> Centred(double window, double scaled) {
    const double start = (1 - scaled / window) * 0.5;
    return {Fraction(start), Fraction(1 - start)};
}

} // namespace

const std::array<float, CPreviewZoom::kLastIndex + 1>& CPreviewZoom::Table() {
    static const std::array<float, kLastIndex + 1> table = [] {
        std::array<float, kLastIndex + 1> t{0.08F, 0.13F, 0.2F, 0.3F,  0.35F, 0.4F,  0.45F, 0.5F,  0.55F,
                                            0.6F,  0.65F, 0.7F, 0.75F, 0.8F,  0.85F, 0.9F,  0.95F, 1.0F};
        for (int i = kIndexOfOne + 1; i <= kLastIndex; ++i)
            t[static_cast<size_t>(i)] = 1.0F + 0.5F * static_cast<float>(i - kIndexOfOne);
        return t;
    }();
    return table;
}

void CPreviewZoom::Reset() {
    m_raw = m_scaled = {0, 0};
    m_source = m_destination = {0, 0, 0, 0};
    m_index = kIndexOfOne;
    m_fit = false;
}

void CPreviewZoom::SetWindow(int width, int height) {
    m_window = {width, height};
}

void CPreviewZoom::SwapRaw() {
    std::swap(m_raw.x, m_raw.y);
}

_ZOOM_OUTCOME_ CPreviewZoom::SetRaw(int width, int height) {
    if (width <= 0 || height <= 0)
        return {};
    if (width == m_raw.x && height == m_raw.y) {
        // Deliberate: at the first step of the table there is nothing to step back to, so the zoom grows by
        // one.
        if (m_index > 0)
            --m_index;
        _ZOOM_OUTCOME_ outcome = ZoomIn(m_window.x / 2.0, m_window.y / 2.0);
        outcome.setDisplayRect = true;
        return outcome;
    }
    m_raw = {width, height};
    return Fit(true);
}

tagVRRectF CPreviewZoom::AspectFit(double width, double height) const {
    const int windowWidth = m_window.x;
    const int windowHeight = m_window.y;
    int shownWidth = windowWidth;
    int shownHeight = static_cast<int>(windowWidth * height / width);
    if (shownHeight > windowHeight) {
        shownHeight = windowHeight;
        shownWidth = static_cast<int>(width * windowHeight / height);
    }
    const double left = std::abs(windowWidth - shownWidth) / 2.0 / windowWidth;
    const double top = std::abs(windowHeight - shownHeight) / 2.0 / windowHeight;
    return {Fraction(top), Fraction(top + static_cast<double>(shownHeight) / windowHeight), Fraction(left),
            Fraction(left + static_cast<double>(shownWidth) / windowWidth)};
}

CPreviewZoom::Pixel CPreviewZoom::DestinationSize() const {
    return {Ceiling((m_destination.right - m_destination.left) * static_cast<float>(m_window.x)),
            Ceiling((m_destination.bottom - m_destination.top) * static_cast<float>(m_window.y))};
}

_ZOOM_OUTCOME_ CPreviewZoom::Fit(bool apply) {
    if (!HasRaw() || !HasWindow())
        return {};
    m_source = {0, 1, 0, 1};
    m_destination = AspectFit(m_raw.x, m_raw.y);
    m_scaled = DestinationSize();
    SetIndexByRate(static_cast<float>(m_scaled.x) / static_cast<float>(m_raw.x));
    m_fit = true;
    return {apply, _ZOOM_STATE_{true, false}};
}

void CPreviewZoom::SetIndexByRate(float rate) {
    const auto& table = Table();
    for (int i = 0; i <= 45; ++i) {
        const auto at = static_cast<size_t>(i);
        if (rate == table[at] || (rate > table[at] && rate < table[at + 1])) {
            m_index = i;
            return;
        }
    }
    if (rate < table.front())
        m_index = 0;
    else if (rate > table.back())
        m_index = kLastIndex;
    // Deliberate: between the last two steps the index stays.
}

CPreviewZoom::Pixel CPreviewZoom::ScaledAt(int index) const {
    const float scale = Table()[static_cast<size_t>(index)];
    return {Ceiling(static_cast<float>(m_raw.x) * scale), Ceiling(static_cast<float>(m_raw.y) * scale)};
}

_ZOOM_OUTCOME_ CPreviewZoom::ZoomIn(double x, double y) {
    if (!HasRaw() || !HasWindow())
        return {};
    ++m_index;
    const bool more = m_index < kLastIndex;
    m_index = std::min(m_index, kLastIndex);
    Generate(x, y);
    return {false, _ZOOM_STATE_{more, true}};
}

_ZOOM_OUTCOME_ CPreviewZoom::ZoomOut(double x, double y) {
    if (!HasRaw() || !HasWindow())
        return {};
    if (FitsWindow(ScaledAt(m_index))) // nothing is smaller than the whole picture
        return {false, _ZOOM_STATE_{true, false}};
    --m_index;
    const bool more = m_index >= 1;
    m_index = std::max(m_index, 0);
    Generate(x, y);
    return {false, _ZOOM_STATE_{true, more}};
}

tagVRRectF CPreviewZoom::SourceOnScreen() const {
    return m_rotation.reversed ? Swapped(m_source) : m_source;
}

void CPreviewZoom::SetSourceOnScreen(const tagVRRectF& source) {
    m_source = m_rotation.reversed ? Swapped(source) : source;
}

void CPreviewZoom::Generate(double x, double y) {
    // The source counts from the picture's own corner, so a pointer over a turned picture is seen from there.
    if (m_rotation.turned && (m_rotation.right || m_rotation.half))
        x = m_window.x - x;
    if (m_rotation.turned && !m_rotation.right)
        y = m_window.y - y;
    tagVRRectF source = SourceOnScreen();
    const double width = m_window.x;
    const double height = m_window.y;
    const double insideX = std::clamp(x - m_destination.left * width, 0.0, width);
    const double insideY = std::clamp(y - m_destination.top * height, 0.0, height);
    const double pointX = source.left + (m_scaled.x > 0 ? insideX / m_scaled.x : 0);
    const double pointY = source.top + (m_scaled.y > 0 ? insideY / m_scaled.y : 0);

    m_scaled = ScaledAt(m_index);
    if (FitsWindow(m_scaled)) {
        const int index = m_index;
        Fit(false);
        m_index = index;
        return;
    }
    source = {0, 1, 0, 1};
    m_destination = {0, 1, 0, 1};
    if (m_scaled.x > m_window.x)
        std::tie(source.left, source.right) = PartUnderPointer(pointX, x, m_window.x, m_scaled.x);
    else
        std::tie(m_destination.left, m_destination.right) = Centred(m_window.x, m_scaled.x);
    if (m_scaled.y > m_window.y)
        std::tie(source.top, source.bottom) = PartUnderPointer(pointY, y, m_window.y, m_scaled.y);
    else
        std::tie(m_destination.top, m_destination.bottom) = Centred(m_window.y, m_scaled.y);
    SetSourceOnScreen(source);
    m_fit = false;
}

void CPreviewZoom::CentreAtActualSize() {
    tagVRRectF source{0, 1, 0, 1};
    m_destination = {0, 1, 0, 1};
    if (m_scaled.x > m_window.x)
        std::tie(source.left, source.right) = Centred(m_scaled.x, m_window.x);
    else
        std::tie(m_destination.left, m_destination.right) = Centred(m_window.x, m_scaled.x);
    if (m_scaled.y > m_window.y)
        std::tie(source.top, source.bottom) = Centred(m_scaled.y, m_window.y);
    else
        std::tie(m_destination.top, m_destination.bottom) = Centred(m_window.y, m_scaled.y);
    SetSourceOnScreen(source);
    m_fit = false;
}

_ZOOM_OUTCOME_ CPreviewZoom::ActualSize() {
    if (!HasRaw() || !HasWindow())
        return {};
    m_index = kIndexOfOne;
    m_scaled = m_raw;
    // Deliberate: a picture smaller than the window fills it.
    if (FitsWindow(m_scaled))
        Fit(false);
    else
        CentreAtActualSize();
    return {true, _ZOOM_STATE_{true, true}};
}

_ZOOM_OUTCOME_ CPreviewZoom::ApplyResize() {
    if (!HasRaw() || !HasWindow())
        return {};
    if (m_fit)
        return Fit(true);
    const tagVRRectF source = SourceOnScreen();
    const double width = (source.right - source.left) * static_cast<double>(m_raw.x);
    const double height = (source.bottom - source.top) * static_cast<double>(m_raw.y);
    if (width < 1 || height < 1)
        return {};
    m_destination = AspectFit(width, height);
    // The same part in a window of another size is another scale: the read-out and the next step start from
    // it.
    const Pixel shown = DestinationSize();
    m_scaled = {Ceiling(shown.x / static_cast<double>(source.right - source.left)),
                Ceiling(shown.y / static_cast<double>(source.bottom - source.top))};
    SetIndexByRate(static_cast<float>(m_scaled.x) / static_cast<float>(m_raw.x));
    return {true, std::nullopt};
}

CPreviewZoom::Extent CPreviewZoom::Move(Extent extent, double by) {
    const double length = extent.end - extent.start;
    const double start = std::clamp(extent.start + by, 0.0, std::max(0.0, 1 - length));
    return {Fraction(start), Fraction(start + length)};
}

void CPreviewZoom::Drag(double dx, double dy) {
    if (m_scaled.x <= 0 || m_scaled.y <= 0)
        return;
    double horizontal = -dx / m_scaled.x;
    double vertical = -dy / m_scaled.y;
    if (m_rotation.turned && (m_rotation.right || m_rotation.half))
        horizontal = -horizontal;
    if (m_rotation.turned && !m_rotation.right)
        vertical = -vertical;
    const tagVRRectF before = SourceOnScreen();
    const Extent x = Move({before.left, before.right}, horizontal);
    const Extent y = Move({before.top, before.bottom}, vertical);
    SetSourceOnScreen({y.start, y.end, x.start, x.end});
}

std::optional<CPreviewZoom::Pixel> CPreviewZoom::PixelAt(int x, int y) const {
    if (!HasRaw() || !HasWindow() || m_scaled.x <= 0 || m_scaled.y <= 0)
        return std::nullopt;
    const double left = m_destination.left * static_cast<double>(m_window.x);
    const double right = m_destination.right * static_cast<double>(m_window.x);
    const double top = m_destination.top * static_cast<double>(m_window.y);
    const double bottom = m_destination.bottom * static_cast<double>(m_window.y);
    if (x < left || x >= right || y < top || y >= bottom)
        return std::nullopt;
    const tagVRRectF source = SourceOnScreen();
    const double inPictureX =
        (x - left + source.left * static_cast<double>(m_scaled.x)) * m_raw.x / m_scaled.x;
    const double inPictureY = (y - top + source.top * static_cast<double>(m_scaled.y)) * m_raw.y / m_scaled.y;
    return Pixel{std::min(static_cast<int>(inPictureX), m_raw.x - 1),
                 std::min(static_cast<int>(inPictureY), m_raw.y - 1)};
}

std::optional<int> CPreviewZoom::Percent() const {
    if (m_scaled.x <= 0 || m_raw.x <= 0)
        return std::nullopt;
    return static_cast<int>(std::lround(static_cast<double>(m_scaled.x) / m_raw.x * 100));
}
