// Features of exposure and gain, and the automatic functions that choose both and the white balance.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace feature;

namespace {

constexpr uint32_t kAutoOff = 0;
const std::vector<EnumValue> kAuto = {{"Off", kAutoOff}, {"Once", 1}, {"Continuous", 2}};
constexpr double kLeastExposure = 10; // microseconds
constexpr double kMostExposure = 10000000;
constexpr double kLeastLineExposure = 2;
constexpr double kMostLineExposure = 10000;
} // namespace

double DeviceModel::LeastExposure() const {
    return m_traits.lineScan ? kLeastLineExposure : kLeastExposure;
}

double DeviceModel::MostExposure() const {
    return m_traits.lineScan ? kMostLineExposure : kMostExposure;
}

void DeviceModel::DefineExposure(FeatureBuilder& build) {
    build.Category("AcquisitionControl");
    std::vector<EnumValue> modes = {{"Timed", 0}};
    if (m_traits.full)
        modes.push_back({"TriggerWidth", 1});
    build.Enumeration("ExposureMode", kExposureMode, 0, Access::ReadWrite, modes)
        .Tip("What ends the exposure.",
             "Timed: ExposureTime. TriggerWidth: the end of the pulse at the line that triggers the frame.")
        .Locked()
        .Setting();
    Feature time = build.Float("ExposureTime", kExposureTime, NominalExposure(), Access::ReadWrite);
    time.Tip("How long a frame is exposed.")
        .Unit("us")
        .As("Logarithmic")
        .LockedIf("ExposureTimeAutomatic", [this] { return On(kExposureAuto); })
        .RangeF(LeastExposure(), MostExposure())
        .OnWrite(Changed())
        .Setting()
        .Volatile();
    if (m_traits.full) {
        time.AvailableIf("ExposureTimed");
        build.Formula("ExposureTimed", {{"MODE", "ExposureMode_Val"}}, "MODE = 0");
    }
    build.Formula("ExposureTimeAutomatic", {{"AUTO", "ExposureAuto_Val"}}, "AUTO <> 0");
    build.Enumeration("ExposureAuto", kExposureAuto, kAutoOff, Access::ReadWrite, kAuto)
        .Tip("Lets the camera choose the exposure time.",
             "Once: until it fits, then Off. Continuous: all the time.")
        .OnWrite(Changed())
        .Setting()
        .Volatile(500);
}

void DeviceModel::DefineGain(FeatureBuilder& build) {
    build.Category("AnalogControl");
    build.Float("Gain", kGain, 0, Access::ReadWrite)
        .Tip("Amplification, noise included.")
        .Unit("dB")
        .As("Linear")
        .LockedIf("GainAutomatic", [this] { return On(kGainAuto); })
        .RangeF(0, kMostGain)
        .OnWrite(Changed())
        .Setting()
        .Volatile();
    build.Formula("GainAutomatic", {{"AUTO", "GainAuto_Val"}}, "AUTO <> 0");
    build.Enumeration("GainAuto", kGainAuto, kAutoOff, Access::ReadWrite, kAuto)
        .Tip("Lets the camera choose the gain.", "Once: until it fits, then Off. Continuous: all the time.")
        .OnWrite(Changed())
        .Setting()
        .Volatile(500);
}

void DeviceModel::DefineWhiteBalance(FeatureBuilder& build) {
    build.Category("AnalogControl");
    // The settings of a user set that depend on this selector are kept whatever it says.
    build
        .Enumeration("BalanceRatioSelector", kBalanceRatioSelector, 0, Access::ReadWrite,
                     {{"Red", 0}, {"Green", 1}, {"Blue", 2}})
        .Tip("The colour that BalanceRatio belongs to.")
        .ImplementedIf("ColourInquiry")
        .Setting();
    build.Integer("BalanceRatio", kBalanceRatio, kNeutralBalance, Access::ReadWrite)
        .Per("BalanceRatioSelector", 3, 4)
        .Tip("Gain of the colour, in 1024ths.")
        .ImplementedIf("ColourInquiry")
        .LockedIf("BalanceWhiteAutomatic", [this] { return On(kBalanceWhiteAuto); })
        .Range(1, kMostBalance)
        .OnWrite(Changed())
        .Setting()
        .Volatile();
    build.Formula("BalanceWhiteAutomatic", {{"AUTO", "BalanceWhiteAuto_Val"}}, "AUTO <> 0");
    build.Enumeration("BalanceWhiteAuto", kBalanceWhiteAuto, kAutoOff, Access::ReadWrite, kAuto)
        .Tip("Lets the camera choose the white balance.",
             "Once: until grey is grey, then Off. Continuous: all the time.")
        .ImplementedIf("ColourInquiry")
        .OnWrite(Changed())
        .Setting()
        .Volatile(500);
}

} // namespace vcam
