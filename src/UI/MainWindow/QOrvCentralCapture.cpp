// The central window's way with files and tools: pictures, recordings, display modes, XML, external programs.
#include "Camera/CCameraRef.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "Common/SleepEx.h"
#include "Common/ToolProcess.h"
#include "UI/Controls/CFileDialog.h"
#include "UI/MainWindow/CameraUse.h"
#include "UI/MainWindow/CapturePaths.h"
#include "UI/MainWindow/ProgramLog.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QRenderWidget.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDesktopServices>
#include <QDialog>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QUrl>

namespace {

constexpr int kBeforeSnapshotMs = 500;
constexpr int kAfterDisplayModeMs = 200;
constexpr int kSaveVideo = 0;
constexpr int kSaveSeries = 1;
constexpr int kToolPanelFlags = 0x40800; // frameless, on top

QString BesideProgram(const QString& file) {
    return QCoreApplication::applicationDirPath() + '/' + file;
}

void CentreOnDesktop(QWidget& window) {
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        window.move(screen->geometry().center() - window.rect().center());
}

} // namespace

QString QOrvCentralWindow::StartFolder(const QString& strLast) const {
    if (!strLast.isEmpty())
        return strLast;
    const QLocalCfg* settings = QLocalCfg::Instance();
    return settings ? settings->GetDataOutputFolder() : QString();
}

void QOrvCentralWindow::WarnOfHiddenFile(const QString& strPath) {
    if (CapturePaths::IsHidden(strPath))
        QFunction::ShowMessage(this, tr("This file is hidden files."), QString(), QString(), MESSAGE_WARNING);
}

// --- one picture

void QOrvCentralWindow::OnActionSaveImg() {
    const CCameraRef camera = CCameraRef::ById(m_lCurCameraID);
    const QString proposed = QString("%1//%2").arg(StartFolder(m_strImageFolder),
                                                   CapturePaths::Stamp(QDateTime::currentDateTime())) +
                             ".bmp";
    QString path = CFileDialog::GetSaveFileName(this, tr("Save Image"), proposed,
                                                tr("Images (*.bmp);;RawData (*.raw);;Images (*.jpg)"));
    if (path.isEmpty())
        return;
    m_strImageFolder = CapturePaths::FolderOf(path);
    WarnOfHiddenFile(path);
    path = CapturePaths::WithPictureExtension(path);
    if (!camera)
        return;
    SleepEx(kBeforeSnapshotMs);
    int code = camera->SaveCurrentFrame();
    if (code == 0)
        code = SnapTo(*camera, path);
    if (code == 0) {
        OnShowSaveMsg(tr("Images captured."), m_strImageFolder);
        return;
    }
    const QString reason = QFunction::GenerateCameraOperateError(code);
    QFunction::ShowMessage(this, tr("Failed to save the captured image."), reason, QString(), MESSAGE_ERROR);
    LogProgram(MESSAGE_LOG_CRITICAL, tr("Failed to save the captured image. (%1)").arg(reason));
}

int QOrvCentralWindow::SnapTo(QCamera& camera, const QString& strPath) {
    const QByteArray file = strPath.toUtf8();
    switch (CapturePaths::PictureOf(strPath)) {
    case CapturePaths::Picture::Jpeg:
        return camera.SnapPicture(file.constData(), 1);
    case CapturePaths::Picture::Bmp:
        return camera.SnapPicture(file.constData(), 0);
    case CapturePaths::Picture::Raw:
        break;
    }
    return camera.SnapRawData(file.constData());
}

// --- recording and series

void QOrvCentralWindow::OnActionRecord(bool bShowResult) {
    const QLocalCfg* settings = QLocalCfg::Instance();
    const CCameraRef camera = CCameraRef::ById(m_lCurCameraID);
    if (!settings || !camera)
        return;
    camera->SetOwner(this);
    switch (settings->GetSaveMode()) {
    case kSaveVideo:
        if (camera->IsRecord())
            StopVideo(*camera, bShowResult);
        else
            StartVideo(camera);
        break;
    case kSaveSeries:
        ToggleSeries(*camera, bShowResult);
        break;
    default:
        break;
    }
}

void QOrvCentralWindow::ShowRecording(bool bOn) {
    m_pToolBar->UpdateRecordBtnImg(bOn);
    Q_EMIT SigUpdateRecAction(bOn);
}

