// A window that follows the pointer while its title is dragged. Main thread.
#pragma once

#include <QPoint>

class QMouseEvent;
class QWidget;

class CWindowDrag {
public:
    explicit CWindowDrag(QWidget& window) : m_window(window) {}

    void Start(const QMouseEvent& event);
    void Stop() { m_bDragging = false; }
    // True when the window was moved by this.
    bool Follow(const QMouseEvent& event);

private:
    QWidget& m_window;
    bool m_bDragging = false;
    QPoint m_ptPress;  // global position of the press
    QPoint m_ptWindow; // the window's at that time
};
