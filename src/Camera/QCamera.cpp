// Life, identity, opening and closing of a camera.
#include "Camera/QCamera.h"

#include "Camera/CRecordFile.h"
#include "Camera/QCameraOwner.h"
#include "Camera/QFrameBufManager.h"
#include "Camera/XmlDepth.h"
#include "Common/CMutexLocker.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"

#include <QCoreApplication>
#include <QDataStream>
#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <map>
#include <new>

namespace {

constexpr uint32_t kXmlCapacity = 0x300000;
constexpr uint32_t kFirstBufferSize = 7168;
constexpr int kDeepestXml = 256; // the DOM recurses; real cameras stay below 20

const char kSource[] = "KOLT CAPTURE";

// The library may call back while the camera is being deleted: a camera that is leaving waits for the calls
// inside it, and later ones find it gone.
class CLiveCameras {
public:
    void Add(void* camera) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_inside[camera] = 0;
    }
    bool Enter(void* camera) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_inside.find(camera);
        if (found == m_inside.end())
            return false;
        ++found->second;
        return true;
    }
    void Leave(void* camera) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        --m_inside[camera];
        m_left.notify_all();
    }
    void RemoveWhenEmpty(void* camera) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_left.wait(lock, [&] { return m_inside[camera] == 0; });
        m_inside.erase(camera);
    }

private:
    std::mutex m_mutex; // guards m_inside
    std::condition_variable m_left;
    std::map<void*, int> m_inside; // calls in progress
};

CLiveCameras& LiveCameras() {
    static CLiveCameras cameras;
    return cameras;
}

QString FieldText(const char* field, size_t size) {
    return QString::fromUtf8(field, static_cast<int>(strnlen(field, size)));
}

} // namespace

QCamera* QCamera::NewInstance() {
    return new QCamera;
}

QCamera::QCamera() {
    m_clock.start();
    Initialize();
    LiveCameras().Add(this);
}

QCamera::~QCamera() {
    LiveCameras().RemoveWhenEmpty(this);
    UnInitialize();
}

void QCamera::Initialize() {
    m_pRefMutex = std::make_unique<QMutex>();
    m_pSpareMutex = std::make_unique<QMutex>();
    m_pGrabBuffer = std::make_unique<uint8_t[]>(kFirstBufferSize);
    m_pDisplayBuffer = std::make_unique<uint8_t[]>(kFirstBufferSize);
}

void QCamera::UnInitialize() {
    StopGettingFrame();
    CloseCamera();
    m_pRefMutex.reset();
    m_pSpareMutex.reset();
    m_pXml.reset();
    m_nXmlLength = 0;
    m_pGrabBuffer.reset();
    m_pSaveBuffer.reset();
    m_nSaveBufferSize = 0;
    m_pEncodeBuffer.reset();
    m_nEncodeBufferSize = 0;
    m_pDisplayBuffer.reset();
    m_pScratch.reset();
    m_nScratchSize = 0;
    m_triggerThread.StopAndJoin();
}

void QCamera::AddRef() {
    if (!m_pRefMutex)
        return;
    const CMutexLocker lock(m_pRefMutex.get());
    ++m_nRef;
}

void QCamera::ReleaseRef() {
    if (!m_pRefMutex)
        return;
    int left = 0;
    {
        const CMutexLocker lock(m_pRefMutex.get());
        left = --m_nRef;
    }
    if (left <= 0)
        delete this;
}

bool QCamera::SetCameraName(const char* name) {
    if (!name)
        return false;
    const size_t length = std::strlen(name);
    // deliberate: 128 bytes pass, although the terminator is then the 129th.
    if (length > 128)
        return false;
    const std::lock_guard<std::mutex> lock(m_identityMutex);
    m_name.fill('\0');
    std::memcpy(m_name.data(), name, length);
    return true;
}

char* QCamera::GetCameraName(char* buffer, int capacity) const {
    const std::lock_guard<std::mutex> lock(m_identityMutex);
    const size_t length = std::strlen(m_name.data());
    if (!buffer || capacity <= static_cast<int>(length))
        return nullptr;
    std::memcpy(buffer, m_name.data(), length + 1);
    return buffer;
}

