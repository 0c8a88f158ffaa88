// The figures of the status bar: rates, losses, and the pixel under the pointer.
#include "Camera/QCamera.h"
#include "UI/MainWindow/CameraUse.h"
#include "UI/MainWindow/QPrevStatusBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QRenderWidget.h"
#include "UI/MainWindow/QStatusItemSelectWidget.h"

#include <QApplication>
#include <QCursor>
#include <QDesktopWidget>
#include <QImage>
#include <QScreen>

namespace {

constexpr int kDisableDisplay = 10; // display mode
constexpr uint32_t kLineScan = 1;
constexpr int kRestTicks = 5;

} // namespace

void QRenderWidget::UpdateStatusBar(bool bShow) {
    m_pStatusBar->UpdateStatsBar(bShow);
    UpdateLineOrFrameRateShow();
    if (!bShow) {
        m_pStatusBar->ResetStatusBarInfo();
        return;
    }
    OnTimerUpdateFrameInfo();
    m_pStatusBar->SetZoomInfo(tr("Zoom: --%"));
}

void QRenderWidget::UpdateLineOrFrameRateShow() {
    bool line = false;
    WithCamera([&line](QCamera& camera) { line = camera.GetCamScanType() == kLineScan; });
    m_pItemSelect->SetLineCamera(line);
    m_pStatusBar->SetLineCamera(line);
}

void QRenderWidget::OnTimerUpdateFrameInfo() {
    WithCamera([this](QCamera& camera) {
        ShowLoss(camera);
        m_pStatusBar->SetRecvFrameNum(static_cast<long>(camera.GetRecvFrameNum()));
        m_pPreview->SetDisplayUpdatesEnabled(m_nDisplayMode == kDisableDisplay || !camera.IsHaveFrameData());
        ShowRates(camera);
        m_pPreview->GenerateZoomInfo();
    });
}

void QRenderWidget::ShowLoss(QCamera& camera) {
    _OV_MATCH_INFO_NET_DETECT_ record{};
    if (camera.GetMatchInfoNetDetect(&record) != 0) {
        m_pStatusBar->SetLostFrameNum(tr("Error: --"));
        m_pStatusBar->SetLostPacketNum(tr("LostPacket: --"));
        return;
    }
    // Deliberate: what is called lost frames here is the library's count of errors.
    m_pStatusBar->SetLostFrameNum(tr("Error: %1").arg(ShownLoss(record.errorCount)));
    if (m_networkWatch.Update(record.receivedBytes, record.lostPackets, m_nPacketSize))
        Q_EMIT SigLostPacketSerious();
    m_pStatusBar->SetLostPacketNum(tr("LostPacket: %1").arg(ShownLoss(record.lostPackets)));
}

void QRenderWidget::ShowRates(QCamera& camera) {
    int lineRate = 0;
    if (IsStatusItemChecked(kStatusLineRate) && camera.GetActualLineRate(lineRate))
        m_pStatusBar->SetLineRate(tr("LineRate: %1Hz").arg(lineRate));
    const float acquisition = camera.GetActualFrameRate();
    m_pStatusBar->SetFrameRate(acquisition < 0 ? tr("AcquisitionRate: --fps")
                                               : tr("AcquisitionRate:%1fps").arg(acquisition, 0, 'f', 2));
    const float bandwidth = camera.GetActualBandWidth();
    m_pStatusBar->SetBandWidth(bandwidth < 0 ? tr("BW: --Mbps") : tr("BW:%1Mbps").arg(bandwidth, 0, 'f', 1));
    const float display = ShownDisplayRate(camera.GetActualDisplayRate(), acquisition,
                                           static_cast<float>(camera.GetConfigRate()));
    m_pStatusBar->SetDisplayRate(display < 0 || !camera.IsDisplay()
                                     ? tr("DisplayRate: --fps")
                                     : tr("DisplayRate:%1fps").arg(display, 0, 'f', 2));
    float temperature = 0;
    const bool measured = camera.GetFloatNodePropertyValue("DeviceTemperature", &temperature) != 0;
    m_pStatusBar->SetTemperatureInfo(
        tr("Temperature: %1").arg(measured ? QString::number(temperature, 'f', 1) : QString("--")));
}

void QRenderWidget::OnFrameSizeChanged(int nWidth, int nHeight) {
    m_nFrameWidth = nWidth;
    m_nFrameHeight = nHeight;
    m_pStatusBar->SetImageSize(tr("Resolution: %1 * %2").arg(nWidth).arg(nHeight));
}

void QRenderWidget::OnPreviewWidgetZoomInfo(const QString& strInfo) {
    m_pStatusBar->SetZoomInfo(strInfo);
}

void QRenderWidget::OnPreviewWidgetMouseMove(QPoint pt) {
    if (!WithCamera([](QCamera&) {}))
        return;
    int x = 0;
    int y = 0;
    if (m_pPreview->GetPtLocateInRawVideo(pt, x, y))
        m_pStatusBar->SetLocate(tr("Locate: %1, %2").arg(x).arg(y));
    else
        m_pStatusBar->SetLocate(tr("Locate: --, --"));
    m_ptCurrent = pt;
    if (m_ptCurrent != m_ptLast) {
        m_ptLast = m_ptCurrent;
        m_bStopGrabScreen = false;
    }
    int r = 0;
    int g = 0;
    int b = 0;
    if (!GetScreenPixel(&r, &g, &b))
        return;
    m_pStatusBar->SetRGBInfo(r, g, b);
    const _YUV_ yuv = YuvOf(r, g, b);
    m_pStatusBar->SetYUVInfo(yuv.y, yuv.u, yuv.v);
}

bool QRenderWidget::GetScreenPixel(int* pR, int* pG, int* pB) {
    if (!pR || !pG || !pB)
        return false;
    // From the screen and not from the frame: the colour is the one that the operator sees.
    QScreen* const screen = QGuiApplication::primaryScreen();
    if (!m_bStopGrabScreen && screen) {
        const QPoint at = QCursor::pos();
        m_pixmapPointer = screen->grabWindow(QApplication::desktop()->winId(), at.x(), at.y(), 1, 1);
    }
    if (m_pixmapPointer.isNull())
        return true;
    const QRgb colour = m_pixmapPointer.toImage().pixel(0, 0);
    *pR = qRed(colour);
    *pG = qGreen(colour);
    *pB = qBlue(colour);
    return true;
}

void QRenderWidget::OnTimerVision() {
    if (m_ptLast != m_ptCurrent)
        return;
    // Deliberate: the count is never set back, so after the first five seconds one tick of rest is enough.
    if (++m_nVisionTicks >= kRestTicks)
        m_bStopGrabScreen = true;
}
