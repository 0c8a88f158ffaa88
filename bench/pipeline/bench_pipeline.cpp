// The camera core with its display threads in a window, kolt_live in its window, and a plain Aravis client
// that only takes frames: one after the other on the same virtual camera, which is a process of its own like
// each of them.
//
// bench_pipeline [Mono8 | BayerRG8 | idle]...: all three without arguments. Wants a display of 24 bits and
// 1920 x 1080 (scripts/with-xvfb); latencies only as root. Figures are those of the last seconds of each run,
// the lost frames those of the whole run.
#include "Clients.h"
#include "PacketWatch.h"
#include "ScreenWatch.h"

#include "support/ChildProcess.h"
#include "support/LoopbackAddress.h"
#include "support/Places.h"

#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using kolt::test::ChildProcess;

constexpr uint32_t kSensorWidth = 1920, kSensorHeight = 1080;
constexpr uint32_t kWidth = 1536, kHeight = 864; // what kolt_live takes on a screen of 1920 x 1080
constexpr int kMeasuredSeconds = 4;
// The core's pacer takes a millisecond a second off its interval until the rate is right.
constexpr int kCoreSettles = 13, kOthersSettle = 2;

struct Case {
    const char* name;
    const char* fps; // null: as fast as it goes
    int shown;       // the configured display rate
};
const Case kCases[] = {
    {"30 fps, shown 30", "30", 30}, {"120 fps, shown 60", "120", 60}, {"most, shown 60", nullptr, 60}};

enum class Client { Plain, Live, Core, CoreWithoutDisplay, CoreIdle };

struct Line {
    long long frames = 0;
    double shown = 0;
};

struct Result {
    double sentPerSecond = 0;
    double receivedPerSecond = 0;
    long long lost = 0;
    double shown = 0;
    std::vector<double> latencies; // ms
    double cpuPercent = 0;
};

double Seconds(Clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

double CpuSecondsOf(pid_t pid) {
    double nanoseconds = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::ifstream file(task.path() / "schedstat");
        double used = 0;
        file >> used;
        nanoseconds += used;
    }
    return nanoseconds / 1e9;
}

double Quantile(std::vector<double> values, double q) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(q * static_cast<double>(values.size() - 1))];
}

// The lines that a client says once a second, as they come.
class Output {
public:
    explicit Output(ChildProcess& process) : m_process(process) {}

    // The next line with figures; throws when the client ended or none comes.
    Line Next() {
        const auto deadline = Clock::now() + std::chrono::seconds(15);
        while (Clock::now() < deadline) {
            if (const auto line = Take())
                return *line;
            m_process.waitForOutput("\x01", std::chrono::milliseconds(20)); // reads what has come
        }
        throw std::runtime_error("the client says nothing more; its output was:\n" + m_process.output());
    }

private:
    std::optional<Line> Take() {
        const std::string& all = m_process.output();
        for (size_t end = all.find('\n', m_at); end != std::string::npos; end = all.find('\n', m_at)) {
            const std::string text = all.substr(m_at, end - m_at);
            m_at = end + 1;
            const size_t frames = text.find(" s  frames ");
            const size_t shown = text.find("shown ");
            if (frames != std::string::npos && shown != std::string::npos)
                return Line{std::atoll(text.c_str() + frames + 11), std::atof(text.c_str() + shown + 6)};
        }
        return std::nullopt;
    }

    ChildProcess& m_process;
    size_t m_at = 0;
};

