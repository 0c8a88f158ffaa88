#include "find/GigeDiscovery.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <poll.h>
#include <random>
#include <tuple>

#include "Camera/Boundary/OvStatus.h"
#include "find/DiscoverySettings.h"
#include "find/Ipv4.h"
#include "find/UdpSocket.h"

namespace kolt::cc {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kLimitedBroadcast = 0xFFFFFFFFU;

struct Send {
    std::uint32_t destination;
    std::uint32_t source;
};

// One socket and whom it asks.
struct Channel {
    UdpSocket socket;
    const HostInterface* interface = nullptr; // null: by the routing table
    std::vector<Send> sends;
    unsigned taken = 0;
};

std::vector<Send> sendsFor(const HostInterface& interface) {
    std::vector<Send> sends;
    if (interface.loopback) {
        for (unsigned last = 1; last <= kLastLoopbackAddress; ++last)
            sends.push_back({ipv4(127, 0, 0, last), 0});
        return sends;
    }
    for (const HostAddress& address : interface.addresses) {
        // From each address: a camera that answers by unicast must have a route to it.
        sends.push_back({kLimitedBroadcast, address.ip});
        if (address.broadcast != 0 && address.broadcast != kLimitedBroadcast)
            sends.push_back({address.broadcast, address.ip});
    }
    return sends;
}

class Discovery {
public:
    explicit Discovery(const DiscoveryQuestion& question) : question_(question) {
        std::random_device entropy;
        do {
            requestId_ = static_cast<std::uint16_t>(entropy());
        } while (requestId_ == 0);
        command_ = discoveryCommand(requestId_);
    }

    DiscoveryResult run();

private:
    void openChannels();
    void addChannel(const HostInterface* interface, std::vector<Send> sends);
    void sendAll();
    void waitUntil(Clock::time_point deadline);
    void drain(Channel& channel);
    void take(Channel& channel, std::size_t length, const UdpOrigin& origin);
    bool sourceFits(const Channel& channel, const UdpOrigin& origin, DiscoveryAnswer& answer) const;
    std::uint32_t hostInterfaceFor(const Channel& channel, const UdpOrigin& origin,
                                   std::uint32_t cameraIp) const;

