// Everything at once for a long time: a stream at the full rate of its link with recordings, snapshots,
// series, starts, stops and new connections. Ten minutes with KOLT_SOAK=1 (KOLT_SOAK_SECONDS asks for another
// length), a few seconds otherwise.
#include "core/CoreFixture.h"

#include "Common/QLocalCfg.h"
#include "support/ResidentMemory.h"

#include <QDir>
#include <QFile>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace core {
namespace {

constexpr uint32_t kWidth = 1920, kHeight = 1080;
constexpr int64_t kFrame = int64_t{kWidth} * kHeight;
constexpr int64_t kRecordedAtLeast = 100;
constexpr int kPicturesOfSeries = 10;
constexpr auto kBetweenProbes = std::chrono::milliseconds(250);
constexpr double kGrowthMiB = 16;

std::chrono::seconds Length() {
    const char* wanted = std::getenv("KOLT_SOAK_SECONDS");
    return std::chrono::seconds(wanted ? std::atoi(wanted) : Rounds(6, 600));
}

struct Total {
    int rounds = 0;
    int snapshots = 0;
    int probes = 0;
    int64_t sent = 0;
    int64_t received = 0;
    int64_t afterSilence = 0;
    int64_t taken = 0; // received in all, those after a silence included
    int64_t libraryLost = 0;
    int64_t displayed = 0;
    int64_t redrawn = 0;
    int64_t skipped = 0;
    int64_t undrawn = 0;
};

class Soak : public Fixture {
protected:
    void SetUp() override {
        Fixture::SetUp();
        config.sensorWidth = kWidth;
        config.sensorHeight = kHeight;
        config.frameRate = 120; // two of the 2.5 Gbit/s of the link; exposure and read-out allow no more
        QLocalCfg* cfg = QLocalCfg::Instance();
        cfg->SetDataOutputFolder(folder.path());
        cfg->SetImgSaveFileNameIndexType(1);
        cfg->SetImgSaveSpanFrames(2);
        cfg->SetCheckImgSaveFixedFrames(true);
        cfg->SetImgSaveFixedFramesNum(kPicturesOfSeries);
        cfg->SetAutoCheckThrowFrame(true); // a frame is either received or lost
    }

    void Snapshot(int kind) {
        const QByteArray path = folder.filePath("snapshot").toUtf8();
        ASSERT_TRUE(WaitUntil([&] { return camera->SaveCurrentFrame() == 0; }));
        ASSERT_EQ(kind == 2 ? camera->SnapRawData(path.constData())
                            : camera->SnapPicture(path.constData(), kind),
                  0);
        EXPECT_GT(QFile(path).size(), 10000);
        QFile::remove(path);
        ++total.snapshots;
    }

    // Frames stand in the file in the order of their numbers; the numbers that lack are frames that were
    // counted as lost.
    void CheckFile(const QByteArray& path, int64_t frames, int64_t counted) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        ASSERT_EQ(file.size(), frames * kFrame);
        int64_t missing = 0;
        uint32_t former = 0;
        for (int64_t i = 0; i < frames; ++i) {
            const QByteArray bytes = file.read(kFrame);
            uint32_t number = 0;
            ASSERT_TRUE(vcam::ReadFrameNumber(reinterpret_cast<const uint8_t*>(bytes.constData()), kWidth,
                                              kWidth, kHeight, number));
            if (former != 0) {
                ASSERT_GT(number, former) << "frame " << i;
                missing += number - former - 1;
            }
            former = number;
        }
        EXPECT_LE(missing, counted);
    }

    int64_t LibraryLost() {
        _OV_MATCH_INFO_NET_DETECT_ counts{};
        EXPECT_EQ(camera->GetMatchInfoNetDetect(&counts), 0);
        return static_cast<int64_t>(counts.lostFrames) + counts.errorCount;
    }

