// Camera handles as the program holds them, and the objects behind them.
//
// A handle is a number that is never given out twice, not an address: null, garbage and handles that were
// destroyed are all simply unknown, and a call that is under way keeps its object alive when another thread
// destroys the handle.
#ifndef KOLT_CAMERA_CONTROL_HANDLE_REGISTRY_H
#define KOLT_CAMERA_CONTROL_HANDLE_REGISTRY_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "device/Camera.h"

namespace kolt::cc {

class HandleRegistry {
public:
    // The process' one; never destroyed.
    static HandleRegistry& instance();

    void* add(std::shared_ptr<Camera> camera);
    // Null when there is no such handle.
    std::shared_ptr<Camera> find(void* handle) const;
    // Takes the handle away; the caller closes the camera. Null when there is no such handle (any more).
    std::shared_ptr<Camera> remove(void* handle);
    std::size_t count() const;

private:
    mutable std::mutex mutex_; // guards all below
    std::unordered_map<void*, std::shared_ptr<Camera>> cameras_;
    std::uintptr_t next_;
    // Ports of the handles destroyed last. A node map that is used by one thread while another destroys the
    // handle still finds an object, which throws.
    std::deque<std::shared_ptr<CameraPort>> formerPorts_;

    HandleRegistry();
};

} // namespace kolt::cc

#endif
