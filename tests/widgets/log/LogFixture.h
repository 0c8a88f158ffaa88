// The message log in a window of its own, in the program's look.
#pragma once

#include "UI/MainWindow/QMessageLogMngWidget.h"
#include "UI/MainWindow/QMessageLogWidget.h"
#include "support/WidgetLoop.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QGuiApplication>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>
#include <functional>
#include <gmock/gmock.h>

namespace log_test {

const QString kSource = "KOLT CAPTURE";

using kolt::test::Eventually;
using kolt::test::UseLook;

inline void RunDeferredDeletes() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

inline QString Shown(const QWidget& card, const char* part) {
    return card.findChild<QLabel*>(part)->text();
}

inline void Keep(QWidget& widget, const QString& name) {
    const QString folder = qEnvironmentVariable("KOLT_TEST_OUT", "test-out") + "/log";
    QDir().mkpath(folder);
    EXPECT_TRUE(widget.grab().save(folder + "/" + name));
}

class LogPanel : public testing::Test {
protected:
    LogPanel() {
        UseLook();
        m_log.resize(320, 600);
        m_log.show();
        QCoreApplication::processEvents();
    }

    void Insert(int level, const QString& text, const QString& source = kSource) {
        m_log.InsertMsgLog(level, source, text);
    }
    void InsertMany(int count) {
        for (int i = 0; i < count; ++i)
            Insert(i % 3, QString("event %1").arg(i));
    }

    QScrollArea& View() const { return *m_log.findChild<QScrollArea*>("logView"); }
    QWidget& Area() const { return *View().widget(); }
    QScrollBar& Bar() const { return *View().verticalScrollBar(); }
    QComboBox& SortBox() const { return *m_log.findChild<QComboBox*>("logSort"); }

    // The cards in sight of a person who scrolls from top to bottom.
    std::vector<QMessageLogWidget*> Cards() const {
        QCoreApplication::processEvents();
        std::vector<QMessageLogWidget*> cards;
        for (auto* card : Area().findChildren<QMessageLogWidget*>())
            if (card->isVisibleTo(&Area()))
                cards.push_back(card);
        std::sort(cards.begin(), cards.end(), [](auto* a, auto* b) { return a->y() < b->y(); });
        return cards;
    }
    QStringList ShownTexts() const {
        QStringList texts;
        for (const auto* card : Cards())
            texts << Shown(*card, "logMessage");
        return texts;
    }
    QStringList RecordTexts() const {
        QStringList texts;
        for (const auto& record : m_log.GetRecords())
            texts << record.text;
        return texts;
    }

    QMessageLogMngWidget m_log;
};

} // namespace log_test
