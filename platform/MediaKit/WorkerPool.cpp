#include "MediaKit/WorkerPool.h"

#include <algorithm>
#include <exception>
#include <pthread.h>
#include <string>

namespace media {

WorkerPool::WorkerPool(unsigned helpers) : helpers_(helpers) {}

WorkerPool::~WorkerPool() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stop_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

unsigned WorkerPool::DefaultHelpers() {
    return std::clamp(std::thread::hardware_concurrency(), 1U, 4U) - 1U;
}

void WorkerPool::StartThreads() {
    if (started_) {
        return;
    }
    started_ = true;
    try {
        threads_.reserve(helpers_);
        for (unsigned worker = 1; worker <= helpers_; ++worker) {
            threads_.emplace_back([this, worker] { Help(worker); });
        }
    } catch (const std::exception&) {
        // Fewer threads: slower, not wrong.
    }
}

void WorkerPool::Help(unsigned worker) {
    pthread_setname_np(pthread_self(), ("ov-media-" + std::to_string(worker)).c_str());
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stop_) {
        if (next_ < pieces_) {
            Work(lock, worker);
        } else {
            wake_.wait(lock);
        }
    }
}

void WorkerPool::Work(std::unique_lock<std::mutex>& lock, unsigned worker) {
    while (next_ < pieces_) {
        const std::size_t piece = next_++;
        const Function function = function_;
        void* const context = context_;
        lock.unlock();
        function(context, piece, worker);
        lock.lock();
        if (--open_ == 0) {
            finished_.notify_one();
        }
    }
}

void WorkerPool::RunErased(std::size_t pieces, Function function, void* context) {
    const std::unique_lock<std::mutex> caller(caller_, std::try_to_lock);
    if (!caller.owns_lock() || pieces < 2 || helpers_ == 0) {
        for (std::size_t piece = 0; piece < pieces; ++piece) {
            function(context, piece, 0);
        }
        return;
    }
    StartThreads();
    std::unique_lock<std::mutex> lock(mutex_);
    function_ = function;
    context_ = context;
    next_ = 0;
    pieces_ = pieces;
    open_ = pieces;
    wake_.notify_all();
    Work(lock, 0);
    finished_.wait(lock, [this] { return open_ == 0; });
    pieces_ = 0;
    next_ = 0;
}

} // namespace media
