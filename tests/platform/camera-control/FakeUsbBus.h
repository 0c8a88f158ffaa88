// A USB bus with cameras as a test wants them.
#ifndef KOLT_TESTS_FAKE_USB_BUS_H
#define KOLT_TESTS_FAKE_USB_BUS_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Camera/Boundary/OvStatus.h"
#include "find/UsbBus.h"

namespace kolt::test {

struct FakeUsbCamera {
    cc::UsbDevice device;
    std::map<int, std::string> strings;
    bool claimable = true;

    FakeUsbCamera() {
        device.bus = 2;
        device.address = 3;
        device.vendorId = 0x1234;
        device.productId = 0x5678;
        device.usbVersion = 0x0310;
        device.manufacturerIndex = 1;
        device.serialIndex = 2;
        cc::UsbInterface control{0, 0xEF, 5, 0, {{0x81, 2}, {0x01, 2}}, {}};
        // Device information: GenCP 1.1, USB3 Vision 1.2, then the string indices 11 to 18, and the speeds.
        control.extra = {20, 0x24, 1, 1, 0, 1, 0, 2, 0, 1, 0, 11, 12, 13, 14, 15, 16, 17, 18, 0x0F};
        device.interfaces.push_back(control);
        device.interfaces.push_back({1, 0xEF, 5, 1, {{0x82, 2}}, {}});
        device.interfaces.push_back({2, 0xEF, 5, 2, {{0x83, 2}}, {}});
        strings = {{1, "Maker"},   {2, "plain serial"}, {11, "ABCD00000001"}, {12, "Vendor"}, {13, "Model"},
                   {14, "Family"}, {15, "1.0"},         {16, "remark"},       {17, "U-77"},   {18, "right"}};
    }

    cc::UsbStringReader reader() const {
        return [this](std::uint8_t index) -> std::optional<std::string> {
            const auto found = strings.find(index);
            return found == strings.end() ? std::nullopt : std::optional<std::string>(found->second);
        };
    }
};

class FakeUsbBus : public cc::UsbBus {
public:
    std::uint32_t visit(std::chrono::steady_clock::time_point, const cc::UsbVisitor& visitor) override {
        if (status != OV_STATUS_OK)
            return status;
        for (const FakeUsbCamera& camera : cameras)
            visitor(camera.device, camera.reader());
        return OV_STATUS_OK;
    }
    bool claimable(const cc::UsbDevice& device) override {
        for (const FakeUsbCamera& camera : cameras) {
            if (camera.device.bus == device.bus && camera.device.address == device.address)
                return camera.claimable;
        }
        return false;
    }

    std::vector<FakeUsbCamera> cameras;
    std::uint32_t status = OV_STATUS_OK;
};

} // namespace kolt::test

#endif
