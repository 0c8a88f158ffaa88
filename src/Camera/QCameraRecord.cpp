// The raw recorder: every frame that reaches the save thread, one after the other in one file.
#include "Camera/QCamera.h"

#include "Camera/QCameraOwner.h"
#include "Common/QFunction.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QFile>
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
    auto made = std::make_unique<QFile>(QFile::decodeName(file));
    if (!made->open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return -25;
    m_pRecordFile = std::move(made);
    m_pRecordStream = std::make_unique<QDataStream>(m_pRecordFile.get());
    m_writeBehind.Start(m_pRecordFile->handle());
    m_nLastWrite = 0;
    m_nRecordingType = kTypeRaw;
    ForgetWaitingFrames();
    m_bRecording = true;
    return 0;
}

// The caller holds the record mutex.
void QCamera::CloseRecordFile() {
    m_pRecordStream.reset();
    m_writeBehind.Finish();
    if (m_pRecordFile)
        m_pRecordFile->close();
    m_pRecordFile.reset();
}

void QCamera::OnRecordDiskFull() {
    ++m_nRecordFailures;
    QCameraOwner* owner = m_pOwner;
    if (!owner)
        return;
    owner->OnShowMsg(QCoreApplication::translate("QCamera", "Hint"),
                     QFunction::GenerateCameraOperateError(-25), MESSAGE_WARNING);
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
                m_writeBehind.OnWritten(m_nLastWrite);
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
    {
        const std::lock_guard<std::mutex> lock(m_recordMutex);
        if (m_nRecordingType == kTypeRaw && m_pRecordFile) {
            m_pRecordStream.reset();
            // Nothing was written: no file is left.
            if (m_nLastWrite == 0)
                m_pRecordFile->remove();
            CloseRecordFile();
        }
        m_nLastWrite = 0;
    }
    m_nRecordingType = kTypeNone;
    m_lastGoodPixelType = OV_GVSP_NONE;
    m_bRecordedSuccess = false;
    return 0;
}
