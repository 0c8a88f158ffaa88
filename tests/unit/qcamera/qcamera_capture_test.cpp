#include "QCameraFixture.h"

#include <QDirIterator>
#include <algorithm>
#include <cstring>
#include <sys/stat.h>

namespace {

using Strings = std::vector<std::string>;

class Capture : public QCameraFixture {
protected:
    void SetUp() override {
        QCameraFixture::SetUp();
        support::SetFreeMiB(5000);
        QLocalCfg* cfg = QLocalCfg::Instance();
        output = folder.filePath("out");
        QDir().mkpath(output);
        cfg->SetDataOutputFolder(output);
        cfg->SetImgSaveFormat(0);
        cfg->SetImgSaveFileNameIndexType(1);
        cfg->SetImgSavePreFileName("Image_");
        camera->SetOwner(&owner);
    }

    // Streaming with one frame in the save buffer.
    void Hold(uint8_t value = 0x31) {
        Start();
        PushAndWait(Frame(value));
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->SaveCurrentFrame() == 0; }));
    }

    QString Path(const char* name) { return folder.filePath(name); }
    QByteArray Content(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }
    Strings Files() {
        Strings names;
        QDirIterator files(output, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext())
            names.push_back(QDir(output).relativeFilePath(files.next()).toStdString());
        std::sort(names.begin(), names.end());
        return names;
    }
    int Snap(const QString& path, int type) { return camera->SnapPicture(path.toUtf8().constData(), type); }

    QString output;
};

TEST_F(Capture, APicture) {
    Hold();
    QLocalCfg::Instance()->SetImgQuality(100);
    EXPECT_EQ(Snap(Path("a.bmp"), 0), 0);
    EXPECT_EQ(Content(Path("a.bmp")), "ENCODED!");
    EXPECT_TRUE(camera->GetIsSaveImaged());
    const _OV_IMAGE_INFO_ record = doubles.LastImage();
    EXPECT_EQ(record.sourceType, 0u);
    EXPECT_EQ(record.width, 64);
    EXPECT_EQ(record.height, 48);
    EXPECT_EQ(record.sourceLength, 64u * 48u);
    EXPECT_EQ(record.imageType, 0u);
    EXPECT_EQ(record.jpegQuality, 99u);
    EXPECT_EQ(record.outputCapacity, 64u * 48u * 3u + 1024u);
    EXPECT_EQ(Snap(Path("a.jpg"), 1), 0);
    EXPECT_EQ(doubles.LastImage().imageType, 1u);
}

TEST_F(Capture, RawData) {
    Hold(0x7E);
    EXPECT_EQ(camera->SnapRawData(Path("a.raw").toUtf8().constData()), 0);
    EXPECT_EQ(Content(Path("a.raw")), QByteArray(64 * 48, 0x7E));
    EXPECT_TRUE(camera->GetIsSaveImaged());
}

TEST_F(Capture, FreeSpace) {
    Hold();
    support::SetFreeMiB(1000);
    EXPECT_EQ(Snap(Path("a.bmp"), 0), -25);
    EXPECT_EQ(camera->SnapRawData(Path("a.raw").toUtf8().constData()), -25);
    EXPECT_FALSE(QFile::exists(Path("a.bmp")));
    support::SetFreeMiB(1001);
    EXPECT_EQ(Snap(Path("a.bmp"), 0), 0);
    unsigned long long free = 9;
    QCamera::GetDiskLastSpace(nullptr, &free);
    EXPECT_EQ(free, 9u);
    QCamera::GetDiskLastSpace("/", nullptr);
    QCamera::GetDiskLastSpace("/", &free);
    EXPECT_EQ(free, 1001u);
    support::SetFreeMiB({});
    QCamera::GetDiskLastSpace("/no/such/folder", &free);
    EXPECT_EQ(free, 0u) << "the failure isn't looked at; nothing is free there";
}

