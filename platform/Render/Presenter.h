/*
 * Brings the newest picture into one window. Belongs to the render thread of a handle.
 */
#ifndef KOLT_RENDER_PRESENTER_H
#define KOLT_RENDER_PRESENTER_H

#include "FrameStore.h"
#include "Geometry.h"
#include "XConnection.h"

#include <memory>

namespace kolt::render {

/* What a presenter may ask of the thread that runs it. */
class EventSource {
public:
    virtual ~EventSource() = default;
    /* Waits for events and hands them out, also to the caller. False after the time, or when the server is
     * gone. */
    virtual bool waitForEvents(int timeoutMs) = 0;
};

class Presenter {
public:
    virtual ~Presenter() = default;

    /* The whole window: picture and background. False when nothing can be drawn into this window any more. */
    virtual bool present(const View& view, Size window) = 0;
    /* Every event and error of the connection passes here. */
    virtual void handle(const xcb_generic_event_t& event) = 0;
    /* The window is gone or refuses the drawing. */
    virtual bool lost() const = 0;
};

/* What is passed by reference outlives the presenter. share: try shared memory first. */
std::unique_ptr<Presenter> makeSoftwarePresenter(XConnection& connection, EventSource& events,
                                                 FrameStore& frames, xcb_window_t window,
                                                 const WindowInfo& info, bool share);

} // namespace kolt::render

#endif