uint32_t QCamera::GetTLayerType() const {
    return GetOVCCDevInfo().nTLayerType;
}

uint32_t QCamera::GetIP() const {
    return GetOVCCDevInfo().transport.gige.currentIp;
}

QString QCamera::GetCameraModelName() const {
    const _OV_CC_DEVICE_INFO_ info = GetOVCCDevInfo();
    if (info.nTLayerType == OV_TLAYER_GIGE)
        return FieldText(info.transport.gige.modelName, sizeof info.transport.gige.modelName);
    if (info.nTLayerType == OV_TLAYER_USB3)
        return FieldText(info.transport.usb3.modelName, sizeof info.transport.usb3.modelName);
    return {};
}

void QCamera::SetOVCCDevInfo(const _OV_CC_DEVICE_INFO_& info) {
    const std::lock_guard<std::mutex> lock(m_identityMutex);
    m_deviceInfo = info;
}

_OV_CC_DEVICE_INFO_ QCamera::GetOVCCDevInfo() const {
    const std::lock_guard<std::mutex> lock(m_identityMutex);
    return m_deviceInfo;
}

int QCamera::GenerateOVCDevInfoByConnectDev() {
    _OV_CC_DEVICE_INFO_ info = GetOVCCDevInfo();
    if (!m_pHandle) {
        void* handle = nullptr;
        if (OV_CC_CreateHandle(&handle, &info) != OV_STATUS_OK || !handle)
            return -5;
        m_pHandle = handle;
    }
    if (OV_CC_GetDeviceInfo(m_pHandle, &info) != OV_STATUS_OK)
        return -15;
    SetOVCCDevInfo(info);
    return 0;
}

bool QCamera::IsGigECameraReachable() const {
    return GetTLayerType() != OV_TLAYER_GIGE || m_bReachable;
}

bool QCamera::IsOtherCamera() const {
    const _OV_CC_DEVICE_INFO_ info = GetOVCCDevInfo();
    QString maker;
    if (info.nTLayerType == OV_TLAYER_GIGE)
        maker = FieldText(info.transport.gige.manufacturerName, sizeof info.transport.gige.manufacturerName);
    else if (info.nTLayerType == OV_TLAYER_USB3)
        maker = FieldText(info.transport.usb3.manufacturerName, sizeof info.transport.usb3.manufacturerName);
    const char* const own[] = {"Zelkovant", "zelkovant", "GEV", "U3V"};
    return std::none_of(std::begin(own), std::end(own), [&maker](const char* name) { return maker == name; });
}

bool QCamera::OpenForCamState(bool tryOpen) {
    const _OV_CC_DEVICE_INFO_ info = GetOVCCDevInfo();
    void* handle = nullptr;
    if (OV_CC_CreateHandle(&handle, &info) != OV_STATUS_OK || !handle)
        return false;
    bool inUse = false;
    const bool accessible = (OV_CC_IsDeviceAccessible(&info, OV_ACCESS_EXCLUSIVE) & 0xFFu) != 0;
    if (tryOpen && accessible) {
        // deliberate: with a true argument a reachable device counts as one in use.
        inUse = true;
    } else if (tryOpen) {
        const uint32_t status = OV_CC_OpenDevice(handle, OV_ACCESS_EXCLUSIVE, 0);
        inUse = status == OV_STATUS_ACCESS_DENIED;
        if (status == OV_STATUS_OK)
            OV_CC_CloseDevice(handle);
    }
    OV_CC_DestroyHandle(handle);
    return inUse;
}

void QCamera::SetCameraDisconnectCallBackInfo(void (*callback)(void*, long), void* user) {
    const std::lock_guard<std::mutex> lock(m_callbackMutex);
    m_pDisconnect = callback;
    m_pDisconnectUser = user;
}

// --- opening
// ----------------------------------------------------------------------------------------------------------------

