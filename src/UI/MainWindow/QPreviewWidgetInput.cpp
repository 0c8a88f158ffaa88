// The preview's mouse, wheel and keys.
#include "UI/MainWindow/QPreviewWidget.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <algorithm>
#include <cstdlib>

namespace {

constexpr int kDragStep = 20; // pixels

} // namespace

void QPreviewWidget::wheelEvent(QWheelEvent* event) {
    event->accept();
    if (!ReadRotation() || width() <= 0 || height() <= 0)
        return;
    const QPointF at = event->position();
    SetZoomActionBySubPrev(event->angleDelta().y(), {at.x() / width(), at.y() / height()});
}

void QPreviewWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        m_ptPress = m_ptDragEnd = event->pos();
        m_bLeftButton = true;
    }
    QWidget::mousePressEvent(event);
    event->accept();
}

void QPreviewWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_bLeftButton = false;
    QWidget::mouseReleaseEvent(event);
}

void QPreviewWidget::mouseMoveEvent(QMouseEvent* event) {
    QWidget::mouseMoveEvent(event);
    if (!m_bLeftButton)
        return;
    if (!m_bCtrl) {
        OnMouseMoveDragVideo(event->pos());
        return;
    }
    const tagVRRectF& shown = m_zoom.Destination();
    const auto bound = [](int value, float start, float end, int size) {
        const auto low = static_cast<int>(start * static_cast<float>(size));
        const auto high = static_cast<int>(end * static_cast<float>(size)) - 1;
        return std::clamp(value, low, std::max(low, high));
    };
    m_ptDragEnd = {bound(event->pos().x(), shown.left, shown.right, width()),
                   bound(event->pos().y(), shown.top, shown.bottom, height())};
}

void QPreviewWidget::OnMouseMoveDragVideo(QPoint pt) {
    const QPoint moved = pt - m_ptDragEnd;
    if (std::abs(moved.x()) < kDragStep && std::abs(moved.y()) < kDragStep)
        return;
    m_ptDragEnd = pt;
    if (!ReadRotation())
        return;
    m_zoom.Drag(moved.x(), moved.y());
    OnSetDisplayRect();
}

void QPreviewWidget::SaveRegion() {
    int fromX = 0;
    int fromY = 0;
    int toX = 0;
    int toY = 0;
    if (!GetPtLocateInRawVideo(m_ptPress, fromX, fromY) || !GetPtLocateInRawVideo(m_ptDragEnd, toX, toY))
        return;
    Q_EMIT SigAutoFunctionAOI(std::abs(toX - fromX), std::abs(toY - fromY), std::min(fromX, toX),
                              std::min(fromY, toY));
}

void QPreviewWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
    if (!m_bRendering || !parentWidget())
        return;
    Q_EMIT SigRenderFullScreen(!parentWidget()->isWindow());
}

void QPreviewWidget::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control)
        m_bCtrl = true;
    if (event->key() == Qt::Key_Escape && parentWidget() && parentWidget()->isWindow()) {
        Q_EMIT SigRenderFullScreen(false);
        return;
    }
    QWidget::keyPressEvent(event);
}

void QPreviewWidget::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Control)
        m_bCtrl = false;
    QWidget::keyReleaseEvent(event);
}

void QPreviewWidget::enterEvent(QEvent* event) {
    m_bPointerInside = true;
    if (m_bRendering)
        setCursor(Qt::OpenHandCursor);
    QWidget::enterEvent(event);
}

void QPreviewWidget::leaveEvent(QEvent* event) {
    m_bPointerInside = false;
    setCursor(Qt::ArrowCursor);
    QWidget::leaveEvent(event);
}
