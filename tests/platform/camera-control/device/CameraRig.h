// A virtual camera on a loopback address of its own and handles of the library on it, for tests that enter by
// the exported calls.
#ifndef KOLT_TESTS_CAMERA_CONTROL_CAMERA_RIG_H
#define KOLT_TESTS_CAMERA_CONTROL_CAMERA_RIG_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Camera/Boundary/OvCameraControl.h"
#include "GenApi/IPort.h"
#include "OvCameraControlX.h"
#include "VendorRegisters.h"
#include "VirtualCamera.h"
#include "Waiting.h"

namespace kolt::test {

// Small and fast enough for two slow cores: 320 x 240 Mono8, 50 frames a second, small packets.
vcam::Config smallCamera(unsigned index = 0);

_OV_CC_DEVICE_INFO_ recordOf(const std::string& dottedAddress);

// A handle that is destroyed at the end.
class Handle {
public:
    explicit Handle(const _OV_CC_DEVICE_INFO_& record);
    ~Handle();
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    operator void*() const { return handle_; } // NOLINT(google-explicit-constructor): stands for the handle
    std::uint32_t open() const { return OV_CC_OpenDevice(handle_, OV_ACCESS_EXCLUSIVE, 0); }
    // Statistics; fails the test when they can't be had.
    OVX_CC_STATISTICS statistics() const;
    _OV_MATCH_INFO_NET_DETECT_ matchInfo() const;
    // Fails the test when there is none.
    GenApi_3_0::IPort& port() const;

private:
    void* handle_ = nullptr;
};

// One frame as fetched.
struct Fetched {
    std::uint32_t status = 0;
    _OV_CC_FRAME_OUT_INFO_ info{};
    std::vector<std::uint8_t> pixels;
};
Fetched fetch(void* handle, std::uint32_t timeoutMs = 5000, std::size_t capacity = 4 << 20);

// Messages of the exception callback.
class Messages {
public:
    static void callback(std::uint32_t message, void* user);

    bool waitFor(std::size_t count, milliseconds deadline = milliseconds(10000));
    std::vector<std::uint32_t> all() const;
    Clock::time_point firstAt() const;
    std::thread::id thread() const;
    // From now on runs inside the callback.
    void runInside(std::function<void()> work);

private:
    mutable std::mutex mutex_;
    std::condition_variable came_;
    std::vector<std::uint32_t> messages_;
    Clock::time_point firstAt_{};
    std::thread::id thread_;
    std::function<void()> inside_;
};

} // namespace kolt::test

#endif
