/*
 * The render thread of a handle. It alone talks to the X server: it draws what the program asks for, and
 * draws the last picture again by itself when a window has been resized or uncovered. Callers hand it a
 * request and wait for the result.
 */
#ifndef KOLT_RENDER_RENDER_LOOP_H
#define KOLT_RENDER_RENDER_LOOP_H

#include "FrameStore.h"
#include "GlContext.h"
#include "PortTable.h"
#include "Presenter.h"
#include "XConnection.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace kolt::render {

struct RenderOptions {
    bool openGl = false;      /* try OpenGL */
    bool forceOpenGl = false; /* also where it is emulated on the processor */
    bool shareMemory = true;
};

class RenderLoop final : private EventSource {
public:
    /* ports and frames outlive the loop. Throws std::system_error when there is no thread to be had. */
    RenderLoop(std::unique_ptr<XConnection> connection, const PortTable& ports, FrameStore& frames,
               RenderOptions options);
    ~RenderLoop() override;

    /* Any thread: draws the newest picture and returns the window's size, or nothing when that failed. */
    std::optional<Size> display(uint32_t port, xcb_window_t window);
    /* Any thread: lets go of a port's window; afterwards nothing is drawn into it. */
    void release(uint32_t port);
    /* Any thread: ends the thread; requests that wait fail, as do later ones. */
    void stop();

private:
    struct Request {
        enum class Kind { Display, Release } kind = Kind::Display;
        uint32_t port = 0;
        xcb_window_t window = 0;
        bool finished = false; /* guarded by m_mutex, as is the result */
        std::optional<Size> result;
    };

    /* A window that a port draws into. */
    struct Target {
        xcb_window_t window = 0;
        WindowInfo info;
        std::unique_ptr<Presenter> presenter;
        bool lost = false;
        bool stale = false; /* resized or uncovered since the last drawing */
    };

    bool waitForEvents(int timeoutMs) override;

    std::shared_ptr<Request> submit(Request::Kind kind, uint32_t port, xcb_window_t window);
    void run();
    void handleEvents();
    void handle(const xcb_generic_event_t& event);
    std::shared_ptr<Request> nextRequest(bool& stopping);
    void serve(Request& request);
    std::optional<Size> draw(uint32_t port, xcb_window_t window);
    bool present(Target& target, const Port& settings);
    bool usesOpenGl();
    void redrawStale();
    Target* targetFor(uint32_t port, xcb_window_t window);
    std::unique_ptr<Presenter> makePresenter(xcb_window_t window, const WindowInfo& info);
    void dropTarget(uint32_t port);
    void sleep();

    const PortTable& m_ports;
    FrameStore& m_frames;
    const RenderOptions m_options;
    const std::unique_ptr<XConnection> m_connection;
    /* The following are the render thread's own. The targets go before the context, which goes before the
     * connection. */
    std::unique_ptr<GlContext> m_gl;
    bool m_glRefused = false;
    std::map<uint32_t, Target> m_targets; /* by port */

    std::mutex m_mutex; /* guards the requests, m_stopping and m_ended */
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<Request>> m_requests;
    bool m_stopping = false;
    bool m_ended = false;
    const int m_wakeUp;   /* an event descriptor beside the connection's */
    std::mutex m_joining; /* held while the thread is joined, by whoever comes first */
    std::thread m_thread;
};

} // namespace kolt::render

#endif