// A window for the core; kolt_live has its own, which is looked for.
class Desktop {
public:
    Desktop() : m_connection(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(m_connection) != 0)
            throw std::runtime_error("no display: run it by scripts/with-xvfb");
        m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    }
    ~Desktop() { xcb_disconnect(m_connection); }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    xcb_window_t Make() {
        const xcb_window_t window = xcb_generate_id(m_connection);
        const uint32_t black = m_screen->black_pixel;
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_screen->root, 0, 0, kWidth, kHeight,
                          0, XCB_WINDOW_CLASS_INPUT_OUTPUT, m_screen->root_visual, XCB_CW_BACK_PIXEL, &black);
        xcb_map_window(m_connection, window);
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
        return window;
    }
    void Destroy(xcb_window_t window) {
        xcb_destroy_window(m_connection, window);
        xcb_flush(m_connection);
    }
    // The window with the picture's size; 0 when there is none yet.
    xcb_window_t Find() {
        xcb_query_tree_reply_t* tree =
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_screen->root), nullptr);
        xcb_window_t found = 0;
        const xcb_window_t* children = xcb_query_tree_children(tree);
        for (int i = 0; i < xcb_query_tree_children_length(tree); ++i) {
            xcb_get_geometry_reply_t* shape =
                xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, children[i]), nullptr);
            if (shape && shape->width == kWidth && shape->height == kHeight)
                found = children[i];
            std::free(shape);
        }
        std::free(tree);
        return found;
    }

private:
    xcb_connection_t* m_connection;
    const xcb_screen_t* m_screen;
};

std::vector<std::string> CameraCommand(const std::string& address, const std::string& format,
                                       const char* fps) {
    std::vector<std::string> command = {KOLT_BIN_DIR "/kolt_virtual_camera", "--address", address,
                                        "--pixel-format", format};
    if (fps)
        command.insert(command.end(), {"--fps", fps});
    else
        command.emplace_back("--max");
    return command;
}

std::vector<std::string> ClientCommand(Client client, const std::string& address, int shown,
                                       xcb_window_t window) {
    const std::string self = KOLT_BIN_DIR "/bench_pipeline";
    switch (client) {
    case Client::Plain:
        return {self, "--plain", address};
    case Client::Live:
        return {KOLT_BIN_DIR "/kolt_live",
                "--camera",
                address,
                "--drop-incomplete",
                "--packet-size",
                std::to_string(kPacketSize),
                "--buffers",
                std::to_string(kLibraryBuffers),
                "--display-rate",
                std::to_string(shown)};
    case Client::Core:
        return {self, "--core", address, std::to_string(shown), std::to_string(window)};
    case Client::CoreWithoutDisplay:
        return {self, "--no-display", address};
    default:
        return {self, "--idle", address};
    }
}

void Collect(const std::map<uint32_t, uint64_t>& seen, const PacketWatch& packets, Result& result) {
    for (const auto& [number, time] : seen) {
        const uint64_t arrived = packets.TimeOf(number);
        if (arrived != 0 && time > arrived && time - arrived < 1000000000)
            result.latencies.push_back(static_cast<double>(time - arrived) / 1e6);
    }
}

Result Measure(Desktop& desktop, Client client, const std::string& format, const char* fps, int shown) {
    const std::string address = kolt::test::LoopbackAddress(0);
    ChildProcess camera(CameraCommand(address, format, fps));
    if (!camera.waitForOutput("ready"))
        throw std::runtime_error("the virtual camera does not start: " + camera.output());
    PacketWatch packets(address);
    xcb_window_t window = client == Client::Core ? desktop.Make() : 0;
    const xcb_window_t own = window;
    Result result;
    {
        ChildProcess process(ClientCommand(client, address, shown, window));
        Output output(process);
        const int settles = client == Client::Core ? kCoreSettles : kOthersSettle;
        Line before;
        for (int i = 0; i < settles; ++i)
            before = output.Next();
        const auto start = Clock::now();
        const double cpu = CpuSecondsOf(process.pid());
        const uint64_t trailers = packets.Trailers();
        if (client == Client::Live)
            window = desktop.Find();
        std::unique_ptr<ScreenWatch> screen;
        if (window != 0)
            screen = std::make_unique<ScreenWatch>(window, kWidth, kHeight, kSensorWidth, kSensorHeight);
        Line last;
        for (int i = 0; i < kMeasuredSeconds; ++i) {
            last = output.Next();
            result.shown += last.shown / kMeasuredSeconds;
        }
        const double seconds = Seconds(Clock::now() - start);
        result.cpuPercent = (CpuSecondsOf(process.pid()) - cpu) / seconds * 100;
        result.sentPerSecond = static_cast<double>(packets.Trailers() - trailers) / seconds;
        result.receivedPerSecond = static_cast<double>(last.frames - before.frames) / seconds;
        if (screen)
            Collect(screen->TakeSeen(), packets, result);
        screen.reset();
        // Whatever the camera has sent by now must arrive: it falls silent, and the client counts once more.
        camera.signal(SIGSTOP);
        last = output.Next();
        if (client != Client::Live) // which says good-bye to a silent camera
            last = output.Next();
        result.lost = static_cast<long long>(packets.Trailers()) - last.frames;
        camera.signal(SIGCONT);
        process.signal(SIGTERM);
        process.waitForExit();
    }
    if (own != 0)
        desktop.Destroy(own);
    camera.signal(SIGTERM);
    camera.waitForExit();
    return result;
}

