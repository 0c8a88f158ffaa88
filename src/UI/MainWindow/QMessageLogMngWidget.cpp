#include "UI/MainWindow/QMessageLogMngWidget.h"

#include "UI/Controls/QComboBoxEx.h"
#include "UI/Controls/QScrollAreaEx.h"
#include "UI/MainWindow/QMessageLogWidget.h"

#include <QClipboard>
#include <QEvent>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollBar>
#include <algorithm>
#include <new>

namespace {

constexpr size_t kMaxRecords = 50;
constexpr int kViewWidthBesideCards = 9;

} // namespace

QMessageLogMngWidget::QMessageLogMngWidget(QWidget* parent) : QWidget(parent) {
    if (!InitWidget())
        throw std::bad_alloc();
}

QMessageLogMngWidget::~QMessageLogMngWidget() {
    Release();
}

bool QMessageLogMngWidget::InitWidget() {
    m_isBuilt = InitCtrl() && InitLayout() && InitSignals();
    if (!m_isBuilt)
        Release();
    return m_isBuilt;
}

bool QMessageLogMngWidget::InitCtrl() {
    m_sortLabel = new QLabel(this);
    m_sortBox = new QComboBoxEx(this);
    m_sortBox->setObjectName("logSort");
    for (const int sort : {MSG_LOG_SORT_TIME, MSG_LOG_SORT_LEVEL, MSG_LOG_SORT_SOURCE, MSG_LOG_SORT_TEXT})
        m_sortBox->addItem(QString(), sort);
    m_sortLabel->setBuddy(m_sortBox);
    m_view = new QScrollAreaEx(this);
    m_view->setObjectName("logView");
    m_cardArea = new QWidget;
    RefreshWidgetInfo();
    return m_cards.Initialize(m_cardArea);
}

