#include "QCameraFixture.h"

namespace {

using Strings = std::vector<std::string>;

class Record : public QCameraFixture {
protected:
    void SetUp() override {
        QCameraFixture::SetUp();
        support::SetFreeMiB(5000);
        camera->SetOwner(&owner);
        file = folder.filePath("video.raw").toUtf8();
        path = folder.path().toUtf8();
    }
    int Begin() { return camera->StartRecordRawData(file.constData(), path.constData()); }
    QByteArray Content() {
        QFile in(file);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray("(missing)");
    }
    void PushAndWaitForRecord(uint8_t value) {
        const int64_t before = camera->GetCounters().recorded;
        doubles.PushFrame(Frame(value));
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().recorded > before; }));
    }

    QByteArray file;
    QByteArray path;
};

TEST_F(Record, TheFileIsTheFramesOneAfterTheOther) {
    Start();
    ASSERT_EQ(Begin(), 0);
    EXPECT_TRUE(camera->IsRecord());
    QByteArray expected;
    for (uint8_t i = 1; i <= 5; ++i) {
        PushAndWaitForRecord(i);
        expected += QByteArray(64 * 48, static_cast<char>(i));
    }
    EXPECT_TRUE(camera->IsRecordedSuccess());
    EXPECT_EQ(camera->StopRecord(), 0);
    EXPECT_FALSE(camera->IsRecord());
    EXPECT_FALSE(camera->IsRecordedSuccess());
    EXPECT_EQ(Content(), expected);
}

TEST_F(Record, TheFirstFrameIsNotSleptAway) {
    Start();
    SleepEx(50); // the save thread naps
    ASSERT_EQ(Begin(), 0);
    doubles.SetFreeRun(Frame(1), 10000);
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().recorded >= 20; }));
    doubles.StopFreeRun();
    ASSERT_TRUE(doubles.WaitUntil([&] {
        return camera->GetCounters().queued == camera->GetCounters().recorded;
    })) << "every queued frame was written";
    camera->StopRecord();
}

TEST_F(Record, WithoutAFrameNoFileIsLeft) {
    Start();
    ASSERT_EQ(Begin(), 0);
    EXPECT_TRUE(QFile::exists(file));
    EXPECT_EQ(camera->StopRecord(), 0);
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(Record, Refusals) {
    EXPECT_EQ(camera->StartRecordRawData(nullptr, path.constData()), -4);
    EXPECT_EQ(camera->StartRecordRawData(file.constData(), nullptr), -4);
    support::SetFreeMiB(1000);
    EXPECT_EQ(Begin(), -25);
    EXPECT_FALSE(QFile::exists(file));
    support::SetFreeMiB(1001);
    EXPECT_EQ(Begin(), 0) << "exactly 1001 is enough";
    camera->StopRecord();
    file = folder.filePath("no/such/video.raw").toUtf8();
    EXPECT_EQ(Begin(), -25);
    EXPECT_FALSE(camera->IsRecord());
    EXPECT_EQ(camera->StartRecord("x", 0), 0) << "does nothing";
    EXPECT_FALSE(camera->IsRecord());
}

TEST_F(Record, ADiskThatFillsUpClosesTheFileAndStops) {
    Start();
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(1);
    support::SetFreeMiB(1000);
    PushAndWait(Frame(2));
    ASSERT_TRUE(doubles.WaitUntil([&] { return owner.Events().size() == 2; }));
    EXPECT_EQ(owner.Events(),
              (Strings{"show Hint|File operation failed.Please make sure HDD is not full.", "stop"}));
    EXPECT_EQ(Content().size(), 64 * 48) << "what was written is kept";
    EXPECT_EQ(camera->GetCounters().recordFailures, 1);
    PushAndWait(Frame(3));
    SleepEx(30);
    EXPECT_EQ(owner.Events().size(), 2u) << "nothing more without a file";
    EXPECT_EQ(camera->StopRecord(), 0);
    EXPECT_TRUE(QFile::exists(file));
}

TEST_F(Record, AWriteErrorToo) {
    Start();
    file = folder.filePath("full.raw").toUtf8();
    ASSERT_TRUE(QFile::link("/dev/full", file));
    ASSERT_EQ(Begin(), 0);
    PushAndWait(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] { return owner.Events().size() == 2; }));
    EXPECT_EQ(owner.Events()[1], "stop");
    EXPECT_FALSE(camera->IsRecordedSuccess());
    EXPECT_EQ(camera->StopRecord(), 0);
}

TEST_F(Record, WithoutAnOwnerNothingIsWritten) {
    camera->SetOwner(nullptr);
    Start();
    ASSERT_EQ(Begin(), 0);
    PushAndWait(Frame(1));
    SleepEx(30);
    EXPECT_EQ(Content().size(), 0);
    camera->StopRecord();
}

TEST_F(Record, ASecondRecordingReplacesTheFirst) {
    Start();
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(1);
    file = folder.filePath("second.raw").toUtf8();
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(2);
    camera->StopRecord();
    EXPECT_EQ(Content(), QByteArray(64 * 48, 2));
    file = folder.filePath("video.raw").toUtf8();
    EXPECT_EQ(Content(), QByteArray(64 * 48, 1));
}

TEST_F(Record, ASmallerStreamAfterALargerOneHasItsOwnFrameSize) {
    Start();
    SleepEx(20);
    camera->StopGettingFrame();
    SetRegister(reg::Width, 32);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    ASSERT_EQ(Begin(), 0);
    doubles.PushFrame(Frame(5, 32, 48));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().recorded == 1; }));
    camera->StopRecord();
    EXPECT_EQ(Content(), QByteArray(32 * 48, 5));
}

TEST_F(Record, AStopOfTheStreamClearsTheFlag) {
    Start();
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(1);
    camera->StopGettingFrame();
    EXPECT_FALSE(camera->IsRecord());
    EXPECT_EQ(camera->StopRecord(), 0);
    EXPECT_EQ(Content().size(), 64 * 48);
}

TEST_F(Record, StopWithoutARecording) {
    EXPECT_EQ(camera->StopRecord(), 0);
}

TEST_F(Record, CaptureAndRecordingShareTheFrames) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetDataOutputFolder(folder.path());
    cfg->SetImgSaveFormat(2);
    Start();
    ASSERT_EQ(Begin(), 0);
    camera->SetImgSave();
    PushAndWaitForRecord(1);
    PushAndWaitForRecord(2);
    EXPECT_EQ(camera->GetCounters().imagesSaved, 2);
    camera->StopRecord();
}

} // namespace
