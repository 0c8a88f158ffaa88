#include "MediaKit/HandleRegistry.h"

#include <utility>

namespace media {

namespace {

// Neither a user-space address nor a small number: nothing that a caller could hold by mistake.
constexpr std::uintptr_t kTag = UINT64_C(0x4D65646961000000);

std::uintptr_t NumberOf(void* handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

} // namespace

HandleRegistry& HandleRegistry::Instance() {
    static HandleRegistry registry;
    return registry;
}

void* HandleRegistry::Create() {
    auto handle = std::make_shared<MediaHandle>();
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::uintptr_t number = kTag + ++next_;
    living_.emplace(number, std::move(handle));
    return reinterpret_cast<void*>(number); // NOLINT(performance-no-int-to-ptr): never dereferenced
}

bool HandleRegistry::Destroy(void* handle) {
    std::shared_ptr<MediaHandle> last; // ends outside the lock: its threads are joined
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = living_.find(NumberOf(handle));
    if (found == living_.end()) {
        return false;
    }
    last = std::move(found->second);
    living_.erase(found);
    return true;
}

std::shared_ptr<MediaHandle> HandleRegistry::Find(void* handle) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = living_.find(NumberOf(handle));
    return found == living_.end() ? nullptr : found->second;
}

} // namespace media
