#include "UI/Controls/QStaticLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QTextDocument>
#include <QToolTip>

QStaticLabel::QStaticLabel(QWidget* parent) : QStaticLabel(QString(), parent) {}

QStaticLabel::QStaticLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {}

bool QStaticLabel::IsElidable() const {
    if (wordWrap() || !pixmap(Qt::ReturnByValue).isNull() || text().contains('\n'))
        return false;
    return textFormat() == Qt::PlainText || (textFormat() == Qt::AutoText && !Qt::mightBeRichText(text()));
}

QSize QStaticLabel::minimumSizeHint() const {
    QSize size = QLabel::minimumSizeHint();
    if (IsElidable())
        size.setWidth(std::min(size.width(), fontMetrics().averageCharWidth() * 6 + 2 * margin()));
    return size;
}

QString QStaticLabel::GetShownText() const {
    if (!IsElidable())
        return text();
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width() - 2 * margin());
}

void QStaticLabel::paintEvent(QPaintEvent* event) {
    const QString shown = GetShownText();
    if (shown == text()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    drawFrame(&painter);
    const QRect room = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    style()->drawItemText(&painter, room, static_cast<int>(alignment()), option.palette, isEnabled(), shown,
                          foregroundRole());
}

bool QStaticLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && GetShownText() != text()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QLabel::event(event);
}
