#include "support/SystemDoubles.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <new>
#include <pthread.h>
#include <sys/statfs.h>

namespace {

std::atomic<long long> g_freeMiB{-1};
std::atomic<int> g_failAfter{0};
std::atomic<int> g_failCount{0};
std::atomic<size_t> g_failBytes{SIZE_MAX};
std::atomic<int> g_failBytesAfter{0};

} // namespace

extern "C" {
int __real_statfs(const char* path, struct statfs* info);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument);
void* __real__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t& tag);
int __wrap_statfs(const char* path, struct statfs* info);
void* __wrap__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t& tag);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument);

int __wrap_statfs(const char* path, struct statfs* info) {
    const long long wanted = g_freeMiB;
    if (wanted < 0)
        return __real_statfs(path, info);
    *info = {};
    info->f_bsize = 1 << 20;
    info->f_bavail = static_cast<unsigned long>(wanted);
    return 0;
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument) {
    if (g_failCount > 0) {
        if (g_failAfter > 0)
            --g_failAfter;
        else {
            --g_failCount;
            return EAGAIN;
        }
    }
    return __real_pthread_create(thread, attributes, body, argument);
}

// operator new[] that gives null.
void* __wrap__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t& tag) {
    if (size >= g_failBytes && g_failBytesAfter-- <= 0)
        return nullptr;
    return __real__ZnamRKSt9nothrow_t(size, tag);
}
}

namespace support {

void SetFreeMiB(std::optional<unsigned long long> mebibytes) {
    g_freeMiB = mebibytes ? static_cast<long long>(*mebibytes) : -1;
}

void FailThreads(int count, int after) {
    g_failAfter = after;
    g_failCount = count;
}

void FailAllocations(std::optional<size_t> bytes, int after) {
    g_failBytesAfter = after;
    g_failBytes = bytes.value_or(SIZE_MAX);
}

} // namespace support
