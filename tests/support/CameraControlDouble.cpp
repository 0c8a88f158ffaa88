// The double of libOvCameraControl.
#include "support/DoubleAccess.h"

#include <algorithm>
#include <cstring>

namespace support {

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
using support::Enter;
using support::PlatformDoubles;

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
