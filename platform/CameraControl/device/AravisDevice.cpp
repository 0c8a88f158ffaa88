#include "device/AravisDevice.h"

#include <cstring>
#include <string>
#include <utility>

#include "device/AravisBase.h"
#include "device/GigeDevice.h"
#include "device/Statuses.h"
#include "device/Threads.h"
#include "find/DeviceFinder.h"

namespace kolt::cc {

namespace {

// A record's text field, which need not end in a NUL.
template<std::size_t N>
std::string textOf(const char (&field)[N]) {
    return {field, strnlen(field, N)};
}

class OtherDevice final : public AravisBase {
public:
    OtherDevice(GObjectPtr<ArvDevice> arv, const OpenRequest& request)
        : AravisBase(std::move(arv), request.log, request.controlLost) {
        copyXmlOfAravis();
    }
};

std::unique_ptr<TransportDevice> wrap(GObjectPtr<ArvDevice> arv, const GErrorHolder& error,
                                      const OpenRequest& request, std::uint32_t& status) {
    if (arv) {
        status = OV_STATUS_OK;
        return std::make_unique<OtherDevice>(std::move(arv), request);
    }
    request.log(LogLevel::error, "opening: %s", error.text());
    status = error ? statusFromError(error.get()) : OV_STATUS_NETWORK;
    if (g_error_matches(error.get(), ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_PROTOCOL_ERROR) != 0) {
        status = OV_STATUS_ACCESS_DENIED; // its interface could not be claimed: somebody else has
    }
    return nullptr;
}

std::unique_ptr<TransportDevice> openUsb(const OpenRequest& request, std::uint32_t& status) {
    const _OV_CC_USB3_DEVICE_INFO_& known = request.device.transport.usb3;
    if (textOf(known.deviceGuid).empty() && textOf(known.serialNumber).empty()) {
        status = OV_STATUS_INVALID_PARAMETER;
        return nullptr;
    }
    // Aravis trips over a device that is not there, so the bus is looked at before.
    _OV_CC_DEVICE_INFO_ live{};
    status = queryDeviceInfo(request.device, live);
    if (status != OV_STATUS_OK) {
        return nullptr;
    }
    const _OV_CC_USB3_DEVICE_INFO_& record = live.transport.usb3;
    const std::string guid = textOf(record.deviceGuid);
    const std::string serial = textOf(record.serialNumber);
    const std::string vendor = textOf(record.vendorName);
    const std::string model = textOf(record.modelName);
    const auto orNull = [](const std::string& text) { return text.empty() ? nullptr : text.c_str(); };
    GErrorHolder error;
    GObjectPtr<ArvDevice> arv(
        !guid.empty() ? arv_uv_device_new_from_guid(guid.c_str(), error.out())
                      : arv_uv_device_new(orNull(vendor), orNull(model), serial.c_str(), error.out()));
    return wrap(std::move(arv), error, request, status);
}

} // namespace

std::unique_ptr<TransportDevice> openDevice(const OpenRequest& request, std::uint32_t& status) {
    quietTransportLibraries();
    if (!descriptorsToSpare()) {
        status = OV_STATUS_RESOURCE;
        return nullptr;
    }
    switch (request.device.nTLayerType) {
    case OV_TLAYER_GIGE:
        return GigeDevice::open(request, status);
    case OV_TLAYER_USB3:
        return openUsb(request, status);
    default:
        status = OV_STATUS_NOT_SUPPORTED;
        return nullptr;
    }
}

std::unique_ptr<TransportDevice> openFakeDevice(const OpenRequest& request, std::uint32_t& status) {
    quietTransportLibraries();
    GErrorHolder error;
    GObjectPtr<ArvDevice> arv(arv_fake_device_new("fake", error.out()));
    return wrap(std::move(arv), error, request, status);
}

} // namespace kolt::cc
