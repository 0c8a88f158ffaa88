// The bus on a libusb of the test's own: these functions stand in front of the library's, so that what
// happens at a host with USB cameras is seen on one without.
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <libusb.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Camera/Boundary/OvStatus.h"
#include "find/UsbEnumeration.h"

struct libusb_device {
    libusb_device_descriptor descriptor{};
    std::uint8_t bus = 1;
    std::uint8_t address = 1;
    bool vision = true;
    bool configured = true;
    int openError = LIBUSB_SUCCESS;
    int claimError = LIBUSB_SUCCESS;
    std::map<int, std::string> strings;
    int hangs = 0; // transfers that end with a time-out
};
struct libusb_device_handle {
    libusb_device* device;
};
struct libusb_context {};

namespace {

// What the double has lent out, and how it is to behave.
struct World {
    std::vector<libusb_device> devices;
    int initError = LIBUSB_SUCCESS;
    int listError = LIBUSB_SUCCESS;
    int contexts = 0;
    int lists = 0;
    int handles = 0;
    int configs = 0;
    int claims = 0;
    int transfers = 0;
    std::vector<unsigned> timeouts;
};
World world;

const std::uint8_t kInformation[] = {20, 0x24, 1,  1,  0,  1,  0,  2,  0,  1,
                                     0,  11,   12, 13, 14, 15, 16, 17, 18, 0x0F};

libusb_device camera(std::uint8_t address) {
    libusb_device device;
    device.bus = 2;
    device.address = address;
    device.descriptor.idVendor = 0x1234;
    device.descriptor.idProduct = 0x5678;
    device.descriptor.bcdUSB = 0x0320;
    device.descriptor.iManufacturer = 1;
    device.descriptor.iSerialNumber = 2;
    device.strings = {{1, "Maker"}, {2, "P"},  {11, "GUID"}, {12, "Vendor"}, {13, "Model"},
                      {14, "Fam"},  {15, "3"}, {16, "x"},    {17, "S-1"},    {18, "name"}};
    return device;
}

libusb_interface_descriptor interfaceOf(std::uint8_t number, bool vision, std::uint8_t protocol,
                                        std::initializer_list<std::uint8_t> endpoints) {
    libusb_interface_descriptor result{};
    result.bInterfaceNumber = number;
    result.bInterfaceClass = vision ? 0xEF : 0x08;
    result.bInterfaceSubClass = 5;
    result.bInterfaceProtocol = protocol;
    result.bNumEndpoints = static_cast<std::uint8_t>(endpoints.size());
    auto* list = new libusb_endpoint_descriptor[endpoints.size()]{};
    std::size_t i = 0;
    for (const std::uint8_t address : endpoints) {
        list[i].bEndpointAddress = address;
        list[i++].bmAttributes = 2;
    }
    result.endpoint = list;
    if (vision && protocol == 0) {
        result.extra = kInformation;
        result.extra_length = sizeof kInformation;
    }
    return result;
}

} // namespace

