#include "UI/MainWindow/QMsgLogWidgetMng.h"

#include "UI/MainWindow/QMessageLogWidget.h"

#include <algorithm>

bool QMsgLogWidgetMng::Initialize(QWidget* cardArea) {
    m_cardArea = cardArea;
    return cardArea != nullptr;
}

void QMsgLogWidgetMng::UnInitialize() {
    for (const auto* cards : {&m_used, &m_unused})
        for (QMessageLogWidget* card : *cards)
            delete card;
    ClearMsgLog();
    m_cardArea = nullptr;
}

QMessageLogWidget* QMsgLogWidgetMng::GetUnUsedMsgLogWidget(bool& isNew) {
    isNew = false;
    if (!m_cardArea)
        return nullptr;
    if (m_used.size() + m_unused.size() < static_cast<size_t>(kMaxCards)) {
        // deliberate: made even where an unused one is at hand, until there are fifty.
        isNew = true;
        m_used.push_back(new QMessageLogWidget(m_cardArea));
    } else if (!m_unused.empty()) {
        m_used.push_back(m_unused.back());
        m_unused.pop_back();
    } else {
        std::rotate(m_used.begin(), m_used.begin() + 1, m_used.end());
    }
    return m_used.back();
}

void QMsgLogWidgetMng::ClearMsgLog() {
    m_used.clear();
    m_unused.clear();
}
