#include "Camera/QDeviceDetectThread.h"

#include "Camera/CCameraRef.h"
#include "Camera/CameraHandle.h"
#include "Camera/DeviceIdentity.h"
#include "Camera/HostInterfaces.h"
#include "Camera/WalkByIndex.h"
#include "Common/QFunction.h"

#include <QStringList>
#include <algorithm>
#include <new>

namespace {

// Null when there is no memory for it.
QCameraContainer* Registry() {
    try {
        return QCameraContainer::Instance();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

QCamera* NewCamera() {
    try {
        return QCamera::NewInstance();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool ParseAddress(const QString& text, uint32_t& address) {
    const QStringList parts = text.split('.', Qt::SkipEmptyParts);
    if (parts.size() != 4)
        return false;
    address = 0;
    for (const QString& part : parts)
        address = address << 8 | static_cast<uint32_t>(part.toInt());
    return true;
}

} // namespace

bool IsAbleAddress(const QVector<_HOST_IP_INFO_STRU>& hosts, uint32_t ip) {
    for (const _HOST_IP_INFO_STRU& host : hosts) {
        uint32_t address = 0;
        uint32_t mask = 0;
        // deliberate: one bad host text ends the test, whatever the hosts behind it would say.
        if (!ParseAddress(host.ip, address) || !ParseAddress(host.mask, mask))
            return false;
        if (IsSameSubnet(ip, address, mask) && (ip & 0xFF) <= 253 && ip != address)
            return true;
    }
    return false;
}

QDeviceDetectThread::QDeviceDetectThread(QObject* parent) : QThread(parent) {
    setObjectName("kolt-detect"); // the thread's name
}

QDeviceDetectThread::~QDeviceDetectThread() {
    quit();
    wait();
    const std::lock_guard<std::mutex> ended(m_roundMutex);
}

void QDeviceDetectThread::run() {
    const std::lock_guard<std::mutex> round(m_roundMutex);
    InitHostVector();
    m_deviceList = {};
    if (OV_CC_EnumDevices(OV_TLAYER_GIGE | OV_TLAYER_USB3, &m_deviceList) != OV_STATUS_OK) {
        Q_EMIT SigErrorMsg(ERROR_ENUMERATION);
        return;
    }
    FliterDevices(m_deviceList);
    if (!Registry()) {
        Q_EMIT SigErrorMsg(ERROR_REGISTRY);
        return;
    }
    QList<long> gone;
    if (!VisitCameras([&](QCamera& camera) { return UpdateCamera(camera, gone); }))
        return;
    DeleteCameras(gone);
    if (!AddNewCameras())
        return;
    Q_EMIT SigDetectDevFinished();
}

void QDeviceDetectThread::InitHostVector() {
    m_hosts.clear();
    const QVector<_HOST_INTERFACE_> interfaces = ListHostInterfaces();
    for (const _HOST_INTERFACE_& host : interfaces) {
        for (const _HOST_ADDRESS_& address : host.addresses) {
            const QString ip = QFunction::GetIP(address.ip);
            if (!address.broadcast.isEmpty() && ip.left(3) != "127")
                m_hosts.append({ip, QFunction::GetIP(address.mask)});
        }
    }
}

void QDeviceDetectThread::FliterDevices(const _OV_CC_DEVICE_INFO_LIST_& list) {
    m_devices.clear();
    const uint32_t count = std::min<uint32_t>(list.deviceCount, OV_MAX_DEVICES);
    for (uint32_t i = 0; i < count; ++i) {
        if (list.devices[i] && !IsUbootDevice(*list.devices[i]))
            m_devices.append(*list.devices[i]);
    }
}

bool QDeviceDetectThread::IsUbootDevice(const _OV_CC_DEVICE_INFO_& info) {
    return IsInBootLoader(info);
}

bool QDeviceDetectThread::IsDeviceExited(const _OV_CC_DEVICE_INFO_& a, const _OV_CC_DEVICE_INFO_& b) {
    return IsSameDevice(a, b);
}

// Visits the cameras of the registry, each held by a reference. False when the round ends here: the main
// thread deleted a camera during the walk (the next round sees a settled registry), or the visitor said so.
bool QDeviceDetectThread::VisitCameras(const std::function<bool(QCamera&)>& visit) {
    QCameraContainer* registry = QCameraContainer::Instance();
    const WalkEnd end =
        WalkByIndex([registry] { return registry->GetTotalCameraNum(); }, &CCameraRef::ByIndex,
                    [&visit](const CCameraRef& camera) { return visit(*camera); });
    if (end == WalkEnd::Missing)
        Q_EMIT SigErrorMsg(ERROR_REGISTRY);
    return end == WalkEnd::All;
}

bool QDeviceDetectThread::UpdateCamera(QCamera& camera, QList<long>& gone) {
    const _OV_CC_DEVICE_INFO_ info = camera.GetOVCCDevInfo();
    const auto found =
        std::find_if(m_devices.cbegin(), m_devices.cend(),
                     [&info](const _OV_CC_DEVICE_INFO_& device) { return IsDeviceExited(info, device); });
    if (found != m_devices.cend()) {
        camera.SetOVCCDevInfo(*found);
        Q_EMIT SigUpdateCameraInfo(camera.GetCameraID(), true);
        return true;
    }
    if (!camera.GetRemoteCamera()) {
        gone.append(camera.GetCameraID());
        return true;
    }
    // deliberate: a remote camera that doesn't answer cuts the whole round short, and tells nobody.
    return AskRemoteCamera(camera, info);
}

bool QDeviceDetectThread::AskRemoteCamera(const QCamera& camera, _OV_CC_DEVICE_INFO_ info) {
    const CCameraHandle handle(info, CCameraHandle::Log::Without);
    if (!handle || OV_CC_GetDeviceInfo(handle.Get(), &info) != OV_STATUS_OK)
        return false;
    // The answer is used for the name only; the camera keeps its record.
    Q_EMIT SigUpdateCamName(RemoteNameOfRound(info), camera.GetCameraID());
    return true;
}

void QDeviceDetectThread::DeleteCameras(const QList<long>& gone) {
    QCameraContainer* registry = QCameraContainer::Instance();
    for (const long id : gone) {
        // The open camera stays, although its device has gone: its loss is told by the camera itself.
        if (id == registry->GetCurrentCameraID())
            continue;
        registry->DelCameraByID(id);
        Q_EMIT SigDeleteCamera(id);
    }
}

bool QDeviceDetectThread::AddNewCameras() {
    for (const _OV_CC_DEVICE_INFO_& info : qAsConst(m_devices)) {
        bool known = false;
        const bool all = VisitCameras([&](const QCamera& camera) {
            known = IsDeviceExited(camera.GetOVCCDevInfo(), info);
            return !known;
        });
        if (known)
            continue;
        if (!all)
            return false;
        const long id = AddCamera(info);
        // deliberate: also for 0, a camera that could not be made; nobody finds a camera of that id.
        if (id >= 0)
            Q_EMIT SigNewCamera(id, true);
    }
    return true;
}

long QDeviceDetectThread::AddCamera(const _OV_CC_DEVICE_INFO_& info) {
    QCameraContainer* registry = Registry();
    if (!QFunction::Instance() || !registry)
        return 0;
    const long id = QFunction::GetCameraIDIndex();
    QCamera* camera = NewCamera();
    if (!camera)
        return 0;
    camera->AddRef();
    camera->SetCameraID(id);
    camera->SetOVCCDevInfo(info);
    registry->AddCamera(camera);
    camera->ReleaseRef();
    return id;
}

bool QDeviceDetectThread::CheckdwIPAble(long long ip) const {
    return IsAbleAddress(m_hosts, static_cast<uint32_t>(ip));
}

bool QDeviceDetectThread::OpenForCamState(const _OV_CC_DEVICE_INFO_* info, unsigned long ip) const {
    if (!info)
        return false;
    const CCameraHandle handle(*info, CCameraHandle::Log::With);
    if (!handle)
        return false;
    const bool accessible = (OV_CC_IsDeviceAccessible(info, OV_ACCESS_EXCLUSIVE) & 0xFF) != 0;
    if (!CheckdwIPAble(static_cast<long long>(ip)))
        return false;
    return accessible || OV_CC_OpenDevice(handle.Get(), OV_ACCESS_EXCLUSIVE, 0) == OV_STATUS_ACCESS_DENIED;
}
