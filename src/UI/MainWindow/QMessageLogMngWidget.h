// The message log: a panel of the main window that shows the last fifty events as cards. It lives as long as
// the process and is stored nowhere.
#pragma once

#include "UI/MainWindow/MsgLog.h"
#include "UI/MainWindow/QMsgLogWidgetMng.h"

#include <QWidget>
#include <vector>

class QComboBoxEx;
class QLabel;
class QMessageLogWidget;
class QScrollAreaEx;
class QVBoxLayout;

// Takes every event of QFunction::InsertMessageLog, from whatever thread: the signal reaches it queued. All
// else on the main thread.
//
// The used cards, from the top of the list down, and the records stand in the same order at all times.
class QMessageLogMngWidget : public QWidget {
    Q_OBJECT

public:
    // Throws std::bad_alloc when it can't be built.
    explicit QMessageLogMngWidget(QWidget* parent = nullptr);
    ~QMessageLogMngWidget() override;

    // Shows an event at the end of the list. Without a source or a text it is ignored. With `keepRecord`
    // unset the card stands for itself: the event is neither sorted nor copied with the others.
    void InsertMsgLog(_MESSAGE_LOG_LEVEL_ level, const QString& source, const QString& text, bool keepRecord);

    // Fills the cards with the records in their present order.
    void ReInsertMsgLogBySort();

    // Takes away all cards and records.
    void ClearMsgLog();

    const std::vector<_STRU_MSG_LOG_>& GetRecords() const { return m_records; }

public Q_SLOTS:
    void InsertMsgLog(int nMsgLogLevel, const QString& strSource, const QString& strMsg);
    // Sorts by the box's entry of this index. A later event goes at the end again.
    void OnCombSortChanged(int nIndex);
    void OnClearMsgLog();
    // All records to the clipboard, in their present order.
    void OnCopyAllLog();

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool InitWidget();
    bool InitCtrl();
    bool InitLayout();
    bool InitSignals();
    void Release();
    void RefreshWidgetInfo();
    void ResizeCardArea();
    // Shows the end of the list where it was in sight before, and else keeps the cards in sight where they
    // are.
    void FollowNewCard(bool wasAtEnd, bool firstMovedToEnd);

    bool m_isBuilt = false;
    std::vector<_STRU_MSG_LOG_> m_records;
    QMsgLogWidgetMng m_cards;
    QLabel* m_sortLabel = nullptr;
    QComboBoxEx* m_sortBox = nullptr;
    QScrollAreaEx* m_view = nullptr;
    QWidget* m_cardArea = nullptr;
    QVBoxLayout* m_cardLayout = nullptr;
};
