// KOLT_CAPTURE as it comes up and goes down: the real program, in a folder, a network and on a display of its
// own.
#include "UI/MainWindow/QOrvCentralWindow.h"

#include "FakeCommands.h"
#include "platform/live/Desktop.h"
#include "support/ChildProcess.h"
#include "support/NetworkNamespace.h"
#include "support/Places.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <X11/keysym.h>
#include <gmock/gmock.h>
#include <memory>

using kolt::test::ChildProcess;
using live_test::Eventually;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kTitle[] = "KOLT CAPTURE 1.0.0";

class ProgramStart : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        // The program's own folder is where its file is, so the file is copied; what stands beside may be a
        // link.
        ASSERT_TRUE(QFile::copy(KOLT_BIN_DIR "/KOLT_CAPTURE", folder.filePath("KOLT_CAPTURE")));
        const QDir bin(KOLT_BIN_DIR);
        for (const QString& name : bin.entryList({"lib*.so*", "*.qm"}, QDir::Files))
            ASSERT_TRUE(QFile::link(bin.filePath(name), folder.filePath(name)));
    }

    std::unique_ptr<ChildProcess> Start(ChildProcess::Environment changed = {}) {
        changed["PATH"] = commands.SearchPath().toStdString();
        changed["HOME"] = folder.path().toStdString();
        changed["XDG_CONFIG_HOME"] = folder.filePath("config").toStdString();
        return std::make_unique<ChildProcess>(
            std::vector<std::string>{folder.filePath("KOLT_CAPTURE").toStdString()}, changed);
    }
    bool ComesUp() {
        return Eventually([this] { return desktop.Find(kTitle) != 0; });
    }
    // Closes the window as its manager would, and answers the question.
    void AskToLeave(xcb_keysym_t answer) {
        desktop.AskToClose(desktop.Find(kTitle));
        xcb_window_t question = 0;
        ASSERT_TRUE(Eventually([&] { return (question = desktop.Find("Hint")) != 0; }));
        if (answer == XK_Return)
            desktop.Press(question, answer);
        else
            desktop.AskToClose(question);
        ASSERT_TRUE(Eventually([&] { return desktop.Find("Hint") == 0; }));
    }
    QStringList SettingsFiles() const {
        return QDir(folder.path()).entryList({"*.ini"}, QDir::Files, QDir::Name);
    }

    QTemporaryDir folder;
    app_test::FakeCommands commands;
    kolt::test::NetworkNamespace network;
    kolt::test::NamespaceScope inside{network};
    live_test::Desktop desktop;
};

TEST_F(ProgramStart, ComesUpAndGoesDown) {
    const auto program = Start();
    ASSERT_TRUE(ComesUp()) << program->output();
    EXPECT_EQ(desktop.SizeOf(desktop.Find(kTitle)), (std::array<uint32_t, 2>{1303, 821}));
    EXPECT_THAT(commands.Run(), IsEmpty()) << "the tools are ended at the end";
    ASSERT_NO_FATAL_FAILURE(AskToLeave(XK_Return));
    EXPECT_EQ(program->waitForExit(), 0) << program->output();
    EXPECT_THAT(program->output(), HasSubstr("addApplicationFont failed"));
    EXPECT_THAT(commands.Run(), ElementsAre("ps -ef", "ps -ef"));
    EXPECT_EQ(SettingsFiles(), QStringList({"LangConfig.ini", "LocalConfig.ini"}));
}

TEST_F(ProgramStart, NoToTheQuestionLeavesItRunning) {
    const auto program = Start();
    ASSERT_TRUE(ComesUp()) << program->output();
    ASSERT_NO_FATAL_FAILURE(AskToLeave(XK_Escape));
    EXPECT_NE(desktop.Find(kTitle), 0U);
    EXPECT_THAT(SettingsFiles(), IsEmpty());
    ASSERT_NO_FATAL_FAILURE(AskToLeave(XK_Return));
    EXPECT_EQ(program->waitForExit(), 0) << program->output();
}

TEST_F(ProgramStart, AFontBesideItIsTaken) {
    ASSERT_TRUE(QFile::link(KOLT_TEST_FONT, folder.filePath("segoeui.ttf")));
    const auto program = Start();
    ASSERT_TRUE(ComesUp()) << program->output();
    ASSERT_NO_FATAL_FAILURE(AskToLeave(XK_Return));
    EXPECT_EQ(program->waitForExit(), 0) << program->output();
    EXPECT_THAT(program->output(), HasSubstr("addApplicationFont success"));
}

TEST_F(ProgramStart, ComesUpInTheLanguageOfItsSettings) {
    QSettings(folder.filePath("LangConfig.ini"), QSettings::IniFormat).setValue("Common/Language", 1);
    const auto program = Start();
    ASSERT_TRUE(ComesUp()) << program->output();
    desktop.AskToClose(desktop.Find(kTitle));
    xcb_window_t question = 0;
    ASSERT_TRUE(Eventually([&] { return (question = desktop.Find("提示")) != 0; }));
    desktop.Press(question, XK_Return);
    EXPECT_EQ(program->waitForExit(), 0) << program->output();
}

TEST_F(ProgramStart, SeveralRunSideBySide) {
    const auto one = Start();
    ASSERT_TRUE(ComesUp()) << one->output();
    const xcb_window_t first = desktop.Find(kTitle);
    const auto other = Start();
    // The newer window is the upper one, which is found last: the first is put aside by its end.
    ASSERT_TRUE(other->waitForOutput("addApplicationFont failed"));
    ASSERT_NO_FATAL_FAILURE(AskToLeave(XK_Return));
    EXPECT_EQ(one->waitForExit(), 0) << one->output();
    xcb_window_t second = 0;
    ASSERT_TRUE(Eventually([&] { return (second = desktop.Find(kTitle)) != 0; })) << other->output();
    EXPECT_NE(second, first);
    ASSERT_NO_FATAL_FAILURE(AskToLeave(XK_Return));
    EXPECT_EQ(other->waitForExit(), 0) << other->output();
}

TEST_F(ProgramStart, WithoutMemoryForItsWindowItEndsWithoutAWord) {
    const auto program = Start({{"LD_PRELOAD", KOLT_FAIL_ALLOCATION},
                                {"KOLT_FAIL_SIZE", std::to_string(sizeof(QOrvCentralWindow))},
                                {"ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0"}});
    EXPECT_EQ(program->waitForExit(), 0);
    EXPECT_THAT(program->output(), HasSubstr("addApplicationFont failed")) << "it got so far";
    EXPECT_THAT(program->output(), Not(HasSubstr("bad_alloc")));
    EXPECT_EQ(desktop.Find(kTitle), 0U);
    EXPECT_THAT(commands.Run(), IsEmpty()) << "nothing is cleared";
    EXPECT_THAT(SettingsFiles(), IsEmpty());
}

} // namespace