bool QMessageLogMngWidget::InitLayout() {
    auto* top = new QHBoxLayout;
    top->setContentsMargins(12, 8, 12, 8);
    top->setSpacing(8);
    top->addWidget(m_sortLabel);
    top->addWidget(m_sortBox, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(top);
    auto* line = new QFrame(this);
    line->setObjectName("logLine");
    line->setFixedHeight(1);
    layout->addWidget(line);
    layout->addWidget(m_view, 1);

    m_cardLayout = new QVBoxLayout(m_cardArea);
    m_cardLayout->setContentsMargins(0, 0, 0, 0);
    m_cardLayout->setSpacing(0);
    // The area's size is worked out, not found by layouts.
    m_view->setWidgetResizable(false);
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setWidget(m_cardArea);
    m_view->installEventFilter(this);
    ResizeCardArea();
    return true;
}

bool QMessageLogMngWidget::InitSignals() {
    // activated, so that choosing the entry that is chosen already sorts later events too.
    connect(m_sortBox, QOverload<int>::of(&QComboBox::activated), this,
            &QMessageLogMngWidget::OnCombSortChanged);
    QFunction* function = QFunction::Instance();
    if (!function)
        return false;
    return connect(function, &QFunction::SigShowMessage, this,
                   QOverload<int, const QString&, const QString&>::of(&QMessageLogMngWidget::InsertMsgLog),
                   Qt::QueuedConnection);
}

void QMessageLogMngWidget::Release() {
    m_isBuilt = false;
    m_cards.UnInitialize();
    m_records.clear();
}

void QMessageLogMngWidget::InsertMsgLog(int nMsgLogLevel, const QString& strSource, const QString& strMsg) {
    InsertMsgLog(MsgLogLevelOf(nMsgLogLevel), strSource, strMsg, true);
}

void QMessageLogMngWidget::InsertMsgLog(_MESSAGE_LOG_LEVEL_ level, const QString& source, const QString& text,
                                        bool keepRecord) {
    if (!m_isBuilt || source.isEmpty() || text.isEmpty())
        return;
    const QScrollBar* bar = m_view->verticalScrollBar();
    const bool wasAtEnd = bar->value() >= bar->maximum();
    bool isNew = false;
    QMessageLogWidget* card = m_cards.GetUnUsedMsgLogWidget(isNew);
    if (!card)
        return;
    if (isNew) {
        connect(card, &QMessageLogWidget::SigCopyAll, this, &QMessageLogMngWidget::OnCopyAllLog);
        connect(card, &QMessageLogWidget::SigClearLog, this, &QMessageLogMngWidget::OnClearMsgLog);
        card->show();
    } else {
        m_cardLayout->removeWidget(card);
    }
    m_cardLayout->addWidget(card);
    card->SetMsgLogInfo(level, source, text);

    if (keepRecord) {
        m_records.push_back(card->GetMsgLogInfo());
        // deliberate: formed for a reader of fixed records, of which there is none.
        (void)MakeFixedMsgLog(m_records.back());
        // deliberate: the first goes, which after a sort need not be the earliest.
        while (m_records.size() > kMaxRecords)
            m_records.erase(m_records.begin());
    }
    ResizeCardArea();
    FollowNewCard(wasAtEnd, !isNew);
}

// As many cards as records, but for cards without a record.
void QMessageLogMngWidget::ResizeCardArea() {
    m_cardArea->resize(std::max(0, m_view->width() - kViewWidthBesideCards),
                       QMessageLogWidget::kHeight * m_cards.GetMsgLogNumUsed());
}

void QMessageLogMngWidget::FollowNewCard(bool wasAtEnd, bool firstMovedToEnd) {
    QScrollBar* bar = m_view->verticalScrollBar();
    if (wasAtEnd)
        bar->setValue(bar->maximum());
    else if (firstMovedToEnd)
        bar->setValue(bar->value() - QMessageLogWidget::kHeight);
}

void QMessageLogMngWidget::OnCombSortChanged(int nIndex) {
    const QVariant sort = m_sortBox->itemData(nIndex);
    if (sort.isValid() && SortMsgLog(m_records, sort.toInt()))
        ReInsertMsgLogBySort();
}

void QMessageLogMngWidget::ReInsertMsgLogBySort() {
    std::vector<QMessageLogWidget*> cards;
    m_cards.GetMsgLogWidgetsUsed(cards);
    const size_t count = std::min(cards.size(), m_records.size());
    for (size_t i = 0; i < count; ++i) {
        const _STRU_MSG_LOG_& record = m_records[i];
        cards[i]->ReSetMsgLogInfoBySort(record.level, record.source, record.text, record.dateTime);
    }
}

void QMessageLogMngWidget::OnCopyAllLog() {
    QString all;
    for (const _STRU_MSG_LOG_& record : m_records)
        all += MsgLogCopyText(MsgLogLevelWord(record.level), record.source, record.dateTime, record.text);
    QGuiApplication::clipboard()->setText(all);
}

void QMessageLogMngWidget::OnClearMsgLog() {
    ClearMsgLog();
}

void QMessageLogMngWidget::ClearMsgLog() {
    std::vector<QMessageLogWidget*> cards;
    m_cards.GetMsgLogWidgetsUsed(cards);
    for (QMessageLogWidget* card : cards) {
        m_cardLayout->removeWidget(card);
        card->hide();
        // Later: the order to clear may come from the menu of one of them.
        card->deleteLater();
    }
    m_cards.ClearMsgLog();
    m_records.clear();
    ResizeCardArea();
}

void QMessageLogMngWidget::RefreshWidgetInfo() {
    m_sortLabel->setText(tr("Sort by"));
    const QStringList entries{tr("Time"), tr("Level"), tr("Source"), tr("Information")};
    for (int i = 0; i < entries.size(); ++i)
        m_sortBox->setItemText(i, entries[i]);
}

void QMessageLogMngWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_isBuilt)
        RefreshWidgetInfo();
    QWidget::changeEvent(event);
}

bool QMessageLogMngWidget::eventFilter(QObject* watched, QEvent* event) {
    // Between two events too the cards are as wide as the view.
    if (watched == m_view && event->type() == QEvent::Resize && m_isBuilt)
        ResizeCardArea();
    return QWidget::eventFilter(watched, event);
}
