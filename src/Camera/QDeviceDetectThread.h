// Finds cameras and keeps the registry equal to what is there.
#pragma once

#include "Camera/Boundary/OvCameraControl.h"

#include <QList>
#include <QString>
#include <QThread>
#include <QVector>
#include <atomic>
#include <functional>
#include <mutex>

class QCamera;

// An address of the host, both as dotted text.
struct _HOST_IP_INFO_STRU {
    QString ip;
    QString mask;
};

// A same-subnet test that is stricter than that of the device tree: `ip` (host order) lies in the subnet of
// one of the hosts, does not end in .254 or .255, and is not that host's own. A host whose texts are no four
// numbers makes it false at once.
bool IsAbleAddress(const QVector<_HOST_IP_INFO_STRU>& hosts, uint32_t ip);

// One start is one detection round: list the devices, update the cameras of the registry that were found
// again, delete those that were not (except the current one and remote ones), add the new ones. A start
// during a round does nothing. The same object serves for any number of rounds.
//
// The owner makes, starts and deletes it; the destructor waits for a running round, which can't be
// interrupted and takes as long as the enumeration. Signals are emitted on the round's thread and carry ids:
// a receiver looks the camera up again and copes with its having gone.
class QDeviceDetectThread : public QThread {
    Q_OBJECT

public:
    // SigErrorMsg
    enum { ERROR_REGISTRY = 1, ERROR_ENUMERATION = 2 };

    explicit QDeviceDetectThread(QObject* parent = nullptr);
    ~QDeviceDetectThread() override;

    // Sets a flag that no round looks at.
    void ExitThread() { m_nExit = 1; }

    // --- steps of a round; not while one runs
    void InitHostVector();
    const QVector<_HOST_IP_INFO_STRU>& GetHostVector() const { return m_hosts; }
    void FliterDevices(const _OV_CC_DEVICE_INFO_LIST_& list);
    const QVector<_OV_CC_DEVICE_INFO_>& GetDeviceVector() const { return m_devices; }
    static bool IsUbootDevice(const _OV_CC_DEVICE_INFO_& info);
    static bool IsDeviceExited(const _OV_CC_DEVICE_INFO_& a, const _OV_CC_DEVICE_INFO_& b);
    // The id of the new camera in the registry; 0 when there is no memory for it.
    static long AddCamera(const _OV_CC_DEVICE_INFO_& info);

    // --- kept as tools; no round calls them. `ip` is in host order; only its low 32 bits count.
    bool CheckdwIPAble(long long ip) const;
    // The camera could be opened, or somebody else has it open. Blocks for a register time-out at most.
    bool OpenForCamState(const _OV_CC_DEVICE_INFO_* info, unsigned long ip) const;

Q_SIGNALS:
    void SigErrorMsg(int nError);
    void SigDeleteCamera(long lCameraID);
    void SigNewCamera(long lCameraID, bool bCanOpen);
    void SigUpdateCameraInfo(long lCameraID, bool bReachable);
    void SigDetectDevFinished();
    void SigUpdateCamName(QString strName, long lCamId);

protected:
    void run() override;

private:
    // False: the round ends here.
    bool VisitCameras(const std::function<bool(QCamera&)>& visit);
    bool UpdateCamera(QCamera& camera, QList<long>& gone);
    bool AskRemoteCamera(const QCamera& camera, _OV_CC_DEVICE_INFO_ info);
    void DeleteCameras(const QList<long>& gone);
    bool AddNewCameras();

    std::atomic<int32_t> m_nExit{0};
    // Held by a round, and to see its end; guards what follows. The library is called under it, so that
    // nobody else may take it.
    std::mutex m_roundMutex;
    // Of the round; made anew by each.
    QVector<_HOST_IP_INFO_STRU> m_hosts;
    QVector<_OV_CC_DEVICE_INFO_> m_devices;
    _OV_CC_DEVICE_INFO_LIST_ m_deviceList{};
};
