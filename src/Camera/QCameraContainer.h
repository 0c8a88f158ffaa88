// The process-wide registry of cameras.
#pragma once

#include <QMutex>
#include <atomic>
#include <vector>

class QCamera;

// Holds one reference to every camera in it. The getters add none: a caller that keeps the pointer calls
// QCamera::AddRef right after the lookup and ReleaseRef when done. Any thread.
class QCameraContainer {
public:
    // Made on first use.
    static QCameraContainer* Instance();
    static void ReleaseInstance();

    virtual ~QCameraContainer();
    QCameraContainer(const QCameraContainer&) = delete;
    QCameraContainer& operator=(const QCameraContainer&) = delete;

    // Null when there is none.
    QCamera* GetCamera(long id);
    QCamera* GetCameraByIndex(int index);
    QCamera* GetCameraByIP(unsigned int ip);
    int GetTotalCameraNum();
    // The same with a reference added before anybody else can delete the camera; the caller's to release
    // (CCameraRef does).
    QCamera* AcquireCamera(long id);
    QCamera* AcquireCameraByIndex(int index);
    QCamera* AcquireCameraByIP(unsigned int ip);

    // The current camera's id, -1 for none.
    void SetCurrentCameraID(long id);
    long GetCurrentCameraID() const;

    void AddCamera(QCamera* camera);
    void DelCamera(QCamera* camera);
    void DelCameraByID(long id);
    void DelCameraByIndex(int index);

private:
    QCameraContainer();
    // Under m_mutex.
    QCamera* Find(long id) const;
    QCamera* FindByIndex(int index) const;
    QCamera* FindByIP(unsigned int ip) const;

    std::vector<QCamera*> m_cameras; // in order of addition; guarded by m_mutex
    QMutex m_mutex;                  // taken alone; held while a reference is released
    std::atomic<long> m_lCurrentCameraID{-1};
};
