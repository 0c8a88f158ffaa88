#include "support/PlatformDoubles.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace support {

namespace {

constexpr auto kPatience = std::chrono::seconds(20);

} // namespace

// Opens the private side to the C functions below.
struct DoubleAccess {
    static PlatformDoubles& D() { return PlatformDoubles::Get(); }

    static uint32_t GetFrame(uint8_t* buffer, uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                             uint32_t timeout);
    static void StopGrabbing();
    template<typename Set>
    static void With(Set set) {
        const std::lock_guard<std::mutex> lock(D().m_mutex);
        set(D());
        D().m_changed.notify_all();
    }
};

PlatformDoubles& PlatformDoubles::Get() {
    static PlatformDoubles doubles;
    return doubles;
}

PlatformDoubles::PlatformDoubles() : m_port(std::make_unique<MemoryPort>()) {}

void PlatformDoubles::Reset(const std::string& xml) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.clear();
    m_counts.clear();
    m_results.clear();
    m_queued.clear();
    m_hooks.clear();
    m_handles.clear();
    m_port = std::make_unique<MemoryPort>();
    m_xml = xml;
    m_xmlLength = static_cast<uint32_t>(xml.size());
    m_proxy = true;
    m_deviceInfo = {};
    m_devices.clear();
    m_listed.clear();
    m_transportMask = 0;
    m_handleRecord = {};
    m_forcedIp = 0;
    m_matchInfo = {};
    m_matchInfo.receivedBytes = 123456789012; // above 32 bits
    m_matchInfo.lostPackets = 17;
    m_frames.clear();
    m_freeRunMicroseconds = 0;
    m_grabbing = false;
    m_exception = nullptr;
    m_exceptionUser = nullptr;
    m_throwAbnormal = 99;
    m_imageNodes = 0;
    m_timeouts.clear();
    m_capacity = 0;
    m_picture.clear();
    m_pictureSize = {};
    m_vrFormat = 0;
    m_vrEngine = 0;
    m_rotation = {};
    m_rects = {};
    m_window = 0;
    m_conversion = {};
    m_image = {};
    m_decode = {};
}

// --- calls
// ------------------------------------------------------------------------------------------------------------------

std::vector<std::string> PlatformDoubles::Calls(const std::vector<std::string>& prefixes) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> found;
    for (const std::string& name : m_calls) {
        const bool wanted =
            prefixes.empty()
                ? name != "OV_CC_GetOneFrameTimeout"
                : std::any_of(prefixes.begin(), prefixes.end(), [&name](const std::string& prefix) {
                      return name.compare(0, prefix.size(), prefix) == 0;
                  });
        if (wanted)
            found.push_back(name);
    }
    return found;
}

int PlatformDoubles::CountOf(const std::string& name) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_counts.find(name);
    return found == m_counts.end() ? 0 : found->second;
}

void PlatformDoubles::ForgetCalls() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.clear();
    m_counts.clear();
}

bool PlatformDoubles::WaitForCount(const std::string& name, int count) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [&] {
        const auto found = m_counts.find(name);
        return found != m_counts.end() && found->second >= count;
    });
}

bool PlatformDoubles::WaitUntil(const std::function<bool()>& condition) const {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(2));
    }
    return true;
}

uint32_t PlatformDoubles::Enter(const char* name, uint32_t otherwise) {
    std::function<void()> hook;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_calls.emplace_back(name);
        ++m_counts[name];
        const auto found = m_hooks.find(name);
        if (found != m_hooks.end())
            hook = found->second;
        m_changed.notify_all();
    }
    if (hook)
        hook();
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto& queue = m_queued[name];
    if (!queue.empty()) {
        const uint32_t result = queue.front();
        queue.pop_front();
        return result;
    }
    const auto set = m_results.find(name);
    return set == m_results.end() ? otherwise : set->second;
}

void PlatformDoubles::SetResult(const std::string& name, uint32_t result) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_results[name] = result;
}

void PlatformDoubles::QueueResult(const std::string& name, uint32_t result) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_queued[name].push_back(result);
}

void PlatformDoubles::OnCall(const std::string& name, std::function<void()> hook) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_hooks[name] = std::move(hook);
}

void* PlatformDoubles::NewHandle(char kind) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    void* handle = reinterpret_cast<void*>(m_nextHandle += 16);
    m_handles[handle] = kind;
    return handle;
}

void PlatformDoubles::FreeHandle(char kind, void* handle) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_handles.find(handle);
    if (found != m_handles.end() && found->second == kind)
        m_handles.erase(found);
}

