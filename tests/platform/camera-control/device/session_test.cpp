// Sessions and cameras over devices that are no GigE Vision cameras: a scripted one, and the one that Aravis
// makes inside the process. They stand for USB3 Vision, which has no virtual device here.
#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/GCException.h"
#include "ScriptedDevice.h"
#include "Waiting.h"
#include "device/Camera.h"
#include "device/HandleRegistry.h"
#include "device/Reaper.h"

namespace kolt::cc {
namespace {

using std::chrono::milliseconds;
using test::eventually;
using test::millisecondsSince;

_OV_CC_DEVICE_INFO_ usbRecord() {
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_USB3;
    std::strcpy(record.transport.usb3.serialNumber, "USB-1");
    return record;
}

LivenessRules quickRules() {
    LivenessRules rules;
    rules.interval = milliseconds(20);
    // A second of silence, at which no busy machine should arrive by itself.
    rules.misses = 50;
    rules.missesWhileBusy = 50;
    return rules;
}

struct Count {
    std::atomic<int> messages{0};
    static void callback(std::uint32_t message, void* user) {
        EXPECT_EQ(message, static_cast<std::uint32_t>(OV_EXCEPTION_DISCONNECT));
        ++static_cast<Count*>(user)->messages;
    }
};

class ScriptedCameraTest : public testing::Test {
protected:
    ScriptedCameraTest() {
        Camera::Options options;
        options.rules = quickRules();
        options.opener = [this](const OpenRequest& request, std::uint32_t& status) {
            controlLost = request.controlLost;
            status = openStatus;
            std::unique_ptr<TransportDevice> device;
            if (status == OV_STATUS_OK) {
                device = std::make_unique<ScriptedDevice>(script);
            }
            return device;
        };
        camera = std::make_unique<Camera>(usbRecord(), options);
        camera->setCallback(Count::callback, &count);
    }
    ~ScriptedCameraTest() override {
        script->hang(false);
        camera.reset();
        EXPECT_TRUE(waitReaped(milliseconds(20000)));
        EXPECT_TRUE(openStatus != OV_STATUS_OK || !opened || script->destroyed);
    }
    void open() {
        ASSERT_EQ(camera->open(OV_ACCESS_EXCLUSIVE), OV_STATUS_OK);
        opened = true;
    }

