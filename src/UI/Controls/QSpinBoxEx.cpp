#include "UI/Controls/QSpinBoxEx.h"

#include "UI/Controls/LookTokens.h"

#include <QPointer>

QSpinBoxEx::QSpinBoxEx(QWidget* parent) : QSpinBox(parent) {}

void QSpinBoxEx::mouseReleaseEvent(QMouseEvent* event) {
    const QPointer<QSpinBoxEx> self(this);
    Q_EMIT SigSaveParam();
    if (self)
        QSpinBox::mouseReleaseEvent(event);
}

QSize QSpinBoxEx::sizeHint() const {
    return QSpinBox::sizeHint().expandedTo(QSize(0, Look::fieldHeight));
}

QSize QSpinBoxEx::minimumSizeHint() const {
    return QSpinBox::minimumSizeHint().expandedTo(QSize(0, Look::fieldHeight));
}
