// One physical camera, connected or not: its handle, node map, buffers, threads, display, capture and
// recording.
#pragma once

#include "Camera/Boundary/OVRender.h"
#include "Camera/Boundary/OvCameraControl.h"
#include "Camera/Boundary/OvMediaKit.h"
#include "Camera/Boundary/OvPixelType.h"
#include "Camera/CCameraThread.h"
#include "Camera/EmbeddedImageInfo.h"
#include "Camera/FairMutex.h"
#include "Camera/FrameRate.h"

#include <GenApi/GenApi.h>
#include <QDateTime>
#include <QDomDocument>
#include <QElapsedTimer>
#include <QMap>
#include <QMutex>
#include <QString>
#include <QVector>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>

class QCameraOwner;
class CRecordFile;
class QDataStream;
class QFrameBufManager;

// Software white balance.
enum _BAYER_WB_MODE_ { BAYER_WB_OFF = 0, BAYER_WB_ONCE = 1, BAYER_WB_CONTINUOUS = 2 };

// Camera state.
enum { CAMERA_CLOSED = 0, CAMERA_OPEN = 1, CAMERA_GRABBING = 2 };

struct _NETWORK_INFO_ {
    uint32_t ip = 0;
    uint32_t mask = 0;
};

// What became of the frames of a camera; for tests and for whoever looks for lost frames. Two sums hold
// whenever the threads rest:
//     received = displayed - redrawn + skipped + undrawn
//     queued   = taken + overwritten + refused + cleared + unqueued + those that wait in the queue
// and of the frames taken for a recording alone
//     taken    = recorded + recordFailures + discarded
struct _CAMERA_COUNTERS_ {
    // Since the start of the stream (with OnStartGettingFrame(true)).
    int64_t received = 0;  // frames that came from the library
    int64_t displayed = 0; // pictures drawn
    int64_t redrawn = 0;   // of these, pictures of a frame that had been drawn before
    int64_t skipped = 0;   // frames that a newer one replaced before they were drawn, as it should be
    int64_t undrawn = 0;   // frames since the one drawn last
    // Since the camera was made.
    int64_t grabErrors = 0;  // calls for a frame that failed otherwise than by a time-out
    int64_t queued = 0;      // frames meant for capture or recording
    int64_t taken = 0;       // frames that the save thread took
    int64_t overwritten = 0; // oldest frames of a full queue that gave way to newer ones
    int64_t refused = 0;     // frames larger than the save buffer
    int64_t cleared = 0;     // frames that still waited when the stream stopped or something new began
    int64_t unqueued = 0;    // frames that found neither a node nor memory
    int64_t discarded = 0;   // frames taken when capture and recording had just ended
    int64_t recorded = 0;    // frames written to the record file
    int64_t recordFailures = 0;
    int64_t imagesSaved = 0; // files of a series
    int64_t imageFailures = 0;
    int64_t drawsRefused = 0; // pictures that did not fit the display buffer
};

// A camera lives as long as its references (AddRef, ReleaseRef); its registry entry is one of them. The main
// thread opens, starts, stops and closes it; node access, frame read-outs and identity may be used from any
// thread. Results are program error codes (0 or a negative value, see QFunction) unless said otherwise; node
// accessors return non-zero for success.
//
// Threads it owns: display and display control from connect to disconnect, grab and save while grabbing. Lock
// order: save mutex, grab mutex, display mutex; the frame queue's mutex is innermost. Interval, reference and
// remark mutexes are taken alone.
class QCamera {
public:
    // Null never; throws std::bad_alloc. The first reference is the caller's to add.
    static QCamera* NewInstance();
    virtual ~QCamera();
    QCamera(const QCamera&) = delete;
    QCamera& operator=(const QCamera&) = delete;

    void Initialize();
    void UnInitialize();
    void AddRef();
    void ReleaseRef();

