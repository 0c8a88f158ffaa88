// A camera through Aravis: GigE Vision or USB3 Vision.
#ifndef KOLT_CAMERA_CONTROL_ARAVIS_DEVICE_H
#define KOLT_CAMERA_CONTROL_ARAVIS_DEVICE_H

#include <cstdint>
#include <functional>
#include <memory>

#include "Camera/Boundary/OvCameraControl.h"
#include "device/Log.h"
#include "device/TransportDevice.h"

namespace kolt::cc {

struct OpenRequest {
    _OV_CC_DEVICE_INFO_ device{};
    Logger log;
    // Aravis has found that a USB device is lost. On a thread of Aravis; may come before the opening returns,
    // and never after the device is destroyed.
    std::function<void()> controlLost;
};

// Opens with exclusive control. Null on failure, with the status:
//   OV_STATUS_NETWORK          no such camera answers
//   OV_STATUS_PRECONDITION     no such USB camera is plugged in
//   OV_STATUS_INVALID_PARAMETER  the record names no USB camera
//   OV_STATUS_RESOURCE         descriptors or memory are short
//   OV_STATUS_BUSY             it answers, but not to the opening
//   OV_STATUS_ACCESS_DENIED    somebody else holds it
//   OV_STATUS_NOT_SUPPORTED    its XML would have to be fetched from elsewhere (http:), or the layer is
//   unknown OV_STATUS_PACKET, OV_STATUS_GENICAM_GENERIC    its XML is malformed
// Blocks for milliseconds, seconds when the camera dies in the midst of it.
std::unique_ptr<TransportDevice> openDevice(const OpenRequest& request, std::uint32_t& status);

// A camera made by Aravis inside the process, for tests of what is not GigE Vision.
std::unique_ptr<TransportDevice> openFakeDevice(const OpenRequest& request, std::uint32_t& status);

} // namespace kolt::cc

#endif