int PlatformDoubles::OpenHandles(char kind) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(std::count_if(m_handles.begin(), m_handles.end(),
                                          [kind](const auto& entry) { return entry.second == kind; }));
}

// --- the camera
// -------------------------------------------------------------------------------------------------------------

void PlatformDoubles::SetTlProxy(bool present) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_proxy = present;
}

void PlatformDoubles::SetXmlLength(uint32_t length) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_xmlLength = length;
}

void PlatformDoubles::SetDeviceInfo(const _OV_CC_DEVICE_INFO_& info) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_deviceInfo = info;
}

void PlatformDoubles::SetDevices(const std::vector<_OV_CC_DEVICE_INFO_>& devices) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_devices = devices;
}

void PlatformDoubles::SetMatchInfo(const _OV_MATCH_INFO_NET_DETECT_& info) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_matchInfo = info;
}

void PlatformDoubles::PushFrame(const DoubleFrame& frame) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_frames.push_back(frame);
    m_changed.notify_all();
}

void PlatformDoubles::SetFreeRun(const DoubleFrame& frame, unsigned microseconds) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_freeRun = std::make_shared<const DoubleFrame>(frame);
    m_freeRunNext = std::chrono::steady_clock::now();
    m_freeRunMicroseconds = std::max(microseconds, 1u);
    m_changed.notify_all();
}

void PlatformDoubles::StopFreeRun() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_freeRunMicroseconds = 0;
}

void PlatformDoubles::Disconnect(uint32_t message) {
    OvExceptionCallBack callback = nullptr;
    void* user = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        callback = m_exception;
        user = m_exceptionUser;
    }
    std::thread library([=] {
        if (callback)
            callback(message, user);
    });
    library.join();
}

#define KOLT_DOUBLE_GETTER(type, name, field)                                                                \
    type PlatformDoubles::name() const {                                                                     \
        const std::lock_guard<std::mutex> lock(m_mutex);                                                     \
        return field;                                                                                        \
    }
using PictureSize = std::pair<uint32_t, uint32_t>;
using Rects = std::pair<tagVRRectF, tagVRRectF>;
KOLT_DOUBLE_GETTER(uint32_t, LastTransportMask, m_transportMask)
KOLT_DOUBLE_GETTER(_OV_CC_DEVICE_INFO_, LastHandleRecord, m_handleRecord)
KOLT_DOUBLE_GETTER(uint32_t, LastForcedIp, m_forcedIp)
KOLT_DOUBLE_GETTER(uint32_t, LastThrowAbnormal, m_throwAbnormal)
KOLT_DOUBLE_GETTER(uint32_t, LastImageNodeNum, m_imageNodes)
KOLT_DOUBLE_GETTER(std::vector<uint32_t>, FrameTimeouts, m_timeouts)
KOLT_DOUBLE_GETTER(uint32_t, LastFrameCapacity, m_capacity)
KOLT_DOUBLE_GETTER(std::vector<uint8_t>, LastPicture, m_picture)
KOLT_DOUBLE_GETTER(PictureSize, LastPictureSize, m_pictureSize)
KOLT_DOUBLE_GETTER(tagVRRotation, LastRotation, m_rotation)
KOLT_DOUBLE_GETTER(Rects, LastRects, m_rects)
KOLT_DOUBLE_GETTER(uint64_t, LastWindow, m_window)
KOLT_DOUBLE_GETTER(uint32_t, LastVrFormat, m_vrFormat)
KOLT_DOUBLE_GETTER(uint32_t, LastVrEngine, m_vrEngine)
KOLT_DOUBLE_GETTER(_OV_CONVERT_PIXEL_INFO_, LastConversion, m_conversion)
KOLT_DOUBLE_GETTER(_OV_IMAGE_INFO_, LastImage, m_image)
KOLT_DOUBLE_GETTER(_OV_DECODE_INFO_, LastDecode, m_decode)

