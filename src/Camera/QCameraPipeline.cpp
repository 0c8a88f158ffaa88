// From the library to the queue: starting and stopping a stream, the grab thread and the save thread.
#include "Camera/QCamera.h"

#include "Camera/PixelFormat.h"
#include "Camera/QCameraOwner.h"
#include "Camera/QFrameBufManager.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

// Behind the pixels stands the frame's record (the frame tail); between them the library may write a little
// beyond the frame size.
constexpr uint32_t kFrameTail = sizeof(_OV_CC_FRAME_OUT_INFO_);
constexpr uint32_t kLibrarySlack = 2048;
constexpr uint32_t kGrabExtra = kLibrarySlack + kFrameTail;

// Sizes wrap in 32 bits like every frame size; the room never does.
std::unique_ptr<uint8_t[]> NewBuffer(uint32_t size, uint32_t extra) {
    return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[static_cast<size_t>(size) + extra]);
}

} // namespace

double QCamera::NowMs() const {
    return static_cast<double>(m_clock.nsecsElapsed()) / 1e6;
}

// --- start and stop
// ---------------------------------------------------------------------------------------------------------

int QCamera::OnStartGettingFrame(bool clear) {
    if (m_nState != CAMERA_GRABBING) {
        if (const int code = StartShot(clear))
            return code;
    } else if (clear) {
        ClearRevFrameNum();
    }
    m_nState = CAMERA_GRABBING;
    m_fActualFrameRate = 0;
    m_nPixelSize = 0;
    m_fBandwidth = 0;
    m_fActualDisplayRate = 0;
    int pixelSize = 0;
    if (GetPixelSize(pixelSize))
        m_nPixelSize = pixelSize;
    m_nTriggerMode = 0;
    int triggerMode = 0;
    if (GetTriggerMode(triggerMode))
        m_nTriggerMode = triggerMode;
    RefreshEmbeddedInfo();
    return 0;
}

void QCamera::ReadFrameSizeNodes() {
    long long value = 0;
    const auto take = [this, &value](std::atomic<uint32_t>& size) {
        if (size.exchange(static_cast<uint32_t>(value)) != static_cast<uint32_t>(value))
            m_bSizeChanged = true;
    };
    if (GetIntegerNodePropertyValue("Width", &value))
        take(m_nWidth);
    if (GetIntegerNodePropertyValue("Height", &value))
        take(m_nHeight);
}

int QCamera::StartShot(bool clear) {
    m_displayThread.StopAndJoin();
    DestroyMediaHandle();
    ReadFrameSizeNodes();
    m_nEngine = m_nNextEngine.load();
    m_pixelType = OV_GVSP_NONE;
    m_renderPixelType = OV_GVSP_NONE;
    OvGvspPixelType format = OV_GVSP_NONE;
    if (GetCurPixelFormat(format)) {
        m_pixelType = format;
        if (IsJPGFormat(format))
            return -28;
        if (!GenerateFrameSize())
            return -20;
    }
    if (const int code = MakeStreamBuffers())
        return code;
    QLocalCfg* cfg = QLocalCfg::Instance();
    const int count = cfg ? cfg->GetImgSaveBufferSize() : 0;
    m_pQueue =
        QFrameBufManager::Instance(static_cast<uint32_t>(std::max(count, 0)), m_nFrameSize + kFrameTail);
    // The first frame then raises the size changed flag, and the display thread waits for it.
    m_nWidth = 0;
    m_nHeight = 0;
    m_nLastFrameLength = 0;
    m_grabThread.Stop().Clear();
    m_saveThread.Stop().Clear();
    m_displayThread.Stop().Clear();
    m_displayThread.Start(DisplayThread, this, "kolt-display");
    {
        const std::lock_guard<std::mutex> lock(m_rotationMutex);
        m_rotation = {};
    }
    DestroyRenderHandle(true);
    const uint32_t status = OV_CC_StartGrabbing(m_pHandle);
    if (status != OV_STATUS_OK)
        return QFunction::GenerateORVErrCode(status);
    XML_TLParamsLock(true);
    // Before the first frame is fetched: else those that come in between would be counted and forgotten.
    if (clear)
        ClearRevFrameNum();
    m_grabThread.Start(GetFrameThread, this, "kolt-grab");
    m_saveThread.Start(SaveImageThread, this, "kolt-save");
    m_bGrabbing = true;
    m_nState = CAMERA_GRABBING;
    return 0;
}

