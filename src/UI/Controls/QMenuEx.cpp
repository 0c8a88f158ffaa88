#include "UI/Controls/QMenuEx.h"

QMenuEx::QMenuEx(QWidget* parent) : QMenuEx(QString(), parent) {}

QMenuEx::QMenuEx(const QString& title, QWidget* parent) : QMenu(title, parent) {
    setToolTipsVisible(true);
}
