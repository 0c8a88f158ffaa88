/* The contract is C: this compiles every header as C99 and hands a C view of it to the C++ test. */
#include "Camera/Boundary/OVRender.h"
#include "Camera/Boundary/OvCameraControl.h"
#include "Camera/Boundary/OvMediaKit.h"

void boundary_c_fill(_OV_CC_DEVICE_INFO_* device, tagVRRotation* rotation);

void boundary_c_fill(_OV_CC_DEVICE_INFO_* device, tagVRRotation* rotation) {
    device->nTLayerType = OV_TLAYER_GIGE;
    device->macHigh = 0x0102u;
    device->transport.gige.currentIp = UINT32_C(0x0A000001);
    device->transport.gige.serialNumber[0] = 'S';
    device->transport.gige.hostInterface = UINT32_C(0x0A000002);
    rotation->axes = &rotation->axis;
    rotation->axisCount = 1;
    rotation->axis.z = 1.0f;
    rotation->axis.angle = 90.0f;
}