int QCamera::MakeStreamBuffers() {
    const uint32_t frameSize = m_nFrameSize;
    {
        const std::lock_guard<CFairMutex> lock(m_grabMutex);
        m_pGrabBuffer.reset();
        m_pGrabBuffer = NewBuffer(frameSize, kGrabExtra);
        if (!m_pGrabBuffer)
            return -2;
        std::memset(m_pGrabBuffer.get(), 0, static_cast<size_t>(frameSize) + kGrabExtra);
        m_nGrabBufferSize = frameSize;
    }
    const uint32_t displaySize = m_nDisplaySize;
    const std::lock_guard<std::mutex> lock(m_displayMutex);
    m_pDisplayBuffer.reset();
    m_pDisplayBuffer = NewBuffer(displaySize, 0);
    if (!m_pDisplayBuffer)
        return -2;
    std::memset(m_pDisplayBuffer.get(), 0, displaySize);
    m_nDisplayBufferSize = displaySize;
    return 0;
}

int QCamera::StopGettingFrame() {
    if (m_nState != CAMERA_GRABBING)
        return -17;
    const uint32_t status = OV_CC_StopGrabbing(m_pHandle);
    if (status != OV_STATUS_OK)
        return QFunction::GenerateORVErrCode(status);
    XML_TLParamsLock(false);
    m_grabThread.StopAndJoin();
    m_saveThread.StopAndJoin();
    if (m_pQueue) {
        m_pQueue->ClearFrameBufList();
        AddQueueCounters(m_endedQueues);
        QFrameBufManager::ReleaseInstance();
        m_pQueue.reset();
    }
    m_bGrabbing = false;
    m_nState = CAMERA_OPEN;
    m_bRecording = false;
    m_bCapturing = false;
    m_nCaptureCounter = 0;
    m_nFileIndex = 0;
    m_lastGoodPixelType = OV_GVSP_NONE;
    return 0;
}

void QCamera::ClearRevFrameNum() {
    m_nReceived = 0;
    m_nLastDisplayed = 0;
    m_nDisplayed = 0;
    m_nDrawn = 0;
    m_nRedrawn = 0;
    m_nSkipped = 0;
    const std::lock_guard<std::mutex> lock(m_rateMutex);
    m_frameMeter.ClearMark();
    m_displayMeter.ClearMark();
}

// What the present queue counted. A queue that two cameras share is told by both.
void QCamera::AddQueueCounters(_CAMERA_COUNTERS_& counters) const {
    const _FRAME_QUEUE_COUNTERS_ queue = m_pQueue->GetCounters();
    counters.taken += static_cast<int64_t>(queue.taken);
    counters.overwritten += static_cast<int64_t>(queue.overwritten);
    counters.refused += static_cast<int64_t>(queue.refused);
    counters.cleared += static_cast<int64_t>(queue.cleared);
    counters.unqueued += static_cast<int64_t>(queue.unqueued);
}

// A recording or series begins with the next frame and not with those that an earlier one left in the queue.
void QCamera::ForgetWaitingFrames() {
    if (m_pQueue && !m_bCapturing && !m_bRecording)
        m_pQueue->ClearFrameBufList();
}

int QCamera::GetMatchInfoNetDetect(_OV_MATCH_INFO_NET_DETECT_* counts) {
    if (!counts || !m_pHandle)
        return -4;
    _OV_ALL_MATCH_INFO_ query{};
    query.type = OV_MATCH_INFO_NET_DETECT;
    query.info = counts;
    query.infoSize = sizeof *counts;
    return static_cast<int>(OV_CC_GetAllMatchInfo(m_pHandle, &query));
}

