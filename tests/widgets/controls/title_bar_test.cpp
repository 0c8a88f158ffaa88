#include "KitFixture.h"

#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMainWindowEx.h"
#include "UI/Controls/QMenuBarEx.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/Controls/QStaticLabel.h"
#include "UI/Controls/QTitleBar.h"
#include "UI/Controls/QTitleBarUbuntu.h"

#include <QDesktopWidget>
#include <QHBoxLayout>
#include <QLabel>

using kit_test::Eventually;
using kit_test::Kit;

class TitleBar : public Kit {
protected:
    void Open(QMainWindowEx& window) {
        window.SetTitleText("KOLT CAPTURE 1.0.0");
        window.setGeometry(100, 80, 900, 500);
        kit_test::Show(window);
        ASSERT_TRUE(Eventually([&] { return window.geometry() == QRect(100, 80, 900, 500); }));
    }
    static QImageButton& Button(QWidget& window, const char* name) {
        return *window.findChild<QImageButton*>(name);
    }
    static QStaticLabel& Title(QWidget& window) { return *window.findChild<QStaticLabel*>("mainTitleText"); }
    // Of the bar, where neither menu nor button stands.
    static QPoint Free(QTitleBar& bar) { return Title(*bar.window()).geometry().center(); }

    static void Drag(QTitleBar& bar, const QPoint& way, Qt::MouseButton button = Qt::LeftButton) {
        kit_test::Drag(bar, Free(bar), way, button);
    }
};

TEST_F(TitleBar, MaximiseTakesTheAvailablePartOfTheScreenAndRestoreGoesBack) {
    QMainWindowEx window;
    Open(window);
    QTitleBar& bar = *window.TitleBar();
    QSignalSpy clicks(&bar, &QTitleBar::SigTitleButtonClicked);
    Button(window, "mainMaximise").click();
    EXPECT_TRUE(bar.IsMaximized());
    EXPECT_EQ(window.geometry(), QApplication::desktop()->availableGeometry(&window));
    EXPECT_FALSE(window.isMaximized()); // never through the window manager
    EXPECT_EQ(Button(window, "mainMaximise").toolTip(), "Restore");
    Button(window, "mainMaximise").click();
    EXPECT_FALSE(bar.IsMaximized());
    EXPECT_EQ(window.geometry(), QRect(100, 80, 900, 500));
    EXPECT_EQ(Button(window, "mainMaximise").toolTip(), "Maximize");
    EXPECT_EQ(clicks, (QList<QVariantList>{{0}, {1}}));
}

TEST_F(TitleBar, DoubleClickTogglesMaximising) {
    QMainWindowEx window;
    Open(window);
    QTitleBar& bar = *window.TitleBar();
    QTest::mouseDClick(&bar, Qt::LeftButton, Qt::NoModifier, Free(bar));
    EXPECT_TRUE(bar.IsMaximized());
    QTest::mouseDClick(&bar, Qt::RightButton, Qt::NoModifier, Free(bar));
    EXPECT_TRUE(bar.IsMaximized());
    QTest::mouseDClick(&bar, Qt::LeftButton, Qt::NoModifier, Free(bar));
    EXPECT_FALSE(bar.IsMaximized());
    EXPECT_EQ(window.geometry(), QRect(100, 80, 900, 500));
}

