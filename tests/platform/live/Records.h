#ifndef LIVE_TEST_RECORDS_H
#define LIVE_TEST_RECORDS_H

#include "CameraRecord.h"

#include <cstring>
#include <string>

namespace live_test {

template<size_t size>
void Fill(char (&field)[size], const std::string& text) {
    std::memset(field, 0, size);
    std::memcpy(field, text.data(), std::min(size, text.size()));
}

inline uint32_t Ip(const std::string& text) {
    return live::IpFromText(text).value();
}

/// A camera at `ip`, seen from `host`, mask 255.255.255.0; the last byte of its MAC is `number`.
inline live::DeviceRecord Gige(const std::string& ip, const std::string& serial, const std::string& name = "",
                               const std::string& host = "10.0.0.1", uint32_t number = 1) {
    live::DeviceRecord record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.macHigh = 0x00000C1D;
    record.macLow = 0xAABB0000 + number;
    auto& gige = record.transport.gige;
    gige.currentIp = Ip(ip);
    gige.currentSubnetMask = Ip("255.255.255.0");
    gige.hostInterface = Ip(host);
    gige.ipConfigCurrent = 5;
    Fill(gige.modelName, "VC-1");
    Fill(gige.manufacturerName, "Zelkovant");
    Fill(gige.deviceVersion, "1.2");
    Fill(gige.manufacturerInfo, "a good camera");
    Fill(gige.serialNumber, serial);
    Fill(gige.userDefinedName, name);
    return record;
}

inline live::DeviceRecord Usb(const std::string& serial, const std::string& name = "") {
    live::DeviceRecord record{};
    record.nTLayerType = OV_TLAYER_USB3;
    auto& usb = record.transport.usb3;
    usb.controlInEndpoint = 0x81;
    usb.vendorId = 0x2BDF;
    usb.productId = 0x0001;
    usb.usbVersion = 0x0310;
    Fill(usb.modelName, "UC-2");
    Fill(usb.vendorName, "Vendor");
    Fill(usb.manufacturerName, "Maker");
    Fill(usb.familyName, "Family");
    Fill(usb.deviceVersion, "3.4");
    Fill(usb.deviceGuid, "2BDF00000001");
    Fill(usb.serialNumber, serial);
    Fill(usb.userDefinedName, name);
    return record;
}

} // namespace live_test

#endif