extern "C" {

int libusb_init(libusb_context** context) {
    if (world.initError != LIBUSB_SUCCESS)
        return world.initError;
    ++world.contexts;
    *context = new libusb_context;
    return LIBUSB_SUCCESS;
}
void libusb_exit(libusb_context* context) {
    --world.contexts;
    delete context;
}
ssize_t libusb_get_device_list(libusb_context*, libusb_device*** list) {
    if (world.listError != LIBUSB_SUCCESS)
        return world.listError;
    ++world.lists;
    *list = new libusb_device* [world.devices.size() + 1] {};
    for (std::size_t i = 0; i < world.devices.size(); ++i)
        (*list)[i] = &world.devices[i];
    return static_cast<ssize_t>(world.devices.size());
}
void libusb_free_device_list(libusb_device** list, int unref) {
    EXPECT_EQ(unref, 1);
    --world.lists;
    delete[] list;
}
int libusb_get_device_descriptor(libusb_device* device, libusb_device_descriptor* descriptor) {
    *descriptor = device->descriptor;
    return LIBUSB_SUCCESS;
}
int libusb_get_active_config_descriptor(libusb_device* device, libusb_config_descriptor** config) {
    if (!device->configured)
        return LIBUSB_ERROR_NOT_FOUND;
    ++world.configs;
    *config = new libusb_config_descriptor{};
    (*config)->bNumInterfaces = 3;
    auto* interfaces = new libusb_interface[3]{};
    const std::initializer_list<std::uint8_t> endpoints[] = {{0x01, 0x81}, {0x82}, {0x83}};
    for (std::uint8_t i = 0; i < 3; ++i) {
        interfaces[i].num_altsetting = 1;
        interfaces[i].altsetting =
            new libusb_interface_descriptor(interfaceOf(i, device->vision, i, endpoints[i]));
    }
    (*config)->interface = interfaces;
    return LIBUSB_SUCCESS;
}
void libusb_free_config_descriptor(libusb_config_descriptor* config) {
    --world.configs;
    for (int i = 0; i < 3; ++i) {
        delete[] config->interface[i].altsetting->endpoint;
        delete config->interface[i].altsetting;
    }
    delete[] config->interface;
    delete config;
}
std::uint8_t libusb_get_bus_number(libusb_device* device) {
    return device->bus;
}
std::uint8_t libusb_get_device_address(libusb_device* device) {
    return device->address;
}
int libusb_open(libusb_device* device, libusb_device_handle** handle) {
    if (device->openError != LIBUSB_SUCCESS)
        return device->openError;
    ++world.handles;
    *handle = new libusb_device_handle{device};
    return LIBUSB_SUCCESS;
}
void libusb_close(libusb_device_handle* handle) {
    --world.handles;
    delete handle;
}
int libusb_control_transfer(libusb_device_handle* handle, std::uint8_t type, std::uint8_t request,
                            std::uint16_t value, std::uint16_t language, unsigned char* data,
                            std::uint16_t length, unsigned timeout) {
    ++world.transfers;
    world.timeouts.push_back(timeout);
    EXPECT_EQ(type, 0x80);
    EXPECT_EQ(request, 6);
    EXPECT_EQ(value >> 8, 3);
    EXPECT_EQ(language, 0x0409);
    if (handle->device->hangs > 0) {
        --handle->device->hangs;
        return LIBUSB_ERROR_TIMEOUT;
    }
    const auto found = handle->device->strings.find(value & 0xFF);
    if (found == handle->device->strings.end())
        return LIBUSB_ERROR_PIPE;
    const std::string& text = found->second;
    const std::size_t size = 2 + 2 * text.size();
    if (size > length)
        return LIBUSB_ERROR_OVERFLOW;
    data[0] = static_cast<unsigned char>(size);
    data[1] = 3;
    for (std::size_t i = 0; i < text.size(); ++i) {
        data[2 + 2 * i] = static_cast<unsigned char>(text[i]);
        data[3 + 2 * i] = 0;
    }
    return static_cast<int>(size);
}
int libusb_claim_interface(libusb_device_handle* handle, int number) {
    EXPECT_EQ(number, 0);
    if (handle->device->claimError != LIBUSB_SUCCESS)
        return handle->device->claimError;
    ++world.claims;
    return LIBUSB_SUCCESS;
}
int libusb_release_interface(libusb_device_handle*, int) {
    --world.claims;
    return LIBUSB_SUCCESS;
}

} // extern "C"

namespace kolt::cc {
namespace {

class SystemUsb : public testing::Test {
protected:
    void SetUp() override { world = World(); }
    void TearDown() override {
        // All that was lent is back.
        EXPECT_EQ(world.contexts, 0);
        EXPECT_EQ(world.lists, 0);
        EXPECT_EQ(world.handles, 0);
        EXPECT_EQ(world.configs, 0);
        EXPECT_EQ(world.claims, 0);
    }

    std::uint32_t list(std::chrono::milliseconds budget = std::chrono::seconds(10)) {
        found_.clear();
        unreadable_ = 0;
        return enumeration_.list(budget, found_, unreadable_);
    }

