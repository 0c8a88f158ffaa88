#include "gvsp/FrameAssembler.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kolt::cc {

namespace {

constexpr std::size_t kLargestFrame = std::size_t{1} << 30;
constexpr std::uint32_t kSpareData = 64; // packets that a frame may have beyond twice what it should
// More would let a camera that lies take the machine's memory; this is the largest frame in packets of 1 KiB.
constexpr std::uint32_t kMostData = std::uint32_t{1} << 20;
constexpr std::uint64_t kLateFrames = 100;
// A leader with an old number is late within this time; after it the camera has begun anew.
constexpr std::chrono::milliseconds kPause{250};
// Without resend a frame is over when so much of a later one has come: more than packets overtake each other.
constexpr std::uint32_t kOvertaking = 8;

std::uint32_t packetsFor(std::size_t bytes, std::size_t place) {
    return static_cast<std::uint32_t>((bytes + place - 1) / place);
}

std::size_t announcedBytes(const gvsp::Leader& leader) {
    const std::size_t bits = (leader.pixelFormat >> 16) & 0xFF; // of a pixel, by its GVSP code
    const std::uint64_t pixels = std::uint64_t{leader.width} * leader.height;
    return pixels > kLargestFrame ? kLargestFrame : std::min<std::size_t>(pixels * bits / 8, kLargestFrame);
}

// Frames from `id` on to `newest`; 0 when they are the same.
std::uint64_t framesBehind(std::uint64_t newest, std::uint64_t id, bool extended) {
    constexpr std::uint64_t kIds = 0xFFFF; // 1 to 65535
    if (id <= newest) {
        return newest - id;
    }
    return !extended && id <= kIds ? newest + kIds - id : ~std::uint64_t{0};
}

// What can be told of a packet by itself.
bool isSane(const gvsp::Packet& packet, std::size_t place) {
    switch (packet.format) {
    case gvsp::kLeader:
        return packet.id == 0;
    case gvsp::kData:
        return packet.id > 0 && packet.length > 0 && packet.length <= place;
    case gvsp::kTrailer:
        return packet.id > 1;
    default:
        return false;
    }
}

} // namespace

void AssembledFrame::begin(std::uint64_t blockId, bool extended, std::size_t place, std::uint32_t mostData) {
    blockId_ = blockId;
    extended_ = extended;
    place_ = place;
    mostData_ = mostData;
    received_ = refused_ = held_ = highest_ = trailerId_ = 0;
    overflowed_ = hasLeader_ = false;
    leader_ = {};
}

// Of the packet's place in the frame.
std::size_t AssembledFrame::bytesAt(std::uint32_t id) const {
    const std::size_t at = (id - 1) * place_;
    return at < length_ ? std::min(place_, length_ - at) : 0;
}

void AssembledFrame::copyTo(std::uint8_t* destination) const {
    const std::uint32_t count = packetsFor(length_, place_);
    for (std::uint32_t id = 1; id <= count; ++id) {
        static constexpr Place kNothing;
        const Place& place = id < places_.size() ? places_[id] : kNothing;
        const std::size_t bytes = bytesAt(id);
        const bool came = place.slot == Slot::held || place.slot == Slot::stored;
        const std::size_t there = came ? std::min<std::size_t>(place.length, bytes) : 0;
        std::uint8_t* const to = destination + (id - 1) * place_;
        if (there > 0) {
            std::memcpy(to, place.slot == Slot::held ? place.bytes : storedAt(id), there);
        }
        std::memset(to + there, 0, bytes - there);
    }
}

bool AssembledFrame::setAside(const Release& release) {
    if (!memory_ || memory_->size() < mostData_ * place_) {
        memory_ = std::make_unique<FrameMemory>(mostData_ * place_);
    }
    if (memory_->data() == nullptr) {
        memory_.reset();
        return false;
    }
    for (std::uint32_t id = 1; id < places_.size(); ++id) {
        if (places_[id].slot == Slot::held) {
            std::memcpy(storedAt(id), places_[id].bytes, places_[id].length);
        }
    }
    releaseHeld(release);
    aside_ = true;
    return true;
}

// Packets of a frame mostly lie side by side: they go back by runs.
void AssembledFrame::releaseHeld(const Release& release) {
    std::uint16_t block = 0;
    std::uint32_t run = 0;
    for (Place& place : places_) {
        if (place.slot != Slot::held) {
            continue;
        }
        if (run > 0 && place.block != block) {
            release(block, run);
            run = 0;
        }
        block = place.block;
        ++run;
        place.slot = Slot::stored;
    }
    if (run > 0) {
        release(block, run);
    }
    held_ = 0;
}

