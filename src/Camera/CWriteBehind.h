// Keeps the kernel writing a file that grows by large blocks.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

// Left alone, the page cache collects gigabytes and then stalls the writer for seconds while it empties, and
// copying into fresh pages costs most of the processor time. This starts the write-back of each block at
// once, waits for the blocks of a while ago (which are on the disk by then) and drops them from the cache,
// and reserves room ahead. A thread of its own ("kolt-behind") does so, because each of these steps waits for
// the disk now and then, longer than a full queue of frames lasts. All of it is advice: a file system that
// knows none of it, or a system without another thread, only loses speed.
//
// Start, OnWritten and Finish are for one thread at a time.
class CWriteBehind {
public:
    CWriteBehind() = default;
    ~CWriteBehind() { Finish(); }
    CWriteBehind(const CWriteBehind&) = delete;
    CWriteBehind& operator=(const CWriteBehind&) = delete;

    // `file` is the descriptor of a file that is empty.
    void Start(int file);

    // After `length` bytes were written at the end. Waits only while the disk is so far behind that the
    // system would stop the writer soon anyway.
    void OnWritten(int64_t length);

    // Ends the thread and gives back the room that was reserved beyond the end. Before the descriptor is
    // closed. Harmless when nothing was started.
    void Finish();

private:
    void Run();
    void Advise(int64_t written);
    void ReserveAhead(int64_t written);

    int m_nFile = -1; // set while no thread runs
    std::thread m_thread;
    std::mutex m_mutex; // guards the three below
    std::condition_variable m_changed;
    int64_t m_nWritten = 0;
    int64_t m_nSettled = 0; // everything before it is on the disk and out of the cache
    bool m_bStop = false;
    int64_t m_nStarted = 0;  // thread: up to here write-back was asked for
    int64_t m_nReserved = 0; // thread
    bool m_bReserves = false;
};
