// Lets a frameless window be resized by its edges and corners. Nothing lies over the window's content: the
// pointer is watched on its way to the window and to every native window inside it (a live picture has one).
// The window manager does the resizing where it can; else the window's geometry follows the pointer within
// its minimum and maximum size.
#pragma once

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSize>

class QMouseEvent;
class QWidget;
class QWindow;

// The rectangle that `start` becomes when `edges` are dragged by `way`; the opposite edges stay where they
// are, and the size stays between `minimum` and `maximum`.
QRect ResizedByEdges(const QRect& start, Qt::Edges edges, const QPoint& way, const QSize& minimum,
                     const QSize& maximum);

// The edges of a window of this size that a drag at `place` moves: one along the frame, two at the corners,
// none inside and outside.
Qt::Edges EdgesAt(const QSize& window, const QPoint& place);

// Belongs to its window. Main thread.
class CFrameGrips : public QObject {
    Q_OBJECT

public:
    explicit CFrameGrips(QWidget* window);
    ~CFrameGrips() override;

    // Without grips the window keeps its size. They are on at first; also off while the window is maximised.
    void SetEnabled(bool enabled);
    bool IsEnabled() const { return m_bEnabled; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool IsOurs(QWindow* window) const;
    Qt::Edges EdgesUnder(const QMouseEvent& event) const;
    void ShowCursor(Qt::Edges edges);
    bool OnPress(const QMouseEvent& event);
    bool OnMove(const QMouseEvent& event);

    QWidget* const m_pWindow;
    bool m_bEnabled = true;
    Qt::Edges m_shown; // whose cursor is shown
    Qt::Edges m_dragged;
    QPoint m_ptPress;
    QRect m_start;
};
