// Pictures, recordings and series, read back by other means than the program's.
#include "e2e/E2eFixture.h"

#include "Camera/CCameraRef.h"
#include "Camera/QCamera.h"
#include "Common/QLocalCfg.h"
#include "Device/FeatureRegisters.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvMainWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QPrevTitleBar.h"
#include "UI/MainWindow/QRenderWidget.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>

namespace e2e {
namespace {

constexpr uint32_t kWidth = 640;
constexpr uint32_t kHeight = 480;
constexpr qint64 kFrameBytes = qint64{kWidth} * kHeight;

class Capture : public E2e {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(E2e::SetUp());
        // Slow enough that a thread without a processor for a while makes nobody lose a frame.
        camera = &AddCamera("east", [](vcam::Config& config) { config.frameRate = 10; });
        Gui([this] {
            QLocalCfg::Instance()->SetDataOutputFolder(folder.path());
            QLocalCfg::Instance()->SetImgQuality(100);
            QLocalCfg::Instance()->SetImgSaveBufferSize(60);
        });
    }
    void Begin() {
        ASSERT_NO_FATAL_FAILURE(StartProgram());
        ASSERT_NO_FATAL_FAILURE(Connect());
        ASSERT_NO_FATAL_FAILURE(StartLive());
    }
    // From now on a picture comes with each pulse of Line0.
    void UseTrigger() {
        // Not while it streams: then no frame is on its way that nobody asked for.
        ClickTool(QOrvToolBar::kStart);
        ASSERT_TRUE(Eventually([this] { return !camera->IsStreaming(); }));
        ASSERT_TRUE(LogHas("east(E-1) stopped the live view."));
        camera->WriteRegister(vcam::feature::kTriggerSets + vcam::feature::kTriggerSourceOffset, 1);
        camera->WriteRegister(vcam::feature::kTriggerSets + vcam::feature::kTriggerModeOffset, 1);
        ClickTool(QOrvToolBar::kStart);
        ASSERT_TRUE(Eventually([this] { return camera->IsStreaming(); }));
        ASSERT_TRUE(Eventually([this] { return ToolEnabled(QOrvToolBar::kRecord); }));
    }
    void Pulse(int times) {
        for (int i = 0; i < times; ++i) {
            const uint64_t before = camera->GetCounters().framesCompleted;
            camera->FireLine(0);
            ASSERT_TRUE(Eventually([&] { return camera->GetCounters().framesCompleted > before; }));
        }
    }
    _CAMERA_COUNTERS_ Counters() const {
        return Gui([this] {
            const CCameraRef open = CCameraRef::ById(Central()->CurrentCameraID());
            return open ? open->GetCounters() : _CAMERA_COUNTERS_{};
        });
    }
    QString RecordText() const {
        return Gui([this] {
            const QLabel* const time = Render()->TitleBar()->TimeLabel();
            return time->isVisible() ? time->text() : QString();
        });
    }
    static QByteArray Contents(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QFile::ReadOnly)) << path.toStdString();
        return file.readAll();
    }
    static uint32_t NumberIn(const QByteArray& grey, qint64 at = 0) {
        uint32_t number = 0;
        EXPECT_TRUE(vcam::ReadFrameNumber(reinterpret_cast<const uint8_t*>(grey.constData()) + at, kWidth,
                                          kWidth, kHeight, number));
        return number;
    }
    // As ImageMagick reads it.
    QByteArray GreyOf(const std::vector<std::string>& source) const {
        const QString raw = folder.filePath("grey");
        std::vector<std::string> command{"convert"};
        command.insert(command.end(), source.begin(), source.end());
        command.insert(command.end(), {"-depth", "8", "gray:" + raw.toStdString()});
        const auto converted = kolt::test::run(command);
        EXPECT_EQ(converted.exitCode, 0) << converted.output;
        return Contents(raw);
    }

    vcam::VirtualCamera* camera = nullptr;
};

