// One POSIX thread of a camera with its stop flag.
#pragma once

#include "Common/SleepEx.h"

#include <mutex>
#include <pthread.h>

// Several threads may want to stop the same one at once (the workspace and the library's disconnect message):
// one of them joins, the others wait until that is done.
class CCameraThread {
public:
    CCameraThread() = default;
    ~CCameraThread() { StopAndJoin(); }
    CCameraThread(const CCameraThread&) = delete;
    CCameraThread& operator=(const CCameraThread&) = delete;

    // Starts `body` with `argument`, default attributes, under a name of at most 15 characters. When the
    // thread can't be made, the process ends with exit code 1. Does nothing while a thread runs. The stop
    // flag is left as it is.
    void Start(void* (*body)(void*), void* argument, const char* name);

    // Sets the stop flag and joins; returns what pthread_join returned, or `idle` when no thread was running.
    int StopAndJoin(int idle = 0);

    bool IsRunning() const;

    CStopFlag& Stop() { return m_stop; }

private:
    mutable std::mutex m_mutex; // guards the two below; held while joining, never taken by the thread itself
    pthread_t m_id{};
    bool m_bRunning = false;
    CStopFlag m_stop;
};
