#include "support/DiskDouble.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace support {

using Lock = std::unique_lock<std::mutex>;

DiskDouble& DiskDouble::Get() {
    static DiskDouble disk;
    return disk;
}

void DiskDouble::Stop() {
    const Lock lock(m_mutex);
    m_stopped = true;
}

void DiskDouble::GoOn() {
    const Lock lock(m_mutex);
    m_stopped = false;
    m_changed.notify_all();
}

void DiskDouble::FailFrom(int64_t offset, int error) {
    const Lock lock(m_mutex);
    m_failFrom = offset;
    m_error = error;
}

void DiskDouble::RefuseDirect() {
    const Lock lock(m_mutex);
    m_refuseDirect = true;
}

void DiskDouble::ShortWrites(size_t most) {
    const Lock lock(m_mutex);
    m_most = most;
}

void DiskDouble::FailReserving(int error) {
    const Lock lock(m_mutex);
    m_reserveError = error;
}

void DiskDouble::Reset() {
    const Lock lock(m_mutex);
    m_stopped = m_refuseDirect = false;
    m_failFrom.reset();
    m_most = SIZE_MAX;
    m_reserveError = 0;
    m_directBytes = m_cachedBytes = 0;
    m_changed.notify_all();
}

int64_t DiskDouble::DirectBytes() const {
    const Lock lock(m_mutex);
    return m_directBytes;
}

int64_t DiskDouble::CachedBytes() const {
    const Lock lock(m_mutex);
    return m_cachedBytes;
}

} // namespace support

extern "C" {
ssize_t __real_pwrite(int file, const void* data, size_t length, off_t at);
int __real_fallocate(int file, int mode, off_t at, off_t length);
ssize_t __wrap_pwrite(int file, const void* data, size_t length, off_t at);
int __wrap_fallocate(int file, int mode, off_t at, off_t length);

ssize_t __wrap_pwrite(int file, const void* data, size_t length, off_t at) {
    return support::DiskDouble::Get().Write(file, data, length, at);
}

int __wrap_fallocate(int file, int mode, off_t at, off_t length) {
    return support::DiskDouble::Get().Reserve(file, mode, at, length);
}
}

namespace support {

ssize_t DiskDouble::Write(int file, const void* data, size_t length, off_t at) {
    const bool direct = (fcntl(file, F_GETFL) & O_DIRECT) != 0;
    Lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_stopped; });
    int error = 0;
    if (m_failFrom && at >= *m_failFrom)
        error = m_error;
    else if (direct && m_refuseDirect)
        error = EINVAL;
    if (error != 0) {
        errno = error;
        return -1;
    }
    length = std::min(length, m_most);
    lock.unlock();
    const ssize_t done = __real_pwrite(file, data, length, at);
    if (done > 0) {
        lock.lock();
        (direct ? m_directBytes : m_cachedBytes) += done;
    }
    return done;
}

int DiskDouble::Reserve(int file, int mode, off_t at, off_t length) {
    {
        const Lock lock(m_mutex);
        if (m_reserveError != 0) {
            errno = m_reserveError;
            return -1;
        }
    }
    return __real_fallocate(file, mode, at, length);
}

} // namespace support
