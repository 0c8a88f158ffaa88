#include "UI/MainWindow/QStatusItemSelectWidget.h"

#include "Common/QLocalCfg.h"
#include "UI/Controls/QCheckBoxEx.h"

#include <QButtonGroup>
#include <QEvent>
#include <QVBoxLayout>
#include <new>

namespace {

constexpr int kWidth = 172;
constexpr int kHeight = 500;

QString BoxText(int item) {
    switch (item) {
    case kStatusLineRate:
        return QStatusItemSelectWidget::tr("Line Rate");
    case kStatusAcquisitionRate:
        return QStatusItemSelectWidget::tr("Acquisition Rate");
    case kStatusImageNumber:
        return QStatusItemSelectWidget::tr("Image Number");
    case kStatusBandwidth:
        return QStatusItemSelectWidget::tr("Bandwidth");
    case kStatusResolution:
        return QStatusItemSelectWidget::tr("Resolution");
    case kStatusErrors:
        return QStatusItemSelectWidget::tr("Errors");
    case kStatusPacketsLost:
        return QStatusItemSelectWidget::tr("Packets Lost");
    case kStatusDisplayRate:
        return QStatusItemSelectWidget::tr("Display Rate");
    case kStatusLocation:
        return QStatusItemSelectWidget::tr("Location");
    case kStatusRgb:
        return QStatusItemSelectWidget::tr("RGB");
    case kStatusYuv:
        return QStatusItemSelectWidget::tr("YUV");
    case kStatusZoom:
        return QStatusItemSelectWidget::tr("Zoom");
    case kStatusTemperature:
        return QStatusItemSelectWidget::tr("Temperature");
    default:
        return QStatusItemSelectWidget::tr("All");
    }
}

} // namespace

QStatusItemSelectWidget::QStatusItemSelectWidget(QWidget* parent) : QWidget(parent) {
    if (!InitWidget())
        throw std::bad_alloc();
}

bool QStatusItemSelectWidget::InitWidget() {
    setObjectName("statusItemSelect");
    setAttribute(Qt::WA_StyledBackground);
    // The picture is drawn into a native window: only another one can lie over it.
    setAttribute(Qt::WA_DontCreateNativeAncestors);
    setAttribute(Qt::WA_NativeWindow);
    setFixedSize(kWidth, kHeight);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 12, 12);
    layout->setSpacing(8);
    m_pGroup = new QButtonGroup(this);
    m_pGroup->setExclusive(false);
    for (int item = 0; item <= kAllStatusItems; ++item) {
        auto* box = new QCheckBoxEx(this);
        box->SetIndex(item);
        m_boxes[static_cast<size_t>(item)] = box;
        m_pGroup->addButton(box, item);
        layout->addWidget(box);
    }
    layout->addStretch();
    connect(m_pGroup, &QButtonGroup::idClicked, this, &QStatusItemSelectWidget::OnBtnClicked);
    SetItemVisible(kStatusLineRate, false); // until a line-scan camera comes
    RefreshWidgetInfo();
    LoadFromXmlFile();
    hide();
    return true;
}

void QStatusItemSelectWidget::LoadFromXmlFile() {
    const QLocalCfg* config = QLocalCfg::Instance();
    if (!config)
        return;
    m_nFlags = static_cast<uint32_t>(config->GetStatusShowFlage());
    // Deliberate: without the line rate's bit "All" starts from whether there is a line-scan camera.
    bool all = IsStatusItemSet(m_nFlags, kStatusLineRate) || m_bLineCamera;
    for (int item = 0; item < kStatusItems; ++item) {
        const bool checked = IsStatusItemSet(m_nFlags, item);
        Box(item)->setChecked(checked);
        if (item != kStatusLineRate)
            all = all && checked;
    }
    m_bAll = all;
    Box(kAllStatusItems)->setChecked(all);
}

void QStatusItemSelectWidget::SaveToXmlFile() {
    m_nFlags = 0;
    for (int item = 0; item < kStatusItems; ++item) {
        if (Box(item)->isChecked())
            m_nFlags |= StatusItemFlag(item);
    }
    if (QLocalCfg* config = QLocalCfg::Instance())
        config->SetStatusShowFlage(static_cast<int>(m_nFlags));
}

bool QStatusItemSelectWidget::IsItemChecked(int nIndex) const {
    if (nIndex < 0 || nIndex > kAllStatusItems)
        return false;
    if (nIndex == kStatusLineRate && !m_bLineCamera)
        return false;
    return Box(nIndex)->isChecked();
}

void QStatusItemSelectWidget::SetItemVisible(int nIndex, bool bVisible) {
    if (nIndex >= 0 && nIndex <= kAllStatusItems)
        Box(nIndex)->setVisible(bVisible);
}

void QStatusItemSelectWidget::SetLineCamera(bool bLine) {
    SetItemVisible(kStatusLineRate, bLine);
    m_bLineCamera = bLine;
}

void QStatusItemSelectWidget::SetAllItemChecked(bool bChecked) {
    for (int item = 0; item < kStatusItems; ++item)
        Box(item)->setChecked(bChecked);
}

void QStatusItemSelectWidget::UpdateCheckState() {
    bool all = true;
    for (int item = 0; item < kStatusItems; ++item) {
        if (!Box(item)->isChecked() && (item != kStatusLineRate || m_bLineCamera))
            all = false;
    }
    // Deliberate: the remembered "All" wins over boxes that were unchecked together since.
    if (m_bAll)
        SetAllItemChecked(true);
    else
        m_bAll = all;
    Box(kAllStatusItems)->setChecked(m_bAll);
}

void QStatusItemSelectWidget::OnBtnClicked(int nBtnIndex) {
    QCheckBoxEx* const allBox = Box(kAllStatusItems);
    if (nBtnIndex != kAllStatusItems) {
        m_bAll = true;
        for (int item = 0; item < kStatusItems; ++item) {
            if (!Box(item)->isHidden() && !Box(item)->isChecked()) {
                m_bAll = false;
                break;
            }
        }
        allBox->setChecked(m_bAll);
    } else {
        SetAllItemChecked(allBox->isChecked());
        m_bAll = true; // deliberate: whichever way "All" was turned
    }
    SaveToXmlFile();
    Q_EMIT SigItemToggled(nBtnIndex, Box(nBtnIndex)->isChecked());
}

void QStatusItemSelectWidget::RefreshWidgetInfo() {
    for (int item = 0; item <= kAllStatusItems; ++item)
        Box(item)->setText(BoxText(item));
}

void QStatusItemSelectWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        RefreshWidgetInfo();
    QWidget::changeEvent(event);
}
