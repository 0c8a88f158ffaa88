#include "UI/MainWindow/QSubPrevWidget.h"

QSubPrevWidget::QSubPrevWidget(QWidget* parent) : QWidget(parent) {
    QPalette colours = palette();
    colours.setColor(QPalette::Window, Qt::black);
    setPalette(colours);
    setAutoFillBackground(true);
}
