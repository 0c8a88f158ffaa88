#ifndef LIVE_CAMERA_SELECTOR_H
#define LIVE_CAMERA_SELECTOR_H

#include "CameraRecord.h"

#include <functional>
#include <string>
#include <vector>

namespace live {

/// The camera that was meant, or why there is none.
struct Selection {
    DeviceRecord device{};
    bool remote = false; ///< not in the list: an address alone, to be asked for the rest
    std::string note;    ///< something to tell the user although a camera was found
    std::string error;   ///< empty: `device` is valid
};

/// Finds the camera that `selector` names among `devices`, in the order of --list. Tried in this order: IP
/// address, MAC address, serial number and user-defined name together; then the number in the list, from 1.
/// An address that is not listed gives a remote camera. One camera seen on two interfaces is one: the way on
/// which its subnet fits is taken. Cameras that are really different are an error that names them.
/// An empty selector means the first camera for which `isFree` is true, or the first of all when none is.
Selection SelectCamera(const std::vector<DeviceRecord>& devices, const std::string& selector,
                       const std::function<bool(const DeviceRecord&)>& isFree);

} // namespace live

#endif
