#include "Viewer.h"

#include "PictureFile.h"

#include <algorithm>
#include <thread>

namespace live {

std::unique_ptr<Viewer> Viewer::Open(PictureMaker& maker, uint32_t engine, uint32_t displayRate,
                                     std::string& error) {
    auto window = Window::Open({960, 600}, error);
    if (!window)
        return nullptr;
    window->SetTitle("kolt_live");
    return std::unique_ptr<Viewer>(new Viewer(maker, std::move(window), engine, displayRate));
}

Viewer::Viewer(PictureMaker& maker, std::unique_ptr<Window> window, uint32_t engine, uint32_t displayRate)
    : maker_(maker)
    , window_(std::move(window))
    , screen_(*window_, engine)
    , period_(std::chrono::nanoseconds(std::chrono::seconds(1)) / displayRate) {}

bool Viewer::Look() {
    const WindowEvents events = window_->Look();
    // Who has chosen a size before the first picture keeps it.
    hasShape_ = hasShape_ || events.resized;
    if (events.turns != 0)
        screen_.Turn(events.turns);
    else if (events.resized || events.uncovered)
        screen_.Refresh();
    return events.close;
}

void Viewer::TakeShape(const Picture& picture) {
    if (hasShape_)
        return;
    hasShape_ = true;
    window_->Resize(FirstSize({picture.width, picture.height}, window_->ScreenSize()));
}

std::string Viewer::Draw(Frame& frame, Time now) {
    // Keeps the beat of the display rate; after a pause it starts from now.
    nextDraw_ = std::max(nextDraw_ + period_, now);
    format_ = std::to_string(frame.info.width) + "x" + std::to_string(frame.info.height) + " " +
              PixelFormatName(frame.info.pixelFormat);
    Picture picture;
    Failure failure = maker_.Make(frame, picture);
    if (failure)
        return Describe(failure) + "\n  the camera sends " + format_;
    TakeShape(picture);
    failure = screen_.Show(picture);
    if (failure)
        return Describe(failure);
    ++drawn_;
    return {};
}

void Viewer::SetTitle(const std::string& camera, const std::string& state) {
    window_->SetTitle("kolt_live - " + camera + (state.empty() ? "" : " - " + state));
}

void Viewer::SetTitle(const std::string& camera, const Rates& rates, const Sample& sample) {
    SetTitle(camera, (format_.empty() ? "" : format_ + " - ") + TitleFigures(rates, sample));
}

std::string Viewer::Screenshot(const std::string& path) {
    if (drawn_ == 0)
        return "no screenshot: no picture came";
    return SaveWindow(*window_, path, [this] { Look(); });
}

std::string SaveWindow(Window& window, const std::string& path, const std::function<void()>& look) {
    // Drawing goes on behind VR_Display and nothing tells its end: what stays the same for a while is
    // finished.
    constexpr auto pause = std::chrono::milliseconds(100);
    constexpr int tries = 20;
    std::vector<uint8_t> memory;
    std::vector<uint8_t> before;
    Picture picture;
    for (int i = 0; i < tries && (memory.empty() || memory != before); ++i) {
        std::this_thread::sleep_for(pause);
        look();
        before = memory;
        if (std::string error = window.ReadBack(memory, picture); !error.empty())
            return error;
    }
    return SavePicture(path, picture);
}

} // namespace live