void AssembledFrame::clear(const Release& release) {
    if (held_ > 0) {
        releaseHeld(release);
    }
    places_.clear();
    due_.clear();
    aside_ = false;
}

FrameAssembler::FrameAssembler(const Rules& rules, Hooks hooks)
    : rules_(rules)
    , hooks_(std::move(hooks))
    , payload_(rules.frameBytes)
    , frameBytes_(rules.frameBytes)
    , roomBytes_(rules.frameBytes) {
    packetsOfFrame_ = packetsFor(frameBytes_, rules_.place) + 2;
}

AssembledFrame* FrameAssembler::find(std::uint64_t blockId) const {
    const auto found = std::find_if(open_.rbegin(), open_.rend(),
                                    [&](const Frame* frame) { return frame->blockId_ == blockId; });
    return found == open_.rend() ? nullptr : *found;
}

bool FrameAssembler::drop(std::uint64_t& counter) {
    ++counter;
    return false;
}

bool FrameAssembler::add(const std::uint8_t* bytes, std::size_t length, std::uint16_t block,
                         RingClock::time_point now) {
    TransportCounters& count = counters_.transport;
    ++count.received;
    counters_.bytes += length;
    gvsp::Packet packet;
    if (!gvsp::parse(bytes, length, packet)) {
        return drop(count.errors);
    }
    if (packet.blockId == 0) { // a test packet
        return drop(count.ignored);
    }
    if (packet.isError()) {
        refuse(packet, now);
        return drop(count.errors);
    }
    if (!isSane(packet, rules_.place)) {
        return drop(count.errors);
    }
    Frame* frame = latest_ != nullptr && latest_->blockId_ == packet.blockId ? latest_ : find(packet.blockId);
    if (frame == nullptr) {
        const bool unbuffered = newestUnbuffered_ && packet.blockId == newestId_;
        if (!unbuffered && haveId_ && isLate(packet, now)) {
            return drop(count.ignored);
        }
        frame = unbuffered ? nullptr : begin(packet, now);
        if (frame == nullptr) {
            ++count.underruns;
            return drop(count.ignored);
        }
    }
    latest_ = frame;
    return place(*frame, packet, block, now);
}

bool FrameAssembler::isLate(const gvsp::Packet& packet, RingClock::time_point now) const {
    if (framesBehind(newestId_, packet.blockId, packet.extended) > kLateFrames) {
        return false;
    }
    return packet.format != gvsp::kLeader || now - lastPacketAt_ < kPause;
}

// Null: there is no room for it.
AssembledFrame* FrameAssembler::begin(const gvsp::Packet& packet, RingClock::time_point now) {
    const std::uint64_t vanished =
        haveId_ ? missingBetween(newestId_, packet.blockId) : missingBeforeFirst(packet.blockId);
    counters_.tally.vanishedFrames += vanished;
    counters_.tally.lostPackets += vanished * packetsOfFrame_;
    haveId_ = true;
    newestId_ = packet.blockId;
    lastPacketAt_ = now;
    Frame* const frame = hooks_.acquire();
    newestUnbuffered_ = frame == nullptr;
    if (frame == nullptr) {
        ++counters_.tally.unbufferedFrames;
        return nullptr;
    }
    frame->begin(packet.blockId, packet.extended, rules_.place,
                 std::min(2 * packetsFor(roomBytes_, rules_.place) + kSpareData, kMostData));
    frame->places_.resize(std::min(packetsFor(frameBytes_, rules_.place), kMostData) + 2);
    frame->lastPacketAt_ = now;
    open_.push_back(frame);
    return frame;
}

bool FrameAssembler::fits(Frame& frame, const gvsp::Packet& packet) {
    const bool trailer = packet.format == gvsp::kTrailer;
    if (packet.id > frame.mostData_ + (trailer ? 1 : 0)) {
        frame.overflowed_ = true;
        return false;
    }
    if (frame.trailerId_ != 0) {
        return trailer ? packet.id == frame.trailerId_ : packet.id < frame.trailerId_;
    }
    return !trailer || packet.id > frame.highest_;
}

bool FrameAssembler::readLeader(Frame& frame, const gvsp::Packet& packet) {
    if (!gvsp::parseLeader(packet.data, packet.length, frame.leader_)) {
        return false;
    }
    frame.hasLeader_ = true;
    if (!frame.aside_) { // else its memory has a size already
        const std::uint32_t announced = packetsFor(announcedBytes(frame.leader_), rules_.place);
        frame.mostData_ = std::min(std::max(frame.mostData_, announced + kSpareData), kMostData);
    }
    return true;
}

