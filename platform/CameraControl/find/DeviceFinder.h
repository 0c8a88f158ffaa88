// What the exported calls for finding cameras do. Any thread, any number at once; nothing here raises.
#ifndef KOLT_CAMERA_CONTROL_DEVICE_FINDER_H
#define KOLT_CAMERA_CONTROL_DEVICE_FINDER_H

#include <cstdint>

#include "Camera/Boundary/OvCameraControl.h"
#include "find/DropCounters.h"

namespace kolt::cc {

// Lists the GigE Vision and USB3 Vision devices of the layers in transportMask, at most the first 256, in an
// order that is the same from call to call (interface, then MAC). Takes about 0.3 s and never 0.5 s. The
// records belong to the library and stay as they are until the same thread calls again; they are never freed
// under a reader, not even when the thread that enumerated has ended.
std::uint32_t enumerateDevices(std::uint32_t transportMask, _OV_CC_DEVICE_INFO_LIST_* list);

// Asks the live device that "known" names: a GigE Vision camera by its current IP alone (behind a router,
// too), or where it can't be asked directly (foreign subnet) by its MAC on its host interface; a USB3 Vision
// camera by its serial number or GUID. On failure "live" is untouched. The host interface of "known" is kept
// where it is an address of this host. OV_STATUS_NETWORK: it doesn't answer. OV_STATUS_INVALID_PARAMETER: the
// record names nothing.
std::uint32_t queryDeviceInfo(const _OV_CC_DEVICE_INFO_& known, _OV_CC_DEVICE_INFO_& live);

// The device answers and nobody (this process included) has control of it. False for null, for an unknown
// layer and for access modes other than OV_ACCESS_EXCLUSIVE.
bool isDeviceAccessible(const _OV_CC_DEVICE_INFO_* device, std::uint32_t accessMode);

// Gives the GigE Vision camera another address until its next reset, and returns when it answers there.
// OV_STATUS_INVALID_PARAMETER: no address that a host can have. OV_STATUS_NOT_SUPPORTED: not a GigE Vision
// camera. OV_STATUS_IP_CONFLICT: another device answers at that address. OV_STATUS_NETWORK: the camera isn't
// there, or didn't acknowledge, or didn't come up at the new address in time.
std::uint32_t forceIp(const _OV_CC_DEVICE_INFO_& device, std::uint32_t ip);

// For tools and tests.
struct FinderStatistics {
    std::uint64_t calls = 0;       // of enumerateDevices
    std::uint64_t found = 0;       // by the latest call, also beyond the list's end
    std::uint64_t beyondLimit = 0; // of those, left out of the list
    std::uint64_t usbUnreadable =
        0; // of the latest call: plugged in, but not to be told apart (no permission?)
    std::uint64_t failedSends = 0; // in total
    DropCounters dropped;          // in total
};
FinderStatistics finderStatistics();

} // namespace kolt::cc

#endif
