// The panel: what is shown, kept, sorted, copied and cleared.
#include "LogFixture.h"

#include <QAction>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <atomic>
#include <thread>

namespace {

using log_test::Eventually;
using log_test::kSource;
using log_test::LogPanel;
using log_test::RunDeferredDeletes;
using log_test::Shown;

QString Clipboard() {
    return QGuiApplication::clipboard()->text();
}

TEST_F(LogPanel, ShowsAnEventAsACardAtTheEnd) {
    Insert(0, "Camera connected.");
    Insert(1, "Saving picture failed.");
    EXPECT_EQ(ShownTexts(), (QStringList{"Camera connected.", "Saving picture failed."}));
    ASSERT_EQ(m_log.GetRecords().size(), 2u);
    const _STRU_MSG_LOG_& record = m_log.GetRecords()[1];
    EXPECT_EQ(record.level, MESSAGE_LOG_CRITICAL);
    EXPECT_EQ(record.source, kSource);
    EXPECT_EQ(Shown(*Cards()[1], "logTime"), MsgLogTimeText(record.dateTime));
}

TEST_F(LogPanel, IgnoresAnEventWithoutSourceOrText) {
    Insert(0, "");
    Insert(0, "text", "");
    Insert(0, "", "");
    EXPECT_TRUE(Cards().empty());
    EXPECT_TRUE(m_log.GetRecords().empty());
    Insert(0, " "); // a blank is a text
    EXPECT_EQ(m_log.GetRecords().size(), 1u);
}

TEST_F(LogPanel, TakesANumberThatIsNoLevelForAMessage) {
    Insert(77, "text");
    EXPECT_EQ(Shown(*Cards()[0], "logLevel"), "Message");
}

TEST_F(LogPanel, GrowsBy120PixelsAnEvent) {
    EXPECT_EQ(Area().height(), 0);
    for (int count = 1; count <= 7; ++count) {
        Insert(0, "event");
        EXPECT_EQ(Area().height(), 120 * count);
        EXPECT_EQ(Area().width(), View().width() - 9);
    }
    const auto cards = Cards();
    for (size_t i = 0; i < cards.size(); ++i)
        EXPECT_EQ(cards[i]->geometry(), QRect(0, static_cast<int>(i) * 120, Area().width(), 120));
}

TEST_F(LogPanel, KeepsItsCardsAsWideAsTheView) {
    InsertMany(3);
    m_log.resize(500, 600);
    QCoreApplication::processEvents();
    EXPECT_EQ(Area().width(), View().width() - 9);
    EXPECT_EQ(Cards()[0]->width(), View().width() - 9);
    m_log.resize(4, 4);
    QCoreApplication::processEvents();
    EXPECT_GE(Area().width(), 0);
}

TEST_F(LogPanel, FiftyFirstEventUsesTheFirstCardAgainAndDropsItsRecord) {
    InsertMany(50);
    const auto before = Cards();
    ASSERT_EQ(before.size(), 50u);
    EXPECT_EQ(Area().height(), 6000);

    Insert(2, "the fifty-first");
    const auto after = Cards();
    ASSERT_EQ(after.size(), 50u);
    EXPECT_EQ(after.back(), before.front()) << "no new card";
    EXPECT_EQ(after.front(), before[1]);
    EXPECT_EQ(m_log.GetRecords().size(), 50u);
    EXPECT_EQ(RecordTexts().first(), "event 1");
    EXPECT_EQ(RecordTexts().last(), "the fifty-first");
    EXPECT_EQ(ShownTexts(), RecordTexts());
    EXPECT_EQ(Shown(*after.back(), "logLevel"), "Warning");
    EXPECT_EQ(Area().height(), 6000);
    EXPECT_EQ(Area().findChildren<QMessageLogWidget*>().size(), 50);
}

TEST_F(LogPanel, ShowsTheLastFiftyOfMany) {
    InsertMany(237);
    EXPECT_EQ(Area().findChildren<QMessageLogWidget*>().size(), 50);
    EXPECT_EQ(RecordTexts().first(), "event 187");
    EXPECT_EQ(RecordTexts().last(), "event 236");
    EXPECT_EQ(ShownTexts(), RecordTexts());
}

TEST_F(LogPanel, FiftyEventsFromEightThreadsAllArrive) {
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([thread, &go] {
            while (!go)
                std::this_thread::yield();
            // 50 in sum: the first two threads have one more.
            for (int i = 0; i < (thread < 2 ? 7 : 6); ++i)
                QFunction::Instance()->InsertMessageLog(MsgLogLevelOf(i % 3), kSource,
                                                        QString("thread %1 event %2").arg(thread).arg(i));
        });
    }
    go = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(m_log.GetRecords().empty())
        << "nothing enters the panel outside of its own thread's event loop";
    ASSERT_TRUE(Eventually([this] { return m_log.GetRecords().size() == 50; }));
    EXPECT_EQ(ShownTexts(), RecordTexts());
    EXPECT_EQ(Area().height(), 6000);

