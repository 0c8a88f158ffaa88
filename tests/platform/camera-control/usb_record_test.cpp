// USB3 Vision records, on doubles of the bus: no machine of ours has a USB host controller.
#include <cstring>
#include <gtest/gtest.h>
#include <map>

#include "Camera/Boundary/OvStatus.h"
#include "FakeUsbBus.h"
#include "find/UsbEnumeration.h"
#include "find/UsbRecord.h"

namespace kolt::cc {
namespace {

using test::FakeUsbBus;
using test::FakeUsbCamera;

std::uint32_t listOf(UsbEnumeration& enumeration, std::vector<UsbFound>& found, std::uint64_t& unreadable) {
    found.clear();
    unreadable = 0;
    return enumeration.list(std::chrono::milliseconds(100), found, unreadable);
}

TEST(UsbRecord, IsComplete) {
    const FakeUsbCamera camera;
    _OV_CC_DEVICE_INFO_ record;
    std::memset(&record, 0xEE, sizeof record);
    ASSERT_EQ(fillUsbRecord(camera.device, camera.reader(), record), UsbReading::whole);
    EXPECT_EQ(record.majorVersion, 1);
    EXPECT_EQ(record.minorVersion, 2);
    EXPECT_EQ(record.macHigh, 0U);
    EXPECT_EQ(record.macLow, 0U);
    EXPECT_EQ(record.nTLayerType, 4U);
    const auto& usb = record.transport.usb3;
    EXPECT_EQ(usb.controlInEndpoint, 0x81);
    EXPECT_EQ(usb.controlOutEndpoint, 0x01);
    EXPECT_EQ(usb.eventEndpoint, 0x82);
    EXPECT_EQ(usb.streamEndpoint, 0x83);
    EXPECT_EQ(usb.vendorId, 0x1234);
    EXPECT_EQ(usb.productId, 0x5678);
    EXPECT_EQ(usb.deviceNumber, 0x0203U);
    EXPECT_STREQ(usb.deviceGuid, "ABCD00000001");
    EXPECT_STREQ(usb.vendorName, "Vendor");
    EXPECT_STREQ(usb.modelName, "Model");
    EXPECT_STREQ(usb.familyName, "Family");
    EXPECT_STREQ(usb.deviceVersion, "1.0");
    EXPECT_STREQ(usb.manufacturerName, "Maker");
    EXPECT_STREQ(usb.serialNumber, "U-77");
    EXPECT_STREQ(usb.userDefinedName, "right");
    EXPECT_EQ(usb.usbVersion, 0x0310U);
    for (const std::uint8_t byte : usb.reserved)
        EXPECT_EQ(byte, 0);
}

TEST(UsbRecord, ABootLoaderHasNoControlEndpoint) {
    FakeUsbCamera camera;
    camera.device.interfaces[0].endpoints.clear();
    _OV_CC_DEVICE_INFO_ record;
    ASSERT_EQ(fillUsbRecord(camera.device, camera.reader(), record), UsbReading::whole);
    EXPECT_EQ(record.transport.usb3.controlInEndpoint, 0);
    EXPECT_EQ(record.transport.usb3.controlOutEndpoint, 0);
}

TEST(UsbRecord, OnlyBulkEndpointsCount) {
    FakeUsbCamera camera;
    camera.device.interfaces[0].endpoints.insert(camera.device.interfaces[0].endpoints.begin(), {0x85, 3});
    _OV_CC_DEVICE_INFO_ record;
    ASSERT_EQ(fillUsbRecord(camera.device, camera.reader(), record), UsbReading::whole);
    EXPECT_EQ(record.transport.usb3.controlInEndpoint, 0x81);
}

TEST(UsbRecord, OtherDevicesAreNone) {
    _OV_CC_DEVICE_INFO_ record;
    FakeUsbCamera disk;
    for (UsbInterface& interface : disk.device.interfaces)
        interface.interfaceClass = 8;
    EXPECT_EQ(usb3VisionControl(disk.device), nullptr);
    EXPECT_EQ(fillUsbRecord(disk.device, disk.reader(), record), UsbReading::none);
    FakeUsbCamera streamOnly;
    streamOnly.device.interfaces.erase(streamOnly.device.interfaces.begin());
    EXPECT_EQ(fillUsbRecord(streamOnly.device, streamOnly.reader(), record), UsbReading::none);
}

TEST(UsbRecord, BrokenInformationDescriptorsAreRefused) {
    const FakeUsbCamera good;
    const auto refused = [&](std::vector<std::uint8_t> extra) {
        FakeUsbCamera camera;
        camera.device.interfaces[0].extra = std::move(extra);
        _OV_CC_DEVICE_INFO_ record;
        return fillUsbRecord(camera.device, camera.reader(), record) == UsbReading::none;
    };
    const std::vector<std::uint8_t> whole = good.device.interfaces[0].extra;
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_TRUE(refused({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)})) << size;
    std::vector<std::uint8_t> short_ = whole;
    short_[0] = 19;
    EXPECT_TRUE(refused(short_));
    std::vector<std::uint8_t> endless = whole;
    endless[0] = 0;
    EXPECT_TRUE(refused(endless));
    std::vector<std::uint8_t> otherType = whole;
    otherType[1] = 0x25;
    EXPECT_TRUE(refused(otherType));
    std::vector<std::uint8_t> otherSubtype = whole;
    otherSubtype[2] = 0x02;
    EXPECT_TRUE(refused(otherSubtype));
    std::vector<std::uint8_t> behindAnother{3, 0x24, 0x09};
    behindAnother.insert(behindAnother.end(), whole.begin(), whole.end());
    EXPECT_FALSE(refused(behindAnother));
}

TEST(UsbRecord, MissingTextsAreEmptyAndOthersStandIn) {
    FakeUsbCamera camera;
    auto& extra = camera.device.interfaces[0].extra;
    extra[14] = 0; // no family
    extra[17] = 0; // no serial number of its own: the plain USB one
    camera.device.manufacturerIndex = 0;
    camera.strings.erase(18);
    _OV_CC_DEVICE_INFO_ record;
    ASSERT_EQ(fillUsbRecord(camera.device, camera.reader(), record), UsbReading::partial);
    EXPECT_STREQ(record.transport.usb3.familyName, "");
    EXPECT_STREQ(record.transport.usb3.serialNumber, "plain serial");
    EXPECT_STREQ(record.transport.usb3.manufacturerName, "Vendor");
    EXPECT_STREQ(record.transport.usb3.userDefinedName, "");
}

TEST(UsbRecord, LongTextsAreCut) {
    FakeUsbCamera camera;
    camera.strings[13] = std::string(100, 'm');
    _OV_CC_DEVICE_INFO_ record;
    ASSERT_EQ(fillUsbRecord(camera.device, camera.reader(), record), UsbReading::whole);
    EXPECT_EQ(std::string(record.transport.usb3.modelName), std::string(63, 'm'));
}

TEST(UsbRecord, WithoutItsSerialNumberItIsNotListed) {
    FakeUsbCamera camera;
    camera.strings.erase(17);
    _OV_CC_DEVICE_INFO_ record;
    EXPECT_EQ(fillUsbRecord(camera.device, camera.reader(), record), UsbReading::none);
}

TEST(UsbString, IsUtf16AsUtf8) {
    const auto text = [](std::vector<std::uint8_t> bytes) {
        return usbStringText(bytes.data(), bytes.size());
    };
    EXPECT_EQ(text({6, 3, 'A', 0, 'b', 0}), "Ab");
    EXPECT_EQ(text({2, 3}), "");
    EXPECT_EQ(text({6, 3, 0xE4, 0, 0xAC, 0x20}), "\xC3\xA4\xE2\x82\xAC");
    EXPECT_EQ(text({6, 3, 0x3D, 0xD8, 0x00, 0xDE}), "\xF0\x9F\x98\x80");
    EXPECT_EQ(text({6, 3, 0x3D, 0xD8, 'A', 0}), "\xEF\xBF\xBD"
                                                "A");
    EXPECT_EQ(text({4, 3, 0x00, 0xDC}), "\xEF\xBF\xBD");
    EXPECT_EQ(text({8, 3, 'A', 0, 0, 0, 'B', 0}), "A");
    EXPECT_EQ(text({5, 3, 'A', 0, 'B'}), "A");
    EXPECT_EQ(text({}), std::nullopt);
    EXPECT_EQ(text({2}), std::nullopt);
    EXPECT_EQ(text({4, 1, 'A', 0}), std::nullopt);
    EXPECT_EQ(text({8, 3, 'A', 0}), std::nullopt);
    EXPECT_EQ(text({1, 3}), std::nullopt);
}

TEST(UsbEnumeration, ListsInOrderOfBusAndAddress) {
    FakeUsbBus bus;
    bus.cameras.emplace_back().device.bus = 3;
    bus.cameras.emplace_back().device.bus = 1;
    UsbEnumeration enumeration(bus);
    std::vector<UsbFound> found;
    std::uint64_t unreadable = 0;
    ASSERT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].device.bus, 1);
    EXPECT_EQ(found[1].device.bus, 3);
    EXPECT_EQ(unreadable, 0U);
}

