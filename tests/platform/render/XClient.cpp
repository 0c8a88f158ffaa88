#include "XClient.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace kolt::tests {

namespace {

struct Free {
    void operator()(void* block) const { std::free(block); }
};

template<class T>
using Reply = std::unique_ptr<T, Free>;

/* The part of a pixel under a mask, as 0 to 255. */
int component(uint32_t pixel, uint32_t mask) {
    const int shift = __builtin_ctz(mask);
    const uint64_t most = mask >> shift;
    return static_cast<int>(((uint64_t{pixel & mask} >> shift) * 255 + most / 2) / most);
}

} // namespace

void Picture::save(const std::string& name) const {
    const char* folder = std::getenv("KOLT_TEST_OUT");
    const std::filesystem::path path(folder != nullptr ? folder : ".");
    std::filesystem::create_directories(path);
    std::ofstream file(path / name, std::ios::binary);
    file << "P6\n" << width << " " << height << "\n255\n";
    for (const Rgb& p : pixels) {
        file << static_cast<char>(p.red) << static_cast<char>(p.green) << static_cast<char>(p.blue);
    }
}

XClient::XClient(const char* display) : m_connection(xcb_connect(display, nullptr)), m_screen(nullptr) {
    if (xcb_connection_has_error(m_connection) != 0) {
        xcb_disconnect(m_connection);
        throw std::runtime_error("no X server");
    }
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
}

XClient::~XClient() {
    xcb_disconnect(m_connection);
}

void XClient::sync() const {
    Reply<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

xcb_window_t XClient::makeWindow(int x, int y, int width, int height, xcb_window_t parent) const {
    const xcb_window_t window = xcb_generate_id(m_connection);
    // No background, as a toolkit's window for foreign drawing has none: what is uncovered keeps old pixels.
    const uint32_t values[] = {XCB_BACK_PIXMAP_NONE, 1};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, parent != 0 ? parent : m_screen->root,
                      static_cast<int16_t>(x), static_cast<int16_t>(y), static_cast<uint16_t>(width),
                      static_cast<uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
    map(window);
    sync();
    return window;
}

void XClient::resize(xcb_window_t window, int width, int height) const {
    const uint32_t values[] = {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    xcb_flush(m_connection);
}

void XClient::move(xcb_window_t window, int x, int y) const {
    const uint32_t values[] = {static_cast<uint32_t>(x), static_cast<uint32_t>(y)};
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
    xcb_flush(m_connection);
}

void XClient::reparent(xcb_window_t window, xcb_window_t parent, int x, int y) const {
    xcb_reparent_window(m_connection, window, parent != 0 ? parent : m_screen->root, static_cast<int16_t>(x),
                        static_cast<int16_t>(y));
    xcb_flush(m_connection);
}

void XClient::raise(xcb_window_t window) const {
    const uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_flush(m_connection);
}

void XClient::map(xcb_window_t window) const {
    xcb_map_window(m_connection, window);
    xcb_flush(m_connection);
}

void XClient::unmap(xcb_window_t window) const {
    xcb_unmap_window(m_connection, window);
    xcb_flush(m_connection);
}

void XClient::destroy(xcb_window_t window) const {
    xcb_destroy_window(m_connection, window);
    xcb_flush(m_connection);
}

void XClient::fill(xcb_window_t window, uint32_t rgb) const {
    const xcb_gcontext_t context = xcb_generate_id(m_connection);
    const uint32_t values[] = {rgb, XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS};
    xcb_create_gc(m_connection, context, window, XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE, values);
    const xcb_rectangle_t all{0, 0, 0x7FFF, 0x7FFF};
    xcb_poly_fill_rectangle(m_connection, window, context, 1, &all);
    xcb_free_gc(m_connection, context);
    sync();
}

Picture XClient::screenshot(int x, int y, int width, int height) const {
    const Reply<xcb_get_image_reply_t> image(
        xcb_get_image_reply(m_connection,
                            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root,
                                          static_cast<int16_t>(x), static_cast<int16_t>(y),
                                          static_cast<uint16_t>(width), static_cast<uint16_t>(height), ~0U),
                            nullptr));
    if (!image) {
        throw std::runtime_error("no screenshot");
    }
    const xcb_visualtype_t* visual = nullptr;
    for (xcb_depth_iterator_t d = xcb_screen_allowed_depths_iterator(m_screen); d.rem > 0;
         xcb_depth_next(&d)) {
        for (xcb_visualtype_iterator_t v = xcb_depth_visuals_iterator(d.data); v.rem > 0;
             xcb_visualtype_next(&v)) {
            visual = v.data->visual_id == m_screen->root_visual ? v.data : visual;
        }
    }
    const size_t bytes = m_screen->root_depth > 16 ? 4 : 2;
    const size_t stride = (static_cast<size_t>(width) * bytes + 3) / 4 * 4;
    const uint8_t* data = xcb_get_image_data(image.get());
    Picture picture(width, height);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const uint8_t* at =
                data + static_cast<size_t>(row) * stride + static_cast<size_t>(column) * bytes;
            uint32_t pixel = 0;
            for (size_t byte = 0; byte < bytes; ++byte) {
                pixel |= static_cast<uint32_t>(at[byte]) << (8 * byte);
            }
            picture.at(column, row) = {component(pixel, visual->red_mask),
                                       component(pixel, visual->green_mask),
                                       component(pixel, visual->blue_mask)};
        }
    }
    return picture;
}

std::vector<xcb_window_t> XClient::children(xcb_window_t window) const {
    const Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    if (!tree) {
        return {};
    }
    const xcb_window_t* first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace kolt::tests
