// The user's exception callback of one handle, and who may call it when.
#ifndef KOLT_CAMERA_CONTROL_EXCEPTION_DISPATCHER_H
#define KOLT_CAMERA_CONTROL_EXCEPTION_DISPATCHER_H

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

#include "Camera/Boundary/OvCameraControl.h"

namespace kolt::cc {

class ExceptionDispatcher {
public:
    // Replaces the callback; null takes it away. When this returns, the former one is not running and does
    // not run again, except when the call comes from inside of it.
    void set(OvExceptionCallBack callback, void* user);

    // Calls the callback on the calling thread, as soon as there is one and for as long as wanted() says so.
    // Calls of one handle come one after another. wanted() is asked under the dispatcher's lock; whoever
    // changes its answer calls recheck().
    void deliver(std::uint32_t message, const std::function<bool()>& wanted);
    void recheck();

    // Waits until no callback is running; at once when called from inside of it.
    void waitIdle();

private:
    bool insideLocked() const { return running_ && runner_ == std::this_thread::get_id(); }

    std::mutex mutex_; // guards all below; not held while the callback runs
    std::condition_variable changed_;
    OvExceptionCallBack callback_ = nullptr;
    void* user_ = nullptr;
    bool running_ = false;
    std::thread::id runner_;
};

} // namespace kolt::cc

#endif
