// The display threads: how often the newest frame is drawn, and the state of the view.
#include "Camera/QCamera.h"

#include "Camera/PixelFormat.h"

#include <algorithm>

extern "C" {
// The render library asks for one; the program draws nothing of its own into the picture.
static void VRCallBack(void* /*user*/, uint32_t, uint32_t, void*, uint32_t, uint32_t) {}
}

namespace {

constexpr int kDisplayOn30 = 8;
constexpr int kDisplayOn60 = 9;
constexpr int kDisplayOff = 10;
constexpr int kHandlePolls = 1001;

} // namespace

// --- display thread
// ---------------------------------------------------------------------------------------------------------

void* QCamera::DisplayThread(void* camera) {
    static_cast<QCamera*>(camera)->DisplayThreadFunc();
    return nullptr;
}

int QCamera::DisplayThreadFunc() {
    CStopFlag& stop = m_displayThread.Stop();
    while (!stop.IsSet()) {
        if (m_bDisplay) {
            if (m_nWidth == 0 || m_nHeight == 0 || m_nFrameSize == 0 || !HasDisplayBuffer()) {
                stop.SleepEx(15);
                continue;
            }
            if (!EnsureMediaHandle())
                return -1;
            InitRender(m_pixelType);
            if (m_bSizeChanged) {
                NotifyFrameSizeChanged();
                m_bSizeChanged = false;
            }
            DisplayVRRender();
        }
        // The pacer waits for the end of this sleep before it publishes a new interval.
        const std::lock_guard<std::mutex> lock(m_intervalMutex);
        stop.SleepEx(m_nDisplayInterval);
    }
    return 0;
}

bool QCamera::HasDisplayBuffer() const {
    const std::lock_guard<std::mutex> lock(m_displayMutex);
    return m_pDisplayBuffer != nullptr;
}

void QCamera::NotifyFrameSizeChanged() {
    void (*callback)(int, int, void*) = nullptr;
    void* user = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_callbackMutex);
        callback = m_pFrameSizeChanged;
        user = m_pFrameSizeChangedUser;
    }
    if (callback && user)
        callback(static_cast<int>(m_nWidth), static_cast<int>(m_nHeight), user);
}

void QCamera::SetFrameSizeChangedCallBack(void (*callback)(int, int, void*), void* user) {
    const std::lock_guard<std::mutex> lock(m_callbackMutex);
    m_pFrameSizeChanged = callback;
    m_pFrameSizeChangedUser = user;
}

// --- display control thread
// -------------------------------------------------------------------------------------------------

void* QCamera::DisplayControlThread(void* camera) {
    static_cast<QCamera*>(camera)->DisplayControlThreadFunc();
    return nullptr;
}

void QCamera::DisplayControlThreadFunc() {
    CStopFlag& stop = m_controlThread.Stop();
    CDisplayPacer pacer;
    while (!stop.IsSet()) {
        if (!m_bGrabbing) {
            stop.SleepEx(500);
            continue;
        }
        {
            const std::lock_guard<std::mutex> lock(m_intervalMutex);
            m_nDisplayInterval =
                pacer.Step(m_nConfigRate, m_fActualFrameRate, m_fActualDisplayRate, m_nTriggerMode == 1);
        }
        stop.SleepEx(1000);
    }
}

// --- media handle
// -----------------------------------------------------------------------------------------------------------

bool QCamera::EnsureMediaHandle() {
    const std::lock_guard<std::mutex> lock(m_mediaMutex);
    if (!m_pMedia)
        m_pMedia = OV_MP_CreateHandle();
    return m_pMedia != nullptr;
}

void QCamera::DestroyMediaHandle() {
    const std::lock_guard<std::mutex> lock(m_mediaMutex);
    if (void* handle = m_pMedia.exchange(nullptr))
        OV_MP_DestroyHandle(handle);
}

// --- render handle
// ----------------------------------------------------------------------------------------------------------

int QCamera::InitRender(OvGvspPixelType pixelType) {
    if (m_renderPixelType != pixelType) {
        DestroyRenderHandle(false);
        m_renderPixelType = pixelType;
    } else if (m_pRender) {
        return 1;
    }
    tagVRPixelFormat format{};
    if (!GetVRPixelFormat(pixelType, format))
        return 0;
    if (!GenerateFrameSize())
        return 0;
    return InitVividRender(format, m_nEngine != 0 ? VR_ENGINE_SOFTWARE : VR_ENGINE_OPENGL, 1);
}

// A failure leaves the handle as it is; the next pass of the display thread finds it there and draws with it
// only once it is ready.
int QCamera::InitVividRender(tagVRPixelFormat format, tagVRRenderEngine engine, uint32_t count) {
    DestroyRenderHandle(false);
    void* const handle = VR_CreateHandle();
    if (!handle)
        return 0;
    {
        const std::lock_guard<std::mutex> lock(m_renderMutex);
        m_pRender = handle;
    }
    if (VR_Init(handle, format, engine, count) != 1)
        return 0;
    VR_AddSubPort(handle, m_playWnd, 0, 0);
    VR_SetVerticalSyncPeriod(handle, 0, m_nVerticalSyncPeriod);
    if (VR_SetCallBack(handle, 0, 1, VRCallBack, this) != 1)
        return 0;
    m_bRenderReady = true;
    return 1;
}

