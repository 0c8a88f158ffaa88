// The work area of the main window: tool bar, docks and picture, and the order of operations between the
// open camera and the views.
#pragma once

#include "Camera/QCameraOwner.h"
#include "Common/CLanguageSwitch.h"
#include "UI/MainWindow/RemoteCamera.h"
#include "UI/MainWindow/WorkspaceParts.h"

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <atomic>
#include <memory>

class CCameraRef;
class QAction;
class QCamera;
class QDevListWidget;
class QDockWidgetEx;
class QHintAdjustDlg;
class QMessageBoxDlg;
class QMessageLogMngWidget;
class QOrvToolBar;
class QRenderWidget;
class QSaveDoneHintDlg;
class QTimer;

// Every action of the menus and of the tool bar arrives here as a number (OnToolBarBtnClicked). At most one
// camera is open: the current one. Main thread, but for ORVCamDisconnectCallBack and what QCameraOwner
// prescribes for any thread; those only look at a flag and emit a signal, which is queued.
//
// The camera core keeps a pointer to the window that opened a camera: the window closes the camera before it
// goes.
class QOrvCentralWindow : public QMainWindow, public QCameraOwner, public QRemoteCameraAdder {
    Q_OBJECT

public:
    // Throws std::bad_alloc when it can't be built.
    explicit QOrvCentralWindow(QWidget* parent = nullptr, _WORKSPACE_PARTS_ parts = {});
    ~QOrvCentralWindow() override;

    // Called by the constructor; a second call changes nothing.
    bool InitWidget();

    // The toggles of the docks and of the tool bar; the caller's to delete.
    QMenu* CreatePopupMenuEx();
    // Whether the part that the action leads to is there. What isn't stays disabled.
    bool IsAvailable(int nAction) const;

    long CurrentCameraID() const { return m_lCurCameraID; }
    int DisplayMode() const { return m_nDisplayMode; }
    int RenderEngine() const { return m_nRenderEngine; }
    bool IsGDIRender() const { return m_nRenderEngine == kSoftwareEngine; }
    int Language() const { return m_language.GetLanguage(); }
    QString RecordFile() const { return m_strRecordFile; }

    QOrvToolBar* ToolBar() const { return m_pToolBar; }
    QDevListWidget* DeviceList() const { return m_pDeviceList; }
    QRenderWidget* RenderArea() const { return m_pRender; }
    QMessageLogMngWidget* LogView() const { return m_pLog; }
    QDockWidgetEx* DeviceDock() const { return m_pDeviceDock; }
    QDockWidgetEx* FeatureDock() const { return m_pFeatureDock; }
    QDockWidgetEx* LogDock() const { return m_pLogDock; }
    QDockWidgetEx* EmbeddedDock() const { return m_pEmbeddedDock; }
    QHintAdjustDlg* AdjustHint() const { return m_pAdjustHint; }

    // QRemoteCameraAdder.
    long AddCamera(const QString& ip) override;

    // QCameraOwner; any thread.
    void OnShowMsg(const QString& strTitle, const QString& strDetail, int nIconType) override;
    void OnStopRecording() override;
    void OnShowSaveMsg(const QString& strMsg, const QString& strSavePath) override;
    void UpdateCaptureBtnAndAction(bool bCapturing) override;
    bool IsEmbedWidgetVisible() override { return m_bEmbeddedVisible; }
    // Any thread.
    void OnShowAdjustMsg(const QString& strTitle, const QString& strDetail);

    // For the camera core; `pUser` is the window. A thread of the camera library.
    static void ORVCamDisconnectCallBack(void* pUser, long lCameraID);
    void OnCameraDisconnectCallBack(long lCameraID);

    // End a tool whose name is in the list of processes: 1, or 0 when it isn't there. Each waits for its
    // commands. No action leads here.
    static int ToolProcessOrpIP(const QString& strName);
    static int ToolProcessOrpUpgrade(const QString& strName);
    // No action leads here.
    void OnActionNetWorkAdapter();

public Q_SLOTS:
    // The one dispatcher. Numbers above 36 are ignored.
    void OnToolBarBtnClicked(int nIndex);
    // By the action's data.
    void OnMenuActionTriggered(QAction* pAction);
    // Closes an open camera first. Nothing for the camera that is open.
    void OnOpenCamera(long lCameraID);
    void OnCloseCamera(long lCameraID);
    void OnClickedDeviceTreeItem(int nType, int nID);
    void OnActionAddRemoteCamera();
    void OnCameraDisconnect(long lCameraID);
    void OnAcquisitionModeChanged();
    void OnLossPacketSerious();
    void OnSigShowMsg(const QString& strTitle, const QString& strDetail, int nIconType);
    void OnSigShowAdjustMsg(const QString& strTitle, const QString& strDetail);
    void OnSigShowSaveMsg(const QString& strMsg, const QString& strSavePath);
    void OnSigAdjustMsgBtn(bool bAdjust);
    void OnEmbeddWigtChanged(bool bVisible);
    void OnMsgLogWigtChanged(bool bVisible);
    void OnZoomStateChanged(bool bZoomIn, bool bZoomOut);
    void OnUpdateCaptureBtnAndAction(bool bCapturing);
    void OnSigStopRecording();
    void OnSingleStopRander();
    void OnClassifedFeatuerClosed();

Q_SIGNALS:
    void SigUpdateMenuBarActions(int nType, int nCameraID);
    void SigCameraDisconnect(long lCameraID);
    void SigUpdateViewMenuEnable(bool bEnable);
    void SigUpdateCaptureBtnAndAction(bool bCapturing);
    void SigUpdateRecAction(bool bRecording);
    void SigShowMsg(QString strTitle, QString strDetail, int nIconType);
    void SigAdjustShowMsg(QString strTitle, QString strDetail);
    void SigShowSaveMsg(QString strMsg, QString strSavePath);
    void SigUpdateMenuActions(int nActionID);
    void SigEnabledZoom(bool bInEnabled, bool bOutEnabled);
    void SigDisplayModeChanged(int nMode);
    void SigVREngineChanged(uint nMode, long lCameraID);
    void SigStopRecording();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    static constexpr int kSoftwareEngine = 2;