    const DiscoveryQuestion& question_;
    std::uint16_t requestId_ = 0;
    Datagram command_;
    std::vector<Channel> channels_;
    // Host interface, MAC and address: the same camera on another interface is another entry.
    std::map<std::tuple<std::uint32_t, std::uint64_t, std::uint32_t>, FoundCamera> found_;
    DiscoveryResult result_;
    bool stop_ = false;
    std::array<std::uint8_t, 2048> buffer_{};
};

DiscoveryResult Discovery::run() {
    const auto start = Clock::now();
    openChannels();
    if (channels_.empty())
        return std::move(result_);
    for (const auto offset : question_.sends) {
        waitUntil(start + offset);
        if (stop_)
            break;
        sendAll();
    }
    waitUntil(start + question_.total);
    for (auto& entry : found_)
        result_.cameras.push_back(std::move(entry.second));
    std::stable_sort(result_.cameras.begin(), result_.cameras.end(),
                     [](const FoundCamera& a, const FoundCamera& b) {
                         return std::tie(a.interfaceIndex, a.answer.mac, a.answer.currentIp) <
                                std::tie(b.interfaceIndex, b.answer.mac, b.answer.currentIp);
                     });
    return std::move(result_);
}

void Discovery::openChannels() {
    channels_.reserve(question_.interfaces.size() + 1);
    for (const HostInterface& interface : question_.interfaces) {
        if (interface.discoverable())
            addChannel(&interface, sendsFor(interface));
    }
    std::vector<Send> sends;
    for (const std::uint32_t address : question_.addresses)
        sends.push_back({address, 0});
    // The kernel takes these through loopback although they belong to other interfaces, so they can't be
    // asked from a confined socket.
    for (const std::uint32_t address : question_.ownAddresses)
        sends.push_back({address, 0});
    if (!sends.empty())
        addChannel(nullptr, std::move(sends));
}

void Discovery::addChannel(const HostInterface* interface, std::vector<Send> sends) {
    Channel channel;
    UdpOptions options;
    options.broadcast = true;
    options.manyAnswers = true;
    if (interface != nullptr && question_.confine)
        options.interfaceName = interface->name;
    const int error = channel.socket.open(options);
    if (error == ENODEV)
        return; // unplugged since it was listed
    if (error != 0) {
        // Not silently: cameras that were not asked must not count as gone.
        result_.status = OV_STATUS_RESOURCE;
        return;
    }
    channel.interface = interface;
    channel.sends = std::move(sends);
    channels_.push_back(std::move(channel));
}

void Discovery::sendAll() {
    for (Channel& channel : channels_) {
        const unsigned index = channel.interface != nullptr ? channel.interface->index : 0;
        for (const Send& send : channel.sends) {
            if (channel.socket.send(command_.data(), command_.size(), send.destination, question_.port,
                                    send.source, index) != 0)
                ++result_.failedSends;
        }
    }
}

void Discovery::waitUntil(Clock::time_point deadline) {
    std::vector<pollfd> watched(channels_.size());
    while (!stop_) {
        const auto left =
            std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return;
        for (std::size_t i = 0; i < channels_.size(); ++i) {
            // A flooded interface is not listened to any more: -1 is skipped by poll.
            const bool open = channels_[i].taken < kMaxAnswersPerInterface;
            watched[i] = {open ? channels_[i].socket.descriptor() : -1, POLLIN, 0};
        }
        const timespec patience{static_cast<time_t>(left / 1000000000), static_cast<long>(left % 1000000000)};
        if (::ppoll(watched.data(), watched.size(), &patience, nullptr) <= 0)
            continue;
        for (std::size_t i = 0; i < channels_.size() && !stop_; ++i) {
            if (watched[i].revents != 0)
                drain(channels_[i]);
        }
    }
}

void Discovery::drain(Channel& channel) {
    // In slices, so that one interface full of rubbish can't starve the others.
    for (int slice = 0; slice < 64 && !stop_; ++slice) {
        UdpOrigin origin;
        const long length = channel.socket.receive(buffer_.data(), buffer_.size(), origin);
        if (length < 0)
            return;
        if (++channel.taken >= kMaxAnswersPerInterface) {
            ++result_.dropped.flood;
            return;
        }
        take(channel, static_cast<std::size_t>(length), origin);
    }
}

void Discovery::take(Channel& channel, std::size_t length, const UdpOrigin& origin) {
    Acknowledge ack;
    const Expectation expected{gvcp::Command::discovery, requestId_};
    const Verdict verdict = length > buffer_.size() ? Verdict::wrongLength
                                                    : parseAcknowledge(buffer_.data(), length, expected, ack);
    if (verdict != Verdict::accepted) {
        result_.dropped.count(verdict);
        return;
    }
    if (ack.pending || ack.status != 0) {
        ++result_.dropped.errorStatus;
        return;
    }
    FoundCamera camera;
    camera.answer = parseDiscoveryPayload(ack.payload);
    if (!sourceFits(channel, origin, camera.answer)) {
        ++result_.dropped.wrongSource;
        return;
    }
    camera.byRoute = channel.interface == nullptr;
    camera.hostInterface = hostInterfaceFor(channel, origin, camera.answer.currentIp);
    const HostInterface* interface = channel.interface;
    if (interface == nullptr)
        interface = findInterface(question_.interfaces, camera.hostInterface);
    camera.interfaceIndex = interface != nullptr ? interface->index : origin.interfaceIndex;
    if (interface != nullptr)
        camera.interfaceName = interface->name;
    stop_ = question_.stopWhen && question_.stopWhen(camera);
    const auto key = std::make_tuple(camera.hostInterface, camera.answer.mac, camera.answer.currentIp);
    const auto before = found_.find(key);
    // What the interface's own network says of it is worth more than what a route says.
    if (before == found_.end() || !camera.byRoute)
        found_.insert_or_assign(key, std::move(camera));
}

bool Discovery::sourceFits(const Channel& channel, const UdpOrigin& origin, DiscoveryAnswer& answer) const {
    if (origin.port != question_.port)
        return false;
    const auto asked = [&](const std::vector<std::uint32_t>& addresses) {
        return std::find(addresses.begin(), addresses.end(), origin.ip) != addresses.end();
    };
    if (channel.interface == nullptr) {
        // Behind an address translation the camera doesn't know under which address we reach it.
        if (asked(question_.addresses))
            answer.currentIp = origin.ip;
        return asked(question_.addresses) || (asked(question_.ownAddresses) && answer.currentIp == origin.ip);
    }
    // An unconfined socket hears every interface; each answer belongs to the one on which it arrived.
    if (origin.interfaceIndex != channel.interface->index)
        return false;
    return answer.currentIp == 0 || origin.ip == 0 || answer.currentIp == origin.ip;
}

std::uint32_t Discovery::hostInterfaceFor(const Channel& channel, const UdpOrigin& origin,
                                          std::uint32_t cameraIp) const {
    if (channel.interface == nullptr)
        return origin.localIp;
    if (const HostAddress* near = channel.interface->addressFor(cameraIp))
        return near->ip;
    if (channel.interface->hasAddress(origin.localIp))
        return origin.localIp;
    return channel.interface->addresses.front().ip;
}

} // namespace

