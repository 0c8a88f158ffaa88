#include "find/UsbEnumeration.h"

#include <algorithm>

#include "Camera/Boundary/OvStatus.h"

namespace kolt::cc {

std::uint32_t UsbEnumeration::list(std::chrono::milliseconds budget, std::vector<UsbFound>& found,
                                   std::uint64_t& unreadable) {
    std::map<Place, UsbFound> answered;
    std::map<Place, UsbDevice> silent;
    const std::uint32_t status =
        bus_.visit(std::chrono::steady_clock::now() + budget,
                   [&](const UsbDevice& device, const UsbStringReader& readString) {
                       const Place place(device.bus, device.address, device.vendorId, device.productId);
                       UsbFound entry;
                       entry.device = device;
                       if (fillUsbRecord(device, readString, entry.record))
                           answered.insert_or_assign(place, std::move(entry));
                       else
                           silent.insert_or_assign(place, device);
                   });
    if (status != OV_STATUS_OK)
        return status;
    const std::lock_guard<std::mutex> lock(mutex_);
    std::map<Place, _OV_CC_DEVICE_INFO_> present;
    for (const auto& [place, device] : silent) {
        const auto before = known_.find(place);
        if (before == known_.end())
            ++unreadable;
        else
            answered.insert_or_assign(place, UsbFound{device, before->second});
    }
    for (auto& [place, entry] : answered) {
        present.insert_or_assign(place, entry.record);
        found.push_back(std::move(entry));
    }
    // What was unplugged is forgotten: another device may come to the same place.
    known_ = std::move(present);
    return OV_STATUS_OK;
}

} // namespace kolt::cc
