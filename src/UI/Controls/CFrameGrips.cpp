#include "UI/Controls/CFrameGrips.h"

#include "UI/Controls/LookTokens.h"

#include <QEvent>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>
#include <algorithm>

QRect ResizedByEdges(const QRect& start, Qt::Edges edges, const QPoint& way, const QSize& minimum,
                     const QSize& maximum) {
    const auto bounded = [](int wanted, int least, int most) {
        return std::max(least, std::min(wanted, most));
    };
    QRect result = start;
    if (edges & (Qt::LeftEdge | Qt::RightEdge)) {
        const int wanted = start.width() + (edges & Qt::LeftEdge ? -way.x() : way.x());
        const int width = bounded(wanted, std::max(1, minimum.width()), maximum.width());
        if (edges & Qt::LeftEdge)
            result.setLeft(start.right() - width + 1);
        else
            result.setWidth(width);
    }
    if (edges & (Qt::TopEdge | Qt::BottomEdge)) {
        const int wanted = start.height() + (edges & Qt::TopEdge ? -way.y() : way.y());
        const int height = bounded(wanted, std::max(1, minimum.height()), maximum.height());
        if (edges & Qt::TopEdge)
            result.setTop(start.bottom() - height + 1);
        else
            result.setHeight(height);
    }
    return result;
}

static Qt::CursorShape CursorOf(Qt::Edges edges) {
    if (edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge))
        return Qt::SizeFDiagCursor;
    if (edges == (Qt::RightEdge | Qt::TopEdge) || edges == (Qt::LeftEdge | Qt::BottomEdge))
        return Qt::SizeBDiagCursor;
    return edges & (Qt::LeftEdge | Qt::RightEdge) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

class CFrameGrips::Grip : public QWidget {
public:
    Grip(QWidget* window, Qt::Edges edges) : QWidget(window), m_edges(edges) {
        setObjectName("frameGrip");
        setCursor(CursorOf(edges));
        setFocusPolicy(Qt::NoFocus);
        setAttribute(Qt::WA_NoSystemBackground);
    }

    void Place(const QSize& window) {
        constexpr int width = Look::grip;
        constexpr int corner = 2 * Look::grip;
        QRect room(QPoint(), window);
        if (m_edges & Qt::LeftEdge)
            room.setWidth(width);
        if (m_edges & Qt::RightEdge)
            room.setLeft(window.width() - width);
        if (m_edges & Qt::TopEdge)
            room.setHeight(width);
        if (m_edges & Qt::BottomEdge)
            room.setTop(window.height() - width);
        // The sides leave the corners to the corner grips.
        if (!(m_edges & (Qt::TopEdge | Qt::BottomEdge)))
            room.adjust(0, corner, 0, -corner);
        else if (!(m_edges & (Qt::LeftEdge | Qt::RightEdge)))
            room.adjust(corner, 0, -corner, 0);
        setGeometry(room);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton)
            return;
        m_bDragging = false;
        QWindow* handle = window()->windowHandle();
        if (handle && handle->startSystemResize(m_edges))
            return;
        m_bDragging = true;
        m_ptPress = event->globalPos();
        m_start = window()->geometry();
    }

    void mouseMoveEvent(QMouseEvent* event) override {
        if (m_bDragging)
            window()->setGeometry(ResizedByEdges(
                m_start, m_edges, event->globalPos() - m_ptPress,
                window()->minimumSize().expandedTo(window()->minimumSizeHint()), window()->maximumSize()));
    }

    void mouseReleaseEvent(QMouseEvent*) override { m_bDragging = false; }

private:
    const Qt::Edges m_edges;
    bool m_bDragging = false;
    QPoint m_ptPress;
    QRect m_start;
};

CFrameGrips::CFrameGrips(QWidget* window) : QObject(window), m_pWindow(window) {
    const Qt::Edges edges[] = {Qt::LeftEdge,
                               Qt::RightEdge,
                               Qt::TopEdge,
                               Qt::BottomEdge,
                               Qt::LeftEdge | Qt::TopEdge,
                               Qt::RightEdge | Qt::TopEdge,
                               Qt::LeftEdge | Qt::BottomEdge,
                               Qt::RightEdge | Qt::BottomEdge};
    for (size_t i = 0; i < m_grips.size(); ++i)
        m_grips[i] = new Grip(window, edges[i]);
    window->installEventFilter(this);
    Place();
}

void CFrameGrips::SetEnabled(bool enabled) {
    m_bEnabled = enabled;
    Place();
}

bool CFrameGrips::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (watched == m_pWindow &&
        (type == QEvent::Resize || type == QEvent::Show || type == QEvent::WindowStateChange))
        Place();
    return false;
}

void CFrameGrips::Place() {
    for (Grip* grip : m_grips) {
        grip->setVisible(m_bEnabled && !m_pWindow->isMaximized());
        grip->Place(m_pWindow->size());
        grip->raise();
    }
}
