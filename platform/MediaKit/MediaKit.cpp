/* The calls that libOvMediaKit exports for conversion and for the life of a handle. Any thread may enter
 * them. */

#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/ConvertRecord.h"
#include "MediaKit/Entry.h"
#include "MediaKit/PixelTraits.h"

#include <exception>

using namespace media;

void* OV_MP_CreateHandle(void) {
    try {
        return HandleRegistry::Instance().Create();
    } catch (const std::exception&) {
        return nullptr;
    }
}

std::uint32_t OV_MP_DestroyHandle(void* handle) {
    return HandleRegistry::Instance().Destroy(handle) ? OV_STATUS_OK : OV_STATUS_INVALID_HANDLE;
}

std::uint32_t OV_MP_ConvertPixelType(void* handle, _OV_CONVERT_PIXEL_INFO_* record) {
    if (record != nullptr) {
        record->destinationLength = 0; // whatever goes wrong before ConvertRecord
    }
    return WithWorkspace(handle, record, ConvertRecord);
}

std::uint32_t OV_MP_GetPixelSize(std::uint32_t pixelType, std::uint32_t width, std::uint32_t height,
                                 std::uint32_t /*zero*/) {
    const PixelTraits* traits = FindPixelTraits(pixelType);
    return traits == nullptr ? 0 : PictureBytes(*traits, width, height);
}

// The contract has no call that starts a recording, so there is never one to feed or to end.

std::uint32_t OV_MP_InputData(void* handle, const std::uint8_t* /*data*/, std::uint32_t /*length*/) {
    return HandleRegistry::Instance().Find(handle) ? OV_STATUS_NOT_SUPPORTED : OV_STATUS_INVALID_HANDLE;
}

std::uint32_t OV_MP_StopRecord(void* handle) {
    return HandleRegistry::Instance().Find(handle) ? OV_STATUS_NOT_SUPPORTED : OV_STATUS_INVALID_HANDLE;
}
