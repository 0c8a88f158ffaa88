#include "support/PlatformDoubles.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace support {

namespace {

constexpr auto kPatience = std::chrono::seconds(20);

} // namespace

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

} // namespace support
