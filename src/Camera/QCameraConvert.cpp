// From the newest frame to a picture that the render library shows.
#include "Camera/QCamera.h"

#include "Camera/PixelFormat.h"

#include <QDebug>
#include <algorithm>
#include <cstring>
#include <new>

// --- sizes
// ------------------------------------------------------------------------------------------------------------------

bool QCamera::SetSizes(uint32_t frame, uint32_t display) {
    m_nFrameSize = frame;
    m_nDisplaySize = display;
    return true;
}

bool QCamera::GenerateFrameSize() {
    if (const auto sizes = FrameSizesOf(m_pixelType, m_nWidth * m_nHeight))
        return SetSizes(sizes->frame, sizes->display);
    long long payload = 0;
    if (!GetIntegerNodePropertyValue("PayloadSize", &payload))
        return false;
    return SetSizes(static_cast<uint32_t>(payload), static_cast<uint32_t>(payload));
}

bool QCamera::GenerateGDIFrameSize() {
    if (const auto sizes = GdiFrameSizesOf(m_pixelType, m_nWidth * m_nHeight))
        return SetSizes(sizes->frame, sizes->display);
    return GenerateFrameSize();
}

bool QCamera::IsBayerFrame() {
    OvGvspPixelType format = OV_GVSP_NONE;
    if (!GetCurPixelFormat(format))
        return false;
    m_pixelType = format;
    return IsBayer8(format) || IsBayer10or12(format) || IsBayerPacked(format) || IsBayer16(format);
}

bool QCamera::IsBayerFrame12() const {
    return IsBayer12(m_pixelType);
}

// --- one drawing step
// -------------------------------------------------------------------------------------------------------

void QCamera::DisplayVRRender() {
    void* const handle = m_pRender;
    if (!handle || !m_bRenderReady)
        return;
    if (!m_bGrabbing && !m_bRefreshOneFrame)
        return;
    m_bRefreshOneFrame = false;
    const bool jpeg = IsJPGFormat(m_pixelType);
    const int64_t number = jpeg ? DecodeNewestToDisplay() : CopyNewestToDisplay();
    if (number < 0)
        return;
    {
        const std::lock_guard<std::mutex> lock(m_displayMutex);
        ChangeToDisplayFrame();
        // The render library reads width times height pixels: a format that changed in the stream may want
        // more than the buffer was made for. The grab thread may change both at any moment.
        const uint32_t width = m_nWidth;
        const uint32_t height = m_nHeight;
        if (!DisplayBufferHolds(width, height)) {
            ++m_nDrawsRefused;
            return;
        }
        VR_UpdateFrameData(handle, m_pDisplayBuffer.get(), width, height, 0);
    }
    m_nLastDisplayed = m_nReceived.load();
    ++m_nDisplayed;
    CountDrawn(number);
    StatActualDisplayRate();
    const uint64_t window = m_playWnd;
    if (window)
        VR_Display(handle, 0, window);
}

// Display thread. Numbers count the frames received; they begin anew when the counters are cleared.
void QCamera::CountDrawn(int64_t number) {
    const int64_t before = m_nDrawn.exchange(number);
    if (number == before)
        ++m_nRedrawn;
    else
        m_nSkipped += number > before ? number - before - 1 : number - 1;
}

int64_t QCamera::CopyNewestToDisplay() {
    const std::lock_guard<CFairMutex> grab(m_grabMutex);
    const std::lock_guard<std::mutex> display(m_displayMutex);
    if (!m_pGrabBuffer || !m_pDisplayBuffer)
        return -1;
    std::memcpy(m_pDisplayBuffer.get(), m_pGrabBuffer.get(),
                std::min(m_nGrabBufferSize, m_nDisplayBufferSize));
    return m_nReceived;
}

int64_t QCamera::DecodeNewestToDisplay() {
    const std::lock_guard<CFairMutex> grab(m_grabMutex);
    if (!m_pGrabBuffer)
        return -1;
    _OV_CC_FRAME_OUT_INFO_ tail{};
    std::memcpy(&tail, m_pGrabBuffer.get() + m_nGrabBufferSize, sizeof tail);
    const std::lock_guard<std::mutex> display(m_displayMutex);
    if (!m_pDisplayBuffer)
        return -1;
    ParserJPG(m_pGrabBuffer.get(), std::min(tail.frameLength, m_nGrabBufferSize), m_pDisplayBuffer.get());
    return m_nReceived;
}

// The caller holds the display mutex.
bool QCamera::DisplayBufferHolds(uint32_t width, uint32_t height) const {
    tagVRPixelFormat format{};
    if (!m_pDisplayBuffer || !GetVRPixelFormat(m_renderPixelType, format))
        return false;
    const uint64_t pixels = static_cast<uint64_t>(width) * height;
    return pixels * (format == VR_PIXEL_MONO8 ? 1u : 3u) <= m_nDisplayBufferSize;
}

int QCamera::ParserJPG(const uint8_t* data, uint32_t length, uint8_t* destination) {
    if (!data)
        return 0;
    if (!EnsureMediaHandle())
        return 0;
    _OV_DECODE_INFO_ record{};
    record.source = data;
    record.sourceLength = length;
    record.decodeKind = 1;
    record.destination = destination;
    record.destinationCapacity = std::min(m_nDisplaySize.load(), m_nDisplayBufferSize);
    return OV_MP_Decode(m_pMedia, &record, length, 0) == OV_STATUS_OK ? 1 : 0;
}

// --- conversion; the caller holds the display mutex
// -------------------------------------------------------------------------

