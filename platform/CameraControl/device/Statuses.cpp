#include "device/Statuses.h"

#include <arv.h>

#include "Camera/Boundary/OvStatus.h"

namespace kolt::cc {

std::uint32_t statusFromError(const GError* error) {
    if (error == nullptr) {
        return OV_STATUS_OK;
    }
    if (error->domain != ARV_DEVICE_ERROR) {
        // Sockets and files (GIO), or the evaluation of the camera's XML.
        return error->domain == g_quark_from_static_string("g-io-error-quark") ? OV_STATUS_NETWORK
                                                                               : OV_STATUS_GENICAM_GENERIC;
    }
    switch (error->code) {
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_NOT_IMPLEMENTED:
        return OV_STATUS_GVCP_NOT_IMPLEMENTED;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_PARAMETER:
        return OV_STATUS_INVALID_PARAMETER;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_ADDRESS:
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_BAD_ALIGNMENT:
        return OV_STATUS_INVALID_ADDRESS;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_WRITE_PROTECT:
        return OV_STATUS_WRITE_PROTECTED;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED:
    case ARV_DEVICE_ERROR_NOT_CONTROLLER:
        return OV_STATUS_ACCESS_DENIED;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR_BUSY:
        return OV_STATUS_BUSY;
    case ARV_DEVICE_ERROR_PROTOCOL_ERROR:
        return OV_STATUS_PACKET;
    case ARV_DEVICE_ERROR_TIMEOUT:
    case ARV_DEVICE_ERROR_NOT_CONNECTED:
    case ARV_DEVICE_ERROR_NOT_FOUND:
    case ARV_DEVICE_ERROR_TRANSFER_ERROR:
        return OV_STATUS_NETWORK;
    case ARV_DEVICE_ERROR_WRONG_FEATURE:
    case ARV_DEVICE_ERROR_FEATURE_NOT_FOUND:
    case ARV_DEVICE_ERROR_NO_STREAM_CHANNEL:
        return OV_STATUS_NOT_SUPPORTED;
    case ARV_DEVICE_ERROR_INVALID_PARAMETER:
        return OV_STATUS_INVALID_PARAMETER;
    case ARV_DEVICE_ERROR_GENICAM_NOT_FOUND:
        return OV_STATUS_GENICAM_GENERIC;
    default:
        return OV_STATUS_UNKNOWN;
    }
}

bool isAnswer(std::uint32_t status) {
    switch (status) {
    case OV_STATUS_OK:
    case OV_STATUS_GVCP_NOT_IMPLEMENTED:
    case OV_STATUS_INVALID_PARAMETER:
    case OV_STATUS_INVALID_ADDRESS:
    case OV_STATUS_WRITE_PROTECTED:
    case OV_STATUS_ACCESS_DENIED:
    case OV_STATUS_BUSY:
    case OV_STATUS_PACKET:
        return true;
    default:
        return false;
    }
}

} // namespace kolt::cc