    // --- identity
    // ---------------------------------------------------------------------------------------------------------
    long GetCameraID() const { return m_lCameraID; }
    void SetCameraID(long id) { m_lCameraID = id; }
    // False for more than 128 bytes.
    bool SetCameraName(const char* name);
    // `buffer` with the name in it, or null when `capacity` isn't above the name's length.
    char* GetCameraName(char* buffer, int capacity) const;
    uint32_t GetTLayerType() const;
    uint32_t GetCameraType() const { return GetTLayerType(); }
    uint32_t GetIP() const;
    QString GetCameraModelName() const;
    int GetCameraState() const { return m_nState; }
    void SetOVCCDevInfo(const _OV_CC_DEVICE_INFO_& info);
    _OV_CC_DEVICE_INFO_ GetOVCCDevInfo() const;
    // Completes the record of a camera of which only the address is known, from the camera itself.
    int GenerateOVCDevInfoByConnectDev();
    void SetRemoteCamera(bool remote) { m_bRemote = remote; }
    bool GetRemoteCamera() const { return m_bRemote; }
    bool IsGigECameraReachable() const;
    void SetCameraReachable(bool reachable) { m_bReachable = reachable; }
    bool IsOtherCamera() const;
    bool OpenForCamState(bool tryOpen);
    void SetTimeStr(const QString& text) { m_strTime = text; }

    // --- connection
    // -------------------------------------------------------------------------------------------------------
    int OpenCamera();
    int CloseCamera();
    bool IsConnect() const { return m_nState != CAMERA_CLOSED; }
    bool IsShotting() const { return m_nState == CAMERA_GRABBING; }
    // `callback` runs on a thread of the library, with the user pointer and the camera's id.
    void SetCameraDisconnectCallBackInfo(void (*callback)(void*, long), void* user);
    void SetOwner(QCameraOwner* owner) { m_pOwner = owner; }
    static bool OnCheckDriverInstalled() { return false; }

    // --- nodes
    // ------------------------------------------------------------------------------------------------------------
    int GetBooleanNodePropertyValue(const char* name, int* value);
    int GetIntegerNodePropertyValue(const char* name, long long* value);
    int GetIntegerNodePropertyValue(const char* name, long long* value, long long* maximum,
                                    long long* minimum);
    int GetFloatNodePropertyValue(const char* name, float* value);
    int GetFloatNodePropertyValue(const char* name, float* value, float* maximum, float* minimum);
    // Fills all `length` bytes of `symbol`, where given: the text of the current entry and zeros.
    int GetEnumerationNodePropertyValue(const char* name, int* value, char* symbol = nullptr, int length = 0);
    int GetStringRegNodePropertyValue(const char* name, char* text, int length);
    int GetStringRegNodePropertyValue(const char* name, char* text, int length, int* maximum);
    int SetBooleanNodePropertyValue(const char* name, int value);
    int SetIntegerNodePropertyValue(const char* name, long long value);
    int SetFloatNodePropertyValue(const char* name, float value);
    int SetEnumerationNodePropertyValue(const char* name, int value);
    int SetStringRegNodePropertyValue(const char* name, const char* text);
    int SetCommandNodePropertyValue(const char* name);
    int GetBaseNodeAccessMode(const char* name, GenApi_3_0::_EAccessMode& mode);
    int GetResultFrameRate(float* rate) { return GetFloatNodePropertyValue("ResultingFrameRate", rate); }
    int GetResultLineRate(long long* rate) { return GetIntegerNodePropertyValue("ResultingLineRate", rate); }
    int GetActualLineRate(int& rate);
    int GetCameraPacketSize(); // bytes, or -1
    bool IsSuperSpeed();
    uint32_t GetCamScanType(); // all ones when it can't be read
    int GetPixelSize(int& size);
    int GetTriggerMode(int& mode);
    int GetAcquisitionMode(int& mode);
    int GetCurPixelFormat(OvGvspPixelType& format);
    int GetCheckPacketSize(); // bytes, or -1
    bool GetPincNode(const char* name, int& increment);
    uint32_t XML_TLParamsLock(bool lock);
    bool SaveGenIcamXml(const QString& path);
    void GetXMLDomDocument(QDomDocument& document) const;
    std::shared_ptr<GenApi_3_0::CNodeMapRef> GetNodeMapRef() const;
    // Text of the last failed setter; `buffer`, or null when there is none or `length` isn't above its
    // length.
    char* GetLastErrorRemark(char* buffer, int length) const;

