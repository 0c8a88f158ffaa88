// Features of the device itself and of the image format.
#include "Device/BootstrapRegisters.h"
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <cmath>

namespace vcam {

using namespace feature;

namespace {
constexpr uint32_t kMinWidth = 32;
constexpr uint32_t kMinHeight = 16;
constexpr uint32_t kWidthStep = 8;
constexpr uint32_t kHeightStep = 2;
constexpr uint32_t kOffsetStep = 2;
} // namespace

void DeviceModel::DefineDevice(FeatureBuilder& build) {
    constexpr auto readOnly = Access::ReadOnly;
    build.Category("DeviceControl");
    build.StringNode("DeviceVendorName", bootstrap::kManufacturerName, 32, readOnly)
        .Tip("Name of the maker.");
    build.StringNode("DeviceModelName", bootstrap::kModelName, 32, readOnly).Tip("Model of the device.");
    build.StringNode("DeviceManufacturerInfo", bootstrap::kManufacturerInfo, 48, readOnly)
        .Tip("What the maker adds.");
    build.StringNode("DeviceVersion", bootstrap::kDeviceVersion, 32, readOnly).Tip("Version of the device.");
    build.StringNode("DeviceSerialNumber", bootstrap::kSerialNumber, 16, readOnly).Tip("Serial number.");
    build.StringNode("DeviceID", bootstrap::kSerialNumber, 16, readOnly)
        .Tip("Serial number.")
        .Visible("Expert");
    build.StringNode("DeviceUserID", bootstrap::kUserName, 16, Access::ReadWrite)
        .Tip("Name given to the device by its user.");
    RegisterHooks thermometer;
    thermometer.beforeRead = [this] {
        const double seconds = std::chrono::duration<double>(Clock::now() - m_started).count();
        const double warm = 43.0 - 8.0 * std::exp(-seconds / 300.0); // warms up, then wanders
        m_memory.SetDouble(kDeviceTemperature,
                           warm + 0.6 * std::sin(seconds / 7.0) + 0.2 * std::sin(seconds / 1.7));
    };
    build.Float("DeviceTemperature", kDeviceTemperature, 35.0, readOnly, thermometer)
        .Tip("Temperature inside the device.")
        .Unit("C")
        .Volatile(1000);
}

void DeviceModel::DefineImageFormat(FeatureBuilder& build) {
    build.Category("ImageFormatControl");
    constexpr auto readOnly = Access::ReadOnly;
    build.Integer("SensorWidth", kSensorWidth, m_config.sensorWidth, readOnly)
        .Tip("Columns of the sensor.")
        .Visible("Expert");
    build.Integer("SensorHeight", kSensorHeight, m_config.sensorHeight, readOnly)
        .Tip("Rows of the sensor.")
        .Visible("Expert");
    build.Integer("WidthMax", kWidthMax, m_config.sensorWidth, readOnly)
        .Tip("Largest width.")
        .Visible("Expert");
    build.Integer("HeightMax", kHeightMax, m_config.sensorHeight, readOnly)
        .Tip("Largest height.")
        .Visible("Expert");

    std::vector<EnumValue> formats;
    for (const PixelFormat& format : PixelFormats()) {
        if (m_config.model == Model::Colour || format.layout == Layout::Mono)
            formats.push_back({format.name, format.code});
    }
    RegisterHooks format;
    format.check = WhileIdle();
    format.written = [this] {
        m_memory.Set32(kPixelSize, FindPixelFormat(m_memory.Get32(kPixelFormat))->BitsPerPixel());
        if (m_stream != nullptr)
            m_stream->SettingsChanged();
    };
    build.Enumeration("PixelFormat", kPixelFormat, m_config.pixelFormat, Access::ReadWrite, formats, format)
        .Tip("Format of the pixels.")
        .Locked();
    build
        .Enumeration("PixelSize", kPixelSize, FindPixelFormat(m_config.pixelFormat)->BitsPerPixel(), readOnly,
                     {{"Bpp8", 8}, {"Bpp12", 12}, {"Bpp16", 16}, {"Bpp24", 24}})
        .Tip("Bits of a pixel.")
        .Visible("Expert")
        .Volatile();

    RegisterHooks changes;
    changes.written = Changed();
    build.Boolean("ReverseX", kReverseX, false, Access::ReadWrite, changes).Tip("Mirrors left and right.");
    build.Boolean("ReverseY", kReverseY, false, Access::ReadWrite, changes).Tip("Mirrors top and bottom.");
    build
        .Enumeration("TestPattern", kTestPattern, 0, Access::ReadWrite,
                     {{"Off", 0},
                      {"Black", 1},
                      {"White", 2},
                      {"GreyHorizontalRamp", 3},
                      {"GreyVerticalRamp", 4},
                      {"GreyHorizontalRampMoving", 5},
                      {"ColorBar", 6}},
                     changes)
        .Tip("Picture of a generator instead of the scene.");
}

// Size and place of the picture on the sensor. Each must fit the others as they are.
void DeviceModel::DefineRegion(FeatureBuilder& build) {
    struct Axis {
        const char* size;
        uint32_t sizeAddress;
        const char* offset;
        uint32_t offsetAddress;
        const char* maximum;
        uint32_t sensor, least, step;
    };
    const Axis axes[] = {
        {"Width", kWidth, "OffsetX", kOffsetX, "WidthMax", m_config.sensorWidth, kMinWidth, kWidthStep},
        {"Height", kHeight, "OffsetY", kOffsetY, "HeightMax", m_config.sensorHeight, kMinHeight, kHeightStep},
    };
    for (const Axis& axis : axes) {
        RegisterHooks size;
        size.check = WhileIdle([this, axis](const Bytes& proposed) {
            const uint32_t room = axis.sensor - m_memory.Get32(axis.offsetAddress);
            const uint32_t value = vcam::Get32(proposed.data());
            return value >= axis.least && value <= room && value % axis.step == 0 ? Status::Success
                                                                                  : Status::InvalidParameter;
        });
        size.written = Changed();
        const std::string sizeName = axis.size;
        const std::string offsetName = axis.offset;
        build.Integer(sizeName, axis.sizeAddress, axis.sensor, Access::ReadWrite, size)
            .Tip(sizeName + " of the picture in pixels.")
            .Unit("pix")
            .Locked()
            .Node()
            .Add("Min", axis.least)
            .Add("pMax", sizeName + "Room")
            .Add("Inc", axis.step);
        build.Formula(sizeName + "Room", {{"WHOLE", axis.maximum}, {"OFFSET", offsetName}}, "WHOLE - OFFSET");

        RegisterHooks offset;
        offset.check = [this, axis](const Bytes& proposed) {
            const uint32_t room = axis.sensor - m_memory.Get32(axis.sizeAddress);
            const uint32_t value = vcam::Get32(proposed.data());
            return value <= room && value % kOffsetStep == 0 ? Status::Success : Status::InvalidParameter;
        };
        offset.written = Changed();
        build.Integer(offsetName, axis.offsetAddress, 0, Access::ReadWrite, offset)
            .Tip("Where on the sensor the picture begins.")
            .Unit("pix")
            .Node()
            .Add("Min", 0)
            .Add("pMax", offsetName + "Room")
            .Add("Inc", kOffsetStep);
        build.Formula(offsetName + "Room", {{"WHOLE", axis.maximum}, {"SIZE", sizeName}}, "WHOLE - SIZE");
    }
}

} // namespace vcam