    std::shared_ptr<Script> script = std::make_shared<Script>();
    std::function<void()> controlLost;
    std::uint32_t openStatus = OV_STATUS_OK;
    bool opened = false;
    Count count;
    std::unique_ptr<Camera> camera;
};

TEST_F(ScriptedCameraTest, ADeviceThatAnswersIsAlive) {
    open();
    EXPECT_TRUE(eventually([&] { return script->controlAsked > 40; }));
    EXPECT_EQ(count.messages, 0) << "in more time than silence is borne";
    std::array<std::uint8_t, 8> bytes{};
    camera->port()->Read(bytes.data(), 0x33, 8);
    EXPECT_EQ(bytes[7], 0x33);
    EXPECT_EQ(camera->close(), OV_STATUS_OK);
    EXPECT_TRUE(script->destroyed) << "given back when the closing returns";
}

TEST_F(ScriptedCameraTest, ADeviceThatIsGoneIsToldOnce) {
    open();
    script->control = TransportDevice::Control::lost;
    EXPECT_TRUE(eventually([&] { return count.messages == 1; }));
    controlLost();
    controlLost();
    EXPECT_EQ(camera->close(), OV_STATUS_OK);
    EXPECT_EQ(count.messages, 1);
    controlLost(); // of a session that has gone
}

TEST_F(ScriptedCameraTest, WhatTheTransportLibraryReportsIsToldAtOnce) {
    open();
    controlLost();
    EXPECT_TRUE(eventually([&] { return count.messages == 1; }));
}

TEST_F(ScriptedCameraTest, ADeviceThatHangsIsDeadAndItsCallersAreLetGo) {
    open();
    script->hang(true);
    std::thread reader([&] {
        std::array<std::uint8_t, 4> bytes{};
        EXPECT_THROW(camera->port()->Read(bytes.data(), 0, 4), GenICam_3_0::AccessException);
    });
    reader.join();
    EXPECT_TRUE(eventually([&] { return count.messages == 1; }));
    const auto begun = test::Clock::now();
    EXPECT_EQ(camera->close(), OV_STATUS_OK);
    EXPECT_LT(millisecondsSince(begun), 5000) << "the device still hangs";
    EXPECT_FALSE(script->destroyed);
    EXPECT_FALSE(waitReaped(milliseconds(0)));
}

TEST_F(ScriptedCameraTest, ClosingLetsCallersGoThatWaitForTheDevice) {
    open();
    script->hang(true);
    std::thread reader([&] {
        std::array<std::uint8_t, 4> bytes{};
        GenApi_3_0::IPort* port = camera->port();
        if (port != nullptr) {
            EXPECT_THROW(port->Read(bytes.data(), 0, 4), GenICam_3_0::AccessException);
        }
    });
    std::thread starter([&] { EXPECT_NE(camera->startGrabbing(), OV_STATUS_OK); });
    {
        std::unique_lock<std::mutex> lock(script->mutex);
        script->changed.wait(lock, [&] { return script->blocked > 0; });
    }
    camera->close();
    reader.join();
    starter.join();
}

TEST_F(ScriptedCameraTest, AFailedOpeningLeavesNothing) {
    openStatus = OV_STATUS_ACCESS_DENIED;
    EXPECT_EQ(camera->open(OV_ACCESS_EXCLUSIVE), OV_STATUS_ACCESS_DENIED);
    EXPECT_EQ(camera->close(), OV_STATUS_CALL_ORDER);
    openStatus = OV_STATUS_OK;
    open();
}

TEST_F(ScriptedCameraTest, ManyThreadsOpenCloseAndUseIt) {
    std::atomic<bool> stop{false};
    std::atomic<int> opens{0};
    std::vector<std::thread> threads;
    for (int index = 0; index < 2; ++index) {
        threads.emplace_back([&] {
            while (!stop) {
                opens += camera->open(OV_ACCESS_EXCLUSIVE) == OV_STATUS_OK ? 1 : 0;
                camera->close();
            }
        });
        threads.emplace_back([&] {
            std::vector<std::uint8_t> bytes(16);
            _OV_CC_FRAME_OUT_INFO_ info{};
            std::uint32_t length = 0;
            while (!stop) {
                try {
                    camera->sharedPort()->Read(bytes.data(), 0, 16);
                } catch (const GenICam_3_0::AccessException&) {
                }
                camera->startGrabbing();
                camera->fetchFrame(bytes.data(), 16, &info, 0);
                camera->stopGrabbing();
                camera->optimalPacketSize();
                camera->copyXml(bytes.data(), 16, &length);
                camera->setCallback(Count::callback, &count);
            }
        });
    }
    opened = true;
    EXPECT_TRUE(eventually([&] { return opens > 100; }));
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count.messages, 0);
}

// Aravis' own device: no packets, no addresses, its frames come whole.
class FakeCameraTest : public testing::Test {
protected:
    FakeCameraTest() {
        Camera::Options options;
        options.opener = openFakeDevice;
        camera = std::make_unique<Camera>(usbRecord(), options);
    }
    std::unique_ptr<Camera> camera;
};

TEST_F(FakeCameraTest, StreamsWithoutPackets) {
    ASSERT_EQ(camera->open(OV_ACCESS_EXCLUSIVE), OV_STATUS_OK);
    std::uint32_t length = 0;
    EXPECT_EQ(camera->copyXml(nullptr, 0, &length), OV_STATUS_BUFFER_FULL);
    EXPECT_GT(length, 1000U);
    EXPECT_EQ(camera->optimalPacketSize(), 0) << "there are none";
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(camera->startGrabbing(), OV_STATUS_OK);
        std::vector<std::uint8_t> pixels(4 << 20);
        _OV_CC_FRAME_OUT_INFO_ info{};
        for (int frame = 0; frame < 5; ++frame) {
            ASSERT_EQ(
                camera->fetchFrame(pixels.data(), static_cast<std::uint32_t>(pixels.size()), &info, 5000),
                OV_STATUS_OK);
            EXPECT_EQ(info.frameState, 0U);
            EXPECT_GT(info.width, 0);
            EXPECT_GT(info.height, 0);
            EXPECT_EQ(info.frameLength, static_cast<std::uint32_t>(info.width) * info.height);
            EXPECT_GT(info.hostTimestamp, 0U);
        }
        StreamNumbers numbers;
        EXPECT_EQ(camera->numbers(numbers), OV_STATUS_OK);
        EXPECT_GE(numbers.tally.frames, 5U);
        EXPECT_EQ(numbers.tally.lostPackets, 0U);
        EXPECT_EQ(camera->stopGrabbing(), OV_STATUS_OK);
    }
    EXPECT_EQ(camera->close(), OV_STATUS_OK);
}

TEST(UsbOpening, ARecordThatNamesNoDeviceIsRefusedAndAnAbsentOneNotFound) {
    std::uint32_t status = OV_STATUS_OK;
    OpenRequest request;
    request.controlLost = [] {};
    request.device.nTLayerType = OV_TLAYER_USB3;
    EXPECT_EQ(openDevice(request, status), nullptr);
    EXPECT_EQ(status, OV_STATUS_INVALID_PARAMETER);
    std::strcpy(request.device.transport.usb3.serialNumber, "no such camera");
    EXPECT_EQ(openDevice(request, status), nullptr);
    EXPECT_EQ(status, OV_STATUS_PRECONDITION);
    std::memset(request.device.transport.usb3.deviceGuid, 'x', 64); // without a NUL
    EXPECT_EQ(openDevice(request, status), nullptr);
    EXPECT_EQ(status, OV_STATUS_PRECONDITION);
    request.device.nTLayerType = 9;
    EXPECT_EQ(openDevice(request, status), nullptr);
    EXPECT_EQ(status, OV_STATUS_NOT_SUPPORTED);
}

TEST(HandleRegistryTest, NeverGivesANumberTwiceAndKeepsWhatIsInUse) {
    HandleRegistry& registry = HandleRegistry::instance();
    const std::size_t before = registry.count();
    std::vector<void*> seen;
    for (int round = 0; round < 200; ++round) {
        void* handle = registry.add(std::make_shared<Camera>(usbRecord(), Camera::Options{}));
        EXPECT_EQ(std::find(seen.begin(), seen.end(), handle), seen.end());
        seen.push_back(handle);
        const std::shared_ptr<Camera> used = registry.find(handle);
        ASSERT_NE(used, nullptr);
        EXPECT_EQ(registry.remove(handle), used);
        EXPECT_EQ(registry.remove(handle), nullptr);
        EXPECT_EQ(registry.find(handle), nullptr);
        EXPECT_EQ(used->close(), OV_STATUS_CALL_ORDER) << "whoever was in a call still has it";
    }
    EXPECT_EQ(registry.count(), before);
}

} // namespace
} // namespace kolt::cc