void Print(const char* name, const char* client, const Result& r, int demanded) {
    std::printf("%-18s %-18s %8.1f %8.1f %6lld ", name, client, r.sentPerSecond, r.receivedPerSecond, r.lost);
    if (demanded > 0) {
        const double wanted = std::min(static_cast<double>(demanded), r.receivedPerSecond);
        std::printf("%8.2f %8.3f %8.2f %8.2f ", r.shown, wanted > 0 ? r.shown / wanted : 0.0,
                    Quantile(r.latencies, 0.5), Quantile(r.latencies, 0.95));
    } else {
        std::printf("%8s %8s %8s %8s ", "-", "-", "-", "-");
    }
    std::printf("%8.1f\n", r.cpuPercent);
    std::fflush(stdout);
}

void Table(Desktop& desktop, const std::string& format) {
    std::printf("%s, 1920 x 1080, packets of %d bytes, last %d s of each run\n", format.c_str(), kPacketSize,
                kMeasuredSeconds);
    std::printf("%-18s %-18s %8s %8s %6s %8s %8s %8s %8s %8s\n", "camera", "client", "sent/s", "got/s",
                "lost", "shown/s", "of rate", "med ms", "95% ms", "CPU %");
    for (const Case& c : kCases) {
        Print(c.name, "plain Aravis", Measure(desktop, Client::Plain, format, c.fps, 0), 0);
        Print(c.name, "kolt_live", Measure(desktop, Client::Live, format, c.fps, c.shown), c.shown);
        Print(c.name, "QCamera", Measure(desktop, Client::Core, format, c.fps, c.shown), c.shown);
    }
}

void Idle(Desktop& desktop) {
    std::printf("%-18s %-18s %8s %8s %6s %8s %8s %8s %8s %8s\n", "camera", "QCamera", "sent/s", "got/s",
                "lost", "shown/s", "of rate", "med ms", "95% ms", "CPU %");
    Print("Mono8", "connected only", Measure(desktop, Client::CoreIdle, "Mono8", "30", 0), 0);
    Print("Mono8 30 fps", "display off", Measure(desktop, Client::CoreWithoutDisplay, "Mono8", "30", 0), 0);
    Print("Mono8 120 fps", "display off", Measure(desktop, Client::CoreWithoutDisplay, "Mono8", "120", 0), 0);
}

std::optional<int> RunAsClient(const std::vector<std::string>& words) {
    if (words.size() < 2)
        return std::nullopt;
    if (words[0] == "--plain")
        return RunPlainClient(words[1]);
    if (words[0] == "--idle")
        return RunCoreClient(words[1], Activity::ConnectedOnly, 0, 30);
    if (words[0] == "--no-display")
        return RunCoreClient(words[1], Activity::StreamWithoutDisplay, 0, 30);
    if (words[0] == "--core" && words.size() == 4)
        return RunCoreClient(words[1], Activity::Show, std::stoul(words[3]), std::stoi(words[2]));
    return std::nullopt;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    std::vector<std::string> words(argv + 1, argv + argc);
    if (const auto code = RunAsClient(words))
        return *code;
    try {
        Desktop desktop;
        if (words.empty())
            words = {"Mono8", "BayerRG8", "idle"};
        for (const std::string& word : words) {
            if (word == "idle")
                Idle(desktop);
            else
                Table(desktop, word);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
