// An action that carries an action index and a channel id, for the pop-up menus of QImageButton.
#pragma once

#include <QAction>

class QAdAction : public QAction {
    Q_OBJECT

public:
    QAdAction(int iIndex, long lChanID, QObject* parent = nullptr);
    QAdAction(const QString& text, int iIndex, long lChanID, QObject* parent = nullptr);

    void SetIndex(int iIndex) { m_iIndex = iIndex; }
    int GetIndex() const { return m_iIndex; }
    void SetChannelID(long lChanID) { m_lChanID = lChanID; }
    long GetChannelID() const { return m_lChanID; }

Q_SIGNALS:
    // On triggered(); the state is that after the trigger.
    void SigActionTriggered(int iIndex, long lChanID, bool bChecked);

private Q_SLOTS:
    void OnTriggered();

private:
    int m_iIndex;
    long m_lChanID;
};
