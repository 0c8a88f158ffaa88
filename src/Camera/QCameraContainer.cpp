#include "Camera/QCameraContainer.h"

#include "Camera/QCamera.h"
#include "Common/CMutexLocker.h"

#include <algorithm>

namespace {

QMutex g_instanceMutex; // guards the next
QCameraContainer* g_instance = nullptr;

} // namespace

QCameraContainer* QCameraContainer::Instance() {
    const CMutexLocker lock(&g_instanceMutex);
    if (!g_instance)
        g_instance = new QCameraContainer;
    return g_instance;
}

void QCameraContainer::ReleaseInstance() {
    QCameraContainer* released = nullptr;
    {
        const CMutexLocker lock(&g_instanceMutex);
        released = g_instance;
        g_instance = nullptr;
    }
    delete released;
}

QCameraContainer::QCameraContainer() = default;

QCameraContainer::~QCameraContainer() {
    const CMutexLocker lock(&m_mutex);
    for (QCamera* camera : m_cameras)
        camera->ReleaseRef();
    m_cameras.clear();
}

QCamera* QCameraContainer::Find(long id) const {
    if (id < 0)
        return nullptr;
    const auto found =
        std::find_if(m_cameras.begin(), m_cameras.end(), [id](QCamera* c) { return c->GetCameraID() == id; });
    return found == m_cameras.end() ? nullptr : *found;
}

QCamera* QCameraContainer::FindByIndex(int index) const {
    if (index < 0 || index >= static_cast<int>(m_cameras.size()))
        return nullptr;
    return m_cameras[static_cast<size_t>(index)];
}

QCamera* QCameraContainer::GetCamera(long id) {
    const CMutexLocker lock(&m_mutex);
    return Find(id);
}

QCamera* QCameraContainer::GetCameraByIndex(int index) {
    const CMutexLocker lock(&m_mutex);
    return FindByIndex(index);
}

QCamera* QCameraContainer::AcquireCamera(long id) {
    const CMutexLocker lock(&m_mutex);
    QCamera* camera = Find(id);
    if (camera)
        camera->AddRef();
    return camera;
}

QCamera* QCameraContainer::AcquireCameraByIndex(int index) {
    const CMutexLocker lock(&m_mutex);
    QCamera* camera = FindByIndex(index);
    if (camera)
        camera->AddRef();
    return camera;
}

QCamera* QCameraContainer::AcquireCameraByIP(unsigned int ip) {
    const CMutexLocker lock(&m_mutex);
    QCamera* camera = FindByIP(ip);
    if (camera)
        camera->AddRef();
    return camera;
}

QCamera* QCameraContainer::GetCameraByIP(unsigned int ip) {
    const CMutexLocker lock(&m_mutex);
    return FindByIP(ip);
}

QCamera* QCameraContainer::FindByIP(unsigned int ip) const {
    if (ip == 0)
        return nullptr;
    const auto found =
        std::find_if(m_cameras.begin(), m_cameras.end(), [ip](QCamera* c) { return c->GetIP() == ip; });
    return found == m_cameras.end() ? nullptr : *found;
}

int QCameraContainer::GetTotalCameraNum() {
    const CMutexLocker lock(&m_mutex);
    return static_cast<int>(m_cameras.size());
}

void QCameraContainer::SetCurrentCameraID(long id) {
    m_lCurrentCameraID = id;
}

long QCameraContainer::GetCurrentCameraID() const {
    return m_lCurrentCameraID;
}

void QCameraContainer::AddCamera(QCamera* camera) {
    if (!camera)
        return;
    const CMutexLocker lock(&m_mutex);
    camera->AddRef();
    m_cameras.push_back(camera);
}

void QCameraContainer::DelCamera(QCamera* camera) {
    const CMutexLocker lock(&m_mutex);
    const auto found = std::find(m_cameras.begin(), m_cameras.end(), camera);
    if (found == m_cameras.end())
        return;
    (*found)->ReleaseRef();
    m_cameras.erase(found);
}

void QCameraContainer::DelCameraByID(long id) {
    const CMutexLocker lock(&m_mutex);
    const auto found =
        std::find_if(m_cameras.begin(), m_cameras.end(), [id](QCamera* c) { return c->GetCameraID() == id; });
    if (found == m_cameras.end())
        return;
    (*found)->ReleaseRef();
    m_cameras.erase(found);
}

void QCameraContainer::DelCameraByIndex(int index) {
    const CMutexLocker lock(&m_mutex);
    if (index < 0 || index >= static_cast<int>(m_cameras.size()))
        return;
    m_cameras[static_cast<size_t>(index)]->ReleaseRef();
    m_cameras.erase(m_cameras.begin() + index);
}
