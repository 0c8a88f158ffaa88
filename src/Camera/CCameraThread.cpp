#include "Camera/CCameraThread.h"

#include <cstdlib>

void CCameraThread::Start(void* (*body)(void*), void* argument, const char* name) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_bRunning)
        return;
    // deliberate: without its threads a camera can't work, and the process ends at once, without any
    // clean-up: the camera's other threads still run, and would use what static destructors take away.
    if (pthread_create(&m_id, nullptr, body, argument) != 0)
        std::_Exit(1);
    m_bRunning = true;
    pthread_setname_np(m_id, name);
}

int CCameraThread::StopAndJoin(int idle) {
    m_stop.Set();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_bRunning)
        return idle;
    const int result = pthread_join(m_id, nullptr);
    m_bRunning = false;
    m_id = {};
    return result;
}

bool CCameraThread::IsRunning() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_bRunning;
}
