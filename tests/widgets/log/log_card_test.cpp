// One card.
#include "LogFixture.h"
#include "UI/MainWindow/QWrappedTextLabel.h"

#include <QAction>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QToolTip>

namespace {

using log_test::kSource;
using log_test::Shown;

const QDateTime kTime(QDate(2026, 11, 20), QTime(9, 5, 7, 42));

class LogCard : public testing::Test {
protected:
    LogCard() {
        log_test::UseLook();
        m_card.resize(300, QMessageLogWidget::kHeight);
        m_card.show();
    }
    void Fill(_MESSAGE_LOG_LEVEL_ level, const QString& text) {
        m_card.ReSetMsgLogInfoBySort(level, kSource, text, kTime);
        QCoreApplication::processEvents();
    }
    QMenu* OpenMenu() {
        Q_EMIT m_card.customContextMenuRequested({10, 10});
        return m_card.findChild<QMenu*>();
    }
    QWrappedTextLabel& Message() const { return *m_card.findChild<QWrappedTextLabel*>("logMessage"); }
    QColor LevelColour() const {
        return m_card.findChild<QLabel*>("logLevel")->palette().color(QPalette::WindowText);
    }
    QImage Icon() const { return m_card.findChild<QLabel*>("logIcon")->pixmap(Qt::ReturnByValue).toImage(); }
    static QString Clipboard() { return QGuiApplication::clipboard()->text(); }

    QMessageLogWidget m_card;
};

TEST_F(LogCard, ShowsFourLines) {
    Fill(MESSAGE_LOG_WARNING, "Disk is full.");
    QStringList labels;
    for (const auto* label : m_card.findChildren<QLabel*>("logLabel"))
        labels << label->text();
    EXPECT_EQ(labels, (QStringList{"Level:", "Source:", "Time:", "Message:"}));
    EXPECT_EQ(Shown(m_card, "logLevel"), "Warning");
    EXPECT_EQ(Shown(m_card, "logSource"), "KOLT CAPTURE");
    EXPECT_EQ(Shown(m_card, "logTime"), "2026-11-20 09:05:07.42");
    EXPECT_EQ(Shown(m_card, "logMessage"), "Disk is full.");
    EXPECT_EQ(m_card.accessibleName(), "Warning, 2026-11-20 09:05:07.42, Disk is full.");
}

TEST_F(LogCard, IsAlwaysAsHigh) {
    for (const QString& text : {QString("a"), QString(3000, 'x'), QString("\n").repeated(40) + "end"}) {
        Fill(MESSAGE_LOG_MESSAGE, text);
        EXPECT_EQ(m_card.height(), 120);
    }
    m_card.resize(500, 500);
    EXPECT_EQ(m_card.height(), 120);
}

TEST_F(LogCard, OfANewEventHasTheTimeOfNow) {
    const QDateTime before = QDateTime::currentDateTime();
    m_card.SetMsgLogInfo(MESSAGE_LOG_MESSAGE, kSource, "now");
    const QDateTime time = m_card.GetMsgLogInfo().dateTime;
    EXPECT_LE(before, time);
    EXPECT_LE(time, QDateTime::currentDateTime());
    EXPECT_EQ(Shown(m_card, "logTime"), MsgLogTimeText(time));
}

TEST_F(LogCard, TellsLevelsByColourAndIconToo) {
    std::vector<QRgb> words;
    std::vector<QRgb> strips;
    std::vector<QImage> icons;
    for (const auto level : {MESSAGE_LOG_MESSAGE, MESSAGE_LOG_CRITICAL, MESSAGE_LOG_WARNING}) {
        Fill(level, "text");
        words.push_back(LevelColour().rgb());
        // Beside the focus ring.
        strips.push_back(m_card.grab().toImage().pixel(2, 60));
        icons.push_back(Icon());
        EXPECT_FALSE(icons.back().isNull());
        EXPECT_GE(Look::Contrast(LevelColour(), Look::Colour("surface")), 4.5);
    }
    const auto colour = [](const char* token) { return Look::Colour(token).rgb(); };
    EXPECT_EQ(words, (std::vector<QRgb>{colour("accentInk"), colour("badInk"), colour("warningInk")}));
    EXPECT_EQ(strips, (std::vector<QRgb>{colour("accent"), colour("bad"), colour("warning")}));
    EXPECT_FALSE(icons[0] == icons[1] || icons[1] == icons[2] || icons[0] == icons[2]);
}

TEST_F(LogCard, WrapsALongTextAndCutsTheLastLine) {
    Fill(MESSAGE_LOG_MESSAGE, QString("word ").repeated(60).trimmed());
    const QStringList lines = Message().GetShownLines();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(Message().IsCut());
    EXPECT_TRUE(lines.last().endsWith(QChar(0x2026))) << lines.last().toStdString();
    for (const QString& line : lines)
        EXPECT_LE(Message().fontMetrics().horizontalAdvance(line), Message().width());

    Fill(MESSAGE_LOG_MESSAGE, "short");
    EXPECT_EQ(Message().GetShownLines(), QStringList("short"));
    EXPECT_FALSE(Message().IsCut());
}

TEST_F(LogCard, BreaksAWordThatIsLongerThanALine) {
    Fill(MESSAGE_LOG_MESSAGE, "/home/operator/" + QString(25, 'x'));
    EXPECT_EQ(Message().GetShownLines().size(), 2);
    EXPECT_FALSE(Message().IsCut());
    EXPECT_EQ(Message().GetShownLines().join(""), Shown(m_card, "logMessage"));
}

TEST_F(LogCard, KeepsTheLineEndsOfATextAndTellsThatThereIsMore) {
    Fill(MESSAGE_LOG_MESSAGE, "one\r\ntwo");
    EXPECT_EQ(Message().GetShownLines(), (QStringList{"one", "two"}));
    Fill(MESSAGE_LOG_MESSAGE, "one\ntwo\nthree");
    const QStringList lines = Message().GetShownLines();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines.last().startsWith("two")) << lines.last().toStdString();
    EXPECT_TRUE(lines.last().endsWith(QChar(0x2026))) << lines.last().toStdString();
}

