#include "Camera/DeviceIdentity.h"
#include "DeviceRecords.h"

#include <cstring>
#include <gtest/gtest.h>

namespace devices {
namespace {

_OV_CC_DEVICE_INFO_ OtherTransport() {
    _OV_CC_DEVICE_INFO_ info{};
    info.nTLayerType = 2;
    return info;
}

Gige With(const std::function<void(Gige&)>& change) {
    Gige camera;
    change(camera);
    return camera;
}

Usb WithUsb(const std::function<void(Usb&)>& change) {
    Usb camera;
    change(camera);
    return camera;
}

TEST(DeviceIdentity, Match) {
    struct Row {
        const char* what;
        _OV_CC_DEVICE_INFO_ a, b;
        bool same;
    };
    const auto gige = GigeRecord();
    auto otherHigh = gige;
    otherHigh.macHigh = 0x0003;
    const Row rows[] = {
        {"the same record", gige, gige, true},
        {"another address is the same camera", gige, GigeRecord(With([](Gige& c) { c.ip = Ip(77); })), true},
        {"another name is the same camera", gige, GigeRecord(With([](Gige& c) { c.user = "x"; })), true},
        {"another serial number is the same camera", gige, GigeRecord(With([](Gige& c) { c.serial = "x"; })),
         true},
        {"another low word of the MAC", gige, GigeRecord(With([](Gige& c) { c.mac = 2; })), false},
        {"another high word of the MAC", gige, otherHigh, false},
        {"another host interface", gige, GigeRecord(With([](Gige& c) { c.host = Ip(2); })), false},
        {"USB, the same serial number", UsbRecord(), UsbRecord(WithUsb([](Usb& c) { c.model = "x"; })), true},
        {"USB, another serial number", UsbRecord(), UsbRecord(WithUsb([](Usb& c) { c.serial = "x"; })),
         false},
        {"USB, none has a serial number", UsbRecord(WithUsb([](Usb& c) { c.serial = ""; })),
         UsbRecord(WithUsb([](Usb& c) {
             c.serial = "";
             c.model = "x";
         })),
         true},
        {"different transports", gige, UsbRecord(), false},
        {"a transport that is not known", OtherTransport(), OtherTransport(), false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(IsSameDevice(row.a, row.b), row.same) << row.what;
        EXPECT_EQ(IsSameDevice(row.b, row.a), row.same) << row.what << ", the other way round";
    }
}

TEST(DeviceIdentity, SerialNumbersWithoutATerminatorStayInTheirField) {
    auto a = UsbRecord(WithUsb([](Usb& c) { c.serial = std::string(64, 's'); }));
    auto b = a;
    std::strcpy(b.transport.usb3.userDefinedName, "other"); // right behind it
    EXPECT_TRUE(IsSameDevice(a, b));
}

TEST(DeviceIdentity, BootLoader) {
    EXPECT_TRUE(IsInBootLoader(UsbRecord(WithUsb([](Usb& c) { c.endpoint = 0; }))));
    EXPECT_FALSE(IsInBootLoader(UsbRecord()));
    auto gige = GigeRecord();
    gige.transport.gige.ipConfigOptions = 0; // the same byte
    EXPECT_FALSE(IsInBootLoader(gige));
}

TEST(DeviceIdentity, Label) {
    struct Row {
        _OV_CC_DEVICE_INFO_ info;
        const char* label;
    };
    const Row rows[] = {
        {GigeRecord(With([](Gige& c) { c.user = "line 3"; })), "line 3(G001)"},
        {GigeRecord(), "MakerGE-1(G001)"},
        {GigeRecord(With([](Gige& c) { c.user = std::string(16, 'n'); })), "nnnnnnnnnnnnnnnn(G001)"},
        {GigeRecord(With([](Gige& c) { c.user = "%2%1"; })), "%2%1(G001)"},
        {GigeRecord(With([](Gige& c) { c.user = "\xE4\xB8\x9C\xE7\xBA\xBF"; })),
         "\xE4\xB8\x9C\xE7\xBA\xBF(G001)"},
        {UsbRecord(WithUsb([](Usb& c) { c.user = std::string(64, 'n'); })), nullptr},
        {UsbRecord(), "MakerU3-1(U001)"},
        {OtherTransport(), ""},
    };
    for (const Row& row : rows) {
        const std::string expected = row.label ? row.label : std::string(64, 'n') + "(U001)";
        EXPECT_EQ(DeviceLabel(row.info).toStdString(), expected);
    }
}

TEST(DeviceIdentity, AGigeNameIsCutAtItsField) {
    auto info = GigeRecord(With([](Gige& c) { c.user = std::string(16, 'n'); }));
    info.transport.gige.hostInterface = 0x41414141; // right behind it: "AAAA"
    EXPECT_EQ(DeviceLabel(info), "nnnnnnnnnnnnnnnn(G001)");
}

TEST(DeviceIdentity, MacFromTheTopDown) {
    auto info = GigeRecord();
    info.macHigh = 0xFFFF0A1B;
    info.macLow = 0x2C3D4E5F;
    EXPECT_EQ(DeviceMac(info), "0A:1B:2C:3D:4E:5F");
}

TEST(DeviceIdentity, RemoteNames) {
    struct Row {
        std::string user;
        std::string round;
        std::string item;
    };
    const std::string chinese = "\xE4\xB8\x9C\xE7\xBA\xBF";
    const Row rows[] = {
        {"", "Maker GE-1 (G001)", "Maker GE-1 (G001)"},
        {"east", "east (G001)", "east (G001)"},
        {"%1", "%1 (G001)", "%1 (G001)"},
        // The road of the tree knows ASCII only.
        {chinese, chinese + " (G001)", "?? (G001)"},
    };
    for (const Row& row : rows) {
        const auto info = GigeRecord(With([&row](Gige& c) { c.user = row.user; }));
        EXPECT_EQ(RemoteNameOfRound(info).toStdString(), row.round);
        EXPECT_EQ(RemoteNameOfItem(info).toStdString(), row.item);
    }
}

TEST(DeviceIdentity, TheTreeKeepsFiftyBytesOfARemoteName) {
    const auto info = GigeRecord(With([](Gige& c) {
        c.maker = std::string(32, 'm');
        c.model = std::string(32, 'o');
    }));
    EXPECT_EQ(RemoteNameOfRound(info).toStdString(),
              std::string(32, 'm') + " " + std::string(32, 'o') + " (G001)");
    EXPECT_EQ(RemoteNameOfItem(info).toStdString(),
              std::string(32, 'm') + " " + std::string(17, 'o') + " (G001)");
}

} // namespace
} // namespace devices
