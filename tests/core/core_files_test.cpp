// Pictures and recordings of real frames, read back.
#include "core/CoreFixture.h"

#include "Common/QLocalCfg.h"

#include <QDir>
#include <QFile>
#include <QImage>

namespace core {
namespace {

class Files : public Fixture {
protected:
    bool Hold() {
        return WaitUntil([&] { return camera->SaveCurrentFrame() == 0; });
    }
    QByteArray Path(const char* name) { return folder.filePath(name).toUtf8(); }
    // From now on the camera sends frames of this size without a word.
    void ChangeSize(uint32_t width, uint32_t height) {
        vcam::Faults faults;
        faults.changedWidth = width;
        faults.changedHeight = height;
        device->SetFaults(faults);
    }
    bool WaitForRecorded(int64_t more) {
        const int64_t wanted = camera->GetCounters().recorded + more;
        return WaitUntil([&] { return camera->GetCounters().recorded >= wanted; });
    }
    bool WaitForPictures(int64_t more) {
        const int64_t wanted = camera->GetCounters().imagesSaved + more;
        return WaitUntil([&] { return camera->GetCounters().imagesSaved >= wanted; });
    }
};

TEST_F(Files, PicturesReadBackByAnotherProgram) {
    StartDevice([](vcam::Config& c) { c.pixelFormat = 0x02180014; });
    QLocalCfg::Instance()->SetDataOutputFolder(folder.path());
    QLocalCfg::Instance()->SetImgQuality(100);
    ASSERT_NO_FATAL_FAILURE(Stream());
    ASSERT_TRUE(WaitForFrames(2));
    ASSERT_TRUE(Hold());
    ASSERT_EQ(camera->SnapPicture(Path("a.bmp").constData(), 0), 0);
    ASSERT_EQ(camera->SnapPicture(Path("a.jpg").constData(), 1), 0);
    ASSERT_EQ(camera->SnapRawData(Path("a.raw").constData()), 0);
    for (const char* name : {"a.bmp", "a.jpg"}) {
        const QImage image(folder.filePath(name));
        ASSERT_EQ(image.width(), 640) << name;
        ASSERT_EQ(image.height(), 480) << name;
        for (const vcam::Patch& patch : device->Patches()) {
            const QColor c = image.pixelColor(static_cast<int>(patch.x + patch.width / 2),
                                              static_cast<int>(patch.y + patch.height / 2));
            EXPECT_NEAR(c.red(), patch.red, 6) << name << " " << patch.name;
            EXPECT_NEAR(c.green(), patch.green, 6) << name << " " << patch.name;
            EXPECT_NEAR(c.blue(), patch.blue, 6) << name << " " << patch.name;
        }
    }
    EXPECT_EQ(QFile(folder.filePath("a.raw")).size(), 640 * 480 * 3);
}

// Slow cameras with large queues: a thread that gets no processor for seconds makes nobody lose a frame.
TEST_F(Files, ARecordingHasEveryFrameOnce) {
    StartDevice([](vcam::Config& c) { c.frameRate = 20; });
    QLocalCfg::Instance()->SetImgSaveBufferSize(100);
    ASSERT_NO_FATAL_FAILURE(Stream());
    ASSERT_TRUE(WaitForFrames(3));
    const QByteArray file = Path("video.raw");
    ASSERT_EQ(camera->StartRecordRawData(file.constData(), folder.path().toUtf8().constData()), 0);
    ASSERT_TRUE(WaitUntil([&] { return camera->GetCounters().recorded >= 60; }));
    ASSERT_EQ(camera->StopRecord(), 0);
    QFile in(file);
    ASSERT_TRUE(in.open(QIODevice::ReadOnly));
    const QByteArray bytes = in.readAll();
    const int frame = 640 * 480;
    ASSERT_EQ(bytes.size() % frame, 0);
    ASSERT_EQ(bytes.size() / frame, camera->GetCounters().recorded);
    uint32_t former = 0;
    for (int at = 0; at < bytes.size(); at += frame) {
        uint32_t number = 0;
        ASSERT_TRUE(vcam::ReadFrameNumber(reinterpret_cast<const uint8_t*>(bytes.constData()) + at, 640, 640,
                                          480, number));
        EXPECT_TRUE(former == 0 || number == former + 1) << number << " after " << former;
        former = number;
    }
}

TEST_F(Files, ARecordingOutlivesChangesOfTheFrameSize) {
    constexpr int64_t kSome = 10;
    StartDevice([](vcam::Config& c) { c.frameRate = 20; });
    QLocalCfg::Instance()->SetImgSaveBufferSize(100);
    ASSERT_NO_FATAL_FAILURE(Stream());
    ASSERT_TRUE(WaitForFrames(3));
    const QByteArray file = Path("video.raw");
    ASSERT_EQ(camera->StartRecordRawData(file.constData(), folder.path().toUtf8().constData()), 0);
    ASSERT_TRUE(WaitForRecorded(kSome));
    ChangeSize(320, 240);
    ASSERT_TRUE(WaitUntil([&] { return camera->GetWidth() == 320; }));
    ASSERT_TRUE(WaitForRecorded(kSome));
    // Larger frames don't fit the stream's buffers: none comes, each is counted, and nothing is overwritten.
    const int64_t errors = camera->GetCounters().grabErrors;
    ChangeSize(800, 600);
    ASSERT_TRUE(WaitUntil([&] { return camera->GetCounters().grabErrors >= errors + kSome; }));
    EXPECT_EQ(camera->GetWidth(), 320u);
    ChangeSize(0, 0);
    ASSERT_TRUE(WaitUntil([&] { return camera->GetWidth() == 640; }));
    ASSERT_TRUE(WaitForRecorded(kSome));
    ASSERT_EQ(camera->StopRecord(), 0);
    EXPECT_EQ(owner.messages, 0) << owner.last;
    // Each frame takes as much of the file as those at the start of the stream: a smaller one stands at the
    // front, and behind it is what the last larger one left.
    const int whole = 640 * 480, part = 320 * 240;
    QFile in(file);
    ASSERT_TRUE(in.open(QIODevice::ReadOnly));
    ASSERT_EQ(camera->GetCounters().overwritten, 0);
    ASSERT_EQ(in.size(), camera->GetCounters().recorded * whole);
    int64_t large = 0, small = 0;
    uint32_t former = 0;
    QByteArray formerLarge;
    while (!in.atEnd()) {
        const QByteArray bytes = in.read(whole);
        if (!formerLarge.isEmpty() && bytes.mid(part) == formerLarge.mid(part)) {
            EXPECT_NE(bytes.left(part), formerLarge.left(part));
            ++small;
            continue;
        }
        uint32_t number = 0;
        ASSERT_TRUE(vcam::ReadFrameNumber(reinterpret_cast<const uint8_t*>(bytes.constData()), 640, 640, 480,
                                          number));
        EXPECT_GT(number, former);
        former = number;
        formerLarge = bytes;
        ++large;
    }
    EXPECT_GE(large, 2 * kSome);
    EXPECT_GE(small, kSome);
}

TEST_F(Files, ASeriesFollowsAChangeOfTheFrameSize) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetDataOutputFolder(folder.path());
    cfg->SetImgSaveFormat(0);
    cfg->SetImgSaveFileNameIndexType(1);
    cfg->SetImgSaveSpanFrames(1);
    cfg->SetCheckImgSaveFixedFrames(false);
    ASSERT_NO_FATAL_FAILURE(Stream());
    ASSERT_TRUE(WaitForFrames(3));
    camera->SetImgSave();
    ASSERT_TRUE(WaitForPictures(3));
    ChangeSize(320, 240);
    ASSERT_TRUE(WaitUntil([&] { return camera->GetWidth() == 320; }));
    ASSERT_TRUE(WaitForPictures(40)); // the queue's frames of the former size are among them
    camera->SetImgSave();
    ASSERT_TRUE(WaitUntil([&] {
        const _CAMERA_COUNTERS_ c = camera->GetCounters();
        return c.queued == c.taken + c.overwritten + c.cleared;
    }));
    EXPECT_EQ(camera->GetCounters().imageFailures, 0);
    EXPECT_EQ(owner.messages, 0) << owner.last;
    const auto size = [&](int64_t number) {
        return QImage(folder.filePath(QString("core/Image_%1.bmp").arg(number))).size();
    };
    const int64_t saved = QDir(folder.filePath("core")).entryList({"*.bmp"}, QDir::Files).size();
    ASSERT_GE(saved, 43);
    EXPECT_EQ(size(1), QSize(640, 480));
    EXPECT_EQ(size(saved - 1), QSize(320, 240));
    for (int64_t number = 1; number < saved; ++number)
        EXPECT_TRUE(size(number) == QSize(640, 480) || size(number) == QSize(320, 240)) << number;
}

TEST_F(Files, ASeriesOfPictures) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetDataOutputFolder(folder.path());
    cfg->SetImgSaveFormat(1);
    cfg->SetImgSaveFileNameIndexType(1);
    cfg->SetImgSaveSpanFrames(2);
    cfg->SetCheckImgSaveFixedFrames(true);
    cfg->SetImgSaveFixedFramesNum(5);
    ASSERT_NO_FATAL_FAILURE(Stream());
    camera->SetImgSave();
    ASSERT_TRUE(WaitUntil([&] { return owner.saves == 1; }));
    EXPECT_FALSE(camera->IsCapturing());
    const QStringList names = QDir(folder.filePath("core")).entryList(QDir::Files, QDir::Name);
    EXPECT_EQ(names,
              (QStringList{"Image_1.jpg", "Image_2.jpg", "Image_3.jpg", "Image_4.jpg", "Image_5.jpg"}));
    for (const QString& name : names)
        EXPECT_EQ(QImage(folder.filePath("core/" + name)).width(), 640) << name.toStdString();
}

} // namespace
} // namespace core
