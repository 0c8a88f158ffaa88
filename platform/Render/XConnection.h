/*
 * A private connection to the X server, and small owners of what lives behind it. A private connection keeps
 * errors, events and requests apart from those of the program's own toolkit: no error handler of a
 * process-wide kind is involved, and an error or the server's end is a result, never the end of the process.
 */
#ifndef KOLT_RENDER_X_CONNECTION_H
#define KOLT_RENDER_X_CONNECTION_H

#include "Geometry.h"
#include "PixelFormat.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <optional>

namespace kolt::render {

struct FreeDeleter {
    void operator()(void* block) const { std::free(block); }
};

/* What xcb hands out to be freed. */
template<class T>
using XReply = std::unique_ptr<T, FreeDeleter>;

struct WindowInfo {
    Size size;
    PixelFormat format;
    xcb_visualid_t visual = 0;
};

/* Used by one thread, except where said otherwise. */
class XConnection {
public:
    /* To the display named by the environment. Null without a server. */
    static std::unique_ptr<XConnection> open();
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    xcb_connection_t* get() const { return m_connection; }
    /* False for good once the server is gone or breakOff() was called. */
    bool alive() const;
    int descriptor() const;
    /* Any thread: a call that waits for the server comes back with a failure, and so does every later one. */
    void breakOff();

    /* Shared memory by file descriptor is there. */
    bool canShareMemory() const { return m_canShareMemory; }
    /* First event number of the shared memory extension. */
    uint8_t sharedMemoryEvents() const { return m_sharedMemoryEvents; }
    bool canShapeInput() const { return m_canShapeInput; }
    /* Bytes of the largest request. */
    size_t largestRequest() const;

    /*
     * Size and pixel format of a window; nothing when it doesn't exist or isn't a window of true colour. Asks
     * for its exposures and changes first, so that no later change is missed.
     */
    std::optional<WindowInfo> watch(xcb_window_t window);
    void unwatch(xcb_window_t window);

    /* Of a visual of the screen; 0 for none. */
    int depthOf(xcb_visualid_t visual) const;
    int screenNumber() const { return m_screenNumber; }
    xcb_screen_t* screen() const { return m_screen; }

private:
    XConnection(xcb_connection_t* connection, int screen);

    std::optional<PixelFormat> formatOf(int depth, xcb_visualid_t visual) const;

    xcb_connection_t* m_connection;
    const int m_screenNumber;
    xcb_screen_t* m_screen = nullptr;
    bool m_canShareMemory = false;
    bool m_canShapeInput = false;
    uint8_t m_sharedMemoryEvents = 0;
};

} // namespace kolt::render

#endif
