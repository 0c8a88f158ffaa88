#include "find/DeviceFinder.h"

#include <exception>
#include <new>

#include "find/Finder.h"
#include "find/ForceIp.h"

namespace kolt::cc {

namespace {

Finder& systemFinder() {
    static Finder finder(systemUsbBus());
    return finder;
}

} // namespace

std::uint32_t enumerateDevices(std::uint32_t transportMask, _OV_CC_DEVICE_INFO_LIST_* list) {
    return systemFinder().enumerate(transportMask, list);
}

std::uint32_t queryDeviceInfo(const _OV_CC_DEVICE_INFO_& known, _OV_CC_DEVICE_INFO_& live) {
    return systemFinder().query(known, live);
}

bool isDeviceAccessible(const _OV_CC_DEVICE_INFO_* device, std::uint32_t accessMode) {
    return systemFinder().accessible(device, accessMode);
}

std::uint32_t forceIp(const _OV_CC_DEVICE_INFO_& device, std::uint32_t ip) {
    return withoutRaising([&] { return forceIpOfCamera(device, ip); });
}

FinderStatistics finderStatistics() {
    return systemFinder().statistics();
}

} // namespace kolt::cc
