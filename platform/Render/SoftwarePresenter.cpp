/*
 * Drawing in software: the resampler writes into memory shared with the server, which copies it to the
 * screen. Two images take turns, so that the next picture is made while the server still reads the last one.
 * Without shared memory the pixels go through the connection.
 */
#include "Presenter.h"
#include "SharedImage.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

namespace kolt::render {

namespace {

constexpr int kServerPatienceMs = 1000;
/* Window sizes come in steps while a frame is dragged; not each gets new memory. */
constexpr size_t kCapacityStep = size_t{1} << 20;
/* More than any screen wants; a window can be made larger, but not sensibly drawn into. */
constexpr size_t kMostBytes = size_t{1} << 30;

class SoftwarePresenter final : public Presenter, private FrameListener {
public:
    SoftwarePresenter(XConnection& connection, EventSource& events, FrameStore& frames, xcb_window_t window,
                      const WindowInfo& info, bool share)
        : m_connection(connection)
        , m_events(events)
        , m_frames(frames)
        , m_window(window)
        , m_format(info.format)
        , m_share(share && connection.canShareMemory())
        , m_context(xcb_generate_id(connection.get())) {
        const uint32_t values[2] = {m_format.pixel(kBackground), 0};
        xcb_create_gc(connection.get(), m_context, window, XCB_GC_FOREGROUND | XCB_GC_GRAPHICS_EXPOSURES,
                      values);
    }

    ~SoftwarePresenter() override {
        m_frames.forget(*this);
        xcb_free_gc(m_connection.get(), m_context);
    }

    bool present(const View& view, Size window, uint32_t /*syncPeriod*/) override {
        m_frames.forget(*this); // from here on the memory is ours alone
        const size_t bytes = m_format.stride(window.width) * static_cast<size_t>(window.height);
        if (bytes > kMostBytes) {
            return false;
        }
        Turn* turn = nullptr;
        uint8_t* out = memoryFor(bytes, turn);
        if (out == nullptr) {
            return false;
        }
        Box box;
        m_frames.read([&](const FrameView& frame, uint64_t number) {
            const Plan plan = makePlan(frame.size, window, view);
            box = plan.painted();
            if (m_drawn.number != number || m_drawn.out != out || !(m_drawn.plan == plan)) {
                draw(frame, plan, out, nullptr);
            }
        });
        m_drawn.number = 0; // the server has it now
        paintAround(window, box);
        if (!box.empty()) {
            if (turn != nullptr) {
                put(*turn, box);
            } else {
                send(out, m_format.stride(box.width), box);
            }
        }
        xcb_flush(m_connection.get());
        expectNext(view, window, bytes);
        return m_connection.alive();
    }

    void handle(const xcb_generic_event_t& event) override {
        const uint8_t type = event.response_type & 0x7F;
        if (type == 0) {
            for (Turn& turn : m_turns) {
                if (turn.busy && turn.sequence == event.full_sequence) {
                    turn.busy = false;
                    m_lost = true;
                }
            }
            m_lost = m_lost || reinterpret_cast<const xcb_generic_error_t&>(event).resource_id == m_window;
        } else if (m_connection.canShareMemory() &&
                   type == m_connection.sharedMemoryEvents() + XCB_SHM_COMPLETION) {
            const auto& done = reinterpret_cast<const xcb_shm_completion_event_t&>(event);
            for (Turn& turn : m_turns) {
                if (turn.image && turn.image->segment() == done.shmseg) {
                    turn.busy = false;
                }
            }
        }
    }

    bool lost() const override { return m_lost; }

private:
    struct Turn {
        std::unique_ptr<SharedImage> image;
        bool busy = false; /* the server has yet to read it */
        uint32_t sequence = 0;
    };

    void draw(const FrameView& frame, const Plan& plan, uint8_t* out, RowSupply* rows) {
        m_resampler.draw(frame, plan, m_format, out, m_format.stride(plan.painted().width), rows);
    }

    /* Most likely the next picture will be shown like this one; it is drawn while it comes in. */
    void expectNext(const View& view, Size window, size_t bytes) {
        uint8_t* out = m_share ? nullptr : m_own.data();
        if (m_share) {
            Turn& other = m_turns[1 - m_next];
            if (other.busy || !other.image || other.image->capacity() < bytes) {
                return;
            }
            m_next = 1 - m_next;
            out = other.image->data();
        }
        m_expected = {view, window, out};
        m_frames.expect(*this);
    }

