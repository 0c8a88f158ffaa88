#include "Camera/CWriteBehind.h"

#include <fcntl.h>
#include <pthread.h>
#include <system_error>
#include <unistd.h>

namespace {

// So much is under way to the disk before the thread waits for the oldest of it.
constexpr int64_t kInFlight = int64_t{32} << 20;
// So much may lie in the page cache before the writer waits for the thread.
constexpr int64_t kMostBehind = int64_t{256} << 20;
constexpr int64_t kReserveStep = int64_t{256} << 20;

} // namespace

void CWriteBehind::Start(int file) {
    Finish();
    if (file < 0)
        return;
    m_nWritten = m_nSettled = m_nStarted = m_nReserved = 0;
    m_bStop = false;
    m_bReserves = true;
    m_nFile = file;
    try {
        m_thread = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
        m_nFile = -1;
    }
}

void CWriteBehind::OnWritten(int64_t length) {
    if (m_nFile < 0)
        return;
    std::unique_lock<std::mutex> lock(m_mutex);
    m_nWritten += length;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_nWritten - m_nSettled <= kMostBehind; });
}

void CWriteBehind::Finish() {
    if (m_nFile < 0)
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bStop = true;
    }
    m_changed.notify_all();
    m_thread.join();
    if (m_nReserved > m_nWritten)
        (void)ftruncate(m_nFile, m_nWritten);
    m_nFile = -1;
}

void CWriteBehind::Run() {
    pthread_setname_np(pthread_self(), "kolt-behind");
    ReserveAhead(0);
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_bStop) {
        const int64_t written = m_nWritten;
        if (written == m_nStarted) {
            m_changed.wait(lock);
            continue;
        }
        lock.unlock();
        Advise(written);
        lock.lock();
    }
}

void CWriteBehind::Advise(int64_t written) {
    (void)sync_file_range(m_nFile, m_nStarted, written - m_nStarted, SYNC_FILE_RANGE_WRITE);
    m_nStarted = written;
    const int64_t settled = written - kInFlight;
    const int64_t before = m_nSettled; // only this thread changes it
    if (settled > before) {
        (void)sync_file_range(m_nFile, before, settled - before,
                              SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                  SYNC_FILE_RANGE_WAIT_AFTER);
        (void)posix_fadvise(m_nFile, before, settled - before, POSIX_FADV_DONTNEED);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_nSettled = settled;
        }
        m_changed.notify_all();
    }
    ReserveAhead(written);
}

void CWriteBehind::ReserveAhead(int64_t written) {
    if (!m_bReserves || written + kReserveStep / 2 < m_nReserved)
        return;
    if (fallocate(m_nFile, FALLOC_FL_KEEP_SIZE, m_nReserved, kReserveStep) == 0)
        m_nReserved += kReserveStep;
    else
        m_bReserves = false;
}
