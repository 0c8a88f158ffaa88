#include "ScreenWatch.h"

#include "Picture/Scene.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>

namespace {

constexpr auto kPeriod = std::chrono::microseconds(500);

uint64_t RealTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000000 + static_cast<uint64_t>(now.tv_nsec);
}

} // namespace

ScreenWatch::ScreenWatch(xcb_window_t window, uint32_t width, uint32_t height, uint32_t sensorWidth,
                         uint32_t sensorHeight)
    : m_connection(xcb_connect(nullptr, nullptr)), m_width(static_cast<uint16_t>(width)) {
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    xcb_translate_coordinates_reply_t* at = xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr);
    const vcam::SceneGeometry geometry(sensorWidth, sensorHeight);
    const vcam::Rect first = geometry.StripSquare(31);
    const vcam::Rect next = geometry.StripSquare(30);
    const double scale = static_cast<double>(width) / sensorWidth;
    m_firstSquare = (first.x + first.width / 2.0) * scale;
    m_step = (static_cast<double>(next.x) - first.x) * scale;
    const double row = (first.y + first.height / 2.0) * height / sensorHeight;
    if (at) {
        m_x = at->dst_x;
        m_y = static_cast<int16_t>(at->dst_y + row);
        std::free(at);
    }
    m_thread = std::thread([this] { Run(); });
}

ScreenWatch::~ScreenWatch() {
    m_stop = true;
    m_thread.join();
    xcb_disconnect(m_connection);
}

uint32_t ScreenWatch::Read() {
    const auto cookie =
        xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, m_x, m_y, m_width, 1, ~0U);
    xcb_get_image_reply_t* reply = xcb_get_image_reply(m_connection, cookie, nullptr);
    if (!reply)
        return 0;
    const uint8_t* pixels = xcb_get_image_data(reply);
    uint32_t number = 0;
    for (int bit = 0; bit < 32; ++bit) {
        const auto x = static_cast<size_t>(m_firstSquare + m_step * bit);
        number = number << 1 | (pixels[x * 4 + 1] > 127 ? 1U : 0U);
    }
    std::free(reply);
    return number;
}

void ScreenWatch::Run() {
    uint32_t before = 0;
    auto next = std::chrono::steady_clock::now();
    while (!m_stop) {
        const uint32_t number = Read();
        if (number != before && number != 0) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_seen.emplace(number, RealTime());
            before = number;
        }
        next = std::max(next + kPeriod, std::chrono::steady_clock::now());
        std::this_thread::sleep_until(next);
    }
}

std::map<uint32_t, uint64_t> ScreenWatch::TakeSeen() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::map<uint32_t, uint64_t> taken;
    taken.swap(m_seen);
    return taken;
}
