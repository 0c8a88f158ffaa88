#include "Geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kolt::render {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

tagVRRectF rect(float top, float bottom, float left, float right) {
    return {top, bottom, left, right};
}

TEST(Fractions, AreTakenAsGiven) {
    const tagVRRectF r = rect(0.25F, 0.5F, -1.5F, 2.0F);
    const auto checked = checkedFractions(&r);
    ASSERT_TRUE(checked);
    EXPECT_EQ(checked->top, 0.25);
    EXPECT_EQ(checked->bottom, 0.5);
    EXPECT_EQ(checked->left, -1.5);
    EXPECT_EQ(checked->right, 2.0);
}

TEST(Fractions, RefusesWhatIsNoRectangle) {
    EXPECT_FALSE(checkedFractions(nullptr));
    const tagVRRectF bad[] = {
        rect(0, 0, 0, 1),         rect(0, 1, 0, 0),          rect(0.5F, 0.25F, 0, 1),
        rect(0, 1, 1, 0),         rect(kNan, 1, 0, 1),       rect(0, kNan, 0, 1),
        rect(0, 1, kNan, 1),      rect(0, 1, 0, kNan),       rect(-kInfinity, 1, 0, 1),
        rect(0, kInfinity, 0, 1), rect(0, 1, -kInfinity, 1), rect(0, 1, 0, kInfinity),
        rect(0, 2e6F, 0, 1),      rect(0, 1, -2e6F, 1),      rect(0, 0, 0, 0),
    };
    for (const tagVRRectF& r : bad) {
        EXPECT_FALSE(checkedFractions(&r)) << r.top << " " << r.bottom << " " << r.left << " " << r.right;
    }
}

struct Angle {
    float degrees;
    int quarters;
};

class Turns : public testing::TestWithParam<Angle> {};

TEST_P(Turns, AreCountedCounterClockwise) {
    tagVRRotation record{};
    record.axis = {0, 0, 1, GetParam().degrees};
    record.axes = &record.axis;
    record.axisCount = 1;
    EXPECT_EQ(checkedQuarterTurns(&record), GetParam().quarters);
    record.axis.z = -1;
    EXPECT_EQ(checkedQuarterTurns(&record), (4 - GetParam().quarters) % 4) << "about the opposite axis";
}

INSTANTIATE_TEST_SUITE_P(Angles, Turns,
                         testing::Values(Angle{0, 0}, Angle{90, 1}, Angle{180, 2}, Angle{270, 3},
                                         Angle{360, 0}, Angle{450, 1}, Angle{630, 3}, Angle{-90, 3},
                                         Angle{-180, 2}, Angle{-270, 1}, Angle{-360, 0}, Angle{-450, 3},
                                         Angle{44, 0}, Angle{46, 1}, Angle{-44, 0}, Angle{-46, 3},
                                         Angle{224, 2}, Angle{226, 3}, Angle{359, 0}, Angle{90.0F * 1001, 1},
                                         Angle{-90.0F * 1001, 3}));

TEST(TurnsRecord, HalfWayGoesToTheLargerTurn) {
    tagVRRotation record{};
    record.axes = &record.axis;
    record.axisCount = 1;
    record.axis = {0, 0, 1, 45};
    EXPECT_EQ(checkedQuarterTurns(&record), 1);
    record.axis.angle = -45;
    EXPECT_EQ(checkedQuarterTurns(&record), 0);
}

TEST(TurnsRecord, MayPointAtABlockOfTheCallers) {
    const tagVRAxis axis{0, 0, 1, 180};
    tagVRRotation record{};
    record.axes = &axis;
    record.axisCount = 1;
    record.axis.angle = 90;
    EXPECT_EQ(checkedQuarterTurns(&record), 2);
}

