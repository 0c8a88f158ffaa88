#include "gvsp/FrameTally.h"

#include <algorithm>

namespace kolt::cc {

std::uint64_t missingBetween(std::uint64_t last, std::uint64_t next) {
    constexpr std::uint64_t kIds = 0xFFFF; // 1 to 65535
    constexpr std::uint64_t kMost = kIds / 2;
    std::uint64_t step = 0;
    if (next > last) {
        step = next - last;
    } else if (last <= kIds && next != 0) {
        step = next + kIds - last;
    }
    return step >= 1 && step <= kMost ? step - 1 : 0;
}

std::uint64_t blockIdAfter(std::uint64_t last, std::uint64_t steps) {
    constexpr std::uint64_t kIds = 0xFFFF;
    const std::uint64_t next = last + steps;
    return last <= kIds && next > kIds ? next - kIds : next;
}

std::uint64_t missingBeforeFirst(std::uint64_t first) {
    constexpr std::uint64_t kMost = 100;
    return first >= 1 && first <= kMost ? first - 1 : 0;
}

void FrameTally::frameBegun(const TransportCounters& now) {
    begun_.push_back({now.useful() - 1, now.underruns});
}

std::uint64_t FrameTally::gapBefore(const ClosedFrame& frame) {
    if (!frame.leaderCame) {
        ++unnumbered_;
        return 0;
    }
    const std::uint64_t missing = !packetised_ ? 0
                                  : haveId_    ? missingBetween(lastId_, frame.blockId)
                                               : missingBeforeFirst(frame.blockId);
    const std::uint64_t vanished = missing - std::min(missing, unnumbered_);
    haveId_ = true;
    lastId_ = frame.blockId;
    unnumbered_ = 0;
    return vanished;
}

std::uint64_t FrameTally::unbufferedNow(std::uint64_t underruns) const {
    const std::uint64_t packets = underruns - underrunsSeen_;
    return packetsOfFrame_ == 0 ? 0 : (packets + packetsOfFrame_ - 1) / packetsOfFrame_;
}

void FrameTally::restarted() {
    begun_.clear();
    paused_ = true;
}

std::uint32_t FrameTally::frameClosed(const ClosedFrame& frame, const TransportCounters& now) {
    Begun begun{0, now.underruns};
    if (!begun_.empty()) {
        begun = begun_.front();
        begun_.pop_front();
    }
    if (frame.end == ClosedFrame::End::aborted) {
        return 0;
    }
    packetsOfFrame_ = frame.places + 2; // leader and trailer
    std::uint64_t vanished = gapBefore(frame);
    if (paused_) {
        paused_ = false;
        totals_.unfitFrames += vanished;
        vanished = 0;
    }
    unbufferedPackets_ += begun.underruns - underrunsSeen_;
    underrunsSeen_ = begun.underruns;
    (unbufferedPackets_ > 0 ? totals_.unbufferedFrames : totals_.vanishedFrames) += vanished;

    std::uint64_t lost = 0;
    if (frame.end == ClosedFrame::End::complete) {
        ++totals_.frames;
    } else if (frame.end == ClosedFrame::End::unfit || frame.end == ClosedFrame::End::cut) {
        ++totals_.unfitFrames;
    } else {
        ++totals_.incompleteFrames;
        lost = packetised_ ? lostOf(frame, begun, now) : 0;
    }
    // Packets that came but found no buffer are not lost: they are those of the frames in the gap, and the
    // first ones of a frame in whose midst a buffer became free. That frame has no leader, so its gap is
    // known later.
    const std::uint64_t absent = vanished * packetsOfFrame_ + lost;
    const std::uint64_t explained = std::min(absent, unbufferedPackets_);
    totals_.lostPackets += absent - explained;
    unbufferedPackets_ = frame.leaderCame ? 0 : unbufferedPackets_ - explained;
    return static_cast<std::uint32_t>(lost);
}

std::uint64_t FrameTally::lostOf(const ClosedFrame& frame, const Begun& begun,
                                 const TransportCounters& now) const {
    const std::uint64_t lost = frame.unfilled + (frame.leaderCame ? 0 : 1);
    // The trailer leaves no trace in the buffer: it is what remains between what came and what is filled.
    // With resend the packets of a frame may come among those of the next, so it is only told when nothing
    // else can explain the failure.
    const std::uint64_t until = begun_.empty() ? now.useful() : begun_.front().usefulBefore;
    const std::uint64_t came = until - std::min(until, begun.usefulBefore);
    const bool trailerMissing = resend_ ? lost == 0 : came + lost < frame.places + 2;
    return lost + (trailerMissing ? 1 : 0);
}

} // namespace kolt::cc
