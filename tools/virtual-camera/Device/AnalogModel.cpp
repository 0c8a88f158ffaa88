// Features of tones and colours, and the areas that the automatic functions look at.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <algorithm>

namespace vcam {

using namespace feature;

namespace {

constexpr uint32_t kLeastAutoArea = 16;
constexpr uint32_t kAutoAreaStep = 4;

struct ToneFeature { // an integer with a switch of its own
    const char* name;
    uint32_t address;
    int32_t initial, low, high;
    uint32_t enable; // 0: always on
    bool colour;
    const char* unit;
    const char* tip;
};

constexpr ToneFeature kTones[] = {
    {"Brightness", kBrightness, 0, -1024, 1024, 0, false, "", "Added to each pixel, in steps of 12 bits."},
    {"Sharpness", kSharpness, 50, 0, 100, kSharpnessEnable, false, "%", "How much edges are lifted."},
    {"Hue", kHue, 0, -180, 180, kHueEnable, true, "deg", "Turns all colours; positive turns red to yellow."},
    {"Saturation", kSaturation, kNeutralSaturation, 0, 400, kSaturationEnable, true, "%",
     "Strength of colours; 100 changes nothing."},
};

} // namespace

void DeviceModel::DefineTones(FeatureBuilder& build) {
    build.Category("AnalogControl");
    build.Boolean("GammaEnable", kGammaEnable, false, Access::ReadWrite)
        .Tip("Whether the gamma curve is applied.")
        .Visible("Expert")
        .OnWrite(Changed())
        .Setting();
    build
        .Enumeration("GammaSelector", kGammaSelector, static_cast<uint32_t>(GammaCurve::Power),
                     Access::ReadWrite,
                     {{"User", static_cast<uint32_t>(GammaCurve::Power)},
                      {"sRGB", static_cast<uint32_t>(GammaCurve::Srgb)}})
        .Tip("Which gamma curve.", "User: the power by Gamma. sRGB: the curve of that colour space.")
        .Visible("Expert")
        .OnWrite(Changed())
        .Setting();
    build.Float("Gamma", kGamma, 1.0, Access::ReadWrite)
        .Tip("Exponent of the gamma curve.", "Below 1 it lifts the shadows.")
        .RangeF(0.1, 4.0)
        .OnWrite(Changed())
        .Setting();
    for (const ToneFeature& tone : kTones) {
        const std::string name = tone.name;
        if (tone.enable != 0) {
            Feature enable = build.Boolean(name + "Enable", tone.enable, false, Access::ReadWrite);
            enable.Tip("Whether " + name + " is applied.").Visible("Expert").OnWrite(Changed()).Setting();
            if (tone.colour)
                enable.ImplementedIf("ColourInquiry");
        }
        Feature value =
            build.Integer(name, tone.address, static_cast<uint32_t>(tone.initial), Access::ReadWrite);
        value.Tip(tone.tip).As("Linear").Range(tone.low, tone.high).OnWrite(Changed()).Setting();
        if (*tone.unit != '\0')
            value.Unit(tone.unit);
        if (tone.colour)
            value.ImplementedIf("ColourInquiry");
    }
}

void DeviceModel::FitAutoAreas() {
    const auto fit = [this](uint32_t sizeAt, uint32_t offsetAt, uint32_t most) {
        const uint32_t room = most / kAutoAreaStep * kAutoAreaStep;
        const uint32_t size = std::min(m_memory.Get32(sizeAt), room);
        m_memory.Set32(sizeAt, size);
        m_memory.Set32(offsetAt, std::min(m_memory.Get32(offsetAt), room - size));
    };
    for (uint32_t area = 0; area < kAutoAreas * kAutoAreaStride; area += kAutoAreaStride) {
        fit(kAutoAreaWidth + area, kAutoAreaOffsetX + area, m_memory.Get32(kWidthMax));
        fit(kAutoAreaHeight + area, kAutoAreaOffsetY + area, m_memory.Get32(kHeightMax));
    }
}

void DeviceModel::DefineAutoAreas(FeatureBuilder& build) {
    build.Category("AnalogControl");
    build
        .Enumeration("AutoFunctionAOISelector", kAutoAreaSelector, 0, Access::ReadWrite,
                     {{"AOI1", 0}, {"AOI2", 1}})
        .Tip("The area that the features below belong to.",
             "Automatic exposure and gain, and the automatic white balance, look at the areas that are "
             "marked for them.")
        .Visible("Expert")
        .Setting();
    struct Axis {
        const char* size;
        uint32_t sizeAddress;
        const char* offset;
        uint32_t offsetAddress;
        const char* maximum;
        uint32_t maximumAddress;
        const char* binning;
    };
    static constexpr Axis kAxes[] = {
        {"AutoFunctionAOIWidth", kAutoAreaWidth, "AutoFunctionAOIOffsetX", kAutoAreaOffsetX, "WidthMax",
         kWidthMax, "BinningHorizontal"},
        {"AutoFunctionAOIHeight", kAutoAreaHeight, "AutoFunctionAOIOffsetY", kAutoAreaOffsetY, "HeightMax",
         kHeightMax, "BinningVertical"},
    };
    for (const Axis& axis : kAxes) {
        const std::string sizeName = axis.size;
        const std::string offsetName = axis.offset;
        const uint32_t whole = m_memory.Get32(axis.maximumAddress) / kAutoAreaStep * kAutoAreaStep;
        Feature size = build.Integer(sizeName, axis.sizeAddress, whole, Access::ReadWrite);
        Feature offset = build.Integer(offsetName, axis.offsetAddress, 0, Access::ReadWrite);
        for (Feature* each : {&size, &offset}) {
            each->Per("AutoFunctionAOISelector", kAutoAreas, kAutoAreaStride)
                .ChangesWith({axis.binning})
                .Unit("pix")
                .Visible("Expert")
                .Setting();
        }
        size.Tip("Size of the area.", "In pixels of the whole picture, after binning.");
        offset.Tip("Place of the area.", "In pixels of the whole picture, after binning.");
        size.Node().Add("Min", kLeastAutoArea).Add("pMax", sizeName + "Room").Add("Inc", kAutoAreaStep);
        offset.Node().Add("Min", 0).Add("pMax", offsetName + "Room").Add("Inc", kAutoAreaStep);
        const std::string room = "(WHOLE - PARTNER) / 4 * 4";
        build.Formula(sizeName + "Room", {{"WHOLE", axis.maximum}, {"PARTNER", offsetName}}, room);
        build.Formula(offsetName + "Room", {{"WHOLE", axis.maximum}, {"PARTNER", sizeName}}, room);
        for (uint32_t area = 0; area < kAutoAreas * kAutoAreaStride; area += kAutoAreaStride) {
            const uint32_t sizeAt = axis.sizeAddress + area;
            const uint32_t offsetAt = axis.offsetAddress + area;
            FitBeside(sizeAt, {axis.maximumAddress, offsetAt, kLeastAutoArea, kAutoAreaStep});
            FitBeside(offsetAt, {axis.maximumAddress, sizeAt, 0, kAutoAreaStep});
        }
    }
    const auto usage = [&build](const char* name, uint32_t address, const char* tip) {
        Feature made = build.Boolean(name, address, true, Access::ReadWrite);
        made.Per("AutoFunctionAOISelector", kAutoAreas, kAutoAreaStride).Tip(tip).Visible("Expert").Setting();
        for (uint32_t area = 1; area < kAutoAreas; ++area) // the first area is used
            build.Memory().Set32(address + area * kAutoAreaStride, 0);
        return made;
    };
    usage("AutoFunctionAOIUsageIntensity", kAutoAreaIntensity,
          "Whether automatic exposure and gain look at the area.");
    usage("AutoFunctionAOIUsageWhiteBalance", kAutoAreaWhiteBalance,
          "Whether the automatic white balance looks at the area.")
        .ImplementedIf("ColourInquiry");
}

} // namespace vcam
