// Which card the pool hands out.
#include "LogFixture.h"

#include <QPointer>
#include <set>

namespace {

// Gives cards back to the pool, as a panel that takes single events away would.
class CPool : public QMsgLogWidgetMng {
public:
    void PutBackFirst(std::ptrdiff_t count) {
        m_unused.insert(m_unused.end(), m_used.begin(), m_used.begin() + count);
        m_used.erase(m_used.begin(), m_used.begin() + count);
    }
};

class Pool : public testing::Test {
protected:
    Pool() { EXPECT_TRUE(m_pool.Initialize(&m_area)); }
    QMessageLogWidget* Take(bool expectNew) {
        bool isNew = !expectNew;
        QMessageLogWidget* card = m_pool.GetUnUsedMsgLogWidget(isNew);
        EXPECT_EQ(isNew, expectNew);
        return card;
    }
    std::vector<QMessageLogWidget*> Used() const {
        std::vector<QMessageLogWidget*> cards;
        m_pool.GetMsgLogWidgetsUsed(cards);
        return cards;
    }
    QWidget m_area;
    CPool m_pool;
};

TEST_F(Pool, MakesFiftyCardsAndThenUsesTheFirstAgain) {
    std::vector<QMessageLogWidget*> cards;
    for (int i = 0; i < 50; ++i)
        cards.push_back(Take(true));
    EXPECT_EQ(std::set<QMessageLogWidget*>(cards.begin(), cards.end()).size(), 50u);
    EXPECT_EQ(m_pool.GetMsgLogNumUsed(), 50);
    for (size_t i = 0; i < 120; ++i)
        EXPECT_EQ(Take(false), cards[i % 50]);
    EXPECT_EQ(m_pool.GetMsgLogNumUsed(), 50);
    EXPECT_EQ(Used().back(), cards[119 % 50]);
    EXPECT_EQ(Used().front(), cards[120 % 50]);
    EXPECT_EQ(m_area.findChildren<QMessageLogWidget*>().size(), 50);
}

TEST_F(Pool, MakesNewOnesBesideUnusedUntilThereAreFifty) {
    for (int i = 0; i < 40; ++i)
        Take(true);
    m_pool.PutBackFirst(10);
    EXPECT_EQ(m_pool.GetMsgLogNumUsed(), 30);
    for (int i = 0; i < 10; ++i)
        Take(true);
    EXPECT_EQ(m_pool.GetMsgLogNumUsed(), 40);
    const std::vector<QMessageLogWidget*> used = Used();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(std::count(used.begin(), used.end(), Take(false)), 0) << "an unused card before a used one";
    EXPECT_EQ(Take(false), used.front());
    EXPECT_EQ(m_pool.GetMsgLogNumUsed(), 50);
}

TEST_F(Pool, HasNoCardWithoutAnArea) {
    QMsgLogWidgetMng pool;
    EXPECT_FALSE(pool.Initialize(nullptr));
    bool isNew = true;
    EXPECT_EQ(pool.GetUnUsedMsgLogWidget(isNew), nullptr);
    EXPECT_FALSE(isNew);
}

TEST_F(Pool, ForgetsItsCardsOnClearAndStartsAgain) {
    const QPointer<QMessageLogWidget> card = Take(true);
    m_pool.ClearMsgLog();
    EXPECT_EQ(m_pool.GetMsgLogNumUsed(), 0);
    EXPECT_TRUE(Used().empty());
    EXPECT_FALSE(card.isNull()) << "it is the caller's";
    EXPECT_NE(Take(true), card);
}

TEST_F(Pool, DeletesUsedAndUnusedCardsAtItsEnd) {
    const QPointer<QMessageLogWidget> unused = Take(true);
    const QPointer<QMessageLogWidget> used = Take(true);
    m_pool.PutBackFirst(1);
    m_pool.UnInitialize();
    EXPECT_TRUE(unused.isNull());
    EXPECT_TRUE(used.isNull());
    bool isNew = false;
    EXPECT_EQ(m_pool.GetUnUsedMsgLogWidget(isNew), nullptr);
    m_pool.UnInitialize();
}

} // namespace
