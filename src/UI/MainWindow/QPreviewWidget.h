// The picture area: a window that the render library draws into, and the zoom by wheel, buttons and mouse.
#pragma once

#include "UI/MainWindow/CPreviewZoom.h"

#include <QImage>
#include <QPoint>
#include <QTimer>
#include <QWidget>
#include <functional>

class QCamera;
class QHBoxLayout;

// Main thread, but for FrameSizeChanged. Draws nothing of the picture itself: it hands a window and two
// rectangles to the camera.
class QPreviewWidget : public QWidget {
    Q_OBJECT

public:
    // Throws std::bad_alloc when it can't be built.
    explicit QPreviewWidget(QWidget* parent = nullptr);
    ~QPreviewWidget() override;

    // A camera is connected but not yet rendered.
    void SetCameraID(long lCameraID);
    long GetCameraID() const { return m_lCameraID; }
    void OnStartRender(long lCameraID);
    void OnStopRender();
    bool IsRendering() const { return m_bRendering; }

    // The centre is a fraction of this widget.
    void ZoomIn(QPointF centre);
    void ZoomOut(QPointF centre);
    void OnDisplayZoomIn();
    void OnDisplayZoomOut();
    void OnDisplayZoomToFit(bool bSetDisplayRect);
    void OnDisplayResume(); // actual size
    // After a quarter turn of the picture.
    void OnDisplayZoomToFitByRotate();
    // Of a frame that has come, in pixels. Any thread: another one than the main thread hands it over.
    Q_INVOKABLE void SetRawVideoSize(int nWidth, int nHeight);
    void GetDisplayRect(tagVRRectF& source, tagVRRectF& destination) const;
    // The window that is drawn into.
    QWidget* GetDisplayWnd() const { return m_pDisplayWnd; }
    // Off while the render library paints the window.
    void SetDisplayUpdatesEnabled(bool bEnabled);
    void GenerateZoomInfo();
    // The picture's pixel under a point of this widget; false outside of the picture.
    bool GetPtLocateInRawVideo(QPoint pt, int& nX, int& nY) const;
    // One zoom step that a small second picture asks for: in from 1 upward, else out.
    void SetZoomActionBySubPrev(int nDelta, const QPointF& centre);
    // Tells the rubber band of a drag with Ctrl as a region of the picture. Nothing calls it yet.
    void SaveRegion();

    const CPreviewZoom& Zoom() const { return m_zoom; }

public Q_SLOTS:
    void OnTimerUpdateShowVideo();
    void OnTimerUpdatePixelInfo();
    void OnSetDisplayRect();

Q_SIGNALS:
    void SigMousePos(QPoint pt);
    void SigRenderFullScreen(bool bFullScreen);
    void SigUpdateVideoDisplay();
    void SigZoomInfo(QString strInfo);
    void SigAutoFunctionAOI(int nWidth, int nHeight, int nOffSetX, int nOffSetY);
    void SigFrameSizeChanged(int nWidth, int nHeight);
    void SigResizeEvent();
    void SigZoomState(bool bZoomIn, bool bZoomOut);
    void SigSetDisplayRect();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    bool InitWidget();
    static void FrameSizeChanged(int nWidth, int nHeight, void* user);
    // False when the camera is gone.
    bool WithCamera(const std::function<void(QCamera&)>& use) const;
    bool ReadRotation();
    void Tell(const _ZOOM_OUTCOME_& outcome);
    void ChangeDisplayRect();
    void OnMouseMoveDragVideo(QPoint pt);

    long m_lCameraID = -1;
    bool m_bRendering = false;
    CPreviewZoom m_zoom;
    bool m_bLeftButton = false;
    bool m_bCtrl = false;
    QPoint m_ptPress;
    QPoint m_ptDragEnd; // last drag point, or the rubber band's end
    bool m_bResized = false;
    bool m_bPointerInside = false;
    QTimer m_timerPixel;
    QWidget* m_pDisplayWnd = nullptr;
    QHBoxLayout* m_pLayout = nullptr;
    QImage m_imgBackground;
};
