// The status bar's items, full screen, language, and leaving.
#include "e2e/E2eFixture.h"

#include "Common/QLocalCfg.h"
#include "UI/Controls/QCheckBoxEx.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMenuBarEx.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvMainWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QPrevStatusBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QRenderWidget.h"
#include "UI/MainWindow/QStatusItemSelectWidget.h"
#include "UI/MainWindow/StatusItems.h"

#include <QDockWidget>
#include <QPushButton>

namespace e2e {
namespace {

TEST_F(E2e, StatusItemsAreKeptOverARestart) {
    AddCamera("east");
    const auto box = [this](int item) {
        return [this, item]() -> QWidget* { return Render()->ItemSelect()->Box(item); };
    };
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    EXPECT_EQ(StatusText(kStatusAcquisitionRate), "") << "an empty bar before the stream";
    ASSERT_NO_FATAL_FAILURE(StartLive());
    EXPECT_TRUE(Eventually([this] { return StatusText(kStatusResolution) == "Resolution: 640 * 480"; }))
        << StatusText(kStatusResolution).toStdString();
    EXPECT_EQ(StatusText(kStatusZoom), "");
    ClickOn([this]() -> QWidget* { return Render()->StatusBar()->ExpandButton(); });
    // On the box itself: beside a short text a click does nothing.
    constexpr QPoint kOnBox(9, 9);
    for (const int item : {kStatusZoom, kStatusBandwidth, kStatusPacketsLost})
        desktop.Click(PointOf(box(item), kOnBox));
    EXPECT_TRUE(Eventually([this] { return StatusText(kStatusPacketsLost).isEmpty(); }));
    EXPECT_TRUE(Eventually([this] { return StatusText(kStatusZoom).startsWith("Zoom: "); }));
    EXPECT_TRUE(Eventually([this] {
        return StatusText(kStatusBandwidth).startsWith("BW:") && StatusText(kStatusBandwidth) != "BW:0.0Mbps";
    })) << StatusText(kStatusBandwidth).toStdString();
    Screenshot("status-items-chosen");

    EndProgram();
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_NO_FATAL_FAILURE(StartLive());
    EXPECT_TRUE(Eventually([this] { return StatusText(kStatusZoom).startsWith("Zoom: "); }));
    EXPECT_TRUE(Eventually([this] { return StatusText(kStatusBandwidth).startsWith("BW:"); }));
    EXPECT_EQ(StatusText(kStatusPacketsLost), "");
    EXPECT_TRUE(
        Eventually([this] { return StatusText(kStatusAcquisitionRate).startsWith("AcquisitionRate:"); }));
    Screenshot("status-items-after-restart");
}

TEST_F(E2e, FullScreenAndBack) {
    auto& camera = AddCamera("east");
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_NO_FATAL_FAILURE(StartLive());
    const QSize whole = desktop.Size();
    const auto isWhole = [&] {
        return EventuallyGui([&] {
            return Render()->isWindow() && Render()->isActiveWindow() &&
                   Render()->geometry() == QRect(QPoint(), whole);
        });
    };
    const auto isBack = [this] {
        return EventuallyGui([this] {
            return !Render()->isWindow() && Render()->isVisible() && Render()->parentWidget() == Central();
        });
    };
    desktop.DoubleClick(PreviewCentre());
    ASSERT_TRUE(isWhole());
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(camera));
    Screenshot("full-screen");
    desktop.Tap(kolt::test::Desktop::kEscape);
    ASSERT_TRUE(isBack());
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(camera));
    EXPECT_TRUE(camera.IsStreaming());
    Screenshot("full-screen-back");
    // The other way back.
    desktop.DoubleClick(PreviewCentre());
    ASSERT_TRUE(isWhole());
    desktop.DoubleClick(PreviewCentre());
    ASSERT_TRUE(isBack());
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(camera));
    ClickTool(QOrvToolBar::kStart);
    EXPECT_TRUE(Eventually([&] { return !camera.IsStreaming(); })) << "the window is at work as before";
}

TEST_F(E2e, LanguageOfTheRunningProgram) {
    AddCamera("east");
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_NO_FATAL_FAILURE(StartLive());
    const auto texts = [this] {
        return Gui([this] {
            QStringList all;
            for (const QAction* title : window->MenuBar()->actions())
                all << title->text();
            for (const QDockWidget* dock : Central()->findChildren<QDockWidget*>())
                all << dock->windowTitle();
            all << window->GetAction(ACTION_CONTINOUS_SHOT)->text()
                << Central()->ToolBar()->button(QOrvToolBar::kStart)->toolTip();
            return all;
        });
    };
    const QStringList english = texts();
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_LANG, ACTION_LANG_CH));
    EXPECT_TRUE(Eventually([&] {
        const QStringList now = texts();
        for (int i = 0; i < now.size(); ++i) {
            if (now[i] == english[i])
                return false;
        }
        return true;
    })) << texts().join(' ').toStdString();
    EXPECT_TRUE(Eventually([this] { return !StatusText(kStatusAcquisitionRate).startsWith("Acq"); }));
    Screenshot("language-chinese");
    ClickTool(QOrvToolBar::kStart);
    EXPECT_TRUE(Eventually([this] { return !cameras.front()->IsStreaming(); }));

    EndProgram();
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    EXPECT_NE(texts().first(), english.first()) << "kept over a restart";
    Screenshot("language-chinese-after-restart");
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_LANG, ACTION_LANG_ENG));
    EXPECT_TRUE(Eventually([&] { return texts().first() == english.first(); }));
}

class Leaving : public E2e {
protected:
    void AskByCloseButton() {
        ClickOn([this]() -> QWidget* { return window->findChild<QWidget*>("mainClose"); });
    }
};

TEST_F(Leaving, IsAskedForAndCanBeRefused) {
    auto& camera = AddCamera("east");
    ASSERT_NO_FATAL_FAILURE(StartProgram());
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_NO_FATAL_FAILURE(StartLive());
    AskByCloseButton();
    EXPECT_NE(WaitForMessage().find("Exit the client?"), std::string::npos);
    Screenshot("exit-question");
    ASSERT_NO_FATAL_FAILURE(AnswerQuestion(false));
    EXPECT_TRUE(Gui([this] { return window->isVisible(); }));
    EXPECT_TRUE(camera.IsStreaming()) << "all goes on";
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_FILE, ACTION_EXIT));
    EXPECT_NE(WaitForMessage().find("Exit the client?"), std::string::npos);
    ASSERT_NO_FATAL_FAILURE(AnswerQuestion(true));
    EXPECT_TRUE(EventuallyGui([this] { return !window->isVisible(); }));
    EXPECT_TRUE(Eventually([&] { return !camera.IsControlled() && !camera.IsStreaming(); }));
}

} // namespace
} // namespace e2e
