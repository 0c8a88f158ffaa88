/*
 * The tests' own side of the display: windows like those of a program, and pixels read back from the screen.
 */
#ifndef KOLT_TESTS_RENDER_X_CLIENT_H
#define KOLT_TESTS_RENDER_X_CLIENT_H

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kolt::tests {

struct Rgb {
    int red = 0;
    int green = 0;
    int blue = 0;
    bool operator==(const Rgb& o) const { return red == o.red && green == o.green && blue == o.blue; }
};

/* Pixels in rows, top first. */
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Rgb> pixels;

    Picture() = default;
    Picture(int w, int h) : width(w), height(h), pixels(static_cast<size_t>(w) * static_cast<size_t>(h)) {}
    Rgb& at(int x, int y) {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
    const Rgb& at(int x, int y) const {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
    /* As a portable pixmap, for looking at. */
    void save(const std::string& name) const;
};

/* A connection to $DISPLAY, or to the display named. */
class XClient {
public:
    explicit XClient(const char* display = nullptr);
    ~XClient();
    XClient(const XClient&) = delete;
    XClient& operator=(const XClient&) = delete;

    xcb_connection_t* get() const { return m_connection; }
    xcb_screen_t* screen() const { return m_screen; }
    void sync() const;

    /* Mapped, at a place of the screen, below parent (0: the root). Waits until it is viewable. */
    xcb_window_t makeWindow(int x, int y, int width, int height, xcb_window_t parent = 0) const;
    void resize(xcb_window_t window, int width, int height) const;
    void move(xcb_window_t window, int x, int y) const;
    void reparent(xcb_window_t window, xcb_window_t parent, int x, int y) const;
    void raise(xcb_window_t window) const;
    void map(xcb_window_t window) const;
    void unmap(xcb_window_t window) const;
    void destroy(xcb_window_t window) const;
    /* Paints it all in one colour, as a program's own drawing would. */
    void fill(xcb_window_t window, uint32_t rgb) const;

    /* What stands on the screen there. */
    Picture screenshot(int x, int y, int width, int height) const;
    /* Direct children of a window. */
    std::vector<xcb_window_t> children(xcb_window_t window) const;

private:
    xcb_connection_t* m_connection;
    xcb_screen_t* m_screen;
};

/* True as soon as the condition is, false after the deadline. */
bool eventually(const std::function<bool()>& condition,
                std::chrono::milliseconds deadline = std::chrono::seconds(20));

} // namespace kolt::tests

#endif
