#include "UI/MainWindow/CDeviceItemDelegate.h"

#include "UI/Controls/LookTokens.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>

QSize CDeviceItemDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    return QStyledItemDelegate::sizeHint(option, index).expandedTo(QSize(0, Look::rowHeight));
}

QString CDeviceItemDelegate::displayText(const QVariant& value, const QLocale& locale) const {
    QString text = QStyledItemDelegate::displayText(value, locale);
    for (QChar& c : text)
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            c = ' ';
    return text;
}

bool CDeviceItemDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                    const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() == QEvent::ToolTip) {
        const QString text = index.data(Qt::ToolTipRole).toString();
        if (!text.isEmpty()) {
            QToolTip::showText(event->globalPos(), ToolTipText(text), view->viewport(), option.rect);
            return true;
        }
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

QString CDeviceItemDelegate::ToolTipText(const QString& text) {
    if (!Qt::mightBeRichText(text))
        return text;
    return "<p style=\"white-space:pre\">" + text.toHtmlEscaped() + "</p>";
}
