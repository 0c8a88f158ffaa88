// What tests of widgets begin with: the program's look, and waiting with the event loop running.
#ifndef KOLT_TESTS_SUPPORT_WIDGET_LOOP_H
#define KOLT_TESTS_SUPPORT_WIDGET_LOOP_H

#include "UI/Controls/Look.h"

#include <QApplication>
#include <QElapsedTimer>
#include <functional>

namespace kolt::test {

// Once a process.
inline void UseLook() {
    static const bool once = (Look::Apply(*qApp), true);
    (void)once;
}

// Runs the event loop until it is so, for a minute at most.
inline bool Eventually(const std::function<bool()>& isSo) {
    QElapsedTimer timer;
    timer.start();
    while (!isSo() && timer.elapsed() < 60000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return isSo();
}

} // namespace kolt::test

#endif
