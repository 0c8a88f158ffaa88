// The automatic functions, a step with each frame: exposure time, gain and white balance. They measure the
// scene in the areas that are marked for them, as the present settings make it come out.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"
#include "Picture/SceneMeasure.h"

#include <algorithm>
#include <cmath>

namespace vcam {

using namespace feature;

namespace {

constexpr uint32_t kAutoOff = 0;
constexpr uint32_t kAutoOnce = 1;
constexpr double kSettledPart = 0.005; // of an exposure time or a colour's gain
constexpr double kSettledDecibels = 0.05;
constexpr double kMostFactor = 8;        // that one measurement asks for: clipped areas tell little
constexpr uint32_t kMeasuredLines = 256; // of a scene without an end

// A third of the way to the target with each frame, the rest at once when it is near.
double StepTowards(double now, double target) {
    const double next = now + (target - now) / 3;
    return std::abs(target - next) <= 0.01 * std::abs(target) + 0.01 ? target : next;
}

double Luma(const SceneMeans& means) {
    return 0.299 * means.red + 0.587 * means.green + 0.114 * means.blue;
}

// What brightness is aimed at: that of the whole scene at the nominal exposure.
double AimOf(const Scene& scene) {
    PictureSettings settings;
    settings.width = scene.Width();
    settings.height = std::min(scene.Height(), scene.Height() == kEndless ? kMeasuredLines : kEndless);
    Moment moment;
    moment.rows = settings.height;
    return Luma(MeasureScene(scene, settings, {0, 0, settings.width, settings.height}, moment));
}

} // namespace

bool DeviceModel::StepAutomatics() {
    const bool exposing = On(kExposureAuto);
    const bool amplifying = On(kGainAuto);
    bool changed = false;
    if ((exposing || amplifying) && !On(kHdrEnable)) { // the sets of HDR have values of their own
        changed = StepBrightness(exposing, amplifying);
        for (const uint32_t automatic : {kExposureAuto, kGainAuto})
            EndOnce(automatic, changed);
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

// The mean of the areas that are marked for this use; of the whole picture if there is none.
SceneMeans DeviceModel::Measure(uint32_t usage) const {
    const PictureSettings settings = SettingsOfFrame(Picture(), 0);
    const std::shared_ptr<const Scene> scene = LookedAt();
    Moment moment;
    moment.rows = settings.height;
    std::vector<Rect> areas;
    for (uint32_t area = 0; area < kAutoAreas * kAutoAreaStride; area += kAutoAreaStride) {
        if (On(usage + area))
            areas.push_back({m_memory.Get32(kAutoAreaOffsetX + area), m_memory.Get32(kAutoAreaOffsetY + area),
                             m_memory.Get32(kAutoAreaWidth + area), m_memory.Get32(kAutoAreaHeight + area)});
    }
    if (areas.empty())
        areas.push_back({settings.offsetX, settings.offsetY, settings.width, settings.height});
    SceneMeans sum;
    for (const Rect& area : areas) {
        const SceneMeans means = MeasureScene(*scene, settings, area, moment);
        const double part = 1.0 / static_cast<double>(areas.size());
        sum.red += part * means.red;
        sum.green += part * means.green;
        sum.blue += part * means.blue;
        sum.luminance += part * means.luminance;
    }
    return sum;
}

// The exposure goes first: it brings no noise.
bool DeviceModel::StepBrightness(bool exposing, bool amplifying) {
    const double exposure = m_memory.GetDouble(kExposureTime);
    const double gain = m_memory.GetDouble(kGain);
    const double measured = std::max(1.0, Luma(Measure(kAutoAreaIntensity)));
    const double wanted = std::clamp(AimOf(*LookedAt()) / measured, 1 / kMostFactor, kMostFactor);
    const double amplified = std::pow(10.0, gain / 20);
    const double light = exposure * amplified * wanted;
    double nextExposure = exposure;
    double nextGain = gain;
    if (exposing) {
        double longest = MostExposure();
        if (m_traits.lineScan && On(kAcquisitionLineRateEnable))
            longest = std::min(longest, 1e6 / m_memory.GetDouble(kAcquisitionLineRate));
        if (!m_traits.lineScan && On(kAcquisitionFrameRateEnable))
            longest = std::min(longest, 1e6 / m_memory.GetDouble(kAcquisitionFrameRate));
        longest = std::max(longest, LeastExposure());
        const double target = light / (amplifying ? 1 : amplified);
        nextExposure = StepTowards(exposure, std::clamp(target, LeastExposure(), longest));
    }
    if (amplifying) {
        const double target = 20 * std::log10(light / nextExposure);
        nextGain = StepTowards(gain, std::clamp(target, 0.0, kMostGain));
    }
    if (std::abs(nextExposure - exposure) <= kSettledPart * exposure &&
        std::abs(nextGain - gain) <= kSettledDecibels)
        return false;
    m_memory.SetDouble(kExposureTime, nextExposure);
    m_memory.SetDouble(kGain, nextGain);
    return true;
}

bool DeviceModel::StepWhiteBalance() {
    const std::array<uint32_t, 3> aim = GreyWorldBalance(Measure(kAutoAreaWhiteBalance));
    bool changed = false;
    for (uint32_t component = 0; component < aim.size(); ++component) {
        const uint32_t ratio = m_memory.Get32(kBalanceRatio + 4 * component);
        const auto next = static_cast<uint32_t>(std::lround(StepTowards(ratio, aim[component])));
        if (std::abs(static_cast<double>(next) - ratio) <= kSettledPart * ratio)
            continue;
        m_memory.Set32(kBalanceRatio + 4 * component, next);
        changed = true;
    }
    return changed;
}

} // namespace vcam
