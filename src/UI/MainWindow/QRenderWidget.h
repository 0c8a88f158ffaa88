// The middle of the main window: title strip, picture, the choice of status items, and the status bar. Feeds
// the status bar from its timers and watches the network.
#pragma once

#include "UI/MainWindow/PreviewFigures.h"

#include <QPixmap>
#include <QPoint>
#include <QTimer>
#include <QWidget>
#include <functional>

class QCamera;
class QPrevStatusBar;
class QPrevTitleBar;
class QPreviewWidget;
class QStatusItemSelectWidget;
class QVBoxLayout;

// Main thread.
class QRenderWidget : public QWidget {
    Q_OBJECT

public:
    // Throws std::bad_alloc when it can't be built.
    explicit QRenderWidget(QWidget* parent = nullptr);

    void OnCameraOpen(long lCameraID);
    // Called twice for a start: with true before the stream starts (also prepares the preview and the
    // statistics), with false when it runs.
    void OnStartRender(bool bPrepare, long lCameraID);
    void OnStopRender();
    // As QPrevTitleBar::SetRecordState.
    void OnSetRecord(bool bRecord, bool bOn);
    void RotateLeft();
    void RotateRight();
    void DisplayZoomIn();
    void DisplayZoomOut();
    void DisplayZoomToFit();
    void DisplayResume();
    void OnCloseSubView() {} // deliberate: there is no second picture to close

    bool IsStatusItemChecked(int nItem) const;

    QPreviewWidget* Preview() const { return m_pPreview; }
    QPrevStatusBar* StatusBar() const { return m_pStatusBar; }
    QPrevTitleBar* TitleBar() const { return m_pTitleBar; }
    QStatusItemSelectWidget* ItemSelect() const { return m_pItemSelect; }

public Q_SLOTS:
    void OnPreviewWidgetMouseMove(QPoint pt);
    void OnPreviewWidgetFullScreen(bool bFullScreen);
    void OnPreviewWidgetZoomInfo(const QString& strInfo);
    void OnTimerUpdateFrameInfo();
    void OnFrameSizeChanged(int nWidth, int nHeight);
    void OnTimerUpdateMousePos() {} // deliberate: its timer is never started
    void OnUpdateDisplayRect();
    void OnSubViewBtnPressed(int iBtnIndex);
    void OnItemSelectBtnPressed(int iBtnIndex);
    void OnZoomStateChanged(bool bZoomIn, bool bZoomOut);
    void OnUpdatePreTitle();
    void OnDispalyModeChanged(int nMode);
    void RefreshWidgetInfo();
    void OnTimerVision();

Q_SIGNALS:
    void SigZoomState(bool bZoomIn, bool bZoomOut);
    // More than a tenth of the packets of the last tick, and more than 100 in all, were lost.
    void SigLostPacketSerious();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    bool InitWidget();
    bool InitCtrl();
    bool InitLayout();
    bool InitSignals();
    bool WithCamera(const std::function<void(QCamera&)>& use) const;
    void UpdateStatusBar(bool bShow);
    void UpdateLineOrFrameRateShow();
    void ShowLoss(QCamera& camera);
    void ShowRates(QCamera& camera);
    bool GetScreenPixel(int* pR, int* pG, int* pB);
    void Rotate(void (QCamera::*turn)());
    void SetPlayHwnd();
    void PlaceItemSelect();

    long m_lCameraID = -1;
    int m_nFrameWidth = 0;
    int m_nFrameHeight = 0;
    int m_nPacketSize = 0;
    CNetworkWatch m_networkWatch;
    int m_nDisplayMode = 8;
    bool m_bSubView = false;
    bool m_bItemSelect = false;
    QTimer m_timerStatistics;
    QTimer m_timerMouse; // deliberate: never started
    QPreviewWidget* m_pPreview = nullptr;
    QPrevStatusBar* m_pStatusBar = nullptr;
    QPrevTitleBar* m_pTitleBar = nullptr;
    QStatusItemSelectWidget* m_pItemSelect = nullptr;
    QVBoxLayout* m_pLayout = nullptr;
    QPoint m_ptLast; // pointer positions in the preview
    QPoint m_ptCurrent;
    QPixmap m_pixmapPointer; // the screen's pixel under the pointer
    QTimer m_timerVision;
    int m_nVisionTicks = 0;
    bool m_bStopGrabScreen = false;
    const bool m_bUbuntu;
};
