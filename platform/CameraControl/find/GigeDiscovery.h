// GigE Vision discovery: one question on many interfaces at once, all answers collected in one wait.
//
// On each interface one socket, confined to it, sends DISCOVERY to 255.255.255.255 and to the broadcast
// address of each of the interface's subnets, once from each of its addresses, and again twice for what the
// network or a busy camera lost. Cameras of a foreign subnet hear it too and may answer by broadcast.
// Loopback has no broadcast: there the addresses 127.0.0.1 to 127.0.0.16 and the host's own addresses are
// asked one by one, so that virtual cameras on this host are found.
#ifndef KOLT_CAMERA_CONTROL_GIGE_DISCOVERY_H
#define KOLT_CAMERA_CONTROL_GIGE_DISCOVERY_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Camera/Boundary/OvCameraControl.h"
#include "find/DropCounters.h"
#include "find/GvcpCodec.h"
#include "find/HostInterfaces.h"

namespace kolt::cc {

// The last of the loopback addresses that are asked without being told: 127.0.0.1 up to this.
constexpr unsigned kLastLoopbackAddress = 16;

// Datagrams taken in from one interface in one call; a camera sends three at most.
constexpr unsigned kMaxAnswersPerInterface = 4096;

struct FoundCamera {
    DiscoveryAnswer answer;
    std::uint32_t hostInterface = 0; // the address of this host through which it was found
    unsigned interfaceIndex = 0;
    std::string interfaceName;
    bool byRoute = false; // not on that interface's own network, as far as was seen
};

struct DiscoveryQuestion {
    // Asked by broadcast, loopback one by one; those that are not discoverable are left out.
    std::vector<HostInterface> interfaces;
    // The host's own addresses: a virtual camera may have one of them.
    std::vector<std::uint32_t> ownAddresses;
    // Asked one by one, by the routing table.
    std::vector<std::uint32_t> addresses;
    std::vector<std::chrono::milliseconds> sends{std::chrono::milliseconds(0), std::chrono::milliseconds(60),
                                                 std::chrono::milliseconds(140)};
    std::chrono::milliseconds total{300};
    std::function<bool(const FoundCamera&)> stopWhen; // ends the wait at this camera; empty: never
    bool confine = true;                              // false: as on a system that forbids SO_BINDTODEVICE
    std::uint16_t port = gvcp::kPort;                 // another one only in tests
};

struct DiscoveryResult {
    std::uint32_t status = OV_STATUS_OK; // OV_STATUS_RESOURCE: not all interfaces could be asked
    std::vector<FoundCamera> cameras;    // by interface index, MAC, address; each once
    DropCounters dropped;
    std::uint64_t failedSends = 0;
};

DiscoveryResult discoverGige(const DiscoveryQuestion& question);

// The question for everything that the host and the settings of this process offer. 0 or an errno.
int wholeHostQuestion(DiscoveryQuestion& question);

// The boundary's record of a found camera; texts are cut to leave room for their NUL.
void fillRecord(const FoundCamera& camera, _OV_CC_DEVICE_INFO_& record);

// Copies text into a field of this size, NUL-terminated and padded with NULs.
void copyText(const std::string& text, char* field, std::size_t size);

} // namespace kolt::cc

#endif
