// Single pictures and picture series.
#include "Camera/QCamera.h"

#include "Camera/CaptureRhythm.h"
#include "Camera/PixelFormat.h"
#include "Camera/QCameraOwner.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstring>
#include <new>
#include <sys/statfs.h>

namespace {

constexpr unsigned long long kDiskReserveMiB = 1000;
constexpr uint32_t kFrameTail = sizeof(_OV_CC_FRAME_OUT_INFO_);
const char kSource[] = "KOLT CAPTURE";

QString Tr(const char* text) {
    return QCoreApplication::translate("QCamera", text);
}

bool HasRoomInOutputFolder() {
    QLocalCfg* cfg = QLocalCfg::Instance();
    const QByteArray folder = cfg ? QFile::encodeName(cfg->GetDataOutputFolder()) : QByteArray();
    unsigned long long free = 0;
    QCamera::GetDiskLastSpace(folder.constData(), &free);
    return free > kDiskReserveMiB;
}

} // namespace

void QCamera::GetDiskLastSpace(const char* path, unsigned long long* mebibytes) {
    if (!path || !mebibytes)
        return;
    struct statfs info {};
    // deliberate: the result isn't looked at; a path that isn't there has no room.
    (void)statfs(path, &info);
    *mebibytes = (static_cast<unsigned long long>(info.f_bsize) * info.f_bavail) >> 20;
}

// --- one picture
// ------------------------------------------------------------------------------------------------------------

int QCamera::SaveCurrentFrame() {
    const std::lock_guard<CFairMutex> turn(m_saveTurnMutex);
    const std::lock_guard<std::mutex> save(m_saveMutex);
    if (!m_pSaveBuffer)
        return -4;
    std::memset(m_pSaveBuffer.get(), 0, static_cast<size_t>(m_nSaveBufferSize) + kFrameTail);
    const std::lock_guard<CFairMutex> grab(m_grabMutex);
    if (!m_pGrabBuffer)
        return -4;
    const uint32_t length = std::min({m_nFrameSize.load(), m_nGrabBufferSize, m_nSaveBufferSize});
    std::memcpy(m_pSaveBuffer.get(), m_pGrabBuffer.get(), static_cast<size_t>(length) + kFrameTail);
    return 0;
}

// The pixel type of the frame that is held; after a stop the last good one counts.
bool QCamera::ResolvePixelType() {
    OvGvspPixelType format = m_pixelType;
    if (format == OV_GVSP_NONE)
        format = m_lastGoodPixelType;
    if (format == OV_GVSP_NONE)
        return false;
    m_pixelType = format;
    m_lastGoodPixelType = format;
    return true;
}

// From the frame tail; the caller holds the save mutex.
uint32_t QCamera::LengthOfSavedFrame() const {
    _OV_CC_FRAME_OUT_INFO_ tail{};
    const uint32_t at = std::min(m_nFrameSize.load(), m_nSaveBufferSize);
    std::memcpy(&tail, m_pSaveBuffer.get() + at, sizeof tail);
    return std::min(tail.frameLength, m_nSaveBufferSize);
}

int QCamera::SnapPicture(const char* path, int type) {
    if (!HasRoomInOutputFolder())
        return -25;
    if (m_nState == CAMERA_GRABBING && !EnsureMediaHandle())
        return -4;
    if (!path || !HasSaveBuffer())
        return -24;
    if (!ResolvePixelType())
        return -24;
    const QString name = QFile::decodeName(path);
    if (IsJPGFormat(m_pixelType)) {
        // The camera's JPEG as it came, whatever the type asked for.
        QFile file(name);
        if (!file.open(QIODevice::WriteOnly))
            return -1;
        const std::lock_guard<std::mutex> save(m_saveMutex);
        file.write(reinterpret_cast<const char*>(m_pSaveBuffer.get()), LengthOfSavedFrame());
        return 0;
    }
    const std::lock_guard<std::mutex> encode(m_encodeMutex);
    uint32_t length = 0;
    if (const int code = EncodeSaveBuffer(type, length))
        return code;
    return WriteEncoded(name, length);
}

bool QCamera::HasSaveBuffer() {
    const std::lock_guard<std::mutex> save(m_saveMutex);
    return m_pSaveBuffer != nullptr;
}

