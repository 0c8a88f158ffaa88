// Features of acquisition, exposure, gain and trigger.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <algorithm>
#include <cmath>

namespace vcam {

using namespace feature;

namespace {
constexpr uint32_t kAutoOff = 0;
constexpr uint32_t kAutoOnce = 1;
constexpr uint32_t kAutoContinuous = 2;
const std::vector<EnumValue> kAuto = {
    {"Off", kAutoOff}, {"Once", kAutoOnce}, {"Continuous", kAutoContinuous}};
constexpr double kLeastExposure = 10; // microseconds
constexpr double kMostExposure = 10000000;
constexpr double kMostGain = 24; // decibels
} // namespace

void DeviceModel::DefineAcquisition(FeatureBuilder& build) {
    build.Category("AcquisitionControl");
    RegisterHooks idle;
    idle.check = WhileIdle();
    build
        .Enumeration("AcquisitionMode", kAcquisitionMode, 0, Access::ReadWrite,
                     {{"Continuous", 0}, {"SingleFrame", 1}, {"MultiFrame", 2}}, idle)
        .Tip("How many frames an acquisition takes.")
        .Locked();
    build
        .Command("AcquisitionStart", kAcquisitionStart,
                 [this] {
                     if (m_stream != nullptr)
                         m_stream->StartAcquisition();
                 })
        .Tip("Starts taking frames.");
    build
        .Command("AcquisitionStop", kAcquisitionStop,
                 [this] {
                     if (m_stream != nullptr)
                         m_stream->StopAcquisition();
                 })
        .Tip("Stops taking frames at the end of the present one.");
    build
        .Command("AcquisitionAbort", kAcquisitionAbort,
                 [this] {
                     if (m_stream != nullptr)
                         m_stream->AbortAcquisition();
                 })
        .Tip("Stops at once.")
        .Visible("Expert");
    RegisterHooks count;
    count.check = WhileIdle(InRange(1, 65535));
    build.Integer("AcquisitionFrameCount", kAcquisitionFrameCount, 1, Access::ReadWrite, count)
        .Tip("Frames of an acquisition in the mode MultiFrame.")
        .Range(1, 65535)
        .Locked();

    RegisterHooks changes;
    changes.written = Changed();
    build.Boolean("AcquisitionFrameRateEnable", kAcquisitionFrameRateEnable, true, Access::ReadWrite, changes)
        .Tip("Holds the frame rate at AcquisitionFrameRate; off, the camera takes as many frames as it can.");
    RegisterHooks rate;
    rate.check = InRangeF(0.1, 10000);
    rate.written = Changed();
    build.Float("AcquisitionFrameRate", kAcquisitionFrameRate, m_config.frameRate, Access::ReadWrite, rate)
        .Tip("Frames a second that are wanted.")
        .Unit("Hz")
        .RangeF(0.1, 10000);
    RegisterHooks resulting;
    resulting.beforeRead = [this] { m_memory.SetDouble(kResultingFrameRate, 1e6 / FramePeriodUs()); };
    build.Float("ResultingFrameRate", kResultingFrameRate, 0, Access::ReadOnly, resulting)
        .Tip("Frames a second that come of all settings.")
        .Unit("Hz")
        .Volatile();
}

// While the camera chooses the value itself, nobody else does.
Check DeviceModel::WhileManual(uint32_t automatic, Check further) const {
    return [this, automatic, further = std::move(further)](const Bytes& proposed) {
        return m_memory.Get32(automatic) != 0 ? Status::WriteProtect : further(proposed);
    };
}

void DeviceModel::DefineExposure(FeatureBuilder& build) {
    RegisterHooks changes;
    changes.written = Changed();
    RegisterHooks exposure;
    exposure.check = WhileManual(kExposureAuto, InRangeF(kLeastExposure, kMostExposure));
    exposure.written = Changed();
    build.Float("ExposureTime", kExposureTime, kNominalExposure, Access::ReadWrite, exposure)
        .Tip("How long a frame is exposed.")
        .Unit("us")
        .Face("pIsLocked", "ExposureTimeAutomatic")
        .RangeF(kLeastExposure, kMostExposure)
        .Volatile();
    build.Formula("ExposureTimeAutomatic", {{"AUTO", "ExposureAuto_Val"}}, "AUTO != 0");
    build.Enumeration("ExposureAuto", kExposureAuto, kAutoOff, Access::ReadWrite, kAuto, changes)
        .Tip("Lets the camera choose the exposure time.")
        .Volatile(500);
    build.Enumeration("ExposureMode", kExposureMode, 0, Access::ReadWrite, {{"Timed", 0}})
        .Tip("What ends the exposure.");

    build.Category("AnalogControl");
    RegisterHooks gain;
    gain.check = WhileManual(kGainAuto, InRangeF(0, kMostGain));
    gain.written = Changed();
    build.Float("Gain", kGain, 0, Access::ReadWrite, gain)
        .Tip("Amplification, noise included.")
        .Unit("dB")
        .Face("pIsLocked", "GainAutomatic")
        .RangeF(0, kMostGain)
        .Volatile();
    build.Formula("GainAutomatic", {{"AUTO", "GainAuto_Val"}}, "AUTO != 0");
    build.Enumeration("GainAuto", kGainAuto, kAutoOff, Access::ReadWrite, kAuto, changes)
        .Tip("Lets the camera choose the gain.")
        .Volatile(500);
}

// A third of the way to the target with each frame, the rest at once when it is near.
double DeviceModel::StepTowards(double now, double target) {
    const double next = now + (target - now) / 3;
    return std::abs(target - next) <= 0.01 * std::abs(target) + 0.01 ? target : next;
}

bool DeviceModel::StepAutomatics() {
    const bool exposing = m_memory.Get32(kExposureAuto) != kAutoOff;
    const bool amplifying = m_memory.Get32(kGainAuto) != kAutoOff;
    if (!exposing && !amplifying)
        return false;
    const double exposure = m_memory.GetDouble(kExposureTime);
    const double gain = m_memory.GetDouble(kGain);
    double nextExposure = exposure;
    double nextGain = gain;
    // The scene is right at the nominal exposure without gain. The exposure goes first: it brings no noise.
    if (exposing) {
        const double fixedGain = amplifying ? 0 : gain;
        const double longest = m_memory.Get32(kAcquisitionFrameRateEnable) != 0
                                   ? std::min(kMostExposure, 1e6 / m_memory.GetDouble(kAcquisitionFrameRate))
                                   : kMostExposure;
        const double target = kNominalExposure / std::pow(10.0, fixedGain / 20);
        nextExposure = StepTowards(exposure, std::clamp(target, kLeastExposure, longest));
    }
    if (amplifying) {
        const double target = 20 * std::log10(kNominalExposure / nextExposure);
        nextGain = StepTowards(gain, std::clamp(target, 0.0, kMostGain));
    }
    m_memory.SetDouble(kExposureTime, nextExposure);
    m_memory.SetDouble(kGain, nextGain);
    const bool changed = nextExposure != exposure || nextGain != gain;
    for (const uint32_t automatic : {kExposureAuto, kGainAuto}) {
        if (!changed && m_memory.Get32(automatic) == kAutoOnce)
            m_memory.Set32(automatic, kAutoOff);
    }
    return changed;
}

void DeviceModel::DefineTrigger(FeatureBuilder& build) {
    build.Category("AcquisitionControl");
    const std::vector<EnumValue> onOff = {{"Off", 0}, {"On", 1}};
    const std::vector<EnumValue> sources = {
        {"Software", 0}, {"Line0", 1}, {"Line1", 2}, {"Line2", 3}, {"Line3", 4}};
    const std::vector<EnumValue> edges = {{"RisingEdge", 0}, {"FallingEdge", 1}};
    build
        .Enumeration("TriggerSelector", kTriggerSelector, 0, Access::ReadWrite,
                     {{"FrameStart", 0}, {"AcquisitionStart", 1}})
        .Tip("The trigger that the features below belong to.")
        .Face("pSelected", "TriggerMode")
        .Face("pSelected", "TriggerSource")
        .Face("pSelected", "TriggerActivation")
        .Face("pSelected", "TriggerDelay")
        .Face("pSelected", "TriggerSoftware");
    RegisterHooks changes;
    changes.written = Changed();
    RegisterHooks delay;
    delay.check = InRangeF(0, 1000000);
    delay.written = Changed();
    // The second set is not in the XML by itself: the index of the first leads there.
    const uint32_t second = TriggerRegister(TriggerKind::AcquisitionStart, 0);
    build.Memory().Define32(second + kTriggerModeOffset, 0, Access::ReadWrite,
                            {{}, OneOf({0, 1}), changes.written});
    build.Memory().Define32(second + kTriggerSourceOffset, 0, Access::ReadWrite,
                            {{}, InRange(0, 4), changes.written});
    build.Memory().Define32(second + kTriggerActivationOffset, 0, Access::ReadWrite, {{}, OneOf({0, 1}), {}});
    build.Memory().DefineDouble(second + kTriggerDelayOffset, 0, Access::ReadWrite, delay);

    const auto indexed = [](Feature made) {
        made.RegisterNode().Index("TriggerSelector_Val", kTriggerSetStride);
        return made;
    };
    indexed(build.Enumeration("TriggerMode", kTriggerSets + kTriggerModeOffset, 0, Access::ReadWrite, onOff,
                              changes))
        .Tip("Whether the trigger is needed.");
    indexed(build.Enumeration("TriggerSource", kTriggerSets + kTriggerSourceOffset, 0, Access::ReadWrite,
                              sources, changes))
        .Tip("Where the trigger comes from.");
    indexed(build.Enumeration("TriggerActivation", kTriggerSets + kTriggerActivationOffset, 0,
                              Access::ReadWrite, edges))
        .Tip("The edge that counts.");
    indexed(build.Float("TriggerDelay", kTriggerSets + kTriggerDelayOffset, 0, Access::ReadWrite, delay))
        .Tip("From the trigger to the exposure.")
        .Unit("us")
        .RangeF(0, 1000000);
    build.Command("TriggerSoftware", kTriggerSoftware, [this] { Trigger(TriggerSource::Software); })
        .Tip("Gives a trigger.");
}

} // namespace vcam
