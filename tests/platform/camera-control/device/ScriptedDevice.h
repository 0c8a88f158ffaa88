// A transport device whose every answer a test sets: for what no virtual camera can be, a USB device above
// all.
#ifndef KOLT_TESTS_CAMERA_CONTROL_SCRIPTED_DEVICE_H
#define KOLT_TESTS_CAMERA_CONTROL_SCRIPTED_DEVICE_H

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "device/TransportDevice.h"

namespace kolt::cc {

// Shared with the test; outlives the device.
struct Script {
    // Calls block while set, as on a device that died.
    void hang(bool on) {
        const std::lock_guard<std::mutex> lock(mutex);
        hanging = on;
        changed.notify_all();
    }
    void pass() {
        std::unique_lock<std::mutex> lock(mutex);
        ++blocked;
        changed.notify_all();
        changed.wait(lock, [this] { return !hanging; });
        --blocked;
    }
    void note(const std::string& what) {
        const std::lock_guard<std::mutex> lock(mutex);
        calls.push_back(what);
    }
    std::vector<std::string> called() {
        const std::lock_guard<std::mutex> lock(mutex);
        return calls;
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool hanging = false;
    int blocked = 0;
    std::vector<std::string> calls;
    std::atomic<TransportDevice::Control> control{TransportDevice::Control::held};
    std::atomic<std::uint32_t> readStatus{OV_STATUS_OK};
    std::atomic<int> controlAsked{0};
    std::atomic<bool> destroyed{false};
    std::vector<std::uint8_t> xml{'<', 'a', '/', '>'};
};

class ScriptedDevice final : public TransportDevice {
public:
    explicit ScriptedDevice(std::shared_ptr<Script> script) : script_(std::move(script)) {}
    ~ScriptedDevice() override {
        script_->pass();
        script_->destroyed = true;
    }

    std::uint32_t readMemory(std::uint64_t address, std::uint8_t* destination, std::size_t length) override {
        script_->pass();
        std::memset(destination, static_cast<int>(address), length);
        return script_->readStatus;
    }
    std::uint32_t writeMemory(std::uint64_t, const std::uint8_t*, std::size_t) override {
        script_->pass();
        return script_->readStatus;
    }
    std::uint32_t executeCommand(const char* feature) override {
        script_->pass();
        script_->note(feature);
        return OV_STATUS_OK;
    }
    std::uint32_t payloadSize(std::size_t&) override { return OV_STATUS_NOT_SUPPORTED; }
    std::uint32_t openStream(const StreamSettings&, FrameSource::Hooks,
                             std::shared_ptr<FrameSource>&) override {
        script_->pass();
        return OV_STATUS_NOT_SUPPORTED;
    }
    void closeStreamChannel() override { script_->note("closeStreamChannel"); }
    std::int32_t optimalPacketSize() override { return 1500; }
    std::int32_t packetSize() override { return 1400; }
    Control askControl() override {
        ++script_->controlAsked;
        script_->pass();
        return script_->control;
    }
    const std::vector<std::uint8_t>& xml() const override { return script_->xml; }

private:
    std::shared_ptr<Script> script_;
};

} // namespace kolt::cc

#endif