    // --- building
    void InitLanguageVersion();
    bool InitCtrl();
    bool InitMenu() { return true; }   // deliberate: the menus belong to the main window
    bool InitLayout() { return true; } // deliberate: the docks are laid out as they are made
    bool InitSignals();
    void InitClientSize();
    void LoadRenderEngine();
    void Release();
    void MakeDocks();
    QDockWidgetEx* AddDock(const QString& strName, Qt::DockWidgetArea area, QWidget* pContent);
    QWidget* MakeEmptyPlace(const char* hint, QWidget* pParent);
    void SetTexts();

    // --- settings
    void WriteSettings();
    void ReadSettings();
    void SaveViewFlageToFile();
    void SaveRenderEngineToFile();
    void SaveLanguageVersion();

    // --- state shown
    void UpdateMenuBarActions(int nType, int nCameraID);
    void ShowCameraState(long lCameraID);
    void ChangeFeatureSettingWidget(long lCameraID);
    void DeleteToolPanel();
    void CloseCurrentCamera();

    // --- camera
    void OnActionConnect();
    void TellCameraOpen(QCamera& camera, long lCameraID);
    void CheckGigESpeed();
    void CheckJumbPacket() {} // deliberate: the place for a check of the packet size
    void OnActionContinousShot();
    void OnContinousShot();
    bool RefuseJpeg(QCamera& camera, const QString& strName);
    void ReportStartFailure(const QString& strName, const QString& strReason);
    void OnStopContinousShot(bool bClosing);

    // --- capture, recording and tools
    void OnActionSaveImg();
    int SnapTo(QCamera& camera, const QString& strPath);
    void OnActionRecord(bool bShowResult);
    void StartVideo(const CCameraRef& camera);
    void StopVideo(QCamera& camera, bool bShowResult);
    void ToggleSeries(QCamera& camera, bool bShowResult);
    void ShowRecording(bool bOn);
    QString StartFolder(const QString& strLast) const;
    void WarnOfHiddenFile(const QString& strPath);
    void OnActionExit() {} // deliberate: the main window closes itself
    void OnActionDisplayMode(int nMode);
    void OnActionVRMode(int nMode);
    void OnActionVREngineMode(int nMode);
    void OnActionLoadFeatures();
    void OnActionSaveFeatures();
    void OnActionFileAccess();
    void OnActionSaveGenIcamFile();
    void OnCameraFeaturesSetting();
    void OnActionOptions(bool bNetworkPage);
    void OnActionIPConfigurator();
    void OnActionFirmWareUpdator();
    void StartTool(const QString& strProgram);
    void OnActionOperator();
    void OnActionAboutORV();
    void OnActionLangEng();
    void OnActionLangCh();
    bool DispatchPicture(int nIndex);
    bool DispatchMode(int nIndex);
    bool DispatchCamera(int nIndex);
    void DispatchProgram(int nIndex);

    long m_lCurCameraID = -1;
    _WORKSPACE_PARTS_ m_parts;
    QOrvToolBar* m_pToolBar = nullptr;
    QDevListWidget* m_pDeviceList = nullptr;
    CFeatureEditor* m_pFeatures = nullptr; // its widget is the dock's
    QMessageLogMngWidget* m_pLog = nullptr;
    QRenderWidget* m_pRender = nullptr;
    CCameraView* m_pEmbedded = nullptr; // its widget is the dock's
    QDockWidgetEx* m_pDeviceDock = nullptr;
    QDockWidgetEx* m_pFeatureDock = nullptr;
    QDockWidgetEx* m_pLogDock = nullptr;
    QDockWidgetEx* m_pEmbeddedDock = nullptr;
    std::unique_ptr<CToolPanel> m_pToolPanel;
    QString m_strImageFolder;
    QString m_strRecordFolder;
    QTimer* m_pSpareTimer = nullptr; // deliberate: nothing starts it
    int m_nDisplayMode = 8;
    int m_nRenderModeA = 11;
    int m_nRenderEngine = 0;
    int m_nRenderModeB = 18;
    int m_nViewFlags = 3;
    CLanguageSwitch m_language;
    QPointer<QMessageBoxDlg> m_pMessage;
    std::atomic<bool> m_bMessageBusy{false};
    QHintAdjustDlg* m_pAdjustHint = nullptr;
    std::atomic<bool> m_bAdjustShown{false};
    QPointer<QSaveDoneHintDlg> m_pSaveHint;
    std::atomic<bool> m_bSaveBusy{false};
    QString m_strRecordFile;
    std::atomic<bool> m_bEmbeddedVisible{false}; // read by the grab thread
    bool m_bBuilt = false;
    bool m_bReleased = false;
};
