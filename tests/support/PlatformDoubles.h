// Scripted doubles of libOvCameraControl, libOvMediaKit and libOVRender: every call is recorded, every status
// can be set, frames come from the test. Link `kolt_platform_doubles` instead of the libraries. One camera,
// one set of state for the process; any thread.
#pragma once

#include "Camera/Boundary/OVRender.h"
#include "Camera/Boundary/OvCameraControl.h"
#include "Camera/Boundary/OvMediaKit.h"
#include "support/MemoryPort.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace support {

struct DoubleFrame {
    uint16_t width = 0;
    uint16_t height = 0;
    std::vector<uint8_t> pixels;
    uint32_t frameLength = 0; // 0: the size of pixels
};

class PlatformDoubles {
public:
    static PlatformDoubles& Get();

    // Back to a camera that answers everything with success, has the given XML and sends no frames.
    void Reset(const std::string& xml = {});

    // --- calls
    // ---------------------------------------------------------------------------------------------------------------
    // Names in the order of the calls; those whose name begins with one of `prefixes`, all without any. The
    // calls of the polling threads (OV_CC_GetOneFrameTimeout) are left out unless they are asked for by name.
    std::vector<std::string> Calls(const std::vector<std::string>& prefixes = {}) const;
    int CountOf(const std::string& name) const;
    void ForgetCalls();
    // False after 20 s.
    bool WaitForCount(const std::string& name, int count) const;
    bool WaitUntil(const std::function<bool()>& condition) const;

    // --- statuses
    // ------------------------------------------------------------------------------------------------------------
    // For functions that return a status, an integer or a boolean: what they return from now on.
    void SetResult(const std::string& name, uint32_t result);
    // The same for the next call only; several queue up.
    void QueueResult(const std::string& name, uint32_t result);
    // Called on the caller's thread before the double does anything, outside of its lock.
    void OnCall(const std::string& name, std::function<void()> hook);

    // --- the camera
    // ----------------------------------------------------------------------------------------------------------
    MemoryPort& Port() { return *m_port; }
    void SetTlProxy(bool present);
    // As OV_XML_GetGenICamXML reports it; by default the XML's own length.
    void SetXmlLength(uint32_t length);
    void SetDeviceInfo(const _OV_CC_DEVICE_INFO_& info);
    // What OV_CC_EnumDevices lists, 256 at most; none after Reset.
    void SetDevices(const std::vector<_OV_CC_DEVICE_INFO_>& devices);
    uint32_t LastTransportMask() const;
    _OV_CC_DEVICE_INFO_ LastHandleRecord() const; // of OV_CC_CreateHandle and OV_CC_CreateHandleWithoutLog
    uint32_t LastForcedIp() const;
    // What OV_CC_GetAllMatchInfo tells from now on.
    void SetMatchInfo(const _OV_MATCH_INFO_NET_DETECT_& info);
    void PushFrame(const DoubleFrame& frame);
    // From now on there is one of these every `microseconds`; none is made up for where nobody waits in time.
    void SetFreeRun(const DoubleFrame& frame, unsigned microseconds);
    void StopFreeRun();
    // Calls the registered exception callback on a thread of its own and waits for it.
    void Disconnect(uint32_t message = OV_EXCEPTION_DISCONNECT);

    uint32_t LastThrowAbnormal() const;
    uint32_t LastImageNodeNum() const;
    std::vector<uint32_t> FrameTimeouts() const;
    uint32_t LastFrameCapacity() const;

    // --- media and render
    // ----------------------------------------------------------------------------------------------------
    std::vector<uint8_t> LastPicture() const; // what VR_UpdateFrameData brought last
    std::pair<uint32_t, uint32_t> LastPictureSize() const;
    tagVRRotation LastRotation() const;
    std::pair<tagVRRectF, tagVRRectF> LastRects() const;
    uint64_t LastWindow() const;
    uint32_t LastVrFormat() const;
    uint32_t LastVrEngine() const;
    _OV_CONVERT_PIXEL_INFO_ LastConversion() const;
    _OV_IMAGE_INFO_ LastImage() const;
    _OV_DECODE_INFO_ LastDecode() const;
    // Open handles of each kind: camera, media, render.
    int OpenHandles(char kind) const; // 'c', 'm', 'v'

    // Used by the doubles themselves.
    uint32_t Enter(const char* name, uint32_t otherwise = 0);
    void* NewHandle(char kind);
    void FreeHandle(char kind, void* handle);

    // The state that the doubles share; tests use the operations above.
    PlatformDoubles();
    mutable std::mutex m_mutex; // guards everything below
    mutable std::condition_variable m_changed;
    std::vector<std::string> m_calls;
    std::map<std::string, int> m_counts;
    std::map<std::string, uint32_t> m_results;
    std::map<std::string, std::deque<uint32_t>> m_queued;
    std::map<std::string, std::function<void()>> m_hooks;
    std::map<void*, char> m_handles;
    uintptr_t m_nextHandle = 0x1000;

    std::unique_ptr<MemoryPort> m_port;
    std::string m_xml;
    bool m_proxy = true;
    uint32_t m_xmlLength = 0;
    _OV_CC_DEVICE_INFO_ m_deviceInfo{};
    std::vector<_OV_CC_DEVICE_INFO_> m_devices;
    // Made anew by each enumeration, so that a record kept beyond the next one is noticed by the sanitizer.
    std::vector<std::unique_ptr<_OV_CC_DEVICE_INFO_>> m_listed;
    uint32_t m_transportMask = 0;
    _OV_CC_DEVICE_INFO_ m_handleRecord{};
    uint32_t m_forcedIp = 0;
    _OV_MATCH_INFO_NET_DETECT_ m_matchInfo{};
    std::deque<DoubleFrame> m_frames;
    std::shared_ptr<const DoubleFrame> m_freeRun;
    unsigned m_freeRunMicroseconds = 0;
    std::chrono::steady_clock::time_point m_freeRunNext;
    bool m_grabbing = false;
    OvExceptionCallBack m_exception = nullptr;
    void* m_exceptionUser = nullptr;
    uint32_t m_throwAbnormal = 99;
    uint32_t m_imageNodes = 0;
    std::vector<uint32_t> m_timeouts;
    uint32_t m_capacity = 0;

    std::vector<uint8_t> m_picture;
    std::pair<uint32_t, uint32_t> m_pictureSize{};
    uint32_t m_vrFormat = 0;
    uint32_t m_vrEngine = 0;
    tagVRRotation m_rotation{};
    std::pair<tagVRRectF, tagVRRectF> m_rects{};
    uint64_t m_window = 0;
    _OV_CONVERT_PIXEL_INFO_ m_conversion{};
    _OV_IMAGE_INFO_ m_image{};
    _OV_DECODE_INFO_ m_decode{};
};

} // namespace support
