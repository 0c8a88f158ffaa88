// The user's side of a window: finds it, resizes it, presses keys, looks at the screen. On a connection of
// the test's own, which knows nothing of the program.
#ifndef LIVE_TEST_DESKTOP_H
#define LIVE_TEST_DESKTOP_H

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace live_test {

using Rgb = std::array<uint8_t, 3>;

/// Pixels as a person sees them.
struct Shot {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> rgb;

    Rgb At(uint32_t x, uint32_t y) const;
    /// True when every channel is at most `tolerance` away.
    bool Shows(uint32_t x, uint32_t y, const Rgb& colour, int tolerance) const;
};

class Desktop {
public:
    Desktop(); ///< throws where there is no display
    ~Desktop() { xcb_disconnect(connection_); }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// The first top-level window whose title begins so; 0 when there is none.
    xcb_window_t Find(const std::string& title);
    std::string Title(xcb_window_t window);
    std::array<uint32_t, 2> SizeOf(xcb_window_t window);
    void Resize(xcb_window_t window, uint32_t width, uint32_t height);
    void Press(xcb_window_t window, xcb_keysym_t key);
    /// What the close button of a window manager does.
    void AskToClose(xcb_window_t window);
    void Destroy(xcb_window_t window);
    /// The place of the window on the screen, with all that is inside.
    Shot Look(xcb_window_t window);

private:
    xcb_atom_t Atom(const char* name);
    xcb_keycode_t CodeOf(xcb_keysym_t key);

    xcb_connection_t* connection_;
    xcb_screen_t* screen_;
};

/// Waits until `condition` is true; false after half a minute.
bool Eventually(const std::function<bool()>& condition);

/// A picture file, read by a decoder that is not ours.
Shot ReadPicture(const std::string& path);

} // namespace live_test

#endif
