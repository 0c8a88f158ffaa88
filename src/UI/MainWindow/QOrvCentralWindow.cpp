#include "UI/MainWindow/QOrvCentralWindow.h"

#include "Camera/CCameraRef.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "UI/Controls/QAboutDlg.h"
#include "UI/Controls/QDockTitleBar.h"
#include "UI/Controls/QDockWidgetEx.h"
#include "UI/Controls/QHintAdjustDlg.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/Controls/QSaveDoneHintDlg.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QMessageLogMngWidget.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QRenderWidget.h"

#include <QAction>
#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QSettings>
#include <QTimer>
#include <new>
#include <utility>

namespace {

constexpr int kDockMinimumWidth = 270;
constexpr int kHintAboveBottom = 20;
constexpr int kLastAction = 36;

// Bits of the setting that tells which docks show.
constexpr int kFeatureBit = 1;
constexpr int kLogBits = 6;
constexpr int kEmbeddedBit = 8;

constexpr char kSettingsGroup[] = "mainWindow";

} // namespace

QOrvCentralWindow::QOrvCentralWindow(QWidget* parent, _WORKSPACE_PARTS_ parts)
    : QMainWindow(parent), m_parts(std::move(parts)) {
    if (!InitWidget()) {
        Release();
        throw std::bad_alloc();
    }
}

QOrvCentralWindow::~QOrvCentralWindow() {
    // The settings and the registry may be gone by now: nothing may make them anew.
    for (QDockWidgetEx* dock : {m_pEmbeddedDock, m_pLogDock})
        disconnect(dock, nullptr, this, nullptr);
    Release();
}

// --- building

bool QOrvCentralWindow::InitWidget() {
    if (m_bBuilt)
        return true;
    InitLanguageVersion();
    if (!InitCtrl() || !InitMenu() || !InitLayout() || !InitSignals())
        return false;
    InitClientSize();
    LoadRenderEngine();
    m_bBuilt = true;
    return true;
}

void QOrvCentralWindow::InitLanguageVersion() {
    if (const QLocalCfg* settings = QLocalCfg::Instance())
        m_language.Init(settings->GetLanguageVersion());
}

bool QOrvCentralWindow::InitCtrl() {
    setObjectName("centralWindow");
    setWindowFlags(Qt::Widget); // a part of the main window, not a window of its own
    m_pToolBar = new QOrvToolBar(this);
    m_pToolBar->setMovable(false);
    addToolBar(Qt::TopToolBarArea, m_pToolBar);
    m_pRender = new QRenderWidget(this);
    setCentralWidget(m_pRender);
    MakeDocks();
    m_pAdjustHint = new QHintAdjustDlg(this);
    m_pSpareTimer = new QTimer(this);
    SetTexts();
    return true;
}

QDockWidgetEx* QOrvCentralWindow::AddDock(const QString& strName, Qt::DockWidgetArea area,
                                          QWidget* pContent) {
    auto* dock = new QDockWidgetEx(this);
    dock->setObjectName(strName);
    new QDockTitleBar(dock);
    dock->setWidget(pContent);
    addDockWidget(area, dock);
    return dock;
}

QWidget* QOrvCentralWindow::MakeEmptyPlace(const char* hint, QWidget* pParent) {
    auto* label = new QLabel(pParent);
    label->setObjectName("emptyPlace");
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setProperty("hint", QByteArray(hint));
    return label;
}

void QOrvCentralWindow::MakeDocks() {
    setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
    if (m_parts.featureEditor)
        m_pFeatures = m_parts.featureEditor(this);
    if (m_parts.embeddedView)
        m_pEmbedded = m_parts.embeddedView(this);
    m_pDeviceList = new QDevListWidget(this);
    m_pLog = new QMessageLogMngWidget(this);
    m_pDeviceDock = AddDock("Device", Qt::LeftDockWidgetArea, m_pDeviceList);
    m_pFeatureDock =
        AddDock("Feature", Qt::LeftDockWidgetArea,
                m_pFeatures ? m_pFeatures->Widget()
                            : MakeEmptyPlace(QT_TR_NOOP("This version has no feature editor."), this));
    m_pLogDock = AddDock("Log", Qt::LeftDockWidgetArea, m_pLog);
    m_pEmbeddedDock = AddDock(
        "Embedded Image Info", Qt::RightDockWidgetArea,
        m_pEmbedded
            ? m_pEmbedded->Widget()
            : MakeEmptyPlace(QT_TR_NOOP("This version doesn't show the embedded information."), this));
    m_pDeviceDock->setMinimumWidth(kDockMinimumWidth);
    m_pFeatureDock->setMinimumWidth(kDockMinimumWidth);
    tabifyDockWidget(m_pDeviceDock, m_pFeatureDock);
    tabifyDockWidget(m_pFeatureDock, m_pLogDock);
    if (const QLocalCfg* settings = QLocalCfg::Instance())
        m_nViewFlags = settings->GetViewShowFlage();
    m_pFeatureDock->setVisible((m_nViewFlags & kFeatureBit) != 0);
    m_pLogDock->setVisible((m_nViewFlags & kLogBits) == kLogBits);
    m_pEmbeddedDock->setVisible((m_nViewFlags & kEmbeddedBit) != 0);
    m_pDeviceDock->raise();
}

