#include "UI/Controls/QPushButtonExColor.h"

#include "UI/Controls/LookTokens.h"

#include <QColor>
#include <QKeyEvent>
#include <QPainter>

QPushButtonExColor::QPushButtonExColor(QWidget* parent) : QPushButtonExColor(QString(), parent) {}

QPushButtonExColor::QPushButtonExColor(const QString& text, QWidget* parent) : QPushButton(text, parent) {
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, &QPushButtonExColor::OnClicked);
}

void QPushButtonExColor::OnClicked() {
    Q_EMIT SigOnClickedButton(m_nIndex);
}

void QPushButtonExColor::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !event->isAutoRepeat())
        click();
    else
        QPushButton::keyPressEvent(event);
}

QSize QPushButtonExColor::sizeHint() const {
    return QPushButton::sizeHint().expandedTo(QSize(64, Look::buttonHeight));
}

void QPushButtonExColor::paintEvent(QPaintEvent* event) {
    QPushButton::paintEvent(event);
    if (!hasFocus() || !isEnabled())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(Look::onAccent), 1.4));
    painter.drawRoundedRect(QRectF(rect()).adjusted(2.7, 2.7, -2.7, -2.7), 2.5, 2.5);
}
