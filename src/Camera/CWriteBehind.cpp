#include "Camera/CWriteBehind.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <pthread.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr auto kRestWaits = std::chrono::milliseconds(200);
constexpr int64_t kReserveAhead = int64_t{64} << 20;
// Without O_DIRECT: so much is under way to the disk before the thread waits for the oldest of it.
constexpr int64_t kInFlight = int64_t{32} << 20;
// Blocks that are kept ready, so that a disk that stops doesn't make the writer wait for fresh memory.
constexpr size_t kReady = 16;
constexpr size_t kReadyAtFirst = 4;

} // namespace

void CWriteBehind::Unmap::operator()(uint8_t* memory) const {
    munmap(memory, kBlock);
}

// Null when there is none. From the system and not from the heap, which would keep it.
CWriteBehind::Memory CWriteBehind::NewMemory(bool touched) {
    void* memory = mmap(nullptr, kBlock, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    (void)madvise(memory, kBlock, MADV_HUGEPAGE);
    if (touched)
        std::memset(memory, 0, kBlock);
    return Memory(static_cast<uint8_t*>(memory));
}

bool CWriteBehind::Start(int file) {
    Finish();
    struct stat status {};
    if (file < 0 || fstat(file, &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    m_nFile = file;
    m_nWritten = m_nTaken = m_nReserved = 0;
    m_bStop = m_bFailed = m_bNoRoom = false;
    m_bReserves = true;
    Reserve(0);
    m_bThrough = m_bNoRoom;
    // A second descriptor: the file's own one still writes what isn't a whole block.
    m_nDirect = open(("/proc/self/fd/" + std::to_string(file)).c_str(), O_WRONLY | O_DIRECT | O_CLOEXEC);
    for (size_t i = 0; i < kReadyAtFirst / 2; ++i) {
        if (Memory memory = NewMemory(true)) {
            m_spare.push_back(std::move(memory));
            ++m_nMade;
        }
    }
    try {
        m_thread = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
        (void)ftruncate(file, 0);
        Release();
    }
    return m_thread.joinable();
}

bool CWriteBehind::Write(const void* data, size_t length) {
    if (!m_thread.joinable())
        return false;
    const auto* from = static_cast<const uint8_t*>(data);
    size_t left = length;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (left > 0) {
        Block* block = BlockToFill(lock);
        if (!block)
            return false;
        const size_t part = std::min(left, kBlock - block->filled);
        lock.unlock();
        // `filled` is changed by this thread alone.
        std::memcpy(block->memory.get() + block->filled, from, part);
        lock.lock();
        const bool rested = !HasRest();
        block->filled += part;
        from += part;
        left -= part;
        if (rested || m_bThrough || block->filled == kBlock)
            m_changed.notify_all();
    }
    if (m_bThrough)
        m_changed.wait(lock, [this] { return m_bFailed || !HasRest(); });
    if (m_bFailed)
        return false;
    m_nTaken += static_cast<int64_t>(length);
    return true;
}

// Null when the disk or memory failed.
CWriteBehind::Block* CWriteBehind::BlockToFill(std::unique_lock<std::mutex>& lock) {
    if (m_bFailed)
        return nullptr;
    if (!m_blocks.empty() && m_blocks.back().filled < kBlock)
        return &m_blocks.back();
    Memory memory;
    if (m_spare.empty() && m_nMade < kMostBlocks) {
        ++m_nMade;
        lock.unlock();
        memory = NewMemory(false);
        lock.lock();
        if (!memory)
            --m_nMade;
    }
    if (!memory) {
        m_changed.wait(lock, [this] { return m_bFailed || !m_spare.empty() || m_nMade == 0; });
        if (m_bFailed || m_spare.empty())
            return nullptr;
        memory = std::move(m_spare.back());
        m_spare.pop_back();
    }
    Block block;
    block.memory = std::move(memory);
    if (!m_blocks.empty())
        block.offset = m_blocks.back().offset + static_cast<int64_t>(kBlock);
    else
        block.offset = m_nWritten;
    m_blocks.push_back(std::move(block));
    return &m_blocks.back();
}

void CWriteBehind::Finish() {
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bStop = true;
    }
    m_changed.notify_all();
    m_thread.join();
    if (m_nReserved > m_nWritten || m_bFailed)
        (void)ftruncate(m_nFile, m_nWritten);
    Release();
}

void CWriteBehind::Release() {
    if (m_nDirect >= 0)
        close(m_nDirect);
    m_nDirect = -1;
    m_blocks.clear();
    m_spare.clear();
    m_nMade = 0;
}

void CWriteBehind::Run() {
    pthread_setname_np(pthread_self(), "kolt-behind");
    std::unique_lock<std::mutex> lock(m_mutex);
    while (WaitForWork(lock)) {
        if (WriteFront(lock))
            continue;
        m_bFailed = true;
        m_changed.notify_all();
        return;
    }
}

// Until there is something to write; false when all is written and nothing will come.
bool CWriteBehind::WaitForWork(std::unique_lock<std::mutex>& lock) {
    while (!IsFrontFull()) {
        if (m_bStop || m_bThrough) {
            if (HasRest())
                return true;
            if (m_bStop)
                return false;
        }
        if (KeepSpare(lock))
            continue;
        const auto changed = [this] { return IsFrontFull() || m_bStop || (m_bThrough && HasRest()); };
        if (!HasRest())
            m_changed.wait(lock, [&] { return changed() || HasRest(); });
        else if (!m_changed.wait_for(lock, kRestWaits, changed))
            return true;
    }
    return true;
}

// Makes one block ready. False when there are enough.
bool CWriteBehind::KeepSpare(std::unique_lock<std::mutex>& lock) {
    // A short recording doesn't need them all.
    const size_t wanted = std::min(kReady, kReadyAtFirst + static_cast<size_t>(m_nWritten) / kBlock);
    if (m_spare.size() >= wanted || m_nMade >= kMostBlocks)
        return false;
    ++m_nMade;
    lock.unlock();
    Memory memory = NewMemory(true);
    lock.lock();
    const bool made = memory != nullptr;
    if (made)
        m_spare.push_back(std::move(memory));
    else
        --m_nMade;
    m_changed.notify_all();
    return made;
}

bool CWriteBehind::WriteFront(std::unique_lock<std::mutex>& lock) {
    Block& block = m_blocks.front();
    const size_t from = block.written;
    const size_t length = block.filled - from;
    const int64_t at = block.offset + static_cast<int64_t>(from);
    // Nobody shall wait long for the end of a recording: the last blocks go into the page cache.
    const bool direct = length == kBlock && !m_bStop;
    lock.unlock();
    Reserve(at + static_cast<int64_t>(length));
    const size_t written = WriteOut(block.memory.get() + from, length, at, direct);
    if (direct && m_nDirect < 0)
        KeepWriting(at);
    lock.lock();
    block.written += written;
    m_nWritten += static_cast<int64_t>(written);
    m_bThrough = m_bNoRoom;
    if (block.written == kBlock) {
        m_spare.push_back(std::move(block.memory));
        m_blocks.pop_front();
    }
    m_changed.notify_all();
    return written == length;
}

// What could be written of it.
size_t CWriteBehind::WriteOut(const uint8_t* data, size_t length, int64_t at, bool direct) {
    size_t done = 0;
    while (done < length) {
        const bool past = direct && done == 0 && m_nDirect >= 0;
        const ssize_t part =
            pwrite(past ? m_nDirect : m_nFile, data + done, length - done, at + static_cast<int64_t>(done));
        if (part > 0) {
            done += static_cast<size_t>(part);
        } else if (past && errno != EINTR) {
            // A file system may take the flag and refuse the write: the page cache is for everyone.
            close(m_nDirect);
            m_nDirect = -1;
        } else if (part == 0 || errno != EINTR) {
            break;
        }
    }
    return done;
}

// Left alone, the page cache collects gigabytes and then stops the thread for seconds while it empties. So
// write-back is begun at once, and what was begun a while ago leaves the cache. Advice only.
void CWriteBehind::KeepWriting(int64_t at) const {
    constexpr auto length = static_cast<int64_t>(kBlock);
    (void)sync_file_range(m_nFile, at, length, SYNC_FILE_RANGE_WRITE);
    const int64_t settled = at - kInFlight;
    if (settled < 0)
        return;
    (void)sync_file_range(m_nFile, settled, length,
                          SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
    (void)posix_fadvise(m_nFile, settled, length, POSIX_FADV_DONTNEED);
}

// Keeps room for what comes after `end`, so that the file lies in few pieces and a full disk shows early.
void CWriteBehind::Reserve(int64_t end) {
    if (!m_bReserves || end + kReserveAhead / 2 < m_nReserved)
        return;
    if (fallocate(m_nFile, FALLOC_FL_KEEP_SIZE, m_nReserved, kReserveAhead) == 0) {
        m_nReserved += kReserveAhead;
        return;
    }
    m_bNoRoom = errno == ENOSPC || errno == EDQUOT;
    m_bReserves = false;
}
