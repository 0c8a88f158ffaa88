#include "PortTable.h"

namespace kolt::render {

bool PortTable::add(uint32_t number, xcb_window_t window) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_ports.find(number);
    if (found != m_ports.end()) {
        found->second.window = window;
        return true;
    }
    if (m_ports.size() >= kMost) {
        return false;
    }
    m_ports[number].window = window;
    return true;
}

bool PortTable::remove(uint32_t number) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_ports.erase(number) > 0;
}

std::optional<Port> PortTable::find(uint32_t number) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_ports.find(number);
    return found == m_ports.end() ? std::nullopt : std::optional<Port>(found->second);
}

} // namespace kolt::render
