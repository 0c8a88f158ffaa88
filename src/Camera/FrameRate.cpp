#include "Camera/FrameRate.h"

#include <algorithm>

namespace {

constexpr int kNominalWithoutFrames = 30;
constexpr int kLongestInTriggerMode = 30;

uint32_t Truncated(float rate) {
    return rate > 0 ? static_cast<uint32_t>(std::min(rate, 1e9f)) : 0u;
}

} // namespace

void CRateMeter::Tick(int64_t count, double nowMs, float& rate) {
    if (count == 0)
        m_dStartMs = nowMs;
    if (m_fElapsedMs >= 1000.0f) {
        rate = 1000.0f / m_fElapsedMs * static_cast<float>(count - m_nMark);
        m_nMark = count;
        m_dStartMs = nowMs;
    }
    m_fElapsedMs = static_cast<float>(nowMs - m_dStartMs);
}

int CDisplayPacer::Step(int configRate, float actualRate, float displayRate, bool triggerMode) {
    const auto wanted = static_cast<uint32_t>(std::max(configRate, 0));
    const uint32_t arriving = Truncated(actualRate);
    const uint32_t target = arriving <= wanted ? arriving : wanted;
    const uint32_t measured = Truncated(displayRate);
    const int nominal = target == 0 ? kNominalWithoutFrames : static_cast<int>(1000u / target);
    if (target > measured && target - measured >= 2)
        ++m_nAdjustment;
    else if (measured > target && measured - target >= 2)
        --m_nAdjustment;
    const int64_t wantedInterval = static_cast<int64_t>(nominal) - m_nAdjustment;
    const auto interval = static_cast<int>(std::clamp<int64_t>(wantedInterval, 1, 1000));
    return triggerMode ? std::min(interval, kLongestInTriggerMode) : interval;
}

float BandwidthOf(bool jpeg, uint32_t lastLength, uint32_t width, uint32_t height, int pixelBits,
                  float frameRate) {
    if (jpeg)
        return static_cast<float>(lastLength) * frameRate / 1000.0f / 1000.0f;
    return static_cast<float>(width) * frameRate * static_cast<float>(height) *
           static_cast<float>(pixelBits) / 1000.0f / 1000.0f;
}