int QCamera::EncodeSaveBuffer(int type, uint32_t& length) {
    const uint64_t needed = static_cast<uint64_t>(m_nWidth) * m_nHeight * 3 + 1024;
    if (needed > UINT32_MAX)
        return -2;
    if (!m_pEncodeBuffer || m_nEncodeBufferSize < needed) {
        m_pEncodeBuffer.reset(new (std::nothrow) uint8_t[needed]());
        m_nEncodeBufferSize = m_pEncodeBuffer ? static_cast<uint32_t>(needed) : 0;
        m_nEncodeUsed = 0;
        if (!m_pEncodeBuffer)
            return -2;
    }
    // The encoder gets it clear; only what the last picture took isn't.
    std::memset(m_pEncodeBuffer.get(), 0, m_nEncodeUsed);
    m_nEncodeUsed = m_nEncodeBufferSize;
    QLocalCfg* cfg = QLocalCfg::Instance();
    _OV_IMAGE_INFO_ record{};
    record.sourceType = GetConvertPixelFormat(m_pixelType);
    record.width = static_cast<uint16_t>(m_nWidth);
    record.height = static_cast<uint16_t>(m_nHeight);
    record.imageType = static_cast<uint32_t>(type);
    record.output = m_pEncodeBuffer.get();
    record.outputCapacity = m_nEncodeBufferSize;
    record.jpegQuality = static_cast<uint32_t>(JpegQualityOf(cfg ? cfg->GetImgQuality() : 0));
    uint32_t status = OV_STATUS_OK;
    {
        const std::lock_guard<std::mutex> save(m_saveMutex);
        if (!m_pSaveBuffer)
            return -4;
        record.source = m_pSaveBuffer.get();
        record.sourceLength = std::min(m_nFrameSize.load(), m_nSaveBufferSize);
        status = OV_MP_SaveImage(m_pMedia, &record);
    }
    length = std::min(record.outputLength, m_nEncodeBufferSize);
    if (status == OV_STATUS_OK)
        m_nEncodeUsed = length;
    // deliberate: not mapped, the library's status comes back as it is.
    return static_cast<int>(status);
}

// The caller holds the encode mutex.
int QCamera::WriteEncoded(const QString& name, uint32_t length) {
    QFile file(name);
    const bool opened = file.open(QIODevice::WriteOnly);
    if (!QFile::exists(name))
        return -26;
    if (!opened)
        return -25;
    const auto written = file.write(reinterpret_cast<const char*>(m_pEncodeBuffer.get()), length);
    // A full disk may show only when the buffered rest is written.
    if (written != static_cast<qint64>(length) || !file.flush()) {
        // By name: QFile::remove leaves a file that it can't flush first.
        file.close();
        QFile::remove(name);
        return -25;
    }
    file.close();
    m_bImageSaved = true;
    return 0;
}

int QCamera::SnapRawData(const char* path) {
    if (!path)
        return -24;
    if (!ResolvePixelType())
        return -24;
    if (!HasRoomInOutputFolder())
        return -25;
    if (!HasSaveBuffer()) // before an empty file is made
        return -24;
    const QString name = QFile::decodeName(path);
    QFile file(name);
    const bool opened = file.open(QIODevice::WriteOnly);
    if (!QFile::exists(name))
        return -26;
    if (!opened)
        return -25;
    {
        const std::lock_guard<std::mutex> save(m_saveMutex);
        if (!m_pSaveBuffer)
            return -24;
        const uint32_t length = IsJPGFormat(m_pixelType) ? LengthOfSavedFrame()
                                                         : std::min(m_nFrameSize.load(), m_nSaveBufferSize);
        // deliberate: whether the bytes reached the disk isn't looked at here.
        file.write(reinterpret_cast<const char*>(m_pSaveBuffer.get()), length);
    }
    file.close();
    m_bImageSaved = true;
    return 0;
}

// --- a series
// ---------------------------------------------------------------------------------------------------------------

QString QCamera::SeriesFolder() const {
    char name[129] = {};
    GetCameraName(name, sizeof name);
    QLocalCfg* cfg = QLocalCfg::Instance();
    return QString("%1/%2").arg(cfg ? cfg->GetDataOutputFolder() : QString(),
                                SafeFolderName(QString::fromUtf8(name)));
}

int QCamera::SaveOneImage() {
    QLocalCfg* cfg = QLocalCfg::Instance();
    if (!cfg)
        return -4;
    const QString folder = SeriesFolder();
    const int format = cfg->GetImgSaveFormat();
    const int naming = cfg->GetImgSaveFileNameIndexType();
    QString number;
    if (naming == 0)
        number = QDateTime::currentDateTime().toString("yyyyMMddhhmmsszzz");
    else if (naming == 1)
        number = QString::number(++m_nFileIndex);
    // Another naming mode leaves the path empty, and the file can't be made.
    const QString path = naming == 0 || naming == 1
                             ? SeriesFileName(folder, cfg->GetImgSavePreFileName(), number, format)
                             : QString();
    if (!QDir(folder).exists() && !QDir().mkpath(folder)) {
        // deliberate: without a message.
        ++m_nImageFailures;
        return -27;
    }
    const QByteArray name = QFile::encodeName(path);
    int code = 0;
    if (format == 0 || format == 1)
        code = SnapPicture(name.constData(), format);
    else
        code = SnapRawData(name.constData());
    if (code == 0) {
        ++m_nImagesSaved;
        return 0;
    }
    ++m_nImageFailures;
    const QString text = QFunction::GenerateCameraOperateError(code);
    if (QCameraOwner* owner = m_pOwner)
        owner->OnShowMsg(Tr("Hint"), text, MESSAGE_WARNING);
    if (QFunction* function = QFunction::Instance())
        function->InsertMessageLog(
            MESSAGE_LOG_CRITICAL, kSource,
            Tr(QT_TRANSLATE_NOOP("QCamera", "Failed to save the captured image.(%1)")).arg(text));
    return code;
}