TEST_F(LogCard, HasTheWholeOfACutTextInItsToolTip) {
    const auto toolTip = [this] {
        QToolTip::hideText();
        QHelpEvent help(QEvent::ToolTip, {1, 1}, Message().mapToGlobal({1, 1}));
        QCoreApplication::sendEvent(&Message(), &help);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    };
    Fill(MESSAGE_LOG_MESSAGE, QString("<b>word</b> ").repeated(60));
    EXPECT_TRUE(toolTip().contains("&lt;b&gt;word")) << toolTip().toStdString();
    Fill(MESSAGE_LOG_MESSAGE, "short");
    QHelpEvent help(QEvent::ToolTip, {1, 1}, Message().mapToGlobal({1, 1}));
    help.ignore();
    QCoreApplication::sendEvent(&Message(), &help);
    EXPECT_TRUE(Message().toolTip().isEmpty());
    EXPECT_FALSE(QToolTip::text().contains("short"));
}

TEST_F(LogCard, ShowsMarkupAsItStands) {
    // A camera's name may hold anything.
    Fill(MESSAGE_LOG_MESSAGE, "<b>A</b> &amp; <img src=x> lost");
    EXPECT_EQ(Message().GetShownLines().join(" "), "<b>A</b> &amp; <img src=x> lost");
    EXPECT_EQ(m_card.findChild<QLabel*>("logSource")->textFormat(), Qt::PlainText);
}

TEST_F(LogCard, CopiesItsContent) {
    Fill(MESSAGE_LOG_CRITICAL, "Saving picture failed.");
    m_card.OnActionCopy();
    EXPECT_EQ(Clipboard().toStdString(),
              "Level: Critical    Source: KOLT CAPTURE    Time: 2026-11-20 09:05:07.42    "
              "Message: Saving picture failed.\r\n");
}

TEST_F(LogCard, OffersThreeActionsInItsMenu) {
    Fill(MESSAGE_LOG_MESSAGE, "text");
    int copyAll = 0;
    int clear = 0;
    QObject::connect(&m_card, &QMessageLogWidget::SigCopyAll, [&] { ++copyAll; });
    QObject::connect(&m_card, &QMessageLogWidget::SigClearLog, [&] { ++clear; });
    const char* const texts[] = {"Copy", "Copy All", "Clear Message Log"};
    for (int i = 0; i < 3; ++i) {
        QMenu* menu = OpenMenu();
        ASSERT_NE(menu, nullptr);
        EXPECT_TRUE(menu->isVisible());
        ASSERT_EQ(menu->actions().size(), 3);
        EXPECT_EQ(menu->actions().at(i)->text(), texts[i]);
        QGuiApplication::clipboard()->clear();
        menu->actions().at(i)->trigger();
        EXPECT_EQ(Clipboard().contains("Message: text"), i == 0);
        menu->close();
        log_test::RunDeferredDeletes();
        EXPECT_EQ(m_card.findChild<QMenu*>(), nullptr) << "the menu goes when it is closed";
    }
    EXPECT_EQ(copyAll, 1);
    EXPECT_EQ(clear, 1);
}

TEST_F(LogCard, CopiesByTheKeyboard) {
    Fill(MESSAGE_LOG_MESSAGE, "by key");
    QGuiApplication::clipboard()->clear();
    QKeyEvent copy(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier);
    QCoreApplication::sendEvent(&m_card, &copy);
    EXPECT_TRUE(Clipboard().contains("by key"));
}

} // namespace
