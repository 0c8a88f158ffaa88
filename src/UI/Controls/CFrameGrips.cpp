#include "UI/Controls/CFrameGrips.h"

#include "UI/Controls/LookTokens.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <utility>

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

Qt::Edges EdgesAt(const QSize& window, const QPoint& place) {
    constexpr int width = Look::grip;
    constexpr int corner = 2 * Look::grip;
    if (!QRect(QPoint(), window).contains(place))
        return {};
    const int right = window.width() - 1 - place.x();
    const int bottom = window.height() - 1 - place.y();
    const bool atSide = place.x() < width || right < width;
    const bool atEnd = place.y() < width || bottom < width;
    Qt::Edges edges;
    if (!atSide && !atEnd)
        return edges;
    // At a corner the other direction reaches further.
    edges.setFlag(Qt::LeftEdge, place.x() < (atEnd ? corner : width));
    edges.setFlag(Qt::RightEdge, right < (atEnd ? corner : width));
    edges.setFlag(Qt::TopEdge, place.y() < (atSide ? corner : width));
    edges.setFlag(Qt::BottomEdge, bottom < (atSide ? corner : width));
    return edges;
}

CFrameGrips::CFrameGrips(QWidget* window) : QObject(window), m_pWindow(window) {
    qApp->installEventFilter(this);
}

CFrameGrips::~CFrameGrips() {
    ShowCursor({});
}

void CFrameGrips::SetEnabled(bool enabled) {
    m_bEnabled = enabled;
    if (!enabled)
        ShowCursor({});
}

bool CFrameGrips::IsOurs(QWindow* window) const {
    const QWindow* const own = m_pWindow->windowHandle();
    for (const QWindow* each = window; each && own; each = each->parent())
        if (each == own)
            return true;
    return false;
}

Qt::Edges CFrameGrips::EdgesUnder(const QMouseEvent& event) const {
    // An open menu has the pointer for itself, wherever it is.
    if (!m_bEnabled || !m_pWindow->isWindow() || m_pWindow->isMaximized() || m_pWindow->isFullScreen() ||
        QApplication::activePopupWidget())
        return {};
    return EdgesAt(m_pWindow->size(), m_pWindow->mapFromGlobal(event.globalPos()));
}

void CFrameGrips::ShowCursor(Qt::Edges edges) {
    if (edges == m_shown)
        return;
    if (m_shown)
        QGuiApplication::restoreOverrideCursor();
    if (edges)
        QGuiApplication::setOverrideCursor(CursorOf(edges));
    m_shown = edges;
}

bool CFrameGrips::OnPress(const QMouseEvent& event) {
    const Qt::Edges edges = EdgesUnder(event);
    if (!edges || event.button() != Qt::LeftButton)
        return false;
    if (event.type() == QEvent::MouseButtonPress && !m_pWindow->windowHandle()->startSystemResize(edges)) {
        m_dragged = edges;
        m_ptPress = event.globalPos();
        m_start = m_pWindow->geometry();
    }
    return true; // the content gets none of it
}

bool CFrameGrips::OnMove(const QMouseEvent& event) {
    if (m_dragged) {
        m_pWindow->setGeometry(ResizedByEdges(
            m_start, m_dragged, event.globalPos() - m_ptPress,
            m_pWindow->minimumSize().expandedTo(m_pWindow->minimumSizeHint()), m_pWindow->maximumSize()));
        return true;
    }
    // What is being dragged inside the window may come to the edge.
    if (event.buttons() == Qt::NoButton)
        ShowCursor(EdgesUnder(event));
    return false;
}

// Sees the events of native windows before these are given to widgets.
bool CFrameGrips::eventFilter(QObject* watched, QEvent* event) {
    if (!watched->isWindowType() || !IsOurs(static_cast<QWindow*>(watched)))
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        return OnPress(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return OnMove(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
        return std::exchange(m_dragged, Qt::Edges()) != Qt::Edges();
    case QEvent::Leave:
    case QEvent::Hide:
        ShowCursor({});
        return false;
    default:
        return false;
    }
}
