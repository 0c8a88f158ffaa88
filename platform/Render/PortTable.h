/*
 * What the program has said about each port of a handle. Any thread.
 */
#ifndef KOLT_RENDER_PORT_TABLE_H
#define KOLT_RENDER_PORT_TABLE_H

#include "Camera/Boundary/OVRender.h"
#include "Geometry.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

namespace kolt::render {

struct Port {
    xcb_window_t window = 0; /* 0 while none has been named */
    View view;
    uint32_t syncPeriod = 0;
    uint32_t callbackMode = 0;
    VRDrawCallBack callback = nullptr;
    void* user = nullptr;
};

class PortTable {
public:
    /* Ports at a time; each holds a window's worth of memory. */
    static constexpr size_t kMost = 64;

    /* A port that is there already keeps its settings and takes the window. False when there are too many. */
    bool add(uint32_t number, xcb_window_t window);
    bool remove(uint32_t number);
    std::optional<Port> find(uint32_t number) const;
    /* Calls change(Port&) under the lock. False without such a port. */
    template<class Change>
    bool change(uint32_t number, Change&& change) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_ports.find(number);
        if (found == m_ports.end()) {
            return false;
        }
        change(found->second);
        return true;
    }

private:
    mutable std::mutex m_mutex; /* guards m_ports; nothing else is locked inside */
    std::map<uint32_t, Port> m_ports;
};

} // namespace kolt::render

#endif