TEST(TurnsRecord, RefusesWhatIsNoTurnInThePlane) {
    EXPECT_FALSE(checkedQuarterTurns(nullptr));
    tagVRRotation record{};
    record.axis = {0, 0, 1, 90};
    record.axisCount = 1;
    EXPECT_FALSE(checkedQuarterTurns(&record)) << "no block";
    record.axes = &record.axis;
    record.axisCount = 0;
    EXPECT_FALSE(checkedQuarterTurns(&record)) << "no axis";
    record.axisCount = 1;
    const tagVRAxis bad[] = {{1, 0, 0, 90},    {0, 1, 0, 90},        {0, 0, 0, 90},        {0, 1, 1, 90},
                             {0, 0, kNan, 90}, {0, 0, 1, kNan},      {0, 0, 1, kInfinity}, {kNan, 0, 1, 90},
                             {0, kNan, 1, 90}, {0, 0, kInfinity, 90}};
    for (const tagVRAxis& axis : bad) {
        record.axis = axis;
        EXPECT_FALSE(checkedQuarterTurns(&record))
            << axis.x << " " << axis.y << " " << axis.z << " " << axis.angle;
    }
}

TEST(Plan, FillsTheWindow) {
    const Plan plan = makePlan({640, 480}, {320, 240}, {});
    EXPECT_EQ(plan.painted(), (Box{0, 0, 320, 240}));
    EXPECT_FALSE(plan.transposed);
    EXPECT_EQ(plan.columns.step, 2);
    EXPECT_EQ(plan.columns.origin, 0);
    EXPECT_EQ(plan.rows.step, 2);
}

TEST(Plan, SwapsTheAxesForQuarterTurns) {
    View view;
    view.quarterTurns = 1;
    Plan plan = makePlan({640, 480}, {240, 320}, view);
    EXPECT_TRUE(plan.transposed);
    EXPECT_EQ(plan.painted(), (Box{0, 0, 240, 320}));
    EXPECT_EQ(plan.columns.count, 320);
    EXPECT_TRUE(plan.columns.mirrored);
    EXPECT_FALSE(plan.rows.mirrored);
    view.quarterTurns = 3;
    plan = makePlan({640, 480}, {240, 320}, view);
    EXPECT_FALSE(plan.columns.mirrored);
    EXPECT_TRUE(plan.rows.mirrored);
    view.quarterTurns = 2;
    plan = makePlan({640, 480}, {320, 240}, view);
    EXPECT_FALSE(plan.transposed);
    EXPECT_TRUE(plan.columns.mirrored);
    EXPECT_TRUE(plan.rows.mirrored);
}

/* Fractions of 32 bits that mean "one to one, from an odd place on" must give every pixel once, in order. */
TEST(Plan, ShowsOneToOneExactlyForEveryOddDifference) {
    for (const int picture : {1001, 2047, 2448, 2449, 5473, 14192, 16384, 65535}) {
        for (const int window : {1, 2, 3, 333, 700, 701, 999, 1000}) {
            if (window > picture) {
                continue;
            }
            const float start = (1 - static_cast<float>(window) / static_cast<float>(picture)) * 0.5F;
            const float end = start + static_cast<float>(window) / static_cast<float>(picture);
            for (const int turns : {0, 2}) {
                View view;
                view.source = {0, 1, start, end};
                view.quarterTurns = turns;
                const Plan plan = makePlan({picture, 10}, {window, 10}, view);
                ASSERT_EQ(plan.columns.count, window) << picture;
                ASSERT_EQ(plan.columns.step, 1.0) << picture << " in " << window;
                const int first = plan.columns.nearest(0);
                EXPECT_NEAR(first, (picture - window) / 2.0, 0.51);
                for (int k = 0; k < window; ++k) {
                    ASSERT_EQ(plan.columns.nearest(k), first + k)
                        << picture << " in " << window << " at " << k;
                }
            }
        }
    }
}

TEST(Plan, LeavesOutWhatIsOutsideThePicture) {
    View view;
    view.source = {-0.5, 1.5, -1, 2}; // the picture is the middle half, the middle third
    const Plan plan = makePlan({300, 200}, {90, 80}, view);
    EXPECT_EQ(plan.painted(), (Box{30, 20, 30, 40}));
    EXPECT_EQ(plan.columns.nearest(0), 5);
    EXPECT_EQ(plan.columns.nearest(29), 295);
}

