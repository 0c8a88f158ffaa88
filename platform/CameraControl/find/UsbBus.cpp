#include "find/UsbBus.h"

#include <algorithm>
#include <array>
#include <libusb.h>
#include <memory>

#include "Camera/Boundary/OvStatus.h"

namespace kolt::cc {

namespace {

using Clock = std::chrono::steady_clock;

// A device that hangs must not take the others' time.
constexpr long kStringTimeoutMs = 50;

struct ContextCloser {
    void operator()(libusb_context* context) const { libusb_exit(context); }
};
using Context = std::unique_ptr<libusb_context, ContextCloser>;

struct HandleCloser {
    void operator()(libusb_device_handle* handle) const { libusb_close(handle); }
};
using Handle = std::unique_ptr<libusb_device_handle, HandleCloser>;

// The devices of the moment, each with a reference held.
class DeviceList {
public:
    explicit DeviceList(libusb_context* context) : count_(libusb_get_device_list(context, &list_)) {}
    ~DeviceList() {
        if (count_ >= 0)
            libusb_free_device_list(list_, 1);
    }
    DeviceList(const DeviceList&) = delete;
    DeviceList& operator=(const DeviceList&) = delete;

    bool valid() const { return count_ >= 0; }
    libusb_device** begin() const { return list_; }
    libusb_device** end() const { return list_ + count_; }

private:
    libusb_device** list_ = nullptr;
    ssize_t count_;
};

Context makeContext() {
    libusb_context* context = nullptr;
    return Context(libusb_init(&context) == LIBUSB_SUCCESS ? context : nullptr);
}

UsbInterface describe(const libusb_interface_descriptor& descriptor) {
    UsbInterface interface;
    interface.number = descriptor.bInterfaceNumber;
    interface.interfaceClass = descriptor.bInterfaceClass;
    interface.subclass = descriptor.bInterfaceSubClass;
    interface.protocol = descriptor.bInterfaceProtocol;
    for (int i = 0; i < descriptor.bNumEndpoints; ++i)
        interface.endpoints.push_back(
            {descriptor.endpoint[i].bEndpointAddress, descriptor.endpoint[i].bmAttributes});
    if (descriptor.extra_length > 0)
        interface.extra.assign(descriptor.extra, descriptor.extra + descriptor.extra_length);
    return interface;
}

// From descriptors that the kernel has read already: needs no permission and no transfer.
bool describe(libusb_device* device, UsbDevice& description) {
    libusb_device_descriptor descriptor{};
    libusb_config_descriptor* config = nullptr;
    if (libusb_get_device_descriptor(device, &descriptor) != LIBUSB_SUCCESS ||
        libusb_get_active_config_descriptor(device, &config) != LIBUSB_SUCCESS)
        return false;
    description.bus = libusb_get_bus_number(device);
    description.address = libusb_get_device_address(device);
    description.vendorId = descriptor.idVendor;
    description.productId = descriptor.idProduct;
    description.usbVersion = descriptor.bcdUSB;
    description.manufacturerIndex = descriptor.iManufacturer;
    description.serialIndex = descriptor.iSerialNumber;
    for (int i = 0; i < config->bNumInterfaces; ++i) {
        for (int alternative = 0; alternative < config->interface[i].num_altsetting; ++alternative)
            description.interfaces.push_back(describe(config->interface[i].altsetting[alternative]));
    }
    libusb_free_config_descriptor(config);
    return true;
}

std::optional<std::string> readString(libusb_device_handle* handle, std::uint8_t index,
                                      Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (handle == nullptr || left <= 0)
        return std::nullopt;
    std::array<std::uint8_t, 255> buffer{};
    const int length = libusb_control_transfer(handle, LIBUSB_ENDPOINT_IN, LIBUSB_REQUEST_GET_DESCRIPTOR,
                                               static_cast<std::uint16_t>((LIBUSB_DT_STRING << 8) | index),
                                               0x0409, // US English, as every camera has it
                                               buffer.data(), static_cast<std::uint16_t>(buffer.size()),
                                               static_cast<unsigned>(std::min<long>(left, kStringTimeoutMs)));
    if (length < 0)
        return std::nullopt;
    return usbStringText(buffer.data(), static_cast<std::size_t>(length));
}

class LibusbBus : public UsbBus {
public:
    std::uint32_t visit(Clock::time_point deadline, const UsbVisitor& visitor) override {
        // A context for each call: nothing outlives it, and calls don't meet.
        const Context context = makeContext();
        if (!context)
            return OV_STATUS_RESOURCE;
        const DeviceList devices(context.get());
        if (!devices.valid())
            return OV_STATUS_RESOURCE;
        for (libusb_device* device : devices) {
            UsbDevice description;
            if (!describe(device, description) || usb3VisionControl(description) == nullptr)
                continue;
            libusb_device_handle* opened = nullptr;
            const Handle handle(libusb_open(device, &opened) == LIBUSB_SUCCESS ? opened : nullptr);
            visitor(description,
                    [&](std::uint8_t index) { return readString(handle.get(), index, deadline); });
        }
        return OV_STATUS_OK;
    }

    bool claimable(const UsbDevice& wanted) override {
        const UsbInterface* control = usb3VisionControl(wanted);
        const Context context = makeContext();
        if (!context || control == nullptr)
            return false;
        const DeviceList devices(context.get());
        if (!devices.valid())
            return false;
        for (libusb_device* device : devices) {
            if (libusb_get_bus_number(device) != wanted.bus ||
                libusb_get_device_address(device) != wanted.address)
                continue;
            libusb_device_handle* opened = nullptr;
            const Handle handle(libusb_open(device, &opened) == LIBUSB_SUCCESS ? opened : nullptr);
            if (!handle || libusb_claim_interface(handle.get(), control->number) != LIBUSB_SUCCESS)
                return false;
            libusb_release_interface(handle.get(), control->number);
            return true;
        }
        return false;
    }
};

} // namespace

UsbBus& systemUsbBus() {
    static LibusbBus bus;
    return bus;
}

} // namespace kolt::cc