void QOrvCentralWindow::StartVideo(const CCameraRef& camera) {
    const long id = m_lCurCameraID;
    const QString name = CapturePaths::Stamp(QDateTime::currentDateTime()) + ".raw";
    m_strRecordFile.clear();
    const QString path = CFileDialog::GetSaveFileName(
        this, tr("Save Record"), CapturePaths::RecordPath(StartFolder(m_strRecordFolder), name),
        tr("RawData(*.raw)"));
    // The camera may have been lost while the operator chose.
    if (path.isEmpty() || id != m_lCurCameraID)
        return;
    m_strRecordFile = path;
    m_strRecordFolder = CapturePaths::FolderOf(path);
    WarnOfHiddenFile(path);
    m_pRender->OnSetRecord(true, true);
    // Deliberate: with another ending nothing is recorded, while title and buttons show a recording until the
    // next click.
    if (path.contains(".raw")) {
        const QByteArray folder = CapturePaths::RecordDirectory(path).toUtf8();
        const int code = camera->StartRecordRawData(path.toUtf8().constData(), folder.constData());
        if (code != 0) {
            m_pRender->OnSetRecord(true, false);
            const QString reason = QFunction::GenerateCameraOperateError(code);
            QFunction::ShowMessage(this, tr("Recording failed."), reason, QString(), MESSAGE_ERROR);
            LogProgram(MESSAGE_LOG_CRITICAL, tr("Recording failed. (%1)").arg(reason));
            return;
        }
    }
    ShowRecording(true);
}

void QOrvCentralWindow::StopVideo(QCamera& camera, bool bShowResult) {
    const bool recorded = camera.IsRecordedSuccess(); // StopRecord clears it
    m_pRender->OnSetRecord(true, false);
    const int code = camera.StopRecord();
    if (!QFile::exists(m_strRecordFile) || !recorded)
        QFunction::ShowMessage(this, tr("Recording failed.No data."), QString(), QString(), MESSAGE_ERROR);
    else if (code == 0 && bShowResult)
        OnShowSaveMsg(tr("Video files saved."), CapturePaths::FolderOf(m_strRecordFile));
    ShowRecording(false);
}

void QOrvCentralWindow::ToggleSeries(QCamera& camera, bool bShowResult) {
    const bool saved = camera.GetIsSaveImaged(); // SetImgSave clears it
    camera.SetImgSave();
    if (camera.IsCapturing()) {
        ShowRecording(true);
        m_pRender->OnSetRecord(false, true);
        return;
    }
    QString folder = StartFolder(QString());
    if (folder.isEmpty())
        folder = BesideProgram("Data");
    ShowRecording(false);
    m_pRender->OnSetRecord(false, false);
    if (!bShowResult)
        return;
    if (saved)
        OnShowSaveMsg(tr("Images captured."), QString("%1/%2").arg(folder, NameOfCamera(camera)));
    else
        QFunction::ShowMessage(this, tr("No picture saved."), QString(), QString(), MESSAGE_ERROR);
}

void QOrvCentralWindow::OnSigStopRecording() {
    OnActionRecord(false);
}

void QOrvCentralWindow::OnUpdateCaptureBtnAndAction(bool bCapturing) {
    ShowRecording(bCapturing);
    m_pRender->OnSetRecord(false, bCapturing);
}

// --- display

void QOrvCentralWindow::OnActionDisplayMode(int nMode) {
    Q_EMIT SigUpdateMenuActions(nMode);
    Q_EMIT SigDisplayModeChanged(nMode);
    if (const CCameraRef camera = CCameraRef::ById(m_lCurCameraID)) {
        camera->SetDisplayMode(nMode);
        SleepEx(kAfterDisplayModeMs);
        m_pRender->update();
    }
}

void QOrvCentralWindow::OnActionVRMode(int nMode) {
    Q_EMIT SigUpdateMenuActions(nMode);
    if (const CCameraRef camera = CCameraRef::ById(m_lCurCameraID))
        camera->SetVRMode(nMode);
}

void QOrvCentralWindow::OnActionVREngineMode(int nMode) {
    Q_EMIT SigUpdateMenuActions(nMode);
    Q_EMIT SigVREngineChanged(static_cast<uint>(m_nRenderEngine), m_lCurCameraID);
    if (const CCameraRef camera = CCameraRef::ById(m_lCurCameraID))
        camera->SetVREngineMode(m_nRenderEngine);
}

// --- the camera's features and files

void QOrvCentralWindow::OnActionLoadFeatures() {
    if (m_pFeatures)
        m_pFeatures->LoadCamFeatures();
}

void QOrvCentralWindow::OnActionSaveFeatures() {
    if (m_pFeatures)
        m_pFeatures->SaveCamFeatures();
}

void QOrvCentralWindow::OnActionFileAccess() {
    if (m_parts.fileAccess)
        m_parts.fileAccess(this, m_lCurCameraID);
}

