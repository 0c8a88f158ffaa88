// What is behind DeviceFinder.h, with the USB side replaceable. Any thread.
#ifndef KOLT_CAMERA_CONTROL_FINDER_H
#define KOLT_CAMERA_CONTROL_FINDER_H

#include <cstdint>
#include <mutex>
#include <new>
#include <vector>

#include "find/DeviceFinder.h"
#include "find/GigeDiscovery.h"
#include "find/UsbEnumeration.h"

namespace kolt::cc {

// The calls behind the C boundary never raise: what the standard library throws is a lack of resources.
template<typename Work>
std::uint32_t withoutRaising(const Work& work) noexcept {
    try {
        return work();
    } catch (...) {
        return OV_STATUS_RESOURCE;
    }
}

class Finder {
public:
    explicit Finder(UsbBus& bus) : usb_(bus) {}

    std::uint32_t enumerate(std::uint32_t transportMask, _OV_CC_DEVICE_INFO_LIST_* list) noexcept;
    std::uint32_t query(const _OV_CC_DEVICE_INFO_& known, _OV_CC_DEVICE_INFO_& live) noexcept;
    bool accessible(const _OV_CC_DEVICE_INFO_* device, std::uint32_t accessMode) noexcept;
    FinderStatistics statistics() const;

private:
    std::uint32_t addGige(std::vector<_OV_CC_DEVICE_INFO_>& records, FinderStatistics& seen);
    std::uint32_t addUsb(std::vector<_OV_CC_DEVICE_INFO_>& records, FinderStatistics& seen);
    std::uint32_t queryGige(const _OV_CC_DEVICE_INFO_& known, _OV_CC_DEVICE_INFO_& live);
    std::uint32_t findUsb(const _OV_CC_DEVICE_INFO_& known, UsbFound& found);

    UsbEnumeration usb_;
    mutable std::mutex mutex_; // guards statistics_
    FinderStatistics statistics_;
};

} // namespace kolt::cc

#endif
