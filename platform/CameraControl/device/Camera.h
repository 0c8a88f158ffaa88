// What stands behind one camera handle.
#ifndef KOLT_CAMERA_CONTROL_CAMERA_H
#define KOLT_CAMERA_CONTROL_CAMERA_H

#include <cstdint>
#include <memory>
#include <mutex>

#include "Camera/Boundary/OvCameraControl.h"
#include "device/AravisDevice.h"
#include "device/CameraPort.h"
#include "device/ExceptionDispatcher.h"
#include "device/Log.h"
#include "device/Session.h"

namespace kolt::cc {

// Any thread. The operations are those of the contract.
class Camera {
public:
    // How the device is opened and whether it is probed; other than the default only in tests.
    using Opener = std::function<std::unique_ptr<TransportDevice>(const OpenRequest&, std::uint32_t& status)>;
    struct Options {
        bool log = true;
        LivenessRules rules;
        Opener opener = openDevice;
    };

    Camera(const _OV_CC_DEVICE_INFO_& device, const Options& options);
    ~Camera(); // closes
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    std::uint32_t open(std::uint32_t accessMode);
    std::uint32_t close();
    std::uint32_t deviceInfo(_OV_CC_DEVICE_INFO_& device) const;
    std::uint32_t forceIp(std::uint32_t ip);
    void setCallback(OvExceptionCallBack callback, void* user) { exceptions_->set(callback, user); }
    std::uint32_t setBuffers(std::uint32_t count);
    std::uint32_t setDropIncomplete(bool drop);
    std::uint32_t setResend(bool on);
    std::uint32_t setPacketSocket(bool on);
    std::uint32_t startGrabbing();
    std::uint32_t stopGrabbing();
    std::uint32_t fetchFrame(std::uint8_t* buffer, std::uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                             std::uint32_t timeoutMs);
    std::int32_t optimalPacketSize();
    std::uint32_t numbers(StreamNumbers& numbers) const;
    std::uint32_t copyXml(std::uint8_t* buffer, std::uint32_t capacity, std::uint32_t* length) const;
    // Null while the device isn't open.
    GenApi_3_0::IPort* port() const;

    // For whoever must keep the port's memory longer than the handle.
    std::shared_ptr<CameraPort> sharedPort() const { return port_; }

private:
    std::shared_ptr<Session> session() const;
    _OV_CC_DEVICE_INFO_ record() const;
    StreamSettings settings() const;

    const Options options_;
    const Logger log_;
    // Shared with the session's thread, which may still be on its way out of a callback when the handle has
    // gone.
    const std::shared_ptr<ExceptionDispatcher> exceptions_;
    const std::shared_ptr<CameraPort> port_;

    std::mutex control_; // one opening, closing, start, stop, forcing or measuring at a time; before mutex_

    mutable std::mutex mutex_; // guards all below; never held across a call that waits
    std::shared_ptr<Session> session_;
    _OV_CC_DEVICE_INFO_ device_;
    StreamSettings settings_;
};

} // namespace kolt::cc

#endif
