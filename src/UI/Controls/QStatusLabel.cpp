#include "UI/Controls/QStatusLabel.h"

#include "UI/Controls/Look.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

namespace {

constexpr int kSlack = 4;
constexpr int kCaptionLetters = 2; // of a caption in the least room

// Where the value begins: at the colon, in Chinese a wide one. 0 without one.
int ValueStart(const QString& text) {
    for (int i = 0; i < text.size(); ++i)
        if (text[i] == ':' || text[i] == QChar(0xFF1A))
            return i;
    return 0;
}

} // namespace

QStatusLabel::QStatusLabel(QWidget* parent) : QStatusLabel(QString(), parent) {}

QStatusLabel::QStatusLabel(const QString& text, QWidget* parent) : QLineEdit(text, parent) {
    setReadOnly(true);
    setFrame(false);
    setFocusPolicy(Qt::NoFocus);
    setContextMenuPolicy(Qt::NoContextMenu);
    setCursor(Qt::ArrowCursor);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    m_nWidth = WantedWidth();
    m_nLeastWidth = LeastWidth();
    connect(this, &QLineEdit::textChanged, this, &QStatusLabel::OnTextChanged);
}

int QStatusLabel::WantedWidth() const {
    return Look::FigureWidth(fontMetrics(), text()) + kSlack;
}

int QStatusLabel::LeastWidth() const {
    const int start = ValueStart(text());
    if (start == 0)
        return std::min(WantedWidth(), fontMetrics().averageCharWidth() * 4);
    const QString least = text().left(std::min(start, kCaptionLetters)) + QChar(0x2026) + text().mid(start);
    return std::min(WantedWidth(), Look::FigureWidth(fontMetrics(), least) + kSlack);
}

QString QStatusLabel::GetShownText() const {
    const QFontMetrics metrics = fontMetrics();
    const int start = ValueStart(text());
    if (Look::FigureWidth(metrics, text()) <= width() || start == 0)
        return text();
    const QString value = text().mid(start);
    const int room = width() - Look::FigureWidth(metrics, value);
    const QString caption = metrics.elidedText(text().left(start), Qt::ElideRight, room);
    // With less room than for one letter the whole is cut at its end, as any text.
    return caption.size() > 1 ? caption + value : text();
}

void QStatusLabel::OnTextChanged() {
    setAccessibleName(text());
    const int wanted = WantedWidth();
    const int least = LeastWidth();
    if (wanted <= m_nWidth && least <= m_nLeastWidth && !m_bNewLanguage)
        return;
    m_nWidth = m_bNewLanguage ? wanted : std::max(wanted, m_nWidth);
    m_nLeastWidth = m_bNewLanguage ? least : std::max(least, m_nLeastWidth);
    m_bNewLanguage = false;
    updateGeometry();
}

QSize QStatusLabel::sizeHint() const {
    return {m_nWidth, std::max(20, fontMetrics().height() + 2)};
}

QSize QStatusLabel::minimumSizeHint() const {
    return {m_nLeastWidth, sizeHint().height()};
}

void QStatusLabel::hideEvent(QHideEvent* event) {
    m_nWidth = WantedWidth();
    m_nLeastWidth = LeastWidth();
    updateGeometry();
    QLineEdit::hideEvent(event);
}

void QStatusLabel::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        m_nWidth = WantedWidth();
        m_nLeastWidth = LeastWidth();
        updateGeometry();
    }
    m_bNewLanguage = m_bNewLanguage || event->type() == QEvent::LanguageChange;
}

bool QStatusLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && WantedWidth() > width() + kSlack) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QLineEdit::event(event);
}

void QStatusLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Text));
    Look::DrawFigures(painter, rect(), GetShownText());
}