uint32_t DoubleAccess::GetFrame(uint8_t* buffer, uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                                uint32_t timeout) {
    PlatformDoubles& d = D();
    std::unique_lock<std::mutex> lock(d.m_mutex);
    d.m_timeouts.push_back(timeout);
    d.m_capacity = capacity;
    std::shared_ptr<const DoubleFrame> taken;
    if (d.m_freeRunMicroseconds && d.m_grabbing) {
        d.m_changed.wait_until(lock, d.m_freeRunNext, [&d] { return !d.m_grabbing; });
        if (!d.m_grabbing)
            return OV_STATUS_NO_DATA;
        d.m_freeRunNext = std::max(d.m_freeRunNext + std::chrono::microseconds(d.m_freeRunMicroseconds),
                                   std::chrono::steady_clock::now());
        taken = d.m_freeRun;
    } else {
        d.m_changed.wait_for(lock, std::chrono::milliseconds(timeout), [&d] {
            return !d.m_frames.empty() || !d.m_grabbing || d.m_freeRunMicroseconds;
        });
        if (d.m_frames.empty() || !d.m_grabbing)
            return OV_STATUS_NO_DATA;
        taken = std::make_shared<const DoubleFrame>(std::move(d.m_frames.front()));
        d.m_frames.pop_front();
    }
    lock.unlock();
    const DoubleFrame& frame = *taken;
    if (frame.pixels.size() > capacity)
        return OV_STATUS_BUFFER_FULL;
    std::memcpy(buffer, frame.pixels.data(), frame.pixels.size());
    info->width = frame.width;
    info->height = frame.height;
    info->frameLength = frame.frameLength ? frame.frameLength : static_cast<uint32_t>(frame.pixels.size());
    return OV_STATUS_OK;
}

void DoubleAccess::StopGrabbing() {
    With([](PlatformDoubles& d) { d.m_grabbing = false; });
}

} // namespace support

using support::DoubleAccess;
using support::PlatformDoubles;

namespace {

uint32_t Enter(const char* name, uint32_t otherwise = 0) {
    return PlatformDoubles::Get().Enter(name, otherwise);
}

} // namespace

// --- libOvCameraControl
// -----------------------------------------------------------------------------------------------------

uint32_t OV_CC_EnumDevices(uint32_t mask, _OV_CC_DEVICE_INFO_LIST_* list) {
    const uint32_t status = Enter("OV_CC_EnumDevices");
    DoubleAccess::With([=](PlatformDoubles& d) {
        d.m_transportMask = mask;
        d.m_listed.clear();
        if (status != OV_STATUS_OK)
            return;
        for (const _OV_CC_DEVICE_INFO_& device : d.m_devices) {
            if (d.m_listed.size() == OV_MAX_DEVICES)
                break;
            d.m_listed.push_back(std::make_unique<_OV_CC_DEVICE_INFO_>(device));
            list->devices[d.m_listed.size() - 1] = d.m_listed.back().get();
        }
        list->deviceCount = static_cast<uint32_t>(d.m_listed.size());
    });
    return status;
}

static uint32_t CreateHandle(const char* name, void** handle, const _OV_CC_DEVICE_INFO_* device) {
    DoubleAccess::With([device](PlatformDoubles& d) { d.m_handleRecord = *device; });
    const uint32_t status = Enter(name);
    if (status == OV_STATUS_OK)
        *handle = PlatformDoubles::Get().NewHandle('c');
    return status;
}

uint32_t OV_CC_CreateHandle(void** handle, const _OV_CC_DEVICE_INFO_* device) {
    return CreateHandle("OV_CC_CreateHandle", handle, device);
}

uint32_t OV_CC_CreateHandleWithoutLog(void** handle, const _OV_CC_DEVICE_INFO_* device) {
    return CreateHandle("OV_CC_CreateHandleWithoutLog", handle, device);
}

uint32_t OV_CC_DestroyHandle(void* handle) {
    const uint32_t status = Enter("OV_CC_DestroyHandle");
    PlatformDoubles::Get().FreeHandle('c', handle);
    return status;
}

uint32_t OV_CC_OpenDevice(void*, uint32_t, uint16_t) {
    return Enter("OV_CC_OpenDevice");
}

uint32_t OV_CC_CloseDevice(void*) {
    return Enter("OV_CC_CloseDevice");
}

uint32_t OV_CC_IsDeviceAccessible(const _OV_CC_DEVICE_INFO_*, uint32_t) {
    return Enter("OV_CC_IsDeviceAccessible", 1);
}

uint32_t OV_CC_GetDeviceInfo(void*, _OV_CC_DEVICE_INFO_* device) {
    const uint32_t status = Enter("OV_CC_GetDeviceInfo");
    if (status == OV_STATUS_OK)
        DoubleAccess::With([device](PlatformDoubles& d) { *device = d.m_deviceInfo; });
    return status;
}

uint32_t OV_CC_RegisterExceptionCallBack(void*, OvExceptionCallBack callback, void* user) {
    const uint32_t status = Enter("OV_CC_RegisterExceptionCallBack");
    DoubleAccess::With([=](PlatformDoubles& d) {
        d.m_exception = callback;
        d.m_exceptionUser = user;
    });
    return status;
}

uint32_t OV_CC_SetImageNodeNum(void*, uint32_t count) {
    const uint32_t status = Enter("OV_CC_SetImageNodeNum");
    DoubleAccess::With([count](PlatformDoubles& d) { d.m_imageNodes = count; });
    return status;
}