_CAMERA_COUNTERS_ QCamera::GetCounters() const {
    _CAMERA_COUNTERS_ counters = m_endedQueues;
    if (m_pQueue)
        AddQueueCounters(counters);
    counters.received = m_nReceived;
    counters.displayed = m_nDisplayed;
    counters.redrawn = m_nRedrawn;
    counters.skipped = m_nSkipped;
    counters.undrawn = counters.received - m_nDrawn;
    counters.discarded = m_nDiscarded;
    counters.grabErrors = m_nGrabErrors;
    counters.queued = m_nQueued;
    counters.recorded = m_nRecorded;
    counters.recordFailures = m_nRecordFailures;
    counters.imagesSaved = m_nImagesSaved;
    counters.imageFailures = m_nImageFailures;
    counters.drawsRefused = m_nDrawsRefused;
    return counters;
}

// --- grab thread
// ------------------------------------------------------------------------------------------------------------

void* QCamera::GetFrameThread(void* camera) {
    static_cast<QCamera*>(camera)->GetFrameThreadFunc();
    return nullptr;
}

void QCamera::GetFrameThreadFunc() {
    const std::shared_ptr<QFrameBufManager> queue = m_pQueue;
    if (!queue)
        return;
    while (!m_grabThread.Stop().IsSet()) {
        StatActualFrameRate();
        if (!GrabOneFrame(*queue))
            return;
    }
}

// One pass. False when there is nothing to grab into.
bool QCamera::GrabOneFrame(QFrameBufManager& queue) {
    // Rare frames get the short time-out, because whoever wants the newest frame waits for the grab mutex
    // meanwhile.
    const uint32_t timeout = m_fActualFrameRate < 10.0f ? 100 : 1000;
    _OV_CC_FRAME_OUT_INFO_ info{};
    uint32_t status = OV_STATUS_OK;
    {
        const std::lock_guard<CFairMutex> lock(m_grabMutex);
        if (!m_pGrabBuffer)
            return false;
        const uint32_t capacity = m_nGrabBufferSize + kLibrarySlack;
        status = OV_CC_GetOneFrameTimeout(m_pHandle, m_pGrabBuffer.get(), capacity, &info, timeout);
        if (status == OV_STATUS_OK) {
            std::memcpy(m_pGrabBuffer.get() + m_nGrabBufferSize, &info, kFrameTail);
            // Under the lock, so that whoever copies the frame out knows its number.
            ++m_nReceived;
        }
    }
    if (status == OV_STATUS_OK) {
        m_bHaveFrame = true;
        OnFrameReceived(info, queue);
        return true;
    }
    if (status != OV_STATUS_NO_DATA)
        ++m_nGrabErrors;
    m_grabThread.Stop().SleepEx(m_fActualFrameRate > 100.0f ? 1 : 5);
    return true;
}

void QCamera::OnFrameReceived(const _OV_CC_FRAME_OUT_INFO_& info, QFrameBufManager& queue) {
    QCameraOwner* owner = m_pOwner;
    if (owner && owner->IsEmbedWidgetVisible())
        ParseEmbeddedImageInfo(m_pGrabBuffer.get());
    m_nLastFrameLength = info.frameLength;
    if (info.width != m_nWidth || info.height != m_nHeight) {
        m_nWidth = info.width;
        m_nHeight = info.height;
        m_bSizeChanged = true;
    }
    if (!m_bCapturing && !m_bRecording)
        return;
    {
        const std::lock_guard<CFairMutex> lock(m_grabMutex);
        queue.AddOneFrameToList(m_pGrabBuffer.get(), m_nGrabBufferSize + kFrameTail);
    }
    ++m_nQueued;
    m_saveThread.Stop().Wake();
}

