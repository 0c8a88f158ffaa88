#ifndef LIVE_TEST_CAMERA_DOUBLE_H
#define LIVE_TEST_CAMERA_DOUBLE_H

#include "Camera/Boundary/OvCameraControl.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace live_test {

/// Stands behind the contract in place of the camera control library: every call is written down, every
/// status can be chosen, frames come when the test says so. One for the whole test program; Reset() between
/// tests.
class CameraDouble {
public:
    /// What one call of OV_CC_GetOneFrameTimeout gives.
    struct Delivery {
        uint32_t status = OV_STATUS_OK;
        std::vector<uint8_t> bytes;
        uint32_t state = 0;      ///< frameState
        uint32_t toldLength = 0; ///< frameLength where it is not the number of bytes
    };

    static CameraDouble& Get();
    void Reset();

    /// From now on `call` answers with `status`.
    void Answer(const std::string& call, uint32_t status);
    /// The calls so far, with the arguments that matter; repeated fetches count once.
    std::vector<std::string> Calls();
    void Deliver(Delivery delivery);
    /// Waits until every delivery was fetched.
    bool WaitUntilFetched();
    /// Sends a message of the library on a thread of its own.
    void Send(uint32_t message);

    // The side of the library.
    uint32_t Record(const std::string& call, const std::string& arguments = "");
    Delivery Fetch(uint32_t timeoutMs);
    void StopFetching();
    void Register(OvExceptionCallBack callback, void* user);

    std::vector<_OV_CC_DEVICE_INFO_> devices;
    _OV_CC_DEVICE_INFO_ live{}; ///< of OV_CC_GetDeviceInfo
    uint32_t accessible = 1;
    int32_t optimalPacketSize = 8228;
    uint32_t packetRegister = 0x400005DC; ///< do not fragment, 1500
    uint32_t packetSizeLimit = 9000;      ///< what the camera makes of a larger one
    std::string portTrouble;              ///< not empty: the port throws it
    bool hasPort = true;
    std::string xml;
    std::optional<uint32_t> xmlCapacitySeen;
    _OV_MATCH_INFO_NET_DETECT_ net{};

private:
    std::mutex mutex_; // guards everything below, and orders the calls
    std::condition_variable changed_;
    std::map<std::string, uint32_t> answers_;
    std::vector<std::string> calls_;
    std::deque<Delivery> deliveries_;
    bool isStopped_ = false;
    OvExceptionCallBack callback_ = nullptr;
    void* user_ = nullptr;
};

} // namespace live_test

#endif
