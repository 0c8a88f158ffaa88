/* The picture must not stand between the mouse and the window it is drawn into. */
#include "Ways.h"

#include <xcb/xtest.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

namespace kolt::tests {
namespace {

class Input : public EveryWay {};

KOLT_EVERY_WAY(Input);

std::optional<xcb_button_press_event_t> nextPress(const XClient& client) {
    std::optional<xcb_button_press_event_t> press;
    eventually([&] {
        if (xcb_generic_event_t* event = xcb_poll_for_event(client.get())) {
            if ((event->response_type & 0x7F) == XCB_BUTTON_PRESS) {
                press = *reinterpret_cast<xcb_button_press_event_t*>(event);
            }
            free(event);
        }
        return press.has_value();
    });
    return press;
}

TEST_P(Input, ClicksReachTheWindow) {
    const xcb_window_t window = client.makeWindow(100, 100, 200, 150);
    const uint32_t events = XCB_EVENT_MASK_BUTTON_PRESS;
    xcb_change_window_attributes(client.get(), window, XCB_CW_EVENT_MASK, &events);
    const RenderHandle handle(VR_PIXEL_RGB8, engine(), window);
    const Source source = noise(31, 23, 3);
    ASSERT_EQ(handle.update(source), 1);
    ASSERT_EQ(handle.display(), 1);
    ASSERT_TRUE(becomes(client, 100, 100, expected(source, 200, 150, {}), 0));
    xcb_test_fake_input(client.get(), XCB_MOTION_NOTIFY, 0, 0, client.screen()->root, 130, 140, 0);
    xcb_test_fake_input(client.get(), XCB_BUTTON_PRESS, 1, 0, client.screen()->root, 0, 0, 0);
    xcb_test_fake_input(client.get(), XCB_BUTTON_RELEASE, 1, 0, client.screen()->root, 0, 0, 0);
    client.sync();
    const auto press = nextPress(client);
    ASSERT_TRUE(press);
    EXPECT_EQ(press->event, window);
    EXPECT_EQ(press->child, 0U) << "the pointer is in the window itself";
    EXPECT_EQ(press->event_x, 30);
    EXPECT_EQ(press->event_y, 40);
}

} // namespace
} // namespace kolt::tests