    for (int thread = 0; thread < 8; ++thread) {
        const QStringList own = RecordTexts().filter(QString("thread %1 ").arg(thread));
        EXPECT_EQ(own.size(), thread < 2 ? 7 : 6);
        for (int i = 0; i < own.size(); ++i)
            EXPECT_EQ(own[i], QString("thread %1 event %2").arg(thread).arg(i))
                << "each thread's events in order";
    }
    for (const auto& record : m_log.GetRecords())
        EXPECT_EQ(record.level, MsgLogLevelOf(record.text.right(1).toInt() % 3));
}

TEST_F(LogPanel, ThreadsMayGoOnWhileAPanelGoes) {
    auto log = std::make_unique<QMessageLogMngWidget>();
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&stop] {
            for (int i = 0; !stop && i < 2000; ++i)
                QFunction::Instance()->InsertMessageLog(MESSAGE_LOG_MESSAGE, kSource, QString::number(i));
        });
    }
    EXPECT_TRUE(Eventually([&] { return !log->GetRecords().empty(); }));
    log.reset();
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    QCoreApplication::processEvents();
    EXPECT_LE(m_log.GetRecords().size(), 50u);
}

TEST_F(LogPanel, OffersFourKeysToSortBy) {
    QStringList entries;
    for (int i = 0; i < SortBox().count(); ++i) {
        entries << SortBox().itemText(i);
        EXPECT_EQ(SortBox().itemData(i).toInt(), i);
    }
    EXPECT_EQ(entries, (QStringList{"Time", "Level", "Source", "Information"}));
    EXPECT_EQ(SortBox().currentIndex(), 0);
}

class SortedLog : public LogPanel {
protected:
    SortedLog() {
        // The panel's own times may be equal within a millisecond.
        const auto next = [](qint64 after) { return QDateTime::currentMSecsSinceEpoch() > after; };
        const std::pair<int, const char*> events[] = {{2, "c"}, {0, "d"}, {1, "b"}, {0, "a"}};
        const char* const sources[] = {"source 2", "source 3", "source 4", "source 1"};
        for (int i = 0; i < 4; ++i) {
            Insert(events[i].first, events[i].second, sources[i]);
            const qint64 now = QDateTime::currentMSecsSinceEpoch();
            EXPECT_TRUE(Eventually([&] { return next(now); }));
        }
    }
    void Choose(int index) {
        SortBox().setCurrentIndex(index);
        Q_EMIT SortBox().activated(index);
    }
};

TEST_F(SortedLog, ByEachKey) {
    Choose(3);
    EXPECT_EQ(ShownTexts(), (QStringList{"a", "b", "c", "d"}));
    Choose(2);
    EXPECT_EQ(ShownTexts(), (QStringList{"a", "c", "d", "b"}));
    Choose(0);
    EXPECT_EQ(ShownTexts(), (QStringList{"c", "d", "b", "a"}));
    Choose(1);
    EXPECT_EQ(ShownTexts().mid(2), (QStringList{"b", "c"}));
    EXPECT_EQ(ShownTexts(), RecordTexts());
}

TEST_F(SortedLog, FillsTheWholeCard) {
    Choose(3);
    const auto cards = Cards();
    EXPECT_EQ(Shown(*cards[2], "logLevel"), "Warning");
    EXPECT_EQ(Shown(*cards[2], "logSource"), "source 2");
    EXPECT_EQ(Shown(*cards[2], "logTime"), MsgLogTimeText(m_log.GetRecords()[2].dateTime));
}

TEST_F(SortedLog, HasALaterEventAtTheEndUntilTheNextSort) {
    Choose(3);
    Insert(0, "aa");
    EXPECT_EQ(ShownTexts(), (QStringList{"a", "b", "c", "d", "aa"}));
    Choose(3); // the entry that is chosen already
    EXPECT_EQ(ShownTexts(), (QStringList{"a", "aa", "b", "c", "d"}));
}

TEST_F(SortedLog, DropsTheFirstRecordNotTheEarliest) {
    Choose(3);
    for (int i = 0; i < 46; ++i)
        Insert(0, "x");
    EXPECT_EQ(RecordTexts().first(), "a") << "the latest of the first four";
    Insert(0, "y");
    EXPECT_EQ(RecordTexts().first(), "b");
    EXPECT_EQ(ShownTexts(), RecordTexts());
}