TEST_F(TitleBar, DragMovesTheWindowUnlessItIsMaximised) {
    QMainWindowEx window;
    Open(window);
    QTitleBar& bar = *window.TitleBar();
    Drag(bar, QPoint(40, 25));
    EXPECT_EQ(window.pos(), QPoint(140, 105));
    Drag(bar, QPoint(40, 25), Qt::RightButton);
    EXPECT_EQ(window.pos(), QPoint(140, 105));
    QMouseEvent move(QEvent::MouseMove, Free(bar), QPoint(700, 700), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(&bar, &move);
    EXPECT_EQ(window.pos(), QPoint(140, 105));
    bar.OnClickedMaxSize();
    const QRect whole = window.geometry();
    Drag(bar, QPoint(40, 25));
    EXPECT_EQ(window.geometry(), whole);
}

TEST_F(TitleBar, CloseIsToldBeforeTheWindowCloses) {
    QMainWindowEx window;
    Open(window);
    QStringList order;
    QObject::connect(window.TitleBar(), &QTitleBar::SigTitleButtonClicked,
                     [&](int type) { order += QString("%1 %2").arg(type).arg(window.isVisible()); });
    QObject::connect(&window, &QDialog::finished, [&] { order += "closed"; });
    Button(window, "mainClose").click();
    EXPECT_EQ(order, (QStringList{"3 1", "closed"}));
    EXPECT_FALSE(window.isVisible());
}

TEST_F(TitleBar, ReceiverOfCloseMayDeleteTheWindow) {
    QPointer<QMainWindowEx> window(new QMainWindowEx);
    kit_test::Show(*window);
    QObject::connect(window->TitleBar(), &QTitleBar::SigTitleButtonClicked, [&] { delete window; });
    window->TitleBar()->OnClickedClose();
    EXPECT_TRUE(window.isNull());
}

TEST_F(TitleBar, MinimiseIsTold) {
    QMainWindowEx window;
    Open(window);
    QSignalSpy clicks(window.TitleBar(), &QTitleBar::SigTitleButtonClicked);
    Button(window, "mainMinimise").click();
    EXPECT_EQ(clicks, (QList<QVariantList>{{2}}));
    EXPECT_TRUE(window.isMinimized());
}

TEST_F(TitleBar, SystemChoosesTheBarAndItsButtonsSide) {
    QMainWindowEx here;
    Open(here);
    EXPECT_FALSE(qobject_cast<QTitleBarUbuntu*>(here.TitleBar()));
    EXPECT_GT(Button(here, "mainMinimise").x(), 700);
    EXPECT_LT(Button(here, "mainMaximise").x(), Button(here, "mainClose").x());
    int probes = 0;
    SetSystemProbe([&] {
        ++probes;
        return QString("Ubuntu");
    });
    QMainWindowEx there;
    EXPECT_EQ(probes, 1);
    Open(there);
    EXPECT_TRUE(qobject_cast<QTitleBarUbuntu*>(there.TitleBar()));
    for (const char* name : {"mainClose", "mainMinimise", "mainMaximise"})
        EXPECT_LT(Button(there, name).x(), 140) << name;
    EXPECT_GT(there.MenuBar()->x(), Button(there, "mainMaximise").x());
}

TEST_F(TitleBar, MenusStandInTheOrderTheyCame) {
    QMainWindowEx window;
    QMenuEx file;
    QMenuEx view;
    window.AddTitleBarMenu("File", &file);
    window.AddTitleBarMenu("View", &view);
    Open(window);
    QStringList titles;
    for (const QAction* action : window.MenuBar()->actions())
        titles += action->text();
    EXPECT_EQ(titles, (QStringList{"File", "View"}));
    EXPECT_EQ(view.title(), "View");
    EXPECT_EQ(window.MenuBar(), window.TitleBar()->MenuBar());
    // All of the menu is shown.
    for (QAction* action : window.MenuBar()->actions())
        EXPECT_TRUE(window.MenuBar()->rect().contains(window.MenuBar()->actionGeometry(action)));
}

TEST_F(TitleBar, TitleStandsInTheMiddleOrAsideButNeverUnderAnything) {
    QMainWindowEx window;
    Open(window);
    EXPECT_EQ(window.windowTitle(), "KOLT CAPTURE 1.0.0");
    EXPECT_NEAR(Title(window).geometry().center().x(), window.TitleBar()->width() / 2, 2);
    for (const char* text :
         {"File", "View", "Camera", "Setting", "Tool", "Lang", "Help", "Another", "And more"})
        window.AddTitleBarMenu(text, new QMenuEx(&window));
    window.resize(800, 400);
    QCoreApplication::processEvents();
    EXPECT_TRUE(Title(window).isVisible());
    EXPECT_GT(Title(window).x(), window.MenuBar()->geometry().right());
    EXPECT_LT(Title(window).geometry().right(), Button(window, "mainMinimise").x());
    window.resize(700, 400);
    QCoreApplication::processEvents();
    EXPECT_FALSE(Title(window).isVisible()); // no room is left between the two
}

TEST_F(TitleBar, WindowTakesALayoutBelowTheBar) {
    QMainWindowEx window;
    auto* layout = new QHBoxLayout;
    auto* label = new QLabel("work");
    layout->addWidget(label);
    window.SetLayoutEx(layout);
    Open(window);
    EXPECT_TRUE(label->isVisible());
    EXPECT_GE(label->mapTo(&window, QPoint()).y(), window.TitleBar()->geometry().bottom());
    EXPECT_TRUE(window.InitWidget());
    EXPECT_EQ(window.findChildren<QTitleBar*>().size(), 1);
}

TEST_F(TitleBar, EdgesAreOffWhileMaximised) {
    QMainWindowEx window;
    Open(window);
    const auto* const grips = window.findChild<CFrameGrips*>();
    EXPECT_TRUE(grips->IsEnabled());
    window.TitleBar()->OnClickedMaxSize();
    EXPECT_FALSE(grips->IsEnabled());
    window.TitleBar()->OnClickedMaxSize();
    EXPECT_TRUE(grips->IsEnabled());
}
