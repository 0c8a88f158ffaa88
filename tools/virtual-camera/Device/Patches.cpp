// Where the patches of known colour are in the picture as it is sent now.
#include "Device/DeviceModel.h"
#include "Device/SharedScene.h"
#include "Picture/PicturePlaces.h"

namespace vcam {

std::shared_ptr<const Scene> DeviceModel::LookedAt() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_scene)
        m_scene = SharedScene(m_config);
    return m_scene;
}

std::vector<Patch> DeviceModel::Patches() const {
    std::vector<Patch> patches;
    for (const PicturePatch& patch : PatchesInPicture(SettingsOfFrame(Picture(), 0), LookedAt()->Patches()))
        patches.push_back({patch.name, patch.place.x, patch.place.y, patch.place.width, patch.place.height,
                           patch.red, patch.green, patch.blue});
    return patches;
}

} // namespace vcam