bool QOrvCentralWindow::InitSignals() {
    using Self = QOrvCentralWindow;
    connect(m_pToolBar, &QOrvToolBar::SigToolBarBtnClicked, this, &Self::OnToolBarBtnClicked);
    connect(m_pDeviceList, &QDevListWidget::SigOnOpenCamera, this, &Self::OnOpenCamera);
    connect(m_pDeviceList, &QDevListWidget::SigClickedTreeItem, this, &Self::OnClickedDeviceTreeItem);
    connect(m_pDeviceList, &QDevListWidget::SigAddRemoteCamera, this, &Self::OnActionAddRemoteCamera);
    connect(m_pDeviceList, &QDevListWidget::SigUpdatePreTitle, m_pRender, &QRenderWidget::OnUpdatePreTitle);
    connect(this, &Self::SigCameraDisconnect, this, &Self::OnCameraDisconnect);
    connect(this, &Self::SigShowMsg, this, &Self::OnSigShowMsg);
    connect(this, &Self::SigAdjustShowMsg, this, &Self::OnSigShowAdjustMsg);
    connect(this, &Self::SigShowSaveMsg, this, &Self::OnSigShowSaveMsg);
    connect(m_pAdjustHint, &QHintAdjustDlg::SigBtnAccepted, this, &Self::OnSigAdjustMsgBtn);
    connect(m_pRender, &QRenderWidget::SigLostPacketSerious, this, &Self::OnLossPacketSerious);
    connect(m_pRender, &QRenderWidget::SigZoomState, this, &Self::OnZoomStateChanged);
    connect(m_pEmbeddedDock, &QDockWidget::visibilityChanged, this, &Self::OnEmbeddWigtChanged);
    connect(m_pLogDock, &QDockWidget::visibilityChanged, this, &Self::OnMsgLogWigtChanged);
    connect(this, &Self::SigDisplayModeChanged, m_pRender, &QRenderWidget::OnDispalyModeChanged);
    connect(this, &Self::SigUpdateCaptureBtnAndAction, this, &Self::OnUpdateCaptureBtnAndAction);
    connect(this, &Self::SigStopRecording, this, &Self::OnSigStopRecording);
    connect(m_pSpareTimer, &QTimer::timeout, this, &Self::OnSingleStopRander);
    return true;
}

void QOrvCentralWindow::InitClientSize() {
    const QLocalCfg* settings = QLocalCfg::Instance();
    if (settings && !settings->IsFirstStartClient())
        ReadSettings();
}

void QOrvCentralWindow::LoadRenderEngine() {
    if (const QLocalCfg* settings = QLocalCfg::Instance())
        m_nRenderEngine = settings->GetRenderEngine();
}

void QOrvCentralWindow::Release() {
    if (std::exchange(m_bReleased, true))
        return;
    WriteSettings();
    if (m_pSpareTimer)
        m_pSpareTimer->stop();
    delete std::exchange(m_pSpareTimer, nullptr);
    DeleteToolPanel();
    CloseCurrentCamera();
}

// The camera's threads call this window: they end before it does.
void QOrvCentralWindow::CloseCurrentCamera() {
    if (m_lCurCameraID < 0)
        return;
    if (const CCameraRef camera = CCameraRef::ById(std::exchange(m_lCurCameraID, -1))) {
        camera->CloseCamera();
        camera->SetOwner(nullptr);
    }
}

QMenu* QOrvCentralWindow::CreatePopupMenuEx() {
    QMenu* const menu = createPopupMenu();
    // Qt lists the docks as they were last raised; here they stand as on the screen.
    if (menu)
        for (QDockWidgetEx* dock : {m_pEmbeddedDock, m_pLogDock, m_pFeatureDock, m_pDeviceDock}) {
            menu->removeAction(dock->toggleViewAction());
            menu->insertAction(menu->actions().value(0), dock->toggleViewAction());
        }
    return menu;
}

bool QOrvCentralWindow::IsAvailable(int nAction) const {
    switch (nAction) {
    case 24:
    case 25:
        return m_pFeatures != nullptr;
    case 26:
        return m_parts.fileAccess != nullptr;
    case 29:
        return m_parts.toolPanel != nullptr;
    case 30:
        return m_parts.options != nullptr;
    default:
        return nAction >= 0 && nAction <= kLastAction;
    }
}

