#include "UI/Controls/QMenuBarEx.h"

QMenuBarEx::QMenuBarEx(QWidget* parent) : QMenuBar(parent) {
    setNativeMenuBar(false);
}