bool FrameAssembler::place(Frame& frame, const gvsp::Packet& packet, std::uint16_t block,
                           RingClock::time_point now) {
    if (!fits(frame, packet)) {
        return drop(counters_.transport.errors);
    }
    if (packet.id >= frame.places_.size()) {
        frame.places_.resize(packet.id + 1);
    }
    Frame::Place& place = frame.places_[packet.id];
    if (place.slot == Frame::Slot::held || place.slot == Frame::Slot::stored) {
        return drop(counters_.transport.duplicated);
    }
    if (packet.format == gvsp::kLeader && !readLeader(frame, packet)) {
        return drop(counters_.transport.errors);
    }
    frame.refused_ -= place.slot == Frame::Slot::refused ? 1 : 0;
    place.slot = Frame::Slot::stored; // what leader and trailer tell is taken
    place.length = static_cast<std::uint32_t>(packet.length);
    bool kept = false;
    if (packet.format == gvsp::kTrailer) {
        frame.trailerId_ = packet.id;
    } else if (packet.format == gvsp::kData && frame.aside_) {
        std::memcpy(frame.storedAt(packet.id), packet.data, packet.length);
    } else if (packet.format == gvsp::kData) {
        place.slot = Frame::Slot::held;
        place.bytes = packet.data;
        place.block = block;
        ++frame.held_;
        kept = true;
    }
    if (place.asked) {
        ++counters_.resentPackets;
        frame.due_.erase(packet.id);
    }
    ++frame.received_;
    frame.highest_ = std::max(frame.highest_, packet.id);
    frame.lastPacketAt_ = lastPacketAt_ = now;
    if (isWhole(frame) || (!rules_.resend && frame.received_ == kOvertaking)) {
        closeReady(now);
    }
    return kept;
}

// The camera can't send a packet again that was asked for.
void FrameAssembler::refuse(const gvsp::Packet& packet, RingClock::time_point now) {
    Frame* const frame = find(packet.blockId);
    if (frame == nullptr || packet.status == gvsp::kNotYetAvailable || packet.id >= frame->places_.size()) {
        return;
    }
    Frame::Place& place = frame->places_[packet.id];
    if (place.asked && place.slot == Frame::Slot::absent) {
        place.slot = Frame::Slot::refused;
        ++frame->refused_;
        frame->due_.erase(packet.id);
        closeReady(now);
    }
}

// Data packets that it has or should have.
std::uint32_t FrameAssembler::dataPackets(const Frame& frame) const {
    if (frame.trailerId_ != 0) {
        return frame.trailerId_ - 1;
    }
    const std::size_t bytes = std::max(frameBytes_, announcedBytes(frame.leader_));
    return std::max(frame.highest_, packetsFor(bytes, rules_.place));
}

bool FrameAssembler::isWhole(const Frame& frame) {
    return frame.hasLeader_ && frame.trailerId_ != 0 && frame.received_ == frame.trailerId_ + 1;
}

// Of the oldest frame.
bool FrameAssembler::isOver(const Frame& frame, RingClock::time_point now) const {
    if (isWhole(frame) || now - frame.lastPacketAt_ >= rules_.retention) {
        return true;
    }
    if (frame.refused_ > 0 && frame.received_ + frame.refused_ >= dataPackets(frame) + 2) {
        return true;
    }
    return !rules_.resend && open_.size() > 1 && (open_[1]->received_ >= kOvertaking || isWhole(*open_[1]));
}

// Frames are handed over in the order in which they began.
void FrameAssembler::closeReady(RingClock::time_point now) {
    while (!open_.empty() && isOver(*open_.front(), now)) {
        Frame& frame = *open_.front();
        open_.pop_front();
        latest_ = latest_ == &frame ? nullptr : latest_;
        close(frame);
    }
}

