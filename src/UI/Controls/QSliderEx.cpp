#include "UI/Controls/QSliderEx.h"

#include <QPointer>

QSliderEx::QSliderEx(QWidget* parent) : QSlider(parent) {}

QSliderEx::QSliderEx(Qt::Orientation orientation, QWidget* parent) : QSlider(orientation, parent) {}

void QSliderEx::mouseReleaseEvent(QMouseEvent* event) {
    const QPointer<QSliderEx> self(this);
    Q_EMIT SigSaveParam();
    if (self)
        QSlider::mouseReleaseEvent(event);
}
