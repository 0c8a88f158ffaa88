// Leaving the main window, its language, its keys and how it looks.
#include "MainWindowFixture.h"

#include "Common/CLanguageSwitch.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/Controls/QTitleBar.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "support/Places.h"
#include "support/TextFit.h"

#include <QApplication>
#include <QDesktopWidget>
#include <QLabel>
#include <QPushButton>
#include <algorithm>

using devices::DialogWatch;
using testing::IsEmpty;
using workspace::Numbers;

namespace {

class MainWindowUse : public workspace::MainWindowFixture {
protected:
    // Answers the question that `leave` brings up; the question must come once.
    void Leave(const std::function<void()>& leave, bool yes) {
        DialogWatch<QMessageBoxDlg> watch([&](QMessageBoxDlg& dialog) {
            EXPECT_EQ(dialog.windowTitle(), "Hint");
            EXPECT_EQ(dialog.accessibleDescription(), "Exit the client?");
            EXPECT_TRUE(dialog.isModal());
            EXPECT_TRUE(dialog.GetCancelBtn()->isVisible());
            const QPoint off = dialog.geometry().center() - QApplication::desktop()->frameGeometry().center();
            EXPECT_LE(off.manhattanLength(), 2) << "in the middle of the desktop";
            (yes ? dialog.GetOKBtn() : dialog.GetCancelBtn())->click();
        });
        leave();
        EXPECT_EQ(watch.Seen(), 1);
    }
};

// --- leaving

TEST_F(MainWindowUse, AllWaysOutAskTheSameAndNoLeavesEverything) {
    const long id = AddCamera();
    Central()->OnOpenCamera(id);
    const std::function<void()> ways[] = {
        [this] { Choose(1); },
        [this] { window->TitleBar()->OnClickedClose(); },
        [this] { window->close(); },
    };
    for (const auto& way : ways) {
        Leave(way, false);
        EXPECT_TRUE(window->isVisible());
        EXPECT_TRUE(Central()->isVisible());
        EXPECT_EQ(Camera(id).GetCameraState(), 1);
        EXPECT_EQ(Central()->CurrentCameraID(), id);
    }
}

TEST_F(MainWindowUse, YesClosesTheCameraAndTheWindow) {
    const long id = AddCamera();
    Central()->OnOpenCamera(id);
    Choose(22);
    ASSERT_EQ(Camera(id).GetCameraState(), 2);
    Leave([this] { Choose(1); }, true);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(Camera(id).GetCameraState(), 0);
    EXPECT_EQ(Central()->CurrentCameraID(), -1);
}

TEST_F(MainWindowUse, TheCrossOfTheQuestionIsANo) {
    DialogWatch<QMessageBoxDlg> watch([](QMessageBoxDlg& dialog) { dialog.OnClickedClose(); });
    window->close();
    EXPECT_EQ(watch.Seen(), 1);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(MainWindowUse, OnlyExitLeaves) {
    for (const int number : {8, 9, 10, 30})
        Choose(number);
    window->OnMenuActionTriggered(nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(told, (workspace::Told{"options", "editor options"}));
}

// --- keys

TEST_F(MainWindowUse, EscapeAndReturnDoNothing) {
    QApplication::setActiveWindow(window.get());
    for (const int key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) {
        QTest::keyClick(window.get(), static_cast<Qt::Key>(key));
        QTest::keyClick(Central(), static_cast<Qt::Key>(key));
    }
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    // The window is a dialog to Qt: no button in it may take Return from wherever the focus is.
    for (const QPushButton* button : window->findChildren<QPushButton*>()) {
        if (button->window() == window.get()) {
            EXPECT_FALSE(button->isDefault() || button->autoDefault()) << button->objectName().toStdString();
        }
    }
}

TEST_F(MainWindowUse, MenusWorkFromTheKeyboard) {
    QApplication::setActiveWindow(window.get());
    window->MenuBar()->setActiveAction(window->MenuBar()->actions().at(5));
    QMenu* const menu = Menu(5);
    ASSERT_TRUE(devices::WaitFor([&] { return menu->isVisible(); }));
    QTest::keyClick(menu, Qt::Key_Down);
    while (menu->activeAction() != Action(34))
        QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_EQ(Central()->Language(), 1);
    Choose(33);
}

// --- language

TEST_F(MainWindowUse, TheMenuSwitchesTheLanguageAndTheStateStays) {
    const long id = AddCamera();
    Central()->OnOpenCamera(id);
    Q_EMIT Central()->SigUpdateRecAction(true);
    window->OnSigUpdateCaptureAction(true);
    Choose(34);
    QCoreApplication::processEvents();
    EXPECT_EQ(Text(21), "断开相机");
    EXPECT_EQ(Text(22), "开始采集");
    EXPECT_EQ(Text(23), "停止录像");
    EXPECT_EQ(Text(0), "停止抓图");
    EXPECT_EQ(Menu(2)->title(), "相机");
    EXPECT_EQ(DisplayMenu()->title(), "显示模式");
    EXPECT_EQ(Central()->ToolBar()->button(21)->toolTip(), "断开相机");
    EXPECT_EQ(Text(33), "English") << "whoever can't read the rest finds the way back";
    EXPECT_EQ(QLocalCfg::Instance()->GetLanguageVersion(), 1);
    Choose(33);
    QCoreApplication::processEvents();
    EXPECT_EQ(Text(21), "Disconnect Camera");
    EXPECT_EQ(Text(23), "Stop Recording");
    EXPECT_EQ(Menu(2)->title(), "Camera");
    EXPECT_EQ(QLocalCfg::Instance()->GetLanguageVersion(), 0);
}

struct LanguageRow {
    int setting;
    int language;
    const char* file;
};

TEST_F(MainWindowUse, TheSettingDecidesAtTheStart) {
    for (const LanguageRow& row : {LanguageRow{1, 1, "文件"}, LanguageRow{0, 0, "File"},
                                   LanguageRow{2, 0, "File"}, LanguageRow{-1, 0, "File"}}) {
        window.reset();
        QLocalCfg::Instance()->SetLanguageVersion(row.setting);
        MakeWindow({});
        EXPECT_EQ(Central()->Language(), row.language) << row.setting;
        EXPECT_EQ(Menu(0)->title().toStdString(), row.file) << row.setting;
    }
}

TEST_F(MainWindowUse, TextsFitAndFollowTheLanguage) {
    const long id = AddCamera();
    Central()->OnOpenCamera(id);
    window->resize(1303, 821); // also where the desktop is smaller
    for (QWidget* part :
         {static_cast<QWidget*>(window->TitleBar()), static_cast<QWidget*>(Central()->ToolBar())}) {
        EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(*part), IsEmpty());
        EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(*part, {"KOLT CAPTURE 1.0.0"}), IsEmpty());
    }
    // What the docks hold, each when it is in front.
    for (QDockWidget* dock : window->findChildren<QDockWidget*>()) {
        dock->show();
        dock->raise();
        EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(*dock), IsEmpty())
            << dock->objectName().toStdString();
    }
    CLanguageSwitch language(KOLT_BIN_DIR);
    language.SwitchToChinese();
    QCoreApplication::processEvents();
    const std::set<std::string> same{"30 fps", "60 fps", "English", "-"};
    for (int place = 0; place < 7; ++place)
        for (const std::string& line : Lines(Menu(place))) {
            const bool chinese =
                std::any_of(line.begin(), line.end(), [](char c) { return (c & 0x80) != 0; });
            EXPECT_NE(chinese, same.count(line) == 1) << line;
        }
}

// --- looking at it

TEST_F(MainWindowUse, PicturesOfTheEmptyAndTheBusyWindow) {
    doubles.SetDevices({devices::GigeRecord({.mac = 1, .ip = devices::Ip(20), .user = "Line 3 east"}),
                        devices::GigeRecord({.mac = 2, .ip = devices::Ip(21), .user = "Line 4 west"})});
    for (const QSize& size : {QSize(1303, 821), QSize(858, 711)}) {
        window->resize(size);
        QCoreApplication::processEvents();
        devices::KeepPicture(*window, QString("workspace_empty_%1.png").arg(size.width()));
    }
    const long id = AddCamera("a camera with a name as long as its maker allows");
    Central()->OnOpenCamera(id);
    Choose(22);
    doubles.PushFrame(Frame(0x80));
    ASSERT_TRUE(devices::WaitFor([&] { return Camera(id).IsHaveFrameData(); }));
    window->resize(1303, 821);
    QCoreApplication::processEvents();
    devices::KeepPicture(*window, "workspace_live.png");
    EXPECT_EQ(Central()->ToolBar()->height(), 44);
}

} // namespace