    // --- frame pipeline
    // ---------------------------------------------------------------------------------------------------
    int OnStartGettingFrame(bool clear);
    int StartShot(bool clear = false); // clear: as OnStartGettingFrame
    int StopGettingFrame();
    void OnSetSDKBuffers();
    void OnSetThrowAbnormalImage();
    int64_t GetRecvFrameNum() const { return m_nReceived; }
    bool IsHaveFrameData() const { return m_bHaveFrame; }
    void ClearRevFrameNum();
    float GetActualFrameRate();
    float GetActualDisplayRate() const { return m_fActualDisplayRate; }
    float GetActualBandWidth();
    // The library's counts since the start of grabbing: 0, or its status; -4 without a handle.
    int GetMatchInfoNetDetect(_OV_MATCH_INFO_NET_DETECT_* counts);
    // Copies frame-size bytes of the newest frame; `size` is ignored.
    void GetFrameBuf(uint8_t* buffer, uint32_t size);
    uint32_t GetFrameSize() const { return m_nFrameSize; }
    uint32_t GetWidth() const { return m_nWidth; }
    uint32_t GetHeight() const { return m_nHeight; }
    OvGvspPixelType GetPixelType() const { return m_pixelType; }
    void SetTriggerMode(int mode) { m_nTriggerMode = mode; }
    // The thread that starts and stops the stream.
    _CAMERA_COUNTERS_ GetCounters() const;
    // `callback` runs on the display thread or the thread that called SetVREngineMode.
    void SetFrameSizeChangedCallBack(void (*callback)(int width, int height, void* user), void* user);

    // --- display
    // ----------------------------------------------------------------------------------------------------------
    int InitRender(OvGvspPixelType pixelType);
    int InitVividRender(tagVRPixelFormat format, tagVRRenderEngine engine, uint32_t count);
    void DisplayVRRender();
    void ChangeToDisplayFrame();
    void ChangeGDIToDisplayFrame(OvGvspPixelType pixelType);
    bool GenerateFrameSize();
    bool GenerateGDIFrameSize();
    void SetPlayWnd(uint64_t window);
    uint64_t GetPlayWnd() const { return m_playWnd; }
    int SetDisplayRect(const tagVRRectF* source, const tagVRRectF* destination);
    void SetDisplayFrame();
    void SetDisplayMode(int mode);
    bool IsDisplay() const { return m_bDisplay; }
    int GetConfigRate() const { return m_nConfigRate; }
    void SetVREngineMode(int engine);
    void SetVRMode(int /*mode*/) {}
    bool IsGDIRender() const { return m_nEngine == VR_ENGINE_SOFTWARE; }
    void RotateLeft() { RotateBy(90.0f); }
    void RotateRight() { RotateBy(-90.0f); }
    void RotatebySecondDisplayPort(uint32_t port);
    bool IsNeedReverseXYAfterRotate() const;
    bool IsRotate180Degree() const;
    bool IsRotateRight90Degree() const;
    bool IsMeetZoomCondition() const;
    void SubPortDisplay(uint32_t port, uint64_t window);
    int SetSecondPortDisplayRect(const tagVRRectF*, const tagVRRectF*) { return 0; }
    void* GetVividRenderHandle();
    void* GetGDIRenderHandle();
    bool IsBayerFrame();
    bool IsBayerFrame12() const;
    int GetBayerInterpolation() const { return m_nBayerInterpolation; }
    void SetBayerInterpolation(int method) { m_nBayerInterpolation = method; }
    void SetBayerWbMode(_BAYER_WB_MODE_ mode) { m_nBayerWbMode = mode; }
    void GetBayerWb(_OV_WHITE_BALANCE_PARAM_& gains) const;
    void SetBayerWb(const _OV_WHITE_BALANCE_PARAM_& gains);
    void BayerFrameWb(OvGvspPixelType pixelType, uint8_t* data);
    static bool SetColor(tagVRColor* colour, float r, float g, float b, float a);
    static bool SetRect(tagVRRectF* rect, float left, float right, float top, float bottom);
    int SetBackgroundColor(const tagVRColor*) { return 0; }
    int GetPointColor(int, int, tagVRColor*) { return 0; }
    void DisplayGDIRender() {}
    static void VividRenderDrawCallBack(void*) {}
    int ParserJPG(const uint8_t* data, uint32_t length, uint8_t* destination);

    // --- capture
    // ----------------------------------------------------------------------------------------------------------
    int SaveCurrentFrame();
    int SnapPicture(const char* path, int type);
    int SnapRawData(const char* path);
    int SaveOneImage();
    int SaveImages();
    void SetImgSave();
    bool IsCapturing() const { return m_bCapturing; }
    bool GetIsSaveImaged() const { return m_bImageSaved; }
    static void GetDiskLastSpace(const char* path, unsigned long long* mebibytes);

    // --- recording
    // --------------------------------------------------------------------------------------------------------
    int StartRecord(const char* /*path*/, int /*type*/) { return 0; }
    int StartRecordRawData(const char* file, const char* folder);
    void SaveRecord();
    int StopRecord();
    bool IsRecord() const { return m_bRecording; }
    bool IsRecordedSuccess() const { return m_bRecordedSuccess; }

