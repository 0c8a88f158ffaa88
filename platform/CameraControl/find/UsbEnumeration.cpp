#include "find/UsbEnumeration.h"

#include "Camera/Boundary/OvStatus.h"

namespace kolt::cc {

std::uint32_t UsbEnumeration::list(std::chrono::milliseconds budget, std::vector<UsbFound>& found,
                                   std::uint64_t& unreadable) {
    struct Reading {
        UsbFound entry;
        UsbReading reading;
    };
    std::map<Place, Reading> visited;
    const std::uint32_t status =
        bus_.visit(std::chrono::steady_clock::now() + budget,
                   [&](const UsbDevice& device, const UsbStringReader& readString) {
                       Reading now{{device, {}}, UsbReading::none};
                       now.reading = fillUsbRecord(device, readString, now.entry.record);
                       visited.insert_or_assign(
                           Place(device.bus, device.address, device.vendorId, device.productId), now);
                   });
    if (status != OV_STATUS_OK)
        return status;
    const std::lock_guard<std::mutex> lock(mutex_);
    std::map<Place, _OV_CC_DEVICE_INFO_> present;
    for (auto& [place, now] : visited) {
        const auto before = known_.find(place);
        if (now.reading != UsbReading::whole && before != known_.end()) {
            now.entry.record = before->second;
        } else if (now.reading == UsbReading::none) {
            ++unreadable;
            continue;
        }
        present.insert_or_assign(place, now.entry.record);
        found.push_back(std::move(now.entry));
    }
    // What was unplugged is forgotten: another device may come to the same place.
    known_ = std::move(present);
    return OV_STATUS_OK;
}

} // namespace kolt::cc
