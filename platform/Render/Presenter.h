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

class GlContext;

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

    /*
     * The whole window: picture and background. A sync period of n > 0 waits for every n-th vertical retrace
     * where the engine can. False when nothing was drawn; lost() and unsuitable() may tell why.
     */
    virtual bool present(const View& view, Size window, uint32_t syncPeriod) = 0;
    /* Every event and error of the connection passes here. */
    virtual void handle(const xcb_generic_event_t& event) = 0;
    /* The window is gone or refuses the drawing. */
    virtual bool lost() const = 0;
    /* This way of drawing doesn't work here, another may. */
    virtual bool unsuitable() const { return false; }
    /* Something of the presenter's own was uncovered since the last call. */
    virtual bool takeExposed() { return false; }
};

/* What is passed by reference outlives the presenters. share: try shared memory first. */
std::unique_ptr<Presenter> makeSoftwarePresenter(XConnection& connection, EventSource& events,
                                                 FrameStore& frames, xcb_window_t window,
                                                 const WindowInfo& info, bool share);

/* Null where the driver doesn't do it, lost() where the window has gone meanwhile; evenEmulated: also a
 * driver that works on the processor. */
std::unique_ptr<Presenter> makeGlPresenter(XConnection& connection, GlContext& context, FrameStore& frames,
                                           xcb_window_t window, const WindowInfo& info, bool evenEmulated);

} // namespace kolt::render

#endif