    // --- embedded image information
    // ---------------------------------------------------------------------------------------
    void RefreshEmbeddedInfo() { m_bRefreshEmbedded = true; }
    void ParseEmbeddedSelector();
    void ParseEmbeddedImageInfo(const uint8_t* data);
    void ParseEmbeddedImageInfoByBitType(const uint8_t* data, _EMBEDDED_IMAGE_INFO_& info);
    void GetEmbeddedImageInfo(long& selector, _EMBEDDED_IMAGE_INFO_& info) const;
    static int Char2Int(char c) { return c - '0'; }

    // --- automatic software trigger
    // ---------------------------------------------------------------------------------------
    void SetAutoSoftwareTrig(bool enable, unsigned int intervalMs);
    void GetAutoSoftwareTrig(bool& enable, unsigned int& intervalMs) const;
    int OnTimerSoftwareTrig() { return SetCommandNodePropertyValue("TriggerSoftware"); }
    void AutoSoftwareTrigThreadFunc();
    static void* AutoSoftwareTrigThread(void* camera);

private:
    QCamera();

    template<typename Interface, typename Use>
    int ReadNode(const char* name, Use use);
    template<typename Interface, typename Use>
    int WriteNode(const char* name, Use use);
    void SetLastErrorRemark(const QString& remark);

    int ReadGenIcamXml();
    int BuildNodeMap();
    void StartDisplayThreads();
    void GenerateDomElementMap(const QDomElement& element);
    bool GetDomElementNode(const QString& name, QDomElement& element) const;

    static void CameraExceptionCallBackFunc(uint32_t message, void* user);
    void OnCameraDisconnectCallBack();
    void OnAutoCheckNetwork();

    void ReadFrameSizeNodes();
    int MakeStreamBuffers();
    static void* GetFrameThread(void* camera);
    static void* SaveImageThread(void* camera);
    static void* DisplayThread(void* camera);
    static void* DisplayControlThread(void* camera);
    void GetFrameThreadFunc();
    bool GrabOneFrame(QFrameBufManager& queue);
    void OnFrameReceived(const _OV_CC_FRAME_OUT_INFO_& info, QFrameBufManager& queue);
    int SaveImageThreadFunc();
    bool EnsureSaveBuffer();
    bool SaveNextFrame(QFrameBufManager& queue);
    int DisplayThreadFunc();
    void DisplayControlThreadFunc();
    bool EnsureMediaHandle();
    void DestroyMediaHandle();
    void DestroyRenderHandle(bool deleteSubPort);
    void NotifyFrameSizeChanged();
    void StatActualFrameRate();
    void StatActualDisplayRate();
    float StatActualBandWidth();
    double NowMs() const;

    bool SetSizes(uint32_t frame, uint32_t display);
    // The number of the frame that is in the display buffer now, or -1.
    int64_t CopyNewestToDisplay();
    int64_t DecodeNewestToDisplay();
    void CountDrawn(int64_t number);
    void ForgetWaitingFrames();
    void AddQueueCounters(_CAMERA_COUNTERS_& counters) const;
    bool ConvertDisplayBuffer(uint32_t sourceLength, uint32_t target);
    bool DisplayBufferHolds(uint32_t width, uint32_t height) const;
    bool HasDisplayBuffer() const;
    void RotateBy(float degrees);
    int AngleOfRotation() const;
    void FillWhiteBalanceRecord(_OV_IMAGE_INFO_& record, OvGvspPixelType pixelType, uint8_t* data) const;

    bool ResolvePixelType();
    bool HasSaveBuffer();
    int EncodeSaveBuffer(int type, uint32_t& length);
    int WriteEncoded(const QString& path, uint32_t length);
    uint32_t LengthOfSavedFrame() const;
    bool CheckSeriesFolder();
    void OnSeriesFolderFailure(int code);
    bool SeriesByFrames(int& code);
    bool SeriesByTime(int& code);
    void EndSeries();
    QString SeriesFolder() const;
    int CloseRecordFile();
    void OnRecordDiskFull();
    void ShowRecordFailure();

