// Features of the image format: sensor, pixel format, region, binning, compression.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <algorithm>

namespace vcam {

using namespace feature;

namespace {

constexpr uint32_t kMinWidth = 16;
constexpr uint32_t kMinHeight = 16;
constexpr uint32_t kMinLines = 2; // of a frame of a line scan camera
constexpr uint32_t kWidthStep = 8;
constexpr uint32_t kHeightStep = 2;
constexpr uint32_t kOffsetStep = 2;
constexpr const char* kRegionNames[kRegions] = {"Region0", "Region1"};

} // namespace

void DeviceModel::DefineSensor(FeatureBuilder& build) {
    build.Category("ImageFormatControl");
    constexpr auto readOnly = Access::ReadOnly;
    build.Integer("SensorWidth", kSensorWidth, m_config.sensorWidth, readOnly)
        .Tip("Columns of the sensor.")
        .Unit("pix")
        .Visible("Expert");
    build.Integer("SensorHeight", kSensorHeight, m_traits.lineScan ? 1 : m_config.sensorHeight, readOnly)
        .Tip("Rows of the sensor.")
        .Unit("pix")
        .Visible("Expert");
    Feature width = build.Integer("WidthMax", kWidthMax, m_config.sensorWidth, readOnly);
    width.Tip("Largest width.", "It depends on the binning.").Unit("pix").Visible("Expert");
    Feature height = build.Integer("HeightMax", kHeightMax, m_config.sensorHeight, readOnly);
    height.Tip("Largest height.", "It depends on the binning.").Unit("pix").Visible("Expert");
    if (m_traits.full) {
        width.ChangesWith({"BinningHorizontal", "UserSetLoad"});
        height.ChangesWith({"BinningVertical", "UserSetLoad"});
    }
}

void DeviceModel::DefinePixelFormat(FeatureBuilder& build) {
    build.Category("ImageFormatControl");
    std::vector<EnumValue> formats;
    for (const PixelFormat& format : PixelFormats()) {
        if (m_traits.colour || format.layout == Layout::Mono)
            formats.push_back({format.name, format.code});
    }
    RegisterHooks format;
    format.check = WhileIdle();
    format.written = Changed();
    Feature made = build.Enumeration("PixelFormat", kPixelFormat, m_config.pixelFormat, Access::ReadWrite,
                                     formats, format);
    made.Tip("Format of the pixels.", "The values are the codes of the stream protocol.").Locked().Setting();
    made.Node().RenameEntries([](const std::string& name) { return name; }); // "Bayer RG 8" is nobody's word
    RegisterHooks size;
    size.beforeRead = [this] {
        m_memory.Set32(kPixelSize, FindPixelFormat(m_memory.Get32(kPixelFormat))->BitsPerPixel());
    };
    build
        .Enumeration("PixelSize", kPixelSize, FindPixelFormat(m_config.pixelFormat)->BitsPerPixel(),
                     Access::ReadOnly, {{"Bpp8", 8}, {"Bpp12", 12}, {"Bpp16", 16}, {"Bpp24", 24}}, size)
        .Tip("Bits of a pixel.")
        .Visible("Expert")
        .Volatile();
}

void DeviceModel::DefineImageFormat(FeatureBuilder& build) {
    build.Category("ImageFormatControl");
    build.Boolean("ReverseX", kReverseX, false, Access::ReadWrite)
        .Tip("Mirrors left and right.")
        .OnWrite(Changed())
        .Setting();
    build.Boolean("ReverseY", kReverseY, false, Access::ReadWrite)
        .Tip("Mirrors top and bottom.")
        .ImplementedIf("AreaScanInquiry")
        .OnWrite(Changed())
        .Setting();
    std::vector<EnumValue> patterns = {{"Off", 0},
                                       {"Black", 1},
                                       {"White", 2},
                                       {"GreyHorizontalRamp", 3},
                                       {"GreyVerticalRamp", 4},
                                       {"GreyHorizontalRampMoving", 5}};
    if (m_traits.colour)
        patterns.push_back({"ColorBar", 6});
    build.Enumeration("TestPattern", kTestPattern, 0, Access::ReadWrite, patterns)
        .Tip("Picture of a generator instead of the scene.")
        .OnWrite(Changed())
        .Setting();
}

uint32_t DeviceModel::ActiveRegion() const {
    for (uint32_t region = 1; region < kRegions; ++region) {
        if (On(kRegionMode + 4 * region))
            return region;
    }
    return 0;
}

// The stream carries one region; switching one on switches the others off.
void DeviceModel::DefineRegionSelector(FeatureBuilder& build) {
    if (!m_traits.full)
        return;
    build.Category("ImageFormatControl");
    std::vector<EnumValue> regions;
    for (uint32_t region = 0; region < kRegions; ++region)
        regions.push_back({kRegionNames[region], region});
    build.Enumeration("RegionSelector", kRegionSelector, 0, Access::ReadWrite, regions)
        .Tip("The region that size and offsets below belong to.", "RegionMode says which one is sent.")
        .Visible("Expert")
        .Setting();
    build.Enumeration("RegionMode", kRegionMode, 0, Access::ReadWrite, {{"Off", 0}, {"On", 1}})
        .Per("RegionSelector", kRegions, 4)
        .Tip("Whether the region is sent.",
             "One region is sent at a time: to switch it off, switch another one on.")
        .Visible("Expert")
        .Locked()
        .Setting();
    m_memory.Set32(kRegionMode, 1);
    for (uint32_t region = 0; region < kRegions; ++region) {
        const uint32_t own = kRegionMode + 4 * region;
        RegisterHooks hooks;
        hooks.check = [this, own](const Bytes& proposed) {
            const bool leavesNone = vcam::Get32(proposed.data()) == 0 && m_memory.Get32(own) != 0;
            return leavesNone ? Status::WriteProtect : Status::Success;
        };
        hooks.written = [this, own] {
            for (uint32_t other = kRegionMode; other < kRegionMode + 4 * kRegions; other += 4) {
                if (m_memory.Get32(own) != 0 && other != own)
                    m_memory.Set32(other, 0);
            }
            Changed()();
        };
        m_memory.AddHooks(own, hooks);
    }
}

void DeviceModel::FitBeside(uint32_t address, const Neighbour& neighbour) {
    RegisterHooks hooks;
    hooks.check = [this, neighbour](const Bytes& proposed) {
        const uint32_t room = m_memory.Get32(neighbour.maximum) - m_memory.Get32(neighbour.partner);
        const uint32_t value = vcam::Get32(proposed.data());
        return value >= neighbour.least && value <= room && value % neighbour.step == 0
                   ? Status::Success
                   : Status::InvalidParameter;
    };
    m_memory.AddHooks(address, std::move(hooks));
}

// Size and place of the picture on the sensor. Each must fit the others as they are.
void DeviceModel::DefineRegion(FeatureBuilder& build) {
    struct Axis {
        const char* size;
        uint32_t sizeAddress;
        const char* offset;
        uint32_t offsetAddress;
        const char* maximum;
        uint32_t maximumAddress, least, step;
        const char* binning;
    };
    const uint32_t leastHeight = m_traits.lineScan ? kMinLines : kMinHeight;
    const Axis axes[] = {
        {"Width", kWidth, "OffsetX", kOffsetX, "WidthMax", kWidthMax, kMinWidth, kWidthStep,
         "BinningHorizontal"},
        {"Height", kHeight, "OffsetY", kOffsetY, "HeightMax", kHeightMax, leastHeight, kHeightStep,
         "BinningVertical"},
    };
    build.Category("ImageFormatControl");
    for (const Axis& axis : axes) {
        const std::string sizeName = axis.size;
        const std::string offsetName = axis.offset;
        Feature size =
            build.Integer(sizeName, axis.sizeAddress, m_memory.Get32(axis.maximumAddress), Access::ReadWrite);
        Feature offset = build.Integer(offsetName, axis.offsetAddress, 0, Access::ReadWrite);
        if (m_traits.full) {
            size.Per("RegionSelector", kRegions, kRegionStride).ChangesWith({axis.binning});
            offset.Per("RegionSelector", kRegions, kRegionStride).ChangesWith({axis.binning});
        }
        size.Tip(sizeName + " of the picture in pixels.", "Its maximum depends on " + offsetName + ".")
            .Unit("pix")
            .Locked()
            .Setting()
            .OnWrite(Changed());
        size.Node().Add("Min", axis.least).Add("pMax", sizeName + "Room").Add("Inc", axis.step);
        // A line has no place below another; its register is there all the same, for the formula.
        const bool placeless = m_traits.lineScan && offsetName == "OffsetY";
        build.Formula(sizeName + "Room",
                      {{"WHOLE", axis.maximum}, {"OFFSET", placeless ? offsetName + "_Val" : offsetName}},
                      "WHOLE - OFFSET");
        offset.Tip("Where on the sensor the picture begins.", "Its maximum depends on " + sizeName + ".")
            .Unit("pix")
            .Setting()
            .OnWrite(Changed());
        offset.Node().Add("Min", 0).Add("pMax", offsetName + "Room").Add("Inc", kOffsetStep);
        build.Formula(offsetName + "Room", {{"WHOLE", axis.maximum}, {"SIZE", sizeName}}, "WHOLE - SIZE");
        if (placeless)
            offset.ImplementedIf("AreaScanInquiry");

        for (size_t region = 0; region < size.Addresses().size(); ++region) {
            const uint32_t sizeAt = size.Addresses()[region];
            const uint32_t offsetAt = offset.Addresses()[region];
            FitBeside(sizeAt, {axis.maximumAddress, offsetAt, axis.least, axis.step});
            FitBeside(offsetAt, {axis.maximumAddress, sizeAt, 0, kOffsetStep});
        }
    }
}

uint32_t DeviceModel::Binning(uint32_t direction) const {
    uint32_t product = 1;
    for (uint32_t stage = 0; stage < kBinnings; ++stage)
        product *= Word(kBinningHorizontal + 4 * direction + kBinningStride * stage, 1);
    return product;
}

void DeviceModel::FitRegions() {
    const uint32_t lineBinning = m_traits.lineScan ? 1 : Binning(1); // lines follow one another in time
    const uint32_t widthMax = m_config.sensorWidth / Binning(0) / kWidthStep * kWidthStep;
    const uint32_t heightMax = m_config.sensorHeight / lineBinning / kHeightStep * kHeightStep;
    m_memory.Set32(kWidthMax, widthMax);
    m_memory.Set32(kHeightMax, heightMax);
    const auto fit = [this](uint32_t sizeAt, uint32_t offsetAt, uint32_t most, uint32_t least) {
        const uint32_t size = std::clamp(m_memory.Get32(sizeAt), std::min(least, most), most);
        m_memory.Set32(sizeAt, size);
        m_memory.Set32(offsetAt,
                       std::min(m_memory.Get32(offsetAt), (most - size) / kOffsetStep * kOffsetStep));
    };
    for (uint32_t region = 0; region < (m_traits.full ? kRegions : 1); ++region) {
        fit(kWidth + region * kRegionStride, kOffsetX + region * kRegionStride, widthMax, kMinWidth);
        fit(kHeight + region * kRegionStride, kOffsetY + region * kRegionStride, heightMax,
            m_traits.lineScan ? kMinLines : kMinHeight);
    }
    if (m_traits.full)
        FitAutoAreas();
}

// Two stages, one behind the other: in the sensor and in the camera's processor. What both do together makes
// the picture smaller; the region is brought back into it.
void DeviceModel::DefineBinning(FeatureBuilder& build) {
    build.Category("ImageFormatControl");
    build
        .Enumeration("BinningSelector", kBinningSelector, 0, Access::ReadWrite,
                     {{"Sensor", 0}, {"Digital", 1}})
        .Tip("The stage that the binning below belongs to.")
        .Visible("Expert")
        .Setting();
    for (const auto& [name, address, other] : {std::tuple{"BinningHorizontal", kBinningHorizontal, "columns"},
                                               std::tuple{"BinningVertical", kBinningVertical, "rows"}}) {
        Feature binning = build.Integer(name, address, 1, Access::ReadWrite);
        binning.Per("BinningSelector", kBinnings, kBinningStride)
            .Tip(std::string("Neighbouring ") + other + " that become one.", "Their mean is sent.")
            .Visible("Expert")
            .Range(1, 2)
            .Locked()
            .Setting()
            .OnWrite([this] {
                FitRegions();
                Changed()();
            });
        if (address == kBinningVertical)
            binning.ImplementedIf("AreaScanInquiry");
    }
}

void DeviceModel::DefineCompression(FeatureBuilder& build) {
    build.Category("ImageFormatControl");
    build
        .Enumeration("ImageCompressionMode", kImageCompressionMode, 0, Access::ReadWrite,
                     {{"Off", 0}, {"JPEG", 1}})
        .Tip("How pictures are compressed.", "Compressed pictures have no embedded information.")
        .Locked()
        .Setting()
        .OnWrite(Changed());
    build.Formula("CompressionInactive", {{"MODE", "ImageCompressionMode_Val"}}, "MODE = 0");
    build.Formula("CompressionActive", {{"MODE", "ImageCompressionMode_Val"}}, "MODE <> 0");
    build.Integer("ImageCompressionQuality", kImageCompressionQuality, 80, Access::ReadWrite)
        .Tip("Quality of compressed pictures.", "Higher is better and longer.")
        .Visible("Expert")
        .Range(1, 100)
        .AvailableIf("CompressionActive")
        .Setting()
        .OnWrite(Changed());
}

} // namespace vcam