void QCamera::GetFrameBuf(uint8_t* buffer, uint32_t /*size*/) {
    const std::lock_guard<CFairMutex> lock(m_grabMutex);
    if (buffer && m_pGrabBuffer)
        std::memcpy(buffer, m_pGrabBuffer.get(), m_nGrabBufferSize);
}

// --- save thread
// ------------------------------------------------------------------------------------------------------------

void* QCamera::SaveImageThread(void* camera) {
    static_cast<QCamera*>(camera)->SaveImageThreadFunc();
    return nullptr;
}

bool QCamera::EnsureSaveBuffer() {
    const uint32_t frameSize = m_nFrameSize;
    const std::lock_guard<std::mutex> lock(m_saveMutex);
    if (m_pSaveBuffer && m_nSaveBufferSize >= frameSize)
        return true;
    m_pSaveBuffer = NewBuffer(frameSize, kFrameTail);
    m_nSaveBufferSize = m_pSaveBuffer ? frameSize : 0;
    if (!m_pSaveBuffer)
        return false;
    // Its memory goes into the queue for the first frame's: the grab thread shall not meet fresh pages there.
    std::memset(m_pSaveBuffer.get(), 0, static_cast<size_t>(frameSize) + kFrameTail);
    return true;
}

int QCamera::SaveImageThreadFunc() {
    const std::shared_ptr<QFrameBufManager> queue = m_pQueue;
    if (!queue)
        return 1;
    {
        // A buffer that an earlier stream left may be larger. The record file holds frames of the buffer's
        // recorded size, so it is made anew when that is not this stream's.
        const std::lock_guard<std::mutex> lock(m_saveMutex);
        if (m_nSaveBufferSize != m_nFrameSize)
            m_pSaveBuffer.reset();
    }
    CStopFlag& stop = m_saveThread.Stop();
    while (!stop.IsSet()) {
        if (!EnsureSaveBuffer())
            return -2;
        if (!m_bCapturing && !m_bRecording) {
            // Woken by the first queued frame: whoever starts a recording must not lose its first second to
            // this nap.
            stop.SleepEx(1000);
            continue;
        }
        if (!SaveNextFrame(*queue))
            stop.SleepEx(1);
    }
    return 0;
}

// False when no frame waits.
bool QCamera::SaveNextFrame(QFrameBufManager& queue) {
    const std::lock_guard<CFairMutex> turn(m_saveTurnMutex);
    {
        const std::lock_guard<std::mutex> lock(m_saveMutex);
        if (!queue.TakeOneFrame(m_pSaveBuffer, m_nSaveBufferSize + kFrameTail))
            return false;
    }
    const bool capturing = m_bCapturing;
    if (capturing)
        SaveImages();
    if (m_bRecording)
        SaveRecord();
    else if (!capturing)
        ++m_nDiscarded;
    return true;
}

// --- statistics
// -------------------------------------------------------------------------------------------------------------

void QCamera::StatActualFrameRate() {
    const std::lock_guard<std::mutex> lock(m_rateMutex);
    float rate = m_fActualFrameRate;
    m_frameMeter.Tick(m_nReceived, NowMs(), rate);
    m_fActualFrameRate = rate;
}

void QCamera::StatActualDisplayRate() {
    const std::lock_guard<std::mutex> lock(m_rateMutex);
    float rate = m_fActualDisplayRate;
    m_displayMeter.Tick(m_nDisplayed, NowMs(), rate);
    m_fActualDisplayRate = rate;
}

float QCamera::GetActualFrameRate() {
    const float measured = m_fActualFrameRate;
    float told = 0;
    if (!GetResultFrameRate(&told))
        return measured;
    return measured - told > 1e-07f ? told : measured;
}

float QCamera::StatActualBandWidth() {
    const OvGvspPixelType format = m_pixelType;
    m_fBandwidth = BandwidthOf(IsJPGFormat(format), m_nLastFrameLength, m_nWidth, m_nHeight, m_nPixelSize,
                               m_fActualFrameRate);
    return m_fBandwidth;
}

float QCamera::GetActualBandWidth() {
    return StatActualBandWidth();
}
