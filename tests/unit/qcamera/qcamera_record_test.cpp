#include "QCameraFixture.h"

#include <condition_variable>
#include <mutex>
#include <thread>

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

// Holds the save thread inside the encoder until it is let go.
class Gate {
public:
    void Hold() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_held = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_open; });
    }
    void WaitUntilHeld() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_held; });
    }
    void LetGo() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex; // guards the two below
    std::condition_variable m_changed;
    bool m_held = false;
    bool m_open = false;
};

TEST_F(Record, ASecondRecordingBeginsWithItsOwnFrames) {
    QLocalCfg::Instance()->SetDataOutputFolder(folder.path());
    Gate gate;
    doubles.OnCall("OV_MP_SaveImage", [&gate] { gate.Hold(); });
    Start();
    ASSERT_EQ(Begin(), 0);
    camera->SetImgSave();
    PushAndWait(Frame(1));
    gate.WaitUntilHeld();
    PushAndWait(Frame(2));
    PushAndWait(Frame(3));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().queued == 3; }));
    camera->SetImgSave();
    ASSERT_EQ(camera->StopRecord(), 0);
    gate.LetGo();
    file = folder.filePath("second.raw").toUtf8();
    ASSERT_EQ(Begin(), 0);
    EXPECT_EQ(camera->GetCounters().cleared, 2) << "those that the first one left";
    PushAndWaitForRecord(9);
    camera->StopRecord();
    EXPECT_EQ(Content(), QByteArray(64 * 48, 9));
    const _CAMERA_COUNTERS_ counters = camera->GetCounters();
    EXPECT_EQ(counters.queued, 4);
    EXPECT_EQ(counters.taken, 2);
}

TEST_F(Record, ASnapshotTakesNoFramesPlace) {
    QLocalCfg::Instance()->SetDataOutputFolder(folder.path());
    Start();
    for (uint8_t round = 0; round < 5; ++round) {
        Gate gate;
        doubles.OnCall("OV_MP_SaveImage", [&gate] { gate.Hold(); });
        ASSERT_EQ(Begin(), 0);
        const int64_t before = camera->GetCounters().recorded;
        camera->SetImgSave();
        PushAndWait(Frame(1));
        gate.WaitUntilHeld();
        PushAndWait(Frame(2));
        std::thread snapshot([this] { camera->SaveCurrentFrame(); });
        gate.LetGo();
        snapshot.join();
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().recorded == before + 2; }));
        camera->SetImgSave();
        camera->StopRecord();
        EXPECT_EQ(Content(), QByteArray(64 * 48, 1) + QByteArray(64 * 48, 2)) << "round " << int(round);
    }
}

TEST_F(Record, CountersOutliveTheStream) {
    Start();
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(1);
    ASSERT_EQ(camera->StopRecord(), 0);
    ASSERT_EQ(camera->StopGettingFrame(), 0);
    EXPECT_EQ(camera->GetCounters().taken, 1);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(2);
    EXPECT_EQ(camera->GetCounters().taken, 2);
    EXPECT_EQ(camera->GetCounters().queued, 2);
    camera->StopRecord();
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
