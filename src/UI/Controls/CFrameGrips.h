// Lets a frameless window be resized by its edges and corners: eight thin invisible widgets along its frame,
// each with the right cursor. The window manager does the resizing where it can; else the window's geometry
// follows the pointer within its minimum and maximum size.
#pragma once

#include <QObject>
#include <QRect>
#include <array>

class QWidget;

// The rectangle that `start` becomes when `edges` are dragged by `way`; the opposite edges stay where they
// are, and the size stays between `minimum` and `maximum`.
QRect ResizedByEdges(const QRect& start, Qt::Edges edges, const QPoint& way, const QSize& minimum,
                     const QSize& maximum);

// Belongs to its window, which it watches. Main thread.
class CFrameGrips : public QObject {
    Q_OBJECT

public:
    explicit CFrameGrips(QWidget* window);

    // Without grips the window keeps its size. They are on at first; also switched off while the window is
    // maximised.
    void SetEnabled(bool enabled);
    bool IsEnabled() const { return m_bEnabled; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Grip;

    void Place();

    QWidget* const m_pWindow;
    bool m_bEnabled = true;
    std::array<Grip*, 8> m_grips{};
};
