#include "UI/MainWindow/QPrevStatusBar.h"

#include "UI/Controls/Look.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QStatusLabel.h"

#include <QHBoxLayout>
#include <QPalette>
#include <new>
#include <utility>

namespace {

constexpr int kHeight = 25;
constexpr int kItemHeight = 20;
constexpr int kSpacing = 10;
constexpr int kButtonSide = 16;
constexpr int kFontPixels = 11; // all thirteen items shall have room in a window of usual width

QString IdleText(int item) {
    switch (item) {
    case kStatusLineRate:
        return QPrevStatusBar::tr("LineRate: --Hz");
    case kStatusAcquisitionRate:
        return QPrevStatusBar::tr("AcquisitionRate: --fps");
    case kStatusImageNumber:
        return QPrevStatusBar::tr("Image: --");
    case kStatusBandwidth:
        return QPrevStatusBar::tr("BW: --");
    case kStatusResolution:
        return QPrevStatusBar::tr("Resolution: --x--");
    case kStatusErrors:
        return QPrevStatusBar::tr("Error: --");
    case kStatusPacketsLost:
        return QPrevStatusBar::tr("LostPacket: --");
    case kStatusDisplayRate:
        return QPrevStatusBar::tr("DisplayRate: --");
    case kStatusLocation:
        return QPrevStatusBar::tr("Location: --,--");
    case kStatusRgb:
        return QPrevStatusBar::tr("RGB: --");
    case kStatusYuv:
        return QPrevStatusBar::tr("YUV: --");
    case kStatusZoom:
        return QPrevStatusBar::tr("Zoom: --%");
    default:
        return QPrevStatusBar::tr("Temperature: --");
    }
}

} // namespace

QPrevStatusBar::QPrevStatusBar(std::function<bool(int)> isChecked, QWidget* parent)
    : QWidget(parent), m_isChecked(std::move(isChecked)) {
    if (!InitWidget())
        throw std::bad_alloc();
}

bool QPrevStatusBar::InitWidget() {
    setObjectName("prevStatusBar");
    setFixedHeight(kHeight);
    // All items together can be wider than the window: then their captions are cut, and in a small window
    // the items at the right as well. The window isn't forced.
    setMinimumWidth(1);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, QColor(236, 244, 244));
    setPalette(colours);
    setAutoFillBackground(true);

    m_pLayout = new QHBoxLayout(this);
    m_pLayout->setContentsMargins(8, 0, 8, 0);
    m_pLayout->setSpacing(kSpacing);
    m_pBtnExpand = new QImageButton(this);
    m_pBtnExpand->SetBtnImageSet(":/ORV/Resources/function btn/expand");
    m_pBtnExpand->setFixedSize(kButtonSide, kButtonSide);
    m_pBtnExpand->setFocusPolicy(Qt::TabFocus); // a click leaves no focus frame in the bar
    m_pBtnExpand->setToolTip(tr("Choose the items of the status bar"));
    m_pBtnExpand->setAccessibleName(tr("Choose the items of the status bar"));
    connect(m_pBtnExpand, &QImageButton::SigButtonPressed, this, &QPrevStatusBar::SigItemSelectBtnPressed);
    m_pLayout->addWidget(m_pBtnExpand);
    QFont small = font();
    small.setPixelSize(kFontPixels);
    for (QStatusLabel*& item : m_items) {
        item = new QStatusLabel(this);
        item->setFont(small);
        item->setFixedHeight(kItemHeight);
        m_pLayout->addWidget(item);
    }
    m_pLayout->addStretch();
    ResetStatusBarInfo();
    return true;
}

void QPrevStatusBar::SetItem(int nItem, const QString& text) {
    Item(nItem)->setText(text);
}

void QPrevStatusBar::SetRecvFrameNum(long number) {
    SetItem(kStatusImageNumber, tr("Image:%1").arg(number));
}

void QPrevStatusBar::SetRGBInfo(int r, int g, int b) {
    SetItem(kStatusRgb, tr("RGB: %1 %2 %3").arg(r).arg(g).arg(b));
}

void QPrevStatusBar::SetYUVInfo(int y, int u, int v) {
    SetItem(kStatusYuv, tr("YUV: %1 %2 %3").arg(y).arg(u).arg(v));
}

void QPrevStatusBar::UpdateStatsBar(bool bShow) {
    for (int item = 0; item < kStatusItems; ++item) {
        // Deliberate: the acquisition rate alone stays enabled.
        if (item != kStatusAcquisitionRate)
            Item(item)->setEnabled(false);
        if (!bShow)
            Item(item)->setVisible(false);
        else if (item != kStatusLineRate || m_bLineCamera)
            Item(item)->setVisible(m_isChecked(item));
    }
    m_pBtnExpand->setVisible(bShow);
}

void QPrevStatusBar::ResetStatusBarInfo() {
    for (int item = 0; item < kStatusItems; ++item)
        SetItem(item, IdleText(item));
}

void QPrevStatusBar::SetLineCamera(bool bLine) {
    m_bLineCamera = bLine;
    Item(kStatusLineRate)->setVisible(bLine && m_isChecked(kStatusLineRate));
}

void QPrevStatusBar::SetAllStatusItemVisible(bool bVisible) {
    for (int item = 0; item < kStatusItems; ++item) {
        if (item != kStatusLineRate || m_bLineCamera)
            Item(item)->setVisible(bVisible);
    }
}

bool QPrevStatusBar::IsStatusLabelVisiable(int nItem) const {
    if (nItem < 0 || nItem > STATUS_ITEM_LINE_RATE)
        return false;
    // Deliberate: in this order image number and bandwidth stand apart from their neighbours in the bar.
    static constexpr std::array<int, kStatusItems> fromTheRight{
        kStatusTemperature, kStatusZoom,        kStatusYuv,         kStatusRgb,
        kStatusLocation,    kStatusDisplayRate, kStatusPacketsLost, kStatusErrors,
        kStatusImageNumber, kStatusBandwidth,   kStatusResolution,  kStatusAcquisitionRate,
        kStatusLineRate};
    return Item(fromTheRight[static_cast<size_t>(nItem)])->isHidden();
}

void QPrevStatusBar::OnItemSelectWidgetToggled(int nIndex, bool bChecked) {
    if (nIndex >= 0 && nIndex < kStatusItems)
        Item(nIndex)->setVisible(bChecked);
    else if (nIndex == kAllStatusItems)
        SetAllStatusItemVisible(bChecked);
}

void QPrevStatusBar::OnBtnSubView() {
    Q_EMIT SigSubViewBtnPressed(0);
}
