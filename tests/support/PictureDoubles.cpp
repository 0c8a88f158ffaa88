// The doubles of libOvMediaKit and libOVRender.
#include "support/DoubleAccess.h"

#include <cstring>

using support::DoubleAccess;
using support::Enter;
using support::PlatformDoubles;

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
