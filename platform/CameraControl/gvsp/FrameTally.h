// What became of the packets and frames of one stream, counted frame by frame from Aravis' counters and from
// the marks in the buffers. Plain arithmetic without I/O; one thread at a time.
//
// Aravis has no count of lost packets that holds: its own is off by orders of magnitude. What holds is, per
// frame, which places of the buffer were filled, whether the leader came, and how many packets came while the
// frame was the newest. Lost are the packets of frames that were begun (or whose number is missing in the
// count of block ids) and that were not there when the frame was closed: neither sent once, nor in time on
// request.
#ifndef KOLT_CAMERA_CONTROL_FRAME_TALLY_H
#define KOLT_CAMERA_CONTROL_FRAME_TALLY_H

#include <cstddef>
#include <cstdint>
#include <deque>

namespace kolt::cc {

// Aravis' counters of one stream; all count up from its start.
struct TransportCounters {
    std::uint64_t received = 0; // packets, all that follow included
    std::uint64_t ignored = 0;  // too late, or no buffer was free
    std::uint64_t duplicated = 0;
    std::uint64_t errors = 0;    // answers "packet not available" and malformed ones
    std::uint64_t underruns = 0; // packets that found no free buffer; part of ignored
    std::uint64_t mismatches = 0;

    std::uint64_t useful() const { return received - ignored - duplicated - errors; }
};

// How the transport closed a frame.
struct ClosedFrame {
    enum class End {
        complete,
        incomplete, // packets are missing
        unfit,      // its packets did not fit the buffer: the camera sends larger frames than it said
        cut,        // its beginning went by while the buffers were exchanged
        aborted,    // the stream was stopped in its midst
    };
    End end = End::complete;
    std::uint64_t blockId = 0; // meaningless without the leader
    bool leaderCame = true;
    std::size_t places = 0;   // packets of data that the frame has
    std::size_t unfilled = 0; // of these, not received
};

struct TallyTotals {
    std::uint64_t frames = 0;           // closed complete
    std::uint64_t incompleteFrames = 0; // closed with packets missing
    std::uint64_t unfitFrames = 0;      // too large for the buffers, or lost while these were exchanged
    std::uint64_t vanishedFrames = 0;   // not one packet came; known from the gap in the block ids
    std::uint64_t unbufferedFrames = 0; // no buffer was free
    std::uint64_t lostPackets = 0;
};

// Frames between two block ids that were not seen. Block ids have 16 bits, run from 1 and skip 0; an id above
// 65535 says that the camera uses the 64-bit ones. 0 where the step makes no sense as a loss (the camera
// began anew).
std::uint64_t missingBetween(std::uint64_t last, std::uint64_t next);
// Frames of a stream that went by before its first one was seen. Ids begin with 1 when the stream channel is
// opened (GigE Vision, block_id). A camera that counts on instead is known by an id beyond any start: 0 then.
std::uint64_t missingBeforeFirst(std::uint64_t first);
std::uint64_t blockIdAfter(std::uint64_t last, std::uint64_t steps);

class FrameTally {
public:
    // packetised: the transport has packets and block ids (GigE Vision).
    // resend: lost packets are asked for again, so packets of several frames may come mixed.
    FrameTally(bool packetised, bool resend) : packetised_(packetised), resend_(resend) {}

    // The first packet of a new frame has come; it is in the counters already.
    void frameBegun(const TransportCounters& now);

    // A frame is closed; frames close in the order in which they began. Returns its lost packets.
    std::uint32_t frameClosed(const ClosedFrame& frame, const TransportCounters& now);

    // The stream's thread was stopped and begins anew: frames of the pause don't count as lost on the way.
    void restarted();
    bool isRestarted() const { return paused_; } // and no frame was closed since

    const TallyTotals& totals() const { return totals_; }

    // No frame has begun that was not closed.
    bool isIdle() const { return begun_.empty(); }

    // The block id of the newest frame, counted on from the last known one when its leader is missing.
    std::uint64_t blockId() const { return blockIdAfter(lastId_, unnumbered_); }

    // Frames that found no buffer since the last frame that did; a later frame confirms them.
    std::uint64_t unbufferedNow(std::uint64_t underruns) const;

private:
    struct Begun {
        std::uint64_t usefulBefore; // packets before its first
        std::uint64_t underruns;
    };
    std::uint64_t lostOf(const ClosedFrame& frame, const Begun& begun, const TransportCounters& now) const;
    std::uint64_t gapBefore(const ClosedFrame& frame);

    bool packetised_;
    bool resend_;
    std::deque<Begun> begun_;
    bool haveId_ = false;
    bool paused_ = false; // since the last frame
    std::uint64_t lastId_ = 0;
    std::uint64_t unnumbered_ = 0; // frames without leader since then
    std::uint64_t underrunsSeen_ = 0;
    std::uint64_t unbufferedPackets_ = 0; // not yet assigned to frames
    std::size_t packetsOfFrame_ = 0;      // of the last one
    TallyTotals totals_;
};

} // namespace kolt::cc

#endif