uint32_t OV_CC_SetThrowAbnormalImage(void*, uint8_t on) {
    const uint32_t status = Enter("OV_CC_SetThrowAbnormalImage");
    DoubleAccess::With([on](PlatformDoubles& d) { d.m_throwAbnormal = on; });
    return status;
}

uint32_t OV_CC_StartGrabbing(void*) {
    const uint32_t status = Enter("OV_CC_StartGrabbing");
    if (status == OV_STATUS_OK)
        DoubleAccess::With([](PlatformDoubles& d) { d.m_grabbing = true; });
    return status;
}

uint32_t OV_CC_StopGrabbing(void*) {
    const uint32_t status = Enter("OV_CC_StopGrabbing");
    if (status == OV_STATUS_OK)
        DoubleAccess::StopGrabbing();
    return status;
}

uint32_t OV_CC_GetOneFrameTimeout(void*, uint8_t* buffer, uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                                  uint32_t timeoutMs) {
    const uint32_t status = Enter("OV_CC_GetOneFrameTimeout");
    return status == OV_STATUS_OK ? DoubleAccess::GetFrame(buffer, capacity, info, timeoutMs) : status;
}

int32_t OV_CC_GetOptimalPacketSize(void*) {
    return static_cast<int32_t>(Enter("OV_CC_GetOptimalPacketSize", 1500));
}

void* OV_CC_GetTlProxy(void*) {
    Enter("OV_CC_GetTlProxy");
    void* proxy = nullptr;
    DoubleAccess::With([&proxy](PlatformDoubles& d) {
        if (d.m_proxy)
            proxy = static_cast<GenApi_3_0::IPort*>(d.m_port.get());
    });
    return proxy;
}

uint32_t OV_CC_GetAllMatchInfo(void*, _OV_ALL_MATCH_INFO_* query) {
    const uint32_t status = Enter("OV_CC_GetAllMatchInfo");
    if (status == OV_STATUS_OK && query->type == OV_MATCH_INFO_NET_DETECT &&
        query->infoSize == sizeof(_OV_MATCH_INFO_NET_DETECT_)) {
        DoubleAccess::With([query](const PlatformDoubles& d) {
            *static_cast<_OV_MATCH_INFO_NET_DETECT_*>(query->info) = d.m_matchInfo;
        });
    }
    return status;
}

uint32_t OV_GIGE_ForceIp(void*, uint32_t ip) {
    DoubleAccess::With([ip](PlatformDoubles& d) { d.m_forcedIp = ip; });
    return Enter("OV_GIGE_ForceIp");
}

uint32_t OV_XML_GetGenICamXML(void*, uint8_t* buffer, uint32_t capacity, uint32_t* length) {
    const uint32_t status = Enter("OV_XML_GetGenICamXML");
    uint32_t result = status;
    DoubleAccess::With([&](PlatformDoubles& d) {
        *length = d.m_xmlLength;
        if (status != OV_STATUS_OK)
            return;
        if (d.m_xmlLength > capacity)
            result = OV_STATUS_BUFFER_FULL;
        else
            std::memcpy(buffer, d.m_xml.data(), std::min<size_t>(d.m_xml.size(), d.m_xmlLength));
    });
    return result;
}

// --- libOvMediaKit
// ----------------------------------------------------------------------------------------------------------

void* OV_MP_CreateHandle(void) {
    return Enter("OV_MP_CreateHandle", 1) ? PlatformDoubles::Get().NewHandle('m') : nullptr;
}

uint32_t OV_MP_DestroyHandle(void* handle) {
    PlatformDoubles::Get().FreeHandle('m', handle);
    return Enter("OV_MP_DestroyHandle");
}

uint32_t OV_MP_ConvertPixelType(void*, _OV_CONVERT_PIXEL_INFO_* record) {
    DoubleAccess::With([record](PlatformDoubles& d) { d.m_conversion = *record; });
    return Enter("OV_MP_ConvertPixelType");
}

uint32_t OV_MP_Decode(void*, _OV_DECODE_INFO_* record, uint32_t, uint32_t) {
    DoubleAccess::With([record](PlatformDoubles& d) { d.m_decode = *record; });
    return Enter("OV_MP_Decode");
}

uint32_t OV_MP_SaveImage(void*, _OV_IMAGE_INFO_* record) {
    DoubleAccess::With([record](PlatformDoubles& d) { d.m_image = *record; });
    const uint32_t status = Enter("OV_MP_SaveImage");
    if (status == OV_STATUS_OK && record->outputCapacity >= 8) {
        std::memcpy(record->output, "ENCODED!", 8);
        record->outputLength = 8;
    }
    return status;
}