    // Identity. The name has room for 128 bytes and the terminator.
    mutable std::mutex m_identityMutex; // leaf; guards name and record
    std::array<char, 129> m_name{};
    _OV_CC_DEVICE_INFO_ m_deviceInfo{};
    std::atomic<long> m_lCameraID{-1};
    std::atomic<bool> m_bRemote{false};
    std::atomic<bool> m_bReachable{true};
    std::unique_ptr<QMutex> m_pRefMutex;   // guards m_nRef
    std::unique_ptr<QMutex> m_pSpareMutex; // never locked
    int m_nRef = 0;
    std::atomic<QCameraOwner*> m_pOwner{nullptr};
    QString m_strTime;
    QVector<_NETWORK_INFO_> m_networks; // nothing fills it

    // Connection.
    std::atomic<int> m_nState{CAMERA_CLOSED};
    std::atomic<void*> m_pHandle{nullptr};
    std::unique_ptr<char[]> m_pXml; // main thread
    uint32_t m_nXmlLength = 0;
    QDomDocument m_document;               // main thread; read-only once parsed
    QMap<QString, QDomElement> m_elements; // guarded by m_elementMutex
    mutable std::mutex m_elementMutex;     // leaf; guards m_elements and every walk over m_document
    mutable std::shared_mutex
        m_nodeMapMutex; // shared by a node operation, alone while the map is made or unmade
    std::shared_ptr<GenApi_3_0::CNodeMapRef> m_pNodeMap;
    std::atomic<void*> m_pTlProxy{nullptr};
    mutable std::mutex m_remarkMutex; // leaf; guards the next
    std::array<char, 512> m_lastErrorRemark{};
    mutable std::mutex m_callbackMutex; // leaf; guards the pairs below, never held during a call
    void (*m_pDisconnect)(void*, long) = nullptr;
    void* m_pDisconnectUser = nullptr;
    void (*m_pFrameSizeChanged)(int, int, void*) = nullptr;
    void* m_pFrameSizeChangedUser = nullptr;

    // Threads.
    CCameraThread m_grabThread;
    CCameraThread m_saveThread;
    CCameraThread m_displayThread;
    CCameraThread m_controlThread;
    CCameraThread m_triggerThread;

    // Frames. Sizes are in bytes.
    std::atomic<uint32_t> m_nWidth{0};
    std::atomic<uint32_t> m_nHeight{0};
    std::atomic<OvGvspPixelType> m_pixelType{OV_GVSP_NONE};
    std::atomic<OvGvspPixelType> m_lastGoodPixelType{OV_GVSP_NONE};
    std::atomic<uint32_t> m_nFrameSize{0};
    std::atomic<uint32_t> m_nDisplaySize{0};
    std::atomic<uint32_t> m_nLastFrameLength{0};
    std::atomic<bool> m_bSizeChanged{false};
    std::atomic<bool> m_bHaveFrame{false};
    std::atomic<bool> m_bGrabbing{false};
    std::atomic<int64_t> m_nReceived{0};
    std::atomic<int64_t> m_nLastDisplayed{0};
    std::atomic<int64_t> m_nDisplayed{0};
    CFairMutex m_grabMutex; // guards the grab buffer
    std::unique_ptr<uint8_t[]> m_pGrabBuffer;
    uint32_t m_nGrabBufferSize = 0; // frame size it was made for
    // Held by the save thread from taking a frame to the end of saving it, and by a snapshot that replaces
    // the save buffer's frame, so that neither a recording nor a series has a snapshot's frame in the place
    // of its own. Before the save mutex; the only one held during calls of the owner.
    CFairMutex m_saveTurnMutex;
    std::mutex m_saveMutex; // guards the save buffer
    std::unique_ptr<uint8_t[]> m_pSaveBuffer;
    uint32_t m_nSaveBufferSize = 0;
    mutable std::mutex m_displayMutex; // guards display and scratch buffer
    std::unique_ptr<uint8_t[]> m_pDisplayBuffer;
    uint32_t m_nDisplayBufferSize = 0;
    std::unique_ptr<uint8_t[]> m_pScratch;
    uint32_t m_nScratchSize = 0;
    std::mutex m_encodeMutex; // guards the encode buffer, from encoding to the end of writing
    std::unique_ptr<uint8_t[]> m_pEncodeBuffer;
    uint32_t m_nEncodeBufferSize = 0;
    uint32_t m_nEncodeUsed = 0;                 // bytes at its front that may not be zero
    std::shared_ptr<QFrameBufManager> m_pQueue; // set while no grab or save thread runs

