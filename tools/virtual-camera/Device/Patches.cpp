// Where the patches of known colour are in the picture as it is sent now.
#include "Device/DeviceModel.h"

namespace vcam {

std::vector<Patch> DeviceModel::Patches() const {
    const PictureSettings s = Settings().picture;
    const std::array<uint16_t, 256> curve = ToneCurve(s);
    const auto toned = [&curve](uint8_t value) { return static_cast<uint8_t>(curve[value] >> 4); };
    std::vector<Patch> patches;
    if (s.testPattern != TestPattern::Off)
        return patches;
    for (const ScenePatch& scene : m_geometry.Patches()) {
        const Rect& place = scene.place;
        if (place.x < s.offsetX || place.y < s.offsetY || place.x + place.width > s.offsetX + s.width ||
            place.y + place.height > s.offsetY + s.height)
            continue;
        Patch patch;
        patch.name = scene.name;
        patch.x = place.x - s.offsetX;
        patch.y = place.y - s.offsetY;
        patch.width = place.width;
        patch.height = place.height;
        if (s.reverseX)
            patch.x = s.width - patch.x - patch.width;
        if (s.reverseY)
            patch.y = s.height - patch.y - patch.height;
        patch.red = toned(scene.colour.red);
        patch.green = toned(scene.colour.green);
        patch.blue = toned(scene.colour.blue);
        patches.push_back(patch);
    }
    return patches;
}

} // namespace vcam
