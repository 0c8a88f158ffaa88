// Features of acquisition, exposure, gain and trigger.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace feature;

namespace {
const std::vector<EnumValue> kAuto = {{"Off", 0}, {"Once", 1}, {"Continuous", 2}};
}

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

void DeviceModel::DefineExposure(FeatureBuilder& build) {
    RegisterHooks exposure;
    exposure.check = InRangeF(10, 10000000);
    exposure.written = Changed();
    build.Float("ExposureTime", kExposureTime, kNominalExposure, Access::ReadWrite, exposure)
        .Tip("How long a frame is exposed.")
        .Unit("us")
        .RangeF(10, 10000000)
        .Volatile();
    RegisterHooks changes;
    changes.written = Changed();
    build.Enumeration("ExposureAuto", kExposureAuto, 0, Access::ReadWrite, kAuto, changes)
        .Tip("Lets the camera choose the exposure time.")
        .Volatile(500);
    build.Enumeration("ExposureMode", kExposureMode, 0, Access::ReadWrite, {{"Timed", 0}})
        .Tip("What ends the exposure.");

    build.Category("AnalogControl");
    RegisterHooks gain;
    gain.check = InRangeF(0, 24);
    gain.written = Changed();
    build.Float("Gain", kGain, 0, Access::ReadWrite, gain)
        .Tip("Amplification, noise included.")
        .Unit("dB")
        .RangeF(0, 24)
        .Volatile();
    build.Enumeration("GainAuto", kGainAuto, 0, Access::ReadWrite, kAuto, changes)
        .Tip("Lets the camera choose the gain.")
        .Volatile(500);
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
