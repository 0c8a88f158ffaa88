// Menus, texts, enable rules and the building of the main window.
#include "MainWindowFixture.h"

#include "UI/MainWindow/QOrvToolBar.h"

#include <QActionGroup>
#include <QApplication>
#include <QDesktopWidget>
#include <QFontInfo>
#include <ostream>

using testing::ElementsAre;
using testing::IsEmpty;
using workspace::Numbers;

namespace {

class MainWindow : public workspace::MainWindowFixture {};

// --- menus

TEST_F(MainWindow, MenusStandInTheTitleBarInTheirOrder) {
    std::vector<std::string> titles;
    for (const QAction* action : window->MenuBar()->actions())
        titles.push_back(action->text().toStdString());
    EXPECT_THAT(titles, ElementsAre("File", "View", "Camera", "Setting", "Tool", "Lang", "Help"));
    EXPECT_LT(window->MenuBar()->mapTo(window.get(), QPoint(0, 0)).y(), 40);
}

TEST_F(MainWindow, EntriesOfEachMenu) {
    EXPECT_THAT(Lines(Menu(0)), ElementsAre("Capture and Save", "Exit"));
    EXPECT_THAT(Lines(Menu(2)),
                ElementsAre("Connect Camera", "Start Acquisition", "Start Recording", "Add Remote Camera",
                            "-", "Import Features", "Export Features", "-", "Save GenIcam XML"));
    EXPECT_THAT(Lines(Menu(3)), ElementsAre("Feature", "Option"));
    EXPECT_THAT(Lines(Menu(4)), ElementsAre("IP Configurator", "Firmware Updater"));
    EXPECT_THAT(Lines(Menu(5)), ElementsAre("English", "Chinese"));
    EXPECT_THAT(Lines(Menu(6)), ElementsAre("User Manual", "About"));
    EXPECT_THAT(Lines(DisplayMenu()), ElementsAre("30 fps", "60 fps", "Disable Display"));
}

TEST_F(MainWindow, TheViewMenuEndsWithWhatTheCentralWindowCanShow) {
    const std::vector<std::string> lines = Lines(Menu(1));
    EXPECT_THAT(lines,
                ElementsAre("Zoom in", "Zoom out", "Fit to Window", "Actual Size", "-", "Display Mode>", "-",
                            "Device", "Feature", "Log", "Embedded Information", "-", "Control Toolbar"));
    // They are the docks' own.
    for (QAction* action : Menu(1)->actions())
        if (action->text() == "Log") {
            const bool shown = !Central()->LogDock()->isHidden();
            action->trigger();
            EXPECT_EQ(!Central()->LogDock()->isHidden(), !shown);
        }
}

TEST_F(MainWindow, EveryActionIsFoundByItsNumber) {
    const Numbers there{0,  1,  2,  3,  4,  5,  8,  9,  10, 21, 22, 23,
                        24, 25, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36};
    for (int number = -1; number <= 40; ++number) {
        EXPECT_EQ(Action(number) != nullptr, there.count(number) == 1) << number;
        if (Action(number)) {
            EXPECT_EQ(Action(number)->data().toInt(), number);
        }
    }
}

TEST_F(MainWindow, AllActionsAreOfOneGroupThatIsNotExclusive) {
    QActionGroup* const group = Action(0)->actionGroup();
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->actions().size(), 24);
    EXPECT_FALSE(group->isExclusive());
    EXPECT_EQ(window->findChildren<QActionGroup*>().size(), 1);
}

TEST_F(MainWindow, MenusHaveTheirFont) {
    std::vector<QWidget*> all{window->MenuBar(), DisplayMenu()};
    for (int place = 0; place < 7; ++place)
        all.push_back(Menu(place));
    for (const QWidget* each : all) {
        EXPECT_EQ(each->font().pixelSize(), 14);
        EXPECT_EQ(each->font().family(), "FZShuSong-Z01S");
        // Where no such face is installed, that of the look stands in.
        EXPECT_NE(QFontInfo(each->font()).family(), "");
    }
}

// --- what can be chosen

TEST_F(MainWindow, AtFirstOnlyWhatNeedsNoCamera) {
    EXPECT_EQ(Enabled(), (Numbers{1, 8, 9, 10, 30, 31, 32, 33, 34, 35, 36}));
    EXPECT_FALSE(DisplayMenu()->isEnabled()) << "its three entries are out of reach";
}

TEST_F(MainWindow, WhatTheProgramDoesNotHaveStaysOff) {
    MakeWindow({});
    EXPECT_EQ(Enabled(), (Numbers{1, 8, 9, 10, 31, 32, 33, 34, 35, 36}));
    const long id = AddCamera();
    Bring(id, workspace::kConnectedWithFrame);
    window->UpdateMenuBarActions(5, static_cast<int>(id));
    EXPECT_EQ(EnabledByCamera(), (Numbers{0, 2, 3, 4, 5, 21, 22, 28}));
}

