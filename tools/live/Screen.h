#ifndef LIVE_SCREEN_H
#define LIVE_SCREEN_H

#include "StatusText.h"
#include "Window.h"

namespace live {

/// Draws pictures into a window through the render library: makes the render handle, anew when grey changes
/// to colour, and keeps the picture's shape. One thread.
class Screen {
public:
    Screen(const Window& window, uint32_t engine) : window_(window), engine_(engine) {}
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen() { Drop(); }

    Failure Show(const Picture& picture);

    /// The window has another size, or something that covered it is gone: draws the last picture again.
    void Refresh();

    /// Quarter turns to the left; negative: to the right.
    void Turn(int quarters);

private:
    Failure Make(bool colour);
    void Drop();
    void Place();

    const Window& window_;
    uint32_t engine_;
    void* handle_ = nullptr;
    bool colour_ = false;
    int quarters_ = 0;
    Size picture_;
};

} // namespace live

#endif
