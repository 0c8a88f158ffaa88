// The raw recorder: every frame that reaches the save thread, one after the other in one file.
#include "Camera/QCamera.h"

#include "Camera/CRecordFile.h"
#include "Camera/QCameraOwner.h"
#include "Common/QFunction.h"

#include <QCoreApplication>
#include <QDataStream>
#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned long long kLeastFreeMiB = 1001;
constexpr int kTypeMediaLibrary = 0;
constexpr int kTypeRaw = 2;
constexpr int kTypeNone = 3;

} // namespace

int QCamera::StartRecordRawData(const char* file, const char* folder) {
    if (!file || !folder)
        return -4;
    // The frame that is being saved belongs to what was before.
    const std::lock_guard<CFairMutex> turn(m_saveTurnMutex);
    const std::lock_guard<std::mutex> lock(m_recordMutex);
    m_recordFolder.fill('\0');
    std::strncpy(m_recordFolder.data(), folder, m_recordFolder.size() - 1);
    unsigned long long free = 0;
    GetDiskLastSpace(m_recordFolder.data(), &free);
    if (free < kLeastFreeMiB)
        return -25;
    CloseRecordFile();
    auto made = std::make_unique<CRecordFile>(QFile::decodeName(file));
    if (!made->open(QIODevice::WriteOnly))
        return -25;
    m_pRecordFile = std::move(made);
    m_pRecordStream = std::make_unique<QDataStream>(m_pRecordFile.get());
    m_nLastWrite = 0;
    m_nRecordingType = kTypeRaw;
    ForgetWaitingFrames();
    m_bRecording = true;
    return 0;
}

// The caller holds the record mutex. The number of frames that had been counted as recorded and that the disk
// refused afterwards; they are counted as failures now.
int QCamera::CloseRecordFile() {
    m_pRecordStream.reset();
    if (!m_pRecordFile)
        return 0;
    m_pRecordFile->close();
    const int64_t lost = m_pRecordFile->GetLost();
    m_pRecordFile.reset();
    if (lost <= 0 || m_nRecordedFrame == 0)
        return 0;
    const int64_t frames = (lost + m_nRecordedFrame - 1) / m_nRecordedFrame;
    m_nRecorded -= frames;
    m_nRecordFailures += frames;
    return static_cast<int>(frames);
}

void QCamera::ShowRecordFailure() {
    if (QCameraOwner* owner = m_pOwner)
        owner->OnShowMsg(QCoreApplication::translate("QCamera", "Hint"),
                         QFunction::GenerateCameraOperateError(-25), MESSAGE_WARNING);
}

void QCamera::OnRecordDiskFull() {
    ++m_nRecordFailures;
    ShowRecordFailure();
    if (QCameraOwner* owner = m_pOwner)
        owner->OnStopRecording();
}

void QCamera::SaveRecord() {
    QCameraOwner* owner = m_pOwner;
    bool full = false;
    {
        const std::lock_guard<std::mutex> save(m_saveMutex);
        const std::lock_guard<std::mutex> lock(m_recordMutex);
        if (!m_pRecordStream || !owner || !m_pRecordFile) {
            ++m_nDiscarded;
            return;
        }
        unsigned long long free = 0;
        GetDiskLastSpace(m_recordFolder.data(), &free);
        if (free < kLeastFreeMiB) {
            CloseRecordFile();
            full = true;
        } else if (m_nRecordingType == kTypeRaw && m_pSaveBuffer) {
            m_nLastWrite = m_pRecordStream->writeRawData(reinterpret_cast<const char*>(m_pSaveBuffer.get()),
                                                         static_cast<int>(m_nSaveBufferSize));
            if (m_nLastWrite < 0 || m_nLastWrite != static_cast<int>(m_nSaveBufferSize)) {
                CloseRecordFile();
                full = true;
            } else {
                m_nRecordedFrame = m_nLastWrite;
                m_bRecordedSuccess = true;
                ++m_nRecorded;
            }
        }
    }
    if (full) {
        OnRecordDiskFull();
        return;
    }
    if (m_nRecordingType != kTypeMediaLibrary || !m_pMedia)
        return;
    const std::lock_guard<std::mutex> save(m_saveMutex);
    if (OV_MP_InputData(m_pMedia, m_pSaveBuffer.get(), m_nSaveBufferSize) != OV_STATUS_OK)
        owner->OnStopRecording();
}

int QCamera::StopRecord() {
    m_bRecording = false;
    if (m_nRecordingType == kTypeMediaLibrary && m_pMedia) {
        const uint32_t status = OV_MP_StopRecord(m_pMedia);
        if (status != OV_STATUS_OK)
            return static_cast<int>(status);
    }
    int lost = 0;
    {
        const std::lock_guard<std::mutex> lock(m_recordMutex);
        if (m_nRecordingType == kTypeRaw && m_pRecordFile) {
            m_pRecordStream.reset();
            // Nothing was written: no file is left.
            if (m_nLastWrite == 0)
                m_pRecordFile->remove();
            lost = CloseRecordFile();
        }
        m_nLastWrite = 0;
    }
    // Otherwise nobody would learn that the end of the file is missing.
    if (lost > 0)
        ShowRecordFailure();
    m_nRecordingType = kTypeNone;
    m_lastGoodPixelType = OV_GVSP_NONE;
    m_bRecordedSuccess = false;
    return 0;
}
