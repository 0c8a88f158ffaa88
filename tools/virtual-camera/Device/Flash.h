// What a camera keeps without power: its user sets, files, name and network configuration. It outlives the
// device model, so that a camera that is stopped and started again, or reset, finds it.
#ifndef VCAM_DEVICE_FLASH_H
#define VCAM_DEVICE_FLASH_H

#include "Protocol/Wire.h"

#include <array>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace vcam {

struct FlashContent {
    std::array<std::optional<std::map<uint32_t, Bytes>>, 3> userSets; // empty: never saved
    uint32_t defaultSet = 0;                                          // 0 is the maker's
    bool filesMade = false;                                           // by the maker
    std::map<uint32_t, Bytes> files;                                  // by FileSelector; absent: deleted
    std::optional<std::string> userName;
    std::optional<uint32_t> ipConfiguration;
    uint32_t persistentIp = 0;
    uint32_t persistentMask = 0;
    uint32_t persistentGateway = 0;
};

// Any thread.
class Flash {
public:
    FlashContent Get() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_content;
    }
    template<class Change>
    void Update(Change change) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        change(m_content);
    }

private:
    mutable std::mutex m_mutex; // guards the content
    FlashContent m_content;
};

} // namespace vcam

#endif