TEST_F(Capture, WithoutAPathABufferOrAFormat) {
    EXPECT_EQ(camera->SaveCurrentFrame(), -4) << "no save buffer";
    EXPECT_EQ(Snap(Path("a.bmp"), 0), -24) << "nothing held";
    EXPECT_EQ(camera->SnapRawData(nullptr), -24);
    EXPECT_EQ(camera->SnapRawData(Path("a.raw").toUtf8().constData()), -24) << "no pixel type";
    EXPECT_FALSE(QFile::exists(Path("a.raw")));
    Hold();
    EXPECT_EQ(camera->SnapPicture(nullptr, 0), -24);
}

TEST_F(Capture, AfterAStopTheFormatIsGoneUntilASnapshotKeepsIt) {
    Hold();
    EXPECT_EQ(Snap(Path("a.bmp"), 0), 0);
    camera->StopGettingFrame();
    EXPECT_EQ(Snap(Path("b.bmp"), 0), 0) << "the current type is still there";
}

TEST_F(Capture, WithoutAMediaHandleWhileGrabbing) {
    Hold();
    ASSERT_TRUE(doubles.WaitForCount("OV_MP_CreateHandle", 1));
    camera->SetDisplayMode(10);
    SleepEx(60);
    camera->StopGettingFrame();
    doubles.SetResult("OV_MP_CreateHandle", 0);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    EXPECT_EQ(Snap(Path("a.bmp"), 0), -4);
}

TEST_F(Capture, TheEncodersStatusComesAsItIs) {
    Hold();
    doubles.SetResult("OV_MP_SaveImage", 0x80000002);
    EXPECT_EQ(static_cast<uint32_t>(Snap(Path("a.bmp"), 0)), 0x80000002u);
    EXPECT_EQ(QFunction::GenerateCameraOperateError(static_cast<int>(0x80000002u)), "Operation failed.");
    doubles.SetResult("OV_MP_SaveImage", 17);
    EXPECT_EQ(Snap(Path("a.bmp"), 0), 17);
    EXPECT_FALSE(QFile::exists(Path("a.bmp")));
}

TEST_F(Capture, WithoutMemoryForTheEncoder) {
    Hold();
    support::FailAllocations(64 * 48 * 3 + 1024);
    EXPECT_EQ(Snap(Path("a.bmp"), 0), -2);
    EXPECT_FALSE(QFile::exists(Path("a.bmp")));
    EXPECT_EQ(doubles.CountOf("OV_MP_SaveImage"), 0);
    support::FailAllocations({});
    EXPECT_EQ(Snap(Path("a.bmp"), 0), 0);
}

TEST_F(Capture, TheEncoderGetsAClearBufferEachTime) {
    Hold();
    bool clear = true;
    const auto look = [&] {
        const _OV_IMAGE_INFO_ record = doubles.LastImage();
        clear = clear && std::all_of(record.output, record.output + record.outputCapacity,
                                     [](uint8_t byte) { return byte == 0; });
    };
    doubles.OnCall("OV_MP_SaveImage", look);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(Snap(Path("a.bmp"), 0), 0);
    EXPECT_TRUE(clear) << "after a picture";
    doubles.SetResult("OV_MP_SaveImage", 0x80000002);
    doubles.OnCall("OV_MP_SaveImage", [&] {
        const _OV_IMAGE_INFO_ record = doubles.LastImage();
        std::memset(record.output, 0x55, record.outputCapacity);
    });
    EXPECT_NE(Snap(Path("a.bmp"), 0), 0);
    doubles.SetResult("OV_MP_SaveImage", 0);
    doubles.OnCall("OV_MP_SaveImage", look);
    EXPECT_EQ(Snap(Path("a.bmp"), 0), 0);
    EXPECT_TRUE(clear) << "after an encoder that gave up half-way";
    doubles.OnCall("OV_MP_SaveImage", {});
}

