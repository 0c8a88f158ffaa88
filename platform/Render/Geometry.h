/*
 * Where the picture stands in the window: rectangles as fractions, quarter turns, and the plan of one drawing
 * made of them. Pure arithmetic, no window system.
 *
 * The source rectangle is a part of the picture in the picture's own orientation, before any turn. The
 * destination rectangle is a part of the window as the viewer sees it. The source fills the destination after
 * the turn; the aspect ratio is the caller's business.
 */
#ifndef KOLT_RENDER_GEOMETRY_H
#define KOLT_RENDER_GEOMETRY_H

#include "Camera/Boundary/OVRender.h"

#include <cstdint>
#include <optional>

namespace kolt::render {

struct Size {
    int width = 0;
    int height = 0;

    bool operator==(const Size& o) const { return width == o.width && height == o.height; }
    bool operator!=(const Size& o) const { return !(*this == o); }
};

struct Box {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool empty() const { return width <= 0 || height <= 0; }
    bool operator==(const Box& o) const {
        return x == o.x && y == o.y && width == o.width && height == o.height;
    }
};

/* Fractions, possibly beyond 0..1. Always finite with top < bottom and left < right. */
struct Fractions {
    double top = 0;
    double bottom = 1;
    double left = 0;
    double right = 1;

    bool operator==(const Fractions& o) const {
        return top == o.top && bottom == o.bottom && left == o.left && right == o.right;
    }
};

/*
 * Nothing for a null pointer, a value that is not finite or beyond +-1e6, and a rectangle that is empty or
 * inverted (mirroring is not part of the contract).
 */
std::optional<Fractions> checkedFractions(const tagVRRectF* rect);

/*
 * The number of quarter turns counter-clockwise, 0 to 3, nearest to the record's angle (half-way angles go to
 * the larger turn). Turns about the axis that points away from the viewer (z < 0) run clockwise. Nothing for
 * a null record or block, a count of 0, an angle that is not finite, and any axis other than the viewer's
 * line of sight.
 */
std::optional<int> checkedQuarterTurns(const tagVRRotation* record);

/* What a port shows, and how. */
struct View {
    Fractions source;
    Fractions destination;
    int quarterTurns = 0;
};

/*
 * One picture axis laid onto a run of window pixels. Sample k (0 <= k < count) covers the picture coordinates
 * [origin + k * step, origin + (k + 1) * step), and every sample's centre lies inside the picture.
 */
struct AxisPlan {
    int first = 0; /* window pixel with the lowest coordinate */
    int count = 0;
    bool mirrored = false; /* window pixel first + k shows sample count - 1 - k */
    double origin = 0;
    double step = 1; /* > 0 */
    int length = 0;  /* of the picture along this axis */

    /* The picture pixel under the centre of sample k. */
    int nearest(int k) const;
    bool operator==(const AxisPlan& o) const {
        return first == o.first && count == o.count && mirrored == o.mirrored && origin == o.origin &&
               step == o.step && length == o.length;
    }
};

struct Plan {
    AxisPlan columns; /* of the picture */
    AxisPlan rows;
    bool transposed = false; /* picture columns run along window columns (a turn of 90 or 270 degrees) */

    /* The window pixels that show the picture; all others are background. */
    Box painted() const;
    bool operator==(const Plan& o) const {
        return columns == o.columns && rows == o.rows && transposed == o.transposed;
    }
};

/* Sizes are positive. */
Plan makePlan(Size picture, Size window, const View& view);

/* Up to four boxes that make up the window without the inner box. Returns their number. */
int surround(Size window, const Box& inner, Box out[4]);

} // namespace kolt::render

#endif
