// Draws the items of the device tree. What a camera calls itself comes from the network: it is shown as plain
// text in one line, whatever stands in it.
#pragma once

#include <QStyledItemDelegate>

class CDeviceItemDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // Never below the row height of the look, also before the style sheet has reached the tree.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QString displayText(const QVariant& value, const QLocale& locale) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

    // `text` as a tool tip that is never taken for markup.
    static QString ToolTipText(const QString& text);
};
