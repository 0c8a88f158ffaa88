#include "UI/MainWindow/QRenderWidget.h"

#include "Camera/QCamera.h"
#include "Common/SleepEx.h"
#include "UI/Controls/SystemKind.h"
#include "UI/MainWindow/CameraUse.h"
#include "UI/MainWindow/QPrevStatusBar.h"
#include "UI/MainWindow/QPrevTitleBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QStatusItemSelectWidget.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>
#include <new>

namespace {

constexpr int kStatisticsMs = 250;
constexpr int kVisionMs = 1000;
constexpr int kLeaveFullScreenMs = 200;
constexpr tagVRRectF kFull{0, 1, 0, 1};

} // namespace

QRenderWidget::QRenderWidget(QWidget* parent) : QWidget(parent), m_bUbuntu(IsUbuntuSystem()) {
    if (!InitWidget())
        throw std::bad_alloc();
}

bool QRenderWidget::InitWidget() {
    return InitCtrl() && InitLayout() && InitSignals();
}

bool QRenderWidget::InitCtrl() {
    setObjectName("renderWidget");
    m_pTitleBar = new QPrevTitleBar(this);
    m_pPreview = new QPreviewWidget(this);
    // Behind the preview, so that it lies over it.
    m_pItemSelect = new QStatusItemSelectWidget(this);
    m_pStatusBar = new QPrevStatusBar([this](int nItem) { return IsStatusItemChecked(nItem); }, this);
    return true;
}

bool QRenderWidget::InitLayout() {
    m_pLayout = new QVBoxLayout(this);
    m_pLayout->setContentsMargins(0, 0, 0, 0);
    m_pLayout->setSpacing(0);
    m_pLayout->addWidget(m_pTitleBar);
    m_pLayout->addWidget(m_pPreview, 1);
    m_pLayout->addWidget(m_pStatusBar);
    UpdateStatusBar(false);
    return true;
}

bool QRenderWidget::InitSignals() {
    connect(m_pPreview, &QPreviewWidget::SigMousePos, this, &QRenderWidget::OnPreviewWidgetMouseMove);
    connect(m_pPreview, &QPreviewWidget::SigRenderFullScreen, this,
            &QRenderWidget::OnPreviewWidgetFullScreen);
    connect(m_pPreview, &QPreviewWidget::SigUpdateVideoDisplay, this, &QRenderWidget::OnUpdateDisplayRect);
    connect(m_pPreview, &QPreviewWidget::SigZoomInfo, this, &QRenderWidget::OnPreviewWidgetZoomInfo);
    connect(m_pPreview, &QPreviewWidget::SigFrameSizeChanged, this, &QRenderWidget::OnFrameSizeChanged);
    connect(m_pPreview, &QPreviewWidget::SigZoomState, this, &QRenderWidget::OnZoomStateChanged);
    connect(m_pStatusBar, &QPrevStatusBar::SigSubViewBtnPressed, this, &QRenderWidget::OnSubViewBtnPressed);
    connect(m_pStatusBar, &QPrevStatusBar::SigItemSelectBtnPressed, this,
            &QRenderWidget::OnItemSelectBtnPressed);
    connect(m_pItemSelect, &QStatusItemSelectWidget::SigItemToggled, m_pStatusBar,
            &QPrevStatusBar::OnItemSelectWidgetToggled);
    connect(&m_timerStatistics, &QTimer::timeout, this, &QRenderWidget::OnTimerUpdateFrameInfo);
    connect(&m_timerMouse, &QTimer::timeout, this, &QRenderWidget::OnTimerUpdateMousePos);
    connect(&m_timerVision, &QTimer::timeout, this, &QRenderWidget::OnTimerVision);
    return true;
}

bool QRenderWidget::WithCamera(const std::function<void(QCamera&)>& use) const {
    return UseCamera(m_lCameraID, use);
}

bool QRenderWidget::IsStatusItemChecked(int nItem) const {
    return m_pItemSelect->IsItemChecked(nItem);
}

// --- start and stop

void QRenderWidget::OnCameraOpen(long lCameraID) {
    m_pPreview->SetCameraID(lCameraID);
}

void QRenderWidget::OnStartRender(bool bPrepare, long lCameraID) {
    m_lCameraID = lCameraID;
    OnUpdatePreTitle();
    WithCamera([this](QCamera& camera) { m_nPacketSize = camera.GetCameraPacketSize(); });
    if (bPrepare) {
        m_pPreview->OnStartRender(lCameraID);
        m_networkWatch.Reset();
        m_timerStatistics.start(kStatisticsMs);
        UpdateStatusBar(true);
    }
    m_pPreview->SetDisplayUpdatesEnabled(false);
    m_timerVision.start(kVisionMs);
}

void QRenderWidget::OnStopRender() {
    m_lCameraID = -1;
    m_pPreview->OnStopRender();
    m_pPreview->SetDisplayUpdatesEnabled(true);
    update();
    m_timerStatistics.stop();
    UpdateStatusBar(false);
    m_pTitleBar->SetTitle(QString());
    if (m_bSubView)
        OnCloseSubView();
    if (m_bItemSelect) {
        m_pItemSelect->hide();
        m_bItemSelect = false;
    }
}

