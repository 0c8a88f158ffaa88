#include "find/Finder.h"

#include <array>
#include <cstring>

#include "find/DiscoverySettings.h"
#include "find/GvcpClient.h"
#include "find/Ipv4.h"
#include "find/RecordStore.h"

namespace kolt::cc {

namespace {

using std::chrono::milliseconds;

// With the discovery's 300 ms this stays below the half second that one call may take.
constexpr milliseconds kUsbBudget{120};

std::uint64_t macOf(const _OV_CC_DEVICE_INFO_& device) {
    return (static_cast<std::uint64_t>(device.macHigh & 0xFFFFU) << 32) | device.macLow;
}

bool sameText(const char (&a)[64], const char (&b)[64]) {
    return a[0] != '\0' && std::strncmp(a, b, sizeof a) == 0;
}

// How to speak to the camera of a record: through its host interface where it lies in a subnet of that,
// otherwise as the routing table says. An address of this host is not confined: its packets travel through
// loopback.
GvcpPeer peerOf(const _OV_CC_GIGE_DEVICE_INFO_& gige) {
    GvcpPeer peer;
    peer.ip = gige.currentIp;
    std::vector<HostInterface> interfaces;
    if (gige.hostInterface == 0 || listHostInterfaces(interfaces) != 0)
        return peer;
    const HostInterface* interface = findInterface(interfaces, gige.hostInterface);
    if (interface == nullptr || findInterface(interfaces, gige.currentIp) != nullptr)
        return peer;
    if (const HostAddress* near = interface->addressFor(gige.currentIp)) {
        peer.localIp = near->ip;
        peer.interfaceName = interface->name;
    }
    return peer;
}

// Some devices keep silent when DISCOVERY comes by unicast; the same bytes stand in their first registers.
bool readBootstrap(std::uint32_t ip, DiscoveryAnswer& answer) {
    GvcpPeer peer;
    peer.ip = ip;
    GvcpClient client(peer, {milliseconds(200), 1, milliseconds(500)});
    std::array<std::uint8_t, gvcp::kDiscoveryPayload> bytes{};
    if (client.readMemory(gvcp::kVersion, bytes.data(), bytes.size()) != OV_STATUS_OK)
        return false;
    answer = parseDiscoveryPayload(bytes.data());
    answer.currentIp = ip;
    return true;
}

} // namespace

std::uint32_t Finder::enumerate(std::uint32_t transportMask, _OV_CC_DEVICE_INFO_LIST_* list) noexcept {
    if (list == nullptr || (transportMask & (OV_TLAYER_GIGE | OV_TLAYER_USB3)) == 0)
        return OV_STATUS_INVALID_PARAMETER;
    std::memset(list, 0, sizeof *list);
    return withoutRaising([&] {
        std::vector<_OV_CC_DEVICE_INFO_> gige;
        std::vector<_OV_CC_DEVICE_INFO_> usb;
        FinderStatistics seen;
        std::uint32_t status = OV_STATUS_OK;
        if ((transportMask & OV_TLAYER_USB3) != 0)
            status = addUsb(usb, seen);
        if (status == OV_STATUS_OK && (transportMask & OV_TLAYER_GIGE) != 0)
            status = addGige(gige, seen);
        if (status == OV_STATUS_OK) {
            gige.insert(gige.end(), usb.begin(), usb.end());
            seen.found = gige.size();
            seen.beyondLimit = gige.size() > OV_MAX_DEVICES ? gige.size() - OV_MAX_DEVICES : 0;
            publishRecords(gige, *list);
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        ++statistics_.calls;
        statistics_.found = seen.found;
        statistics_.beyondLimit = seen.beyondLimit;
        statistics_.usbUnreadable = seen.usbUnreadable;
        statistics_.failedSends += seen.failedSends;
        statistics_.dropped += seen.dropped;
        return status;
    });
}

std::uint32_t Finder::addGige(std::vector<_OV_CC_DEVICE_INFO_>& records, FinderStatistics& seen) {
    DiscoveryQuestion question;
    if (wholeHostQuestion(question) != 0)
        return OV_STATUS_RESOURCE;
    const DiscoveryResult result = discoverGige(question);
    seen.dropped = result.dropped;
    seen.failedSends = result.failedSends;
    for (const FoundCamera& camera : result.cameras)
        fillRecord(camera, records.emplace_back());
    return result.status;
}

std::uint32_t Finder::addUsb(std::vector<_OV_CC_DEVICE_INFO_>& records, FinderStatistics& seen) {
    std::vector<UsbFound> found;
    const std::uint32_t status = usb_.list(kUsbBudget, found, seen.usbUnreadable);
    for (const UsbFound& entry : found)
        records.push_back(entry.record);
    return status;
}

std::uint32_t Finder::query(const _OV_CC_DEVICE_INFO_& known, _OV_CC_DEVICE_INFO_& live) noexcept {
    return withoutRaising([&]() -> std::uint32_t {
        if (known.nTLayerType == OV_TLAYER_GIGE)
            return queryGige(known, live);
        if (known.nTLayerType != OV_TLAYER_USB3)
            return OV_STATUS_INVALID_PARAMETER;
        UsbFound found;
        const std::uint32_t status = findUsb(known, found);
        if (status == OV_STATUS_OK)
            live = found.record;
        return status;
    });
}

std::uint32_t Finder::queryGige(const _OV_CC_DEVICE_INFO_& known, _OV_CC_DEVICE_INFO_& live) {
    const _OV_CC_GIGE_DEVICE_INFO_& gige = known.transport.gige;
    const std::uint64_t mac = macOf(known);
    if (gige.currentIp == 0 && mac == 0)
        return OV_STATUS_INVALID_PARAMETER;
    std::vector<HostInterface> interfaces;
    if (listHostInterfaces(interfaces) != 0)
        return OV_STATUS_RESOURCE;
    const HostInterface* bound =
        gige.hostInterface == 0 ? nullptr : findInterface(interfaces, gige.hostInterface);

    DiscoveryQuestion question;
    question.sends = {milliseconds(0), milliseconds(120), milliseconds(280)};
    question.total = milliseconds(500);
    if (gige.currentIp != 0)
        question.addresses = {gige.currentIp};
    if (bound != nullptr && discoverySettings().allows(bound->name))
        question.interfaces = {*bound};
    const auto isAtAddress = [&](const FoundCamera& camera) {
        return gige.currentIp != 0 && camera.answer.currentIp == gige.currentIp;
    };
    const auto isWanted = [&](const FoundCamera& camera) {
        return mac != 0 ? camera.answer.mac == mac : isAtAddress(camera);
    };
    question.stopWhen = isWanted;
    const DiscoveryResult result = discoverGige(question);

    FoundCamera answer;
    const FoundCamera* best = nullptr;
    for (const FoundCamera& camera : result.cameras) {
        // Another camera at the address is what lives there now, as long as the one meant isn't seen.
        if (isWanted(camera) || (best == nullptr && isAtAddress(camera)))
            best = &camera;
    }
    if (best == nullptr && gige.currentIp != 0 && readBootstrap(gige.currentIp, answer.answer)) {
        answer.hostInterface = routeSource(gige.currentIp);
        best = &answer;
    }
    if (best == nullptr)
        return result.status != OV_STATUS_OK ? result.status : OV_STATUS_NETWORK;
    fillRecord(*best, live);
    if (bound != nullptr)
        live.transport.gige.hostInterface = gige.hostInterface;
    return OV_STATUS_OK;
}

std::uint32_t Finder::findUsb(const _OV_CC_DEVICE_INFO_& known, UsbFound& found) {
    const _OV_CC_USB3_DEVICE_INFO_& wanted = known.transport.usb3;
    std::vector<UsbFound> devices;
    std::uint64_t unreadable = 0;
    const std::uint32_t status = usb_.list(kUsbBudget, devices, unreadable);
    if (status != OV_STATUS_OK)
        return status;
    for (UsbFound& device : devices) {
        const _OV_CC_USB3_DEVICE_INFO_& usb = device.record.transport.usb3;
        if (sameText(wanted.serialNumber, usb.serialNumber) || sameText(wanted.deviceGuid, usb.deviceGuid)) {
            found = std::move(device);
            return OV_STATUS_OK;
        }
    }
    return OV_STATUS_PRECONDITION;
}

bool Finder::accessible(const _OV_CC_DEVICE_INFO_* device, std::uint32_t accessMode) noexcept {
    if (device == nullptr || accessMode != OV_ACCESS_EXCLUSIVE)
        return false;
    return withoutRaising([&]() -> std::uint32_t {
               if (device->nTLayerType == OV_TLAYER_USB3) {
                   UsbFound found;
                   const std::uint32_t status = findUsb(*device, found);
                   if (status != OV_STATUS_OK)
                       return status;
                   return usb_.bus().claimable(found.device) ? OV_STATUS_OK : OV_STATUS_ACCESS_DENIED;
               }
               if (device->nTLayerType != OV_TLAYER_GIGE || device->transport.gige.currentIp == 0)
                   return OV_STATUS_INVALID_PARAMETER;
               GvcpClient client(peerOf(device->transport.gige), {milliseconds(200), 3, milliseconds(1000)});
               std::uint32_t privilege = 0;
               const std::uint32_t status = client.readRegister(gvcp::kControlChannelPrivilege, privilege);
               if (status != OV_STATUS_OK)
                   return status;
               const bool held = (privilege & (gvcp::kExclusiveAccess | gvcp::kControlAccess)) != 0;
               return held ? OV_STATUS_ACCESS_DENIED : OV_STATUS_OK;
           }) == OV_STATUS_OK;
}

FinderStatistics Finder::statistics() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return statistics_;
}

} // namespace kolt::cc
