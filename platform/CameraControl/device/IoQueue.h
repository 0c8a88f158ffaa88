// The one thread of an open device on which its transport object is used, and the queue in front of it.
//
// A register access on a dead device blocks inside the transport library for seconds. Callers therefore don't
// enter it: they hand in a job and wait, and cancel() lets all of them go at once while the thread is still
// stuck. A job may outlive its caller's wait, so it owns everything that it touches.
#ifndef KOLT_CAMERA_CONTROL_IO_QUEUE_H
#define KOLT_CAMERA_CONTROL_IO_QUEUE_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "device/Threads.h"

namespace kolt::cc {

class IoQueue {
public:
    using Job = std::function<std::uint32_t()>; // returns a status; doesn't throw

    // Starts the thread; throws std::system_error where there is none to be had.
    explicit IoQueue(const char* threadName);

    // Cancels, and joins the thread: waits for the job that is running now and for finish()'s.
    ~IoQueue();
    IoQueue(const IoQueue&) = delete;
    IoQueue& operator=(const IoQueue&) = delete;

    // Runs the job on the thread and returns its status, or the status given to cancel() as soon as that is
    // called. Any thread but the queue's own.
    std::uint32_t run(Job job);

    // Queues the job and returns at once. False (and the job is dropped) after cancel().
    bool post(Job job);

    // From now on no job is taken or begun; callers waiting in run() return with the status. Only the first
    // call counts. Never blocks.
    void cancel(std::uint32_t status);

    // Cancels as above, and has the thread run one last job as soon as it is free, and end. Once.
    void finish(std::uint32_t status, Job last);

    // Waits until the thread has run the last job. True when it has.
    bool waitFinished(Clock::time_point deadline);

    // How long the job that a caller waits for has been running now; zero when there is none. Posted jobs
    // don't count.
    Clock::duration busyFor() const;

private:
    struct Entry {
        Job job;
        std::condition_variable done;
        bool waitedFor = false;
        bool finished = false;
        std::uint32_t status = 0;
    };

    void loop();
    void cancelLocked(std::uint32_t status);

    mutable std::mutex mutex_; // guards all below but the thread
    std::condition_variable wake_;
    std::condition_variable ended_;
    std::deque<std::shared_ptr<Entry>> waiting_;
    std::shared_ptr<Entry> running_;
    Clock::time_point runningSince_{};
    Job last_;
    bool cancelled_ = false;
    bool hasLast_ = false;
    bool leave_ = false; // the thread is to end
    bool hasEnded_ = false;
    std::uint32_t cancelStatus_ = 0;
    std::thread thread_;
};

} // namespace kolt::cc

#endif
