// Uses the camera at an address for a moment, with a handle that may log or one that may not: what the
// library then writes is looked at by log_test.cpp. A program of its own, since the level is read once.
#include <cstdint>
#include <cstring>
#include <vector>

#include <arpa/inet.h>

#include "Camera/Boundary/OvCameraControl.h"
#include "OvCameraControlX.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.transport.gige.currentIp = ntohl(inet_addr(argv[1]));
    void* handle = nullptr;
    const bool log = std::strcmp(argv[2], "log") == 0;
    if ((log ? OV_CC_CreateHandle(&handle, &record) : OV_CC_CreateHandleWithoutLog(&handle, &record)) !=
        OV_STATUS_OK) {
        return 3;
    }
    bool worked = false;
    if (OV_CC_OpenDevice(handle, OV_ACCESS_EXCLUSIVE, 0) == OV_STATUS_OK) {
        std::vector<std::uint8_t> frame(1 << 20);
        _OV_CC_FRAME_OUT_INFO_ info{};
        worked = OVX_CC_SetOption(handle, OVX_OPTION_PACKET_SOCKET, 0) == OV_STATUS_OK &&
                 OV_CC_StartGrabbing(handle) == OV_STATUS_OK &&
                 OV_CC_GetOneFrameTimeout(handle, frame.data(), static_cast<std::uint32_t>(frame.size()),
                                          &info, 5000) == OV_STATUS_OK &&
                 OV_CC_StopGrabbing(handle) == OV_STATUS_OK && OV_CC_CloseDevice(handle) == OV_STATUS_OK;
    }
    OV_CC_DestroyHandle(handle);
    return worked ? 0 : 1;
}