int QCamera::OpenCamera() {
    if (m_nState != CAMERA_CLOSED)
        return 0;
    if (!m_pXml)
        m_pXml.reset(new (std::nothrow) char[kXmlCapacity + 1]());
    if (!m_pXml)
        return -4;
    if (!m_pHandle) {
        const _OV_CC_DEVICE_INFO_ info = GetOVCCDevInfo();
        void* handle = nullptr;
        if (OV_CC_CreateHandle(&handle, &info) != OV_STATUS_OK)
            return -5;
        m_pHandle = handle;
    }
    if (!m_bReachable)
        return -56;
    uint32_t status = OV_CC_OpenDevice(m_pHandle, OV_ACCESS_EXCLUSIVE, 0);
    if (status == OV_STATUS_OK)
        status = OV_CC_RegisterExceptionCallBack(m_pHandle, CameraExceptionCallBackFunc, this);
    if (status != OV_STATUS_OK)
        return QFunction::GenerateORVErrCode(status);
    if (const int code = ReadGenIcamXml())
        return code;
    if (const int code = BuildNodeMap())
        return code;
    m_nState = CAMERA_OPEN;
    if (!EnsureMediaHandle())
        return -21;
    if (QFunction* function = QFunction::Instance()) {
        const char* text =
            OnCheckDriverInstalled()
                ? QT_TRANSLATE_NOOP("QCamera", "The GigE driver is enabled.")
                : QT_TRANSLATE_NOOP("QCamera", "The GigE driver is not enabled or uninstalled.");
        function->InsertMessageLog(MESSAGE_LOG_WARNING, kSource,
                                   QCoreApplication::translate("QCamera", text));
    }
    OnSetThrowAbnormalImage();
    OnAutoCheckNetwork();
    OnSetSDKBuffers();
    StartDisplayThreads();
    return 0;
}

// Reads the XML into m_pXml, which always has a terminator behind it. Returns a program code.
int QCamera::ReadGenIcamXml() {
    auto* const buffer = reinterpret_cast<uint8_t*>(m_pXml.get());
    std::memset(buffer, 0, kXmlCapacity);
    uint32_t length = 0;
    uint32_t status = OV_XML_GetGenICamXML(m_pHandle, buffer, kXmlCapacity, &length);
    if (length > kXmlCapacity - 1) {
        // deliberate: the second call has a buffer of the camera's length and still tells the first capacity,
        // so that a longer XML ends in the library's status.
        std::unique_ptr<char[]> larger(new (std::nothrow) char[static_cast<size_t>(length) + 1]);
        if (!larger)
            return -4;
        m_pXml = std::move(larger);
        m_pXml[0] = '\0';
        m_pXml[length] = '\0';
        status =
            OV_XML_GetGenICamXML(m_pHandle, reinterpret_cast<uint8_t*>(m_pXml.get()), kXmlCapacity, &length);
        length = std::min(length, kXmlCapacity);
    }
    m_nXmlLength = length;
    return status == OV_STATUS_OK ? 0 : QFunction::GenerateORVErrCode(status);
}

int QCamera::BuildNodeMap() {
    if (XmlDepth(m_pXml.get(), m_nXmlLength) > kDeepestXml)
        return -1;
    QDomDocument document;
    if (!document.setContent(QString(m_pXml.get()), true))
        return -1;
    {
        const std::lock_guard<std::mutex> lock(m_elementMutex);
        m_document = document;
    }
    m_pTlProxy = OV_CC_GetTlProxy(m_pHandle);
    if (!m_pTlProxy)
        return -11;
    try {
        const GenICam_3_0::gcstring xml(m_pXml.get(), m_nXmlLength);
        GenApi_3_0::CNodeMapFactory factory(GenApi_3_0::ContentType_Xml, xml.c_str(), xml.length());
        GenApi_3_0::INodeMap* made = factory.CreateNodeMap("Device");
        if (!made)
            return -12;
        auto map = std::make_shared<GenApi_3_0::CNodeMapRef>(made, "Device");
        map->_Connect(static_cast<GenApi_3_0::IPort*>(m_pTlProxy.load()), "Device");
        const std::unique_lock<std::shared_mutex> lock(m_nodeMapMutex);
        m_pNodeMap = std::move(map);
    } catch (...) {
        return -12;
    }
    return 0;
}

void QCamera::StartDisplayThreads() {
    m_bRenderReady = false;
    m_bSecondRenderReady = false;
    m_displayThread.Stop().Clear();
    m_controlThread.Stop().Clear();
    m_controlThread.Start(DisplayControlThread, this, "kolt-pace");
    m_displayThread.Start(DisplayThread, this, "kolt-display");
}

