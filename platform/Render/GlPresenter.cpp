/*
 * Drawing with OpenGL ES into a child of the window. The child has the visual that the driver wants, which
 * the program's window seldom has; it follows the window's size and lets all mouse input through to it.
 */
#include "GlContext.h"
#include "Presenter.h"

#include <xcb/shape.h>

#include <utility>

namespace kolt::render {

namespace {

class GlPresenter final : public Presenter {
public:
    GlPresenter(XConnection& connection, GlContext& context, FrameStore& frames, xcb_window_t window,
                const WindowInfo& info)
        : m_connection(connection)
        , m_context(context)
        , m_frames(frames)
        , m_parent(window)
        , m_size(info.size)
        , m_colormap(xcb_generate_id(connection.get()))
        , m_child(xcb_generate_id(connection.get())) {
        xcb_connection_t* x = connection.get();
        const xcb_window_t root = connection.screen()->root;
        xcb_create_colormap(x, XCB_COLORMAP_ALLOC_NONE, m_colormap, root, context.visual());
        // A border pixel, because the parent's border may have another depth. No background, which would
        // flicker. Unseen below the root until it has a surface: see start().
        const uint32_t mask = XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT |
                              XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
        const uint32_t values[] = {XCB_BACK_PIXMAP_NONE, 0, 1, XCB_EVENT_MASK_EXPOSURE, m_colormap};
        xcb_create_window(x, static_cast<uint8_t>(context.depth()), m_child, root, 0, 0,
                          static_cast<uint16_t>(m_size.width), static_cast<uint16_t>(m_size.height), 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, context.visual(), mask, values);
        if (connection.canShapeInput()) {
            // No part of it takes input. Without the extension clicks still pass on to the parent, as nobody
            // selects them here.
            xcb_shape_rectangles(x, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, m_child,
                                 0, 0, 0, nullptr);
        }
    }

    ~GlPresenter() override {
        if (m_surface != EGL_NO_SURFACE) {
            m_context.destroySurface(m_surface);
        }
        xcb_destroy_window(m_connection.get(), m_child);
        xcb_free_colormap(m_connection.get(), m_colormap);
    }

    /*
     * Afterwards unsuitable() tells whether the driver is fit for it, lost() whether the window is gone. A
     * window that is destroyed while a driver makes its surface ends the process (Mesa 22.3), and the
     * program's window may go at any moment: so the child gets its surface while it is nobody's but ours, and
     * its place afterwards.
     */
    void start(bool evenEmulated) {
        m_surface = m_context.createSurface(m_child);
        m_unsuitable = m_surface == EGL_NO_SURFACE || !m_context.makeCurrent(m_surface) ||
                       (m_context.isEmulated() && !evenEmulated) || !m_context.prepare();
        if (m_unsuitable) {
            return;
        }
        xcb_connection_t* x = m_connection.get();
        const XReply<xcb_generic_error_t> refused(
            xcb_request_check(x, xcb_reparent_window_checked(x, m_child, m_parent, 0, 0)));
        m_lost = refused != nullptr;
        if (!m_lost) {
            xcb_map_window(x, m_child);
        }
    }

    bool present(const View& view, Size window, uint32_t syncPeriod) override {
        if (window != m_size) {
            m_freshSize = true;
            const uint32_t size[] = {static_cast<uint32_t>(window.width),
                                     static_cast<uint32_t>(window.height)};
            xcb_configure_window(m_connection.get(), m_child,
                                 XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
            m_size = window;
        }
        if (!m_context.makeCurrent(m_surface)) {
            m_unsuitable = true;
            return false;
        }
        // Drivers learn of a new size at different moments, some only in the swap: then once more. Asking the
        // driver which size it has would cost questions to the server, and leaves the answer about a window
        // that has gone to nobody (Mesa 22.3).
        for (int times = std::exchange(m_freshSize, false) ? 2 : 1; times > 0; --times) {
            if (!drawOnce(view, window) || !m_context.swap(m_surface, syncPeriod)) {
                return false;
            }
        }
        xcb_flush(m_connection.get());
        return m_connection.alive();
    }

    void handle(const xcb_generic_event_t& event) override {
        const uint8_t type = event.response_type & 0x7F;
        if (type == XCB_EXPOSE) {
            m_exposed = m_exposed || reinterpret_cast<const xcb_expose_event_t&>(event).window == m_child;
        } else if (type == 0) {
            const uint32_t id = reinterpret_cast<const xcb_generic_error_t&>(event).resource_id;
            m_lost = m_lost || id == m_child || id == m_parent;
        }
    }

    bool lost() const override { return m_lost; }
    bool unsuitable() const override { return m_unsuitable; }
    bool takeExposed() override { return std::exchange(m_exposed, false); }

private:
    bool drawOnce(const View& view, Size window) {
        bool drawn = false;
        m_frames.read([&](const FrameView& frame, uint64_t number) {
            drawn = m_context.upload(frame, number);
            m_plan = makePlan(frame.size, window, view);
        });
        if (!drawn) {
            m_unsuitable = true; // too large a picture, or the driver's memory is at an end
            return false;
        }
        m_context.drawBackground(window);
        m_context.draw(m_plan, window);
        return true;
    }

    XConnection& m_connection;
    GlContext& m_context;
    FrameStore& m_frames;
    const xcb_window_t m_parent;
    Size m_size;
    const xcb_colormap_t m_colormap;
    const xcb_window_t m_child;
    EGLSurface m_surface = EGL_NO_SURFACE;
    Plan m_plan;
    bool m_freshSize = true; /* not drawn in yet */
    bool m_exposed = false;
    bool m_lost = false;
    bool m_unsuitable = false;
};

} // namespace

std::unique_ptr<Presenter> makeGlPresenter(XConnection& connection, GlContext& context, FrameStore& frames,
                                           xcb_window_t window, const WindowInfo& info, bool evenEmulated) {
    auto presenter = std::make_unique<GlPresenter>(connection, context, frames, window, info);
    presenter->start(evenEmulated);
    return presenter->unsuitable() ? nullptr : std::move(presenter);
}

} // namespace kolt::render
