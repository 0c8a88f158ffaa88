// The disk below a file that is written behind its writer's back: it stops, fails, or knows fewer calls.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <sys/types.h>

namespace support {

// What pwrite and fallocate meet in a program that links kolt_platform_doubles; after Reset the truth. Any
// thread.
class DiskDouble {
public:
    static DiskDouble& Get();

    // Writes wait from now on, until GoOn or Reset.
    void Stop();
    void GoOn();
    // Writes that begin at or after `offset` fail with this errno.
    void FailFrom(int64_t offset, int error);
    // Writes past the page cache fail with EINVAL.
    void RefuseDirect();
    // Writes take no more than `most` bytes.
    void ShortWrites(size_t most);
    // Room can't be reserved, with this errno.
    void FailReserving(int error);
    void Reset();

    // Written since Reset, past the page cache and through it.
    int64_t DirectBytes() const;
    int64_t CachedBytes() const;

    // For the calls themselves.
    ssize_t Write(int file, const void* data, size_t length, off_t at);
    int Reserve(int file, int mode, off_t at, off_t length);

private:
    mutable std::mutex m_mutex; // guards all below
    std::condition_variable m_changed;
    bool m_stopped = false;
    bool m_refuseDirect = false;
    std::optional<int64_t> m_failFrom;
    int m_error = 0;
    size_t m_most = SIZE_MAX;
    int m_reserveError = 0;
    int64_t m_directBytes = 0;
    int64_t m_cachedBytes = 0;
};

} // namespace support