DiscoveryResult discoverGige(const DiscoveryQuestion& question) {
    return Discovery(question).run();
}

int wholeHostQuestion(DiscoveryQuestion& question) {
    const DiscoverySettings settings = discoverySettings();
    std::vector<HostInterface> interfaces;
    const int error = listHostInterfaces(interfaces);
    if (error != 0)
        return error;
    for (HostInterface& interface : interfaces) {
        if (!interface.discoverable() || !settings.allows(interface.name))
            continue;
        if (!interface.loopback) {
            for (const HostAddress& address : interface.addresses)
                question.ownAddresses.push_back(address.ip);
        }
        question.interfaces.push_back(std::move(interface));
    }
    question.addresses = settings.addresses;
    return 0;
}

void copyText(const std::string& text, char* field, std::size_t size) {
    std::memset(field, 0, size);
    text.copy(field, size - 1);
}

void fillRecord(const FoundCamera& camera, _OV_CC_DEVICE_INFO_& record) {
    const DiscoveryAnswer& answer = camera.answer;
    std::memset(&record, 0, sizeof record);
    record.majorVersion = answer.versionMajor;
    record.minorVersion = answer.versionMinor;
    record.macHigh = static_cast<std::uint32_t>(answer.mac >> 32);
    record.macLow = static_cast<std::uint32_t>(answer.mac);
    record.nTLayerType = OV_TLAYER_GIGE;
    _OV_CC_GIGE_DEVICE_INFO_& gige = record.transport.gige;
    gige.ipConfigOptions = answer.ipConfigOptions;
    gige.ipConfigCurrent = answer.ipConfigCurrent;
    gige.currentIp = answer.currentIp;
    gige.currentSubnetMask = answer.subnetMask;
    gige.defaultGateway = answer.defaultGateway;
    copyText(answer.manufacturerName, gige.manufacturerName, sizeof gige.manufacturerName);
    copyText(answer.modelName, gige.modelName, sizeof gige.modelName);
    copyText(answer.deviceVersion, gige.deviceVersion, sizeof gige.deviceVersion);
    copyText(answer.manufacturerInfo, gige.manufacturerInfo, sizeof gige.manufacturerInfo);
    copyText(answer.serialNumber, gige.serialNumber, sizeof gige.serialNumber);
    copyText(answer.userDefinedName, gige.userDefinedName, sizeof gige.userDefinedName);
    gige.hostInterface = camera.hostInterface;
}

} // namespace kolt::cc