// --- texts and language

void QOrvCentralWindow::SetTexts() {
    m_pDeviceDock->setWindowTitle(tr("Device"));
    m_pFeatureDock->setWindowTitle(tr("Feature"));
    m_pLogDock->setWindowTitle(tr("Log"));
    m_pEmbeddedDock->setWindowTitle(tr("Embedded Information"));
    for (QLabel* place : findChildren<QLabel*>("emptyPlace"))
        place->setText(tr(place->property("hint").toByteArray().constData()));
}

void QOrvCentralWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_bBuilt)
        SetTexts();
    QMainWindow::changeEvent(event);
}

void QOrvCentralWindow::OnActionLangEng() {
    m_language.SwitchToEnglish();
    SaveLanguageVersion();
    m_pToolBar->RefreshWidgetInfo();
}

void QOrvCentralWindow::OnActionLangCh() {
    m_language.SwitchToChinese();
    SaveLanguageVersion();
    m_pToolBar->RefreshWidgetInfo();
}

// --- settings

void QOrvCentralWindow::WriteSettings() {
    QSettings settings("Software Inc.", "Icon Editor");
    settings.beginGroup(kSettingsGroup);
    settings.setValue("geometry", saveGeometry());
    settings.setValue("state", saveState());
    settings.endGroup();
}

void QOrvCentralWindow::ReadSettings() {
    // Deliberate: another store than the one that WriteSettings fills, so a saved layout has no effect.
    QSettings settings("-", "");
    settings.beginGroup(kSettingsGroup);
    restoreGeometry(settings.value("geometry").toByteArray());
    restoreState(settings.value("state").toByteArray());
    settings.endGroup();
}

void QOrvCentralWindow::SaveViewFlageToFile() {
    QLocalCfg* settings = QLocalCfg::Instance();
    if (!settings)
        return;
    // "Visible" is what the operator chose: a dock behind another tab, or in a window that is closing,
    // counts.
    int flags = 0;
    if (!m_pFeatureDock->isHidden())
        flags += kFeatureBit;
    if (!m_pLogDock->isHidden())
        flags += kLogBits;
    if (!m_pEmbeddedDock->isHidden())
        flags += kEmbeddedBit;
    m_nViewFlags = flags;
    settings->SetViewShowFlage(flags);
}

void QOrvCentralWindow::SaveRenderEngineToFile() {
    if (QLocalCfg* settings = QLocalCfg::Instance())
        settings->SetRenderEngine(m_nRenderEngine);
}

void QOrvCentralWindow::SaveLanguageVersion() {
    if (QLocalCfg* settings = QLocalCfg::Instance())
        settings->SetLanguageVersion(Language());
}

void QOrvCentralWindow::OnEmbeddWigtChanged(bool bVisible) {
    m_bEmbeddedVisible = bVisible;
    SaveViewFlageToFile();
}

void QOrvCentralWindow::OnMsgLogWigtChanged(bool /*bVisible*/) {
    SaveViewFlageToFile();
}

void QOrvCentralWindow::closeEvent(QCloseEvent* event) {
    if (m_lCurCameraID >= 0)
        OnCloseCamera(m_lCurCameraID);
    DeleteToolPanel();
    m_pDeviceList->EndDetection();
    QMainWindow::closeEvent(event);
}

// --- the dispatcher

void QOrvCentralWindow::OnMenuActionTriggered(QAction* pAction) {
    if (pAction)
        OnToolBarBtnClicked(pAction->data().toInt());
}

void QOrvCentralWindow::OnToolBarBtnClicked(int nIndex) {
    if (nIndex < 0 || nIndex > kLastAction)
        return;
    if (!DispatchPicture(nIndex) && !DispatchMode(nIndex) && !DispatchCamera(nIndex))
        DispatchProgram(nIndex);
}

bool QOrvCentralWindow::DispatchPicture(int nIndex) {
    switch (nIndex) {
    case 0:
        OnActionSaveImg();
        return true;
    case 2:
        m_pRender->DisplayZoomIn();
        return true;
    case 3:
        m_pRender->DisplayZoomOut();
        return true;
    case 4:
        m_pRender->DisplayZoomToFit();
        return true;
    case 5:
        m_pRender->DisplayResume();
        return true;
    case 6:
        m_pRender->RotateLeft();
        return true;
    case 7:
        m_pRender->RotateRight();
        return true;
    default:
        return false;
    }
}

