#include "Geometry.h"

#include <algorithm>
#include <cmath>

namespace kolt::render {

namespace {

constexpr double kLargest = 1e6;

/*
 * Fractions come as 32-bit floats, so a picture coordinate is off by up to one part in 2^24 of the picture.
 * Ties are decided with this margin, far above that error and far below a visible shift; without it, a
 * picture shown at 1:1 from half a pixel on would repeat one column and lose another where the error changes
 * its sign.
 */
constexpr double kTie = 1.0 / 256;

bool isNumber(float value) {
    return std::isfinite(value) && std::fabs(value) <= kLargest;
}

int toInt(double value) {
    return static_cast<int>(std::clamp(value, -2e9, 2e9));
}

/* The whole pixel edge nearest to a fraction of the window. */
double pixelEdge(double fraction, int length) {
    return std::floor(fraction * length + 0.5 - kTie);
}

struct Span {
    double low;
    double high;
};

AxisPlan planAxis(int pictureLength, Span source, int windowLength, Span destination, bool mirrored) {
    AxisPlan plan;
    plan.length = pictureLength;
    plan.mirrored = mirrored;
    const double low = pixelEdge(destination.low, windowLength);
    const double high = pixelEdge(destination.high, windowLength);
    const double extent = high - low;
    if (extent < 1) {
        return plan;
    }
    double origin = source.low * pictureLength;
    double step = (source.high - source.low) * pictureLength / extent;
    // One to one but for the error of the fractions: exactly one to one, whole pixels.
    if (std::fabs(step * extent - extent) < 2 * kTie) {
        step = 1;
        origin = std::floor(origin + 0.5 + kTie);
    }
    // Samples count along the picture; sample 0 stands at `low`, or below `high` when mirrored.
    const double visibleLow = std::max(low, 0.0);
    const double visibleHigh = std::min(high, static_cast<double>(windowLength));
    const double windowFirst = mirrored ? high - visibleHigh : visibleLow - low;
    const double windowEnd = mirrored ? high - visibleLow : visibleHigh - low;
    // Only samples whose centre is inside the picture.
    const double pictureFirst = std::ceil((0 - kTie - origin) / step - 0.5);
    const double pictureEnd = std::ceil((pictureLength - kTie - origin) / step - 0.5);
    const double first = std::max(windowFirst, pictureFirst);
    const double end = std::min(windowEnd, pictureEnd);
    if (end <= first) {
        return plan;
    }
    plan.count = toInt(end - first);
    plan.first = toInt(mirrored ? high - end : low + first);
    plan.origin = origin + first * step;
    plan.step = step;
    return plan;
}

} // namespace

std::optional<Fractions> checkedFractions(const tagVRRectF* rect) {
    if (rect == nullptr || !isNumber(rect->top) || !isNumber(rect->bottom) || !isNumber(rect->left) ||
        !isNumber(rect->right) || !(rect->top < rect->bottom) || !(rect->left < rect->right)) {
        return std::nullopt;
    }
    return Fractions{rect->top, rect->bottom, rect->left, rect->right};
}

std::optional<int> checkedQuarterTurns(const tagVRRotation* record) {
    if (record == nullptr || record->axes == nullptr || record->axisCount == 0) {
        return std::nullopt;
    }
    const tagVRAxis axis = record->axes[0];
    if (axis.x != 0.0F || axis.y != 0.0F || !std::isfinite(axis.z) || axis.z == 0.0F ||
        !std::isfinite(axis.angle)) {
        return std::nullopt;
    }
    const double angle = axis.z > 0 ? axis.angle : -static_cast<double>(axis.angle);
    const double quarters = std::floor(std::fmod(angle, 360.0) / 90.0 + 0.5);
    return (static_cast<int>(quarters) + 8) % 4;
}

int AxisPlan::nearest(int k) const {
    const int pixel = toInt(std::floor(origin + (k + 0.5) * step + kTie));
    return std::clamp(pixel, 0, length - 1);
}

Box Plan::painted() const {
    const AxisPlan& x = transposed ? rows : columns;
    const AxisPlan& y = transposed ? columns : rows;
    return x.count > 0 && y.count > 0 ? Box{x.first, y.first, x.count, y.count} : Box{};
}

Plan makePlan(Size picture, Size window, const View& view) {
    // With u, v running right and down the picture and x, y the window, one quarter turn counter-clockwise
    // gives x = v, y = 1 - u; two give x = 1 - u, y = 1 - v; three give x = 1 - v, y = u.
    const int turns = view.quarterTurns;
    const Span u{view.source.left, view.source.right};
    const Span v{view.source.top, view.source.bottom};
    const Span x{view.destination.left, view.destination.right};
    const Span y{view.destination.top, view.destination.bottom};
    Plan plan;
    plan.transposed = turns % 2 != 0;
    if (plan.transposed) {
        plan.columns = planAxis(picture.width, u, window.height, y, turns == 1);
        plan.rows = planAxis(picture.height, v, window.width, x, turns == 3);
    } else {
        plan.columns = planAxis(picture.width, u, window.width, x, turns == 2);
        plan.rows = planAxis(picture.height, v, window.height, y, turns == 2);
    }
    return plan;
}

int surround(Size window, const Box& inner, Box out[4]) {
    if (inner.empty()) {
        out[0] = Box{0, 0, window.width, window.height};
        return out[0].empty() ? 0 : 1;
    }
    const int bottom = inner.y + inner.height;
    const int right = inner.x + inner.width;
    const Box candidates[4] = {{0, 0, window.width, inner.y},
                               {0, bottom, window.width, window.height - bottom},
                               {0, inner.y, inner.x, inner.height},
                               {right, inner.y, window.width - right, inner.height}};
    int count = 0;
    for (const Box& box : candidates) {
        if (!box.empty()) {
            out[count++] = box;
        }
    }
    return count;
}

} // namespace kolt::render
