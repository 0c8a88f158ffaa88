// Listing USB3 Vision devices within a bounded time.
#ifndef KOLT_CAMERA_CONTROL_USB_ENUMERATION_H
#define KOLT_CAMERA_CONTROL_USB_ENUMERATION_H

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <tuple>
#include <vector>

#include "find/UsbBus.h"

namespace kolt::cc {

struct UsbFound {
    UsbDevice device;
    _OV_CC_DEVICE_INFO_ record;
};

// Remembers what each device said last, so that one which doesn't give its strings in time (or is busy) isn't
// lost from the list while it is still plugged in. Any thread.
class UsbEnumeration {
public:
    explicit UsbEnumeration(UsbBus& bus) : bus_(bus) {}

    // The devices in order of bus and address. unreadable counts those that are there but can't be told
    // apart, most often because the user has no permission.
    std::uint32_t list(std::chrono::milliseconds budget, std::vector<UsbFound>& found,
                       std::uint64_t& unreadable);

    UsbBus& bus() { return bus_; }

private:
    using Place = std::tuple<std::uint8_t, std::uint8_t, std::uint16_t, std::uint16_t>;

    UsbBus& bus_;
    std::mutex mutex_; // guards known_
    std::map<Place, _OV_CC_DEVICE_INFO_> known_;
};

} // namespace kolt::cc

#endif
