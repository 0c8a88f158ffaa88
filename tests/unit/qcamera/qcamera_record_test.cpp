#include "QCameraFixture.h"
#include "support/DiskDouble.h"

#include <cerrno>
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
    void TearDown() override {
        disk.Reset();
        QCameraFixture::TearDown();
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

    // The error of a full disk, told to the owner.
    const std::string kShown = "show Hint|File operation failed.Please make sure HDD is not full.";
    support::DiskDouble& disk = support::DiskDouble::Get();
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
    EXPECT_EQ(owner.Events(), (Strings{kShown, "stop"}));
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

TEST_F(Record, ADiskThatStopsForAWhileLosesNoFrame) {
    constexpr uint16_t kWidth = 1024, kHeight = 1024;
    SetRegister(reg::Width, kWidth);
    SetRegister(reg::Height, kHeight);
    Start();
    ASSERT_EQ(Begin(), 0);
    disk.Stop();
    // Far more than the queue holds.
    QByteArray expected;
    for (uint8_t i = 1; i <= 40; ++i) {
        const int64_t before = camera->GetCounters().recorded;
        doubles.PushFrame(Frame(i, kWidth, kHeight));
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().recorded > before; }));
        expected += QByteArray(kWidth * kHeight, static_cast<char>(i));
    }
    EXPECT_EQ(camera->GetCounters().overwritten, 0);
    EXPECT_EQ(Content().size(), 0) << "nothing has reached the disk so far";
    disk.GoOn();
    EXPECT_EQ(camera->StopRecord(), 0);
    EXPECT_EQ(Content(), expected) << "in order";
    EXPECT_TRUE(owner.Events().empty());
}

TEST_F(Record, AFrameThatTheDiskRefusesLaterStopsTheRecording) {
    Start();
    ASSERT_EQ(Begin(), 0);
    disk.FailFrom(0, EIO);
    doubles.PushFrame(Frame(1));
    ASSERT_TRUE(doubles.WaitUntil([&] {
        if (owner.Events().empty())
            doubles.PushFrame(Frame(2));
        return owner.Events().size() == 2;
    }));
    EXPECT_EQ(owner.Events(), (Strings{kShown, "stop"}));
    const _CAMERA_COUNTERS_ counters = camera->GetCounters();
    EXPECT_EQ(counters.recorded, 0) << "those that had been counted are failures now";
    EXPECT_GE(counters.recordFailures, 2);
    EXPECT_EQ(camera->StopRecord(), 0);
    EXPECT_EQ(owner.Events().size(), 2u) << "told once";
}

TEST_F(Record, AFailureThatOnlyTheStopMeetsIsTold) {
    Start();
    ASSERT_EQ(Begin(), 0);
    disk.Stop();
    PushAndWaitForRecord(1);
    PushAndWaitForRecord(2);
    disk.FailFrom(0, EIO);
    disk.GoOn();
    EXPECT_EQ(camera->StopRecord(), 0);
    EXPECT_EQ(owner.Events(), (Strings{kShown}));
    const _CAMERA_COUNTERS_ counters = camera->GetCounters();
    EXPECT_EQ(counters.recorded, 0);
    EXPECT_EQ(counters.recordFailures, 2);
    EXPECT_EQ(counters.taken, counters.recorded + counters.recordFailures + counters.discarded);
    EXPECT_TRUE(QFile::exists(file));
}

TEST_F(Record, ADiskWithoutAnyMoreRoomIsToldByTheFrameItself) {
    Start();
    disk.FailReserving(ENOSPC);
    disk.FailFrom(64 * 48, ENOSPC);
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(1);
    PushAndWait(Frame(2));
    ASSERT_TRUE(doubles.WaitUntil([&] { return owner.Events().size() == 2; }));
    EXPECT_EQ(owner.Events(), (Strings{kShown, "stop"}));
    EXPECT_EQ(camera->GetCounters().recorded, 1);
    EXPECT_EQ(camera->GetCounters().recordFailures, 1);
    EXPECT_EQ(Content(), QByteArray(64 * 48, 1));
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

TEST_F(Record, SmallerFramesInMidStreamStandAtTheFrontOfTheirPlaces) {
    Start();
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(1);
    doubles.PushFrame(Frame(2, 32, 24));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().recorded == 2; }));
    EXPECT_EQ(camera->GetWidth(), 32u);
    camera->StopRecord();
    // Behind it is what the larger frame left in the buffer.
    EXPECT_EQ(Content(), QByteArray(64 * 48, 1) + QByteArray(32 * 24, 2) + QByteArray(64 * 48 - 32 * 24, 1));
}

TEST_F(Record, FramesTooLargeInMidStreamAreCountedAndNotRecorded) {
    Start();
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(1);
    const int64_t errors = camera->GetCounters().grabErrors;
    doubles.PushFrame(Frame(2, 128, 96));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetCounters().grabErrors > errors; }));
    PushAndWaitForRecord(3);
    camera->StopRecord();
    EXPECT_EQ(Content(), QByteArray(64 * 48, 1) + QByteArray(64 * 48, 3));
}

TEST_F(Record, AFrameSizeThatGrowsMakesLaterFramesLonger) {
    Start();
    ASSERT_EQ(Begin(), 0);
    PushAndWaitForRecord(1);
    SetRegister(reg::PixelFormat, static_cast<uint32_t>(OV_GVSP_BAYER_RG12));
    ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetFrameSize() == 64 * 48 * 2; }))
        << "the display thread asks for the format";
    PushAndWaitForRecord(2);
    camera->StopRecord();
    const QByteArray content = Content();
    ASSERT_EQ(content.size(), 64 * 48 + 64 * 48 * 2);
    EXPECT_EQ(content.left(2 * 64 * 48), QByteArray(64 * 48, 1) + QByteArray(64 * 48, 2));
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
