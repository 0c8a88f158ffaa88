#include "UI/MainWindow/QPreviewWidget.h"

#include "Camera/QCamera.h"
#include "Camera/QCameraContainer.h"
#include "UI/MainWindow/CameraUse.h"

#include <QCursor>
#include <QHBoxLayout>
#include <QPainter>
#include <QResizeEvent>
#include <QThread>
#include <new>

namespace {

constexpr int kPixelTimerMs = 200;
constexpr QSize kBackgroundBox(979, 721);
constexpr double kBackgroundAspect = 1.3578364;
constexpr tagVRRectF kFull{0, 1, 0, 1};

// The largest box of the background's shape in a widget, its own size where there is room.
QSize BackgroundBox(const QSize& widget) {
    if (widget.width() >= kBackgroundBox.width() && widget.height() >= kBackgroundBox.height())
        return kBackgroundBox;
    const int width = static_cast<int>(widget.height() * kBackgroundAspect);
    if (width <= widget.width())
        return {width, widget.height()};
    return {widget.width(), static_cast<int>(widget.width() / kBackgroundAspect)};
}

} // namespace

QPreviewWidget::QPreviewWidget(QWidget* parent) : QWidget(parent) {
    if (!InitWidget())
        throw std::bad_alloc();
}

QPreviewWidget::~QPreviewWidget() {
    WithCamera([](QCamera& camera) { camera.SetFrameSizeChangedCallBack(nullptr, nullptr); });
}

bool QPreviewWidget::InitWidget() {
    setObjectName("preview");
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Live picture"));
    setMinimumSize(160, 120);
    m_imgBackground.load(":/ORV/Resources/backgroundImage.png");

    m_pDisplayWnd = new QWidget(this);
    m_pDisplayWnd->setObjectName("displayWindow");
    // A native window of its own; its parents stay as they are.
    m_pDisplayWnd->setAttribute(Qt::WA_DontCreateNativeAncestors);
    m_pDisplayWnd->setAttribute(Qt::WA_NativeWindow);
    m_pDisplayWnd->setAttribute(Qt::WA_NoSystemBackground);
    m_pLayout = new QHBoxLayout(this);
    m_pLayout->setContentsMargins(0, 0, 0, 0);
    m_pLayout->setSpacing(0);
    m_pLayout->addStretch();
    m_pLayout->addWidget(m_pDisplayWnd, 0, Qt::AlignCenter);
    m_pLayout->addStretch();
    m_pDisplayWnd->hide();

    connect(this, &QPreviewWidget::SigResizeEvent, this, &QPreviewWidget::OnTimerUpdateShowVideo);
    connect(this, &QPreviewWidget::SigSetDisplayRect, this, &QPreviewWidget::OnSetDisplayRect);
    connect(&m_timerPixel, &QTimer::timeout, this, &QPreviewWidget::OnTimerUpdatePixelInfo);
    m_timerPixel.start(kPixelTimerMs);
    return true;
}

bool QPreviewWidget::WithCamera(const std::function<void(QCamera&)>& use) const {
    return UseCamera(m_lCameraID, use);
}

bool QPreviewWidget::ReadRotation() {
    return WithCamera([this](const QCamera& camera) {
        m_zoom.SetRotation({camera.IsNeedReverseXYAfterRotate(), !camera.IsMeetZoomCondition(),
                            camera.IsRotate180Degree(), camera.IsRotateRight90Degree()});
    });
}

void QPreviewWidget::SetCameraID(long lCameraID) {
    m_lCameraID = lCameraID;
    m_zoom.SetIndex(CPreviewZoom::kIndexOfOne);
    update();
}

void QPreviewWidget::OnStartRender(long lCameraID) {
    m_lCameraID = lCameraID;
    m_bRendering = true;
    m_pDisplayWnd->show();
    WithCamera([this](QCamera& camera) {
        camera.SetFrameSizeChangedCallBack(&QPreviewWidget::FrameSizeChanged, this);
        camera.SetPlayWnd(m_pDisplayWnd->winId());
    });
    update();
}

void QPreviewWidget::OnStopRender() {
    WithCamera([](QCamera& camera) { camera.SetFrameSizeChangedCallBack(nullptr, nullptr); });
    const int index = m_zoom.Index();
    m_zoom.Reset();
    m_zoom.SetIndex(index);
    m_lCameraID = -1;
    m_bRendering = false;
    m_pDisplayWnd->hide();
    setCursor(Qt::ArrowCursor);
    update();
}

void QPreviewWidget::Tell(const _ZOOM_OUTCOME_& outcome) {
    if (outcome.setDisplayRect)
        Q_EMIT SigSetDisplayRect();
    if (outcome.zoomState)
        Q_EMIT SigZoomState(outcome.zoomState->zoomIn, outcome.zoomState->zoomOut);
}