void QOrvCentralWindow::OnActionSaveGenIcamFile() {
    const CCameraRef camera = CCameraRef::ById(m_lCurCameraID);
    if (!camera)
        return;
    QString model = camera->GetCameraModelName();
    QFunction::RemoveIllegalChar(model); // the camera's own text: it must not lead to another folder
    const QString path = CFileDialog::GetSaveFileName(
        this, tr("Save GenIcam File"), QString("%1/%2.xml").arg(StartFolder(m_strImageFolder), model),
        tr("File (*.xml)"));
    if (path.isEmpty())
        return;
    if (camera->SaveGenIcamXml(path))
        m_strImageFolder = CapturePaths::FolderOf(path);
    else
        LogProgram(MESSAGE_LOG_CRITICAL, tr("Failed to save the GenICam XML file. (%1)").arg(path));
}

void QOrvCentralWindow::OnCameraFeaturesSetting() {
    const CCameraRef camera = CCameraRef::ById(m_lCurCameraID);
    if (!camera || !m_parts.toolPanel)
        return;
    if (camera->IsRecord()) {
        QFunction::ShowMessage(this,
                               tr("Failed to open the attribute settings. \nPlease stop recording first."),
                               QString(), QString(), MESSAGE_WARNING);
        return;
    }
    if (camera->IsCapturing()) {
        QFunction::ShowMessage(this,
                               tr("Failed to open the attribute settings. Please stop capturing first."),
                               QString(), QString(), MESSAGE_WARNING);
        return;
    }
    m_pRender->OnCloseSubView();
    if (!m_pToolPanel)
        m_pToolPanel.reset(m_parts.toolPanel(this, [this] { OnClassifedFeatuerClosed(); }));
    if (!m_pToolPanel)
        return;
    m_pToolPanel->SetCurCamera(m_lCurCameraID);
    m_pToolPanel->UpdateCurrentPage();
    QDialog* const window = m_pToolPanel->Window();
    CentreOnDesktop(*window);
    window->setWindowFlags(static_cast<Qt::WindowFlags>(kToolPanelFlags));
    window->exec();
}

void QOrvCentralWindow::OnClassifedFeatuerClosed() {
    if (m_pToolPanel)
        m_pToolPanel->Window()->hide();
    if (m_pFeatures)
        m_pFeatures->UpdateFeatures(0, QString());
}

// --- options and other programs

void QOrvCentralWindow::OnActionOptions(bool bNetworkPage) {
    _OPTIONS_CALL_ call;
    if (const CCameraRef camera = CCameraRef::ById(m_lCurCameraID))
        call.recording = camera->IsRecord();
    call.cameraId = m_lCurCameraID;
    call.networkPage = bNetworkPage;
    call.language = Language();
    bool accepted = false;
    if (!m_parts.options || !m_parts.options(window(), call, accepted)) {
        QFunction::ShowMessage(this, tr("Failed to open the Option window."), QString(), QString(),
                               MESSAGE_ERROR);
        return;
    }
    if (!accepted)
        return;
    m_pDeviceList->OnOptionsChanged();
    if (m_pFeatures)
        m_pFeatures->OnOptionsChanged();
    for (int i = 0;; ++i) {
        const CCameraRef camera = CCameraRef::ByIndex(i);
        if (!camera)
            break;
        camera->OnSetThrowAbnormalImage();
        camera->OnSetSDKBuffers();
    }
}

void QOrvCentralWindow::StartTool(const QString& strProgram) {
    static const char* const kLanguages[] = {"ENG", "CH"};
    // Nothing is checked afterwards: the tool tells of its own troubles.
    QProcess::startDetached(BesideProgram(strProgram), {kLanguages[Language()]});
}

void QOrvCentralWindow::OnActionIPConfigurator() {
    StartTool("KOLT_IP_Config");
}

void QOrvCentralWindow::OnActionFirmWareUpdator() {
    StartTool("KOLT_Firmware_Update");
}

void QOrvCentralWindow::OnActionNetWorkAdapter() {
    StartTool("Net_Adapter_Setup.exe");
}

int QOrvCentralWindow::ToolProcessOrpIP(const QString& strName) {
    return EndToolByPattern(strName, "ORV_IP_Config"); // deliberate: not the name that is looked for
}

int QOrvCentralWindow::ToolProcessOrpUpgrade(const QString& strName) {
    return EndToolByPattern(strName, "KOLT_Firmware_Update");
}

void QOrvCentralWindow::OnActionOperator() {
    const QString manual = Language() == CLanguageSwitch::Chinese
                               ? "User Manual of KOLT Client Software for LinuxV2_1_Ch.pdf"
                               : "User Manual of KOLT Client Software for LinuxV2_1_En.pdf";
    QDesktopServices::openUrl(QUrl::fromLocalFile(BesideProgram(manual)));
}
