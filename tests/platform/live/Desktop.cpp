#include "Desktop.h"

#include "support/ChildProcess.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace live_test {
namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template<typename T>
using Reply = std::unique_ptr<T, Free>;

} // namespace

Rgb Shot::At(uint32_t x, uint32_t y) const {
    const size_t at = (static_cast<size_t>(y) * width + x) * 3;
    return {rgb.at(at), rgb.at(at + 1), rgb.at(at + 2)};
}

bool Shot::Shows(uint32_t x, uint32_t y, const Rgb& colour, int tolerance) const {
    if (x >= width || y >= height)
        return false;
    const Rgb seen = At(x, y);
    for (size_t i = 0; i < 3; ++i)
        if (std::abs(seen[i] - colour[i]) > tolerance)
            return false;
    return true;
}

Desktop::Desktop() : connection_(xcb_connect(nullptr, nullptr)), screen_(nullptr) {
    if (xcb_connection_has_error(connection_) != 0)
        throw std::runtime_error("no display");
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

xcb_atom_t Desktop::Atom(const char* name) {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<uint16_t>(std::strlen(name)), name);
    return Reply<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(connection_, cookie, nullptr))->atom;
}

std::string Desktop::Title(xcb_window_t window) {
    const auto cookie =
        xcb_get_property(connection_, 0, window, Atom("_NET_WM_NAME"), Atom("UTF8_STRING"), 0, 1000);
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply)
        return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<size_t>(xcb_get_property_value_length(reply.get()))};
}

xcb_window_t Desktop::Find(const std::string& title) {
    const auto cookie = xcb_query_tree(connection_, screen_->root);
    const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection_, cookie, nullptr));
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i)
        if (Title(children[i]).rfind(title, 0) == 0)
            return children[i];
    return 0;
}

std::array<uint32_t, 2> Desktop::SizeOf(xcb_window_t window) {
    const Reply<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
    return reply ? std::array<uint32_t, 2>{reply->width, reply->height} : std::array<uint32_t, 2>{0, 0};
}

void Desktop::Resize(xcb_window_t window, uint32_t width, uint32_t height) {
    const std::array<uint32_t, 2> values = {width, height};
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
    xcb_flush(connection_);
}

xcb_keycode_t Desktop::CodeOf(xcb_keysym_t key) {
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const Reply<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
        connection_, xcb_get_keyboard_mapping(connection_, setup->min_keycode, count), nullptr));
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    for (uint8_t i = 0; i < count; ++i)
        if (symbols[i * reply->keysyms_per_keycode] == key)
            return static_cast<xcb_keycode_t>(setup->min_keycode + i);
    throw std::runtime_error("no such key");
}

void Desktop::Press(xcb_window_t window, xcb_keysym_t key) {
    xcb_key_press_event_t event{};
    event.response_type = XCB_KEY_PRESS;
    event.detail = CodeOf(key);
    event.event = window;
    event.root = screen_->root;
    event.same_screen = 1;
    xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_KEY_PRESS, reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
}

void Desktop::AskToClose(xcb_window_t window) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = Atom("WM_PROTOCOLS");
    event.data.data32[0] = Atom("WM_DELETE_WINDOW");
    xcb_send_event(connection_, 0, window, 0, reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
}

void Desktop::Destroy(xcb_window_t window) {
    xcb_destroy_window(connection_, window);
    xcb_flush(connection_);
}

Shot Desktop::Look(xcb_window_t window) {
    Shot shot;
    const auto size = SizeOf(window);
    const Reply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
        connection_, xcb_translate_coordinates(connection_, window, screen_->root, 0, 0), nullptr));
    if (!place)
        return shot;
    const auto cookie =
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root, place->dst_x, place->dst_y,
                      static_cast<uint16_t>(size[0]), static_cast<uint16_t>(size[1]), ~0U);
    const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(connection_, cookie, nullptr));
    if (!image)
        return shot;
    shot.width = size[0];
    shot.height = size[1];
    const uint8_t* bgrx = xcb_get_image_data(image.get());
    for (size_t i = 0; i < static_cast<size_t>(shot.width) * shot.height; ++i)
        shot.rgb.insert(shot.rgb.end(), {bgrx[4 * i + 2], bgrx[4 * i + 1], bgrx[4 * i]});
    return shot;
}

bool Eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

Shot ReadPicture(const std::string& path) {
    const std::string raw = path + ".rgb" + std::to_string(getpid());
    Shot shot;
    const auto size = kolt::test::run({"identify", "-format", "%w %h", path});
    std::istringstream(size.output) >> shot.width >> shot.height;
    if (kolt::test::run({"convert", path, "-depth", "8", "rgb:" + raw}).exitCode != 0)
        return {};
    std::ifstream file(raw, std::ios::binary);
    shot.rgb.assign(std::istreambuf_iterator<char>(file), {});
    std::remove(raw.c_str());
    return shot;
}

} // namespace live_test
