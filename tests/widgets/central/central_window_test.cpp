// The window itself: docks, messages, settings, language, modes, windows and programs it starts.
#include "CentralFixture.h"

#include "UI/Controls/QAboutDlg.h"
#include "UI/Controls/QDockWidgetEx.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/Controls/QSaveDoneHintDlg.h"
#include "UI/MainWindow/QAddCameraWidget.h"
#include "support/TextFit.h"

#include <QAction>
#include <QDesktopServices>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTabBar>
#include <QThread>

namespace central {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// --- docks

TEST_F(Central, ThreeDocksShareTheLeftWithDeviceOnTop) {
    Make(0);
    EXPECT_EQ(window->dockWidgetArea(window->DeviceDock()), Qt::LeftDockWidgetArea);
    EXPECT_THAT(window->tabifiedDockWidgets(window->DeviceDock()),
                testing::UnorderedElementsAre(window->FeatureDock(), window->LogDock()));
    EXPECT_EQ(window->dockWidgetArea(window->EmbeddedDock()), Qt::RightDockWidgetArea);
    EXPECT_EQ(window->tabPosition(Qt::LeftDockWidgetArea), QTabWidget::North);
    EXPECT_FALSE(window->DeviceDock()->visibleRegion().isEmpty());
    EXPECT_TRUE(window->FeatureDock()->visibleRegion().isEmpty());
    EXPECT_EQ(window->DeviceDock()->minimumWidth(), 270);
    EXPECT_EQ(window->FeatureDock()->minimumWidth(), 270);
    for (QDockWidgetEx* dock :
         {window->DeviceDock(), window->FeatureDock(), window->LogDock(), window->EmbeddedDock()})
        EXPECT_EQ(dock->features(), QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable |
                                        QDockWidget::DockWidgetFloatable);
    EXPECT_EQ(window->EmbeddedDock()->objectName(), "Embedded Image Info");
    EXPECT_FALSE(window->ToolBar()->isMovable());
}

struct FlagCase {
    int flags;
    bool feature, log, embedded;
};

class ViewFlags : public Central, public testing::WithParamInterface<FlagCase> {};

TEST_P(ViewFlags, TellWhichDocksShow) {
    QLocalCfg::Instance()->SetViewShowFlage(GetParam().flags);
    Make(0);
    EXPECT_EQ(!window->FeatureDock()->isHidden(), GetParam().feature);
    EXPECT_EQ(!window->LogDock()->isHidden(), GetParam().log);
    EXPECT_EQ(!window->EmbeddedDock()->isHidden(), GetParam().embedded);
    EXPECT_EQ(window->IsEmbedWidgetVisible(), GetParam().embedded);
}

INSTANTIATE_TEST_SUITE_P(Rows, ViewFlags,
                         testing::Values(FlagCase{0, false, false, false}, FlagCase{1, true, false, false},
                                         FlagCase{2, false, false, false}, FlagCase{4, false, false, false},
                                         FlagCase{6, false, true, false}, FlagCase{7, true, true, false},
                                         FlagCase{8, false, false, true}, FlagCase{15, true, true, true}),
                         [](const auto& row) { return "Flags" + std::to_string(row.param.flags); });

TEST_F(Central, TheDocksShownAreKeptWhenLogOrEmbeddedChange) {
    Make(0);
    QLocalCfg* const settings = QLocalCfg::Instance();
    window->EmbeddedDock()->show();
    EXPECT_EQ(settings->GetViewShowFlage(), 15);
    EXPECT_TRUE(window->IsEmbedWidgetVisible());
    window->FeatureDock()->hide();
    EXPECT_EQ(settings->GetViewShowFlage(), 15) << "this dock alone keeps nothing";
    window->LogDock()->hide();
    EXPECT_EQ(settings->GetViewShowFlage(), 8);
    window->EmbeddedDock()->hide();
    EXPECT_EQ(settings->GetViewShowFlage(), 0);
    EXPECT_FALSE(window->IsEmbedWidgetVisible());
}

TEST_F(Central, ATabInFrontOrTheProgramsEndKeepsTheChoice) {
    Make(0);
    window->LogDock()->raise();
    QCoreApplication::processEvents();
    window->DeviceDock()->raise();
    QCoreApplication::processEvents();
    EXPECT_EQ(QLocalCfg::Instance()->GetViewShowFlage(), 7);
    window->close();
    frame->close();
    EXPECT_EQ(QLocalCfg::Instance()->GetViewShowFlage(), 7);
}

TEST_F(Central, ThePopupMenuHasTheTogglesOfDocksAndToolBar) {
    Make(0);
    const std::unique_ptr<QMenu> menu(window->CreatePopupMenuEx());
    QStringList texts;
    for (const QAction* action : menu->actions())
        if (!action->isSeparator())
            texts += action->text();
    EXPECT_THAT(texts, testing::UnorderedElementsAre("Device", "Feature", "Log", "Embedded Information",
                                                     "Control Toolbar"));
}

TEST_F(Central, TheLayoutIsWrittenAndReadFromDifferentStores) {
    Make(0);
    window->close();
    frame.reset();
    QSettings written("Software Inc.", "Icon Editor");
    EXPECT_FALSE(written.value("mainWindow/geometry").toByteArray().isEmpty());
    EXPECT_FALSE(written.value("mainWindow/state").toByteArray().isEmpty());
    QSettings read("-", "");
    EXPECT_FALSE(read.contains("mainWindow/geometry"));
}

// --- availability and the dispatcher

TEST_F(Central, WithoutItsPartAnActionIsNotAvailable) {
    Make(0);
    for (int action = 0; action <= 36; ++action) {
        const bool missing = action == 24 || action == 25 || action == 26 || action == 29 || action == 30;
        EXPECT_EQ(window->IsAvailable(action), !missing) << action;
    }
    EXPECT_FALSE(window->IsAvailable(37));
    EXPECT_FALSE(window->IsAvailable(-1));
    for (const int action : {1, 24, 25, 26, 29, 37, 1000, -1})
        Do(action); // nothing happens
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Central, WithItsPartAnActionReachesIt) {
    ScriptedParts script;
    Make(1, script.Make());
    for (int action = 0; action <= 36; ++action)
        EXPECT_TRUE(window->IsAvailable(action)) << action;
    window->OnOpenCamera(Id(1));
    script.Told();
    for (const int number : {24, 25, 26}) {
        QAction action(nullptr);
        action.setData(number);
        window->OnMenuActionTriggered(&action);
    }
    window->OnMenuActionTriggered(nullptr);
    EXPECT_THAT(script.Told(), ElementsAre("editor load", "editor save", "files " + std::to_string(Id(1))));
}

TEST_F(Central, TheToolPanelIsMadeOnceAndFollowsTheCamera) {
    ScriptedParts script;
    Make(1, script.Make());
    Do(29);
    EXPECT_THAT(script.Told(), IsEmpty()) << "no camera";
    window->OnOpenCamera(Id(1));
    script.Told();
    const std::string camera = "panel camera " + std::to_string(Id(1));
    script.onPanelExec = [&] { script.panel->close(); };
    Do(29);
    EXPECT_THAT(script.Told(), ElementsAre("panel made", camera, "panel page", "editor update 0[]"));
    EXPECT_EQ(static_cast<int>(script.panel->windowFlags()) & 0x40800, 0x40800);
    Do(29);
    EXPECT_THAT(script.Told(), ElementsAre(camera, "panel page", "editor update 0[]"));
    script.onPanelExec = {};
    Do(22);
    EXPECT_THAT(script.Told(), ElementsAre("editor start", camera, "panel page"));
    Do(22);
    EXPECT_THAT(script.Told(), ElementsAre("editor stop", camera, "panel page"));
    window->OnCloseCamera(Id(1));
    EXPECT_THAT(script.Told(), testing::Contains("panel deleted"));
}

TEST_F(Central, TheToolPanelWaitsForRecordingsAndSeries) {
    ScriptedParts script;
    Make(1, script.Make());
    Live();
    Camera(Id(1)).StartRecordRawData(files.filePath("a.raw").toUtf8(), files.path().toUtf8());
    Do(29);
    EXPECT_THAT(Messages(),
                ElementsAre("Failed to open the attribute settings. \nPlease stop recording first.||2"));
    Camera(Id(1)).StopRecord();
    QLocalCfg::Instance()->SetSaveMode(1);
    Camera(Id(1)).SetImgSave();
    Do(29);
    EXPECT_THAT(Messages(),
                ElementsAre("Failed to open the attribute settings. Please stop capturing first.||2"));
    Camera(Id(1)).SetImgSave();
    EXPECT_EQ(script.panel, nullptr);
}

TEST_F(Central, OptionsThatEndWithOkReachEveryCamera) {
    ScriptedParts script;
    Make(2, script.Make());
    window->OnOpenCamera(Id(1));
    script.Told();
    Do(30);
    EXPECT_THAT(script.Told(), ElementsAre("options"));
    EXPECT_EQ(script.lastOptions.cameraId, Id(1));
    EXPECT_FALSE(script.lastOptions.networkPage);
    EXPECT_FALSE(script.lastOptions.recording);
    EXPECT_EQ(script.lastOptions.language, 0);
    doubles.ForgetCalls();
    script.optionsAccepted = true;
    Do(30);
    EXPECT_THAT(script.Told(), ElementsAre("options", "editor options"));
    EXPECT_GE(doubles.CountOf("OV_CC_SetThrowAbnormalImage"), 1);
    EXPECT_GE(doubles.CountOf("OV_CC_SetImageNodeNum"), 1);
    script.optionsBuilt = false;
    Do(30);
    EXPECT_THAT(Messages(), ElementsAre("Failed to open the Option window.||1"));
}

// --- modes

TEST_F(Central, DisplayRateRenderModeAndEngineAreKept) {
    Make(1);
    QSignalSpy marks(window, &QOrvCentralWindow::SigUpdateMenuActions);
    for (const int action : {10, 9, 8, 12, 17, 20})
        Do(action);
    ASSERT_EQ(marks.count(), 6);
    EXPECT_EQ(marks[5][0].toInt(), 20);
    EXPECT_EQ(window->DisplayMode(), 8);
    EXPECT_TRUE(window->IsGDIRender());
    EXPECT_EQ(QLocalCfg::Instance()->GetRenderEngine(), 2);
    Do(19);
    EXPECT_EQ(window->RenderEngine(), 0);
    EXPECT_EQ(QLocalCfg::Instance()->GetRenderEngine(), 0);
}

TEST_F(Central, TheEngineOfTheSettingsIsUsed) {
    QLocalCfg::Instance()->SetRenderEngine(2);
    Make(0);
    EXPECT_TRUE(window->IsGDIRender());
}

TEST_F(Central, DisplayOffAndOnReachTheOpenCamera) {
    Make(1);
    Live();
    Do(10);
    EXPECT_FALSE(Camera(Id(1)).IsDisplay());
    Do(9);
    EXPECT_TRUE(Camera(Id(1)).IsDisplay());
    EXPECT_EQ(Camera(Id(1)).GetConfigRate(), 60);
}

TEST_F(Central, ZoomButtonsFollowThePicture) {
    Make(1);
    Live();
    QSignalSpy zoom(window, &QOrvCentralWindow::SigEnabledZoom);
    window->OnZoomStateChanged(true, false);
    EXPECT_TRUE(Enabled(2));
    EXPECT_FALSE(Enabled(3));
    ASSERT_EQ(zoom.count(), 1);
    EXPECT_EQ(zoom[0], QVariantList({true, false}));
    for (const int action : {2, 3, 4, 5, 6, 7})
        Do(action);
    EXPECT_GT(zoom.count(), 1);
}

// --- language

struct LanguageCase {
    int setting;
    int language;
};

TEST_F(Central, TheLanguageOfTheSettings) {
    for (const LanguageCase c :
         {LanguageCase{0, 0}, LanguageCase{1, 1}, LanguageCase{2, 0}, LanguageCase{-1, 0}}) {
        QLocalCfg::Instance()->SetLanguageVersion(c.setting);
        frame.reset();
        frame = std::make_unique<QMainWindow>();
        window = new QOrvCentralWindow(frame.get());
        EXPECT_EQ(window->Language(), c.language) << c.setting;
    }
    window->OnToolBarBtnClicked(33);
}

TEST_F(Central, TheLanguageChangesWhileItRuns) {
    QLocalCfg::Instance()->SetViewShowFlage(15);
    Make(1);
    const auto expectAllFits = [this] {
        for (QDockWidgetEx* dock : {window->FeatureDock(), window->LogDock(), window->DeviceDock()}) {
            dock->raise();
            QCoreApplication::processEvents();
            EXPECT_THAT(kolt::test::FindMisfits(*dock), IsEmpty());
        }
        EXPECT_THAT(kolt::test::FindMisfits(*window->EmbeddedDock()), IsEmpty());
    };
    Do(34);
    QCoreApplication::processEvents();
    EXPECT_EQ(window->Language(), 1);
    EXPECT_EQ(QLocalCfg::Instance()->GetLanguageVersion(), 1);
    EXPECT_EQ(window->DeviceDock()->windowTitle(), QString::fromUtf8("设备"));
    expectAllFits();
    Do(33);
    QCoreApplication::processEvents();
    EXPECT_EQ(window->DeviceDock()->windowTitle(), "Device");
    EXPECT_EQ(QLocalCfg::Instance()->GetLanguageVersion(), 0);
    expectAllFits();
}

// --- messages

TEST_F(Central, AMessageOfAnotherThreadIsShownOnce) {
    Make(0);
    int shown = 0;
    QString text;
    QTimer answer;
    answer.callOnTimeout([&] {
        if (auto* dialog = qobject_cast<QMessageBoxDlg*>(QApplication::activeModalWidget())) {
            ++shown;
            for (const QLabel* label : dialog->findChildren<QLabel*>())
                text += label->text();
            // A second one meanwhile is dropped.
            window->OnShowMsg("Hint", "other", 1);
            dialog->accept();
        }
    });
    answer.start(5);
    std::unique_ptr<QThread> worker(QThread::create([&] { window->OnShowMsg("Hint", "full", 2); }));
    worker->start();
    ASSERT_TRUE(devices::WaitFor([&] { return shown > 0; }));
    worker->wait();
    QCoreApplication::processEvents();
    EXPECT_EQ(shown, 1);
    EXPECT_TRUE(text.contains("full"));
    // The flag is free again.
    window->OnShowMsg("Hint", "again", 0);
    EXPECT_EQ(shown, 2);
}

TEST_F(Central, AMessageClosedOtherwiseIsTheLast) {
    Make(0);
    int shown = 0;
    QTimer answer;
    answer.callOnTimeout([&] {
        if (auto* dialog = qobject_cast<QMessageBoxDlg*>(QApplication::activeModalWidget())) {
            ++shown;
            dialog->reject();
        }
    });
    answer.start(5);
    window->OnShowMsg("Hint", "one", 0);
    window->OnShowMsg("Hint", "two", 0);
    EXPECT_EQ(shown, 1);
}

TEST_F(Central, TheSavedNoticeClosesByItselfAndComesAgain) {
    Make(0);
    for (int round = 0; round < 2; ++round) {
        devices::DialogWatch<QSaveDoneHintDlg> notice([](QSaveDoneHintDlg& it) { it.done(1); });
        window->OnShowSaveMsg("Images captured.", files.path());
        EXPECT_EQ(notice.Seen(), 1);
    }
}

// --- windows and programs

TEST_F(Central, AboutIsModal) {
    Make(0);
    devices::DialogWatch<QAboutDlg> about([](QAboutDlg& it) { it.accept(); });
    Do(36);
    EXPECT_EQ(about.Seen(), 1);
}

TEST_F(Central, ARemoteCameraIsAskedFor) {
    Make(0);
    devices::DialogWatch<QAddCameraWidget> dialog([](QAddCameraWidget& it) { it.reject(); });
    Do(27);
    EXPECT_EQ(dialog.Seen(), 1);
    EXPECT_GT(window->AddCamera("10.0.0.77"), 0);
}

class UrlCatcher : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void Open(const QUrl& url) { last = url; }

public:
    QUrl last;
};

