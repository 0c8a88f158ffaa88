#include "DeviceRecords.h"

#include "Common/QFunction.h"

#include <algorithm>
#include <cstring>

namespace devices {

namespace {

template<size_t N>
void Put(const std::string& text, char (&field)[N]) {
    std::memcpy(field, text.data(), std::min(text.size(), N));
}

} // namespace

_OV_CC_DEVICE_INFO_ GigeRecord(const Gige& camera) {
    _OV_CC_DEVICE_INFO_ info{};
    info.nTLayerType = OV_TLAYER_GIGE;
    info.macHigh = 0x0002;
    info.macLow = 0xC0FF0000 + camera.mac;
    auto& gige = info.transport.gige;
    gige.currentIp = camera.ip;
    gige.currentSubnetMask = 0xFFFFFF00;
    gige.defaultGateway = (camera.ip & 0xFFFFFF00) + 254;
    gige.hostInterface = camera.host;
    Put(camera.maker, gige.manufacturerName);
    Put(camera.model, gige.modelName);
    Put("1.2.3", gige.deviceVersion);
    Put(camera.serial, gige.serialNumber);
    Put(camera.user, gige.userDefinedName);
    return info;
}

_OV_CC_DEVICE_INFO_ UsbRecord(const Usb& camera) {
    _OV_CC_DEVICE_INFO_ info{};
    info.nTLayerType = OV_TLAYER_USB3;
    auto& usb = info.transport.usb3;
    usb.controlInEndpoint = camera.endpoint;
    Put("GUID-" + camera.serial, usb.deviceGuid);
    Put("Vendor", usb.vendorName);
    Put(camera.model, usb.modelName);
    Put("4.5.6", usb.deviceVersion);
    Put(camera.maker, usb.manufacturerName);
    Put(camera.serial, usb.serialNumber);
    Put(camera.user, usb.userDefinedName);
    usb.usbVersion = camera.usbVersion;
    return info;
}

_HOST_INTERFACE_ Interface(const std::string& name, const std::string& mac,
                           const std::vector<uint32_t>& thirdOctets) {
    _HOST_INTERFACE_ host{QString::fromStdString(name), QString::fromStdString(mac), {}};
    for (const uint32_t octet : thirdOctets)
        host.addresses.append({Ip(octet * 256 + 1), 0xFFFFFF00, QFunction::GetIP(Ip(octet * 256 + 255))});
    return host;
}

} // namespace devices