bool QOrvCentralWindow::DispatchMode(int nIndex) {
    if (nIndex >= 8 && nIndex <= 10) {
        m_nDisplayMode = nIndex;
        OnActionDisplayMode(nIndex);
    } else if (nIndex >= 11 && nIndex <= 18) {
        (nIndex <= 16 ? m_nRenderModeA : m_nRenderModeB) = nIndex;
        OnActionVRMode(nIndex);
    } else if (nIndex == 19 || nIndex == 20) {
        m_nRenderEngine = nIndex == 19 ? 0 : kSoftwareEngine;
        OnActionVREngineMode(nIndex);
        SaveRenderEngineToFile();
    } else {
        return false;
    }
    return true;
}

bool QOrvCentralWindow::DispatchCamera(int nIndex) {
    switch (nIndex) {
    case 21:
        OnActionConnect();
        return true;
    case 22:
        OnActionContinousShot();
        return true;
    case 23:
        OnActionRecord(true);
        return true;
    case 24:
        OnActionLoadFeatures();
        return true;
    case 25:
        OnActionSaveFeatures();
        return true;
    case 26:
        OnActionFileAccess();
        return true;
    case 27:
        OnActionAddRemoteCamera();
        return true;
    case 28:
        OnActionSaveGenIcamFile();
        return true;
    case 29:
        OnCameraFeaturesSetting();
        return true;
    default:
        return false;
    }
}

void QOrvCentralWindow::DispatchProgram(int nIndex) {
    switch (nIndex) {
    case 1:
        return OnActionExit();
    case 30:
        return OnActionOptions(false);
    case 31:
        return OnActionIPConfigurator();
    case 32:
        return OnActionFirmWareUpdator();
    case 33:
        return OnActionLangEng();
    case 34:
        return OnActionLangCh();
    case 35:
        return OnActionOperator();
    case 36:
        return OnActionAboutORV();
    default:
        return;
    }
}

void QOrvCentralWindow::OnActionAboutORV() {
    QAboutDlg about(window());
    about.exec();
}

// --- messages of any thread

void QOrvCentralWindow::OnShowMsg(const QString& strTitle, const QString& strDetail, int nIconType) {
    if (!m_bMessageBusy)
        Q_EMIT SigShowMsg(strTitle, strDetail, nIconType);
}

void QOrvCentralWindow::OnShowSaveMsg(const QString& strMsg, const QString& strSavePath) {
    if (!m_bSaveBusy)
        Q_EMIT SigShowSaveMsg(strMsg, strSavePath);
}

void QOrvCentralWindow::OnShowAdjustMsg(const QString& strTitle, const QString& strDetail) {
    if (!m_bAdjustShown)
        Q_EMIT SigAdjustShowMsg(strTitle, strDetail);
}

void QOrvCentralWindow::OnSigShowMsg(const QString& strTitle, const QString& strDetail, int nIconType) {
    m_bMessageBusy = true;
    if (!m_pMessage)
        m_pMessage = new QMessageBoxDlg(this);
    m_pMessage->SetMsgText(strTitle, strDetail, false, nIconType);
    // Deliberate: a dialog closed otherwise than by OK keeps the flag, and no further message comes.
    if (m_pMessage->exec() == 1)
        m_bMessageBusy = false;
}

void QOrvCentralWindow::OnSigShowSaveMsg(const QString& strMsg, const QString& strSavePath) {
    m_bSaveBusy = true;
    delete m_pSaveHint;
    m_pSaveHint = new QSaveDoneHintDlg(this);
    m_pSaveHint->SetMsgText(strMsg, strSavePath);
    if (m_pSaveHint->exec() == 1)
        m_bSaveBusy = false;
}

void QOrvCentralWindow::OnSigShowAdjustMsg(const QString& strTitle, const QString& strDetail) {
    m_bAdjustShown = true;
    m_pAdjustHint->SetMsgText(strTitle, strDetail);
    m_pAdjustHint->adjustSize();
    const QPoint corner = mapToGlobal(QPoint(width(), height()));
    m_pAdjustHint->move(corner - QPoint(m_pAdjustHint->width(), m_pAdjustHint->height() + kHintAboveBottom));
    m_pAdjustHint->show();
}

void QOrvCentralWindow::OnSigAdjustMsgBtn(bool bAdjust) {
    m_bAdjustShown = !bAdjust;
    if (!bAdjust)
        return;            // no further hint until the next camera is opened
    m_pAdjustHint->hide(); // it closes when this returns, which is after the options
    OnStopContinousShot(false);
    OnActionOptions(true);
}

void QOrvCentralWindow::OnLossPacketSerious() {
    OnShowAdjustMsg(tr("Hint"), tr("The packet loss is too much.Please adjust the bandwidth."));
}

void QOrvCentralWindow::OnStopRecording() {
    Q_EMIT SigStopRecording();
}

void QOrvCentralWindow::UpdateCaptureBtnAndAction(bool bCapturing) {
    Q_EMIT SigUpdateCaptureBtnAndAction(bCapturing);
}
