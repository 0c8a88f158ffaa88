#include "UI/MainWindow/QPrevTitleBar.h"

#include "UI/Controls/QStaticLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <new>

namespace {

constexpr int kHeight = 30;
constexpr int kClockMs = 1000;
constexpr int kBlinkMs = 500;
constexpr int kIconSide = 16;
const char kRedDot[] = ":/ORV/Resources/Hint/red.png";

} // namespace

QPrevTitleBar::QPrevTitleBar(QWidget* parent) : QWidget(parent) {
    if (!InitWidget())
        throw std::bad_alloc();
}

bool QPrevTitleBar::InitWidget() {
    setObjectName("prevTitleBar");
    setAttribute(Qt::WA_StyledBackground);
    setFixedHeight(kHeight);
    m_pTitle = new QStaticLabel(this);
    m_pTitle->setObjectName("prevTitle");
    m_pIcon = new QLabel(this);
    m_pIcon->setFixedWidth(kIconSide);
    m_pIcon->setAlignment(Qt::AlignCenter);
    m_pTime = new QLabel(this);
    m_pTime->setObjectName("prevRecordTime");

    m_pLayout = new QHBoxLayout(this);
    m_pLayout->setContentsMargins(12, 0, 12, 0);
    m_pRecordLayout = new QHBoxLayout;
    m_pRecordLayout->setSpacing(8);
    m_pRecordLayout->addWidget(m_pIcon);
    m_pRecordLayout->addWidget(m_pTime);
    m_pLayout->addWidget(m_pTitle, 1);
    m_pLayout->addLayout(m_pRecordLayout);

    connect(&m_timerClock, &QTimer::timeout, this, &QPrevTitleBar::OnTimerOut);
    connect(&m_timerBlink, &QTimer::timeout, this, &QPrevTitleBar::OnImgTimerOut);
    SetRecordImg(true);
    ShowRecord(false);
    return true;
}

void QPrevTitleBar::SetTitle(const QString& text) {
    m_pTitle->setText(text);
}

void QPrevTitleBar::ShowRecord(bool bShow) {
    m_pIcon->setVisible(bShow);
    m_pTime->setVisible(bShow);
}

void QPrevTitleBar::SetRecordState(bool bRecord, bool bOn) {
    if (!bRecord && bOn)
        m_pTime->setText(tr("Capturing..."));
    ShowRecord(bOn);
    if (!bRecord)
        return;
    if (bOn) {
        m_pTime->setText("00:00:00");
        m_timerClock.start(kClockMs);
        m_timerBlink.start(kBlinkMs);
        return;
    }
    m_timerClock.stop();
    m_timerBlink.stop();
    m_nHours = m_nMinutes = m_nSeconds = 0;
    m_bBlink = true;
    SetRecordImg(true);
}

void QPrevTitleBar::SetRecordImg(bool bShow) {
    m_pIcon->setPixmap(bShow ? QPixmap(kRedDot) : QPixmap());
}

void QPrevTitleBar::ShowTime() {
    m_pTime->setText(QString::asprintf("%02d:%02d:%02d", m_nHours, m_nMinutes, m_nSeconds));
}

void QPrevTitleBar::OnTimerOut() {
    if (++m_nSeconds == 60) {
        m_nSeconds = 0;
        ++m_nMinutes;
    }
    if (m_nMinutes == 60) {
        m_nMinutes = 0;
        ++m_nHours;
    }
    m_nHours %= 24;
    ShowTime();
}

void QPrevTitleBar::OnImgTimerOut() {
    m_bBlink = !m_bBlink;
    SetRecordImg(m_bBlink);
}
