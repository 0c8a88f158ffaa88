// The program as a process of its own, in a folder of its own. Where things are on the screen is learnt from
// its window in this process, which stands at the same place and looks the same.
#include "e2e/E2eFixture.h"

#include "Common/QLocalCfg.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/MainWindow/QOrvMainWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "support/ChildProcess.h"
#include "support/Places.h"

#include <QDir>
#include <QPushButton>
#include <filesystem>
#include <optional>

namespace e2e {
namespace {

namespace fs = std::filesystem;

// A part of the screen and what it looked like.
struct Sight {
    QRect area;
    QImage picture;
};

class Process : public E2e {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(E2e::SetUp());
        // Settings lie beside the executable. Links are enough: the path by which it is started counts.
        const fs::path out = qEnvironmentVariable("KOLT_TEST_OUT", QDir::tempPath()).toStdString();
        home = out / ("e2e-program-" + std::to_string(getpid()));
        fs::create_directories(home);
        for (const auto& file : fs::directory_iterator(KOLT_BIN_DIR)) {
            const fs::path name = file.path().filename();
            if (name != "KOLT_CAPTURE" && name.extension() != ".so" && name.extension() != ".qm")
                continue;
            std::error_code noLink;
            fs::create_hard_link(file.path(), home / name, noLink);
            if (noLink)
                fs::copy_file(file.path(), home / name);
        }
        camera = &AddCamera("east");
        ASSERT_NO_FATAL_FAILURE(StartProgram());
        ASSERT_TRUE(Eventually([this] { return HasItem(ItemOf(0)); }));
        all = Gui([this] { return window->frameGeometry(); });
        closePoint = PointOf([this]() -> QWidget* { return window->findChild<QWidget*>("mainClose"); });
    }
    void TearDown() override {
        process.reset();
        E2e::TearDown();
        std::error_code ignored;
        fs::remove_all(home, ignored);
    }

    // What stands there when the pointer is out of the way and all has been painted.
    Sight See(QRect area) {
        desktop.Move(QPoint(2, 2));
        Sight sight{area, {}};
        EXPECT_TRUE(Eventually([&] {
            Gui([] { QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest); });
            Gui([] {}); // and what that painted is sent
            const QImage before = std::exchange(sight.picture, desktop.Grab(area));
            return before == sight.picture;
        }));
        return sight;
    }
    bool Appears(const Sight& sight) {
        return Eventually([&] { return desktop.Grab(sight.area) == sight.picture; });
    }
    // Asks to leave, learns where the question and its buttons are, and stays.
    void LearnQuestion() {
        desktop.Click(closePoint);
        const auto* const dialog = WaitForDialog<QMessageBoxDlg>();
        ASSERT_TRUE(dialog);
        yesPoint = PointOf([dialog]() -> QWidget* { return dialog->GetOKBtn(); });
        noPoint = PointOf([dialog]() -> QWidget* { return dialog->GetCancelBtn(); });
        question = See(Gui([dialog] { return dialog->geometry(); }));
        ASSERT_NO_FATAL_FAILURE(AnswerQuestion(false));
    }

    void StartProcess() {
        process = std::make_unique<kolt::test::ChildProcess>(std::vector<std::string>{home / "KOLT_CAPTURE"});
    }
    void ClickClose() {
        desktop.Move(QPoint(2, 2));
        const QImage before = desktop.Grab(question.area);
        desktop.Click(closePoint);
        // It stands there, with its blue OK button where the rehearsal had it.
        ASSERT_TRUE(Eventually([&] {
            const QRgb button = desktop.Pixel(yesPoint - QPoint(0, 8));
            return desktop.Grab(question.area) != before && qBlue(button) > qRed(button) + 50;
        })) << "asks first";
    }
    void ExpectEnd() {
        EXPECT_EQ(process->waitForExit(), std::optional<int>(0)) << process->output();
        // Nobody runs from that folder any more.
        for (const auto& other : fs::directory_iterator("/proc")) {
            std::error_code gone;
            const fs::path program = fs::read_symlink(other.path() / "exe", gone);
            EXPECT_FALSE(!gone && program.parent_path() == home) << other.path();
        }
    }
    void Keep(const std::string& name) {
        const QString out = qEnvironmentVariable("KOLT_TEST_OUT", QDir::tempPath()) + "/e2e";
        QDir().mkpath(out);
        EXPECT_TRUE(desktop.Grab(all).save(out + '/' + QString::fromStdString(name) + ".png"));
    }

    fs::path home;
    vcam::VirtualCamera* camera = nullptr;
    std::unique_ptr<kolt::test::ChildProcess> process;
    QRect all;
    QPoint closePoint, yesPoint, noPoint;
    Sight question;
};

TEST_F(Process, FromStartToExitWithAnOpenCamera) {
    const Sight start = See(all);
    const QPoint item = ItemPoint(ItemOf(0));
    ASSERT_NO_FATAL_FAILURE(Connect());
    const QPoint startPoint = ToolPoint(QOrvToolBar::kStart);
    ASSERT_NO_FATAL_FAILURE(StartLive());
    const vcam::Patch patch = camera->Patches().front();
    const QPoint patchPoint = PicturePoint(patch.x + patch.width / 2.0, patch.y + patch.height / 2.0);
    EXPECT_TRUE(Eventually([&] { return qRed(desktop.Pixel(patchPoint)) > 0; }));
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(*camera));
    const QRgb patchColour = desktop.Pixel(patchPoint);
    ASSERT_NO_FATAL_FAILURE(LearnQuestion());
    EndProgram();
    ASSERT_TRUE(Eventually([this] { return !camera->IsControlled(); }));

    StartProcess();
    ASSERT_TRUE(Appears(start)) << "the window, and the camera in its tree: " << process->output();
    desktop.DoubleClick(item);
    ASSERT_TRUE(Eventually([this] { return camera->IsControlled(); }));
    const uint64_t frames = camera->GetCounters().framesCompleted;
    desktop.Click(startPoint);
    ASSERT_TRUE(Eventually([&] { return camera->GetCounters().framesCompleted > frames + 10; }));
    EXPECT_TRUE(Eventually([&] { return desktop.Pixel(patchPoint) == patchColour; }));
    Keep("program-live");
    ASSERT_NO_FATAL_FAILURE(ClickClose());
    EXPECT_TRUE(camera->IsStreaming());
    Keep("program-exit-question");
    desktop.Click(yesPoint);
    ASSERT_NO_FATAL_FAILURE(ExpectEnd());
    EXPECT_FALSE(camera->IsControlled()) << "given back, not left to its heartbeat";
    EXPECT_FALSE(camera->IsStreaming());
    EXPECT_EQ(camera->GetCounters().heartbeatsExpired, 0u);
}

} // namespace
} // namespace e2e
