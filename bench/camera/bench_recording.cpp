// Raw recording through QCamera beside three ways of writing the same frames straight to the same disk, in
// one run.
//
// bench_recording [FOLDER]: writes some gigabytes below FOLDER (the present one without) and removes them
// again.
#include "Camera/QCamera.h"
#include "Camera/QCameraOwner.h"
#include "Camera/QFrameBufManager.h"
#include "Common/QLocalCfg.h"
#include "Common/SleepEx.h"
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
#include <memory>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint16_t kWidth = 2448;
constexpr uint16_t kHeight = 2048;
constexpr size_t kFrame = size_t{kWidth} * kHeight;
constexpr int kFrames = 400; // 2 GB
constexpr int kRounds = 3;

double Seconds(Clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

double ProcessCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto of = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

struct Result {
    double megabytesPerSecond = 0;
    double longestMs = 0;
    double cpuMsPerFrame = 0;
};

enum class Method { Plain, WriteBehind, Direct };

// Frames one after the other, and all on the disk at the end.
Result WriteStraight(const std::string& path, Method method) {
    void* memory = nullptr;
    const size_t length = (kFrame + 4095) / 4096 * 4096;
    if (posix_memalign(&memory, 4096, length) != 0)
        std::abort();
    std::fill_n(static_cast<uint8_t*>(memory), length, uint8_t{0x5A});
    const int flags = O_CREAT | O_TRUNC | O_WRONLY | (method == Method::Direct ? O_DIRECT : 0);
    const int file = open(path.c_str(), flags, 0644);
    Result result;
    if (file < 0)
        return result;
    if (method != Method::Plain)
        (void)fallocate(file, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(length) * kFrames);
    const double cpu = ProcessCpuSeconds();
    const auto start = Clock::now();
    off_t dropped = 0;
    for (int i = 0; i < kFrames; ++i) {
        const auto before = Clock::now();
        const size_t part = method == Method::Direct ? length : kFrame;
        if (write(file, memory, part) != static_cast<ssize_t>(part))
            break;
        if (method == Method::WriteBehind) {
            const off_t at = static_cast<off_t>(kFrame) * i;
            (void)sync_file_range(file, at, static_cast<off_t>(kFrame), SYNC_FILE_RANGE_WRITE);
            const off_t settled = at - (off_t{32} << 20);
            if (settled > dropped) {
                (void)sync_file_range(file, dropped, settled - dropped,
                                      SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                          SYNC_FILE_RANGE_WAIT_AFTER);
                (void)posix_fadvise(file, dropped, settled - dropped, POSIX_FADV_DONTNEED);
                dropped = settled;
            }
        }
        result.longestMs = std::max(result.longestMs, Seconds(Clock::now() - before) * 1e3);
    }
    fdatasync(file);
    result.megabytesPerSecond = static_cast<double>(kFrame) * kFrames / 1e6 / Seconds(Clock::now() - start);
    result.cpuMsPerFrame = (ProcessCpuSeconds() - cpu) * 1e3 / kFrames;
    close(file);
    unlink(path.c_str());
    std::free(memory);
    return result;
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
    Result result;
    int64_t received = 0;
    int64_t recorded = 0;
    uint64_t overwritten = 0;
    std::string cpuByThread;
};

// Milliseconds per frame of the threads that count.
std::string CpuOfThreads(int frames) {
    std::string text;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        double nanoseconds = 0;
        std::ifstream(task.path() / "comm") >> name;
        std::ifstream(task.path() / "schedstat") >> nanoseconds;
        if (name == "kolt-grab" || name == "kolt-save") {
            char line[64];
            std::snprintf(line, sizeof line, "  %s %.2f", name.c_str(), nanoseconds / 1e6 / frames);
            text += line;
        }
    }
    return text;
}

