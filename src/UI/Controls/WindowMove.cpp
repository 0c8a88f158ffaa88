#include "UI/Controls/WindowMove.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

bool MoveBySystem(QWidget& window) {
    if (!QGuiApplication::platformName().startsWith("wayland") || !window.windowHandle())
        return false;
    return window.windowHandle()->startSystemMove();
}
