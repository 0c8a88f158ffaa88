#include "UI/Controls/QTitleBarUbuntu.h"

QTitleBarUbuntu::QTitleBarUbuntu(QWidget* parent) : QTitleBar(parent, kButtonsLeft) {}
