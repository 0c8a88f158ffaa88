#include "UI/Controls/CWindowDrag.h"

#include "UI/Controls/WindowMove.h"

#include <QMouseEvent>
#include <QWidget>

void CWindowDrag::Start(const QMouseEvent& event) {
    m_bDragging = true;
    m_ptPress = event.globalPos();
    m_ptWindow = m_window.pos();
}

bool CWindowDrag::Follow(const QMouseEvent& event) {
    if (!m_bDragging || m_window.isMaximized())
        return false;
    if (MoveBySystem(m_window)) {
        m_bDragging = false;
        return false;
    }
    m_window.move(m_ptWindow + event.globalPos() - m_ptPress);
    return true;
}