    void Record() {
        const QByteArray path = folder.filePath("soak.raw").toUtf8();
        const _CAMERA_COUNTERS_ before = camera->GetCounters();
        const int64_t lostBefore = LibraryLost();
        ASSERT_EQ(camera->StartRecordRawData(path.constData(), folder.path().toUtf8().constData()), 0);
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(WaitUntil([&] {
                return camera->GetCounters().recorded >= before.recorded + kRecordedAtLeast * (i + 1) / 3;
            }));
            ASSERT_NO_FATAL_FAILURE(Snapshot(i));
        }
        ASSERT_EQ(camera->StopRecord(), 0);
        _CAMERA_COUNTERS_ after{};
        EXPECT_TRUE(WaitUntil([&] {
            after = camera->GetCounters();
            return after.taken - before.taken == after.recorded - before.recorded + after.recordFailures -
                                                     before.recordFailures + after.discarded -
                                                     before.discarded;
        })) << after.taken
            << " frames taken";
        EXPECT_EQ(after.recordFailures, 0);
        CheckFile(path, after.recorded - before.recorded,
                  after.overwritten - before.overwritten + LibraryLost() - lostBefore);
        QFile::remove(path);
    }

    void Series() {
        const int saves = owner.saves;
        const int64_t before = camera->GetCounters().imagesSaved;
        camera->SetImgSave();
        ASSERT_TRUE(WaitUntil([&] { return owner.saves > saves; }));
        EXPECT_EQ(camera->GetCounters().imagesSaved, before + kPicturesOfSeries);
        QDir pictures(folder.filePath("core"));
        EXPECT_EQ(pictures.entryList(QDir::Files).size(), kPicturesOfSeries);
        pictures.removeRecursively();
    }

    void StopAndCheck() {
        // Waiting for a trigger the camera sends nothing more, and what it has sent arrives. That the last
        // frames before the silence are lost shows with the next one, so there is one now and then.
        ASSERT_EQ(camera->SetEnumerationNodePropertyValue("TriggerMode", 1), 1);
        int64_t sent = 0, received = 0, lost = 0;
        auto probe = std::chrono::steady_clock::now() + kBetweenProbes;
        EXPECT_TRUE(WaitUntil([&] {
            const vcam::Counters counters = device->GetCounters();
            sent = static_cast<int64_t>(counters.framesCompleted);
            lost = LibraryLost();
            if (counters.framesStarted != counters.framesCompleted + counters.framesAborted)
                return false;
            received = camera->GetRecvFrameNum();
            if (sent - sentBefore == received + lost)
                return true;
            if (std::chrono::steady_clock::now() > probe) {
                probe = std::chrono::steady_clock::now() + kBetweenProbes;
                EXPECT_EQ(camera->OnTimerSoftwareTrig(), 1);
                ++total.probes;
            }
            return false;
        })) << sent - sentBefore
            << " frames sent, " << received << " received, " << lost << " lost by the library";
        ASSERT_EQ(camera->StopGettingFrame(), 0);
        ASSERT_TRUE(WaitUntil([&] { return !device->IsStreaming(); }));
        ASSERT_EQ(camera->SetEnumerationNodePropertyValue("TriggerMode", 0), 1);
        _CAMERA_COUNTERS_ c{};
        EXPECT_TRUE(WaitUntil([&] {
            c = camera->GetCounters();
            return c.received == c.displayed - c.redrawn + c.skipped + c.undrawn;
        })) << c.received
            << " received, " << c.displayed << " displayed";
        EXPECT_EQ(c.queued, c.taken + c.overwritten + c.refused + c.cleared + c.unqueued);
        EXPECT_EQ(c.refused + c.unqueued + c.drawsRefused + c.imageFailures, 0);
        total.sent += sent - sentBefore;
        total.received += received;
        // A frame that the camera was just about to begin, or a probe, may have come after the silence.
        const vcam::Counters counters = device->GetCounters();
        sentBefore = static_cast<int64_t>(counters.framesCompleted);
        total.afterSilence += sentBefore - sent;
        total.taken += c.received;
        total.libraryLost += lost;
        total.displayed += c.displayed;
        total.redrawn += c.redrawn;
        total.skipped += c.skipped;
        total.undrawn += c.undrawn;
        ++total.rounds;
    }

    Total total;
    int64_t sentBefore = 0; // by the camera, before the present stream
};

TEST_F(Soak, EveryFrameIsAccountedForAndMemoryStaysFlat) {
    const auto length = Length();
    const auto start = std::chrono::steady_clock::now();
    const Window window(640, 360);
    ASSERT_NO_FATAL_FAILURE(Connect());
    camera->SetPlayWnd(window.Id());
    double warm = 0, last = 0;
    auto minute = std::chrono::minutes(1);
    while (std::chrono::steady_clock::now() - start < length || total.rounds < 3) {
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
        ASSERT_TRUE(WaitForDrawn(2));
        ASSERT_NO_FATAL_FAILURE(Record());
        ASSERT_NO_FATAL_FAILURE(Series());
        ASSERT_NO_FATAL_FAILURE(StopAndCheck());
        if (total.rounds % 3 == 0) {
            ASSERT_EQ(camera->CloseCamera(), 0);
            ASSERT_EQ(camera->OpenCamera(), 0);
            camera->SetPlayWnd(window.Id());
        }
        last = support::ResidentMiB();
        if (total.rounds == 2)
            warm = last;
        if (std::chrono::steady_clock::now() - start >= minute) {
            std::printf("%lld min: %d rounds, %.1f MiB\n", static_cast<long long>(minute.count()),
                        total.rounds, last);
            std::fflush(stdout);
            ++minute;
        }
    }
#ifndef KOLT_SANITIZED // a sanitizer keeps freed memory for a while, to see who still uses it
    EXPECT_LE(last, warm + kGrowthMiB) << "memory grows";
#endif
    EXPECT_EQ(owner.messages, 0) << owner.last;
    const _CAMERA_COUNTERS_ c = camera->GetCounters();
    std::printf("%d rounds: %lld frames sent (%d triggered to end a silence) = %lld received + %lld lost by "
                "the library; %lld more while it was stopped\n",
                total.rounds, static_cast<long long>(total.sent), total.probes,
                static_cast<long long>(total.received), static_cast<long long>(total.libraryLost),
                static_cast<long long>(total.afterSilence));
    std::printf("%lld received in all = %lld displayed - %lld redrawn + %lld skipped + %lld undrawn\n",
                static_cast<long long>(total.taken), static_cast<long long>(total.displayed),
                static_cast<long long>(total.redrawn), static_cast<long long>(total.skipped),
                static_cast<long long>(total.undrawn));
    std::printf(
        "%lld queued = %lld taken + %lld overwritten + %lld cleared; %lld recorded, %lld discarded at a "
        "stop\n%lld pictures of series, %d snapshots; %.1f MiB after two rounds, %.1f at the end\n",
        static_cast<long long>(c.queued), static_cast<long long>(c.taken),
        static_cast<long long>(c.overwritten), static_cast<long long>(c.cleared),
        static_cast<long long>(c.recorded), static_cast<long long>(c.discarded),
        static_cast<long long>(c.imagesSaved), total.snapshots, warm, last);
}

} // namespace
} // namespace core
