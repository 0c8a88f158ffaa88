#include "device/Reaper.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "device/Threads.h"

namespace kolt::cc {

namespace {

class Reaper {
public:
    void take(std::function<void()> job) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!working_) {
            if (thread_.joinable()) {
                thread_.join(); // it has left its loop already
            }
            try {
                thread_ = std::thread([this] { loop(); });
            } catch (const std::system_error&) {
                lock.unlock();
                job();
                return;
            }
            working_ = true;
        }
        jobs_.push_back(std::move(job));
    }

    bool wait(std::chrono::milliseconds limit) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!idle_.wait_for(lock, limit, [this] { return !working_; })) {
            return false;
        }
        if (thread_.joinable()) {
            thread_.join();
        }
        return true;
    }

private:
    void loop() {
        nameThisThread("ov-reaper");
        std::unique_lock<std::mutex> lock(mutex_);
        // take() fills the queue before it lets go of the mutex, so there is work at the first look.
        while (!jobs_.empty()) {
            std::function<void()> job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            job();
            job = nullptr;
            lock.lock();
        }
        working_ = false;
        idle_.notify_all();
    }

    std::mutex mutex_; // guards all below
    std::condition_variable idle_;
    std::deque<std::function<void()>> jobs_;
    bool working_ = false; // the thread looks at the queue once more
    std::thread thread_;
};

// Never destroyed: its thread may still run while the process leaves main.
Reaper& reaper() {
    static Reaper& instance = *new Reaper;
    return instance;
}

__attribute__((destructor)) void reapAtExit() {
    waitReaped(kReapAtExit);
}

} // namespace

void reap(std::function<void()> job) {
    reaper().take(std::move(job));
}

bool waitReaped(std::chrono::milliseconds limit) {
    return reaper().wait(limit);
}

} // namespace kolt::cc
