// Program error codes: their texts and the mapping of library statuses onto them.
#include "Common/QFunction.h"

#include "Camera/Boundary/OvStatus.h"

#include <QCoreApplication>
#include <algorithm>
#include <iterator>

namespace {

struct ErrorText {
    int code;
    const char* text;
};

const char kOperationFailed[] = QT_TRANSLATE_NOOP("QFunction", "Operation failed.");

// Two codes may share a text (-18 and -20, -51 and -100).
const ErrorText kErrorTexts[] = {
    {-1, kOperationFailed},
    {-2, QT_TRANSLATE_NOOP("QFunction", "Application memory failed.")},
    {-3, QT_TRANSLATE_NOOP("QFunction", "Startup thread failed.")},
    {-4, QT_TRANSLATE_NOOP("QFunction", "Null pointer return.")},
    {-5, QT_TRANSLATE_NOOP("QFunction", "Failed to create the device.")},
    {-6, QT_TRANSLATE_NOOP("QFunction", "Failed to connect the camera.")},
    {-7, QT_TRANSLATE_NOOP("QFunction", "Failed to get the XML file.")},
    {-8, QT_TRANSLATE_NOOP("QFunction", "Failed to get the frame data.")},
    {-9, QT_TRANSLATE_NOOP("QFunction", "Failed to start capturing.")},
    {-10, QT_TRANSLATE_NOOP("QFunction", "Failed to stop capturing.")},
    {-11, QT_TRANSLATE_NOOP("QFunction", "Failed to get TL proxy.")},
    {-12, QT_TRANSLATE_NOOP("QFunction", "Failed to generate node mapping.")},
    {-13, QT_TRANSLATE_NOOP("QFunction",
                            "Failed to display the image in the specified region of selected window.")},
    {-14, QT_TRANSLATE_NOOP("QFunction", "Failed to get the color.")},
    {-15, QT_TRANSLATE_NOOP("QFunction", "Failed to get the device information.")},
    {-16, QT_TRANSLATE_NOOP("QFunction", "Opening XML file failed.")},
    {-17, QT_TRANSLATE_NOOP("QFunction", "The live view is not enabled.")},
    {-18, QT_TRANSLATE_NOOP("QFunction", "Pixel format is not supported.")},
    {-19, QT_TRANSLATE_NOOP("QFunction", "Saving picture failed.")},
    {-20, QT_TRANSLATE_NOOP("QFunction", "Pixel format is not supported.")},
    {-21, QT_TRANSLATE_NOOP("QFunction", "Failed to create handle of stream media library.")},
    {-22, QT_TRANSLATE_NOOP("QFunction",
                            "The device is unreachable. Please modify its IP address with IP configurator.")},
    {-23,
     QT_TRANSLATE_NOOP("QFunction", "Please ensure that device is inserted in the USB 3.0 port of the PC.")},
    {-24, QT_TRANSLATE_NOOP("QFunction", "No frame data.")},
    {-25, QT_TRANSLATE_NOOP("QFunction", "File operation failed.Please make sure HDD is not full.")},
    {-26, QT_TRANSLATE_NOOP("QFunction", "Invalid path.")},
    {-27, QT_TRANSLATE_NOOP("QFunction", "No permission.")},
    {-28, QT_TRANSLATE_NOOP("QFunction", "No support image format.")},
    {-50, QT_TRANSLATE_NOOP("QFunction", "Incorrect or invalid handle.")},
    {-51, QT_TRANSLATE_NOOP("QFunction", "Not supported.")},
    {-52, QT_TRANSLATE_NOOP("QFunction", "Buffer is full.The resolution is not supported.")},
    {-53, QT_TRANSLATE_NOOP("QFunction", "Calling function error.")},
    {-54, QT_TRANSLATE_NOOP("QFunction", "Incorrect parameters.")},
    {-55, QT_TRANSLATE_NOOP("QFunction", "Failed to get the resource..")},
    {-56, QT_TRANSLATE_NOOP("QFunction",
                            "Network error. Please modify the camera IP address with IP configurator to "
                            "ensure the camera is reachable.")},
    {-57, QT_TRANSLATE_NOOP("QFunction", "No data.")},
    {-58, QT_TRANSLATE_NOOP("QFunction",
                            "Precondition error or the running environment has changed. Please ensure "
                            "that the device is not in use.")},
    {-59, QT_TRANSLATE_NOOP("QFunction", "Packet error.")},
    {-60, QT_TRANSLATE_NOOP(
              "QFunction", "Version error. Please ensure the driver version and SDK version match exactly.")},
    {-61, QT_TRANSLATE_NOOP("QFunction",
                            "IP address conflicted. Please check whether there is camera with the same "
                            "IP address in the subnet.")},
    {-70, QT_TRANSLATE_NOOP("QFunction", "GenIcam: General error.")},
    {-71, QT_TRANSLATE_NOOP("QFunction", "GenIcam: Invalid parameter.")},
    {-72, QT_TRANSLATE_NOOP("QFunction", "GenIcam: Parameter is out of range.")},
    {-73, QT_TRANSLATE_NOOP("QFunction", "GenIcam: Attribute error.")},
    {-74, QT_TRANSLATE_NOOP("QFunction", "GenIcam: Running environment error.")},
    {-75, QT_TRANSLATE_NOOP("QFunction", "GenIcam: Logical error.")},
    {-76, QT_TRANSLATE_NOOP("QFunction", "GenIcam: Access permission error.")},
    {-77, QT_TRANSLATE_NOOP("QFunction", "GenIcam: Timeout.")},
    {-78, QT_TRANSLATE_NOOP("QFunction", "GenIcam: Transforming error.")},
    {-100, QT_TRANSLATE_NOOP("QFunction", "Not supported.")},
    {-101, QT_TRANSLATE_NOOP("QFunction", "Invalid address.")},
    {-102, QT_TRANSLATE_NOOP("QFunction", "The address is read only.")},
    {-103, QT_TRANSLATE_NOOP("QFunction", "Failed to get the permission. The device is in use.")},
    {-104, QT_TRANSLATE_NOOP("QFunction", "Failed to connect the camera. Network error.")},
    {-105, QT_TRANSLATE_NOOP("QFunction", "Unknown error. Failed to connect the camera.")},
};

struct StatusCode {
    uint32_t status;
    int code;
};

// There is no arithmetic rule: the packet and network errors fall back into the block of the fifties.
const StatusCode kStatusCodes[] = {
    {OV_STATUS_INVALID_HANDLE, -50},
    {OV_STATUS_NOT_SUPPORTED, -51},
    {OV_STATUS_BUFFER_FULL, -52},
    {OV_STATUS_CALL_ORDER, -53},
    {OV_STATUS_INVALID_PARAMETER, -54},
    {OV_STATUS_RESOURCE, -55},
    {OV_STATUS_NO_DATA, -57},
    {OV_STATUS_PRECONDITION, -58},
    {OV_STATUS_VERSION, -60},
    {OV_STATUS_UNKNOWN, -105},
    {OV_STATUS_GENICAM_GENERIC, -70},
    {OV_STATUS_GENICAM_ARGUMENT, -71},
    {OV_STATUS_GENICAM_RANGE, -72},
    {OV_STATUS_GENICAM_PROPERTY, -73},
    {OV_STATUS_GENICAM_RUNTIME, -74},
    {OV_STATUS_GENICAM_LOGICAL, -75},
    {OV_STATUS_GENICAM_ACCESS, -76},
    {OV_STATUS_GENICAM_TIMEOUT, -77},
    {OV_STATUS_GENICAM_DYNAMIC_CAST, -78},
    {OV_STATUS_GVCP_NOT_IMPLEMENTED, -100},
    {OV_STATUS_INVALID_ADDRESS, -101},
    {OV_STATUS_WRITE_PROTECTED, -102},
    {OV_STATUS_ACCESS_DENIED, -103},
    {OV_STATUS_BUSY, -104},
    {OV_STATUS_PACKET, -59},
    {OV_STATUS_NETWORK, -56},
    {OV_STATUS_IP_CONFLICT, -61},
};

} // namespace

QString QFunction::GenerateCameraOperateError(int code) {
    const auto* row = std::find_if(std::begin(kErrorTexts), std::end(kErrorTexts),
                                   [code](const ErrorText& entry) { return entry.code == code; });
    return QCoreApplication::translate("QFunction",
                                       row == std::end(kErrorTexts) ? kOperationFailed : row->text);
}

int QFunction::GenerateORVErrCode(uint32_t status) {
    const auto* row = std::find_if(std::begin(kStatusCodes), std::end(kStatusCodes),
                                   [status](const StatusCode& entry) { return entry.status == status; });
    return row == std::end(kStatusCodes) ? -105 : row->code;
}
