// What the camera's automatic functions measure: means of the scene, as its settings make it come out.
#ifndef VCAM_PICTURE_SCENEMEASURE_H
#define VCAM_PICTURE_SCENEMEASURE_H

#include "Picture/PictureSettings.h"
#include "Picture/Scene.h"

namespace vcam {

// Means over an area, 0 to 4095.
struct SceneMeans {
    // Of the components after exposure and gain alone, clipped: what white balance and exposure have to work
    // with, whatever they are set to now.
    double red = 0, green = 0, blue = 0;
    // Of the picture as it comes out, in luma: what a person calls bright.
    double luminance = 0;
};

// `area` is in pixels of the whole sensor after binning, as the region's offsets are; what lies outside of
// the region does not count, and an area without a pixel in the region means all of the region. Looks at some
// 4000 points at most, so it may run once a frame. With a test pattern it still looks at the scene. For HDR:
// settings of one frame.
SceneMeans MeasureScene(const Scene& scene, const PictureSettings& settings, const Rect& area,
                        const Moment& moment);

// Grey world: gains by which the three means become equal. Green keeps kNeutralBalance; limits are 1 and
// kMostBalance. A colour that is missing altogether gets kMostBalance.
std::array<uint32_t, 3> GreyWorldBalance(const SceneMeans& means);

} // namespace vcam

#endif
