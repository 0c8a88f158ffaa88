// From stream packets to frames: which packet belongs where, what is missing, what is asked for again, when a
// frame is over. Plain logic without I/O, threads or clocks of its own; the bytes stay where they were
// received, in a ring that this knows by block numbers only.
#ifndef KOLT_CAMERA_CONTROL_FRAME_ASSEMBLER_H
#define KOLT_CAMERA_CONTROL_FRAME_ASSEMBLER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "gvsp/FrameBuffer.h"
#include "gvsp/FrameTally.h"
#include "gvsp/GvspPacket.h"

namespace kolt::cc {

using RingClock = std::chrono::steady_clock;

// One frame. Its packets lie in the ring until they are copied out, or set aside into memory of the frame's
// own when the ring is needed.
class AssembledFrame {
public:
    // Gives `count` packets of a block back to the ring.
    using Release = std::function<void(std::uint16_t block, std::uint32_t count)>;

    std::uint64_t blockId() const { return blockId_; }
    bool hasLeader() const { return hasLeader_; }
    const gvsp::Leader& leader() const { return leader_; }

    // When it is closed:
    ClosedFrame::End end() const { return end_; }
    bool isComplete() const { return end_ == ClosedFrame::End::complete; }
    std::size_t length() const { return length_; }
    std::uint32_t lostPackets() const { return lost_; }

    // Copies length() bytes; what did not come is zero.
    void copyTo(std::uint8_t* destination) const;

    // True when it has packets in the ring.
    bool isInRing() const { return held_ > 0; }
    // Moves all to own memory, where also the packets go that come later. False where there is no memory:
    // nothing is changed.
    bool setAside(const Release& release);
    // Lets all packets go.
    void clear(const Release& release);

private:
    friend class FrameAssembler;
    enum class Slot : std::uint8_t { absent, held, stored, refused };
    struct Place {
        const std::uint8_t* bytes = nullptr; // held
        std::uint32_t length = 0;
        std::uint16_t block = 0; // held
        Slot slot = Slot::absent;
        bool asked = false; // for a resend
    };

    void begin(std::uint64_t blockId, bool extended, std::size_t place, std::uint32_t mostData);
    std::size_t bytesAt(std::uint32_t id) const;
    std::uint8_t* storedAt(std::uint32_t id) const { return memory_->data() + (id - 1) * place_; }
    void releaseHeld(const Release& release);

    std::uint64_t blockId_ = 0;
    bool extended_ = false;
    std::size_t place_ = 1;      // data bytes of a full packet
    std::uint32_t mostData_ = 0; // data packets that it may have
    std::vector<Place> places_;  // by packet id
    std::uint32_t received_ = 0; // places held or stored
    std::uint32_t refused_ = 0;
    std::uint32_t held_ = 0;
    std::uint32_t highest_ = 0;   // packet id that came
    std::uint32_t trailerId_ = 0; // 0: did not come
    bool overflowed_ = false;     // there was a packet beyond mostData_
    bool hasLeader_ = false;
    gvsp::Leader leader_;
    RingClock::time_point lastPacketAt_;
    std::map<std::uint32_t, RingClock::time_point> due_; // missing packets, and when to ask for them
    std::unique_ptr<FrameMemory> memory_;
    bool aside_ = false;

    ClosedFrame::End end_ = ClosedFrame::End::incomplete;
    std::size_t length_ = 0;
    std::uint32_t lost_ = 0;
};

class FrameAssembler {
public:
    struct Rules {
        std::size_t place = 1;      // data bytes of a full packet
        std::size_t frameBytes = 1; // of the frames that the camera is set to send
        bool resend = true;
        // Until a packet that was overtaken is asked for, and until it is asked for again.
        std::chrono::milliseconds firstAsk{1};
        std::chrono::milliseconds nextAsk{20};
        // A frame without a packet for so long is given up.
        std::chrono::milliseconds retention{200};
    };
    struct Hooks {
        std::function<AssembledFrame*()> acquire; // a cleared frame; null: no room for another
        std::function<void(AssembledFrame&)> closed;
        AssembledFrame::Release release;
    };
    struct Counters {
        TransportCounters transport;
        TallyTotals tally;
        std::uint64_t bytes = 0;
        std::uint64_t resentPackets = 0;
        std::uint64_t requestedPackets = 0;
        std::uint64_t resizes = 0;
    };

    FrameAssembler(const Rules& rules, Hooks hooks);

    // A datagram of the flow; true: it is kept, and given back by `release`.
    bool add(const std::uint8_t* bytes, std::size_t length, std::uint16_t block, RingClock::time_point now);

    // After each batch of packets, and at the time that it told last. Closes what is due and appends what
    // shall be asked for. Returns when it wants to be called again at the latest.
    RingClock::time_point tick(RingClock::time_point now, std::vector<gvsp::ResendRequest>& requests);

    // The oldest frame that is being put together and has packets in the ring; null: none.
    AssembledFrame* oldestInRing() const;

    // What the camera says of its frames' size.
    void followSize(std::size_t payload);
    std::size_t frameBytes() const { return frameBytes_; }

    const Counters& counters() const { return counters_; }

    // Lets all frames go that are not closed; they are told to nobody.
    void abandon();

private:
    using Frame = AssembledFrame;

    Frame* find(std::uint64_t blockId) const;
    Frame* begin(const gvsp::Packet& packet, RingClock::time_point now);
    bool isLate(const gvsp::Packet& packet, RingClock::time_point now) const;
    bool place(Frame& frame, const gvsp::Packet& packet, std::uint16_t block, RingClock::time_point now);
    bool fits(Frame& frame, const gvsp::Packet& packet);
    bool readLeader(Frame& frame, const gvsp::Packet& packet);
    void refuse(const gvsp::Packet& packet, RingClock::time_point now);
    bool drop(std::uint64_t& counter);
    std::uint32_t dataPackets(const Frame& frame) const;
    static bool isWhole(const Frame& frame);
    bool isOver(const Frame& frame, RingClock::time_point now) const;
    void closeReady(RingClock::time_point now);
    void close(Frame& frame);
    void judge(Frame& frame) const;
    void resize(std::size_t bytes);
    RingClock::time_point ask(Frame& frame, RingClock::time_point now,
                              std::vector<gvsp::ResendRequest>& requests);

    const Rules rules_;
    const Hooks hooks_;
    std::deque<Frame*> open_; // in the order in which they began
    Frame* latest_ = nullptr; // that got the last packet
    bool haveId_ = false;
    std::uint64_t newestId_ = 0;
    bool newestUnbuffered_ = false; // there was no room for it
    RingClock::time_point lastPacketAt_;
    std::size_t payload_;    // as the camera says
    std::size_t frameBytes_; // as frames come
    std::size_t roomBytes_;  // that a frame may take
    std::uint32_t packetsOfFrame_ = 0;
    Counters counters_;
};

} // namespace kolt::cc

#endif
