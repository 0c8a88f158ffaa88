// Keeps the kernel writing a file that grows by large blocks.
#pragma once

#include <cstdint>

// Left alone, the page cache collects gigabytes and then stalls the writer for seconds while it empties, and
// copying into fresh pages costs most of the processor time. This starts the write-back of each block at
// once, waits for the blocks of a while ago (which are on the disk by then) and drops them from the cache,
// and reserves room ahead. All of it is advice: a file system that knows none of it only loses speed. One
// thread at a time.
class CWriteBehind {
public:
    // `file` is the descriptor of a file that is empty.
    void Start(int file);

    // After `length` bytes were written at the end.
    void OnWritten(int64_t length);

    // Gives back the room that was reserved beyond the end. Before the descriptor is closed.
    void Finish();

private:
    void ReserveAhead();

    int m_nFile = -1;
    int64_t m_nWritten = 0;
    int64_t m_nDropped = 0; // everything before it is on the disk and out of the cache
    int64_t m_nReserved = 0;
    bool m_bReserves = false;
};