    UsbEnumeration enumeration_{systemUsbBus()};
    std::vector<UsbFound> found_;
    std::uint64_t unreadable_ = 0;
};

TEST_F(SystemUsb, CamerasAreListedAndOtherDevicesAreNot) {
    world.devices = {camera(4), camera(5), camera(6), camera(7)};
    world.devices[1].vision = false;
    world.devices[2].configured = false;
    ASSERT_EQ(list(), OV_STATUS_OK);
    ASSERT_EQ(found_.size(), 2U);
    const auto& usb = found_[0].record.transport.usb3;
    EXPECT_EQ(usb.deviceNumber, 0x0204U);
    EXPECT_EQ(usb.vendorId, 0x1234);
    EXPECT_EQ(usb.productId, 0x5678);
    EXPECT_EQ(usb.usbVersion, 0x0320U);
    EXPECT_EQ(usb.controlInEndpoint, 0x81);
    EXPECT_EQ(usb.controlOutEndpoint, 0x01);
    EXPECT_EQ(usb.eventEndpoint, 0x82);
    EXPECT_EQ(usb.streamEndpoint, 0x83);
    EXPECT_STREQ(usb.serialNumber, "S-1");
    EXPECT_STREQ(usb.manufacturerName, "Maker");
    EXPECT_STREQ(usb.userDefinedName, "name");
    EXPECT_EQ(found_[1].device.address, 7);
}

TEST_F(SystemUsb, ADeviceWithoutPermissionIsCountedAsUnreadable) {
    world.devices = {camera(4)};
    world.devices[0].openError = LIBUSB_ERROR_ACCESS;
    ASSERT_EQ(list(), OV_STATUS_OK);
    EXPECT_TRUE(found_.empty());
    EXPECT_EQ(unreadable_, 1U);
    EXPECT_EQ(world.transfers, 0);
}

TEST_F(SystemUsb, ADeviceThatHangsIsNotWaitedForLong) {
    world.devices = {camera(4), camera(5)};
    world.devices[0].hangs = 1000;
    ASSERT_EQ(list(), OV_STATUS_OK);
    ASSERT_EQ(found_.size(), 1U);
    EXPECT_EQ(found_[0].device.address, 5);
    EXPECT_EQ(unreadable_, 1U);
    for (const unsigned timeout : world.timeouts)
        EXPECT_TRUE(timeout >= 1 && timeout <= 50) << timeout;
}

TEST_F(SystemUsb, WhenTheTimeIsOverNothingMoreIsAsked) {
    world.devices = {camera(4)};
    ASSERT_EQ(list(std::chrono::milliseconds(0)), OV_STATUS_OK);
    EXPECT_EQ(world.transfers, 0);
    EXPECT_EQ(unreadable_, 1U);
}

TEST_F(SystemUsb, ASystemThatCanNotBeAskedIsAnError) {
    world.initError = LIBUSB_ERROR_OTHER;
    EXPECT_EQ(list(), OV_STATUS_RESOURCE);
    world.initError = LIBUSB_SUCCESS;
    world.listError = LIBUSB_ERROR_NO_MEM;
    EXPECT_EQ(list(), OV_STATUS_RESOURCE);
}

TEST_F(SystemUsb, ClaimingTellsWhetherSomebodyHasIt) {
    world.devices = {camera(3), camera(4)};
    ASSERT_EQ(list(), OV_STATUS_OK);
    ASSERT_EQ(found_.size(), 2U);
    UsbDevice device = found_[1].device;
    EXPECT_TRUE(systemUsbBus().claimable(device));
    world.devices[1].claimError = LIBUSB_ERROR_BUSY;
    EXPECT_FALSE(systemUsbBus().claimable(device));
    world.devices[1].openError = LIBUSB_ERROR_NO_DEVICE;
    EXPECT_FALSE(systemUsbBus().claimable(device));
    EXPECT_TRUE(systemUsbBus().claimable(found_[0].device));
    world.listError = LIBUSB_ERROR_NO_MEM;
    EXPECT_FALSE(systemUsbBus().claimable(found_[0].device));
    world.listError = LIBUSB_SUCCESS;
    device.address = 99;
    EXPECT_FALSE(systemUsbBus().claimable(device));
    device.interfaces.clear();
    EXPECT_FALSE(systemUsbBus().claimable(device));
}

} // namespace
} // namespace kolt::cc
