// Giving a GigE Vision camera another address by broadcast on its own interface.
#ifndef KOLT_CAMERA_CONTROL_FORCE_IP_H
#define KOLT_CAMERA_CONTROL_FORCE_IP_H

#include <chrono>
#include <cstdint>

#include "Camera/Boundary/OvCameraControl.h"
#include "find/GigeDiscovery.h"

namespace kolt::cc {

struct Network {
    std::uint32_t mask = 0;
    std::uint32_t gateway = 0;
};

// Mask and gateway for a new address. The camera's own mask stays where it fits: it is a proper one, the new
// address is neither the network's nor the broadcast address under it, and where the new address lies in a
// subnet of the host interface, the host lies in the camera's subnet too (else the camera couldn't answer).
// Otherwise the host's mask. The camera's gateway stays where it is another address of the new subnet;
// otherwise the host's gateway where that is one; otherwise none.
Network networkFor(std::uint32_t ip, const Network& camera, const HostInterface& interface,
                   std::uint32_t hostGateway);

// The default gateway on this interface, from the kernel's routing table; 0: none.
std::uint32_t defaultGateway(const std::string& interfaceName);
// The same from the text of /proc/net/route.
std::uint32_t defaultGatewayFrom(const std::string& routes, const std::string& interfaceName);

struct ForceIpTiming {
    std::chrono::milliseconds acknowledge{250}; // for one attempt
    unsigned attempts = 3;
    std::chrono::milliseconds settle{3000}; // until the camera shows up at the new address
};

// See forceIp in DeviceFinder.h.
std::uint32_t forceIpOfCamera(const _OV_CC_DEVICE_INFO_& device, std::uint32_t ip,
                              const ForceIpTiming& timing = {});

} // namespace kolt::cc

#endif
