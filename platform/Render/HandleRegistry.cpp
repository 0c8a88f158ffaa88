#include "HandleRegistry.h"

namespace kolt::render {

namespace {

/* Handles look like small addresses that no object has. */
constexpr uintptr_t kHandleStep = 16;

uintptr_t numberOf(const void* handle) {
    return reinterpret_cast<uintptr_t>(handle);
}

} // namespace

HandleRegistry& HandleRegistry::instance() {
    // Never destroyed: the program's threads may still call while the process ends.
    static auto* registry = new HandleRegistry;
    return *registry;
}

HandleRegistry::Use::Use(HandleRegistry& registry, const void* handle) : m_registry(registry) {
    const std::lock_guard<std::mutex> lock(registry.m_mutex);
    const auto found = registry.m_entries.find(numberOf(handle));
    if (found != registry.m_entries.end()) {
        m_entry = found->second;
        ++m_entry->calls;
    }
}

HandleRegistry::Use::~Use() {
    if (m_entry) {
        const std::lock_guard<std::mutex> lock(m_registry.m_mutex);
        --m_entry->calls;
        m_registry.m_idle.notify_all();
    }
}

void* HandleRegistry::create() {
    auto entry = std::make_shared<Entry>();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_last += kHandleStep;
    m_entries.emplace(m_last, std::move(entry));
    return reinterpret_cast<void*>(m_last); // NOLINT(performance-no-int-to-ptr): a number, see above
}

bool HandleRegistry::destroy(const void* handle) {
    std::shared_ptr<Entry> entry;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_entries.find(numberOf(handle));
        if (found == m_entries.end()) {
            return false;
        }
        entry = std::move(found->second);
        m_entries.erase(found);
    }
    entry->renderer.shutDown();
    if (!Renderer::insideCallback()) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_idle.wait(lock, [&entry] { return entry->calls == 0; });
    }
    return true;
}

size_t HandleRegistry::count() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_entries.size();
}

} // namespace kolt::render
