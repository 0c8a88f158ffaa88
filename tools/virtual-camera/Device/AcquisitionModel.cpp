// Features of acquisition: modes, rates and exposure.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <algorithm>
#include <cmath>

namespace vcam {

using namespace feature;

namespace {
constexpr double kMostFrameRate = 10000; // hertz
constexpr double kMostLineRate = 100000; // hertz
} // namespace

void DeviceModel::DefineAcquisition(FeatureBuilder& build) {
    build.Category("AcquisitionControl");
    std::vector<EnumValue> modes = {{"Continuous", 0}, {"SingleFrame", 1}, {"MultiFrame", 2}};
    build.Enumeration("AcquisitionMode", kAcquisitionMode, 0, Access::ReadWrite, modes)
        .Tip("How many frames an acquisition takes.")
        .Locked()
        .Setting();
    struct Order {
        const char* name;
        uint32_t address;
        void (StreamControl::*order)();
        const char* tip;
        const char* visibility;
    };
    for (const Order& order : {Order{"AcquisitionStart", kAcquisitionStart, &StreamControl::StartAcquisition,
                                     "Starts taking frames.", "Beginner"},
                               Order{"AcquisitionStop", kAcquisitionStop, &StreamControl::StopAcquisition,
                                     "Stops taking frames at the end of the present one.", "Beginner"},
                               Order{"AcquisitionAbort", kAcquisitionAbort, &StreamControl::AbortAcquisition,
                                     "Stops at once.", "Expert"}}) {
        build
            .Command(order.name, order.address,
                     [this, what = order.order] {
                         if (m_stream != nullptr)
                             (m_stream->*what)();
                     })
            .Tip(order.tip)
            .Visible(order.visibility);
    }
    build.Integer("AcquisitionFrameCount", kAcquisitionFrameCount, 1, Access::ReadWrite)
        .Tip("Frames of an acquisition in the mode MultiFrame.")
        .Range(1, 65535)
        .AvailableIf("SeveralFrames")
        .Locked()
        .Setting();
    build.Formula("SeveralFrames", {{"MODE", "AcquisitionMode_Val"}}, "MODE = 2");
}

void DeviceModel::DefineRates(FeatureBuilder& build) {
    build.Category("AcquisitionControl");
    const auto ofAreas = [this](Feature& feature) {
        if (m_traits.full) // a line scan camera keeps time by lines
            feature.ImplementedIf("AreaScanInquiry");
    };
    Feature enable =
        build.Boolean("AcquisitionFrameRateEnable", kAcquisitionFrameRateEnable, true, Access::ReadWrite);
    enable
        .Tip("Holds the frame rate at AcquisitionFrameRate.",
             "Off, the camera takes as many frames as it can.")
        .OnWrite(Changed())
        .Setting();
    ofAreas(enable);
    Feature rate =
        build.Float("AcquisitionFrameRate", kAcquisitionFrameRate, m_config.frameRate, Access::ReadWrite);
    rate.Tip("Frames a second that are wanted.", "ResultingFrameRate tells what comes of it.")
        .Unit("Hz")
        .RangeF(0.1, kMostFrameRate)
        .OnWrite(Changed())
        .Setting();
    ofAreas(rate);
    RegisterHooks resulting;
    resulting.beforeRead = [this] { m_memory.SetDouble(kResultingFrameRate, 1e6 / FramePeriodUs()); };
    build.Float("ResultingFrameRate", kResultingFrameRate, 0, Access::ReadOnly, resulting)
        .Tip("Frames a second that come of all settings.",
             "Exposure, read-out, link speed and packet size have their part in it.")
        .Unit("Hz")
        .Volatile(1000);
}

void DeviceModel::DefineLineRates(FeatureBuilder& build) {
    build.Category("AcquisitionControl");
    build.Boolean("AcquisitionLineRateEnable", kAcquisitionLineRateEnable, true, Access::ReadWrite)
        .Tip("Holds the line rate at AcquisitionLineRate.", "Off, the camera takes as many lines as it can.")
        .ImplementedIf("LineScanInquiry")
        .OnWrite(Changed())
        .Setting();
    const double rate = std::clamp(m_config.frameRate * m_config.sensorHeight, 1.0, kMostLineRate);
    build.Float("AcquisitionLineRate", kAcquisitionLineRate, rate, Access::ReadWrite)
        .Tip("Lines a second that are wanted.", "ResultingLineRate tells what comes of it.")
        .Unit("Hz")
        .RangeF(1, kMostLineRate)
        .ImplementedIf("LineScanInquiry")
        .OnWrite(Changed())
        .Setting();
    RegisterHooks resulting;
    resulting.beforeRead = [this] {
        m_memory.Set32(kResultingLineRate, static_cast<uint32_t>(std::lround(1e6 / LinePeriodUs())));
    };
    build.Integer("ResultingLineRate", kResultingLineRate, 0, Access::ReadOnly, resulting)
        .Tip("Lines a second that come of all settings.")
        .Unit("Hz")
        .ImplementedIf("LineScanInquiry")
        .Volatile(1000);
}

} // namespace vcam