// `intervalUs`: time between frames; 1 is as fast as they are copied.
Recording Record(const std::string& folder, unsigned intervalUs, int frames) {
    auto& doubles = support::PlatformDoubles::Get();
    doubles.Reset(support::CameraXml());
    support::FillCameraRegisters(doubles.Port());
    doubles.Port().Record(false);
    doubles.Port().StoreInteger(support::camera_register::Width, 4, kWidth,
                                support::MemoryPort::Order::Little);
    doubles.Port().StoreInteger(support::camera_register::Height, 4, kHeight,
                                support::MemoryPort::Order::Little);
    SilentOwner owner;
    QCamera* camera = QCamera::NewInstance();
    camera->AddRef();
    camera->SetOwner(&owner);
    camera->SetDisplayMode(10);
    Recording recording;
    if (camera->OpenCamera() != 0 || camera->OnStartGettingFrame(true) != 0) {
        std::printf("the camera does not start\n");
        camera->ReleaseRef();
        return recording;
    }
    auto* queue = QFrameBufManager::Instance(0, 0).get();
    const std::string path = folder + "/bench_recording.raw";
    camera->StartRecordRawData(path.c_str(), folder.c_str());
    // The longest time between two calls for a frame, the wait for it included: more than the interval of the
    // frames means that the camera had to wait.
    Clock::time_point last{};
    doubles.OnCall("OV_CC_GetOneFrameTimeout", [&recording, &last] {
        const auto now = Clock::now();
        if (last != Clock::time_point{})
            recording.result.longestMs = std::max(recording.result.longestMs, Seconds(now - last) * 1e3);
        last = now;
    });
    support::DoubleFrame frame;
    frame.width = kWidth;
    frame.height = kHeight;
    frame.pixels.assign(kFrame, 0x5A);
    const double cpu = ProcessCpuSeconds();
    const auto start = Clock::now();
    doubles.SetFreeRun(frame, intervalUs);
    while (camera->GetCounters().recorded < frames)
        SleepEx(2);
    recording.cpuByThread = CpuOfThreads(frames);
    doubles.StopFreeRun();
    const double seconds = Seconds(Clock::now() - start);
    SleepEx(200);
    const auto counters = camera->GetCounters();
    recording.recorded = counters.recorded;
    recording.received = counters.queued;
    recording.overwritten = queue->GetCounters().overwritten;
    recording.result.megabytesPerSecond = static_cast<double>(kFrame) * frames / 1e6 / seconds;
    recording.result.cpuMsPerFrame =
        (ProcessCpuSeconds() - cpu) * 1e3 / static_cast<double>(counters.recorded);
    camera->StopRecord();
    camera->CloseCamera();
    camera->ReleaseRef();
    unlink(path.c_str());
    return recording;
}

Result Median(std::vector<Result> results) {
    std::sort(results.begin(), results.end(),
              [](const Result& a, const Result& b) { return a.megabytesPerSecond < b.megabytesPerSecond; });
    return results[results.size() / 2];
}

void Print(const char* name, const Result& r, double best) {
    std::printf("%-44s %8.0f %8.2f %10.1f %10.2f\n", name, r.megabytesPerSecond, r.megabytesPerSecond / best,
                r.longestMs, r.cpuMsPerFrame);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const std::string folder = argc > 1 ? argv[1] : ".";
    QLocalCfg::SetDirectory(QString::fromStdString(folder));
    const std::string path = folder + "/bench_write.raw";
    std::vector<Result> plain, behind, direct, core;
    std::string cpuByThread;
    for (int round = 0; round < kRounds; ++round) {
        plain.push_back(WriteStraight(path, Method::Plain));
        behind.push_back(WriteStraight(path, Method::WriteBehind));
        direct.push_back(WriteStraight(path, Method::Direct));
        const Recording fast = Record(folder, 1, kFrames);
        core.push_back(fast.result);
        cpuByThread = fast.cpuByThread;
    }
    const Result medians[] = {Median(plain), Median(behind), Median(direct), Median(core)};
    const double best = std::max(
        {medians[0].megabytesPerSecond, medians[1].megabytesPerSecond, medians[2].megabytesPerSecond});
    std::printf("%d frames of %.1f MB, median of %d rounds\n", kFrames, static_cast<double>(kFrame) / 1e6,
                kRounds);
    std::printf("%-44s %8s %8s %10s %10s\n", "", "MB/s", "of best", "longest ms", "CPU ms/fr");
    Print("plain write()", medians[0], best);
    Print("write, write-back begun at once, dropped", medians[1], best);
    Print("O_DIRECT", medians[2], best);
    Print("QCamera, as fast as frames come", medians[3], best);
    std::printf("CPU ms per frame by thread:%s\n", cpuByThread.c_str());
    const double rate = 0.7 * medians[3].megabytesPerSecond;
    const auto interval = static_cast<unsigned>(static_cast<double>(kFrame) / rate);
    const Recording steady = Record(folder, interval, kFrames);
    Print("QCamera at 70 % of that", steady.result, best);
    std::printf("at 70 %%: %lld frames queued, %lld recorded, %llu overwritten\n",
                static_cast<long long>(steady.received), static_cast<long long>(steady.recorded),
                static_cast<unsigned long long>(steady.overwritten));
    QLocalCfg::ReleaseInstance();
    QFile::remove(QString::fromStdString(folder + "/LocalConfig.ini"));
    QFile::remove(QString::fromStdString(folder + "/LangConfig.ini"));
    return 0;
}
