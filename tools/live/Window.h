#ifndef LIVE_WINDOW_H
#define LIVE_WINDOW_H

#include "PictureMaker.h"

#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace live {

struct Size {
    uint32_t width = 0;
    uint32_t height = 0;

    bool operator==(const Size& other) const { return width == other.width && height == other.height; }
};

/// What the user and the window manager did since the last look.
struct WindowEvents {
    bool close = false; ///< q, Esc, the close button, or the display server is gone
    bool resized = false;
    bool uncovered = false;
    int turns = 0; ///< quarter turns to the left (key l) less those to the right (key r)
};

/// A plain X11 window on a connection of its own. One thread.
class Window {
public:
    /// Null, with the reason in `error`, where there is no display.
    static std::unique_ptr<Window> Open(Size size, std::string& error);
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window();

    uint64_t Native() const { return window_; }
    /// Readable when there may be events. Look() also before waiting: replies may have brought some along.
    int Fd() const { return xcb_get_file_descriptor(connection_); }
    WindowEvents Look();

    Size CurrentSize() const { return size_; }
    Size ScreenSize() const { return {screen_->width_in_pixels, screen_->height_in_pixels}; }
    void Resize(Size size);
    void SetTitle(const std::string& utf8);

    /// What stands in the window on the screen now, as RGB; pixels point into `memory`. An error text where
    /// the window can't be read (not wholly on the screen) or the screen has no 24-bit colours.
    std::string ReadBack(std::vector<uint8_t>& memory, Picture& picture);

private:
    Window(xcb_connection_t* connection, xcb_screen_t* screen);
    void Create(Size size);
    void OnKey(xcb_keycode_t key, WindowEvents& events);
    void OnEvent(const xcb_generic_event_t& event, WindowEvents& events);
    xcb_atom_t Atom(const char* name);
    xcb_keysym_t KeySymOf(xcb_keycode_t key);

    xcb_connection_t* connection_;
    xcb_screen_t* screen_;
    xcb_window_t window_ = 0;
    xcb_atom_t deleteWindow_ = 0;
    xcb_atom_t netWmName_ = 0;
    xcb_atom_t utf8String_ = 0;
    Size size_;
};

/// The largest rectangle of the picture's shape inside the window, in fractions of the window, centred.
struct Fractions {
    float top = 0;
    float bottom = 1;
    float left = 0;
    float right = 1;
};
Fractions KeepAspect(Size picture, Size window);

/// The size of a new window for a picture: the picture's own, made smaller to fit into four fifths of the
/// screen.
Size FirstSize(Size picture, Size screen);

} // namespace live

#endif
