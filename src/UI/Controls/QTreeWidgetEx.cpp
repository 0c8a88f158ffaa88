#include "UI/Controls/QTreeWidgetEx.h"

#include <QHelpEvent>
#include <QToolTip>

QTreeWidgetEx::QTreeWidgetEx(QWidget* parent) : QTreeWidget(parent) {
    setFrameShape(QFrame::NoFrame);
    setTextElideMode(Qt::ElideMiddle);
    setIndentation(16);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setAllColumnsShowFocus(true);
}

bool QTreeWidgetEx::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip && ShowElidedText(*static_cast<QHelpEvent*>(event)))
        return true;
    return QTreeWidget::viewportEvent(event);
}

bool QTreeWidgetEx::ShowElidedText(const QHelpEvent& event) {
    const QModelIndex index = indexAt(event.pos());
    if (!index.isValid() || index.data(Qt::ToolTipRole).isValid())
        return false;
    const QString text = index.data(Qt::DisplayRole).toString();
    const QRect room = visualRect(index);
    const int wanted = sizeHintForIndex(index).width();
    if (text.isEmpty() || wanted <= std::min(room.width(), viewport()->width() - room.left()))
        return false;
    QToolTip::showText(event.globalPos(), text, viewport(), room);
    return true;
}
