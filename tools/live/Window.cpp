#include "Window.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace live {
namespace {

/// Replies and events of xcb are to be freed by who gets them.
struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template<typename T>
using Reply = std::unique_ptr<T, Free>;

constexpr xcb_keysym_t keyEscape = 0xFF1B; // keysymdef.h
constexpr xcb_keysym_t keyQ = 'q';
constexpr xcb_keysym_t keyL = 'l';
constexpr xcb_keysym_t keyR = 'r';

std::string NoDisplay() {
    const char* display = std::getenv("DISPLAY");
    const std::string what = display == nullptr || *display == '\0'
                                 ? "there is no display (DISPLAY is not set)"
                                 : "the display " + std::string(display) + " cannot be opened";
    return what +
           "\n  hint: --headless N and --save FILE need none; scripts/with-xvfb kolt_live ... gives it a "
           "virtual one";
}

uint8_t Channel(uint32_t pixel, uint32_t mask) {
    const int shift = mask == 0 ? 0 : __builtin_ctz(mask);
    const uint32_t most = mask >> shift;
    return static_cast<uint8_t>(most == 0 ? 0 : ((pixel & mask) >> shift) * 255 / most);
}

const xcb_visualtype_t* VisualOf(xcb_screen_t* screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0; xcb_depth_next(&depth))
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0;
             xcb_visualtype_next(&visual))
            if (visual.data->visual_id == screen->root_visual)
                return visual.data;
    return nullptr;
}

} // namespace

std::unique_ptr<Window> Window::Open(Size size, std::string& error) {
    int number = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &number);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        error = NoDisplay();
        return nullptr;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (number-- > 0 && screens.rem > 1)
        xcb_screen_next(&screens);
    std::unique_ptr<Window> window(new Window(connection, screens.data));
    window->Create(size);
    return window;
}

Window::Window(xcb_connection_t* connection, xcb_screen_t* screen)
    : connection_(connection), screen_(screen) {}

Window::~Window() {
    xcb_destroy_window(connection_, window_);
    xcb_flush(connection_);
    xcb_disconnect(connection_);
}

void Window::Create(Size size) {
    deleteWindow_ = Atom("WM_DELETE_WINDOW");
    netWmName_ = Atom("_NET_WM_NAME");
    utf8String_ = Atom("UTF8_STRING");
    const xcb_atom_t protocols = Atom("WM_PROTOCOLS");
    size_ = size;
    window_ = xcb_generate_id(connection_);
    // The same dark grey that the render library puts around a picture: no flash before the first one.
    const uint32_t background = screen_->root_depth >= 24 ? 0x14181D : screen_->black_pixel;
    const std::array<uint32_t, 2> values = {
        background, XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_KEY_PRESS};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen_->root, 0, 0,
                      static_cast<uint16_t>(size.width), static_cast<uint16_t>(size.height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, protocols, XCB_ATOM_ATOM, 32, 1,
                        &deleteWindow_);
    constexpr char classes[] = "kolt_live\0kolt_live";
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        sizeof classes, classes);
    xcb_map_window(connection_, window_);
    xcb_flush(connection_);
}

