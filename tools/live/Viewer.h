#ifndef LIVE_VIEWER_H
#define LIVE_VIEWER_H

#include "PictureMaker.h"
#include "Screen.h"
#include "Statistics.h"
#include "Window.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace live {

/// The window with the live picture: takes on the shape of the first picture, keeps it when the user resizes,
/// carries name and figures in its title. Survives the camera: while it is gone the last picture stays. One
/// thread.
class Viewer {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Null, with the reason in `error`, where there is no display.
    static std::unique_ptr<Viewer> Open(PictureMaker& maker, uint32_t engine, uint32_t displayRate,
                                        std::string& error);

    int Fd() const { return window_->Fd(); }
    /// Handles what the user did; true when that was to close the window.
    bool Look();

    /// From when on the next picture may be drawn: the display rate's limit.
    Time NextDraw() const { return nextDraw_; }

    /// An error text when no picture could be made or drawn.
    std::string Draw(Frame& frame, Time now);
    uint64_t PicturesDrawn() const { return drawn_; }

    /// The camera's name, and what is to be said of it.
    void SetTitle(const std::string& camera, const std::string& state);
    void SetTitle(const std::string& camera, const Rates& rates, const Sample& sample);
    /// An error text on failure.
    std::string Screenshot(const std::string& path);

private:
    Viewer(PictureMaker& maker, std::unique_ptr<Window> window, uint32_t engine, uint32_t displayRate);
    void TakeShape(const Picture& picture);

    PictureMaker& maker_;
    std::unique_ptr<Window> window_;
    Screen screen_;
    std::chrono::nanoseconds period_;
    Time nextDraw_{};
    bool hasShape_ = false;
    uint64_t drawn_ = 0;
    std::string format_; // of the last frame, for the title
};

/// Writes what the window shows once it has come to rest, .png or .ppm; an error text on failure. `look`
/// handles the window's events.
std::string SaveWindow(Window& window, const std::string& path, const std::function<void()>& look);

} // namespace live

#endif
