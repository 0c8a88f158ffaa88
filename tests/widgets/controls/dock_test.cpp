#include "KitFixture.h"

#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QDockTitleBar.h"
#include "UI/Controls/QDockWidgetEx.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QStaticLabel.h"

#include <QAction>
#include <QMainWindow>

using kit_test::Kit;

class Dock : public Kit {
protected:
    Dock() : m_dock(new QDockWidgetEx("Device")), m_title(new QDockTitleBar(m_dock)) {
        m_dock->setWidget(new QWidget);
        m_dock->widget()->setMinimumSize(200, 100);
        m_window.addDockWidget(Qt::LeftDockWidgetArea, m_dock);
        m_window.setCentralWidget(new QWidget);
        m_window.resize(600, 400);
        kit_test::Show(m_window);
    }
    QString Title() const { return m_title->findChild<QStaticLabel*>("dockTitleText")->text(); }

    QMainWindow m_window;
    QDockWidgetEx* m_dock;
    QDockTitleBar* m_title;
};

TEST_F(Dock, TitleBarTakesTheDocksTitleAndFollowsIt) {
    EXPECT_EQ(m_dock->titleBarWidget(), m_title);
    EXPECT_EQ(Title(), "Device");
    m_dock->setWindowTitle("Devices");
    EXPECT_EQ(Title(), "Devices");
    m_title->SetTitleText("Other");
    EXPECT_EQ(Title(), "Other");
}

TEST_F(Dock, TitleBarHasItsHeightAndTheContentStandsBelow) {
    EXPECT_EQ(m_title->height(), Look::dockTitleHeight);
    EXPECT_GE(m_dock->widget()->y(), Look::dockTitleHeight);
}

TEST_F(Dock, CloseButtonClosesTheDock) {
    m_title->findChild<QImageButton*>("dockClose")->click();
    EXPECT_FALSE(m_dock->isVisible());
    EXPECT_FALSE(m_dock->toggleViewAction()->isChecked());
}

TEST_F(Dock, TitleBarWithoutADockDoesNothingOnClose) {
    QDockTitleBar loose;
    loose.OnBtnClose();
    EXPECT_EQ(loose.parentWidget(), nullptr);
}

TEST_F(Dock, AfloatItsEdgesResizeIt) {
    const auto* const grips = m_dock->findChild<CFrameGrips*>();
    EXPECT_FALSE(grips->IsEnabled());
    m_dock->setFloating(true);
    EXPECT_TRUE(grips->IsEnabled());
    m_dock->setFloating(false);
    EXPECT_FALSE(grips->IsEnabled());
}
