#include "device/IoQueue.h"

#include <string>
#include <utility>

#include "Camera/Boundary/OvStatus.h"

namespace kolt::cc {

IoQueue::IoQueue(const char* threadName) {
    thread_ = std::thread([this, name = std::string(threadName)] {
        nameThisThread(name.c_str());
        loop();
    });
}

IoQueue::~IoQueue() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        cancelLocked(OV_STATUS_CALL_ORDER);
        leave_ = true;
        wake_.notify_one();
    }
    thread_.join();
}

std::uint32_t IoQueue::run(Job job) {
    auto entry = std::make_shared<Entry>();
    entry->job = std::move(job);
    entry->waitedFor = true;
    std::unique_lock<std::mutex> lock(mutex_);
    if (cancelled_) {
        return cancelStatus_;
    }
    waiting_.push_back(entry);
    wake_.notify_one();
    entry->done.wait(lock, [&] { return entry->finished || cancelled_; });
    return entry->finished ? entry->status : cancelStatus_;
}

bool IoQueue::post(Job job) {
    auto entry = std::make_shared<Entry>();
    entry->job = std::move(job);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (cancelled_) {
        return false;
    }
    waiting_.push_back(std::move(entry));
    wake_.notify_one();
    return true;
}

void IoQueue::cancelLocked(std::uint32_t status) {
    if (cancelled_) {
        return;
    }
    cancelled_ = true;
    cancelStatus_ = status;
    if (running_) {
        running_->done.notify_all();
    }
    for (const auto& entry : waiting_) {
        entry->done.notify_all();
    }
    // What waits is dropped by the thread itself (what jobs own may take its time to go).
}

void IoQueue::cancel(std::uint32_t status) {
    const std::lock_guard<std::mutex> lock(mutex_);
    cancelLocked(status);
    wake_.notify_one();
}

void IoQueue::finish(std::uint32_t status, Job last) {
    const std::lock_guard<std::mutex> lock(mutex_);
    cancelLocked(status);
    last_ = std::move(last);
    hasLast_ = true;
    leave_ = true;
    wake_.notify_one();
}

bool IoQueue::waitFinished(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mutex_);
    return ended_.wait_until(lock, deadline, [&] { return hasEnded_; });
}

Clock::duration IoQueue::busyFor() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!running_ || !running_->waitedFor) {
        return Clock::duration::zero();
    }
    return Clock::now() - runningSince_;
}

void IoQueue::loop() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        wake_.wait(lock, [&] { return leave_ || !waiting_.empty(); });
        if (cancelled_ && !waiting_.empty()) {
            std::deque<std::shared_ptr<Entry>> dropped;
            dropped.swap(waiting_);
            lock.unlock();
            dropped.clear();
            lock.lock();
            continue;
        }
        if (leave_) {
            break;
        }
        running_ = std::move(waiting_.front());
        waiting_.pop_front();
        runningSince_ = Clock::now();
        const std::shared_ptr<Entry> entry = running_;
        lock.unlock();
        const std::uint32_t status = entry->job();
        entry->job = nullptr;
        lock.lock();
        running_.reset();
        entry->status = status;
        entry->finished = true;
        entry->done.notify_all();
    }
    if (hasLast_) {
        Job last = std::move(last_);
        lock.unlock();
        last();
        last = nullptr;
        lock.lock();
    }
    hasEnded_ = true;
    ended_.notify_all();
}

} // namespace kolt::cc