TEST_F(Capture, AJpegOfTheCameraIsSavedAsItCame) {
    Hold();
    SetRegister(reg::ImageCompressionMode, 1); // in the running stream: at its start it would be refused
    camera->IsBayerFrame();
    ASSERT_EQ(camera->GetPixelType(), OV_GVSP_JPEG);
    PushAndWait(Frame(0x5D, 64, 48, 1234));
    ASSERT_EQ(camera->SaveCurrentFrame(), 0);
    const QByteArray jpeg(1234, 0x5D);
    for (const int type : {0, 1}) {
        EXPECT_EQ(Snap(Path("a.jpg"), type), 0) << type;
        EXPECT_EQ(Content(Path("a.jpg")), jpeg) << "whatever type was asked for";
    }
    EXPECT_EQ(doubles.CountOf("OV_MP_SaveImage"), 0);
    EXPECT_FALSE(camera->GetIsSaveImaged());
    EXPECT_EQ(Snap(Path("no/such/a.jpg"), 1), -1);
    EXPECT_EQ(camera->SnapRawData(Path("a.raw").toUtf8().constData()), 0);
    EXPECT_EQ(Content(Path("a.raw")), jpeg);
    EXPECT_TRUE(camera->GetIsSaveImaged());
}

TEST_F(Capture, PathsThatCannotBeWritten) {
    Hold();
    EXPECT_EQ(Snap(Path("no/such/a.bmp"), 0), -26);
    EXPECT_EQ(camera->SnapRawData(Path("no/such/a.raw").toUtf8().constData()), -26);
    QDir().mkpath(Path("folder.bmp"));
    EXPECT_EQ(Snap(Path("folder.bmp"), 0), -25) << "exists but can't be opened";
    EXPECT_EQ(camera->SnapRawData(Path("folder.bmp").toUtf8().constData()), -25);
}

TEST_F(Capture, AFullDiskLeavesNoHalfFile) {
    Hold();
    // /dev/full takes no byte; removing a link to it leaves the device alone.
    ASSERT_TRUE(QFile::link("/dev/full", Path("full.bmp")));
    EXPECT_EQ(Snap(Path("full.bmp"), 0), -25);
    EXPECT_FALSE(QFile::exists(Path("full.bmp")));
}

TEST_F(Capture, ASnapshotHoldsItsMoment) {
    Hold(1);
    PushAndWait(Frame(2));
    EXPECT_EQ(camera->SnapRawData(Path("a.raw").toUtf8().constData()), 0);
    EXPECT_EQ(Content(Path("a.raw"))[0], 1);
    EXPECT_EQ(camera->SaveCurrentFrame(), 0);
    EXPECT_EQ(camera->SnapRawData(Path("b.raw").toUtf8().constData()), 0);
    EXPECT_EQ(Content(Path("b.raw"))[0], 2);
}

// --- series
// -----------------------------------------------------------------------------------------------------------------

TEST_F(Capture, ASpanOfThreeWithFixedNumberTwoStopsOnTheSixthFrame) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetImgSaveSpanFrames(3);
    cfg->SetCheckImgSaveFixedFrames(true);
    cfg->SetImgSaveFixedFramesNum(2);
    Hold();
    camera->SetImgSave();
    EXPECT_TRUE(camera->IsCapturing());
    for (int i = 1; i <= 6; ++i) {
        PushAndWait(Frame(static_cast<uint8_t>(i)));
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imagesSaved >= i / 3; }));
    }
    ASSERT_TRUE(doubles.WaitUntil([&] { return !camera->IsCapturing(); }));
    EXPECT_EQ(Files(), (Strings{"east/Image_1.bmp", "east/Image_2.bmp"}));
    EXPECT_EQ(owner.Events(),
              (Strings{"saved Images captured.|" + (output + "/east").toStdString(), "not capturing"}));
    EXPECT_TRUE(camera->GetIsSaveImaged());
}

