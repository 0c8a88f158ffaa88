/*
 * What a drawn frame costs: VR_UpdateFrameData and VR_Display into a window of 1000 x 700, beside a plain
 * copy of the frame (the least that taking the pixels over can cost) and beside a plain program that draws
 * the same with nearest pixels and PutImage. CPU is that of this process, without the server's.
 *
 * bench_render [FRAMES]: on $DISPLAY, or on a virtual display of its own.
 */
#include "Camera/Boundary/OVRender.h"
#include "support/Places.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kWindowWidth = 1000;
constexpr int kWindowHeight = 700;
constexpr double kTargetMs = 1.0; /* of CPU, for the largest colour picture */

double now(clockid_t clock) {
    timespec t{};
    clock_gettime(clock, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

struct Cost {
    double wall = 0;
    double cpu = 0;
};

/* Medians over the frames. */
Cost measure(int frames, const std::function<void(int)>& draw) {
    std::vector<double> wall;
    std::vector<double> cpu;
    for (int i = -10; i < frames; ++i) {
        const double wallBefore = now(CLOCK_MONOTONIC);
        const double cpuBefore = now(CLOCK_PROCESS_CPUTIME_ID);
        draw(i);
        if (i >= 0) {
            cpu.push_back(now(CLOCK_PROCESS_CPUTIME_ID) - cpuBefore);
            wall.push_back(now(CLOCK_MONOTONIC) - wallBefore);
        }
    }
    const auto median = [](std::vector<double>& values) {
        std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
        return values[values.size() / 2];
    };
    return {median(wall), median(cpu)};
}

struct Format {
    int width;
    int height;
    int channels;

    size_t bytes() const {
        return static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(channels);
    }
    std::string name() const {
        return std::to_string(width) + " x " + std::to_string(height) + (channels == 1 ? " grey" : " RGB");
    }
};

class Screen {
public:
    Screen() : m_connection(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(m_connection) != 0) {
            std::fprintf(stderr, "bench_render: no X server\n");
            std::exit(1);
        }
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        window = xcb_generate_id(m_connection);
        const uint32_t values[] = {XCB_BACK_PIXMAP_NONE, 1};
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, kWindowWidth,
                          kWindowHeight, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(m_connection, window);
        m_context = xcb_generate_id(m_connection);
        xcb_create_gc(m_connection, m_context, window, 0, nullptr);
        m_depth = screen->root_depth;
        sync();
    }
    ~Screen() { xcb_disconnect(m_connection); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void sync() {
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }

    /* The plain program: copy, nearest pixel, PutImage, wait for the server. */
    void drawPlainly(const Format& format, const uint8_t* frame) {
        m_copy.resize(format.bytes());
        std::memcpy(m_copy.data(), frame, format.bytes());
        m_image.resize(static_cast<size_t>(kWindowWidth) * kWindowHeight);
        for (int y = 0; y < kWindowHeight; ++y) {
            const int row = y * format.height / kWindowHeight;
            for (int x = 0; x < kWindowWidth; ++x) {
                const int column = x * format.width / kWindowWidth;
                const uint8_t* p =
                    m_copy.data() + (static_cast<size_t>(row) * static_cast<size_t>(format.width) +
                                     static_cast<size_t>(column)) *
                                        static_cast<size_t>(format.channels);
                const uint32_t red = p[0];
                const uint32_t green = format.channels == 1 ? red : p[1];
                const uint32_t blue = format.channels == 1 ? red : p[2];
                m_image[static_cast<size_t>(y) * kWindowWidth + static_cast<size_t>(x)] =
                    red << 16 | green << 8 | blue;
            }
        }
        xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, m_context, kWindowWidth, kWindowHeight,
                      0, 0, 0, m_depth, static_cast<uint32_t>(m_image.size() * 4),
                      reinterpret_cast<const uint8_t*>(m_image.data()));
        sync();
    }

    xcb_window_t window;

private:
    xcb_connection_t* m_connection;
    xcb_gcontext_t m_context;
    uint8_t m_depth;
    std::vector<uint8_t> m_copy;
    std::vector<uint32_t> m_image;
};

/* One way of drawing: which part of the picture, which turn, which engine. */
struct Manner {
    const char* name;
    uint32_t engine;
    int degrees;
    bool actualSize;
};

struct Drawn {
    Cost update;
    Cost display;
    Cost both;
};

Drawn drawn(Screen& screen, const Format& format, const std::vector<std::vector<uint8_t>>& frames,
            const Manner& manner, int count) {
    void* handle = VR_CreateHandle();
    if (VR_Init(handle, format.channels == 1 ? VR_PIXEL_MONO8 : VR_PIXEL_RGB8, manner.engine, 1) != 1) {
        std::fprintf(stderr, "bench_render: VR_Init failed\n");
        std::exit(1);
    }
    VR_AddSubPort(handle, screen.window, 0, 0);
    tagVRRotation rotation{};
    rotation.axis = {0, 0, 1, static_cast<float>(manner.degrees)};
    rotation.axes = &rotation.axis;
    rotation.axisCount = 1;
    VR_Rotate(handle, 0, &rotation);
    if (manner.actualSize) {
        const bool swapped = manner.degrees % 180 != 0;
        const float u =
            static_cast<float>(swapped ? kWindowHeight : kWindowWidth) / static_cast<float>(format.width);
        const float v =
            static_cast<float>(swapped ? kWindowWidth : kWindowHeight) / static_cast<float>(format.height);
        const tagVRRectF source{0, v, 0, u};
        const tagVRRectF all{0, 1, 0, 1};
        VR_SetDisplayRect(handle, 0, &source, &all);
    }
    const auto width = static_cast<uint32_t>(format.width);
    const auto height = static_cast<uint32_t>(format.height);
    const auto frame = [&](int i) { return frames[static_cast<size_t>(i + 10) % frames.size()].data(); };
    const auto check = [](int32_t result) {
        if (result != 1) {
            std::fprintf(stderr, "bench_render: a drawing failed\n");
            std::exit(1);
        }
    };
    Drawn result;
    result.both = measure(count, [&](int i) {
        check(VR_UpdateFrameData(handle, frame(i), width, height, 0));
        check(VR_Display(handle, 0, screen.window));
    });
    result.update =
        measure(count, [&](int i) { check(VR_UpdateFrameData(handle, frame(i), width, height, 0)); });
    result.display = measure(count, [&](int) { check(VR_Display(handle, 0, screen.window)); });
    VR_DestroyHandle(handle);
    return result;
}

} // namespace