// --- zoom

void QPreviewWidget::ZoomIn(QPointF centre) {
    if (ReadRotation())
        Tell(m_zoom.ZoomIn(centre.x() * width(), centre.y() * height()));
}

void QPreviewWidget::ZoomOut(QPointF centre) {
    if (ReadRotation())
        Tell(m_zoom.ZoomOut(centre.x() * width(), centre.y() * height()));
}

void QPreviewWidget::OnDisplayZoomIn() {
    ZoomIn({0.5, 0.5});
    OnSetDisplayRect();
    GenerateZoomInfo();
}

void QPreviewWidget::OnDisplayZoomOut() {
    ZoomOut({0.5, 0.5});
    OnSetDisplayRect();
    GenerateZoomInfo();
}

void QPreviewWidget::OnDisplayZoomToFit(bool bSetDisplayRect) {
    Tell(m_zoom.Fit(bSetDisplayRect));
    GenerateZoomInfo();
}

void QPreviewWidget::OnDisplayResume() {
    if (!ReadRotation())
        return;
    Tell(m_zoom.ActualSize());
    GenerateZoomInfo();
}

void QPreviewWidget::OnDisplayZoomToFitByRotate() {
    m_zoom.SwapRaw();
}

void QPreviewWidget::GetDisplayRect(tagVRRectF& source, tagVRRectF& destination) const {
    source = m_zoom.Source();
    destination = m_zoom.Destination();
}

void QPreviewWidget::SetDisplayUpdatesEnabled(bool bEnabled) {
    m_pDisplayWnd->setUpdatesEnabled(bEnabled);
}

void QPreviewWidget::GenerateZoomInfo() {
    if (const auto percent = m_zoom.Percent())
        Q_EMIT SigZoomInfo(tr("Zoom: %1%").arg(*percent));
}

bool QPreviewWidget::GetPtLocateInRawVideo(QPoint pt, int& nX, int& nY) const {
    const auto pixel = m_zoom.PixelAt(pt.x(), pt.y());
    if (!pixel)
        return false;
    nX = pixel->x;
    nY = pixel->y;
    return true;
}

void QPreviewWidget::SetZoomActionBySubPrev(int nDelta, const QPointF& centre) {
    if (nDelta >= 1)
        ZoomIn(centre);
    else
        ZoomOut(centre);
    OnSetDisplayRect();
    GenerateZoomInfo();
}

void QPreviewWidget::FrameSizeChanged(int nWidth, int nHeight, void* user) {
    static_cast<QPreviewWidget*>(user)->SetRawVideoSize(nWidth, nHeight);
}

void QPreviewWidget::SetRawVideoSize(int nWidth, int nHeight) {
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, "SetRawVideoSize", Qt::QueuedConnection, Q_ARG(int, nWidth),
                                  Q_ARG(int, nHeight));
        return;
    }
    if (!m_bRendering)
        return; // came across the threads after the stop
    Q_EMIT SigFrameSizeChanged(nWidth, nHeight);
    ReadRotation();
    Tell(m_zoom.SetRaw(nWidth, nHeight));
    GenerateZoomInfo();
}

// --- the display window

void QPreviewWidget::ChangeDisplayRect() {
    const CPreviewZoom::Pixel size = m_zoom.DestinationSize();
    if (size.x > 0 && size.y > 0)
        m_pDisplayWnd->setFixedSize(size.x, size.y);
    m_pLayout->activate();
}

void QPreviewWidget::OnSetDisplayRect() {
    ChangeDisplayRect();
    const tagVRRectF source = m_zoom.Source();
    WithCamera([&source](QCamera& camera) {
        camera.SetDisplayRect(&source, &kFull);
        camera.SetDisplayFrame();
        camera.SetDisplayRect(&source, &kFull);
    });
}

void QPreviewWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_zoom.SetWindow(width(), height());
    m_bResized = true;
    Q_EMIT SigResizeEvent();
}

void QPreviewWidget::OnTimerUpdateShowVideo() {
    if (!m_bResized || !ReadRotation())
        return;
    const _ZOOM_OUTCOME_ outcome = m_zoom.ApplyResize();
    Tell(outcome);
    m_bResized = false;
}

void QPreviewWidget::OnTimerUpdatePixelInfo() {
    if (m_bPointerInside)
        Q_EMIT SigMousePos(mapFromGlobal(QCursor::pos()));
}

void QPreviewWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0x14, 0x18, 0x1D));
    const QCameraContainer* container = QCameraContainer::Instance();
    if (m_imgBackground.isNull() || !container || WithCamera([](QCamera&) {}))
        return;
    const QSize box = BackgroundBox(size());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect(QPoint((width() - box.width()) / 2, (height() - box.height()) / 2), box),
                      m_imgBackground);
}
