/*
 * What stands behind a render handle. All operations may be called from any thread and return false for
 * arguments or states that don't allow them, leaving everything as it was.
 */
#ifndef KOLT_RENDER_RENDERER_H
#define KOLT_RENDER_RENDERER_H

#include "Camera/Boundary/OVRender.h"
#include "FrameStore.h"
#include "PortTable.h"
#include "RenderLoop.h"

#include <memory>
#include <mutex>

namespace kolt::render {

class Renderer {
public:
    Renderer() = default;
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /* Once; connects to the display. Everything else wants it done. */
    bool init(uint32_t pixelFormat, uint32_t engine, uint32_t count);
    /* Ends all drawing for good: the windows are let go of, the thread and the connection are gone. */
    void shutDown();

    bool addPort(uint64_t window, uint32_t port);
    bool deletePort(uint32_t port);
    bool setSyncPeriod(uint32_t port, uint32_t period);
    bool setCallback(uint32_t port, uint32_t mode, VRDrawCallBack callback, void* user);
    bool updateFrame(const uint8_t* pixels, uint32_t width, uint32_t height);
    bool display(uint32_t port, uint64_t window);
    bool setDestination(uint32_t port, const tagVRRectF* destination);
    bool setRectangles(uint32_t port, const tagVRRectF* source, const tagVRRectF* destination);
    bool rotate(uint32_t port, const tagVRRotation* record);

    /* This thread is inside a callback of some handle. */
    static bool insideCallback();

private:
    /* Made at once by init(), never replaced; in order of construction. */
    struct Core {
        Core(int channels, std::unique_ptr<XConnection> connection, RenderOptions options)
            : frames(channels), loop(std::move(connection), ports, frames, options) {}
        PortTable ports;
        FrameStore frames;
        RenderLoop loop;
    };

    std::shared_ptr<Core> core() const;

    mutable std::mutex m_mutex; /* guards m_core and m_shutDown; not held while drawing */
    std::shared_ptr<Core> m_core;
    bool m_shutDown = false;
};

} // namespace kolt::render

#endif
