#include "UI/Controls/QComboBoxEx.h"

#include "UI/Controls/LookTokens.h"

#include <QStyledItemDelegate>
#include <QWheelEvent>

QComboBoxEx::QComboBoxEx(QWidget* parent) : QComboBox(parent) {
    // The default delegate ignores the style sheet's item heights.
    setItemDelegate(new QStyledItemDelegate(this));
    setSizeAdjustPolicy(QComboBox::AdjustToContents);
}

void QComboBoxEx::SetCurrentIndexByData(const QVariant& value) {
    for (int i = 0; i < count(); ++i) {
        if (itemData(i) == value) {
            setCurrentIndex(i);
            return;
        }
    }
}

void QComboBoxEx::wheelEvent(QWheelEvent* event) {
    // deliberate: a wheel meant to scroll the panel must not change a camera's setting. Ignored, it goes on
    // to the panel around the box.
    event->ignore();
}

QSize QComboBoxEx::sizeHint() const {
    return QComboBox::sizeHint().expandedTo(QSize(0, Look::fieldHeight));
}

QSize QComboBoxEx::minimumSizeHint() const {
    return QComboBox::minimumSizeHint().expandedTo(QSize(0, Look::fieldHeight));
}
