// Holds a QMutex for a scope.
#pragma once

#include <QMutex>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

// As QMutexLocker, but ThreadSanitizer understands it: Qt's libraries are built without it, so it does not
// see what a contended QMutex does inside of them and takes well guarded data for a race. Here it is told.
class CMutexLocker {
public:
    explicit CMutexLocker(QMutex* mutex) : m_pMutex(mutex) {
#if defined(__SANITIZE_THREAD__)
        __tsan_mutex_pre_lock(m_pMutex, 0);
#endif
        m_pMutex->lock();
#if defined(__SANITIZE_THREAD__)
        __tsan_mutex_post_lock(m_pMutex, 0, 0);
#endif
    }
    ~CMutexLocker() {
#if defined(__SANITIZE_THREAD__)
        __tsan_mutex_pre_unlock(m_pMutex, 0);
#endif
        m_pMutex->unlock();
#if defined(__SANITIZE_THREAD__)
        __tsan_mutex_post_unlock(m_pMutex, 0);
#endif
    }
    CMutexLocker(const CMutexLocker&) = delete;
    CMutexLocker& operator=(const CMutexLocker&) = delete;

private:
    QMutex* const m_pMutex;
};