    // Rates.
    QElapsedTimer m_clock;     // started once, read by all
    CRateMeter m_frameMeter;   // guarded by m_rateMutex
    CRateMeter m_displayMeter; // guarded by m_rateMutex
    std::mutex m_rateMutex;    // leaf
    std::atomic<float> m_fActualFrameRate{0};
    std::atomic<float> m_fActualDisplayRate{0};
    std::atomic<float> m_fBandwidth{0};
    std::atomic<int> m_nPixelSize{0}; // bits a pixel
    std::atomic<int> m_nTriggerMode{0};

    // Display.
    std::atomic<void*> m_pMedia{nullptr};
    std::mutex m_mediaMutex; // leaf; guards making and unmaking of m_pMedia
    std::atomic<void*> m_pRender{nullptr};
    std::mutex m_renderMutex; // leaf; guards making and unmaking of m_pRender
    std::atomic<bool> m_bRenderReady{false};
    std::atomic<bool> m_bSecondRenderReady{false}; // nothing sets it
    std::atomic<OvGvspPixelType> m_renderPixelType{OV_GVSP_NONE};
    std::atomic<uint64_t> m_playWnd{0};
    std::atomic<bool> m_bRefreshOneFrame{false};
    std::atomic<bool> m_bDisplay{true};
    std::atomic<int> m_nConfigRate{30};
    std::mutex m_intervalMutex;  // held by the display thread while it sleeps
    int m_nDisplayInterval = 30; // ms; guarded by m_intervalMutex
    std::atomic<int> m_nEngine{0};
    std::atomic<int> m_nNextEngine{0};
    uint32_t m_nVerticalSyncPeriod = 0;
    mutable std::mutex m_rotationMutex; // leaf; guards the next
    tagVRRotation m_rotation{};
    std::atomic<int> m_nBayerInterpolation{0};
    std::atomic<int> m_nBayerWbMode{BAYER_WB_CONTINUOUS};
    mutable std::mutex m_wbMutex; // leaf; guards the next
    _OV_WHITE_BALANCE_PARAM_ m_gains{1, 1, 1, {}};

    // Capture and recording.
    std::atomic<bool> m_bCapturing{false};
    std::atomic<bool> m_bImageSaved{false};
    std::atomic<bool> m_bFirstCapture{true};
    std::atomic<int> m_nFileIndex{0};
    std::atomic<int> m_nCaptureCounter{0};
    std::atomic<int> m_nErrorShown{0};
    QDateTime m_captureStart; // save thread
    QDateTime m_captureNext;  // save thread
    std::atomic<bool> m_bRecording{false};
    std::atomic<bool> m_bRecordedSuccess{false};
    std::atomic<int> m_nRecordingType{3}; // 0 media library, 2 raw file, 3 none
    std::mutex m_recordMutex; // guards the record file, from the look at it to the end of the write; after
                              // the save mutex
    std::unique_ptr<CRecordFile> m_pRecordFile;
    std::unique_ptr<QDataStream> m_pRecordStream;
    std::array<char, 1024> m_recordFolder{};
    int m_nLastWrite = 0;     // guarded by m_recordMutex
    int m_nRecordedFrame = 0; // bytes of the frame written last; guarded by m_recordMutex

    // Embedded image information.
    mutable std::mutex m_embeddedMutex; // leaf; guards the next two
    uint64_t m_nEmbeddedSelector = 0;
    _EMBEDDED_IMAGE_INFO_ m_embedded{};
    std::atomic<bool> m_bRefreshEmbedded{true};

    // Automatic software trigger.
    std::atomic<bool> m_bAutoTrigger{false};
    std::atomic<uint32_t> m_nAutoTriggerInterval{1000};

    // Counters, see _CAMERA_COUNTERS_.
    std::atomic<int64_t> m_nDrawn{0}; // number of the frame drawn last
    std::atomic<int64_t> m_nRedrawn{0};
    std::atomic<int64_t> m_nSkipped{0};
    std::atomic<int64_t> m_nDiscarded{0};
    _CAMERA_COUNTERS_ m_endedQueues; // sums of the queues of earlier streams
    std::atomic<int64_t> m_nGrabErrors{0};
    std::atomic<int64_t> m_nQueued{0};
    std::atomic<int64_t> m_nRecorded{0};
    std::atomic<int64_t> m_nRecordFailures{0};
    std::atomic<int64_t> m_nImagesSaved{0};
    std::atomic<int64_t> m_nImageFailures{0};
    std::atomic<int64_t> m_nDrawsRefused{0};
};

// Empty: the trigger panel's timer does this work.
inline void SetAutoSoftwareTrig(bool /*enable*/, int /*intervalMs*/) {}