TEST_F(Capture, SnapshotsInThreeFormats) {
    ASSERT_NO_FATAL_FAILURE(Begin());
    ASSERT_NO_FATAL_FAILURE(ExpectPatches(*camera));
    for (const char* const kind : {"bmp", "jpg", "raw"}) {
        SCOPED_TRACE(kind);
        const QString path = folder.filePath(QString("shot.") + kind);
        if (QString(kind) == "bmp")
            ClickTool(QOrvToolBar::kCapture);
        else
            ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_FILE, ACTION_SAVE_IMG));
        if (QString(kind) == "bmp") {
            WaitForDialog<QDialog>();
            Screenshot("snapshot-dialog");
        }
        ASSERT_NO_FATAL_FAILURE(AnswerFileDialog("Save Image", path));
        ASSERT_NO_FATAL_FAILURE(ExpectNotice("Images captured.", std::string("snapshot-notice-") + kind));
        const std::string file = path.toStdString();
        std::vector<std::string> source{file};
        if (QString(kind) == "raw") {
            EXPECT_EQ(QFileInfo(path).size(), kFrameBytes);
            source = {"-size", "640x480", "-depth", "8", "gray:" + file};
        } else {
            EXPECT_EQ(kolt::test::run({"identify", "-format", "%m %w %h", file}).output,
                      QString(kind) == "bmp" ? "BMP3 640 480" : "JPEG 640 480");
        }
        const QByteArray grey = GreyOf(source);
        ASSERT_EQ(grey.size(), kFrameBytes);
        EXPECT_GT(NumberIn(grey), 0u);
        for (const vcam::Patch& patch : camera->Patches()) {
            const auto at =
                static_cast<int>((patch.y + patch.height / 2) * kWidth + patch.x + patch.width / 2);
            EXPECT_NEAR(static_cast<uint8_t>(grey[at]),
                        0.299 * patch.red + 0.587 * patch.green + 0.114 * patch.blue, 8)
                << patch.name;
        }
    }
    EXPECT_TRUE(camera->IsStreaming());
}

TEST_F(Capture, ARecordingHoldsEveryFrame) {
    constexpr int kFrames = 12;
    ASSERT_NO_FATAL_FAILURE(Begin());
    ASSERT_NO_FATAL_FAILURE(UseTrigger());
    const QString path = folder.filePath("video.raw");
    ClickTool(QOrvToolBar::kRecord);
    ASSERT_NO_FATAL_FAILURE(AnswerFileDialog("Save Record", path));
    EXPECT_TRUE(Eventually([this] { return RecordText().startsWith("00:0"); }));
    ASSERT_NO_FATAL_FAILURE(Pulse(kFrames));
    EXPECT_TRUE(Eventually([&] { return Counters().recorded == kFrames; })) << Counters().recorded;
    EXPECT_EQ(Gui([this] { return window->GetAction(ACTION_RECORD)->text(); }), "Stop Recording");
    Screenshot("recording");
    ClickTool(QOrvToolBar::kRecord);
    ASSERT_NO_FATAL_FAILURE(ExpectNotice("Video files saved.", "recording-saved"));
    EXPECT_TRUE(Eventually([this] { return RecordText().isEmpty(); })) << RecordText().toStdString();
    const QByteArray video = Contents(path);
    ASSERT_EQ(video.size(), kFrames * kFrameBytes);
    const uint32_t first = NumberIn(video);
    for (int i = 1; i < kFrames; ++i)
        EXPECT_EQ(NumberIn(video, i * kFrameBytes), first + static_cast<uint32_t>(i));
}

// Stopping the live view ends a recording first.
TEST_F(Capture, ARecordingOfTheRunningStreamEndsWithIt) {
    ASSERT_NO_FATAL_FAILURE(Begin());
    const QString path = folder.filePath("video.raw");
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_CAMERA, ACTION_RECORD));
    ASSERT_NO_FATAL_FAILURE(AnswerFileDialog("Save Record", path));
    EXPECT_TRUE(Eventually([&] { return Counters().recorded >= 20; }));
    ClickTool(QOrvToolBar::kStart);
    ASSERT_NO_FATAL_FAILURE(ExpectNotice("Video files saved."));
    EXPECT_TRUE(Eventually([&] { return !camera->IsStreaming(); }));
    const _CAMERA_COUNTERS_ counters = Counters();
    const QByteArray video = Contents(path);
    EXPECT_EQ(video.size(), counters.recorded * kFrameBytes);
    EXPECT_EQ(counters.overwritten + counters.refused + counters.unqueued, 0);
    uint32_t expected = NumberIn(video);
    for (qint64 at = 0; at < video.size(); at += kFrameBytes)
        EXPECT_EQ(NumberIn(video, at), expected++);
}