void QRenderWidget::OnUpdatePreTitle() {
    WithCamera([this](const QCamera& camera) { m_pTitleBar->SetTitle(NameOfCamera(camera)); });
}

void QRenderWidget::OnSetRecord(bool bRecord, bool bOn) {
    m_pTitleBar->SetRecordState(bRecord, bOn);
}

// --- zoom and rotation

void QRenderWidget::DisplayZoomIn() {
    m_pPreview->OnDisplayZoomIn();
}

void QRenderWidget::DisplayZoomOut() {
    m_pPreview->OnDisplayZoomOut();
}

void QRenderWidget::DisplayZoomToFit() {
    m_pPreview->OnDisplayZoomToFit(true);
}

void QRenderWidget::DisplayResume() {
    m_pPreview->OnDisplayResume();
}

void QRenderWidget::Rotate(void (QCamera::*turn)()) {
    WithCamera([this, turn](QCamera& camera) {
        OnCloseSubView();
        DisplayZoomToFit();
        (camera.*turn)();
        m_pPreview->OnDisplayZoomToFitByRotate();
        DisplayZoomToFit();
    });
}

void QRenderWidget::RotateLeft() {
    Rotate(&QCamera::RotateLeft);
}

void QRenderWidget::RotateRight() {
    Rotate(&QCamera::RotateRight);
}

void QRenderWidget::OnUpdateDisplayRect() {
    WithCamera([this](QCamera& camera) {
        tagVRRectF source{};
        tagVRRectF destination{};
        m_pPreview->GetDisplayRect(source, destination);
        camera.SetDisplayRect(&source, &kFull);
    });
}

void QRenderWidget::OnZoomStateChanged(bool bZoomIn, bool bZoomOut) {
    Q_EMIT SigZoomState(bZoomIn, bZoomOut);
}

void QRenderWidget::OnDispalyModeChanged(int nMode) {
    WithCamera([this, nMode](const QCamera& camera) {
        if (!camera.IsShotting())
            return;
        m_nDisplayMode = nMode;
        if (nMode == 10)
            m_pPreview->SetDisplayUpdatesEnabled(true);
        else if (camera.IsHaveFrameData())
            m_pPreview->SetDisplayUpdatesEnabled(false);
    });
}

// --- full screen

void QRenderWidget::SetPlayHwnd() {
    WithCamera([this](QCamera& camera) { camera.SetPlayWnd(m_pPreview->GetDisplayWnd()->winId()); });
}

void QRenderWidget::OnPreviewWidgetFullScreen(bool bFullScreen) {
    if (bFullScreen) {
        const Qt::WindowFlags frameless = Qt::Window | Qt::FramelessWindowHint;
        setWindowFlags(m_bUbuntu ? windowFlags() | frameless : frameless);
        setWindowTitle(m_pTitleBar->window()->windowTitle());
        if (const QScreen* screen = QGuiApplication::primaryScreen())
            setGeometry(screen->geometry());
        SetPlayHwnd();
        showMaximized();
    } else {
        SleepEx(kLeaveFullScreenMs);
        // With a window of its own again. A window manager that comes late would take the old one out of the
        // main window after Qt has put it there, since it gives windows that go back to the root.
        WithCamera([](QCamera& camera) { camera.SetPlayWnd(0); });
        hide();
        destroy();
        setWindowFlags(Qt::Widget);
        SetPlayHwnd();
        showNormal();
        m_timerMouse.stop();
    }
    m_pPreview->setFocus(Qt::OtherFocusReason);
}

void QRenderWidget::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && isWindow()) {
        OnPreviewWidgetFullScreen(false);
        return;
    }
    QWidget::keyPressEvent(event);
}

// --- the choice of items

void QRenderWidget::PlaceItemSelect() {
    m_pItemSelect->move(0, m_pStatusBar->y() - m_pItemSelect->height());
    m_pItemSelect->raise();
}

void QRenderWidget::OnItemSelectBtnPressed(int) {
    m_bItemSelect = !m_bItemSelect;
    if (m_bItemSelect) {
        m_pItemSelect->UpdateCheckState();
        PlaceItemSelect();
    } else if (m_pItemSelect->isAncestorOf(QApplication::focusWidget())) {
        m_pPreview->setFocus(Qt::OtherFocusReason); // else the next in the tab order gets it
    }
    m_pItemSelect->setVisible(m_bItemSelect);
}

void QRenderWidget::OnSubViewBtnPressed(int) {
    m_bSubView = !m_bSubView;
}

void QRenderWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    PlaceItemSelect();
}

void QRenderWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        RefreshWidgetInfo();
    QWidget::changeEvent(event);
}

void QRenderWidget::RefreshWidgetInfo() {
    OnPreviewWidgetMouseMove(QPoint(0, 0));
    // What no timer tells anew.
    if (m_pPreview->Zoom().HasRaw()) {
        OnFrameSizeChanged(m_nFrameWidth, m_nFrameHeight);
        m_pPreview->GenerateZoomInfo();
    }
}