    void arrives(const FrameView& frame, uint64_t number, RowSupply& rows) override {
        try {
            const Plan plan = makePlan(frame.size, m_expected.window, m_expected.view);
            draw(frame, plan, m_expected.out, &rows);
            m_drawn = {number, plan, m_expected.out};
        } catch (const std::bad_alloc&) {
            m_drawn.number = 0;
        }
    }

    /* Where to draw: in a shared image (turn), or in memory of our own (turn null). */
    uint8_t* memoryFor(size_t bytes, Turn*& turn) {
        if (m_share) {
            turn = idleTurn();
            if (turn == nullptr) {
                return nullptr;
            }
            if (!turn->image || turn->image->capacity() < bytes) {
                turn->image.reset();
                turn->image = SharedImage::create(m_connection, (bytes + kCapacityStep - 1) / kCapacityStep *
                                                                    kCapacityStep);
            }
            if (turn->image) {
                return turn->image->data();
            }
            if (!m_connection.alive()) {
                return nullptr;
            }
            m_share = false;
            turn = nullptr;
        }
        m_own.resize(bytes);
        return m_own.data();
    }

    /* m_next if it is free, as it must be when it has been drawn into already. */
    Turn* idleTurn() {
        for (;;) {
            for (const size_t i : {m_next, 1 - m_next}) {
                if (!m_turns[i].busy) {
                    m_next = i;
                    return &m_turns[i];
                }
            }
            if (!m_events.waitForEvents(kServerPatienceMs) || m_lost) {
                return nullptr;
            }
        }
    }

    void paintAround(Size window, const Box& inner) {
        Box boxes[4];
        const int count = surround(window, inner, boxes);
        std::array<xcb_rectangle_t, 4> rectangles{};
        for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
            rectangles[i] = {static_cast<int16_t>(boxes[i].x), static_cast<int16_t>(boxes[i].y),
                             static_cast<uint16_t>(boxes[i].width), static_cast<uint16_t>(boxes[i].height)};
        }
        if (count > 0) {
            xcb_poly_fill_rectangle(m_connection.get(), m_window, m_context, static_cast<uint32_t>(count),
                                    rectangles.data());
        }
    }

    void put(Turn& turn, const Box& box) {
        const uint16_t width = static_cast<uint16_t>(box.width);
        const uint16_t height = static_cast<uint16_t>(box.height);
        const xcb_void_cookie_t cookie = xcb_shm_put_image(
            m_connection.get(), m_window, m_context, width, height, 0, 0, width, height,
            static_cast<int16_t>(box.x), static_cast<int16_t>(box.y), static_cast<uint8_t>(m_format.depth),
            XCB_IMAGE_FORMAT_Z_PIXMAP, 1, turn.image->segment(), 0);
        turn.busy = true;
        turn.sequence = cookie.sequence;
    }

    void send(const uint8_t* pixels, size_t stride, const Box& box) {
        const size_t room = m_connection.largestRequest() - 2 * sizeof(xcb_put_image_request_t);
        const int most = static_cast<int>(std::clamp<size_t>(room / stride, 1, 0x7FFF));
        for (int done = 0; done < box.height; done += most) {
            const int rows = std::min(most, box.height - done);
            xcb_put_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_context,
                          static_cast<uint16_t>(box.width), static_cast<uint16_t>(rows),
                          static_cast<int16_t>(box.x), static_cast<int16_t>(box.y + done), 0,
                          static_cast<uint8_t>(m_format.depth),
                          static_cast<uint32_t>(stride * static_cast<size_t>(rows)),
                          pixels + static_cast<size_t>(done) * stride);
        }
    }

    XConnection& m_connection;
    EventSource& m_events;
    FrameStore& m_frames;
    const xcb_window_t m_window;
    const PixelFormat m_format;
    bool m_share;
    const xcb_gcontext_t m_context;
    std::array<Turn, 2> m_turns;
    size_t m_next = 0; /* turn to draw into */
    std::vector<uint8_t> m_own;
    /* These three are used inside the frame store only, or while it is told to forget this. */
    Resampler m_resampler;
    struct {
        View view;
        Size window;
        uint8_t* out;
    } m_expected = {};
    struct {
        uint64_t number; /* of the picture that stands at out; 0 for none */
        Plan plan;
        uint8_t* out;
    } m_drawn = {};
    bool m_lost = false;
};

} // namespace

std::unique_ptr<Presenter> makeSoftwarePresenter(XConnection& connection, EventSource& events,
                                                 FrameStore& frames, xcb_window_t window,
                                                 const WindowInfo& info, bool share) {
    return std::make_unique<SoftwarePresenter>(connection, events, frames, window, info, share);
}

} // namespace kolt::render
