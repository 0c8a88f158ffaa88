// Device records, host interfaces and failing allocations for tests of detection and tree.
#pragma once

#include "Camera/Boundary/OvCameraControl.h"
#include "Camera/HostInterfaces.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace devices {

// 10.0.0.0 plus `low`, in host order.
constexpr uint32_t Ip(uint32_t low) {
    return 0x0A000000 + low;
}

struct Gige {
    uint32_t mac = 1;
    uint32_t ip = Ip(20);
    uint32_t host = Ip(1);
    std::string user;
    std::string maker = "Maker";
    std::string model = "GE-1";
    std::string serial = "G001";
};
_OV_CC_DEVICE_INFO_ GigeRecord(const Gige& camera = {});

struct Usb {
    std::string serial = "U001";
    std::string user;
    std::string maker = "Maker";
    std::string model = "U3-1";
    uint8_t endpoint = 0x81;
    uint32_t usbVersion = 0x310;
};
_OV_CC_DEVICE_INFO_ UsbRecord(const Usb& camera = {});

// An interface with addresses 10.0.x.1/24, one for each of `thirdOctets`.
_HOST_INTERFACE_ Interface(const std::string& name, const std::string& mac,
                           const std::vector<uint32_t>& thirdOctets);

// While it lives, allocations of exactly this many bytes by any thread fail with std::bad_alloc.
class FailAllocationsOf {
public:
    explicit FailAllocationsOf(size_t size);
    ~FailAllocationsOf();
    FailAllocationsOf(const FailAllocationsOf&) = delete;
    FailAllocationsOf& operator=(const FailAllocationsOf&) = delete;
};

} // namespace devices