TEST_F(SortedLog, ByNoEntryStaysAsItIs) {
    m_log.OnCombSortChanged(-1);
    m_log.OnCombSortChanged(4);
    EXPECT_EQ(ShownTexts(), (QStringList{"c", "d", "b", "a"}));
}

TEST_F(LogPanel, SortOfAnEmptyLogIsNothing) {
    m_log.OnCombSortChanged(1);
    EXPECT_TRUE(Cards().empty());
}

TEST_F(LogPanel, CopiesAllRecordsInTheirOrder) {
    Insert(1, "b");
    Insert(0, "a");
    m_log.OnCombSortChanged(MSG_LOG_SORT_TEXT);
    const auto time = [this](size_t i) {
        return MsgLogTimeText(m_log.GetRecords()[i].dateTime).toStdString();
    };
    Q_EMIT Cards()[0]->SigCopyAll();
    EXPECT_EQ(Clipboard().toStdString(),
              "Level: Message    Source: KOLT CAPTURE    Time: " + time(0) + "    Message: a\r\n" +
                  "Level: Critical    Source: KOLT CAPTURE    Time: " + time(1) + "    Message: b\r\n");
}

TEST_F(LogPanel, CopyOfAnEmptyLogIsAnEmptyText) {
    QGuiApplication::clipboard()->setText("before");
    m_log.OnCopyAllLog();
    EXPECT_EQ(Clipboard(), "");
}

TEST_F(LogPanel, IsClearedFromTheMenuOfACard) {
    InsertMany(20);
    const QPointer<QMessageLogWidget> card = Cards()[3];
    card->OnShowContextMenu({5, 5});
    QMenu* menu = card->findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    menu->actions().at(2)->trigger();
    EXPECT_TRUE(m_log.GetRecords().empty());
    EXPECT_EQ(Area().height(), 0);
    EXPECT_TRUE(Cards().empty());
    RunDeferredDeletes();
    EXPECT_TRUE(card.isNull());
    EXPECT_TRUE(Area().findChildren<QMessageLogWidget*>().isEmpty());
}

TEST_F(LogPanel, StartsAgainAfterItWasCleared) {
    for (int round = 0; round < 3; ++round) {
        InsertMany(60);
        EXPECT_EQ(ShownTexts().size(), 50);
        m_log.OnClearMsgLog();
        EXPECT_TRUE(m_log.GetRecords().empty());
        Insert(1, "first");
        EXPECT_EQ(ShownTexts(), QStringList("first"));
        EXPECT_EQ(Area().height(), 120);
    }
    RunDeferredDeletes();
    EXPECT_EQ(Area().findChildren<QMessageLogWidget*>().size(), 1);
}

TEST_F(LogPanel, WithoutARecordACardStandsForItself) {
    Insert(0, "b");
    m_log.InsertMsgLog(MESSAGE_LOG_MESSAGE, kSource, "alone", false);
    EXPECT_EQ(RecordTexts(), QStringList("b"));
    EXPECT_EQ(ShownTexts(), (QStringList{"b", "alone"}));
    EXPECT_EQ(Area().height(), 240);
    m_log.OnCopyAllLog();
    EXPECT_FALSE(Clipboard().contains("alone"));
}

TEST_F(LogPanel, FollowsTheEndWhenItIsInSight) {
    InsertMany(10);
    EXPECT_EQ(Bar().value(), Bar().maximum());
    InsertMany(100);
    EXPECT_EQ(Bar().value(), Bar().maximum());
    EXPECT_GT(Bar().maximum(), 5000);
}

TEST_F(LogPanel, StaysWhereAPersonReads) {
    InsertMany(50);
    Bar().setValue(1200);
    QMessageLogWidget* read = Cards()[10];
    const int before = read->mapTo(&m_log, QPoint()).y();
    for (int i = 0; i < 5; ++i) {
        Insert(0, "later");
        QCoreApplication::processEvents();
        EXPECT_EQ(read->mapTo(&m_log, QPoint()).y(), before) << i;
    }
    Bar().setValue(0);
    Insert(0, "later");
    EXPECT_EQ(Bar().value(), 0);
}

TEST_F(LogPanel, IsWalkedThroughByTheKeyboard) {
    InsertMany(3);
    const auto cards = Cards();
    m_log.activateWindow();
    cards[0]->setFocus();
    ASSERT_TRUE(Eventually([&] { return cards[0]->hasFocus(); }));
    const auto press = [](int key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(QApplication::focusWidget(), &event);
    };
    press(Qt::Key_Down);
    EXPECT_TRUE(cards[1]->hasFocus());
    press(Qt::Key_Down);
    EXPECT_TRUE(cards[2]->hasFocus());
    press(Qt::Key_Up);
    EXPECT_TRUE(cards[1]->hasFocus());
}

} // namespace
