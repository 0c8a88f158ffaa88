#include "UI/Controls/QRadioButtonEx.h"

QRadioButtonEx::QRadioButtonEx(QWidget* parent) : QRadioButton(parent) {}

QRadioButtonEx::QRadioButtonEx(const QString& text, QWidget* parent) : QRadioButton(text, parent) {}
