// Frames from the virtual camera on loopback, taken by libOvCameraControl and by a plain Aravis client in
// turn: what arrives, and what it costs. The camera and each client are processes of their own, so that the
// processor time is told apart. Wants root: rows "packet" keep CAP_NET_RAW, rows "udp" have no capability.
//
// The second peer is the same Aravis client, which copies each frame out as our library has to by its
// contract.
#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <linux/capability.h>
#include <memory>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

#include "StreamClients.h"
#include "VirtualCamera.h"
#include "support/ChildProcess.h"
#include "support/LoopbackAddress.h"

namespace {

using namespace kolt::bench;
using kolt::test::ChildProcess;

constexpr int kRounds = 5;
const std::array<const char*, 3> kClients = {"library", "aravis", "aravis+copy"};

struct Row {
    const char* name;
    std::uint32_t packetSize;
    double frameRate; // 0: as fast as it goes
    std::uint32_t linkMbps;
};
constexpr std::array<Row, 4> kRows = {{{"1500 bytes,  60 fps", 1500, 60, 2500},
                                       {"9000 bytes, 120 fps", 9000, 120, 2500},
                                       {"1500 bytes, flat out", 1500, 0, 0},
                                       {"9000 bytes, flat out", 9000, 0, 0}}};

// As a program of an ordinary user, but for the user's name: files of /proc stay readable.
void dropCapabilities() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> none{};
    if (syscall(SYS_capset, &header, none.data()) != 0) {
        std::perror("capset");
        std::exit(1);
    }
}

int runCamera(const std::string& address, double frameRate, std::uint32_t linkMbps) {
    vcam::Config config;
    config.address = address;
    config.frameRate = frameRate > 0 ? frameRate : 30;
    config.unpaced = frameRate <= 0;
    config.linkSpeedMbps = linkMbps;
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    vcam::VirtualCamera camera(config);
    camera.Start();
    std::puts("camera ready");
    std::fflush(stdout);
    int number = 0;
    sigwait(&signals, &number);
    return 0;
}

int runClient(const std::string& name, const std::string& address, std::uint32_t packetSize, bool privileged,
              double seconds) {
    if (!privileged) {
        dropCapabilities();
    }
    StreamTask task;
    task.address = address;
    task.packetSize = packetSize;
    task.seconds = seconds;
    const StreamResult result = name == kClients[0] ? runLibrary(task) : runAravis(task, name == kClients[2]);
    std::printf("result %llu %llu %f %f %f %d\n", static_cast<unsigned long long>(result.frames),
                static_cast<unsigned long long>(result.lost), result.seconds, result.bytes, result.cpuSeconds,
                result.packetSocket ? 1 : 0);
    return 0;
}

StreamResult measure(const char* client, const Row& row, bool privileged, const std::string& seconds) {
    ChildProcess child({"/proc/self/exe", "--client", client, kolt::test::LoopbackAddress(0),
                        std::to_string(row.packetSize), privileged ? "1" : "0", seconds});
    const auto code = child.waitForExit(std::chrono::seconds(30));
    const std::size_t at = child.output().rfind("result ");
    StreamResult result;
    unsigned long long frames = 0;
    unsigned long long lost = 0;
    int packetSocket = 0;
    if (!code || *code != 0 || at == std::string::npos ||
        std::sscanf(child.output().c_str() + at, "result %llu %llu %lf %lf %lf %d", &frames, &lost,
                    &result.seconds, &result.bytes, &result.cpuSeconds, &packetSocket) != 6) {
        std::fprintf(stderr, "%s: %s\n", client, child.output().c_str());
        std::exit(1);
    }
    result.frames = frames;
    result.lost = lost;
    result.packetSocket = packetSocket != 0;
    return result;
}

