#include "Site.h"
#include "support/Places.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

using kolt::test::ChildProcess;
using kolt::test::NamespaceScope;
using kolt::test::NetworkNamespace;

Site::Site() : m_inside(m_host) {
    NetworkNamespace::cable(m_host, "eth1", "192.168.7.1/24", m_far, "cam0", "192.168.7.2/24");
    m_host.ip("link set eth1 mtu 9000");
    m_far.ip("link set cam0 mtu 9000");
}

std::unique_ptr<ChildProcess> Site::Camera(const std::string& format, int framesPerSecond) const {
    const NamespaceScope there(m_far);
    auto camera = std::make_unique<ChildProcess>(
        std::vector<std::string>{std::string(KOLT_BIN_DIR) + "/kolt_virtual_camera", "--interface", "cam0",
                                 "--address", "192.168.7.20", "--user-name", "bench", "--pixel-format",
                                 format, "--fps", std::to_string(framesPerSecond), "--link-speed", "5000"});
    if (!camera->waitForOutput("ready"))
        throw std::runtime_error("the virtual camera does not start: " + camera->output());
    return camera;
}

Screen::Screen() : m_connection(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(m_connection) != 0)
        throw std::runtime_error("no display: run it by scripts/with-xvfb");
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

Screen::~Screen() {
    xcb_disconnect(m_connection);
}

std::vector<uint32_t> Screen::Read(int x, int y, int width, int height) const {
    xcb_get_image_reply_t* reply =
        xcb_get_image_reply(m_connection,
                            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root,
                                          static_cast<int16_t>(x), static_cast<int16_t>(y),
                                          static_cast<uint16_t>(width), static_cast<uint16_t>(height), ~0U),
                            nullptr);
    if (!reply)
        throw std::runtime_error("the screen can't be read");
    std::vector<uint32_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height));
    std::memcpy(pixels.data(), xcb_get_image_data(reply), pixels.size() * 4);
    std::free(reply);
    for (uint32_t& pixel : pixels)
        pixel &= 0xFFFFFF;
    return pixels;
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

Memory MemoryOf(pid_t pid) {
    Memory memory;
    std::ifstream file("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string name;
        double kilobytes = 0;
        words >> name >> kilobytes;
        if (name == "Rss:")
            memory.rss = kilobytes / 1024;
        else if (name == "Pss:")
            memory.pss = kilobytes / 1024;
    }
    return memory;
}

double Median(std::vector<double> values) {
    if (values.empty())
        throw std::runtime_error("nothing was measured");
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void WaitUntil(const char* what, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error(std::string("did not come: ") + what);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}