xcb_atom_t Window::Atom(const char* name) {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_keysym_t Window::KeySymOf(xcb_keycode_t key) {
    const auto cookie = xcb_get_keyboard_mapping(connection_, key, 1);
    const Reply<xcb_get_keyboard_mapping_reply_t> reply(
        xcb_get_keyboard_mapping_reply(connection_, cookie, nullptr));
    return reply && reply->keysyms_per_keycode > 0 ? *xcb_get_keyboard_mapping_keysyms(reply.get())
                                                   : XCB_NO_SYMBOL;
}

void Window::OnKey(xcb_keycode_t key, WindowEvents& events) {
    const xcb_keysym_t symbol = KeySymOf(key);
    if (symbol == keyQ || symbol == keyEscape)
        events.close = true;
    else if (symbol == keyL)
        ++events.turns;
    else if (symbol == keyR)
        --events.turns;
}

void Window::OnEvent(const xcb_generic_event_t& event, WindowEvents& events) {
    switch (event.response_type & 0x7F) {
    case XCB_EXPOSE:
        events.uncovered = true;
        break;
    case XCB_CONFIGURE_NOTIFY: {
        const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        const Size size = {configure.width, configure.height};
        events.resized = events.resized || !(size == size_);
        size_ = size;
        break;
    }
    case XCB_KEY_PRESS:
        OnKey(reinterpret_cast<const xcb_key_press_event_t&>(event).detail, events);
        break;
    case XCB_CLIENT_MESSAGE:
        if (reinterpret_cast<const xcb_client_message_event_t&>(event).data.data32[0] == deleteWindow_)
            events.close = true;
        break;
    case XCB_DESTROY_NOTIFY:
        events.close = true;
        break;
    default:
        break;
    }
}

WindowEvents Window::Look() {
    WindowEvents events;
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)})
        OnEvent(*event, events);
    if (xcb_connection_has_error(connection_) != 0)
        events.close = true;
    return events;
}

void Window::Resize(Size size) {
    const std::array<uint32_t, 2> values = {size.width, size.height};
    xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
    xcb_flush(connection_);
}

void Window::SetTitle(const std::string& utf8) {
    const auto length = static_cast<uint32_t>(utf8.size());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_NAME, utf8String_, 8, length,
                        utf8.data());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, netWmName_, utf8String_, 8, length,
                        utf8.data());
    xcb_flush(connection_);
}

std::string Window::ReadBack(std::vector<uint8_t>& memory, Picture& picture) {
    const auto cookie =
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, 0, 0,
                      static_cast<uint16_t>(size_.width), static_cast<uint16_t>(size_.height), ~0U);
    const Reply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection_, cookie, nullptr));
    if (!reply)
        return "the window can only be read while it is wholly on the screen";
    const xcb_visualtype_t* visual = VisualOf(screen_);
    const size_t pixels = static_cast<size_t>(size_.width) * size_.height;
    const auto length = static_cast<size_t>(xcb_get_image_data_length(reply.get()));
    if (visual == nullptr || reply->depth < 24 || length < pixels * 4)
        return "the screen has no 24-bit colours";
    const uint8_t* data = xcb_get_image_data(reply.get());
    memory.resize(pixels * 3);
    for (size_t i = 0; i < pixels; ++i) {
        uint32_t pixel = 0;
        std::memcpy(&pixel, data + i * 4, sizeof pixel);
        memory[3 * i] = Channel(pixel, visual->red_mask);
        memory[3 * i + 1] = Channel(pixel, visual->green_mask);
        memory[3 * i + 2] = Channel(pixel, visual->blue_mask);
    }
    picture = {memory.data(), size_.width, size_.height, true};
    return {};
}

Fractions KeepAspect(Size picture, Size window) {
    if (picture.width == 0 || picture.height == 0 || window.width == 0 || window.height == 0)
        return {};
    const double wide = static_cast<double>(picture.width) * window.height;
    const double high = static_cast<double>(picture.height) * window.width;
    Fractions fractions;
    if (wide < high) {
        const auto border = static_cast<float>((1 - wide / high) / 2);
        fractions.left = border;
        fractions.right = 1 - border;
    } else {
        const auto border = static_cast<float>((1 - high / wide) / 2);
        fractions.top = border;
        fractions.bottom = 1 - border;
    }
    return fractions;
}

Size FirstSize(Size picture, Size screen) {
    const double scale = std::min({1.0, 0.8 * screen.width / std::max(picture.width, 1U),
                                   0.8 * screen.height / std::max(picture.height, 1U)});
    auto scaled = [scale](uint32_t length) {
        // A line-scan picture may be a single row: leave something to look at.
        return std::max(64U, static_cast<uint32_t>(std::lround(length * scale)));
    };
    return {scaled(picture.width), scaled(picture.height)};
}

} // namespace live
