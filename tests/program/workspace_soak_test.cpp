// Somebody clicks through the main window at random while cameras come and go: nothing crashes, leaks, sticks
// or lacks a frame. Half an hour with KOLT_SOAK=1, twenty seconds otherwise; KOLT_SEED chooses another walk.
#include "program/Desk.h"

#include "Common/QLocalCfg.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QPrevTitleBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QRenderWidget.h"
#include "support/ResidentMemory.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QWheelEvent>
#include <QtTest>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

namespace program {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kConnect = 21, kLive = 22, kRecord = 23, kSnapshot = 0;
constexpr int kStepsBetweenRests = 25;
constexpr double kGrowthMiB = 24;
constexpr int kKeptSteps = 25; // told when something fails

bool LongRun() {
    const char* soak = std::getenv("KOLT_SOAK");
    return soak && *soak == '1';
}

int EntriesOf(const char* path) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        (void)entry;
        ++count;
    }
    return count;
}

// What the process holds while every camera is plugged in and none is open.
struct Footprint {
    double memory = 0;
    int descriptors = 0;
    int threads = 0;
};

bool HasThread(const std::string& name) {
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "comm");
        std::string found;
        std::getline(file, found);
        if (found == name)
            return true;
    }
    return false;
}

// Of the memories from `from` (a fraction of the run) on to `to`.
[[maybe_unused]] double MedianMemory(const std::vector<Footprint>& rests, double from, double to) {
    const auto at = [&rests](double fraction) {
        return static_cast<size_t>(fraction * static_cast<double>(rests.size()));
    };
    std::vector<double> values;
    for (size_t i = at(from); i < at(to); ++i)
        values.push_back(rests[i].memory);
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

Footprint Measure() {
    return {support::ResidentMiB(), EntriesOf("/proc/self/fd"), EntriesOf("/proc/self/task")};
}

struct Totals {
    int steps = 0, rests = 0, connects = 0, starts = 0, snapshots = 0, recordings = 0, series = 0, zooms = 0,
        pulls = 0, pullsOfOpen = 0, pullsInRecordings = 0, refusedConnects = 0;
    int64_t recordedFrames = 0, seriesPictures = 0, lostFrames = 0;
};

class Soak : public Desk {
protected:
    void SetUp() override {
        Desk::SetUp();
        QLocalCfg::Instance()->SetDataOutputFolder(folder.path());
        const char* seed = std::getenv("KOLT_SEED");
        m_random.seed(seed ? static_cast<unsigned>(std::atoi(seed)) : 7U);
        vcam::Config& mono = Add("north");
        mono.sensorWidth = 640;
        mono.sensorHeight = 480;
        mono.frameRate = 60;
        vcam::Config& colour = Add("south");
        colour.sensorWidth = 800;
        colour.sensorHeight = 600;
        colour.pixelFormat = 0x01080009; // BayerRG8
        vcam::Config& fast = Add("east");
        fast.sensorWidth = 1280;
        fast.sensorHeight = 720;
        fast.frameRate = 100;
        fast.model = vcam::Model::Mono;
    }

    void TearDown() override {
        if (HasFailure()) {
            std::printf("the last steps:\n");
            for (const std::string& step : m_steps)
                std::printf("  %s\n", step.c_str());
        }
        Desk::TearDown();
    }

    int Random(int below) { return std::uniform_int_distribution<int>(0, below - 1)(m_random); }

    void Say(const std::string& what) {
        m_steps.push_back(what);
        if (m_steps.size() > kKeptSteps)
            m_steps.pop_front();
    }

    Camera* OpenOne() {
        for (Camera& camera : cameras)
            if (const long id = IdOf(camera); id >= 0 && id == Central().CurrentCameraID())
                return &camera;
        return nullptr;
    }

    // Nothing was said that isn't expected.
    void NoMessages() {
        for (const std::string& message : answers->TakeMessages())
            ADD_FAILURE() << "the program says: " << message;
    }

    // --- what the window shows is what is

    void CheckState() {
        const long current = Central().CurrentCameraID();
        int connected = 0;
        for (int i = 0;; ++i) {
            const CCameraRef camera = CCameraRef::ByIndex(i);
            if (!camera)
                break;
            connected += camera->IsConnect() ? 1 : 0;
            EXPECT_EQ(camera->IsConnect(), camera->GetCameraID() == current) << camera->GetCameraID();
        }
        EXPECT_EQ(connected, current >= 0 ? 1 : 0);
        const CCameraRef open = CCameraRef::ById(current);
        const QRenderWidget& area = *Central().RenderArea();
        EXPECT_EQ(!area.TitleBar()->TimeLabel()->isHidden(), open && open->IsRecord());
        if (!open) {
            EXPECT_FALSE(area.Preview()->IsRendering());
        } else if (open->IsShotting()) {
            EXPECT_TRUE(area.Preview()->IsRendering());
        }
        for (Camera& camera : cameras) {
            if (!camera.plugged)
                continue;
            const bool isOpen = open && IdOf(camera) == current;
            EXPECT_TRUE(WaitFor([&] { return camera.device->IsControlled() == isOpen; }))
                << camera.config.userName;
            EXPECT_TRUE(WaitFor([&] {
                return camera.device->IsStreaming() == (isOpen && open->IsShotting());
            })) << camera.config.userName;
        }
        CheckButtons(open);
    }

    void CheckButtons(const CCameraRef& open) {
        Camera* const camera = OpenOne();
        if (!camera || !open)
            return;
        ASSERT_NO_FATAL_FAILURE(Select(*camera));
        const bool live = open->IsShotting();
        EXPECT_TRUE(Enabled(kConnect));
        EXPECT_TRUE(Enabled(kLive));
        EXPECT_EQ(Enabled(kRecord), live);
        EXPECT_EQ(Enabled(kSnapshot), live || open->IsHaveFrameData());
        QAction* const menu = window->GetAction(ACTION_CONTINOUS_SHOT);
        EXPECT_EQ(menu->text(), live ? "Stop Acquisition" : "Start Acquisition");
        EXPECT_EQ(window->GetAction(ACTION_CONNECT)->text(), "Disconnect Camera");
    }

    // --- steps

    // The camera is held by the program after it; false when it isn't plugged in or known.
    bool Connect(Camera& camera) {
        if (!ItemOf(camera))
            return false;
        const long id = IdOf(camera);
        Say("connect " + camera.config.userName);
        if (Random(2) == 0) {
            DoubleClick(camera);
        } else {
            Select(camera);
            // The button refuses clicks for a moment after the last one.
            if (!WaitFor([&] {
                    if (Central().CurrentCameraID() != id && camera.plugged)
                        Click(kConnect);
                    return Central().CurrentCameraID() == id || !camera.plugged;
                }))
                ADD_FAILURE() << camera.config.userName << " can't be connected";
            if (!camera.plugged)
                DoubleClick(camera);
        }
        if (!camera.plugged) {
            EXPECT_NE(Central().CurrentCameraID(), id);
            for (const std::string& message : answers->TakeMessages())
                EXPECT_EQ(message, "Connecting camera failed.");
            ++totals.refusedConnects;
            return false;
        }
        EXPECT_EQ(Central().CurrentCameraID(), id) << camera.config.userName;
        ++totals.connects;
        return Central().CurrentCameraID() == id;
    }

    void Disconnect() {
        Camera* const camera = OpenOne();
        if (!camera)
            return;
        Say("disconnect " + camera->config.userName);
        ASSERT_NO_FATAL_FAILURE(Select(*camera));
        EXPECT_TRUE(WaitFor([&] {
            if (Central().CurrentCameraID() >= 0)
                Click(kConnect);
            return Central().CurrentCameraID() < 0;
        }));
    }

    // A live picture, of whichever camera can be had; null when there is none.
    Camera* Live() {
        Camera* camera = OpenOne();
        if (!camera) {
            camera = &cameras[static_cast<size_t>(Random(static_cast<int>(cameras.size())))];
            if (!camera->plugged || !Connect(*camera))
                return nullptr;
        }
        const CCameraRef open = CCameraRef::ById(Central().CurrentCameraID());
        Select(*camera);
        if (!open->IsShotting()) {
            Say("live " + camera->config.userName);
            Click(kLive);
            ++totals.starts;
        }
        EXPECT_TRUE(open->IsShotting());
        EXPECT_TRUE(WaitFor([&] { return open->GetRecvFrameNum() >= 2 && open->IsHaveFrameData(); }));
        EXPECT_TRUE(WaitFor([&] { return Central().RenderArea()->Preview()->Zoom().HasRaw(); }));
        return testing::Test::HasFailure() ? nullptr : camera;
    }

    void StopLive() {
        Camera* const camera = OpenOne();
        const CCameraRef open = CCameraRef::ById(Central().CurrentCameraID());
        if (!camera || !open->IsShotting())
            return;
        Say("stop " + camera->config.userName);
        ASSERT_NO_FATAL_FAILURE(Select(*camera));
        Click(kLive);
        EXPECT_FALSE(open->IsShotting());
    }

    void Snapshot() {
        if (!Live())
            return;
        static const char* const kNames[] = {"snapshot.bmp", "snapshot.jpg", "snapshot.raw"};
        const QString path = folder.filePath(kNames[Random(3)]);
        Say("snapshot " + path.toStdString());
        answers->file = path;
        Click(kSnapshot);
        answers->file.clear();
        EXPECT_GT(QFile(path).size(), 5000);
        QFile::remove(path);
        ++totals.snapshots;
    }

    static int64_t LibraryLost(QCamera& camera) {
        _OV_MATCH_INFO_NET_DETECT_ counts{};
        return camera.GetMatchInfoNetDetect(&counts) == 0
                   ? static_cast<int64_t>(counts.lostFrames) + counts.errorCount
                   : 0;
    }

    // Each frame is whole, and those that lack between the first and the last were counted as lost.
    void CheckFile(const QString& path, const Camera& camera, int64_t frames, int64_t counted) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        const uint32_t width = camera.config.sensorWidth, height = camera.config.sensorHeight;
        const int64_t size = int64_t{width} * height;
        ASSERT_EQ(file.size(), frames * size);
        if (camera.config.pixelFormat != 0x01080001)
            return; // the number is read from grey pictures
        int64_t missing = 0;
        uint32_t former = 0;
        for (int64_t i = 0; i < frames; ++i) {
            const QByteArray bytes = file.read(size);
            uint32_t number = 0;
            ASSERT_TRUE(vcam::ReadFrameNumber(reinterpret_cast<const uint8_t*>(bytes.constData()), width,
                                              width, height, number));
            if (former != 0) {
                ASSERT_GT(number, former) << "frame " << i;
                missing += number - former - 1;
            }
            former = number;
        }
        EXPECT_LE(missing, counted);
        totals.lostFrames += missing;
    }

    enum class End { ByButton, ByStop, ByDisconnect, ByPull };

    void Record(End end) {
        Camera* const camera = Live();
        if (!camera)
            return;
        const CCameraRef open = CCameraRef::ById(Central().CurrentCameraID());
        const QString path = folder.filePath("recording.raw");
        const _CAMERA_COUNTERS_ before = open->GetCounters();
        const int64_t lostBefore = LibraryLost(*open);
        Say("record " + camera->config.userName);
        answers->file = path;
        Click(kRecord);
        answers->file.clear();
        ASSERT_TRUE(open->IsRecord());
        const int64_t frames = 5 + Random(60);
        EXPECT_TRUE(WaitFor([&] { return open->GetCounters().recorded >= before.recorded + frames; }));
        EXPECT_FALSE(Central().RenderArea()->TitleBar()->TimeLabel()->isHidden());
        const int64_t lost = LibraryLost(*open) - lostBefore;
        EndRecording(end, *camera);
        EXPECT_FALSE(open->IsRecord());
        const _CAMERA_COUNTERS_ after = open->GetCounters();
        EXPECT_EQ(after.recordFailures, before.recordFailures);
        // Frames that the library may have lost since it was asked are let through.
        CheckFile(path, *camera, after.recorded - before.recorded,
                  after.overwritten - before.overwritten + lost + 2);
        QFile::remove(path);
        ++totals.recordings;
        totals.recordedFrames += after.recorded - before.recorded;
    }

    void EndRecording(End end, Camera& camera) {
        switch (end) {
        case End::ByButton:
            Say("end by the button");
            Select(camera);
            Click(kRecord);
            break;
        case End::ByStop:
            Say("end by a stop");
            StopLive();
            break;
        case End::ByDisconnect:
            Say("end by a disconnect");
            Disconnect();
            break;
        case End::ByPull:
            Pull(camera);
            ++totals.pullsInRecordings;
            break;
        }
    }

    void Series() {
        Camera* const camera = Live();
        if (!camera)
            return;
        Say("series " + camera->config.userName);
        const CCameraRef open = CCameraRef::ById(Central().CurrentCameraID());
        QLocalCfg* const settings = QLocalCfg::Instance();
        settings->SetSaveMode(1);
        settings->SetImgSaveFileNameIndexType(1);
        const int64_t before = open->GetCounters().imagesSaved;
        Click(kRecord);
        EXPECT_TRUE(WaitFor([&] { return open->GetCounters().imagesSaved >= before + 3; }));
        Select(*camera);
        Click(kRecord);
        EXPECT_FALSE(open->IsCapturing());
        settings->SetSaveMode(0);
        const int64_t saved = open->GetCounters().imagesSaved - before;
        QDir pictures(folder.filePath(QString::fromStdString(camera->config.userName)));
        int64_t found = 0;
        for (const QString& name : QDir(folder.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QDir inside(folder.filePath(name));
            const int count = inside.entryList({"*.bmp", "*.jpg", "*.png", "*.raw"}, QDir::Files).size();
            if (count > 0)
                inside.removeRecursively();
            found += count;
        }
        EXPECT_EQ(found, saved);
        ++totals.series;
        totals.seriesPictures += saved;
    }

    void Zoom() {
        if (!Live())
            return;
        Say("zoom");
        QPreviewWidget& preview = *Central().RenderArea()->Preview();
        for (int i = 1 + Random(8); i > 0; --i) {
            const QPoint at(Random(preview.width()), Random(preview.height()));
            if (Random(4) == 0) {
                static const int kButtons[] = {QOrvToolBar::kZoomIn, QOrvToolBar::kZoomOut, QOrvToolBar::kFit,
                                               QOrvToolBar::kActualSize};
                Click(kButtons[Random(4)]);
                continue;
            }
            QWheelEvent turn(at, preview.mapToGlobal(at), {}, QPoint(0, Random(2) == 0 ? 120 : -120),
                             Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&preview, &turn);
        }
        const tagVRRectF& shown = preview.Zoom().Source();
        EXPECT_TRUE(shown.left >= -0.001F && shown.right <= 1.001F && shown.left < shown.right);
        EXPECT_TRUE(shown.top >= -0.001F && shown.bottom <= 1.001F && shown.top < shown.bottom);
        ++totals.zooms;
    }

    void DisplayMode() {
        if (!Live())
            return;
        static const int kModes[] = {ACTION_DISPLAY_30, ACTION_DISPLAY_60, ACTION_DISPLAY_OFF};
        const int mode = kModes[Random(3)];
        Say("display mode " + std::to_string(mode));
        window->GetAction(mode)->trigger();
        EXPECT_TRUE(window->GetAction(mode)->isChecked());
        EXPECT_EQ(Central().DisplayMode(), mode);
        if (mode == ACTION_DISPLAY_OFF)
            window->GetAction(ACTION_DISPLAY_30)->trigger();
    }

    void Pull(Camera& camera) {
        if (!camera.plugged)
            return;
        const long id = IdOf(camera);
        const bool open = id >= 0 && id == Central().CurrentCameraID();
        Say("pull " + camera.config.userName + (open ? ", which is open" : ""));
        Unplug(camera);
        ++totals.pulls;
        if (open) {
            // The window notices by itself.
            EXPECT_TRUE(WaitFor([&] { return Central().CurrentCameraID() < 0; }));
            EXPECT_TRUE(WaitFor([&] { return Central().DeviceList()->GetCameraItem(id) == nullptr; }));
            ++totals.pullsOfOpen;
        } else if (Random(2) == 0) {
            Say("look again");
            Refresh();
            EXPECT_TRUE(WaitFor([&] { return ItemOf(camera) == nullptr; })) << camera.config.userName;
        }
    }

    void Bring(Camera& camera) {
        if (camera.plugged)
            return;
        Say("plug in " + camera.config.userName);
        Plug(camera);
        Refresh();
        EXPECT_TRUE(WaitFor([&] { return ItemOf(camera) != nullptr; })) << camera.config.userName;
    }

    void Step() {
        Camera& any = cameras[static_cast<size_t>(Random(static_cast<int>(cameras.size())))];
        switch (Random(14)) {
        case 0:
        case 1:
            Connect(any);
            break;
        case 2:
            Live();
            break;
        case 3:
            StopLive();
            break;
        case 4:
        case 5:
            Record(static_cast<End>(Random(3)));
            break;
        case 6:
            Snapshot();
            break;
        case 7:
        case 8:
            Zoom();
            break;
        case 9:
            Disconnect();
            break;
        case 10:
            Pull(any);
            break;
        case 11:
            for (Camera& camera : cameras)
                Bring(camera);
            break;
        case 12:
            DisplayMode();
            break;
        default:
            if (Random(2) == 0)
                Series();
            else
                Record(End::ByPull);
            break;
        }
        ++totals.steps;
        NoMessages();
        CheckState();
    }

    Footprint Rest() {
        Disconnect();
        for (Camera& camera : cameras)
            Bring(camera);
        EXPECT_TRUE(WaitFor([&] { return !Central().DeviceList()->IsDetecting(); }));
        CheckState();
        NoMessages();
        ++totals.rests;
        // The library takes lost cameras apart in the background, and waits for their silence there.
        EXPECT_TRUE(WaitFor([] { return !HasThread("ov-reaper"); }));
        Footprint now = Measure();
        WaitFor([&now, same = 0]() mutable {
            const Footprint next = Measure();
            same = next.threads == now.threads && next.descriptors == now.descriptors ? same + 1 : 0;
            now = next;
            return same > 3;
        });
        return now;
    }

    Totals totals;

private:
    std::mt19937 m_random;
    std::deque<std::string> m_steps;
};

TEST_F(Soak, TheWorkspaceStaysTrueToItsCameras) {
    const auto length = LongRun() ? std::chrono::minutes(30) : std::chrono::seconds(20);
    ASSERT_NO_FATAL_FAILURE(Open());
    const auto start = Clock::now();
    const auto minutes = [start] { return std::chrono::duration<double>(Clock::now() - start).count() / 60; };
    std::vector<Footprint> rests;
    double said = -1;
    std::printf("%8s %7s %10s %12s %8s\n", "minutes", "steps", "MiB", "descriptors", "threads");
    // A short walk goes on until it has met what it is about.
    const auto met = [this] { return totals.recordings > 0 && totals.pullsOfOpen > 0; };
    while ((Clock::now() - start < length || rests.size() < 3 || !met()) && !HasFailure()) {
        for (int i = 0; i < kStepsBetweenRests && !HasFailure(); ++i)
            Step();
        if (HasFailure())
            break;
        rests.push_back(Rest());
        if (minutes() - said >= (LongRun() ? 1 : 0)) {
            said = minutes();
            const Footprint& now = rests.back();
            std::printf("%8.1f %7d %10.1f %12d %8d\n", said, totals.steps, now.memory, now.descriptors,
                        now.threads);
            std::fflush(stdout);
        }
    }
    ASSERT_FALSE(HasFailure());
    // The first rounds load what is loaded once.
    const Footprint& warm = rests.at(1);
    const Footprint& last = rests.back();
    EXPECT_LE(last.descriptors, warm.descriptors);
    EXPECT_LE(last.threads, warm.threads);
#ifndef KOLT_SANITIZED // a sanitizer keeps freed memory for a while, to see who still uses it
    // A camera keeps the buffers of its pictures until it is pulled, so one rest alone says little.
    if (LongRun()) {
        EXPECT_LE(MedianMemory(rests, 0.75, 1), MedianMemory(rests, 0.25, 0.5) + kGrowthMiB)
            << "memory grows";
    }
#endif
    std::printf("%d steps: %d connects, %d of them refused; %d starts, %d recordings of %lld frames (%lld "
                "lost and counted), %d series of %lld pictures, %d snapshots, %d zooms, %d pulled plugs, %d "
                "of an open camera, %d of these while it recorded\n",
                totals.steps, totals.connects, totals.refusedConnects, totals.starts, totals.recordings,
                static_cast<long long>(totals.recordedFrames), static_cast<long long>(totals.lostFrames),
                totals.series, static_cast<long long>(totals.seriesPictures), totals.snapshots, totals.zooms,
                totals.pulls, totals.pullsOfOpen, totals.pullsInRecordings);
    EXPECT_GT(totals.recordings, 0);
    EXPECT_GT(totals.pullsOfOpen, 0);
}

} // namespace
} // namespace program
