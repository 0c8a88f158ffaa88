#include "UI/Controls/QSpinBoxEx.h"

#include <QPointer>

QSpinBoxEx::QSpinBoxEx(QWidget* parent) : QSpinBox(parent) {}

void QSpinBoxEx::mouseReleaseEvent(QMouseEvent* event) {
    const QPointer<QSpinBoxEx> self(this);
    Q_EMIT SigSaveParam();
    if (self)
        QSpinBox::mouseReleaseEvent(event);
}
