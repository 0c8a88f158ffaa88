#include "camera-control/FuzzGvsp.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <memory>
#include <vector>

#include "gvsp/FrameAssembler.h"

namespace fuzz {

namespace {

using namespace kolt::cc;
using Bytes = std::vector<std::uint8_t>;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}
    bool empty() const { return left_ == 0; }
    std::uint8_t byte() {
        if (left_ == 0) {
            return 0;
        }
        --left_;
        return *at_++;
    }
    Bytes bytes(std::size_t count) {
        count = std::min(count, left_);
        Bytes taken(at_, at_ + count);
        at_ += count;
        left_ -= count;
        return taken;
    }

private:
    const std::uint8_t* at_;
    std::size_t left_;
};

// The assembler with a ring that only counts, and a caller that copies each frame out.
class Receiver {
public:
    Receiver(std::size_t place, std::size_t frameBytes, bool resend) {
        FrameAssembler::Rules rules;
        rules.place = place;
        rules.frameBytes = frameBytes;
        rules.resend = resend;
        assembler_ = std::make_unique<FrameAssembler>(
            rules, FrameAssembler::Hooks{[this] { return acquire(); },
                                         [this](AssembledFrame& frame) { take(frame); }, release_});
    }
    void packet(Bytes bytes) {
        kept_.push_back(std::move(bytes));
        ++held_;
        held_ -= assembler_->add(kept_.back().data(), kept_.back().size(), 0, now_) ? 0 : 1;
    }
    void pause(int milliseconds) {
        now_ += std::chrono::milliseconds(milliseconds);
        std::vector<gvsp::ResendRequest> requests;
        require(assembler_->tick(now_, requests) > now_ - std::chrono::seconds(1));
        for (const gvsp::ResendRequest& request : requests) {
            require(request.first <= request.last);
        }
    }
    void setAside() {
        if (AssembledFrame* const oldest = assembler_->oldestInRing()) {
            require(oldest->setAside(release_));
        }
    }
    void followSize(std::size_t bytes) { assembler_->followSize(bytes); }
    void finish() {
        assembler_->abandon();
        require(held_ == 0);
        const TallyTotals& tally = assembler_->counters().tally;
        require(tally.frames + tally.incompleteFrames + tally.unfitFrames == closed_);
    }

private:
    AssembledFrame* acquire() {
        if (free_.empty() && frames_.size() < 3) {
            frames_.push_back(std::make_unique<AssembledFrame>());
            free_.push_back(frames_.back().get());
        }
        if (free_.empty()) {
            return nullptr;
        }
        AssembledFrame* const frame = free_.back();
        free_.pop_back();
        return frame;
    }
    void take(AssembledFrame& frame) {
        ++closed_;
        if (frame.length() <= std::size_t{1} << 20) { // larger ones only take time
            const std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[frame.length()]); // exactly as much
            frame.copyTo(copy.get());
        }
        require(!frame.isComplete() || frame.lostPackets() == 0);
        frame.clear(release_);
        free_.push_back(&frame);
    }

    const AssembledFrame::Release release_ = [this](std::uint16_t, std::uint32_t count) {
        require(count <= held_);
        held_ -= count;
    };
    std::deque<Bytes> kept_;
    std::uint64_t held_ = 0;
    std::uint64_t closed_ = 0;
    std::vector<std::unique_ptr<AssembledFrame>> frames_;
    std::vector<AssembledFrame*> free_;
    std::unique_ptr<FrameAssembler> assembler_;
    RingClock::time_point now_{std::chrono::hours(1)};
};

// A packet that is well formed but for what its fields say.
Bytes madePacket(Input& input) {
    const std::uint8_t kind = input.byte();
    const std::uint8_t block = input.byte();
    const std::uint8_t id = input.byte();
    const bool extended = (kind & 0x40) != 0;
    Bytes packet(extended ? gvsp::kExtendedHeaderSize : gvsp::kHeaderSize, 0);
    if ((kind & 0x20) != 0) {
        packet[0] = 0x80;
        packet[1] = input.byte();
    }
    packet[4] = static_cast<std::uint8_t>((extended ? 0x80 : 0) | (kind & 7));
    packet[extended ? 15 : 3] = block;
    packet[extended ? 19 : 7] = id;
    const Bytes body = input.bytes(input.byte());
    packet.insert(packet.end(), body.begin(), body.end());
    return packet;
}

} // namespace

void FuzzGvsp(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::size_t place = std::size_t{1} + input.byte();
    const std::size_t frameBytes = std::size_t{1} + input.byte() * std::size_t{16};
    Receiver receiver(place, frameBytes, (input.byte() & 1) != 0);
    while (!input.empty()) {
        switch (input.byte() % 8) {
        case 0:
            receiver.packet(input.bytes(input.byte()));
            break;
        case 1:
            receiver.pause(input.byte());
            break;
        case 2:
            receiver.setAside();
            break;
        case 3:
            receiver.followSize(input.byte() * std::size_t{16});
            break;
        default:
            receiver.packet(madePacket(input));
        }
    }
    receiver.pause(250);
    receiver.finish();
}

} // namespace fuzz
