// A camera of the registry, kept alive while it is used.
#pragma once

#include "Camera/QCamera.h"
#include "Camera/QCameraContainer.h"

#include <utility>

// Holds one reference, or nothing when there was no such camera. One thread at a time.
class CCameraRef {
public:
    static CCameraRef ById(long id) { return CCameraRef(QCameraContainer::Instance()->AcquireCamera(id)); }
    static CCameraRef ByIndex(int index) {
        return CCameraRef(QCameraContainer::Instance()->AcquireCameraByIndex(index));
    }
    static CCameraRef ByIp(unsigned int ip) {
        return CCameraRef(QCameraContainer::Instance()->AcquireCameraByIP(ip));
    }

    ~CCameraRef() {
        if (m_pCamera)
            m_pCamera->ReleaseRef();
    }
    CCameraRef(CCameraRef&& other) noexcept : m_pCamera(std::exchange(other.m_pCamera, nullptr)) {}
    CCameraRef& operator=(CCameraRef&&) = delete;
    CCameraRef(const CCameraRef&) = delete;
    CCameraRef& operator=(const CCameraRef&) = delete;

    explicit operator bool() const { return m_pCamera != nullptr; }
    QCamera* operator->() const { return m_pCamera; }
    QCamera& operator*() const { return *m_pCamera; }

private:
    explicit CCameraRef(QCamera* acquired) : m_pCamera(acquired) {}

    QCamera* m_pCamera = nullptr;
};