int main(int argc, char** argv) {
    if (std::getenv("DISPLAY") == nullptr) {
        execl(KOLT_SOURCE_DIR "/scripts/with-xvfb", "with-xvfb", argv[0], argc > 1 ? argv[1] : "300",
              nullptr);
        std::perror("bench_render: with-xvfb");
        return 1;
    }
    const int count = argc > 1 ? std::max(1, std::atoi(argv[1])) : 300;
    Screen screen;
    const Format formats[] = {{1920, 1080, 1}, {1920, 1080, 3}, {2448, 2048, 1}, {2448, 2048, 3}};
    const Manner manners[] = {
        {"software, whole picture", VR_ENGINE_SOFTWARE, 0, false},
        {"software, whole, turned 90", VR_ENGINE_SOFTWARE, 90, false},
        {"software, whole, turned 180", VR_ENGINE_SOFTWARE, 180, false},
        {"software, 1:1", VR_ENGINE_SOFTWARE, 0, true},
        {"software, 1:1, turned 90", VR_ENGINE_SOFTWARE, 90, true},
    };
    std::printf("Window %d x %d, medians of %d frames, ms per frame as wall / CPU of this process\n\n",
                kWindowWidth, kWindowHeight, count);
    std::printf("%-18s %-28s %13s %13s %13s %9s\n", "picture", "drawn by", "both calls", "UpdateFrame",
                "Display", "CPU/copy");
    bool met = true;
    for (const Format& format : formats) {
        // One buffer, as a program has that converts each frame into the same place.
        std::vector<std::vector<uint8_t>> frames(1, std::vector<uint8_t>(format.bytes()));
        std::mt19937 random(1);
        for (auto& frame : frames) {
            for (uint8_t& byte : frame) {
                byte = static_cast<uint8_t>(random());
            }
        }
        std::vector<uint8_t> copy(format.bytes());
        const Cost copied = measure(count, [&](int i) {
            std::memcpy(copy.data(), frames[static_cast<size_t>(i + 10) % frames.size()].data(), copy.size());
        });
        const std::string name = format.name();
        std::printf("%-18s %-28s %6.2f /%5.2f\n", name.c_str(), "(memcpy of the frame)", copied.wall,
                    copied.cpu);
        const Cost plain = measure(count / 3 + 1, [&](int i) {
            screen.drawPlainly(format, frames[static_cast<size_t>(i + 10) % frames.size()].data());
        });
        std::printf("%-18s %-28s %6.2f /%5.2f %31s %8.1fx\n", name.c_str(), "(plain nearest, PutImage)",
                    plain.wall, plain.cpu, "", plain.cpu / copied.cpu);
        for (const Manner& manner : manners) {
            const Drawn d = drawn(screen, format, frames, manner, count);
            const bool target = &format == &formats[3] && &manner == &manners[0];
            met = met && (!target || d.both.cpu <= kTargetMs);
            std::printf("%-18s %-28s %6.2f /%5.2f %6.2f /%5.2f %6.2f /%5.2f %8.1fx%s\n", name.c_str(),
                        manner.name, d.both.wall, d.both.cpu, d.update.wall, d.update.cpu, d.display.wall,
                        d.display.cpu, d.both.cpu / copied.cpu, target ? "  <- target 1.00 ms of CPU" : "");
            std::fflush(stdout);
        }
    }
    std::printf("\nTarget %s.\n", met ? "met" : "missed");
    return 0;
}
