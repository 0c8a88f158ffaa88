#pragma once
/// The lock of a node map. Recursive; held by the map for one node operation at a time. A program may hold it
/// longer to make several operations one.
#include <mutex>

#include "Base/GCTypes.h"

namespace GenApi_3_0 {

class GENAPI_API CLock {
public:
    CLock() = default;
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;
    ~CLock() = default;

    bool TryLock() { return m_mutex.try_lock(); }
    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex; // guards all that changes in one node map
};

class GENAPI_API AutoLock {
public:
    explicit AutoLock(CLock& lock) : m_lock(lock) { m_lock.Lock(); }
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;
    ~AutoLock() { m_lock.Unlock(); }

private:
    CLock& m_lock;
};

} // namespace GenApi_3_0
