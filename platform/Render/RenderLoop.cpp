#include "RenderLoop.h"

#include <csignal>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <new>
#include <system_error>

namespace kolt::render {

namespace {

/* A server that doesn't answer for so long is taken for hung. */
constexpr std::chrono::seconds kPatience(3);

int openWakeUp() {
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    return descriptor;
}

/* The program's signals are handled by the program's threads. */
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t m_before{};
};

} // namespace

RenderLoop::RenderLoop(std::unique_ptr<XConnection> connection, const PortTable& ports, FrameStore& frames,
                       RenderOptions options)
    : m_ports(ports)
    , m_frames(frames)
    , m_options(options)
    , m_connection(std::move(connection))
    , m_wakeUp(openWakeUp()) {
    try {
        const SignalsBlocked inherited;
        m_thread = std::thread([this] { run(); });
    } catch (...) {
        close(m_wakeUp);
        throw;
    }
}

RenderLoop::~RenderLoop() {
    stop();
    close(m_wakeUp);
}

void RenderLoop::stop() {
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_stopping = true;
        eventfd_write(m_wakeUp, 1);
        if (!m_changed.wait_for(lock, kPatience, [this] { return m_ended; })) {
            m_connection->breakOff();
        }
    }
    const std::lock_guard<std::mutex> lock(m_joining);
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

std::shared_ptr<RenderLoop::Request> RenderLoop::submit(Request::Kind kind, uint32_t port,
                                                        xcb_window_t window) {
    auto request = std::make_shared<Request>();
    request->kind = kind;
    request->port = port;
    request->window = window;
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_stopping) {
        m_requests.push_back(request);
        eventfd_write(m_wakeUp, 1);
        m_changed.wait_for(lock, kPatience, [&request] { return request->finished; });
    }
    return request;
}

std::optional<Size> RenderLoop::display(uint32_t port, xcb_window_t window) {
    const std::shared_ptr<Request> request = submit(Request::Kind::Display, port, window);
    const std::lock_guard<std::mutex> lock(m_mutex);
    return request->result;
}

void RenderLoop::release(uint32_t port) {
    submit(Request::Kind::Release, port, 0);
}

void RenderLoop::run() {
    pthread_setname_np(pthread_self(), "vr-render");
    for (;;) {
        handleEvents();
        bool stopping = false;
        const std::shared_ptr<Request> request = nextRequest(stopping);
        if (stopping) {
            break;
        }
        if (request) {
            serve(*request);
        }
        redrawStale();
        if (!request) {
            sleep();
        }
    }
    m_targets.clear();
    m_gl.reset();
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::shared_ptr<Request>& request : m_requests) {
        request->finished = true;
    }
    m_requests.clear();
    m_ended = true;
    m_changed.notify_all();
}

std::shared_ptr<RenderLoop::Request> RenderLoop::nextRequest(bool& stopping) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    stopping = m_stopping;
    // Stopped, the requests stay where the end of the thread finishes them all.
    if (stopping || m_requests.empty()) {
        return nullptr;
    }
    std::shared_ptr<Request> request = m_requests.front();
    m_requests.pop_front();
    return request;
}

