/* The calls that libOvMediaKit exports for encoding, decoding and white balance. Any thread may enter them.
 */

#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/CodecRecords.h"
#include "MediaKit/Entry.h"
#include "MediaKit/WhiteBalance.h"

using namespace media;

std::uint32_t OV_MP_SaveImage(void* handle, _OV_IMAGE_INFO_* record) {
    if (record != nullptr) {
        record->outputLength = 0;
    }
    return WithWorkspace(handle, record, SaveRecord);
}

std::uint32_t OV_MP_Decode(void* handle, _OV_DECODE_INFO_* record, std::uint32_t jpegLength,
                           std::uint32_t /*zero*/) {
    return WithWorkspace(handle, record, [jpegLength](Workspace& workspace, _OV_DECODE_INFO_& found) {
        return DecodeRecord(workspace, found, jpegLength);
    });
}

std::uint32_t OV_MP_GetWhiteBalance(void* handle, _OV_IMAGE_INFO_* record, _OV_WHITE_BALANCE_PARAM_* gains) {
    return WithWorkspace(handle, record, [gains](Workspace& workspace, _OV_IMAGE_INFO_& found) {
        return gains == nullptr ? OV_STATUS_INVALID_PARAMETER : MeasureWhiteBalance(workspace, found, *gains);
    });
}

std::uint32_t OV_MP_WhiteBalanceProcess(void* handle, _OV_IMAGE_INFO_* record,
                                        _OV_WHITE_BALANCE_PARAM_* gains) {
    return WithWorkspace(handle, record, [gains](Workspace& workspace, _OV_IMAGE_INFO_& found) {
        return gains == nullptr ? OV_STATUS_INVALID_PARAMETER : ApplyWhiteBalance(workspace, found, *gains);
    });
}
