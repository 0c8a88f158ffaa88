// The automatic functions, a step with each frame: exposure time, gain and white balance.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <algorithm>
#include <cmath>

namespace vcam {

using namespace feature;

namespace {

constexpr uint32_t kAutoOff = 0;
constexpr uint32_t kAutoOnce = 1;

// A third of the way to the target with each frame, the rest at once when it is near.
double StepTowards(double now, double target) {
    const double next = now + (target - now) / 3;
    return std::abs(target - next) <= 0.01 * std::abs(target) + 0.01 ? target : next;
}

} // namespace

bool DeviceModel::StepAutomatics() {
    const bool exposing = On(kExposureAuto);
    const bool amplifying = On(kGainAuto);
    bool changed = false;
    if (exposing || amplifying) {
        const bool stepped = StepBrightness(exposing, amplifying);
        changed = stepped;
        for (const uint32_t automatic : {kExposureAuto, kGainAuto})
            EndOnce(automatic, stepped);
    }
    if (On(kBalanceWhiteAuto)) {
        const bool stepped = StepWhiteBalance();
        changed = changed || stepped;
        EndOnce(kBalanceWhiteAuto, stepped);
    }
    return changed;
}

void DeviceModel::EndOnce(uint32_t automatic, bool stepped) {
    if (!stepped && m_memory.Get32(automatic) == kAutoOnce)
        m_memory.Set32(automatic, kAutoOff);
}

// The scene is right at the nominal exposure without gain. The exposure goes first: it brings no noise.
bool DeviceModel::StepBrightness(bool exposing, bool amplifying) {
    const double exposure = m_memory.GetDouble(kExposureTime);
    const double gain = m_memory.GetDouble(kGain);
    double nextExposure = exposure;
    double nextGain = gain;
    if (exposing) {
        const double fixedGain = amplifying ? 0 : gain;
        double longest = MostExposure();
        if (m_traits.lineScan && On(kAcquisitionLineRateEnable))
            longest = std::min(longest, 1e6 / m_memory.GetDouble(kAcquisitionLineRate));
        if (!m_traits.lineScan && On(kAcquisitionFrameRateEnable))
            longest = std::min(longest, 1e6 / m_memory.GetDouble(kAcquisitionFrameRate));
        longest = std::max(longest, LeastExposure());
        const double target = NominalExposure() / std::pow(10.0, fixedGain / 20);
        nextExposure = StepTowards(exposure, std::clamp(target, LeastExposure(), longest));
    }
    if (amplifying) {
        const double target = 20 * std::log10(NominalExposure() / nextExposure);
        nextGain = StepTowards(gain, std::clamp(target, 0.0, kMostGain));
    }
    m_memory.SetDouble(kExposureTime, nextExposure);
    m_memory.SetDouble(kGain, nextGain);
    return nextExposure != exposure || nextGain != gain;
}

// The scene's grey is grey without any gain of a colour.
bool DeviceModel::StepWhiteBalance() {
    bool changed = false;
    for (uint32_t component = 0; component < 3; ++component) {
        const uint32_t ratio = m_memory.Get32(kBalanceRatio + 4 * component);
        const auto next = static_cast<uint32_t>(std::lround(StepTowards(ratio, kNeutralBalance)));
        m_memory.Set32(kBalanceRatio + 4 * component, next);
        changed = changed || next != ratio;
    }
    return changed;
}

} // namespace vcam
