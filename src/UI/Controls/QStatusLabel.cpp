#include "UI/Controls/QStatusLabel.h"

#include "UI/Controls/Look.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

QStatusLabel::QStatusLabel(QWidget* parent) : QStatusLabel(QString(), parent) {}

QStatusLabel::QStatusLabel(const QString& text, QWidget* parent) : QLineEdit(text, parent) {
    setReadOnly(true);
    setFrame(false);
    setFocusPolicy(Qt::NoFocus);
    setContextMenuPolicy(Qt::NoContextMenu);
    setCursor(Qt::ArrowCursor);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    m_nWidth = WantedWidth();
    connect(this, &QLineEdit::textChanged, this, &QStatusLabel::OnTextChanged);
}

int QStatusLabel::WantedWidth() const {
    return Look::FigureWidth(fontMetrics(), text()) + 4;
}

void QStatusLabel::OnTextChanged() {
    setAccessibleName(text());
    const int wanted = WantedWidth();
    if (wanted > m_nWidth) {
        m_nWidth = wanted;
        updateGeometry();
    }
}

QSize QStatusLabel::sizeHint() const {
    return {m_nWidth, std::max(20, fontMetrics().height() + 2)};
}

QSize QStatusLabel::minimumSizeHint() const {
    return {std::min(m_nWidth, fontMetrics().averageCharWidth() * 4), sizeHint().height()};
}

void QStatusLabel::hideEvent(QHideEvent* event) {
    m_nWidth = WantedWidth();
    updateGeometry();
    QLineEdit::hideEvent(event);
}

void QStatusLabel::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        m_nWidth = WantedWidth();
        updateGeometry();
    }
}

bool QStatusLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && WantedWidth() > width() + 4) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QLineEdit::event(event);
}

void QStatusLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Text));
    Look::DrawFigures(painter, rect(), text());
}
