// Features of the device itself: who it is, how warm it is, and its reset.
#include "Device/BootstrapRegisters.h"
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <cmath>

namespace vcam {

using namespace feature;

// What a model has, as real cameras of one family tell it: one XML for all, and a register that says which
// features are there.
void DeviceModel::DefineInquiries(FeatureBuilder& build) {
    const uint32_t has = (m_traits.colour ? 1u << kInquiryColour : 0) |
                         (m_traits.lineScan ? 1u << kInquiryLineScan : 1u << kInquiryAreaScan);
    build.Memory().Define32(kFeatureInquiry, has, Access::ReadOnly);
    build.Category("");
    if (!m_traits.full)
        return; // nothing asks
    build.MaskedInteger("ColourInquiry", kFeatureInquiry, Access::ReadOnly, kInquiryColour, kInquiryColour);
    build.MaskedInteger("AreaScanInquiry", kFeatureInquiry, Access::ReadOnly, kInquiryAreaScan,
                        kInquiryAreaScan);
    build.MaskedInteger("LineScanInquiry", kFeatureInquiry, Access::ReadOnly, kInquiryLineScan,
                        kInquiryLineScan);
}

void DeviceModel::DefineDevice(FeatureBuilder& build) {
    constexpr auto readOnly = Access::ReadOnly;
    build.Category("DeviceControl");
    build
        .Enumeration("DeviceScanType", kDeviceScanType, m_traits.lineScan ? 1 : 0, readOnly,
                     {{"Areascan", 0}, {"Linescan", 1}})
        .Tip("How the sensor takes a picture.", "Areascan: as a whole. Linescan: line by line.")
        .Visible("Expert");
    build.StringNode("DeviceVendorName", bootstrap::kManufacturerName, 32, readOnly)
        .Tip("Name of the maker.");
    build.StringNode("DeviceModelName", bootstrap::kModelName, 32, readOnly).Tip("Model of the device.");
    build.StringNode("DeviceManufacturerInfo", bootstrap::kManufacturerInfo, 48, readOnly)
        .Tip("What the maker adds.");
    build.StringNode("DeviceVersion", bootstrap::kDeviceVersion, 32, readOnly).Tip("Version of the device.");
    build.String("DeviceFirmwareVersion", kDeviceFirmwareVersion, 32, "2.1.0", readOnly)
        .Tip("Version of the program in the device.");
    build.StringNode("DeviceSerialNumber", bootstrap::kSerialNumber, 16, readOnly).Tip("Serial number.");
    build.StringNode("DeviceID", bootstrap::kSerialNumber, 16, readOnly)
        .Tip("Serial number.", "An older name of DeviceSerialNumber.")
        .Visible("Expert");
    build.StringNode("DeviceUserID", bootstrap::kUserName, 16, Access::ReadWrite)
        .Tip("Name given to the device by its user.", "It is kept without power.");
    build
        .Command("DeviceReset", kDeviceReset,
                 [this] {
                     m_resetRequested = true;
                     if (m_wake)
                         m_wake();
                 })
        .Tip("Starts the device again, as if its power had been cut.",
             "The connection is lost. What was saved in user sets and files stays; a persistent IP address "
             "is taken up.")
        .Visible("Guru");
    build.IntegerOf("DeviceLinkSpeed", "GevLinkSpeed_Val")
        .Tip("Speed of the link.", "In megabits a second, as GevLinkSpeed.")
        .Unit("Mbps")
        .Visible("Expert");
    build.IntegerOf("DeviceStreamChannelCount", "DeviceStreamChannelCount_Val")
        .Tip("Stream channels of the device.")
        .Visible("Expert");
    build.Category("");
    build.BareRegister("IntReg", "DeviceStreamChannelCount_Val", bootstrap::kStreamChannelCount, 4, readOnly);
}

void DeviceModel::DefineTemperature(FeatureBuilder& build) {
    build.Category("DeviceControl");
    build
        .Enumeration("DeviceTemperatureSelector", kDeviceTemperatureSelector, 0, Access::ReadWrite,
                     {{"Sensor", 0}, {"Mainboard", 1}})
        .Tip("Where DeviceTemperature is taken.")
        .Visible("Expert");
    build.Float("DeviceTemperature", kDeviceTemperature, 35.0, Access::ReadOnly)
        .Per("DeviceTemperatureSelector", 2, kDeviceTemperatureStride)
        .Tip("Temperature inside the device.")
        .Unit("C")
        .Visible("Expert")
        .Volatile(1000);
    const auto thermometer = [this](uint32_t address, double rest, double warming) {
        return [this, address, rest, warming] {
            const double seconds = std::chrono::duration<double>(Clock::now() - m_started).count();
            const double warm = rest + warming * (1 - std::exp(-seconds / 300.0)); // warms up, then wanders
            m_memory.SetDouble(address, warm + 0.6 * std::sin(seconds / 7.0) + 0.2 * std::sin(seconds / 1.7));
        };
    };
    m_memory.AddHooks(kDeviceTemperature, {thermometer(kDeviceTemperature, 35.0, 8.0), {}, {}});
    const uint32_t board = kDeviceTemperature + kDeviceTemperatureStride;
    m_memory.AddHooks(board, {thermometer(board, 39.0, 11.0), {}, {}});
}

} // namespace vcam
