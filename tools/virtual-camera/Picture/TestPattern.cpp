#include "Picture/TestPattern.h"

namespace vcam {

void TestPatternRow(const PictureSettings& s, uint32_t y, uint32_t x0, uint32_t x1, double phase, Rgb12* to) {
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
            to[x - x0] = kBars[x * 8 / s.width];
            continue;
        }
        to[x - x0] = {grey, grey, grey};
    }
}

} // namespace vcam