struct EnableRow {
    const char* name;
    int type;
    workspace::CameraStage stage;
    Numbers enabled;
    bool displayMode;
    const char* connect;
    const char* shot;
};

std::ostream& operator<<(std::ostream& out, const EnableRow& row) {
    return out << row.name;
}

const Numbers kConnectedActions{21, 22, 24, 25, 28, 29};
const Numbers kFrameActions{0, 2, 3, 4, 5, 21, 22, 24, 25, 28, 29};
const Numbers kGrabbingActions{0, 2, 3, 4, 5, 21, 22, 23, 28, 29};

const EnableRow kEnableRows[] = {
    {"GigEClosed", 5, workspace::kClosed, {21}, false, "Connect Camera", "Start Acquisition"},
    {"GigEConnected", 5, workspace::kConnected, kConnectedActions, false, "Disconnect Camera",
     "Start Acquisition"},
    {"GigEConnectedWithFrame", 5, workspace::kConnectedWithFrame, kFrameActions, false, "Disconnect Camera",
     "Start Acquisition"},
    {"GigEGrabbing", 5, workspace::kGrabbing, kGrabbingActions, true, "Disconnect Camera",
     "Stop Acquisition"},
    {"UsbClosed", 6, workspace::kClosed, {21}, false, "Connect Camera", "Start Acquisition"},
    {"UsbConnected", 6, workspace::kConnected, kConnectedActions, false, "Disconnect Camera",
     "Start Acquisition"},
    {"UsbConnectedWithFrame", 6, workspace::kConnectedWithFrame, kFrameActions, false, "Disconnect Camera",
     "Start Acquisition"},
    {"UsbGrabbing", 6, workspace::kGrabbing, kGrabbingActions, true, "Disconnect Camera", "Stop Acquisition"},
};

class MenuRule : public MainWindow, public testing::WithParamInterface<EnableRow> {};

