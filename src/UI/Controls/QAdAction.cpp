#include "UI/Controls/QAdAction.h"

QAdAction::QAdAction(int iIndex, long lChanID, QObject* parent)
    : QAdAction(QString(), iIndex, lChanID, parent) {}

QAdAction::QAdAction(const QString& text, int iIndex, long lChanID, QObject* parent)
    : QAction(text, parent), m_iIndex(iIndex), m_lChanID(lChanID) {
    connect(this, &QAction::triggered, this, &QAdAction::OnTriggered);
}

void QAdAction::OnTriggered() {
    Q_EMIT SigActionTriggered(m_iIndex, m_lChanID, isChecked());
}
