// The pool of the message log's cards: never more than fifty widgets, used in turn.
#pragma once

#include <vector>

class QMessageLogWidget;
class QWidget;

// The cards are children of the widget given to Initialize. Main thread.
class QMsgLogWidgetMng {
public:
    static constexpr int kMaxCards = 50;

    virtual ~QMsgLogWidgetMng() = default;

    // The card area on which cards are made from now on; false for none.
    bool Initialize(QWidget* cardArea);

    // Deletes all cards, used or not.
    void UnInitialize();

    int GetMsgLogNumUsed() const { return static_cast<int>(m_used.size()); }

    // The used cards, the one to be reused next first.
    void GetMsgLogWidgetsUsed(std::vector<QMessageLogWidget*>& cards) const { cards = m_used; }

    // A card for an event, from then on the last of the used ones. While there are fewer than fifty cards,
    // used and unused together, it is a new one; then an unused one; when all are used, the first used one.
    // Null before Initialize.
    QMessageLogWidget* GetUnUsedMsgLogWidget(bool& isNew);

    // Forgets all cards. They belong to the caller then, who deletes them.
    void ClearMsgLog();

protected:
    QWidget* m_cardArea = nullptr;
    std::vector<QMessageLogWidget*> m_used;
    std::vector<QMessageLogWidget*> m_unused;
};
