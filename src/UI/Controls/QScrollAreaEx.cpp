#include "UI/Controls/QScrollAreaEx.h"

QScrollAreaEx::QScrollAreaEx(QWidget* parent) : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
}