TEST_F(Capture, ASeriesFollowsAFrameSizeThatChangesInMidStream) {
    Start();
    camera->SetImgSave();
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imagesSaved == 1; }));
    EXPECT_EQ(doubles.LastImage().width, 64);
    EXPECT_EQ(doubles.LastImage().height, 48);
    PushAndWait(Frame(2, 32, 24));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imagesSaved == 2; }));
    EXPECT_EQ(doubles.LastImage().width, 32);
    EXPECT_EQ(doubles.LastImage().height, 24);
    EXPECT_EQ(doubles.LastImage().sourceLength, 64u * 48) << "the stream's frame size is that of its start";
    // Too large for the stream's buffer: not received, so no picture.
    doubles.PushFrame(Frame(3, 128, 96));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().grabErrors > 0; }));
    PushAndWait(Frame(4));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imagesSaved == 3; }));
    EXPECT_EQ(doubles.LastImage().width, 64);
    camera->SetImgSave();
}

TEST_F(Capture, ASeriesByTimeStartsAtOnceAndKeepsItsSteps) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetImgSaveMode(1);
    cfg->SetImgSaveSpanTime(1);
    cfg->SetImgSaveSpanTimeUnit(1);
    cfg->SetCheckImgSaveFixedTimes(true);
    cfg->SetImgSaveFixedTimeNum(2);
    cfg->SetImgSaveFixedTimeUnit(1);
    Hold();
    doubles.SetFreeRun(Frame(1), 20000);
    camera->SetImgSave();
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imagesSaved == 1; }))
        << "the first frame";
    ASSERT_TRUE(doubles.WaitUntil([&] { return !camera->IsCapturing(); })) << "after two seconds and a half";
    // The first at once, which moves the next time one span on; then one when a span has passed beyond it.
    EXPECT_EQ(camera->GetCounters().imagesSaved, 2);
    EXPECT_EQ(owner.Events().back(), "not capturing");
}

TEST_F(Capture, AnUnknownUnitIsNoTime) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetImgSaveMode(1);
    cfg->SetImgSaveSpanTimeUnit(9);
    Hold();
    camera->SetImgSave();
    for (int i = 1; i <= 3; ++i) {
        PushAndWait(Frame(1));
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imagesSaved == i; }))
            << "every frame";
    }
}

TEST_F(Capture, ASpanOfZeroIsNoDivision) {
    for (const int span : {0, -5}) {
        QLocalCfg::Instance()->SetImgSaveSpanFrames(span);
        if (!camera->IsShotting())
            Hold();
        const int64_t before = camera->GetCounters().imagesSaved;
        camera->SetImgSave();
        PushAndWait(Frame(1));
        EXPECT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imagesSaved > before; })) << span;
        camera->SetImgSave();
    }
}

TEST_F(Capture, AnUnknownModeSavesNothing) {
    QLocalCfg::Instance()->SetImgSaveMode(5);
    Hold();
    camera->SetImgSave();
    PushAndWait(Frame(1));
    SleepEx(50);
    EXPECT_TRUE(Files().empty());
}

TEST_F(Capture, Formats) {
    Hold();
    QLocalCfg* cfg = QLocalCfg::Instance();
    for (const int format : {0, 1, 2, 9}) {
        cfg->SetImgSaveFormat(format);
        EXPECT_EQ(camera->SaveOneImage(), 0) << format;
    }
    EXPECT_EQ(Files(),
              (Strings{"east/Image_1.bmp", "east/Image_2.jpg", "east/Image_3.raw", "east/Image_4.raw"}));
}

TEST_F(Capture, NamesByTime) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetImgSaveFileNameIndexType(0);
    cfg->SetImgSavePreFileName("");
    Hold();
    EXPECT_EQ(camera->SaveOneImage(), 0);
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].size(), std::strlen("east/") + 17 + 4) << Files()[0];
}

TEST_F(Capture, AnUnknownNamingHasNoPath) {
    QLocalCfg::Instance()->SetImgSaveFileNameIndexType(4);
    Hold();
    EXPECT_EQ(camera->SaveOneImage(), -26);
    EXPECT_EQ(owner.Events(), (Strings{"show Hint|Invalid path."}));
}

