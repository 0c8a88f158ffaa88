// The central window's way with cameras: opening, closing, live view, lost cameras.
#include "Camera/CCameraRef.h"
#include "Common/QFunction.h"
#include "UI/Controls/QHintAdjustDlg.h"
#include "UI/Controls/QImageButton.h"
#include "UI/MainWindow/CameraUse.h"
#include "UI/MainWindow/ProgramLog.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QRenderWidget.h"

#include <QDialog>
#include <QSize>
#include <QVariant>

namespace {

constexpr int kConnectAction = 21;
constexpr int kNoFormatCode = -28;

bool IsCameraItem(int nType) {
    return nType == QDevListWidget::ITEM_GIGE_CAMERA || nType == QDevListWidget::ITEM_USB_CAMERA;
}

} // namespace

// --- state shown

void QOrvCentralWindow::UpdateMenuBarActions(int nType, int nCameraID) {
    Q_EMIT SigUpdateMenuBarActions(nType, nCameraID);
    Q_EMIT SigVREngineChanged(static_cast<uint>(m_nRenderEngine), nCameraID);
}

void QOrvCentralWindow::OnClickedDeviceTreeItem(int nType, int nID) {
    m_pToolBar->UpdateToolBarBtn(nType, nID);
    UpdateMenuBarActions(nType, nID);
}

void QOrvCentralWindow::ShowCameraState(long lCameraID) {
    OnClickedDeviceTreeItem(QDevListWidget::ITEM_GIGE_CAMERA, static_cast<int>(lCameraID));
}

void QOrvCentralWindow::OnZoomStateChanged(bool bZoomIn, bool bZoomOut) {
    Q_EMIT SigEnabledZoom(bZoomIn, bZoomOut);
    m_pToolBar->SetToolBarZoomInAndOut(bZoomIn, bZoomOut);
}

void QOrvCentralWindow::ChangeFeatureSettingWidget(long lCameraID) {
    if (!m_pToolPanel)
        return;
    const CCameraRef camera = CCameraRef::ById(m_lCurCameraID);
    if (!camera || !camera->IsConnect())
        return;
    m_pToolPanel->SetCurCamera(lCameraID);
    m_pToolPanel->UpdateCurrentPage();
}

void QOrvCentralWindow::DeleteToolPanel() {
    if (m_pToolPanel)
        m_pToolPanel->Window()->close();
    m_pToolPanel.reset();
}

// --- opening and closing

void QOrvCentralWindow::OnActionConnect() {
    QVariant current;
    if (!m_pDeviceList->GetCurrentItemData(current))
        return;
    const QSize item = current.toSize();
    if (!IsCameraItem(item.width()))
        return;
    const long id = item.height();
    if (const CCameraRef camera = CCameraRef::ById(id)) {
        if (camera->IsConnect())
            OnCloseCamera(id);
        else
            OnOpenCamera(id);
    }
    // A double click must not undo at once what it did.
    m_pToolBar->button(kConnectAction)->ControlClickEvent();
}

void QOrvCentralWindow::OnOpenCamera(long lCameraID) {
    if (lCameraID < 0 || lCameraID == m_lCurCameraID)
        return;
    if (CCameraRef::ById(m_lCurCameraID))
        OnCloseCamera(m_lCurCameraID);
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera || !m_pDeviceList->OnCheckCameraReachable(lCameraID))
        return;
    const QString name = NameOfCamera(*camera);
    const int code = camera->OpenCamera();
    if (code != 0) {
        const QString reason = QFunction::GenerateCameraOperateError(code);
        QFunction::ShowMessage(this, tr("Connecting camera failed."), reason, QString(), MESSAGE_ERROR);
        LogProgram(MESSAGE_LOG_CRITICAL, tr("Connecting %1 failed.(%2)").arg(name, reason));
        return;
    }
    LogProgram(MESSAGE_LOG_MESSAGE, tr("%1 connected.").arg(name));
    TellCameraOpen(*camera, lCameraID);
}

