// Where things of the scene come to lie in a picture: region, binning and reversal.
#ifndef VCAM_PICTURE_PICTUREPLACES_H
#define VCAM_PICTURE_PICTUREPLACES_H

#include "Picture/PictureSettings.h"
#include "Picture/Scene.h"

#include <optional>
#include <string>

namespace vcam {

// The picture's pixels that show any of this place of the scene. None: it isn't in the picture.
std::optional<Rect> CoverInPicture(const PictureSettings& settings, const Rect& place);
// The picture's pixels that show nothing but this place. None: no such pixel, or a part of the place lies
// outside of the picture (above and below may, when it is endless).
std::optional<Rect> WholeInPicture(const PictureSettings& settings, const Rect& place);

// A patch as it shows in the picture. With sharpness on, its border is left out.
struct PicturePatch {
    std::string name;
    Rect place;
    uint8_t red, green, blue; // 8 bits of what ExpectedColour says
};

// Patches that are wholly in the picture. None with a test pattern. For HDR: settings of one frame.
std::vector<PicturePatch> PatchesInPicture(const PictureSettings& settings,
                                           const std::vector<ScenePatch>& patches);

} // namespace vcam

#endif
