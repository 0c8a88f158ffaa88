#include "find/ForceIp.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <random>
#include <sstream>

#include "Camera/Boundary/OvStatus.h"
#include "find/Ipv4.h"
#include "find/Neighbours.h"
#include "find/UdpSocket.h"

namespace kolt::cc {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kNeighbourPatience{150};

bool usableIn(std::uint32_t ip, std::uint32_t mask) {
    const std::uint32_t host = ip & ~mask;
    // Subnets of one or two addresses have neither a network nor a broadcast address.
    return isProperMask(mask) && (~mask <= 1 || (host != 0 && host != ~mask));
}

bool gatewayFits(std::uint32_t gateway, std::uint32_t ip, std::uint32_t mask) {
    return gateway != 0 && gateway != ip && sameSubnet(gateway, ip, mask);
}

// The camera, where it is and what it has now.
struct Target {
    std::uint64_t mac = 0;
    std::uint32_t currentIp = 0;
    Network network;
    HostInterface interface;
};

std::uint64_t macOf(const _OV_CC_DEVICE_INFO_& device) {
    return (static_cast<std::uint64_t>(device.macHigh & 0xFFFFU) << 32) | device.macLow;
}

const FoundCamera* findCamera(const std::vector<FoundCamera>& cameras, const _OV_CC_DEVICE_INFO_& device) {
    const _OV_CC_GIGE_DEVICE_INFO_& gige = device.transport.gige;
    const std::uint64_t mac = macOf(device);
    const FoundCamera* best = nullptr;
    for (const FoundCamera& camera : cameras) {
        // Behind a router a camera can't be told a new address: the broadcast doesn't get there. On loopback
        // there is no broadcast to get anywhere.
        if (camera.byRoute && !isLoopbackAddress(camera.answer.currentIp))
            continue;
        if (mac != 0 ? camera.answer.mac != mac : camera.answer.currentIp != gige.currentIp)
            continue;
        // The same camera may be seen on two interfaces: the record says which one is meant.
        if (best == nullptr || camera.hostInterface == gige.hostInterface)
            best = &camera;
    }
    return best;
}

std::uint32_t locate(const _OV_CC_DEVICE_INFO_& device, const DiscoveryQuestion& question,
                     const std::vector<FoundCamera>& cameras, Target& target) {
    const _OV_CC_GIGE_DEVICE_INFO_& gige = device.transport.gige;
    const FoundCamera* camera = findCamera(cameras, device);
    const HostInterface* interface = nullptr;
    if (camera != nullptr) {
        target.mac = camera->answer.mac;
        target.currentIp = camera->answer.currentIp;
        target.network = {camera->answer.subnetMask, camera->answer.defaultGateway};
        const auto match = [&](const HostInterface& candidate) {
            return candidate.name == camera->interfaceName;
        };
        const auto found = std::find_if(question.interfaces.begin(), question.interfaces.end(), match);
        interface = found == question.interfaces.end() ? nullptr : &*found;
    } else if (macOf(device) != 0) {
        // It doesn't answer discovery, but may still hear its name called.
        target.mac = macOf(device);
        target.currentIp = gige.currentIp;
        target.network = {gige.currentSubnetMask, gige.defaultGateway};
        interface = findInterface(question.interfaces, gige.hostInterface);
    }
    if (interface == nullptr)
        return OV_STATUS_NETWORK;
    target.interface = *interface;
    return OV_STATUS_OK;
}

bool isTaken(std::uint32_t ip, const Target& target, const DiscoveryQuestion& question,
             const std::vector<FoundCamera>& cameras) {
    const auto& own = question.ownAddresses;
    if (std::find(own.begin(), own.end(), ip) != own.end() && ip != target.currentIp)
        return true;
    for (const FoundCamera& camera : cameras) {
        if (camera.answer.currentIp == ip && camera.answer.mac != target.mac)
            return true;
    }
    // Where the camera is already, it is the camera that answers.
    return ip != target.currentIp && somebodyAnswersAt(target.interface, ip, target.mac, kNeighbourPatience);
}

// Sends the command once and waits for its acknowledge. True when it came; the camera's verdict is in status.
bool askOnce(UdpSocket& socket, const Target& target, std::uint32_t ip, const Datagram& command,
             std::uint16_t requestId, milliseconds patience, std::uint32_t& status) {
    const HostInterface& interface = target.interface;
    const HostAddress* near = interface.addressFor(ip);
    const std::uint32_t source = near != nullptr ? near->ip : interface.addresses.front().ip;
    if (interface.loopback) {
        socket.send(command.data(), command.size(), target.currentIp, gvcp::kPort, 0, interface.index);
        socket.send(command.data(), command.size(), ip, gvcp::kPort, 0, interface.index);
    } else {
        socket.send(command.data(), command.size(), 0xFFFFFFFFU, gvcp::kPort, source, interface.index);
    }
    const auto deadline = Clock::now() + patience;
    std::uint8_t buffer[gvcp::kMaxDatagram];
    while (Clock::now() < deadline) {
        UdpOrigin origin;
        const long length = socket.receive(buffer, sizeof buffer, origin);
        if (length < 0) {
            pollfd watched{socket.descriptor(), POLLIN, 0};
            const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
            ::poll(&watched, 1, static_cast<int>(std::max<long>(left, 1)));
            continue;
        }
        Acknowledge ack;
        // It may speak from its old address, its new one or none, but only from the protocol's port.
        if (origin.port == gvcp::kPort && length <= static_cast<long>(sizeof buffer) &&
            parseAcknowledge(buffer, static_cast<std::size_t>(length), {gvcp::Command::forceIp, requestId},
                             ack) == Verdict::accepted &&
            !ack.pending) {
            status = statusFromGvcp(ack.status);
            return true;
        }
    }
    return false;
}

bool showsUpAt(std::uint32_t ip, const Target& target, milliseconds patience) {
    const auto deadline = Clock::now() + patience;
    do {
        DiscoveryQuestion question;
        question.interfaces = {target.interface};
        if (target.interface.loopback)
            question.addresses = {ip};
        bool seen = false;
        question.stopWhen = [&](const FoundCamera& camera) {
            seen = seen || (camera.answer.mac == target.mac && camera.answer.currentIp == ip);
            return seen;
        };
        discoverGige(question);
        if (seen)
            return true;
    } while (Clock::now() < deadline);
    return false;
}

} // namespace

