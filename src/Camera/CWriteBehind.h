// Takes what is written to the end of a file off the writer's hands and brings it to the disk behind its
// back.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// A disk stops for tens of milliseconds now and then, longer than a short queue of frames lasts, and the page
// cache passes that on: a write waits for a page that is on its way to the disk, for the journal, or for
// memory. So Write only copies into blocks of memory, and a thread of its own ("kolt-behind") writes them,
// past the page cache where the file system allows it: the blocks are used again and again and stay in the
// processor's caches, while fresh pages for each frame would cost more than the disk's own work.
//
// What is left in a block that doesn't fill goes out after a fifth of a second, so a program that ends
// unexpectedly loses no more than that and what waits for a disk that is behind; so do the last bytes, both
// through the page cache. Where room can't
// be reserved because there is none, each Write waits for the disk and tells what came of it; otherwise a
// failure of the disk is told by the next Write, and GetLost tells how much was affected.
//
// Start, Write and Finish are for one thread at a time.
class CWriteBehind {
public:
    static constexpr size_t kBlock = size_t{4} << 20;
    // So much may wait for the disk before Write waits too.
    static constexpr size_t kMostBlocks = 64;

    CWriteBehind() = default;
    ~CWriteBehind() { Finish(); }
    CWriteBehind(const CWriteBehind&) = delete;
    CWriteBehind& operator=(const CWriteBehind&) = delete;

    // `file` is the descriptor of an empty file and stays the caller's; nobody else writes to it until
    // Finish. False, with nothing started, when it isn't a regular file or no thread can be made.
    bool Start(int file);
    bool IsStarted() const { return m_thread.joinable(); }

    // Appends a copy of `data`. False when the disk or memory failed; nothing can be written any more then.
    bool Write(const void* data, size_t length);

    // Writes what is left, gives back the room that was reserved beyond the end and ends the thread. On a
    // failure the file keeps what was written up to it. Before the descriptor is closed. Harmless when
    // nothing was started.
    void Finish();

    // After Finish: bytes at the end that Write took and that the disk refused later.
    int64_t GetLost() const { return m_nTaken > m_nWritten ? m_nTaken - m_nWritten : 0; }

private:
    struct Unmap {
        void operator()(uint8_t* memory) const;
    };
    using Memory = std::unique_ptr<uint8_t[], Unmap>;
    struct Block {
        Memory memory;
        int64_t offset = 0;
        size_t filled = 0;
        size_t written = 0;
    };

    static Memory NewMemory(bool touched);
    bool IsFrontFull() const { return !m_blocks.empty() && m_blocks.front().filled == kBlock; }
    bool HasRest() const { return !m_blocks.empty() && m_blocks.front().written < m_blocks.front().filled; }
    Block* BlockToFill(std::unique_lock<std::mutex>& lock);
    void Release();
    void Run();
    bool WaitForWork(std::unique_lock<std::mutex>& lock);
    bool KeepSpare(std::unique_lock<std::mutex>& lock);
    bool WriteFront(std::unique_lock<std::mutex>& lock);
    size_t WriteOut(const uint8_t* data, size_t length, int64_t at, bool direct);
    void KeepWriting(int64_t at) const;
    void Reserve(int64_t end);

    int m_nFile = -1;
    std::thread m_thread;
    std::mutex m_mutex; // leaf; guards the fields up to m_nWritten, but for the bytes in the blocks: those
                        // that are filled are the thread's, the rest of the last block is the writer's
    std::condition_variable m_changed;
    std::deque<Block> m_blocks; // in the file's order; only the last one may be partly filled
    std::vector<Memory> m_spare;
    size_t m_nMade = 0; // blocks, in use and spare
    bool m_bStop = false;
    bool m_bFailed = false;
    bool m_bThrough = false; // each Write waits for the disk
    int64_t m_nWritten = 0;
    int64_t m_nTaken = 0; // writer
    // Thread, once it runs.
    int m_nDirect = -1; // the same file past the page cache
    int64_t m_nReserved = 0;
    bool m_bReserves = false;
    bool m_bNoRoom = false; // the disk is full but for what is reserved
};
