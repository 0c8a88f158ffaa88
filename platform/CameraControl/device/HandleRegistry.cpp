#include "device/HandleRegistry.h"

#include <utility>

namespace kolt::cc {

namespace {

// No small number (errors, flags), no multiple of a page: nothing that a program passes by mistake.
constexpr std::uintptr_t kFirst = 0x0C0F'FEE0'0010;
constexpr std::uintptr_t kStep = 16;
constexpr std::size_t kFormerPorts = 64;

} // namespace

HandleRegistry::HandleRegistry() : next_(kFirst) {}

HandleRegistry& HandleRegistry::instance() {
    static HandleRegistry& registry = *new HandleRegistry;
    return registry;
}

void* HandleRegistry::add(std::shared_ptr<Camera> camera) {
    const std::lock_guard<std::mutex> lock(mutex_);
    void* const handle = reinterpret_cast<void*>(next_); // NOLINT(performance-no-int-to-ptr): never followed
    cameras_.emplace(handle, std::move(camera));
    next_ += kStep;
    return handle;
}

std::shared_ptr<Camera> HandleRegistry::find(void* handle) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = cameras_.find(handle);
    return found == cameras_.end() ? nullptr : found->second;
}

std::shared_ptr<Camera> HandleRegistry::remove(void* handle) {
    std::shared_ptr<CameraPort> oldest; // destroyed after the lock is gone
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = cameras_.find(handle);
    if (found == cameras_.end()) {
        return nullptr;
    }
    std::shared_ptr<Camera> camera = std::move(found->second);
    cameras_.erase(found);
    formerPorts_.push_back(camera->sharedPort());
    if (formerPorts_.size() > kFormerPorts) {
        oldest = std::move(formerPorts_.front());
        formerPorts_.pop_front();
    }
    return camera;
}

std::size_t HandleRegistry::count() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return cameras_.size();
}

} // namespace kolt::cc