Network networkFor(std::uint32_t ip, const Network& camera, const HostInterface& interface,
                   std::uint32_t hostGateway) {
    const HostAddress* near = interface.addressFor(ip);
    Network network;
    const bool hostReachable = near == nullptr || sameSubnet(near->ip, ip, camera.mask);
    if (usableIn(ip, camera.mask) && hostReachable)
        network.mask = camera.mask;
    else
        network.mask = near != nullptr ? near->mask : interface.addresses.front().mask;
    if (gatewayFits(camera.gateway, ip, network.mask))
        network.gateway = camera.gateway;
    else if (gatewayFits(hostGateway, ip, network.mask))
        network.gateway = hostGateway;
    return network;
}

std::uint32_t defaultGatewayFrom(const std::string& routes, const std::string& interfaceName) {
    // Iface Destination Gateway Flags RefCnt Use Metric Mask ...: addresses in hexadecimal, as the bytes lie
    // in memory.
    std::istringstream lines(routes);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string name;
        std::uint32_t destination = 1;
        std::uint32_t gateway = 0;
        words >> name >> std::hex >> destination >> gateway;
        if (words && name == interfaceName && destination == 0 && gateway != 0)
            return __builtin_bswap32(gateway);
    }
    return 0;
}

std::uint32_t defaultGateway(const std::string& interfaceName) {
    // The calling thread's view: it may be in another network namespace than the process.
    std::ifstream file("/proc/thread-self/net/route");
    const std::string routes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return defaultGatewayFrom(routes, interfaceName);
}

std::uint32_t forceIpOfCamera(const _OV_CC_DEVICE_INFO_& device, std::uint32_t ip,
                              const ForceIpTiming& timing) {
    if (device.nTLayerType != OV_TLAYER_GIGE)
        return OV_STATUS_NOT_SUPPORTED;
    if (!isHostAddress(ip) && !isLoopbackAddress(ip))
        return OV_STATUS_INVALID_PARAMETER;
    DiscoveryQuestion question;
    if (wholeHostQuestion(question) != 0)
        return OV_STATUS_RESOURCE;
    const DiscoveryResult seen = discoverGige(question);
    Target target;
    std::uint32_t status = locate(device, question, seen.cameras, target);
    if (status != OV_STATUS_OK)
        return status;
    if (isLoopbackAddress(ip) != target.interface.loopback)
        return OV_STATUS_INVALID_PARAMETER;
    if (isTaken(ip, target, question, seen.cameras))
        return OV_STATUS_IP_CONFLICT;

    const Network network =
        networkFor(ip, target.network, target.interface, defaultGateway(target.interface.name));
    UdpSocket socket;
    UdpOptions options;
    options.broadcast = true;
    options.interfaceName = target.interface.name;
    if (socket.open(options) != 0)
        return OV_STATUS_RESOURCE;
    const std::uint16_t requestId = static_cast<std::uint16_t>(std::random_device{}() | 1U);
    const Datagram command = forceIpCommand(requestId, {target.mac, ip, network.mask, network.gateway});
    bool acknowledged = false;
    for (unsigned attempt = 0; attempt < timing.attempts && !acknowledged; ++attempt)
        acknowledged = askOnce(socket, target, ip, command, requestId, timing.acknowledge, status);
    if (acknowledged && status != OV_STATUS_OK)
        return status;
    // A camera that changes its address before it answers may lose the acknowledge: what counts is where it
    // is.
    return showsUpAt(ip, target, acknowledged ? timing.settle : milliseconds(0)) ? OV_STATUS_OK
                                                                                 : OV_STATUS_NETWORK;
}

} // namespace kolt::cc
