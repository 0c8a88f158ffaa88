#include "UI/MainWindow/QMessageLogWidget.h"

#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/Controls/QStaticLabel.h"
#include "UI/MainWindow/QWrappedTextLabel.h"

#include <QClipboard>
#include <QEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <array>

namespace {

struct LevelLook {
    const char* icon;
    QRgb strip;
};

LevelLook LookOf(_MESSAGE_LOG_LEVEL_ level) {
    switch (level) {
    case MESSAGE_LOG_CRITICAL:
        return {":/ORV/Resources/Hint/error_small.png", Look::bad};
    case MESSAGE_LOG_WARNING:
        return {":/ORV/Resources/Hint/warning_small.png", Look::warning};
    default:
        return {":/ORV/Resources/Hint/figure_small.png", Look::accent};
    }
}

constexpr int kStripWidth = 3;
constexpr int kIconSize = 16;
// Three rows of one line, one of two, the gaps between them and the margins make up the card's height.
constexpr int kLineHeight = 18;
constexpr int kGap = 4;
constexpr int kMargin = 8;
static_assert(5 * kLineHeight + 3 * kGap + 2 * kMargin <= QMessageLogWidget::kHeight,
              "two lines of the message have room");

QLabel* MakeLabel(const char* name, QLabel* label) {
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setFixedHeight(kLineHeight);
    return label;
}

} // namespace

QMessageLogWidget::QMessageLogWidget(QWidget* parent)
    : QWidget(parent)
    , m_levelLabel(MakeLabel("logLabel", new QLabel(this)))
    , m_sourceLabel(MakeLabel("logLabel", new QLabel(this)))
    , m_timeLabel(MakeLabel("logLabel", new QLabel(this)))
    , m_messageLabel(MakeLabel("logLabel", new QLabel(this)))
    , m_icon(new QLabel(this))
    , m_level(MakeLabel("logLevel", new QLabel(this)))
    , m_source(MakeLabel("logSource", new QStaticLabel(this)))
    , m_time(MakeLabel("logTime", new QLabel(this)))
    , m_message(new QWrappedTextLabel(kLineHeight, this)) {
    m_message->setObjectName("logMessage");
    m_icon->setObjectName("logIcon");
    m_icon->setFixedSize(kIconSize, kIconSize);
    setFixedHeight(kHeight);
    setFocusPolicy(Qt::StrongFocus);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QWidget::customContextMenuRequested, this, &QMessageLogWidget::OnShowContextMenu);

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(kStripWidth + 9, kMargin, 12, kMargin);
    layout->setHorizontalSpacing(8);
    layout->setVerticalSpacing(kGap);
    auto* level = new QHBoxLayout;
    level->setSpacing(6);
    level->addWidget(m_icon);
    level->addWidget(m_level, 1);
    layout->addWidget(m_levelLabel, 0, 0);
    layout->addLayout(level, 0, 1);
    layout->addWidget(m_sourceLabel, 1, 0);
    layout->addWidget(m_source, 1, 1);
    layout->addWidget(m_timeLabel, 2, 0);
    layout->addWidget(m_time, 2, 1);
    layout->addWidget(m_messageLabel, 3, 0, Qt::AlignTop);
    layout->addWidget(m_message, 3, 1);
    layout->setColumnStretch(1, 1);
    layout->setRowStretch(3, 1);
    RefreshWidgetInfo();
}

void QMessageLogWidget::SetMsgLogInfo(_MESSAGE_LOG_LEVEL_ level, const QString& source, const QString& text) {
    m_record = {QDateTime::currentDateTime(), level, source, text};
    Fill();
}

void QMessageLogWidget::ReSetMsgLogInfoBySort(_MESSAGE_LOG_LEVEL_ level, const QString& source,
                                              const QString& text, const QDateTime& dateTime) {
    m_record = {dateTime, level, source, text};
    Fill();
}

void QMessageLogWidget::Fill() {
    m_icon->setPixmap(
        QIcon(LookOf(m_record.level).icon).pixmap(window()->windowHandle(), {kIconSize, kIconSize}));
    if (m_level->property("level") != m_record.level) {
        m_level->setProperty("level", m_record.level);
        style()->unpolish(m_level);
        style()->polish(m_level);
    }
    m_level->setText(MsgLogLevelWord(m_record.level));
    m_source->setText(m_record.source);
    m_time->setText(MsgLogTimeText(m_record.dateTime));
    m_message->setText(m_record.text);
    setAccessibleName(m_level->text() + ", " + m_time->text() + ", " + m_record.text);
    update();
}

void QMessageLogWidget::RefreshWidgetInfo() {
    // deliberate: the level word is not among these; it stays in the language in which the card was filled.
    m_levelLabel->setText(tr("Level:"));
    m_sourceLabel->setText(tr("Source:"));
    m_timeLabel->setText(tr("Time:"));
    m_messageLabel->setText(tr("Message:"));
}

void QMessageLogWidget::OnShowContextMenu(const QPoint& position) {
    auto* menu = new QMenuEx(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(tr("Copy")), &QAction::triggered, this, &QMessageLogWidget::OnActionCopy);
    connect(menu->addAction(tr("Copy All")), &QAction::triggered, this, &QMessageLogWidget::SigCopyAll);
    connect(menu->addAction(tr("Clear Message Log")), &QAction::triggered, this,
            &QMessageLogWidget::SigClearLog);
    menu->popup(mapToGlobal(position));
}

void QMessageLogWidget::OnActionCopy() {
    // The word as the card shows it, whatever the language is by now.
    QGuiApplication::clipboard()->setText(
        MsgLogCopyText(m_level->text(), m_record.source, m_record.dateTime, m_record.text));
}

void QMessageLogWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        RefreshWidgetInfo();
    QWidget::changeEvent(event);
}

void QMessageLogWidget::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        OnActionCopy();
    else if (event->key() == Qt::Key_Down)
        focusNextChild();
    else if (event->key() == Qt::Key_Up)
        focusPreviousChild();
    else
        QWidget::keyPressEvent(event);
}

void QMessageLogWidget::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Look::surface));
    painter.fillRect(0, 0, kStripWidth, height() - 1, QColor(LookOf(m_record.level).strip));
    painter.fillRect(0, height() - 1, width(), 1, QColor(Look::line));
    if (hasFocus()) {
        constexpr int kRing = 2;
        painter.setPen(QPen(QColor(Look::accent), kRing));
        painter.drawRect(rect().adjusted(kRing / 2, kRing / 2, -kRing / 2, -kRing / 2));
    }
}
