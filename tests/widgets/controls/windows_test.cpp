// The kit's windows with a window manager, as on a desktop.

#include "KitFixture.h"
#include "support/ChildProcess.h"

#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMainWindowEx.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/Controls/QTitleBar.h"

#include <QAccessible>
#include <QIcon>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <memory>

using kit_test::Eventually;

class Windows : public kit_test::Kit {
protected:
    // One for all tests: programs look for their window manager once.
    static void SetUpTestSuite() {
        s_manager = std::make_unique<kolt::test::ChildProcess>(
            std::vector<std::string>{"openbox", "--sm-disable"},
            kolt::test::ChildProcess::Environment{{"XDG_CONFIG_HOME", "/nonexistent"}});
        EXPECT_TRUE(Eventually([] { return ManagerRuns(); }));
    }
    static void TearDownTestSuite() { s_manager.reset(); }

    static kolt::test::Finished Ask(std::vector<std::string> words) {
        words.insert(words.begin(), "xdotool");
        return kolt::test::run(words);
    }
    // A window manager that is ready tells the number of desktops.
    static bool ManagerRuns() { return Ask({"get_num_desktops"}).exitCode == 0; }

    static std::string Id(const QWidget& window) { return std::to_string(window.winId()); }

    static std::unique_ptr<kolt::test::ChildProcess> s_manager;
};

std::unique_ptr<kolt::test::ChildProcess> Windows::s_manager;

TEST_F(Windows, ManagerKnowsTitleAndActivatesThem) {
    QMainWindowEx window;
    window.SetTitleText("KOLT CAPTURE 1.0.0");
    window.setWindowIcon(QIcon(":/ORV/Resources/ORV.ico"));
    window.setGeometry(100, 80, 700, 400);
    window.show();
    ASSERT_TRUE(Eventually([&] { return window.isActiveWindow(); }));
    EXPECT_EQ(Ask({"getwindowname", Id(window)}).output, "KOLT CAPTURE 1.0.0\n");
    // Frameless also to the manager: the content begins at the window's own corner.
    EXPECT_EQ(window.frameGeometry(), window.geometry());
}

TEST_F(Windows, DialogShowsWhetherItIsActive) {
    QMainWindowEx window;
    window.setGeometry(100, 80, 700, 400);
    window.show();
    ASSERT_TRUE(Eventually([&] { return window.isActiveWindow(); }));
    QMessageBoxDlg dialog;
    dialog.SetMsgText("Hint", "Exit the client?", true, 0);
    dialog.show();
    ASSERT_TRUE(Eventually([&] { return dialog.isActiveWindow(); }));
    EXPECT_TRUE(dialog.GetTitleWidget()->property("active").toBool());
    Ask({"windowactivate", Id(window)});
    ASSERT_TRUE(Eventually([&] { return window.isActiveWindow(); }));
    EXPECT_FALSE(dialog.GetTitleWidget()->property("active").toBool());
    Ask({"windowactivate", Id(dialog)});
    EXPECT_TRUE(Eventually([&] { return dialog.GetTitleWidget()->property("active").toBool(); }));
}

TEST_F(Windows, MainWindowIsMinimisedAndComesBack) {
    QMainWindowEx window;
    window.setGeometry(100, 80, 700, 400);
    window.show();
    ASSERT_TRUE(Eventually([&] { return window.isActiveWindow(); }));
    window.findChild<QImageButton*>("mainMinimise")->click();
    ASSERT_TRUE(Eventually([&] { return window.isMinimized() && !window.windowHandle()->isExposed(); }));
    Ask({"windowactivate", Id(window)});
    EXPECT_TRUE(Eventually([&] { return !window.isMinimized() && window.isActiveWindow(); }));
    EXPECT_EQ(window.size(), QSize(700, 400));
}