TEST_F(Central, TheManualIsOpenedInTheLanguageOfTheWindow) {
    Make(0);
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler("file", &catcher, "Open");
    Do(35);
    EXPECT_EQ(catcher.last, QUrl::fromLocalFile(QCoreApplication::applicationDirPath() +
                                                "/User Manual of KOLT Client Software for LinuxV2_1_En.pdf"));
    Do(34);
    Do(35);
    EXPECT_EQ(catcher.last, QUrl::fromLocalFile(QCoreApplication::applicationDirPath() +
                                                "/User Manual of KOLT Client Software for LinuxV2_1_Ch.pdf"));
    Do(33);
    QDesktopServices::unsetUrlHandler("file");
}

// A program beside this test that writes its argument to a file.
class ToolBeside {
public:
    ToolBeside(const QString& name, const QString& result)
        : m_path(QCoreApplication::applicationDirPath() + "/" + name) {
        QFile file(m_path);
        if (file.open(QIODevice::WriteOnly))
            file.write(QString("#!/bin/sh\nprintf '%s' \"$*\" > '%1.part' && mv '%1.part' '%1'\n")
                           .arg(result)
                           .toUtf8());
        file.close();
        QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    ~ToolBeside() { QFile::remove(m_path); }

private:
    QString m_path;
};

QString Contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

TEST_F(Central, TheExternalToolsGetTheLanguage) {
    Make(0);
    const ToolBeside address("KOLT_IP_Config", files.filePath("ip"));
    const ToolBeside firmware("KOLT_Firmware_Update", files.filePath("firmware"));
    Do(31);
    EXPECT_TRUE(devices::WaitFor([&] { return Contents(files.filePath("ip")) == "ENG"; }));
    Do(34);
    Do(32);
    EXPECT_TRUE(devices::WaitFor([&] { return Contents(files.filePath("firmware")) == "CH"; }));
    Do(33);
    window->OnActionNetWorkAdapter(); // not there: nothing is told
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(Central, ToolsInTheListOfProcessesAreEnded) {
    const QByteArray before = qgetenv("PATH");
    const QString bin = files.filePath("bin");
    ASSERT_TRUE(QDir().mkpath(bin));
    const auto command = [&](const QString& name, const QString& body) {
        QFile file(bin + "/" + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(("#!/bin/sh\n" + body + "\n").toUtf8());
        file.close();
        QFile::setPermissions(file.fileName(), QFile::ReadOwner | QFile::ExeOwner);
    };
    command("ps", "echo 'root 42 1 /opt/ORV_IP_Config ENG'");
    command("pkill", "printf '%s' \"$*\" > '" + files.filePath("pkill") + "'");
    qputenv("PATH", bin.toLocal8Bit() + ":" + before);
    EXPECT_EQ(QOrvCentralWindow::ToolProcessOrpIP("ORV_IP_Config"), 1);
    EXPECT_EQ(Contents(files.filePath("pkill")), "-f ORV_IP_Config");
    EXPECT_EQ(QOrvCentralWindow::ToolProcessOrpUpgrade("IP_Config"), 1);
    EXPECT_EQ(Contents(files.filePath("pkill")), "-f KOLT_Firmware_Update");
    QFile::remove(files.filePath("pkill"));
    EXPECT_EQ(QOrvCentralWindow::ToolProcessOrpIP("KOLT_IP_Config"), 0);
    EXPECT_FALSE(QFile::exists(files.filePath("pkill")));
    qputenv("PATH", before);
}

} // namespace
} // namespace central

#include "central_window_test.moc"
