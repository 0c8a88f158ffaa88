#include "Common/ToolProcess.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const char kHead[] = "UID          PID    PPID  C STIME TTY          TIME CMD\n";

struct PidCase {
    const char* what;
    QString list;
    QString name;
    QString pid;
};

class ToolPid : public testing::TestWithParam<PidCase> {};

TEST_P(ToolPid, IsFoundBackwardsFromTheName) {
    const PidCase& c = GetParam();
    const int at = c.list.indexOf(c.name);
    ASSERT_GE(at, 0);
    EXPECT_EQ(ToolPidText(c.list, at).toStdString(), c.pid.toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    Lists, ToolPid,
    testing::Values(
        PidCase{"ParentOne",
                QString(kHead) + "root        4242       1  0 10:00 ?        00:00:00 /opt/tool\n", "tool",
                "4242"},
        PidCase{"OtherParentTakesAnEarlierLine",
                QString(kHead) + "root         300       1  0 10:00 ?        00:00:00 /sbin/daemon\n" +
                    "user        4242     777  0 10:00 ?        00:00:00 /opt/tool\n",
                "tool", "300"},
        PidCase{"TheNearestOne",
                QString(kHead) + "root         300       1  0 10:00 ?        00:00:00 /sbin/daemon\n" +
                    "root         400       1  0 10:00 ?        00:00:00 /sbin/other\n" +
                    "user        4242     777  0 10:00 ?        00:00:00 /opt/tool\n",
                "tool", "400"},
        PidCase{"OneInsideANumberIsNone",
                QString(kHead) + "user        4242      11  0 10:00 ?     00:00:00 /opt/tool\n", "tool", "U"},
        PidCase{"NoOneGivesTheFirstCharacter", "xyz 12 7 tool", "tool", "x"},
        PidCase{"NameAtTheStart", "tool 12 1 ", "tool", "t"},
        PidCase{"WordCutOffAtTheStart", "123 1 tool", "tool", "123"},
        PidCase{"SeveralBlanks", "a 123    1 tool", "tool", "123"},
        PidCase{"NothingButBlanks", "   1 tool", "tool", ""},
        PidCase{"OneAtTheVeryStartIsNone", "1 tool", "tool", "1"},
        PidCase{"InsideALongerCommandLine",
                QString(kHead) +
                    "root          99       1  0 10:00 ?        00:00:00 less /logs/mytool.log\n",
                "tool", "99"}),
    [](const testing::TestParamInfo<PidCase>& testCase) { return std::string(testCase.param.what); });

// Stand-ins for the commands, found first in the search path.
class EndTool : public testing::Test {
protected:
    void SetUp() override {
        m_path = qgetenv("PATH");
        qputenv("PATH", m_bin.path().toUtf8() + ":" + m_path);
    }
    void TearDown() override { qputenv("PATH", m_path); }

    void Command(const QString& name, const QString& script) {
        QFile file(m_bin.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(("#!/bin/sh\n" + script + "\n").toUtf8());
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void List(const QString& text) {
        QFile file(m_bin.filePath("list"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
        file.close();
        Command("ps", QString("echo \"$@\" > %1/ps.arguments; cat %1/list").arg(m_bin.path()));
        Command("kill", QString("echo \"$@\" > %1/kill.arguments; exit 1").arg(m_bin.path()));
    }
    QString Arguments(const QString& command) const {
        QFile file(m_bin.filePath(command + ".arguments"));
        return file.open(QIODevice::ReadOnly) ? QString(file.readAll()).trimmed() : QString("not run");
    }

private:
    QTemporaryDir m_bin;
    QByteArray m_path;
};

TEST_F(EndTool, KillsTheProcessAndTellsOneThoughTheKillFails) {
    List(QString(kHead) + "root        4242       1  0 10:00 ?        00:00:00 /opt/Some_Tool ENG\n");
    EXPECT_EQ(EndToolProcess("Some_Tool"), 1);
    EXPECT_EQ(Arguments("ps"), "-ef");
    EXPECT_EQ(Arguments("kill"), "-9 4242");
}

TEST_F(EndTool, KillsNothingWhenTheNameIsAbsent) {
    List(QString(kHead) + "root        4242       1  0 10:00 ?        00:00:00 /opt/some_tool\n");
    EXPECT_EQ(EndToolProcess("Some_Tool"), 0); // case matters
    EXPECT_EQ(Arguments("ps"), "-ef");
    EXPECT_EQ(Arguments("kill"), "not run");
}

TEST_F(EndTool, NameAtTheStartOfTheListGivesItsFirstCharacter) {
    List("Some_Tool 1 2 3\n");
    EXPECT_EQ(EndToolProcess("Some_Tool"), 1);
    EXPECT_EQ(Arguments("kill"), "-9 S");
}

TEST_F(EndTool, WithoutTheListCommandNothingIsFound) {
    const QTemporaryDir empty;
    qputenv("PATH", empty.path().toUtf8());
    EXPECT_EQ(EndToolProcess("Some_Tool"), 0);
}

TEST_F(EndTool, WhetherThereIsOnlyOneIsNeverAsked) {
    List(QString(kHead) + "root        4242       1  0 10:00 ?        00:00:00 /opt/Some_Tool ENG\n");
    EXPECT_EQ(IsProcessExitOnlyOne("Some_Tool"), 0);
    EXPECT_EQ(IsProcessExitOnlyOne(""), 0);
    EXPECT_EQ(Arguments("ps"), "not run");
}

} // namespace