TEST_P(MenuRule, EnablesAndNames) {
    const EnableRow& row = GetParam();
    const long id = AddCamera();
    Bring(id, row.stage);
    for (const bool before : {false, true}) {
        SetAll(before);
        window->UpdateMenuBarActions(row.type, static_cast<int>(id));
        EXPECT_EQ(EnabledByCamera(), row.enabled);
        EXPECT_EQ(DisplayMenu()->isEnabled(), row.displayMode);
        EXPECT_EQ(Text(21), row.connect);
        EXPECT_EQ(Text(22), row.shot);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, MenuRule, testing::ValuesIn(kEnableRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(MainWindow, WithoutACameraAtMostTheRemoteCameraCanBeAdded) {
    const long id = AddCamera();
    Bring(id, workspace::kGrabbing);
    for (const int type : {-1, 0, 1, 2, 3, 4, 7}) {
        window->UpdateMenuBarActions(5, static_cast<int>(id));
        window->UpdateMenuBarActions(type, 0x0A000001);
        // The tool panels are left to the camera that is connected.
        EXPECT_EQ(EnabledByCamera(), (type == 3 ? Numbers{27, 29} : Numbers{29})) << type;
        EXPECT_FALSE(DisplayMenu()->isEnabled());
        EXPECT_EQ(Text(21), "Disconnect Camera");
        EXPECT_EQ(Text(22), "Stop Acquisition");
    }
}

TEST_F(MainWindow, ACameraThatHasGoneChangesNothing) {
    const long id = AddCamera();
    Bring(id, workspace::kConnected);
    window->UpdateMenuBarActions(5, static_cast<int>(id));
    window->UpdateMenuBarActions(5, static_cast<int>(id) + 1000);
    window->UpdateMenuBarActions(6, -1);
    EXPECT_EQ(EnabledByCamera(), kConnectedActions);
    EXPECT_EQ(Text(21), "Disconnect Camera");
}

TEST_F(MainWindow, WithAnActionMissingTheRulesChangeNothing) {
    const long id = AddCamera();
    Bring(id, workspace::kGrabbing);
    delete Action(28);
    window->UpdateMenuBarActions(5, static_cast<int>(id));
    EXPECT_THAT(EnabledByCamera(), IsEmpty());
    EXPECT_EQ(Text(21), "Connect Camera");
    delete Action(3);
    window->OnSigMenuBarViewActionEnable(true);
    window->OnSigEnabledZoom(true, true);
    EXPECT_THAT(EnabledByCamera(), IsEmpty());
    delete Action(9);
    window->OnSigUpdateMenuActions(8);
    EXPECT_FALSE(Action(8)->isChecked());
    delete Action(23);
    window->OnSigUpdateRecAction(true);
}

TEST_F(MainWindow, ZoomEntriesTogetherAndAlone) {
    Q_EMIT Central()->SigUpdateViewMenuEnable(true);
    EXPECT_EQ(EnabledByCamera(), (Numbers{2, 3, 4, 5}));
    Q_EMIT Central()->SigEnabledZoom(false, true);
    EXPECT_EQ(EnabledByCamera(), (Numbers{3, 4, 5}));
    Q_EMIT Central()->SigEnabledZoom(true, false);
    EXPECT_EQ(EnabledByCamera(), (Numbers{2, 4, 5}));
    Q_EMIT Central()->SigUpdateViewMenuEnable(false);
    EXPECT_THAT(EnabledByCamera(), IsEmpty());
}

TEST_F(MainWindow, TheSignalsOfTheCentralWindowLeadHere) {
    const long id = AddCamera();
    Bring(id, workspace::kConnected);
    Q_EMIT Central()->SigUpdateMenuBarActions(6, static_cast<int>(id));
    EXPECT_EQ(EnabledByCamera(), kConnectedActions);
    Q_EMIT Central()->SigUpdateRecAction(true);
    EXPECT_EQ(Text(23), "Stop Recording");
    Q_EMIT Central()->SigUpdateRecAction(false);
    EXPECT_EQ(Text(23), "Start Recording");
    Q_EMIT Central()->SigUpdateMenuActions(10);
    EXPECT_TRUE(Action(10)->isChecked());
}

TEST_F(MainWindow, TheRenderEngineIsKeptAndTheMenusFollowTheCamera) {
    EXPECT_EQ(window->RenderEngine(), 2U);
    const long id = AddCamera();
    Bring(id, workspace::kConnected);
    Q_EMIT Central()->SigVREngineChanged(0, id);
    EXPECT_EQ(window->RenderEngine(), 0U);
    EXPECT_EQ(EnabledByCamera(), kConnectedActions);
    Q_EMIT Central()->SigVREngineChanged(2, -1);
    EXPECT_EQ(window->RenderEngine(), 2U);
    EXPECT_EQ(EnabledByCamera(), kConnectedActions) << "no camera: nothing changes";
}

TEST_F(MainWindow, MenuAndToolBarNameTheSameFunctionEachInItsWay) {
    const long id = AddCamera();
    const auto tip = [this] { return Central()->ToolBar()->button(22)->toolTip().toStdString(); };
    Central()->OnOpenCamera(id);
    EXPECT_EQ(Text(21), "Disconnect Camera");
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Text(22), "Start Acquisition");
        EXPECT_EQ(tip(), "Start Acquisition");
        Choose(22);
        EXPECT_EQ(Camera(id).GetCameraState(), 2);
        EXPECT_EQ(Text(22), "Stop Acquisition");
        EXPECT_EQ(tip(), "Stop Live View");
        Choose(22);
        EXPECT_EQ(Camera(id).GetCameraState(), 1);
    }
    Central()->OnCloseCamera(id);
    EXPECT_EQ(Text(21), "Connect Camera");
    EXPECT_EQ(Text(22), "Start Acquisition");
}

TEST_F(MainWindow, TheToolPanelsNeedAConnectedCamera) {
    const long id = AddCamera();
    EXPECT_FALSE(Action(29)->isEnabled());
    Central()->OnOpenCamera(id);
    EXPECT_TRUE(Action(29)->isEnabled());
    Central()->OnCloseCamera(id);
    EXPECT_FALSE(Action(29)->isEnabled());
}

TEST_F(MainWindow, TextWhileSinglePicturesAreTakenInARow) {
    window->OnSigUpdateCaptureAction(true);
    EXPECT_EQ(Text(0), "Stop Capturing");
    window->OnSigUpdateCaptureAction(false);
    EXPECT_EQ(Text(0), "Capture and Save");
}

// --- display modes

TEST_F(MainWindow, OneDisplayModeIsMarked) {
    const auto marks = [this] {
        return std::vector<bool>{Action(8)->isChecked(), Action(9)->isChecked(), Action(10)->isChecked()};
    };
    for (const int mode : {8, 9, 10}) {
        EXPECT_TRUE(Action(mode)->isCheckable());
        window->OnSigUpdateMenuActions(mode);
        EXPECT_THAT(marks(), ElementsAre(mode == 8, mode == 9, mode == 10));
        for (const int other : {-1, 0, 7, 11, 16, 17, 19, 20, 37})
            window->OnSigUpdateMenuActions(other);
        EXPECT_THAT(marks(), ElementsAre(mode == 8, mode == 9, mode == 10));
    }
    for (const int other : {0, 1, 5, 21, 23, 36})
        EXPECT_FALSE(Action(other)->isCheckable()) << other;
}

TEST_F(MainWindow, ChoosingADisplayModeMarksItAlsoWhenItWasMarked) {
    for (const int mode : {9, 9, 8, 10, 10}) {
        Choose(mode);
        EXPECT_EQ(Central()->DisplayMode(), mode);
        for (const int each : {8, 9, 10})
            EXPECT_EQ(Action(each)->isChecked(), each == mode) << mode;
    }
}

TEST_F(MainWindow, AStartMarksTheModeInUse) {
    const long id = AddCamera();
    Central()->OnOpenCamera(id);
    Choose(22);
    EXPECT_TRUE(Action(8)->isChecked());
    EXPECT_TRUE(DisplayMenu()->isEnabled());
    Choose(22);
    EXPECT_FALSE(DisplayMenu()->isEnabled());
}

// --- building and placing

struct PlaceRow {
    QSize desktop;
    int left, top, right, bottom;
};

TEST(MainWindowPlace, ByTheSizeOfTheDesktop) {
    const PlaceRow rows[] = {
        {{1920, 1080}, 309, 130, 1611, 950}, {{1280, 800}, -11, -10, 1291, 810},
        {{1281, 801}, -10, -9, 1292, 811}, // halves are cut off toward zero
        {{1303, 821}, 0, 0, 1302, 820},      {{3840, 2160}, 1269, 670, 2571, 1490},
        {{1024, 768}, 112, 19, 798, 729},    {{1279, 1080}, 140, 27, 997, 1026},
        {{1920, 799}, 211, 19, 1497, 759},
    };
    for (const PlaceRow& row : rows) {
        const QRect place = QOrvMainWindow::Placement(row.desktop);
        EXPECT_THAT((std::vector<int>{place.left(), place.top(), place.right(), place.bottom()}),
                    ElementsAre(row.left, row.top, row.right, row.bottom))
            << row.desktop.width() << " x " << row.desktop.height();
    }
}

TEST_F(MainWindow, StandsWhereTheDesktopPutsIt) {
    const QRect place = QOrvMainWindow::Placement(QApplication::desktop()->frameGeometry().size());
    EXPECT_EQ(window->geometry(), place);
    EXPECT_EQ(window->windowTitle(), "KOLT CAPTURE 1.0.0");
    EXPECT_FALSE(window->windowIcon().isNull());
}

TEST_F(MainWindow, TheCentralWindowFillsWhatTheTitleBarLeaves) {
    const QRect place(Central()->mapTo(window.get(), QPoint(0, 0)), Central()->size());
    EXPECT_EQ(place, QRect(QPoint(1, 41), QPoint(window->width() - 2, window->height() - 2)));
}

TEST_F(MainWindow, BuildingTwiceChangesNothing) {
    QOrvCentralWindow* const central = Central();
    EXPECT_TRUE(window->InitWidget());
    EXPECT_EQ(Central(), central);
    EXPECT_EQ(window->MenuBar()->actions().size(), 7);
}

TEST_F(MainWindow, BeforeItIsBuiltItIsEmpty) {
    QOrvMainWindow empty;
    EXPECT_EQ(empty.CentralWindow(), nullptr);
    EXPECT_EQ(empty.GetAction(0), nullptr);
    EXPECT_TRUE(empty.MenuBar()->actions().isEmpty());
    empty.UpdateMenuBarActions(3, 0);
    empty.OnSigEnabledZoom(true, true);
    empty.OnSigMenuBarViewActionEnable(true);
    empty.OnSigUpdateMenuActions(8);
    EXPECT_TRUE(empty.close()) << "without a question";
}

TEST_F(MainWindow, WithoutMemoryForAPartItIsNotBuilt) {
    window.reset();
    QOrvMainWindow failed;
    {
        const devices::FailAllocationsOf no(sizeof(QOrvCentralWindow));
        EXPECT_FALSE(failed.InitWidget());
    }
    EXPECT_EQ(failed.CentralWindow(), nullptr);
    EXPECT_EQ(failed.GetAction(0), nullptr);
    EXPECT_TRUE(failed.InitWidget()) << "nothing was left behind";
    EXPECT_NE(failed.GetAction(0), nullptr);
}

TEST_F(MainWindow, TheFirewallHintIsThereToBeCalled) {
    EXPECT_TRUE(CTestFireWall::IsFirWallOpened());
    EXPECT_THAT(Messages(), IsEmpty()) << "nothing calls it by itself";
    window->TestFireWall();
    EXPECT_THAT(Messages(), ElementsAre("Please turn off Windows Firewall to ensure\nthat the client can "
                                        "work properly.||2"));
}

} // namespace
