#include "Renderer.h"

#include <cstdlib>
#include <cstring>

namespace kolt::render {

namespace {

/* The number of pictures to keep, of which only the newest is ever shown; more than this is a mistake. */
constexpr uint32_t kMostPictures = 64;
constexpr uint32_t kCallbackAfterDisplay = 1;

thread_local int callbackDepth = 0;

class CallbackScope {
public:
    CallbackScope() { ++callbackDepth; }
    ~CallbackScope() { --callbackDepth; }
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;
};

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0' && std::strcmp(value, "0") != 0;
}

/* Window numbers have 32 bits; the contract's type has room for those of other systems. */
bool isWindow(uint64_t window) {
    return window <= UINT32_MAX;
}

} // namespace

Renderer::~Renderer() {
    shutDown();
}

std::shared_ptr<Renderer::Core> Renderer::core() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_core;
}

bool Renderer::init(uint32_t pixelFormat, uint32_t engine, uint32_t count) {
    if ((pixelFormat != VR_PIXEL_RGB8 && pixelFormat != VR_PIXEL_MONO8) ||
        (engine != VR_ENGINE_OPENGL && engine != VR_ENGINE_SOFTWARE) || count == 0 || count > kMostPictures) {
        return false;
    }
    RenderOptions options;
    options.openGl = engine == VR_ENGINE_OPENGL;
    options.forceOpenGl = isSet("KOLT_RENDER_FORCE_GL");
    options.shareMemory = !isSet("KOLT_RENDER_NO_SHM");
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_core || m_shutDown) {
        return false;
    }
    std::unique_ptr<XConnection> connection = XConnection::open();
    if (!connection) {
        return false;
    }
    m_core = std::make_shared<Core>(pixelFormat == VR_PIXEL_RGB8 ? 3 : 1, std::move(connection), options);
    return true;
}

void Renderer::shutDown() {
    std::shared_ptr<Core> core;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_shutDown = true;
        core = std::move(m_core);
        m_core.reset();
    }
    if (core) {
        core->loop.stop();
    }
}

bool Renderer::addPort(uint64_t window, uint32_t port) {
    const auto core = this->core();
    return core && isWindow(window) && core->ports.add(port, static_cast<xcb_window_t>(window));
}

bool Renderer::deletePort(uint32_t port) {
    const auto core = this->core();
    if (!core || !core->ports.remove(port)) {
        return false;
    }
    core->loop.release(port);
    return true;
}

bool Renderer::setSyncPeriod(uint32_t port, uint32_t period) {
    const auto core = this->core();
    return core && core->ports.change(port, [period](Port& p) { p.syncPeriod = period; });
}

bool Renderer::setCallback(uint32_t port, uint32_t mode, VRDrawCallBack callback, void* user) {
    const auto core = this->core();
    if (!core || mode != kCallbackAfterDisplay || callback == nullptr) {
        return false;
    }
    return core->ports.change(port, [=](Port& p) {
        p.callbackMode = mode;
        p.callback = callback;
        p.user = user;
    });
}

bool Renderer::updateFrame(const uint8_t* pixels, uint32_t width, uint32_t height) {
    const auto core = this->core();
    return core && core->frames.put(pixels, width, height);
}

bool Renderer::display(uint32_t port, uint64_t window) {
    const auto core = this->core();
    if (!core || !isWindow(window) || core->frames.empty()) {
        return false;
    }
    Port settings;
    const bool known = core->ports.change(port, [&](Port& p) {
        if (window != 0) {
            p.window = static_cast<xcb_window_t>(window);
        }
        settings = p;
    });
    if (!known || settings.window == 0) {
        return false;
    }
    const std::optional<Size> drawn = core->loop.display(port, settings.window);
    if (!drawn) {
        return false;
    }
    if (settings.callback != nullptr) {
        const CallbackScope scope;
        // The drawable as a pointer: what the other side needs to draw on top by a connection of its own.
        void* drawable =
            reinterpret_cast<void*>(uintptr_t{settings.window}); // NOLINT(performance-no-int-to-ptr)
        settings.callback(settings.user, port, settings.callbackMode, drawable,
                          static_cast<uint32_t>(drawn->width), static_cast<uint32_t>(drawn->height));
    }
    return true;
}

bool Renderer::setDestination(uint32_t port, const tagVRRectF* destination) {
    const auto core = this->core();
    const std::optional<Fractions> checked = checkedFractions(destination);
    return core && checked && core->ports.change(port, [&](Port& p) { p.view.destination = *checked; });
}

bool Renderer::setRectangles(uint32_t port, const tagVRRectF* source, const tagVRRectF* destination) {
    const auto core = this->core();
    const std::optional<Fractions> from = checkedFractions(source);
    const std::optional<Fractions> to = checkedFractions(destination);
    return core && from && to && core->ports.change(port, [&](Port& p) {
        p.view.source = *from;
        p.view.destination = *to;
    });
}

bool Renderer::rotate(uint32_t port, const tagVRRotation* record) {
    const auto core = this->core();
    const std::optional<int> turns = checkedQuarterTurns(record);
    return core && turns && core->ports.change(port, [&](Port& p) { p.view.quarterTurns = *turns; });
}

bool Renderer::insideCallback() {
    return callbackDepth > 0;
}

} // namespace kolt::render
