// Widgets of the kit in the program's look, on a system that tests name.
#pragma once

#include "UI/Controls/SystemKind.h"
#include "support/WidgetLoop.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>
#include <functional>
#include <gmock/gmock.h>

namespace kit_test {

using kolt::test::Eventually;
using kolt::test::UseLook;

inline void Show(QWidget& window) {
    window.show();
    ASSERT_TRUE(Eventually([&] { return window.windowHandle() && window.windowHandle()->isExposed(); }));
    QCoreApplication::processEvents();
}

// Without a window manager the program itself says which window is the active one.
inline void ShowActive(QWidget& window) {
    Show(window);
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(Eventually([&] { return window.isActiveWindow(); }));
}

// Presses at `from`, moves by `way` and releases there, without a window manager's help.
inline void Drag(QWidget& widget, const QPoint& from, const QPoint& way,
                 Qt::MouseButton button = Qt::LeftButton) {
    const QPoint global = widget.mapToGlobal(from);
    QMouseEvent press(QEvent::MouseButtonPress, from, global, button, button, Qt::NoModifier);
    QMouseEvent move(QEvent::MouseMove, from + way, global + way, Qt::NoButton, button, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, from + way, global + way, button, Qt::NoButton,
                        Qt::NoModifier);
    for (QMouseEvent* event : {&press, &move, &release})
        QApplication::sendEvent(&widget, event);
}

class Kit : public testing::Test {
protected:
    Kit() {
        UseLook();
        SetSystemProbe([] { return QString("Linux host 6.1.0 x86_64 GNU/Linux"); });
    }
    ~Kit() override { SetSystemProbe(nullptr); }
};

} // namespace kit_test