void QOrvCentralWindow::TellCameraOpen(QCamera& camera, long lCameraID) {
    camera.SetOwner(this);
    m_lCurCameraID = lCameraID;
    if (m_pFeatures)
        m_pFeatures->OnCameraOpen(lCameraID);
    ChangeFeatureSettingWidget(lCameraID);
    if (m_pEmbedded)
        m_pEmbedded->OnCameraOpen(lCameraID);
    ShowCameraState(lCameraID);
    m_pDeviceList->OnCameraOpen(lCameraID);
    m_pRender->OnCameraOpen(lCameraID);
    QCameraContainer::Instance()->SetCurrentCameraID(lCameraID);
    camera.SetCameraDisconnectCallBackInfo(&QOrvCentralWindow::ORVCamDisconnectCallBack, this);
    CheckGigESpeed();
    CheckJumbPacket();
    m_bAdjustShown = false;
}

void QOrvCentralWindow::CheckGigESpeed() {
    const CCameraRef camera = CCameraRef::ById(m_lCurCameraID);
    if (camera && !camera->IsSuperSpeed()) {
        QFunction::ShowMessage(
            this, tr("The network speed is less than 1.0 Gbps.\nPlease check the network connection."),
            QString(), tr("Hint"), MESSAGE_WARNING);
    }
}

void QOrvCentralWindow::OnCloseCamera(long lCameraID) {
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera)
        return;
    const long current = m_lCurCameraID;
    OnStopContinousShot(true);
    if (m_lCurCameraID != current)
        return; // lost, and closed, while a notice of the stop stood
    const QString name = NameOfCamera(*camera);
    const int code = camera->CloseCamera();
    if (code != 0) {
        LogProgram(MESSAGE_LOG_CRITICAL,
                   tr("Disconnecting %1 failed: %2").arg(name, QFunction::GenerateCameraOperateError(code)));
    } else {
        LogProgram(MESSAGE_LOG_MESSAGE, tr("%1 disconnected.").arg(name));
    }
    m_pRender->OnStopRender();
    m_pAdjustHint->hide(); // it speaks of this camera
    DeleteToolPanel();
    ShowCameraState(lCameraID);
    m_pDeviceList->OnCameraClose(m_lCurCameraID);
    if (m_pFeatures)
        m_pFeatures->OnCameraClose(m_lCurCameraID);
    ChangeFeatureSettingWidget(m_lCurCameraID);
    if (m_pEmbedded)
        m_pEmbedded->OnCameraClose(m_lCurCameraID);
    m_lCurCameraID = -1;
    QCameraContainer::Instance()->SetCurrentCameraID(-1);
}

// --- live view

void QOrvCentralWindow::OnActionContinousShot() {
    if (m_lCurCameraID < 0)
        qFatal("ASSERT: \"m_lCurCameraID >= 0\" in QOrvCentralWindow::OnActionContinousShot");
    const CCameraRef camera = CCameraRef::ById(m_lCurCameraID);
    if (!camera)
        return;
    if (camera->IsShotting())
        OnStopContinousShot(false);
    else
        OnContinousShot();
}

void QOrvCentralWindow::ReportStartFailure(const QString& strName, const QString& strReason) {
    QFunction::ShowMessage(this, tr("Failed to start live view."), strReason, QString(), MESSAGE_ERROR);
    LogProgram(MESSAGE_LOG_CRITICAL, tr("%1 failed to start live view. (%2)").arg(strName, strReason));
}

bool QOrvCentralWindow::RefuseJpeg(QCamera& camera, const QString& strName) {
    OvGvspPixelType format = OV_GVSP_NONE;
    if (!camera.GetCurPixelFormat(format) || format != OV_GVSP_JPEG)
        return false;
    ReportStartFailure(strName, QFunction::GenerateCameraOperateError(kNoFormatCode));
    return true;
}

