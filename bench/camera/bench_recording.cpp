// Raw recording through QCamera beside ways of writing the same frames straight to the same disk, in one
// run.
//
// bench_recording [FOLDER [FRAMES [ROUNDS [RATE]]]]: writes files of FRAMES frames of 5 MB below FOLDER (the
// present one without) and removes them again. With RATE, in MB/s, only a recording at this rate.
#include "Camera/QCamera.h"
#include "Camera/QCameraOwner.h"
#include "Camera/QFrameBufManager.h"
#include "Common/QLocalCfg.h"
#include "Common/SleepEx.h"
#include "StraightWriter.h"
#include "support/CameraXml.h"
#include "support/PlatformDoubles.h"

#include <QCoreApplication>
#include <QFile>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint16_t kWidth = 2448;
constexpr uint16_t kHeight = 2048;
constexpr size_t kFrame = size_t{kWidth} * kHeight;
constexpr int kFrames = 1000; // 5 GB: more than the kernel lets lie dirty on most machines
constexpr int kRounds = 3;
constexpr int kDepth = 3; // of the frame queue, as the settings have it

double Seconds(Clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

class SilentOwner : public QCameraOwner {
public:
    void OnShowMsg(const QString&, const QString& detail, int) override {
        std::printf("message: %s\n", detail.toUtf8().constData());
    }
    void OnStopRecording() override {}
    void OnShowSaveMsg(const QString&, const QString&) override {}
    void UpdateCaptureBtnAndAction(bool) override {}
    bool IsEmbedWidgetVisible() override { return false; }
};

struct Recording {
    WriteResult result;
    int64_t queued = 0;
    int64_t recorded = 0;
    int64_t overwritten = 0;
    std::string cpuByThread;
};

// Milliseconds per frame of the threads that count.
std::string CpuOfThreads(int64_t frames) {
    std::string text;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        double nanoseconds = 0;
        std::ifstream(task.path() / "comm") >> name;
        std::ifstream(task.path() / "schedstat") >> nanoseconds;
        if (name.rfind("kolt-", 0) == 0 && nanoseconds > 1e6 * static_cast<double>(frames) / 100) {
            char line[64];
            std::snprintf(line, sizeof line, "  %s %.2f", name.c_str(),
                          nanoseconds / 1e6 / static_cast<double>(frames));
            text += line;
        }
    }
    return text;
}

void SetUpDoubles(support::PlatformDoubles& doubles) {
    namespace reg = support::camera_register;
    doubles.Reset(support::CameraXml());
    support::FillCameraRegisters(doubles.Port());
    doubles.Port().Record(false);
    doubles.Port().StoreInteger(reg::Width, 4, kWidth, support::MemoryPort::Order::Little);
    doubles.Port().StoreInteger(reg::Height, 4, kHeight, support::MemoryPort::Order::Little);
}

bool Settled(const _CAMERA_COUNTERS_& c) {
    return c.queued == c.recorded + c.overwritten + c.cleared + c.discarded;
}

// `intervalUs`: time between frames; 1 is as fast as they are copied. The time runs until the whole file is
// on the disk.
Recording Record(const std::string& folder, unsigned intervalUs, int frames) {
    auto& doubles = support::PlatformDoubles::Get();
    SetUpDoubles(doubles);
    SilentOwner owner;
    QCamera* camera = QCamera::NewInstance();
    camera->AddRef();
    camera->SetOwner(&owner);
    camera->SetDisplayMode(10);
    Recording recording;
    if (camera->OpenCamera() != 0 || camera->OnStartGettingFrame(true) != 0) {
        std::printf("the camera does not start\n");
        std::exit(1);
    }
    const std::string path = folder + "/bench_recording.raw";
    // The wait for the frame included: more than the interval of the frames means that the camera had to
    // wait.
    Clock::time_point last{};
    double longest = 0; // grab thread; read when it has ended
    doubles.OnCall("OV_CC_GetOneFrameTimeout", [&longest, &last] {
        const auto now = Clock::now();
        if (last != Clock::time_point{})
            longest = std::max(longest, Seconds(now - last) * 1e3);
        last = now;
    });
    support::DoubleFrame frame;
    frame.width = kWidth;
    frame.height = kHeight;
    frame.pixels.assign(kFrame, 0x5A);
    const double cpu = ProcessCpuSeconds();
    const auto start = Clock::now();
    camera->StartRecordRawData(path.c_str(), folder.c_str());
    doubles.SetFreeRun(frame, intervalUs);
    while (camera->GetCounters().recorded < frames)
        SleepEx(2);
    doubles.StopFreeRun();
    while (!Settled(camera->GetCounters()))
        SleepEx(1);
    recording.cpuByThread = CpuOfThreads(camera->GetCounters().recorded);
    const auto counters = camera->GetCounters();
    camera->StopRecord();
    const int file = open(path.c_str(), O_WRONLY);
    fdatasync(file);
    close(file);
    recording.recorded = counters.recorded;
    recording.queued = counters.queued;
    recording.overwritten = counters.overwritten;
    recording.result.megabytesPerSecond = static_cast<double>(kFrame) *
                                          static_cast<double>(counters.recorded) / 1e6 /
                                          Seconds(Clock::now() - start);
    recording.result.cpuMsPerFrame =
        (ProcessCpuSeconds() - cpu) * 1e3 / static_cast<double>(counters.recorded);
    camera->CloseCamera();
    camera->ReleaseRef();
    recording.result.longestMs = longest;
    if (std::filesystem::file_size(path) != kFrame * static_cast<size_t>(counters.recorded))
        std::printf("the file's size is wrong\n");
    RemoveAndSettle(path);
    return recording;
}

