// The facts that a camera writes over the first pixels of a frame.
#include "Camera/QCamera.h"

namespace {

constexpr uint32_t kReadableBehindFrame = 2048 + sizeof(_OV_CC_FRAME_OUT_INFO_);
constexpr int kWhiteBalanceEntry = 4;

} // namespace

void QCamera::ParseEmbeddedSelector() {
    long long value = 0;
    if (!GetIntegerNodePropertyValue("FrameSpecInfo_Reg", &value))
        return;
    if (value >> EMBEDDED_WHITE_BALANCE & 1) {
        int former = 0;
        // deliberate: only a probe that leaves the camera as it was. Whether it offers the entry has no
        // effect, because the selector is the whole register in the end.
        if (GetEnumerationNodePropertyValue("FrameSpecInfoSelector", &former) &&
            SetEnumerationNodePropertyValue("FrameSpecInfoSelector", kWhiteBalanceEntry))
            SetEnumerationNodePropertyValue("FrameSpecInfoSelector", former);
    }
    const std::lock_guard<std::mutex> lock(m_embeddedMutex);
    m_nEmbeddedSelector = static_cast<uint64_t>(value);
}

void QCamera::ParseEmbeddedImageInfo(const uint8_t* data) {
    if (!data)
        return;
    // Cleared first: who changes the register while it is being read wants it read once more.
    if (m_bRefreshEmbedded.exchange(false))
        ParseEmbeddedSelector();
    _EMBEDDED_IMAGE_INFO_ info{};
    {
        const std::lock_guard<CFairMutex> grab(m_grabMutex);
        ParseEmbeddedImageInfoByBitType(data, info);
    }
    const std::lock_guard<std::mutex> lock(m_embeddedMutex);
    m_embedded = info;
}

void QCamera::ParseEmbeddedImageInfoByBitType(const uint8_t* data, _EMBEDDED_IMAGE_INFO_& info) {
    if (!data)
        return;
    uint64_t selector = 0;
    {
        const std::lock_guard<std::mutex> lock(m_embeddedMutex);
        selector = m_nEmbeddedSelector;
    }
    info = DecodeEmbeddedBlock(data, static_cast<size_t>(m_nGrabBufferSize) + kReadableBehindFrame, selector);
}

void QCamera::GetEmbeddedImageInfo(long& selector, _EMBEDDED_IMAGE_INFO_& info) const {
    const std::lock_guard<std::mutex> lock(m_embeddedMutex);
    selector = static_cast<long>(m_nEmbeddedSelector);
    info = m_embedded;
}
