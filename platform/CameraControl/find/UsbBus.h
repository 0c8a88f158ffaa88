// The host's USB devices, behind an interface so that everything above it runs on doubles as well.
#ifndef KOLT_CAMERA_CONTROL_USB_BUS_H
#define KOLT_CAMERA_CONTROL_USB_BUS_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

#include "find/UsbRecord.h"

namespace kolt::cc {

using UsbVisitor = std::function<void(const UsbDevice& device, const UsbStringReader& readString)>;

class UsbBus {
public:
    virtual ~UsbBus() = default;

    // Calls the visitor for each USB3 Vision device; a string reader is good during that call alone, and
    // fails from the deadline on. Devices that this user may not open are visited too, their strings can't be
    // read. OV_STATUS_OK, also where the host has no USB at all; OV_STATUS_RESOURCE when it can't be asked.
    virtual std::uint32_t visit(std::chrono::steady_clock::time_point deadline,
                                const UsbVisitor& visitor) = 0;

    // True when the control interface of the device can be claimed now, so nobody else has it.
    virtual bool claimable(const UsbDevice& device) = 0;
};

// The real one, on libusb. Any thread.
UsbBus& systemUsbBus();

} // namespace kolt::cc

#endif