TEST(UsbEnumeration, ADeviceThatFallsSilentKeepsItsRecordWhileItIsPluggedIn) {
    FakeUsbBus bus;
    bus.cameras.emplace_back();
    UsbEnumeration enumeration(bus);
    std::vector<UsbFound> found;
    std::uint64_t unreadable = 0;
    const auto strings = bus.cameras[0].strings;
    bus.cameras[0].strings.clear();
    ASSERT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(unreadable, 1U);

    bus.cameras[0].strings = strings;
    ASSERT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    EXPECT_EQ(found.size(), 1U);
    EXPECT_EQ(unreadable, 0U);

    // Nothing read, or not all: what it said before.
    bus.cameras[0].strings.erase(18);
    ASSERT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_STREQ(found[0].record.transport.usb3.userDefinedName, "right");
    bus.cameras[0].strings.clear();
    ASSERT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_STREQ(found[0].record.transport.usb3.serialNumber, "U-77");
    // A name that was really taken away is gone.
    bus.cameras[0].strings = strings;
    bus.cameras[0].strings[18] = "";
    ASSERT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    EXPECT_STREQ(found.at(0).record.transport.usb3.userDefinedName, "");

    bus.cameras.clear();
    ASSERT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    EXPECT_TRUE(found.empty());
    // Another device at the same place isn't taken for the former one.
    bus.cameras.emplace_back().strings.clear();
    ASSERT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(unreadable, 1U);
}

TEST(UsbEnumeration, ABusThatCanNotBeAskedIsAnError) {
    FakeUsbBus bus;
    bus.status = OV_STATUS_RESOURCE;
    UsbEnumeration enumeration(bus);
    std::vector<UsbFound> found;
    std::uint64_t unreadable = 0;
    EXPECT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_RESOURCE);
}

TEST(SystemUsbBus, AHostWithoutUsbCamerasGivesNoneAtOnce) {
    UsbEnumeration enumeration(systemUsbBus());
    std::vector<UsbFound> found;
    std::uint64_t unreadable = 0;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(listOf(enumeration, found, unreadable), OV_STATUS_OK);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_FALSE(systemUsbBus().claimable(FakeUsbCamera().device));
}

} // namespace
} // namespace kolt::cc
