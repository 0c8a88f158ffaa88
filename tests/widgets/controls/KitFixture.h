// Widgets of the kit in the program's look, on a system that tests name.
#pragma once

#include "UI/Controls/Look.h"
#include "UI/Controls/SystemKind.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>
#include <functional>
#include <gmock/gmock.h>

namespace kit_test {

inline void UseLook() {
    static const bool once = (Look::Apply(*qApp), true);
    (void)once;
}

// Runs the event loop until it is so, for half a minute at most.
inline bool Eventually(const std::function<bool()>& isSo) {
    QElapsedTimer timer;
    timer.start();
    while (!isSo() && timer.elapsed() < 30000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return isSo();
}

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

class Kit : public testing::Test {
protected:
    Kit() {
        UseLook();
        SetSystemProbe([] { return QString("Linux host 6.1.0 x86_64 GNU/Linux"); });
    }
    ~Kit() override { SetSystemProbe(nullptr); }
};

} // namespace kit_test
