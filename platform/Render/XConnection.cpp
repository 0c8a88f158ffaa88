#include "XConnection.h"

#include <xcb/shape.h>
#include <xcb/shm.h>

#include <mutex>
#include <sys/socket.h>

namespace kolt::render {

std::unique_ptr<XConnection> XConnection::open() {
    // The search for the authority file goes by way of a static buffer of libXau.
    static std::mutex connecting; // guards that buffer
    int screen = 0;
    xcb_connection_t* connection = nullptr;
    {
        const std::lock_guard<std::mutex> lock(connecting);
        connection = xcb_connect(nullptr, &screen);
    }
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::unique_ptr<XConnection>(new XConnection(connection, screen));
}

XConnection::XConnection(xcb_connection_t* connection, int screen)
    : m_connection(connection), m_screenNumber(screen) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0; xcb_screen_next(&screens), --screen) {
        if (screen == 0 || m_screen == nullptr) {
            m_screen = screens.data;
        }
    }
    const xcb_query_extension_reply_t* shape = xcb_get_extension_data(connection, &xcb_shape_id);
    m_canShapeInput = shape != nullptr && shape->present != 0;
    const xcb_query_extension_reply_t* shm = xcb_get_extension_data(connection, &xcb_shm_id);
    if (shm != nullptr && shm->present != 0) {
        m_sharedMemoryEvents = shm->first_event;
        const XReply<xcb_shm_query_version_reply_t> version(
            xcb_shm_query_version_reply(connection, xcb_shm_query_version(connection), nullptr));
        // Since 1.2 the memory is passed as a descriptor; before, as a segment number that outlives a crash.
        m_canShareMemory = version && (version->major_version > 1 ||
                                       (version->major_version == 1 && version->minor_version >= 2));
    }
}

XConnection::~XConnection() {
    xcb_disconnect(m_connection);
}

bool XConnection::alive() const {
    return xcb_connection_has_error(m_connection) == 0;
}

int XConnection::descriptor() const {
    return xcb_get_file_descriptor(m_connection);
}

void XConnection::breakOff() {
    shutdown(descriptor(), SHUT_RDWR);
}

size_t XConnection::largestRequest() const {
    return size_t{4} * xcb_get_maximum_request_length(m_connection);
}

std::optional<WindowInfo> XConnection::watch(xcb_window_t window) {
    const uint32_t events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    const xcb_void_cookie_t selected =
        xcb_change_window_attributes_checked(m_connection, window, XCB_CW_EVENT_MASK, &events);
    const xcb_get_window_attributes_cookie_t askedAttributes =
        xcb_get_window_attributes(m_connection, window);
    const xcb_get_geometry_cookie_t askedGeometry = xcb_get_geometry(m_connection, window);
    const XReply<xcb_generic_error_t> refused(xcb_request_check(m_connection, selected));
    xcb_generic_error_t* error = nullptr;
    const XReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection, askedAttributes, &error));
    const XReply<xcb_generic_error_t> noAttributes(error);
    error = nullptr;
    const XReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection, askedGeometry, &error));
    const XReply<xcb_generic_error_t> noGeometry(error);
    if (refused || !attributes || !geometry) {
        return std::nullopt;
    }
    const std::optional<PixelFormat> format = formatOf(geometry->depth, attributes->visual);
    if (!format) {
        unwatch(window);
        return std::nullopt;
    }
    return WindowInfo{Size{geometry->width, geometry->height}, *format, attributes->visual};
}

void XConnection::unwatch(xcb_window_t window) {
    const uint32_t none = 0;
    xcb_change_window_attributes(m_connection, window, XCB_CW_EVENT_MASK, &none);
}

int XConnection::depthOf(xcb_visualid_t visual) const {
    for (xcb_depth_iterator_t d = xcb_screen_allowed_depths_iterator(m_screen); d.rem > 0;
         xcb_depth_next(&d)) {
        const xcb_visualtype_t* visuals = xcb_depth_visuals(d.data);
        for (int i = 0; i < xcb_depth_visuals_length(d.data); ++i) {
            if (visuals[i].visual_id == visual) {
                return d.data->depth;
            }
        }
    }
    return 0;
}

std::optional<PixelFormat> XConnection::formatOf(int depth, xcb_visualid_t visual) const {
    const xcb_setup_t* setup = xcb_get_setup(m_connection);
    PixelFormat format;
    format.depth = depth;
    format.bitsPerPixel = 0;
    format.bigEndian = setup->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
    for (xcb_format_iterator_t i = xcb_setup_pixmap_formats_iterator(setup); i.rem > 0; xcb_format_next(&i)) {
        if (i.data->depth == depth) {
            format.bitsPerPixel = i.data->bits_per_pixel;
            format.scanlinePad = i.data->scanline_pad;
        }
    }
    for (xcb_screen_iterator_t s = xcb_setup_roots_iterator(setup); s.rem > 0; xcb_screen_next(&s)) {
        for (xcb_depth_iterator_t d = xcb_screen_allowed_depths_iterator(s.data); d.rem > 0;
             xcb_depth_next(&d)) {
            for (xcb_visualtype_iterator_t v = xcb_depth_visuals_iterator(d.data); v.rem > 0;
                 xcb_visualtype_next(&v)) {
                const bool trueColour = v.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR ||
                                        v.data->_class == XCB_VISUAL_CLASS_DIRECT_COLOR;
                if (v.data->visual_id == visual && trueColour) {
                    format.redMask = v.data->red_mask;
                    format.greenMask = v.data->green_mask;
                    format.blueMask = v.data->blue_mask;
                    return format.valid() ? std::optional<PixelFormat>(format) : std::nullopt;
                }
            }
        }
    }
    return std::nullopt;
}

} // namespace kolt::render