void FrameAssembler::judge(Frame& frame) const {
    const std::uint32_t count = dataPackets(frame);
    // A short packet in the midst of a frame leaves a hole behind it.
    std::uint32_t holes = 0;
    for (std::uint32_t id = 1; id < std::min<std::size_t>(count, frame.places_.size()); ++id) {
        const Frame::Place& place = frame.places_[id];
        const bool came = place.slot == Frame::Slot::held || place.slot == Frame::Slot::stored;
        holes += came && place.length != rules_.place ? 1 : 0;
    }
    const bool lastCame = count < frame.places_.size() && (frame.places_[count].slot == Frame::Slot::held ||
                                                           frame.places_[count].slot == Frame::Slot::stored);
    const std::size_t announced = announcedBytes(frame.leader_);
    if (lastCame) {
        frame.length_ = (count - 1) * rules_.place + frame.places_[count].length;
    } else if (packetsFor(frameBytes_, rules_.place) == count) {
        frame.length_ = frameBytes_;
    } else {
        frame.length_ = packetsFor(announced, rules_.place) == count ? announced : count * rules_.place;
    }
    frame.lost_ = count + 2 - frame.received_ + holes;
    frame.end_ = frame.overflowed_ ? ClosedFrame::End::unfit : ClosedFrame::End::incomplete;
    if (isWhole(frame) && holes == 0) {
        frame.end_ = ClosedFrame::End::complete;
    }
}

void FrameAssembler::close(Frame& frame) {
    judge(frame);
    packetsOfFrame_ = dataPackets(frame) + 2;
    TallyTotals& tally = counters_.tally;
    if (frame.end_ == ClosedFrame::End::complete) {
        ++tally.frames;
        resize(std::max(payload_, frame.length_));
    } else if (frame.end_ == ClosedFrame::End::unfit) {
        ++tally.unfitFrames;
        frame.lost_ = 0;
        roomBytes_ = std::min(2 * roomBytes_, kLargestFrame); // it doesn't say how much it sends
    } else {
        ++tally.incompleteFrames;
        tally.lostPackets += frame.lost_;
    }
    hooks_.closed(frame);
}

void FrameAssembler::resize(std::size_t bytes) {
    counters_.resizes += bytes != frameBytes_ ? 1 : 0;
    frameBytes_ = roomBytes_ = bytes;
}

void FrameAssembler::followSize(std::size_t payload) {
    payload_ = std::min(payload, kLargestFrame);
}

RingClock::time_point FrameAssembler::ask(Frame& frame, RingClock::time_point now,
                                          std::vector<gvsp::ResendRequest>& requests) {
    const std::uint32_t last = dataPackets(frame) + 1;
    const bool ended = frame.trailerId_ != 0 || frame.blockId_ != newestId_;
    const RingClock::time_point tailDue = frame.lastPacketAt_ + rules_.nextAsk;
    const bool wholeIsDue = ended || now >= tailDue;
    const std::uint32_t until = wholeIsDue ? last : frame.highest_;
    RingClock::time_point next = wholeIsDue ? RingClock::time_point::max() : tailDue;
    // Half a frame is not asked for: what has kept it from coming would keep it again.
    constexpr std::uint32_t kFewPackets = 16;
    const std::uint32_t known = frame.received_ + frame.refused_;
    if (known > until || until + 1 - known > std::max(kFewPackets, until / 4)) {
        return next;
    }
    if (until >= frame.places_.size()) {
        frame.places_.resize(until + 1);
    }
    bool joins = false; // the packet before was asked for just now
    for (std::uint32_t id = 0; id <= until; ++id) {
        Frame::Place& place = frame.places_[id];
        if (place.slot != Frame::Slot::absent) {
            joins = false;
            continue;
        }
        RingClock::time_point& due = frame.due_.try_emplace(id, now + rules_.firstAsk).first->second;
        const bool asks = now >= due;
        if (asks) {
            due = now + rules_.nextAsk;
            place.asked = true;
            ++counters_.requestedPackets;
            if (joins) {
                requests.back().last = id;
            } else {
                requests.push_back({frame.blockId_, frame.extended_, id, id});
            }
        }
        joins = asks;
        next = std::min(next, due);
    }
    return next;
}

RingClock::time_point FrameAssembler::tick(RingClock::time_point now,
                                           std::vector<gvsp::ResendRequest>& requests) {
    closeReady(now);
    RingClock::time_point next = RingClock::time_point::max();
    for (Frame* frame : open_) {
        if (rules_.resend && !isWhole(*frame)) {
            next = std::min(next, ask(*frame, now, requests));
        }
    }
    return open_.empty() ? next : std::min(next, open_.front()->lastPacketAt_ + rules_.retention);
}

AssembledFrame* FrameAssembler::oldestInRing() const {
    const auto found = std::find_if(open_.begin(), open_.end(), [](const Frame* f) { return f->isInRing(); });
    return found == open_.end() ? nullptr : *found;
}

void FrameAssembler::abandon() {
    for (Frame* frame : open_) {
        frame->clear(hooks_.release);
    }
    open_.clear();
    latest_ = nullptr;
}

} // namespace kolt::cc
