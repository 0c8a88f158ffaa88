#include "Camera/CWriteBehind.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// So much is under way to the disk before the writer waits for the oldest of it.
constexpr int64_t kInFlight = int64_t{32} << 20;
constexpr int64_t kReserveStep = int64_t{256} << 20;

} // namespace

void CWriteBehind::Start(int file) {
    *this = CWriteBehind();
    m_nFile = file;
    m_bReserves = file >= 0;
    ReserveAhead();
}

void CWriteBehind::ReserveAhead() {
    if (!m_bReserves || m_nWritten + kReserveStep / 2 < m_nReserved)
        return;
    if (fallocate(m_nFile, FALLOC_FL_KEEP_SIZE, m_nReserved, kReserveStep) == 0)
        m_nReserved += kReserveStep;
    else
        m_bReserves = false;
}

void CWriteBehind::OnWritten(int64_t length) {
    if (m_nFile < 0)
        return;
    (void)sync_file_range(m_nFile, m_nWritten, length, SYNC_FILE_RANGE_WRITE);
    m_nWritten += length;
    const int64_t settled = m_nWritten - kInFlight;
    if (settled > m_nDropped) {
        (void)sync_file_range(m_nFile, m_nDropped, settled - m_nDropped,
                              SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                  SYNC_FILE_RANGE_WAIT_AFTER);
        (void)posix_fadvise(m_nFile, m_nDropped, settled - m_nDropped, POSIX_FADV_DONTNEED);
        m_nDropped = settled;
    }
    ReserveAhead();
}

void CWriteBehind::Finish() {
    if (m_nFile >= 0 && m_nReserved > m_nWritten)
        (void)ftruncate(m_nFile, m_nWritten);
    m_nFile = -1;
}