TEST_F(Capture, SeriesByFrame) {
    Gui([] {
        QLocalCfg* settings = QLocalCfg::Instance();
        settings->SetSaveMode(1);
        settings->SetImgSaveMode(0);
        settings->SetImgSaveSpanFrames(3);
        settings->SetCheckImgSaveFixedFrames(true);
        settings->SetImgSaveFixedFramesNum(4);
        settings->SetImgSaveFormat(0);
        settings->SetImgSaveFileNameIndexType(1);
    });
    ASSERT_NO_FATAL_FAILURE(Begin());
    ASSERT_NO_FATAL_FAILURE(UseTrigger());
    ClickTool(QOrvToolBar::kRecord);
    EXPECT_TRUE(Eventually([this] { return RecordText() == "Capturing..."; }));
    ASSERT_NO_FATAL_FAILURE(Pulse(6));
    EXPECT_TRUE(Eventually([&] { return Counters().imagesSaved == 2; })) << Counters().imagesSaved;
    Screenshot("series-by-frame");
    ASSERT_NO_FATAL_FAILURE(Pulse(6));
    // It ends by itself.
    ASSERT_NO_FATAL_FAILURE(ExpectNotice("Images captured.", "series-by-frame-saved"));
    EXPECT_TRUE(Eventually([this] { return RecordText().isEmpty(); }));
    EXPECT_EQ(Gui([this] { return window->GetAction(ACTION_RECORD)->text(); }), "Start Recording");
    const QDir files(folder.filePath("east(E-1)"));
    ASSERT_THAT(files.entryList(QDir::Files, QDir::Name),
                testing::ElementsAre("Image_1.bmp", "Image_2.bmp", "Image_3.bmp", "Image_4.bmp"));
    uint32_t last = 0;
    for (const QString& name : files.entryList(QDir::Files, QDir::Name)) {
        const uint32_t number = NumberIn(GreyOf({files.filePath(name).toStdString()}));
        EXPECT_TRUE(last == 0 || number == last + 3) << number << " after " << last;
        last = number;
    }
}

TEST_F(Capture, SeriesByTime) {
    Gui([] {
        QLocalCfg* settings = QLocalCfg::Instance();
        settings->SetSaveMode(1);
        settings->SetImgSaveMode(1);
        settings->SetImgSaveSpanTime(1);
        settings->SetImgSaveSpanTimeUnit(1);
        settings->SetCheckImgSaveFixedTimes(true);
        settings->SetImgSaveFixedTimeNum(5);
        settings->SetImgSaveFixedTimeUnit(1);
        settings->SetImgSaveFormat(1);
        settings->SetImgSaveFileNameIndexType(0);
    });
    ASSERT_NO_FATAL_FAILURE(Begin());
    const QDateTime begun = QDateTime::currentDateTime();
    ASSERT_NO_FATAL_FAILURE(ChooseMenu(MENU_CAMERA, ACTION_RECORD));
    EXPECT_TRUE(Eventually([this] { return RecordText() == "Capturing..."; }));
    Screenshot("series-by-time");
    ASSERT_NO_FATAL_FAILURE(ExpectNotice("Images captured."));
    const QDir files(folder.filePath("east(E-1)"));
    const QStringList names = files.entryList(QDir::Files, QDir::Name);
    // The rhythm counts from the end of the first span, and the end comes after five seconds and half a span.
    // Frames that come late are saved late.
    ASSERT_GE(names.size(), 2) << "at once, and two spans later";
    std::vector<QDateTime> times;
    for (const QString& name : names) {
        times.push_back(QDateTime::fromString(name.mid(6, 17), "yyyyMMddhhmmsszzz"));
        EXPECT_TRUE(times.back().isValid()) << name.toStdString();
        EXPECT_EQ(
            kolt::test::run({"identify", "-format", "%m %w %h", files.filePath(name).toStdString()}).output,
            "JPEG 640 480");
    }
    EXPECT_GE(begun.msecsTo(times[1]), 2000);
    EXPECT_LE(names.size(), 5);
}

} // namespace
} // namespace e2e
