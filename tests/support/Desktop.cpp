#include "support/Desktop.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <thread>
#include <xcb/xtest.h>

namespace kolt::test {

namespace {

template<typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template<typename T>
Reply<T> Own(T* reply) {
    return Reply<T>(reply, &std::free);
}

} // namespace

Desktop::Desktop() : m_connection(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(m_connection) != 0) {
        xcb_disconnect(m_connection);
        throw std::runtime_error("no X display");
    }
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
}

Desktop::~Desktop() {
    m_manager.reset();
    xcb_disconnect(m_connection);
}

void Desktop::StartWindowManager() {
    m_manager =
        std::make_unique<ChildProcess>(std::vector<std::string>{"openbox", "--sm-disable"},
                                       ChildProcess::Environment{{"XDG_CONFIG_HOME", "/nonexistent"}});
    const char name[] = "_NET_SUPPORTING_WM_CHECK";
    const auto atom = Own(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, sizeof name - 1, name), nullptr));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (atom && std::chrono::steady_clock::now() < deadline) {
        const auto value = Own(xcb_get_property_reply(
            m_connection,
            xcb_get_property(m_connection, 0, m_screen->root, atom->atom, XCB_ATOM_WINDOW, 0, 1), nullptr));
        if (value && xcb_get_property_value_length(value.get()) == 4)
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    throw std::runtime_error("openbox does not manage the screen");
}

void Desktop::Settle() const {
    const auto done =
        Own(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    if (!done)
        throw std::runtime_error("the X server has gone");
}

void Desktop::Fake(uint8_t type, uint8_t detail, QPoint at) {
    xcb_test_fake_input(m_connection, type, detail, XCB_CURRENT_TIME, m_screen->root,
                        static_cast<int16_t>(at.x()), static_cast<int16_t>(at.y()), 0);
    Settle();
}

void Desktop::Move(QPoint to) {
    Fake(XCB_MOTION_NOTIFY, 0, to);
}

void Desktop::Press(uint8_t button) {
    Fake(XCB_BUTTON_PRESS, button);
}

void Desktop::Release(uint8_t button) {
    Fake(XCB_BUTTON_RELEASE, button);
}

void Desktop::Click(QPoint at, uint8_t button) {
    // A pointer comes from somewhere: windows learn that it entered.
    Move(at + QPoint(1, 0));
    Move(at);
    Press(button);
    Release(button);
}

void Desktop::DoubleClick(QPoint at) {
    Move(at + QPoint(1, 0));
    Move(at);
    // In one go: on a busy machine this thread may sleep for longer than a double click takes.
    for (int i = 0; i < 2; ++i) {
        for (const uint8_t type : {XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE})
            xcb_test_fake_input(m_connection, type, 1, XCB_CURRENT_TIME, m_screen->root, 0, 0, 0);
    }
    Settle();
}

void Desktop::Wheel(QPoint at, int notches) {
    Move(at + QPoint(1, 0));
    Move(at);
    const uint8_t button = notches > 0 ? 4 : 5;
    for (int i = 0; i < std::abs(notches); ++i) {
        Press(button);
        Release(button);
    }
}

void Desktop::Drag(QPoint from, QPoint to) {
    Move(from + QPoint(1, 0));
    Move(from);
    Press();
    constexpr int kSteps = 8;
    for (int i = 1; i <= kSteps; ++i)
        Move(from + (to - from) * i / kSteps);
    Release();
}

std::pair<uint8_t, bool> Desktop::CodeOf(uint32_t key) const {
    const xcb_setup_t* setup = xcb_get_setup(m_connection);
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto mapping = Own(xcb_get_keyboard_mapping_reply(
        m_connection, xcb_get_keyboard_mapping(m_connection, setup->min_keycode, count), nullptr));
    if (mapping) {
        const xcb_keysym_t* signs = xcb_get_keyboard_mapping_keysyms(mapping.get());
        for (int level = 0; level < 2; ++level) {
            for (int code = 0; code < count; ++code) {
                if (signs[code * mapping->keysyms_per_keycode + level] == key)
                    return {static_cast<uint8_t>(setup->min_keycode + code), level == 1};
            }
        }
    }
    throw std::runtime_error("no key for sign " + std::to_string(key));
}

void Desktop::Tap(uint32_t key) {
    const auto [code, shift] = CodeOf(key);
    const uint8_t shiftCode = CodeOf(kShift).first;
    if (shift)
        Fake(XCB_KEY_PRESS, shiftCode);
    Fake(XCB_KEY_PRESS, code);
    Fake(XCB_KEY_RELEASE, code);
    if (shift)
        Fake(XCB_KEY_RELEASE, shiftCode);
}

void Desktop::Tap(Key modifier, uint32_t key) {
    const uint8_t code = CodeOf(modifier).first;
    Fake(XCB_KEY_PRESS, code);
    Tap(key);
    Fake(XCB_KEY_RELEASE, code);
}

void Desktop::Type(const QString& text) {
    for (const QChar sign : text)
        Tap(sign.unicode());
}

QSize Desktop::Size() const {
    return {m_screen->width_in_pixels, m_screen->height_in_pixels};
}

QPoint Desktop::PositionOf(uint32_t window) const {
    const auto place = Own(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_screen->root, 0, 0), nullptr));
    return place ? QPoint(place->dst_x, place->dst_y) : QPoint();
}

bool Desktop::IsOpenAt(uint32_t window, QPoint at) const {
    xcb_window_t found = m_screen->root;
    while (found != XCB_WINDOW_NONE && found != window) {
        const auto within = Own(xcb_translate_coordinates_reply(
            m_connection,
            xcb_translate_coordinates(m_connection, m_screen->root, found, static_cast<int16_t>(at.x()),
                                      static_cast<int16_t>(at.y())),
            nullptr));
        found = within ? within->child : xcb_window_t{XCB_WINDOW_NONE};
    }
    return found == window;
}

QImage Desktop::Grab(QRect area) const {
    area &= QRect(QPoint(), Size());
    const auto picture = Own(xcb_get_image_reply(
        m_connection,
        xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root, static_cast<int16_t>(area.x()),
                      static_cast<int16_t>(area.y()), static_cast<uint16_t>(area.width()),
                      static_cast<uint16_t>(area.height()), ~0u),
        nullptr));
    if (!picture)
        return {};
    const QImage seen(xcb_get_image_data(picture.get()), area.width(), area.height(), area.width() * 4,
                      QImage::Format_RGB32);
    return seen.copy();
}

QRgb Desktop::Pixel(QPoint at) const {
    const QImage one = Grab(QRect(at, QSize(1, 1)));
    return one.isNull() ? 0 : one.pixel(0, 0) & RGB_MASK;
}

} // namespace kolt::test