void QCamera::OnAutoCheckNetwork() {
    QLocalCfg* cfg = QLocalCfg::Instance();
    if (cfg && cfg->GetAutoCheckNetwork())
        SetIntegerNodePropertyValue("GevSCPSPacketSize", GetCheckPacketSize());
}

void QCamera::OnSetThrowAbnormalImage() {
    if (QLocalCfg* cfg = QLocalCfg::Instance())
        OV_CC_SetThrowAbnormalImage(m_pHandle, cfg->GetAutoCheckThrowFrame() ? 1 : 0);
}

void QCamera::OnSetSDKBuffers() {
    if (QLocalCfg* cfg = QLocalCfg::Instance())
        OV_CC_SetImageNodeNum(m_pHandle, static_cast<uint32_t>(std::max(cfg->GetSDKBufferSize(), 0)));
}

// --- closing
// ----------------------------------------------------------------------------------------------------------------

int QCamera::CloseCamera() {
    m_bDisplay = true;
    if (m_nState == CAMERA_GRABBING)
        StopGettingFrame();
    m_nState = CAMERA_CLOSED;
    {
        std::shared_ptr<GenApi_3_0::CNodeMapRef> unmade;
        const std::unique_lock<std::shared_mutex> lock(m_nodeMapMutex);
        unmade.swap(m_pNodeMap);
        m_pTlProxy = nullptr;
    }
    SetCameraDisconnectCallBackInfo(nullptr, nullptr);
    if (!m_pHandle)
        return -4;
    void* const handle = m_pHandle.exchange(nullptr);
    OV_CC_CloseDevice(handle);
    int result = static_cast<int>(OV_CC_DestroyHandle(handle));
    ClearRevFrameNum();
    m_nWidth = 0;
    m_nHeight = 0;
    m_bRenderReady = false;
    m_bSecondRenderReady = false;
    m_playWnd = 0;
    {
        const std::lock_guard<std::mutex> lock(m_rotationMutex);
        m_rotation = {};
    }
    {
        const std::lock_guard<std::mutex> lock(m_embeddedMutex);
        m_embedded = {};
    }
    result = m_controlThread.StopAndJoin(result);
    result = m_displayThread.StopAndJoin(result);
    DestroyRenderHandle(true);
    DestroyMediaHandle();
    m_bHaveFrame = false;
    return result;
}

void QCamera::CameraExceptionCallBackFunc(uint32_t message, void* user) {
    if (!user || message != OV_EXCEPTION_DISCONNECT)
        return;
    auto* const camera = static_cast<QCamera*>(user);
    if (!LiveCameras().Enter(camera))
        return;
    camera->OnCameraDisconnectCallBack();
    LiveCameras().Leave(camera);
}

// On the library's thread. The state stays; the owner closes the camera on the main thread.
void QCamera::OnCameraDisconnectCallBack() {
    m_grabThread.StopAndJoin();
    m_saveThread.StopAndJoin();
    m_controlThread.StopAndJoin();
    m_displayThread.StopAndJoin();
    void (*callback)(void*, long) = nullptr;
    void* user = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_callbackMutex);
        callback = m_pDisconnect;
        user = m_pDisconnectUser;
    }
    if (callback)
        callback(user, m_lCameraID);
}

// --- automatic software trigger
// ---------------------------------------------------------------------------------------------

void QCamera::SetAutoSoftwareTrig(bool enable, unsigned int intervalMs) {
    m_bAutoTrigger = enable;
    m_nAutoTriggerInterval = intervalMs;
}

void QCamera::GetAutoSoftwareTrig(bool& enable, unsigned int& intervalMs) const {
    enable = m_bAutoTrigger;
    intervalMs = m_nAutoTriggerInterval;
}

void* QCamera::AutoSoftwareTrigThread(void* camera) {
    static_cast<QCamera*>(camera)->AutoSoftwareTrigThreadFunc();
    return nullptr;
}

void QCamera::AutoSoftwareTrigThreadFunc() {
    CStopFlag& stop = m_triggerThread.Stop();
    while (!stop.IsSet()) {
        OnTimerSoftwareTrig();
        stop.SleepEx(static_cast<int>(m_nAutoTriggerInterval.load()));
    }
}
