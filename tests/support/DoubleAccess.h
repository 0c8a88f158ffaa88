// What the doubles' C functions share.
#pragma once

#include "support/PlatformDoubles.h"

namespace support {

// Opens the private side to the C functions below.
struct DoubleAccess {
    static PlatformDoubles& D() { return PlatformDoubles::Get(); }

    static uint32_t GetFrame(uint8_t* buffer, uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                             uint32_t timeout);
    static void StopGrabbing();
    template<typename Set>
    static void With(Set set) {
        const std::lock_guard<std::mutex> lock(D().m_mutex);
        set(D());
        D().m_changed.notify_all();
    }
};

// Writes the call down and runs its hook; what the double shall return.
inline uint32_t Enter(const char* name, uint32_t otherwise = 0) {
    return PlatformDoubles::Get().Enter(name, otherwise);
}

} // namespace support