TEST_F(Windows, MainWindowTakesTheScreenAndGoesBack) {
    QMainWindowEx window;
    window.setGeometry(100, 80, 700, 400);
    window.show();
    ASSERT_TRUE(Eventually([&] { return window.isActiveWindow() && window.pos() == QPoint(100, 80); }));
    window.TitleBar()->OnClickedMaxSize();
    EXPECT_TRUE(Eventually([&] { return window.size() == QSize(1920, 1080); }));
    EXPECT_FALSE(window.isMaximized());
    window.TitleBar()->OnClickedMaxSize();
    EXPECT_TRUE(Eventually([&] { return window.geometry() == QRect(100, 80, 700, 400); }));
}

TEST_F(Windows, PointerDragsTheMainWindowByItsTitle) {
    QMainWindowEx window;
    window.SetTitleText("KOLT CAPTURE 1.0.0");
    window.setGeometry(100, 80, 700, 400);
    window.show();
    ASSERT_TRUE(Eventually([&] { return window.isActiveWindow() && window.pos() == QPoint(100, 80); }));
    Ask({"mousemove", "450", "100", "mousedown", "1", "mousemove", "470", "120"});
    ASSERT_TRUE(Eventually([&] { return window.pos() == QPoint(120, 100); }));
    Ask({"mousemove", "550", "160", "mouseup", "1"});
    EXPECT_TRUE(Eventually([&] { return window.pos() == QPoint(200, 140); }));
}

TEST_F(Windows, PointerResizesTheMainWindowByItsCorner) {
    QMainWindowEx window;
    window.setGeometry(100, 80, 700, 400);
    window.show();
    ASSERT_TRUE(Eventually([&] { return window.isActiveWindow() && window.pos() == QPoint(100, 80); }));
    Ask({"mousemove", "798", "478", "mousedown", "1"});
    // The manager takes the drag over in its own time: the pointer goes on until the window follows.
    int step = 0;
    EXPECT_TRUE(Eventually([&] {
        step = step % 40 + 1;
        Ask({"mousemove", std::to_string(838 + step), std::to_string(508 + step)});
        QCoreApplication::processEvents();
        return window.width() > 730 && window.height() > 420;
    }));
    Ask({"mouseup", "1"});
    EXPECT_EQ(window.pos(), QPoint(100, 80));
}

TEST_F(Windows, AssistiveTechnologySeesRolesNamesAndWords) {
    QMessageBoxDlg dialog;
    dialog.SetMsgText("Hint", "Exit the client?", true, 2);
    dialog.show();
    ASSERT_TRUE(Eventually([&] { return dialog.isActiveWindow(); }));
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(&dialog);
    ASSERT_TRUE(face);
    EXPECT_EQ(face->role(), QAccessible::Dialog);
    EXPECT_EQ(face->text(QAccessible::Name), "Hint");
    EXPECT_EQ(face->text(QAccessible::Description), "Exit the client?");
    const auto nameOf = [&](const char* name) {
        return QAccessible::queryAccessibleInterface(dialog.findChild<QWidget*>(name))
            ->text(QAccessible::Name);
    };
    EXPECT_EQ(nameOf("dialogClose"), "Close");
    EXPECT_EQ(nameOf("dialogOK"), " OK ");
    EXPECT_EQ(nameOf("messagePicture"), "Warning");
    for (const char* button : {"dialogClose", "dialogOK", "dialogCancel"})
        EXPECT_EQ(QAccessible::queryAccessibleInterface(dialog.findChild<QWidget*>(button))->role(),
                  QAccessible::Button);
}

TEST_F(Windows, TabReachesTheButtonsInTheirOrder) {
    QMessageBoxDlg dialog;
    dialog.SetMsgText("Hint", "Exit the client?", true, 0);
    dialog.show();
    ASSERT_TRUE(Eventually([&] { return dialog.isActiveWindow(); }));
    dialog.GetOKBtn()->setFocus();
    QTest::keyClick(&dialog, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), dialog.GetCancelBtn());
    QTest::keyClick(&dialog, Qt::Key_Backtab);
    EXPECT_EQ(QApplication::focusWidget(), dialog.GetOKBtn());
}