void QCamera::OnSeriesFolderFailure(int code) {
    ++m_nImageFailures;
    QCameraOwner* owner = m_pOwner;
    // One message a series.
    if (!owner || m_nErrorShown != 0)
        return;
    owner->OnShowMsg(Tr("Hint"), QFunction::GenerateCameraOperateError(code), MESSAGE_WARNING);
    owner->OnStopRecording();
    ++m_nErrorShown;
}

// False when the output folder is gone or can't be written.
bool QCamera::CheckSeriesFolder() {
    QLocalCfg* cfg = QLocalCfg::Instance();
    if (!cfg)
        return false;
    QString folder = cfg->GetDataOutputFolder();
    if (!QFile::exists(folder)) {
        OnSeriesFolderFailure(-26);
        return false;
    }
    if (folder.isEmpty())
        folder = QCoreApplication::applicationDirPath();
    QFile probe(folder + "/.test.txt");
    if (probe.open(QIODevice::WriteOnly)) {
        probe.remove();
    } else if (QFileInfo(folder).isDir()) {
        OnSeriesFolderFailure(-27);
        return false;
    }
    return true;
}

int QCamera::SaveImages() {
    if (!CheckSeriesFolder())
        return 0;
    QLocalCfg* cfg = QLocalCfg::Instance();
    int code = 0;
    bool ended = false;
    if (cfg->GetImgSaveMode() == 0)
        ended = SeriesByFrames(code);
    else if (cfg->GetImgSaveMode() == 1)
        ended = SeriesByTime(code);
    if (ended)
        EndSeries();
    if (code == -25 || code == -26) {
        if (QCameraOwner* owner = m_pOwner)
            owner->OnStopRecording();
    }
    return code;
}

bool QCamera::SeriesByFrames(int& code) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    const int counter = ++m_nCaptureCounter;
    // A file edited by hand may hold 0 or less, which the options dialog never gives; it counts as every
    // frame.
    const int span = std::max(cfg->GetImgSaveSpanFrames(), 1);
    if (counter % span == 0)
        code = SaveOneImage();
    return cfg->GetCheckImgSaveFixedFrames() && counter / span >= cfg->GetImgSaveFixedFramesNum();
}

bool QCamera::SeriesByTime(int& code) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    const int64_t span = MillisecondsOf(cfg->GetImgSaveSpanTime(), cfg->GetImgSaveSpanTimeUnit());
    const int64_t fixed = MillisecondsOf(cfg->GetImgSaveFixedTimeNum(), cfg->GetImgSaveFixedTimeUnit());
    const QDateTime now = QDateTime::currentDateTime();
    if (m_nCaptureCounter == 0) {
        m_captureStart = now;
        m_captureNext = now;
        m_nCaptureCounter = 1;
    }
    if (m_captureNext.msecsTo(now) >= span || m_bFirstCapture) {
        code = SaveOneImage();
        m_bFirstCapture = false;
        // By exact steps, so that a late frame doesn't shift the later ones.
        m_captureNext = m_captureNext.addMSecs(span);
        ++m_nCaptureCounter;
    }
    // Half a span more lets the last interval finish.
    return cfg->GetCheckImgSaveFixedTimes() && m_captureStart.msecsTo(now) > span / 2 + fixed;
}

void QCamera::EndSeries() {
    m_nCaptureCounter = 0;
    m_nFileIndex = 0;
    m_bCapturing = false;
    if (QCameraOwner* owner = m_pOwner) {
        owner->OnShowSaveMsg(Tr(QT_TRANSLATE_NOOP("QCamera", "Images captured.")), SeriesFolder());
        owner->UpdateCaptureBtnAndAction(false);
    }
}

void QCamera::SetImgSave() {
    const bool capturing = !m_bCapturing;
    if (!capturing) {
        m_bCapturing = false;
        m_lastGoodPixelType = OV_GVSP_NONE;
        m_bImageSaved = false;
        m_bFirstCapture = true;
        m_nErrorShown = 0;
        m_nCaptureCounter = 0;
        m_nFileIndex = 0;
        return;
    }
    ForgetWaitingFrames();
    m_bCapturing = true;
}
