#include "Device/SharedScene.h"

#include "Device/ModelTraits.h"
#include "Picture/WebScene.h"

#include <map>
#include <mutex>
#include <tuple>

namespace vcam {

std::shared_ptr<const Scene> SharedScene(const Config& config) {
    using Key = std::tuple<bool, uint32_t, uint32_t, std::string>;
    static std::mutex mutex; // guards the map
    static std::map<Key, std::weak_ptr<const Scene>> scenes;
    const bool lines = TraitsOf(config.model).lineScan;
    const Key key{lines, config.sensorWidth, config.sensorHeight, config.serial};
    const std::lock_guard<std::mutex> lock(mutex);
    std::shared_ptr<const Scene> scene = scenes[key].lock();
    if (!scene) {
        if (lines)
            scene = std::make_shared<WebScene>(config.sensorWidth);
        else
            scene = std::make_shared<AreaScene>(config.sensorWidth, config.sensorHeight, config.serial);
        scenes[key] = scene;
    }
    return scene;
}

} // namespace vcam
