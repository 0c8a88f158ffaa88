#include "UI/MainWindow/QOrvToolBar.h"

#include "Camera/QCamera.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/MainWindow/CameraUse.h"
#include "UI/MainWindow/QDevListWidget.h"

#include <QButtonGroup>
#include <QEvent>
#include <QFrame>
#include <QLabel>
#include <QStyle>
#include <new>

namespace {

constexpr int kBarHeight = 44;
constexpr int kSpacer = 4; // before the first button
constexpr int kLineHeight = 20;
constexpr int kLineGap = 6; // on either side of a line
const char kPictures[] = ":/ORV/Resources/btn2/";

} // namespace

QOrvToolBar::QOrvToolBar(QWidget* pParent) : QToolBar(pParent) {
    if (!InitWidget())
        throw std::bad_alloc();
}

bool QOrvToolBar::InitWidget() {
    setObjectName("toolBar");
    setFixedHeight(kBarHeight);
    setMovable(false);
    m_pGroup = new QButtonGroup(this);
    auto* spacer = new QLabel(this);
    spacer->setFixedWidth(kSpacer);
    addWidget(spacer);
    AddButton(kConnect, "toolConnect");
    AddLine();
    AddButton(kStart, "toolStart");
    AddButton(kCapture, "toolCapture");
    AddButton(kRecord, "toolRecord");
    AddLine();
    AddButton(kZoomIn, "toolZoomIn")->SetBtnImageSet(QString(kPictures) + "enlarge");
    AddButton(kZoomOut, "toolZoomOut")->SetBtnImageSet(QString(kPictures) + "narrow");
    AddButton(kFit, "toolFit")->SetBtnImageSet(QString(kPictures) + "fit");
    AddButton(kActualSize, "toolActualSize")->SetBtnImageSet(QString(kPictures) + "actual");
    UpdateConnectBtnImg(false);
    UpdateContinousShotBtn(false);
    UpdateRecordBtnImg(false);
    UpdateCapturingBtnImg(false);
    RefreshWidgetInfo();
    SetToolbarBtnEnable(false);
    return static_cast<bool>(
        connect(m_pGroup, &QButtonGroup::idClicked, this, &QOrvToolBar::SigToolBarBtnClicked));
}

QImageButton* QOrvToolBar::AddButton(int nIndex, const char* name) {
    auto* added = new QImageButton(this);
    added->setObjectName(name);
    added->setFixedSize(Look::toolButtonWidth, Look::toolButtonHeight);
    added->setFocusPolicy(Qt::NoFocus);
    added->SetBtnIndex(nIndex);
    m_pGroup->addButton(added, nIndex);
    addWidget(added);
    return added;
}

void QOrvToolBar::AddLine() {
    auto* room = new QWidget(this);
    room->setFixedSize(1 + 2 * kLineGap, kLineHeight);
    auto* line = new QFrame(room);
    line->setObjectName("toolLine");
    line->setGeometry(kLineGap, 0, 1, kLineHeight);
    addWidget(room);
}

QImageButton* QOrvToolBar::button(int nIndex) const {
    return qobject_cast<QImageButton*>(m_pGroup->button(nIndex));
}

void QOrvToolBar::UpdateToolBarBtn(int nType, int nCameraID) {
    if (nType != QDevListWidget::ITEM_GIGE_CAMERA && nType != QDevListWidget::ITEM_USB_CAMERA) {
        SetToolbarBtnEnable(false);
        return;
    }
    UseCamera(nCameraID, [this](QCamera& camera) {
        const int state = camera.GetCameraState();
        SetToolbarBtnEnable(state == CAMERA_GRABBING);
        button(kConnect)->setEnabled(true);
        if (state == CAMERA_OPEN) {
            button(kStart)->setEnabled(true);
            button(kCapture)->setEnabled(camera.IsHaveFrameData());
            SetToolbarZoomBtnEnable(camera.IsHaveFrameData());
        }
        UpdateConnectBtnImg(state != CAMERA_CLOSED);
        UpdateContinousShotBtn(state == CAMERA_GRABBING);
    });
}

void QOrvToolBar::SetToolbarBtnEnable(bool bEnable) {
    for (QAbstractButton* each : m_pGroup->buttons())
        each->setEnabled(bEnable);
}

void QOrvToolBar::SetToolbarZoomBtnEnable(bool bEnable) {
    for (const int zoom : {kZoomIn, kZoomOut, kFit, kActualSize})
        button(zoom)->setEnabled(bEnable);
}

void QOrvToolBar::SetToolBarZoomInAndOut(bool bInEnable, bool bOutEnable) {
    button(kZoomIn)->setEnabled(bInEnable);
    button(kZoomOut)->setEnabled(bOutEnable);
}

// A button that is on keeps its pressed picture on a tinted ground.
void QOrvToolBar::ShowFace(int nIndex, const char* set, bool bOn) {
    QImageButton* const changed = button(nIndex);
    const QString base = QString(kPictures) + set;
    changed->SetBtnImage(base + (bOn ? "_sel.png" : ".png"), base + (bOn ? "_sel.png" : "_hov.png"),
                         base + "_sel.png", base + "_dis.png");
    if (changed->property("lit") == QVariant(bOn))
        return;
    changed->setProperty("lit", bOn);
    changed->style()->unpolish(changed);
    changed->style()->polish(changed);
}

void QOrvToolBar::UpdateConnectBtnImg(bool bConnected) {
    m_bConnected = bConnected;
    ShowFace(kConnect, "connect", bConnected);
    button(kConnect)->setToolTip(bConnected ? tr("Disconnect Camera") : tr("Connect Camera"));
}

void QOrvToolBar::UpdateContinousShotBtn(bool bLive) {
    m_bLive = bLive;
    ShowFace(kStart, bLive ? "stop" : "play", bLive);
    button(kStart)->setToolTip(bLive ? tr("Stop Live View") : tr("Start Acquisition"));
}

void QOrvToolBar::UpdateRecordBtnImg(bool bRecording) {
    m_bRecording = bRecording;
    ShowFace(kRecord, "record", bRecording);
    button(kRecord)->setToolTip(bRecording ? tr("Stop Recording") : tr("Start Recording"));
}

void QOrvToolBar::UpdateCapturingBtnImg(bool bCapturing) {
    m_bCapturing = bCapturing;
    ShowFace(kCapture, "capture", bCapturing);
    button(kCapture)->setToolTip(bCapturing ? tr("Stop Capturing") : tr("Capture and Save"));
}

void QOrvToolBar::RefreshWidgetInfo() {
    setWindowTitle(tr("Control Toolbar"));
    UpdateConnectBtnImg(m_bConnected);
    UpdateContinousShotBtn(m_bLive);
    UpdateRecordBtnImg(m_bRecording);
    UpdateCapturingBtnImg(m_bCapturing);
    button(kZoomIn)->setToolTip(tr("Zoom in"));
    button(kZoomOut)->setToolTip(tr("Zoom out"));
    button(kFit)->setToolTip(tr("Fit to Window"));
    button(kActualSize)->setToolTip(tr("Actual Size"));
}

void QOrvToolBar::changeEvent(QEvent* event) {
    QToolBar::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        RefreshWidgetInfo();
}