void QCamera::ChangeToDisplayFrame() {
    const bool bayer = IsBayerFrame();
    const OvGvspPixelType format = m_pixelType;
    if (bayer) {
        if (!ConvertDisplayBuffer(m_nFrameSize, OV_PIXEL_RGB8))
            qDebug("failed");
    } else if (IsMonoDeep(format)) {
        ConvertDisplayBuffer(0, GetGDIDisplayPixelFormat(format));
    } else if (IsYuv422(format)) {
        ConvertDisplayBuffer(0, OV_PIXEL_RGB8);
    }
}

// By way of the scratch buffer. A source length of 0 stands for the scratch buffer's size. When it fails, the
// unconverted bytes stay and go to the screen.
bool QCamera::ConvertDisplayBuffer(uint32_t sourceLength, uint32_t target) {
    const uint32_t frameSize = m_nFrameSize;
    if (!m_pScratch || m_nScratchSize < frameSize) {
        m_pScratch.reset(new (std::nothrow) uint8_t[frameSize]());
        m_nScratchSize = m_pScratch ? frameSize : 0;
        if (!m_pScratch)
            return true;
    }
    std::memcpy(m_pScratch.get(), m_pDisplayBuffer.get(), std::min(frameSize, m_nDisplayBufferSize));
    _OV_CONVERT_PIXEL_INFO_ record{};
    record.width = static_cast<uint16_t>(m_nWidth);
    record.height = static_cast<uint16_t>(m_nHeight);
    record.sourceType = GetConvertPixelFormat(m_pixelType);
    record.source = m_pScratch.get();
    record.sourceLength = sourceLength ? std::min(sourceLength, m_nScratchSize) : m_nScratchSize;
    record.destinationType = target;
    record.destination = m_pDisplayBuffer.get();
    record.destinationCapacity = std::min(m_nDisplaySize.load(), m_nDisplayBufferSize);
    record.bayerMethod = static_cast<uint32_t>(m_nBayerInterpolation);
    return OV_MP_ConvertPixelType(m_pMedia, &record) == OV_STATUS_OK;
}

// Of the drawing path that isn't in use.
void QCamera::ChangeGDIToDisplayFrame(OvGvspPixelType pixelType) {
    const std::lock_guard<std::mutex> lock(m_displayMutex);
    if (!m_pScratch || !m_pDisplayBuffer)
        return;
    _OV_CONVERT_PIXEL_INFO_ record{};
    record.width = static_cast<uint16_t>(m_nWidth);
    record.height = static_cast<uint16_t>(m_nHeight);
    record.sourceType = GetConvertPixelFormat(pixelType);
    record.source = m_pScratch.get();
    record.sourceLength = m_nScratchSize;
    record.destinationType = GetGDIDisplayPixelFormat(pixelType);
    record.destination = m_pDisplayBuffer.get();
    record.destinationCapacity = std::min(m_nDisplaySize.load(), m_nDisplayBufferSize);
    record.bayerMethod = static_cast<uint32_t>(m_nBayerInterpolation);
    OV_MP_ConvertPixelType(m_pMedia, &record);
}

// --- software white balance
// -------------------------------------------------------------------------------------------------

void QCamera::GetBayerWb(_OV_WHITE_BALANCE_PARAM_& gains) const {
    const std::lock_guard<std::mutex> lock(m_wbMutex);
    gains = m_gains;
}

void QCamera::SetBayerWb(const _OV_WHITE_BALANCE_PARAM_& gains) {
    const std::lock_guard<std::mutex> lock(m_wbMutex);
    m_gains = gains;
}

void QCamera::FillWhiteBalanceRecord(_OV_IMAGE_INFO_& record, OvGvspPixelType pixelType,
                                     uint8_t* data) const {
    record = {};
    record.sourceType = GetConvertPixelFormat(pixelType);
    record.source = data;
    record.width = static_cast<uint16_t>(m_nWidth);
    record.height = static_cast<uint16_t>(m_nHeight);
    record.sourceLength = OV_MP_GetPixelSize(record.sourceType, m_nWidth, m_nHeight, 0);
    record.outputCapacity = OV_MP_GetPixelSize(record.sourceType, m_nWidth, m_nHeight, 0);
}

// deliberate: the drawing path doesn't call it. The count and the flag are shared by all cameras.
void QCamera::BayerFrameWb(OvGvspPixelType pixelType, uint8_t* data) {
    static std::atomic<int> count{0};
    static std::atomic<bool> done{false};
    if (!data)
        return;
    _OV_WHITE_BALANCE_PARAM_ gains{};
    GetBayerWb(gains);
    const auto measure = [&] {
        _OV_IMAGE_INFO_ record;
        FillWhiteBalanceRecord(record, pixelType, data);
        if (OV_MP_GetWhiteBalance(m_pMedia, &record, &gains) == OV_STATUS_OK)
            SetBayerWb(gains);
    };
    const int mode = m_nBayerWbMode;
    if (mode == BAYER_WB_CONTINUOUS && count == 0)
        measure();
    const bool once = mode == BAYER_WB_ONCE && !done;
    if (once) {
        measure();
        m_nBayerWbMode = BAYER_WB_OFF;
    }
    if (once || mode == BAYER_WB_OFF) {
        done = false;
        count = 0;
    }
    _OV_IMAGE_INFO_ record;
    FillWhiteBalanceRecord(record, pixelType, data);
    OV_MP_WhiteBalanceProcess(m_pMedia, &record, &gains);
    if (++count >= 20)
        count = 0;
}
