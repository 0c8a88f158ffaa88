#include "UI/MainWindow/PreviewFigures.h"

#include <algorithm>

namespace {

constexpr float kSeriousRatio = 0.1F;
constexpr int64_t kSeriousCount = 100;
constexpr float kRateEpsilon = 1e-07F;

// Of a value in thousandths, whose sums are exact: grey stays grey.
int CheckYUVValue(int thousandths) {
    return std::clamp(thousandths, 0, 255000) / 1000;
}

} // namespace

_YUV_ YuvOf(int r, int g, int b) {
    return {CheckYUVValue(299 * r + 587 * g + 114 * b), CheckYUVValue(-147 * r - 289 * g + 436 * b + 128000),
            CheckYUVValue(615 * r - 515 * g - 100 * b + 128000)};
}

bool CNetworkWatch::Update(int64_t receivedBytes, int64_t lostPackets, int packetSize) {
    const auto received = static_cast<int32_t>(packetSize > 0 ? receivedBytes / packetSize : 0);
    bool serious = false;
    if (received != m_nLastReceived) {
        const float ratio =
            static_cast<float>(lostPackets - m_nLastLost) / static_cast<float>(received - m_nLastReceived);
        serious = ratio > kSeriousRatio && lostPackets > kSeriousCount;
    }
    m_nLastLost = lostPackets;
    m_nLastReceived = received;
    return serious;
}

float ShownDisplayRate(float display, float acquisition, float configured) {
    float rate = display;
    if (rate - acquisition > kRateEpsilon)
        rate = acquisition;
    if (rate - configured > kRateEpsilon)
        rate = configured;
    return rate;
}