void QCamera::DestroyRenderHandle(bool deleteSubPort) {
    void* handle = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_renderMutex);
        handle = m_pRender.exchange(nullptr);
        m_bRenderReady = false;
    }
    if (!handle)
        return;
    if (deleteSubPort)
        VR_DelSubPort(handle, 0);
    VR_DestroyHandle(handle);
}

void* QCamera::GetVividRenderHandle() {
    for (int i = 0; i < kHandlePolls && !m_bRenderReady && m_nTriggerMode == 0; ++i)
        SleepEx(10);
    return m_pRender;
}

void* QCamera::GetGDIRenderHandle() {
    // deliberate: it waits for a second handle that nothing makes.
    for (int i = 0; i < kHandlePolls && !m_bSecondRenderReady && m_nTriggerMode == 0; ++i)
        SleepEx(10);
    return nullptr;
}

// --- view state
// -------------------------------------------------------------------------------------------------------------

void QCamera::SetPlayWnd(uint64_t window) {
    m_playWnd = window;
    if (!m_bGrabbing && window != 0)
        m_bRefreshOneFrame = true;
}

int QCamera::SetDisplayRect(const tagVRRectF* source, const tagVRRectF* destination) {
    void* const handle = m_pRender;
    if (!source || !destination || !handle)
        return -4;
    VR_SetDisplayRect(handle, 0, source, destination);
    return 0;
}

void QCamera::SetDisplayFrame() {
    void* const handle = m_pRender;
    const uint64_t window = m_playWnd;
    if (handle && window)
        VR_Display(handle, 0, window);
}

void QCamera::SetDisplayMode(int mode) {
    switch (mode) {
    case kDisplayOn30:
        m_bDisplay = true;
        m_nConfigRate = 30;
        break;
    case kDisplayOn60:
        m_bDisplay = true;
        m_nConfigRate = 60;
        break;
    case kDisplayOff:
        m_bDisplay = false;
        break;
    default:
        break;
    }
}

void QCamera::SetVREngineMode(int engine) {
    m_nNextEngine = engine;
    NotifyFrameSizeChanged();
}

void QCamera::SubPortDisplay(uint32_t port, uint64_t window) {
    void* const handle = m_pRender;
    if (m_playWnd && handle)
        VR_Display(handle, port, window);
}

// --- rotation
// ---------------------------------------------------------------------------------------------------------------

void QCamera::RotateBy(float degrees) {
    void* const handle = m_pRender;
    if (!handle)
        return;
    tagVRRotation record{};
    {
        const std::lock_guard<std::mutex> lock(m_rotationMutex);
        m_rotation.axis = {0.0f, 0.0f, 1.0f, m_rotation.axis.angle + degrees};
        m_rotation.axisCount = 1;
        record = m_rotation;
    }
    record.axes = &record.axis;
    VR_Rotate(handle, 0, &record);
}

void QCamera::RotatebySecondDisplayPort(uint32_t port) {
    void* const handle = m_pRender;
    if (!handle)
        return;
    tagVRRotation record{};
    {
        const std::lock_guard<std::mutex> lock(m_rotationMutex);
        record = m_rotation;
    }
    record.axes = &record.axis;
    VR_Rotate(handle, port, &record);
}

int QCamera::AngleOfRotation() const {
    const std::lock_guard<std::mutex> lock(m_rotationMutex);
    return static_cast<int>(m_rotation.axis.angle);
}

bool QCamera::IsNeedReverseXYAfterRotate() const {
    return AngleOfRotation() % 180 != 0;
}

bool QCamera::IsRotate180Degree() const {
    const int angle = AngleOfRotation();
    return angle % 180 == 0 && angle % 360 != 0;
}

bool QCamera::IsRotateRight90Degree() const {
    int angle = AngleOfRotation();
    while (angle < 0)
        angle += 360;
    // deliberate: a multiple of 270, so that 630 (which is 270) is not one.
    return angle % 180 != 0 && angle % 270 == 0;
}

bool QCamera::IsMeetZoomCondition() const {
    return AngleOfRotation() % 360 == 0;
}

bool QCamera::SetColor(tagVRColor* colour, float r, float g, float b, float a) {
    if (!colour)
        return false;
    *colour = {r, g, b, a};
    return true;
}

bool QCamera::SetRect(tagVRRectF* rect, float left, float right, float top, float bottom) {
    if (!rect)
        return false;
    rect->left = left;
    rect->right = right;
    rect->top = top;
    rect->bottom = bottom;
    return true;
}