uint32_t OV_MP_GetPixelSize(uint32_t, uint32_t width, uint32_t height, uint32_t) {
    return Enter("OV_MP_GetPixelSize", width * height);
}

uint32_t OV_MP_GetWhiteBalance(void*, _OV_IMAGE_INFO_* record, _OV_WHITE_BALANCE_PARAM_* gains) {
    DoubleAccess::With([record](PlatformDoubles& d) { d.m_image = *record; });
    const uint32_t status = Enter("OV_MP_GetWhiteBalance");
    if (status == OV_STATUS_OK) {
        gains->red = 11;
        gains->green = 12;
        gains->blue = 13;
    }
    return status;
}

uint32_t OV_MP_WhiteBalanceProcess(void*, _OV_IMAGE_INFO_* record, _OV_WHITE_BALANCE_PARAM_*) {
    DoubleAccess::With([record](PlatformDoubles& d) { d.m_image = *record; });
    return Enter("OV_MP_WhiteBalanceProcess");
}

uint32_t OV_MP_InputData(void*, const uint8_t*, uint32_t) {
    return Enter("OV_MP_InputData");
}

uint32_t OV_MP_StopRecord(void*) {
    return Enter("OV_MP_StopRecord");
}

// --- libOVRender
// ------------------------------------------------------------------------------------------------------------

void* VR_CreateHandle(void) {
    return Enter("VR_CreateHandle", 1) ? PlatformDoubles::Get().NewHandle('v') : nullptr;
}

uint32_t VR_DestroyHandle(void* handle) {
    PlatformDoubles::Get().FreeHandle('v', handle);
    return Enter("VR_DestroyHandle", 1);
}

int32_t VR_Init(void*, uint32_t pixelFormat, uint32_t engine, uint32_t) {
    DoubleAccess::With([=](PlatformDoubles& d) {
        d.m_vrFormat = pixelFormat;
        d.m_vrEngine = engine;
    });
    return static_cast<int32_t>(Enter("VR_Init", 1));
}

int32_t VR_AddSubPort(void*, uint64_t window, uint32_t, uint32_t) {
    DoubleAccess::With([window](PlatformDoubles& d) { d.m_window = window; });
    return static_cast<int32_t>(Enter("VR_AddSubPort", 1));
}

int32_t VR_DelSubPort(void*, uint32_t) {
    return static_cast<int32_t>(Enter("VR_DelSubPort", 1));
}

int32_t VR_SetVerticalSyncPeriod(void*, uint32_t, uint32_t) {
    return static_cast<int32_t>(Enter("VR_SetVerticalSyncPeriod", 1));
}

int32_t VR_SetCallBack(void*, uint32_t, uint32_t, VRDrawCallBack callback, void* user) {
    if (callback)
        callback(user, 0, 0, nullptr, 0, 0);
    return static_cast<int32_t>(Enter("VR_SetCallBack", 1));
}

int32_t VR_UpdateFrameData(void*, const uint8_t* pixels, uint32_t width, uint32_t height, uint32_t) {
    DoubleAccess::With([=](PlatformDoubles& d) {
        const size_t size = static_cast<size_t>(width) * height * (d.m_vrFormat == VR_PIXEL_MONO8 ? 1 : 3);
        d.m_picture.assign(pixels, pixels + size);
        d.m_pictureSize = {width, height};
    });
    return static_cast<int32_t>(Enter("VR_UpdateFrameData", 1));
}

int32_t VR_Display(void*, uint32_t, uint64_t window) {
    DoubleAccess::With([window](PlatformDoubles& d) { d.m_window = window; });
    return static_cast<int32_t>(Enter("VR_Display", 1));
}

int32_t VR_WndResolutionChange(void*, uint32_t, const tagVRRectF*) {
    return static_cast<int32_t>(Enter("VR_WndResolutionChange", 1));
}

int32_t VR_SetDisplayRect(void*, uint32_t, const tagVRRectF* source, const tagVRRectF* destination) {
    DoubleAccess::With([=](PlatformDoubles& d) { d.m_rects = {*source, *destination}; });
    return static_cast<int32_t>(Enter("VR_SetDisplayRect", 1));
}

int32_t VR_Rotate(void*, uint32_t, const tagVRRotation* record) {
    DoubleAccess::With([record](PlatformDoubles& d) {
        d.m_rotation = *record;
        d.m_rotation.axis = *record->axes;
    });
    return static_cast<int32_t>(Enter("VR_Rotate", 1));
}