double median(const std::vector<StreamResult>& results,
              const std::function<double(const StreamResult&)>& of) {
    std::vector<double> values;
    values.reserve(results.size());
    for (const StreamResult& result : results) {
        values.push_back(of(result));
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double rate(const StreamResult& result) {
    return static_cast<double>(result.frames) / result.seconds;
}
double cpu(const StreamResult& result) {
    return result.cpuSeconds / result.seconds * 100;
}
double cpuPerFrame(const StreamResult& result) {
    return result.cpuSeconds * 1e6 / static_cast<double>(std::max<std::uint64_t>(result.frames, 1));
}

void compare(const Row& row, bool privileged, const std::string& seconds) {
    ChildProcess camera({"/proc/self/exe", "--camera", kolt::test::LoopbackAddress(0),
                         std::to_string(row.frameRate), std::to_string(row.linkMbps)});
    if (!camera.waitForOutput("camera ready", std::chrono::seconds(20))) {
        std::fprintf(stderr, "no camera: %s\n", camera.output().c_str());
        std::exit(1);
    }
    std::array<std::vector<StreamResult>, kClients.size()> results;
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t turn = 0; turn < kClients.size(); ++turn) {
            const std::size_t client = (turn + static_cast<std::size_t>(round)) % kClients.size();
            results[client].push_back(measure(kClients[client], row, privileged, seconds));
        }
    }
    camera.signal(SIGTERM);
    camera.waitForExit();
    for (std::size_t client = 0; client < kClients.size(); ++client) {
        const auto& mine = results[client];
        const double frames = median(mine, [](const auto& r) { return static_cast<double>(r.frames); });
        const double lost = median(mine, [](const auto& r) { return static_cast<double>(r.lost); });
        const double bytes = median(mine, [](const auto& r) { return r.bytes / r.seconds / 1e6; });
        std::printf("%-21s %-7s %-12s %7.0f %8.2f %8.1f %7.0f %8.2f %9.0f", row.name,
                    mine.front().packetSocket ? "packet" : "udp", kClients[client], frames,
                    median(mine, rate), bytes, lost, median(mine, cpu), median(mine, cpuPerFrame));
        if (client > 0) {
            const auto& ours = results.front();
            std::printf("   %6.3f %6.3f", median(ours, rate) / median(mine, rate),
                        median(ours, cpuPerFrame) / median(mine, cpuPerFrame));
        }
        std::printf("\n");
    }
    std::fflush(stdout);
}

int usage() {
    std::fputs("bench_stream [SECONDS [ROW...]]: seconds of each run (1.5), rows 0 to 7 (all)\n", stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 4 && arguments[0] == "--camera") {
        return runCamera(arguments[1], std::stod(arguments[2]),
                         static_cast<std::uint32_t>(std::stoul(arguments[3])));
    }
    if (arguments.size() == 6 && arguments[0] == "--client") {
        return runClient(arguments[1], arguments[2], static_cast<std::uint32_t>(std::stoul(arguments[3])),
                         arguments[4] == "1", std::stod(arguments[5]));
    }
    if (!arguments.empty() && arguments[0].front() == '-') {
        return usage();
    }
    const std::string seconds = arguments.empty() ? "1.5" : arguments[0];
    std::printf(
        "1920 x 1080 Mono8 on loopback, 8 buffers, medians of %d rounds. Ratios: the library's over this "
        "client's, by rate and by CPU per frame.\n",
        kRounds);
    std::printf("%-21s %-7s %-12s %7s %8s %8s %7s %8s %9s   %6s %6s\n", "row", "socket", "client", "frames",
                "fps", "MB/s", "lost", "CPU %", "us/frame", "rate", "CPU");
    for (std::size_t index = 0; index < 2 * kRows.size(); ++index) {
        const bool wanted = arguments.size() < 2 || std::find(arguments.begin() + 1, arguments.end(),
                                                              std::to_string(index)) != arguments.end();
        if (wanted) {
            compare(kRows[index / 2], index % 2 == 0, seconds);
        }
    }
    return 0;
}
