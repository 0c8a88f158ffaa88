#include "device/ExceptionDispatcher.h"

namespace kolt::cc {

void ExceptionDispatcher::set(OvExceptionCallBack callback, void* user) {
    std::unique_lock<std::mutex> lock(mutex_);
    callback_ = callback;
    user_ = user;
    changed_.notify_all();
    if (!insideLocked()) {
        changed_.wait(lock, [this] { return !running_; });
    }
}

void ExceptionDispatcher::deliver(std::uint32_t message, const std::function<bool()>& wanted) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [&] { return !wanted() || (callback_ != nullptr && !running_); });
    if (!wanted()) {
        return;
    }
    const OvExceptionCallBack callback = callback_;
    void* const user = user_;
    running_ = true;
    runner_ = std::this_thread::get_id();
    lock.unlock();
    callback(message, user);
    lock.lock();
    running_ = false;
    changed_.notify_all();
}

void ExceptionDispatcher::recheck() {
    const std::lock_guard<std::mutex> lock(mutex_);
    changed_.notify_all();
}

void ExceptionDispatcher::waitIdle() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!insideLocked()) {
        changed_.wait(lock, [this] { return !running_; });
    }
}

} // namespace kolt::cc