void QOrvCentralWindow::OnContinousShot() {
    const long id = m_lCurCameraID;
    const CCameraRef camera = CCameraRef::ById(id);
    if (!camera)
        return;
    const QString name = NameOfCamera(*camera);
    if (RefuseJpeg(*camera, name))
        return;
    OnActionDisplayMode(m_nDisplayMode);
    OnActionVRMode(m_nRenderModeA);
    OnActionVRMode(m_nRenderModeB);
    OnActionVREngineMode(m_nRenderEngine);
    m_pToolBar->SetRotateBtnEnable(!IsGDIRender());
    m_pRender->OnStartRender(true, id);
    const int code = camera->OnStartGettingFrame(true);
    m_pRender->OnStartRender(false, id);
    m_pRender->setFocus(Qt::OtherFocusReason);
    if (code != 0) {
        ReportStartFailure(name, QFunction::GenerateCameraOperateError(code));
        m_pRender->OnStopRender();
        return;
    }
    LogProgram(MESSAGE_LOG_MESSAGE, tr("%1 started live view.").arg(name));
    if (m_pFeatures)
        m_pFeatures->OnCameraStartShot();
    ChangeFeatureSettingWidget(id);
    ShowCameraState(id);
    int triggerMode = 0;
    camera->GetTriggerMode(triggerMode); // deliberate: read for the node's cache, not used here
}

void QOrvCentralWindow::OnStopContinousShot(bool bClosing) {
    const long id = m_lCurCameraID;
    const CCameraRef camera = CCameraRef::ById(id);
    if (!camera)
        return;
    // One action ends both, a video and a series.
    if (camera->IsRecord())
        OnActionRecord(true);
    if (camera->IsCapturing())
        OnActionRecord(true);
    if (!camera->IsShotting())
        return;
    const QString name = NameOfCamera(*camera);
    const int code = camera->StopGettingFrame();
    if (code != 0) {
        // Deliberate: the first placeholder stands twice, so the reason has no place.
        LogProgram(MESSAGE_LOG_CRITICAL, tr("%1 failed to stop the live view. (%1)").arg(name));
        return;
    }
    LogProgram(MESSAGE_LOG_MESSAGE, tr("%1 stopped the live view.").arg(name));
    ShowCameraState(id);
    if (!bClosing) {
        if (m_pFeatures)
            m_pFeatures->OnCameraStopShot();
        ChangeFeatureSettingWidget(id);
    }
    m_pRender->OnCloseSubView();
}

void QOrvCentralWindow::OnSingleStopRander() {
    OnStopContinousShot(false);
    m_pSpareTimer->stop();
}

void QOrvCentralWindow::OnAcquisitionModeChanged() {
    // Deliberate: nothing follows from the event; it is the place for what may.
    const CCameraRef camera = CCameraRef::ById(m_lCurCameraID);
    Q_UNUSED(camera)
}

// --- lost and remote cameras

void QOrvCentralWindow::ORVCamDisconnectCallBack(void* pUser, long lCameraID) {
    if (pUser)
        static_cast<QOrvCentralWindow*>(pUser)->OnCameraDisconnectCallBack(lCameraID);
}

void QOrvCentralWindow::OnCameraDisconnectCallBack(long lCameraID) {
    Q_EMIT SigCameraDisconnect(lCameraID);
}

void QOrvCentralWindow::OnCameraDisconnect(long lCameraID) {
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera)
        return;
    if (lCameraID == m_lCurCameraID) {
        OnCloseCamera(lCameraID);
        // Not translated.
        LogProgram(MESSAGE_LOG_CRITICAL, QString("\"%1\" is offline.").arg(NameOfCamera(*camera)));
    }
    QCameraContainer::Instance()->DelCameraByID(lCameraID);
    m_pDeviceList->OnDeleteCamera(lCameraID);
    DeleteToolPanel();
}

void QOrvCentralWindow::OnActionAddRemoteCamera() {
    ShowAddRemoteCamera(this, *m_pDeviceList);
}

long QOrvCentralWindow::AddCamera(const QString& ip) {
    return AddRemoteCamera(ip, CurrentHostInterface(*m_pDeviceList));
}