void RenderLoop::serve(Request& request) {
    std::optional<Size> result;
    if (request.kind == Request::Kind::Release) {
        dropTarget(request.port);
        xcb_flush(m_connection->get());
    } else {
        result = draw(request.port, request.window);
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    request.result = result;
    request.finished = true;
    m_changed.notify_all();
}

std::optional<Size> RenderLoop::draw(uint32_t port, xcb_window_t window) {
    const std::optional<Port> settings = m_ports.find(port);
    if (!settings || !m_connection->alive()) {
        return std::nullopt;
    }
    try {
        Target* target = targetFor(port, window);
        if (target == nullptr || !present(*target, *settings)) {
            return std::nullopt;
        }
        return target->info.size;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

bool RenderLoop::present(Target& target, const Port& settings) {
    target.stale = false;
    if (target.presenter->present(settings.view, target.info.size, settings.syncPeriod)) {
        return true;
    }
    target.lost = target.lost || target.presenter->lost();
    if (target.lost || !target.presenter->unsuitable()) {
        return false;
    }
    target.presenter.reset(); // its window is on top
    target.presenter = makeSoftwarePresenter(*m_connection, *this, m_frames, target.window, target.info,
                                             m_options.shareMemory);
    return target.presenter->present(settings.view, target.info.size, settings.syncPeriod);
}

void RenderLoop::redrawStale() {
    for (auto& [port, target] : m_targets) {
        if (!target.stale || target.lost || m_frames.empty()) {
            continue;
        }
        const std::optional<Port> settings = m_ports.find(port);
        if (!settings) {
            continue;
        }
        try {
            present(target, *settings);
        } catch (const std::bad_alloc&) {
            // The next picture or exposure tries again.
        }
    }
}

RenderLoop::Target* RenderLoop::targetFor(uint32_t port, xcb_window_t window) {
    const auto found = m_targets.find(port);
    if (found != m_targets.end()) {
        const Target& target = found->second;
        if (target.window == window && !target.lost && !target.presenter->lost()) {
            return &found->second;
        }
        dropTarget(port);
    }
    const std::optional<WindowInfo> info = m_connection->watch(window);
    if (!info) {
        return nullptr;
    }
    Target target;
    target.window = window;
    target.info = *info;
    target.presenter = makePresenter(window, *info);
    if (target.presenter->lost()) {
        return nullptr;
    }
    return &m_targets.emplace(port, std::move(target)).first->second;
}

bool RenderLoop::usesOpenGl() {
    if (!m_options.openGl || m_glRefused) {
        return false;
    }
    // Loading a driver only to learn that it works on the processor costs a tenth of a second and much
    // memory.
    if (!m_gl && (m_options.forceOpenGl || hasGraphicsDevice())) {
        m_gl = GlContext::create(*m_connection);
    }
    m_glRefused = m_gl == nullptr;
    return !m_glRefused;
}

std::unique_ptr<Presenter> RenderLoop::makePresenter(xcb_window_t window, const WindowInfo& info) {
    if (usesOpenGl()) {
        std::unique_ptr<Presenter> presenter =
            makeGlPresenter(*m_connection, *m_gl, m_frames, window, info, m_options.forceOpenGl);
        if (presenter) {
            return presenter;
        }
        if (m_targets.empty()) {
            m_gl.reset();
        }
        m_glRefused = true;
    }
    return makeSoftwarePresenter(*m_connection, *this, m_frames, window, info, m_options.shareMemory);
}

void RenderLoop::dropTarget(uint32_t port) {
    const auto found = m_targets.find(port);
    if (found == m_targets.end()) {
        return;
    }
    const xcb_window_t window = found->second.window;
    m_targets.erase(found);
    const bool shared = std::any_of(m_targets.begin(), m_targets.end(),
                                    [window](const auto& other) { return other.second.window == window; });
    if (!shared) {
        m_connection->unwatch(window);
    }
}

void RenderLoop::handleEvents() {
    for (;;) {
        const XReply<xcb_generic_event_t> event(xcb_poll_for_event(m_connection->get()));
        if (!event) {
            return;
        }
        handle(*event);
    }
}

void RenderLoop::handle(const xcb_generic_event_t& event) {
    const uint8_t type = event.response_type & 0x7F;
    for (auto& [port, target] : m_targets) {
        if (!target.presenter) {
            continue;
        }
        target.presenter->handle(event);
        if (type == XCB_EXPOSE) {
            const bool own = reinterpret_cast<const xcb_expose_event_t&>(event).window == target.window;
            target.stale = target.presenter->takeExposed() || own || target.stale;
        } else if (type == XCB_CONFIGURE_NOTIFY) {
            const auto& change = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
            const Size size{change.width, change.height};
            if (change.window == target.window && size != target.info.size) {
                target.info.size = size;
                target.stale = true;
            }
        } else if (type == XCB_DESTROY_NOTIFY) {
            target.lost = target.lost ||
                          reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == target.window;
        }
    }
}

bool RenderLoop::waitForEvents(int timeoutMs) {
    xcb_flush(m_connection->get());
    pollfd waited{m_connection->descriptor(), POLLIN, 0};
    XReply<xcb_generic_event_t> event(xcb_poll_for_event(m_connection->get()));
    if (!event) {
        if (!m_connection->alive() || poll(&waited, 1, timeoutMs) == 0) {
            return false;
        }
        event.reset(xcb_poll_for_event(m_connection->get()));
    }
    if (event) {
        handle(*event);
    }
    return m_connection->alive();
}

void RenderLoop::sleep() {
    xcb_flush(m_connection->get());
    // A drawing that waited for a reply may have read events along with it: these make no descriptor
    // readable.
    if (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection->get())}) {
        handle(*event);
        return;
    }
    // A broken connection is always readable; then only requests are of interest, and all fail.
    pollfd waited[2] = {{m_wakeUp, POLLIN, 0}, {m_connection->descriptor(), POLLIN, 0}};
    const nfds_t count = m_connection->alive() ? 2 : 1;
    poll(waited, count, -1);
    eventfd_t ignored = 0;
    eventfd_read(m_wakeUp, &ignored);
}

} // namespace kolt::render