TEST(Plan, LeavesOutWhatIsOutsideTheWindow) {
    View view;
    view.destination = {-1, 1, 0.5, 2.5};
    const Plan plan = makePlan({400, 200}, {100, 100}, view);
    EXPECT_EQ(plan.painted(), (Box{50, 0, 50, 100}));
    EXPECT_EQ(plan.rows.nearest(0), 100) << "the upper half of the picture is above the window";
    EXPECT_EQ(plan.columns.nearest(49), 99) << "the right three quarters are beside it";
}

TEST(Plan, MayShowNothing) {
    View view;
    view.source = {2, 3, 0, 1};
    EXPECT_TRUE(makePlan({10, 10}, {10, 10}, view).painted().empty());
    view.source = {0, 1, -3, -2};
    EXPECT_TRUE(makePlan({10, 10}, {10, 10}, view).painted().empty());
    view = View();
    view.destination = {0, 1, 1, 2};
    EXPECT_TRUE(makePlan({10, 10}, {10, 10}, view).painted().empty());
    view.destination = {0.1, 0.2, 0, 1};
    EXPECT_TRUE(makePlan({10, 10}, {1, 1}, view).painted().empty()) << "less than half of the only pixel";
}

/* No rectangle that is let in may lead outside picture or window. */
TEST(Plan, StaysInsideForExtremeRectangles) {
    const double values[] = {-1e6, -3.7, -1,        -1e-7, 0,         1e-30, 1e-7,
                             0.3,  0.5,  0.9999999, 1,     1.0000001, 2.2,   1e6};
    const Size sizes[] = {{1, 1}, {1, 7}, {2448, 2048}, {1 << 20, 3}};
    for (const double low : values) {
        for (const double high : values) {
            if (low >= high) {
                continue;
            }
            for (int turns = 0; turns < 4; ++turns) {
                for (const Size picture : sizes) {
                    for (const Size window : {Size{1, 1}, Size{701, 333}}) {
                        for (const View& view : {View{{low, high, low, high}, {}, turns},
                                                 View{{}, {low, high, low, high}, turns},
                                                 View{{low, high, 0, 1}, {0, 1, low, high}, turns}}) {
                            const Plan plan = makePlan(picture, window, view);
                            const Box box = plan.painted();
                            if (box.empty()) {
                                continue;
                            }
                            ASSERT_GE(box.x, 0);
                            ASSERT_GE(box.y, 0);
                            ASSERT_LE(box.x + box.width, window.width);
                            ASSERT_LE(box.y + box.height, window.height);
                            for (const AxisPlan* axis : {&plan.columns, &plan.rows}) {
                                ASSERT_GT(axis->step, 0);
                                const double first = axis->origin + 0.5 * axis->step;
                                const double last = axis->origin + (axis->count - 0.5) * axis->step;
                                ASSERT_GE(first, -0.01 - 1e-9 * axis->length);
                                ASSERT_LT(last, axis->length + 0.01);
                            }
                        }
                    }
                }
            }
        }
    }
}

TEST(Surround, IsTheWindowWithoutTheInside) {
    Box boxes[4];
    EXPECT_EQ(surround({10, 8}, Box{}, boxes), 1);
    EXPECT_EQ(boxes[0], (Box{0, 0, 10, 8}));
    EXPECT_EQ(surround({10, 8}, Box{0, 0, 10, 8}, boxes), 0);
    for (int x = 0; x < 4; ++x) {
        for (int y = 0; y < 3; ++y) {
            for (int width = 1; x + width <= 4; ++width) {
                for (int height = 1; y + height <= 3; ++height) {
                    int hits[3][4] = {};
                    const int count = surround({4, 3}, Box{x, y, width, height}, boxes);
                    for (int i = 0; i < count; ++i) {
                        for (int v = boxes[i].y; v < boxes[i].y + boxes[i].height; ++v) {
                            for (int u = boxes[i].x; u < boxes[i].x + boxes[i].width; ++u) {
                                ++hits[v][u];
                            }
                        }
                    }
                    for (int v = 0; v < 3; ++v) {
                        for (int u = 0; u < 4; ++u) {
                            const bool inner = u >= x && u < x + width && v >= y && v < y + height;
                            ASSERT_EQ(hits[v][u], inner ? 0 : 1);
                        }
                    }
                }
            }
        }
    }
}

} // namespace
} // namespace kolt::render
