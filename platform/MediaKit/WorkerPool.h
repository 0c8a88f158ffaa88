#ifndef MEDIA_WORKER_POOL_H
#define MEDIA_WORKER_POOL_H

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>
#include <vector>

namespace media {

/*
 * A few threads that help a caller through a row of independent pieces of work. The caller works too. Threads
 * are started at the first Run that can use them, sleep on a condition between runs, and are joined by the
 * destructor. When a thread can't be started the others do its work.
 *
 * Run is entered by one caller at a time: a second one that finds the pool taken does its work alone.
 */
class WorkerPool {
public:
    /* helpers: threads besides the caller. */
    explicit WorkerPool(unsigned helpers);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /* Helpers for this machine: one for each further processor, three at most. */
    static unsigned DefaultHelpers();

    /* Workers that can be in work at once, the caller included. */
    unsigned Workers() const { return helpers_ + 1; }

    /*
     * Calls work(piece, worker) for each piece in [0, pieces) once, and returns when all are done. worker is
     * below Workers() and at no time the same for two calls that run at once. work must not throw.
     */
    template<typename Work>
    void Run(std::size_t pieces, Work&& work) {
        RunErased(
            pieces,
            [](void* context, std::size_t piece, unsigned worker) {
                (*static_cast<std::remove_reference_t<Work>*>(context))(piece, worker);
            },
            &work);
    }

private:
    using Function = void (*)(void* context, std::size_t piece, unsigned worker);

    void RunErased(std::size_t pieces, Function function, void* context);
    void StartThreads();
    void Help(unsigned worker);
    /* Takes pieces until none is left. Entered and left with the lock held. */
    void Work(std::unique_lock<std::mutex>& lock, unsigned worker);

    const unsigned helpers_;
    std::mutex caller_; // held by the caller of Run for its whole duration; guards threads_
    std::vector<std::thread> threads_;
    bool started_ = false; // guarded by caller_

    std::mutex mutex_; // guards everything below; leaf, never held across a piece of work
    std::condition_variable wake_;
    std::condition_variable finished_;
    Function function_ = nullptr;
    void* context_ = nullptr;
    std::size_t next_ = 0; // first piece that nobody has taken
    std::size_t pieces_ = 0;
    std::size_t open_ = 0; // pieces not yet done
    bool stop_ = false;
};

} // namespace media

#endif
