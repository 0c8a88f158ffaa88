// A handle of the camera library that is destroyed with its scope.
#pragma once

#include "Camera/Boundary/OvCameraControl.h"

// Made from a record; nothing is opened by that. Null when the library refuses.
class CCameraHandle {
public:
    enum class Log { With, Without };

    CCameraHandle(const _OV_CC_DEVICE_INFO_& info, Log log) {
        // A library that fails may leave anything in the pointer.
        const uint32_t status = log == Log::With ? OV_CC_CreateHandle(&m_pHandle, &info)
                                                 : OV_CC_CreateHandleWithoutLog(&m_pHandle, &info);
        if (status != OV_STATUS_OK)
            m_pHandle = nullptr;
    }
    ~CCameraHandle() { Destroy(); }
    CCameraHandle(const CCameraHandle&) = delete;
    CCameraHandle& operator=(const CCameraHandle&) = delete;

    explicit operator bool() const { return m_pHandle != nullptr; }
    void* Get() const { return m_pHandle; }
    void Destroy() {
        if (m_pHandle)
            OV_CC_DestroyHandle(m_pHandle);
        m_pHandle = nullptr;
    }

private:
    void* m_pHandle = nullptr;
};