WriteResult Median(std::vector<WriteResult> results) {
    std::sort(results.begin(), results.end(), [](const WriteResult& a, const WriteResult& b) {
        return a.megabytesPerSecond < b.megabytesPerSecond;
    });
    return results[results.size() / 2];
}

void Print(const char* name, const WriteResult& r, double best) {
    std::printf("%-46s %8.0f %8.2f %10.1f %10.2f\n", name, r.megabytesPerSecond, r.megabytesPerSecond / best,
                r.longestMs, r.cpuMsPerFrame);
}

void PrintFrames(const char* name, const Recording& r) {
    std::printf("%s: %lld frames queued, %lld recorded, %lld overwritten; CPU ms per frame:%s\n", name,
                static_cast<long long>(r.queued), static_cast<long long>(r.recorded),
                static_cast<long long>(r.overwritten), r.cpuByThread.c_str());
}

Recording RecordAt(const std::string& folder, double rate, int frames) {
    return Record(folder, static_cast<unsigned>(static_cast<double>(kFrame) / rate), frames);
}

struct Row {
    const char* name;
    std::function<WriteResult()> run;
    std::vector<WriteResult> results;
};

std::vector<Row> Peers(const std::string& path, int frames) {
    std::vector<Row> rows;
    const auto add = [&](const char* one, const char* copied, WriteMethod method) {
        rows.push_back({one, [=] { return WriteOneBuffer(path, method, kFrame, frames); }, {}});
        rows.push_back({copied, [=] { return WriteCopiedFrames(path, method, kFrame, frames, kDepth); }, {}});
    };
    add("plain write(), one buffer", "plain write(), copied frames", WriteMethod::Plain);
    add("write-behind, one buffer", "write-behind, copied frames", WriteMethod::WriteBehind);
    add("O_DIRECT, one buffer", "O_DIRECT, copied frames", WriteMethod::Direct);
    return rows;
}

void Compare(const std::string& folder, int frames, int rounds) {
    std::vector<Row> rows = Peers(folder + "/bench_write.raw", frames);
    Recording fast;
    rows.push_back({"QCamera, as fast as frames come",
                    [&] {
                        fast = Record(folder, 1, frames);
                        return fast.result;
                    },
                    {}});
    double best = 0;
    for (int round = 0; round < rounds; ++round)
        for (Row& row : rows)
            row.results.push_back(row.run());
    for (const Row& row : rows)
        if (&row != &rows.back())
            best = std::max(best, Median(row.results).megabytesPerSecond);
    std::printf("%d frames of %.1f MB, median of %d rounds\n", frames, static_cast<double>(kFrame) / 1e6,
                rounds);
    std::printf("%-46s %8s %8s %10s %10s\n", "", "MB/s", "of best", "longest ms", "CPU ms/fr");
    for (const Row& row : rows)
        Print(row.name, Median(row.results), best);
    const Recording steady = RecordAt(folder, 0.7 * best, frames);
    Print("QCamera, frames at 70 % of the best", steady.result, best);
    PrintFrames("as fast as frames come", fast);
    PrintFrames("at 70 %", steady);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const auto number = [&](int i, int otherwise) { return argc > i ? std::atoi(argv[i]) : otherwise; };
    const std::string folder = argc > 1 ? argv[1] : ".";
    const int frames = std::max(number(2, kFrames), 1);
    const int rounds = std::max(number(3, kRounds), 1);
    QLocalCfg::SetDirectory(QString::fromStdString(folder));
    if (const int rate = number(4, 0); rate > 0) {
        for (int round = 0; round < rounds; ++round) {
            const Recording steady = RecordAt(folder, rate, frames);
            Print("QCamera at the given rate", steady.result, rate);
            PrintFrames("", steady);
        }
    } else {
        Compare(folder, frames, rounds);
    }
    QLocalCfg::ReleaseInstance();
    QFile::remove(QString::fromStdString(folder + "/LocalConfig.ini"));
    QFile::remove(QString::fromStdString(folder + "/LangConfig.ini"));
    return 0;
}