TEST_F(Capture, HostileCameraNamesStayInTheFolder) {
    Hold();
    for (const char* name : {"..", "../../up", "a/b", "/etc"}) {
        camera->SetCameraName(name);
        EXPECT_EQ(camera->SaveOneImage(), 0) << name;
    }
    EXPECT_EQ(Files(), (Strings{"....up/Image_2.bmp", "_/Image_1.bmp", "ab/Image_3.bmp", "etc/Image_4.bmp"}));
}

TEST_F(Capture, AFolderThatCannotBeMade) {
    Hold();
    QFile blocker(output + "/east");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    EXPECT_EQ(camera->SaveOneImage(), -27);
    EXPECT_TRUE(owner.Events().empty()) << "without a message";
    EXPECT_EQ(camera->GetCounters().imageFailures, 1) << "but not without a trace";
}

TEST_F(Capture, AFailedFrameShowsItsMessageAndGoesToTheLog) {
    Hold();
    std::string line;
    QObject receiver;
    QObject::connect(QFunction::Instance(), &QFunction::SigShowMessage, &receiver,
                     [&](int level, const QString& source, const QString& text) {
                         line = QString("%1|%2|%3").arg(level).arg(source, text).toStdString();
                     });
    support::SetFreeMiB(10);
    EXPECT_EQ(camera->SaveOneImage(), -25);
    EXPECT_EQ(
        line,
        "1|KOLT CAPTURE|Failed to save the captured image.(File operation failed.Please make sure HDD is not "
        "full.)");
    EXPECT_EQ(owner.Events(), (Strings{"show Hint|File operation failed.Please make sure HDD is not full."}));
    QFunction::Release();
}

TEST_F(Capture, AFullDiskStopsTheSeries) {
    Hold();
    support::SetFreeMiB(10);
    camera->SetImgSave();
    PushAndWait(Frame(1));
    ASSERT_TRUE(
        doubles.WaitUntil([&] { return !owner.Events().empty() && owner.Events().back() == "stop"; }));
}

TEST_F(Capture, AnotherFailureGoesOn) {
    Hold();
    doubles.SetResult("OV_MP_SaveImage", 0x80000004);
    camera->SetImgSave();
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imageFailures == 1; }));
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imageFailures == 2; }));
    EXPECT_EQ(owner.Events(), (Strings{"show Hint|Operation failed.", "show Hint|Operation failed."}))
        << "a message each time, no stop";
}

TEST_F(Capture, AVanishedOutputFolderIsTold_Once) {
    Hold();
    QDir(output).removeRecursively();
    camera->SetImgSave();
    for (int i = 1; i <= 3; ++i) {
        PushAndWait(Frame(1));
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imageFailures == i; }));
    }
    EXPECT_EQ(owner.Events(), (Strings{"show Hint|Invalid path.", "stop"}));
    // A new series tells it again.
    camera->SetImgSave();
    camera->SetImgSave();
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return owner.Events().size() == 4; }));
}

TEST_F(Capture, AFolderWithoutPermission) {
    Hold();
    // Root may write anywhere but into a folder of the process table.
    QLocalCfg::Instance()->SetDataOutputFolder("/proc/self");
    EXPECT_EQ(camera->SaveImages(), 0);
    EXPECT_EQ(owner.Events(), (Strings{"show Hint|No permission.", "stop"}));
}

TEST_F(Capture, TogglingResets) {
    Hold();
    camera->SetImgSave();
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetIsSaveImaged(); }));
    camera->SetImgSave();
    EXPECT_FALSE(camera->IsCapturing());
    EXPECT_FALSE(camera->GetIsSaveImaged());
    camera->SetImgSave();
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().imagesSaved == 2; }));
    EXPECT_EQ(Files(), (Strings{"east/Image_1.bmp"})) << "numbers start at 1 again and overwrite";
}

TEST_F(Capture, AStopEndsTheSeries) {
    Hold();
    camera->SetImgSave();
    camera->StopGettingFrame();
    EXPECT_FALSE(camera->IsCapturing());
}

} // namespace
