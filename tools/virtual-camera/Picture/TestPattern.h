// Pictures of a generator instead of the scene: they know neither exposure nor place on the sensor.
#ifndef VCAM_PICTURE_TESTPATTERN_H
#define VCAM_PICTURE_TESTPATTERN_H

#include "Picture/PictureSettings.h"
#include "Picture/PixelFormat.h"

namespace vcam {

// Pixels x0 to x1 of row y. `phase` is 0 to 1, one round of what moves.
void TestPatternRow(const PictureSettings& settings, uint32_t y, uint32_t x0, uint32_t x1, double phase,
                    Rgb12* to);

} // namespace vcam

#endif
