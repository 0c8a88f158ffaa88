// The whole program beside its peers on the same camera: bench_program [start | connect | cpu | latency]...,
// all without arguments. Wants root (networks of its own), a display of 1920 x 1080 without a window manager
// (scripts/with-xvfb), and arv-viewer (package aravis-tools) with the GStreamer plugins base, good, bad and x
// as a peer.
#include "Site.h"
#include "WindowClient.h"
#include "support/Places.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using kolt::test::ChildProcess;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kRuns = 10, kRounds = 3;
// The program's window on this screen.
constexpr int kLeft = 309, kTop = 130;
constexpr uint32_t kPreviewGround = 0x14181D;
constexpr auto kSettle = std::chrono::seconds(4), kMeasured = std::chrono::seconds(5);

double Ms(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

// The program in a folder of its own, beside which it keeps its settings.
class ProgramFolder {
public:
    ProgramFolder() {
        for (const auto& entry : fs::directory_iterator(KOLT_BIN_DIR)) {
            const std::string name = entry.path().filename();
            if (name == "KOLT_CAPTURE" || name.find(".so") != std::string::npos ||
                entry.path().extension() == ".qm")
                fs::copy(entry.path(), m_path / name, fs::copy_options::copy_symlinks);
        }
    }
    ~ProgramFolder() { fs::remove_all(m_path); }
    ProgramFolder(const ProgramFolder&) = delete;
    ProgramFolder& operator=(const ProgramFolder&) = delete;
    std::string Program() const { return m_path / "KOLT_CAPTURE"; }

private:
    static fs::path Make() {
        std::string name = fs::temp_directory_path() / "kolt-bench-XXXXXX";
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no folder");
        return name;
    }
    const fs::path m_path = Make();
};

// Forgets what the system has read from disk. False where that isn't permitted.
bool DropCaches() {
    sync();
    std::ofstream file("/proc/sys/vm/drop_caches");
    file << "3" << std::flush;
    return static_cast<bool>(file);
}

bool HasInk(const std::vector<uint32_t>& pixels) {
    for (const uint32_t pixel : pixels)
        if ((pixel & 0xFF) < 0x70 && (pixel >> 8 & 0xFF) < 0x70 && pixel != 0)
            return true;
    return false;
}

struct Start {
    double window = 0, list = 0;
    Memory memory;
};

Start StartProgram(const Screen& screen, const ProgramFolder& folder) {
    Start start;
    const auto begin = Clock::now();
    ChildProcess program({folder.Program()});
    WaitUntil("the window", [&] { return screen.Read(kLeft + 500, kTop + 300, 1, 1)[0] == kPreviewGround; });
    start.window = Ms(Clock::now() - begin);
    WaitUntil("the camera's line", [&] { return HasInk(screen.Read(kLeft + 110, kTop + 212, 120, 16)); });
    start.list = Ms(Clock::now() - begin);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    start.memory = MemoryOf(program.pid());
    return start;
}

double StartPeer(const Screen& screen) {
    WaitUntil("an empty screen", [&] { return screen.Read(100, 100, 1, 1)[0] == 0; });
    const auto begin = Clock::now();
    const ChildProcess viewer({"arv-viewer-0.8"});
    WaitUntil("arv-viewer's window", [&] { return screen.Read(100, 100, 1, 1)[0] != 0; });
    return Ms(Clock::now() - begin);
}

void Starts(const Site& site, const Screen& screen) {
    const auto camera = site.Camera("BayerRG8", 30);
    const ProgramFolder folder;
    StartProgram(screen, folder); // makes the settings of a first start
    std::printf("start, median of %d, ms from the process's start\n%-34s %10s %12s %10s %10s\n", kRuns, "",
                "window", "with camera", "PSS MiB", "RSS MiB");
    for (const bool cold : {true, false}) {
        std::vector<double> window, list, pss, rss, peer;
        bool dropped = true;
        for (int i = 0; i < kRuns; ++i) {
            dropped = !cold || DropCaches();
            const Start start = StartProgram(screen, folder);
            window.push_back(start.window);
            list.push_back(start.list);
            pss.push_back(start.memory.pss);
            rss.push_back(start.memory.rss);
        }
        for (int i = 0; i < (cold ? kRounds : kRuns); ++i) {
            if (cold)
                DropCaches();
            peer.push_back(StartPeer(screen));
        }
        std::printf("KOLT_CAPTURE, %-20s %10.0f %12.0f %10.1f %10.1f\n",
                    cold ? (dropped ? "cold" : "cold (no right to drop)") : "warm", Median(window),
                    Median(list), Median(pss), Median(rss));
        std::printf("arv-viewer, %-22s %10.0f %12s   (ratio %.2f)\n", cold ? "cold" : "warm", Median(peer),
                    "-", Median(window) / Median(peer));
        std::fflush(stdout);
    }
}

std::vector<std::string> Self(const std::string& what) {
    return {std::string(KOLT_BIN_DIR) + "/bench_program", "--window", what};
}

void Connects(const Site& site) {
    const auto camera = site.Camera("BayerRG8", 30);
    ChildProcess window(Self("connect"));
    window.waitForExit();
    std::vector<double> open, start, picture;
    const std::string& said = window.output();
    for (size_t at = said.find("open "); at != std::string::npos; at = said.find("open ", at + 1)) {
        double o = 0, s = 0, p = 0;
        if (std::sscanf(said.c_str() + at, "open %lf start %lf picture %lf", &o, &s, &p) != 3)
            continue;
        open.push_back(o);
        start.push_back(s);
        picture.push_back(p);
    }
    std::printf(
        "connect to first picture, median of %zu, ms (200 of the start are prescribed; 33 are a frame's)\n"
        "open %.1f, start %.1f, first picture after %.1f\n",
        open.size(), Median(open), Median(start), Median(picture));
}

enum class Client { Window, Live, Viewer };

std::unique_ptr<ChildProcess> StartClient(Client client) {
    if (client == Client::Window) {
        auto window = std::make_unique<ChildProcess>(Self("show"));
        if (!window->waitForOutput("live"))
            throw std::runtime_error("the window shows nothing: " + window->output());
        return window;
    }
    if (client == Client::Live)
        return std::make_unique<ChildProcess>(std::vector<std::string>{
            std::string(KOLT_BIN_DIR) + "/kolt_live", "--camera", "192.168.7.20", "--display-rate", "30"});
    auto viewer = std::make_unique<ChildProcess>(std::vector<std::string>{"arv-viewer-0.8"});
    // Choose the camera in the list (below Aravis's own fake one), play, and make the window as large as the
    // program's.
    const std::string steps =
        "w=$(xdotool search --sync --onlyvisible --name 'Aravis Viewer' | head -1); sleep 2; "
        "xdotool mousemove 100 117 click 1; sleep 1; xdotool mousemove 78 276 click 1; sleep 1; "
        "xdotool windowsize $w 1303 821";
    if (std::system(steps.c_str()) != 0) // NOLINT(cert-env33-c): a shell is what is wanted
        throw std::runtime_error("arv-viewer can't be driven");
    return viewer;
}

void Cpu(const Site& site) {
    static const char* const kNames[] = {"KOLT_CAPTURE's window", "kolt_live (1536 x 864)", "arv-viewer"};
    std::vector<double> cpu[3], pss[3];
    for (int round = 0; round < kRounds; ++round) {
        for (const Client client : {Client::Window, Client::Live, Client::Viewer}) {
            const auto camera = site.Camera("BayerRG8", 30);
            const auto process = StartClient(client);
            std::this_thread::sleep_for(kSettle);
            const double before = CpuSecondsOf(process->pid());
            const auto start = Clock::now();
            std::this_thread::sleep_for(kMeasured);
            const double seconds = Ms(Clock::now() - start) / 1000;
            cpu[static_cast<int>(client)].push_back((CpuSecondsOf(process->pid()) - before) / seconds * 100);
            pss[static_cast<int>(client)].push_back(MemoryOf(process->pid()).pss);
        }
    }
    std::printf(
        "live view of 1920 x 1080, BayerRG8, 30 frames a second, packets of 1500 bytes; median of %d\n"
        "%-26s %10s %10s %10s\n",
        kRounds, "", "CPU %", "PSS MiB", "ratio");
    for (int i = 0; i < 3; ++i)
        std::printf("%-26s %10.1f %10.1f %10.2f\n", kNames[i], Median(cpu[i]), Median(pss[i]),
                    Median(cpu[i]) / Median(cpu[2]));
}

void Latency(const Site& site) {
    std::printf("wait of events posted to the main thread each millisecond for 10 s, microseconds\n");
    struct Case {
        const char* what;
        const char* name;
        int fps;
    };
    for (const Case& c :
         {Case{"latency-bare", "an event loop alone", 0}, Case{"latency-idle", "connected", 30},
          Case{"latency", "live, 30 frames a second", 30}, Case{"latency", "live, 120 frames a second", 120},
          Case{"latency-jumbo", "the same, packets of 8960", 120}}) {
        const auto camera = c.fps > 0 ? site.Camera("BayerRG8", c.fps) : nullptr;
        ChildProcess window(Self(c.what));
        window.waitForExit();
        const size_t at = window.output().find("events ");
        std::printf("%-28s %s", c.name,
                    at == std::string::npos ? window.output().c_str() : window.output().c_str() + at);
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() == 2 && words[0] == "--window")
        return RunWindow(argc, argv, words[1]);
    if (words.empty())
        words = {"start", "connect", "cpu", "latency"};
    try {
        const Site site;
        const Screen screen;
        for (const std::string& word : words) {
            if (word == "start")
                Starts(site, screen);
            else if (word == "connect")
                Connects(site);
            else if (word == "cpu")
                Cpu(site);
            else if (word == "latency")
                Latency(site);
            else
                throw std::runtime_error("what is " + word + "?");
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
