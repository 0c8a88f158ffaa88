// The log in both languages: texts, fit, and pictures to look at.
#include "Common/CLanguageSwitch.h"
#include "LogFixture.h"
#include "support/Places.h"
#include "support/TextFit.h"

#include <QAction>
#include <QMenu>

namespace {

using log_test::Keep;
using log_test::kSource;
using log_test::LogPanel;
using log_test::Shown;

class LogLanguage : public LogPanel {
protected:
    static QStringList Labels(const QMessageLogWidget& card) {
        QStringList labels;
        for (const auto* label : card.findChildren<QLabel*>("logLabel"))
            labels << label->text();
        return labels;
    }
    void SwitchToChinese() {
        m_languages.SwitchToChinese();
        QCoreApplication::processEvents(); // the change reaches widgets as a posted event
    }
    void InsertTypical() {
        Insert(0, QCoreApplication::translate("QCamera", "Images captured."));
        Insert(2, QFunction::GenerateCameraOperateError(-56));
        Insert(1, QFunction::GenerateCameraOperateError(-25));
        Insert(0, "/home/operator/recordings/2026-11-20/line 3 east/KV-1042_20261120_090507123.raw");
    }
    CLanguageSwitch m_languages{KOLT_BIN_DIR};
};

TEST_F(LogLanguage, ChangeSetsLabelsAndLeavesTheLevelWord) {
    Insert(1, "text");
    SwitchToChinese();
    const auto* card = Cards()[0];
    EXPECT_EQ(Labels(*card), (QStringList{"级别：", "来源：", "时间：", "消息："}));
    EXPECT_EQ(Shown(*card, "logLevel"), "Critical") << "until the card is filled again";
    m_log.ReInsertMsgLogBySort();
    EXPECT_EQ(Shown(*card, "logLevel"), "严重");
    m_languages.SwitchToEnglish();
    QCoreApplication::processEvents();
    EXPECT_EQ(Labels(*card), (QStringList{"Level:", "Source:", "Time:", "Message:"}));
    EXPECT_EQ(Shown(*card, "logLevel"), "严重");
}

TEST_F(LogLanguage, ChangeSetsTheSortBoxAndKeepsItsChoice) {
    SortBox().setCurrentIndex(2);
    SwitchToChinese();
    EXPECT_EQ(SortBox().currentText(), "来源");
    EXPECT_EQ(SortBox().itemText(0), "时间");
    EXPECT_EQ(SortBox().currentData().toInt(), 2);
    EXPECT_EQ(SortBox().count(), 4);
}

TEST_F(LogLanguage, CopiesFollowTheLanguageAndACardItsOwnWord) {
    Insert(2, "text");
    SwitchToChinese();
    const QString time = MsgLogTimeText(m_log.GetRecords()[0].dateTime);
    Cards()[0]->OnActionCopy();
    EXPECT_EQ(QGuiApplication::clipboard()->text(),
              "级别： Warning    来源： KOLT CAPTURE    时间： " + time + "    消息： text\r\n");
    m_log.OnCopyAllLog();
    EXPECT_EQ(QGuiApplication::clipboard()->text(),
              "级别： 警告    来源： KOLT CAPTURE    时间： " + time + "    消息： text\r\n");
}

TEST_F(LogLanguage, MenuIsInTheLanguageOfNow) {
    Insert(0, "text");
    SwitchToChinese();
    auto* card = Cards()[0];
    card->OnShowContextMenu({5, 5});
    QStringList texts;
    for (const auto* action : card->findChild<QMenu*>()->actions())
        texts << action->text();
    EXPECT_EQ(texts, (QStringList{"复制", "全部复制", "清空消息日志"}));
}

TEST_F(LogLanguage, EveryTextFitsAtTheWidthOfItsDock) {
    m_log.resize(270, 600);
    for (int level = 0; level < 3; ++level)
        Insert(level, "text");
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(m_log), testing::IsEmpty());
    EXPECT_THAT(
        kolt::test::FindTextsThatStayEnglish(m_log, {kSource, "text", "Message", "Critical", "Warning"}),
        testing::IsEmpty());
    SwitchToChinese();
    m_log.ReInsertMsgLogBySort();
    QCoreApplication::processEvents();
    EXPECT_THAT(kolt::test::FindMisfits(m_log), testing::IsEmpty());
}

TEST_F(LogLanguage, Pictures) {
    InsertTypical();
    QCoreApplication::processEvents();
    Keep(m_log, "log-english.png");
    m_log.ClearMsgLog();
    SwitchToChinese();
    InsertTypical();
    QCoreApplication::processEvents();
    Keep(m_log, "log-chinese.png");
    auto* card = Cards()[1];
    card->OnShowContextMenu({40, 40});
    QCoreApplication::processEvents();
    Keep(*card->findChild<QMenu*>(), "log-menu-chinese.png");
    card->findChild<QMenu*>()->close();
    m_log.resize(270, 600);
    m_log.activateWindow();
    card->setFocus();
    EXPECT_TRUE(log_test::Eventually([card] { return card->hasFocus(); }));
    Keep(m_log, "log-chinese-narrow-focus.png");
}

} // namespace
