#include "device/RingStream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <arpa/inet.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "find/GvcpCodec.h"

namespace kolt::cc {

namespace {

// Room for the packets of many frames while this process doesn't get the processor. The end of a frame mostly
// leaves a block half empty, so blocks are of a frame's size; larger ones than this save nothing.
PacketRing::Size ringSize(std::size_t payload) {
    constexpr std::size_t kLeastBlock = std::size_t{128} << 10; // the largest datagram fits
    constexpr std::size_t kMostBlock = std::size_t{2} << 20;
    constexpr std::size_t kLeast = std::size_t{16} << 20;
    constexpr std::size_t kMost = std::size_t{256} << 20;
    constexpr std::size_t kBlocks = 24;
    std::size_t block = kLeastBlock;
    while (block < kMostBlock && block < payload + payload / 4) { // headers, and the kernel's
        block *= 2;
    }
    const std::size_t bytes =
        std::clamp(std::max(kBlocks * block, 4 * std::min(payload, kMost)), kLeast, kMost);
    return {block, static_cast<std::uint32_t>(bytes / block)};
}

FrameAssembler::Rules rulesOf(const StreamSettings& settings, const StreamShape& shape) {
    FrameAssembler::Rules rules;
    rules.place = shape.packetData;
    rules.frameBytes = shape.payload;
    rules.resend = settings.resend;
    return rules;
}

sockaddr_in endpoint(std::uint32_t ip, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(ip);
    address.sin_port = htons(port);
    return address;
}

// Until the time, rounded up; -1: for ever.
int millisecondsUntil(RingClock::time_point then) {
    if (then == RingClock::time_point::max()) {
        return -1;
    }
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(then - RingClock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(rest, 0, 1000));
}

} // namespace

void RingStream::Descriptor::reset(int fd) {
    if (fd_ >= 0) {
        close(fd_);
    }
    fd_ = fd;
}

RingStream::RingStream(const Road& road, const StreamSettings& settings, const StreamShape& shape,
                       Hooks hooks)
    : road_(road)
    , hooks_(std::move(hooks))
    , most_(buffersFor(std::max(settings.buffers, 1u), shape.payload))
    , assembler_(rulesOf(settings, shape),
                 {[this] { return acquireLocked(); },
                  [this](AssembledFrame& frame) { takeClosedLocked(static_cast<Frame&>(frame)); },
                  [this](std::uint16_t block, std::uint32_t count) { ring_->release(block, count); }})
    , geometry_(shape.geometry)
    , dropIncomplete_(settings.dropIncomplete) {}

std::shared_ptr<RingStream> RingStream::create(const Road& road, const StreamSettings& settings,
                                               const StreamShape& shape, Hooks hooks) {
    std::shared_ptr<RingStream> made(new RingStream(road, settings, shape, std::move(hooks)));
    if (made->most_ == 0 || !made->wake_.valid() || !made->openSocket() || !made->openRing(shape.payload)) {
        return nullptr;
    }
    try {
        made->thread_ = std::thread([stream = made.get()] { stream->run(); });
    } catch (const std::system_error&) {
        return nullptr;
    }
    return made;
}

RingStream::~RingStream() {
    stop(OV_STATUS_CALL_ORDER);
    release();
}

// Takes a port and nothing of what comes to it: without the socket the kernel would tell the camera that
// nobody listens, and with what comes it would fill a buffer that nobody empties.
bool RingStream::openSocket() {
    socket_.reset(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sock_filter nothing = BPF_STMT(BPF_RET | BPF_K, 0);
    const sock_fprog program{1, &nothing};
    sockaddr_in address = endpoint(road_.host, 0);
    socklen_t length = sizeof address;
    if (setsockopt(socket_.get(), SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) != 0 ||
        bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return false;
    }
    port_ = ntohs(address.sin_port);
    return true;
}

bool RingStream::openRing(std::size_t payload) {
    const std::lock_guard<std::mutex> lock(mutex_);
    ring_ = PacketRing::open({road_.camera, road_.host, port_}, ringSize(payload));
    epoll_.reset(epoll_create1(EPOLL_CLOEXEC));
    if (!ring_ || epoll_.get() < 0) {
        return false;
    }
    epoll_event packets{};
    packets.events = EPOLLIN | EPOLLET;
    epoll_event wake{};
    wake.events = EPOLLIN;
    return epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, ring_->descriptor(), &packets) == 0 &&
           epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, wake_.descriptor(), &wake) == 0;
}

void RingStream::run() {
    nameThisThread("ov-stream");
    raiseThisThread();
    RingClock::time_point next = RingClock::time_point::max();
    while (!ending_) {
        std::array<epoll_event, 2> events{};
        epoll_wait(epoll_.get(), events.data(), events.size(), millisecondsUntil(next));
        while (!ending_ && receive(next)) {
        }
    }
}

// One block of packets. False when there was none.
bool RingStream::receive(RingClock::time_point& next) {
    std::vector<gvsp::ResendRequest> requests;
    bool any = false;
    bool frameCame = false;
    bool sizeChanged = false;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const RingClock::time_point now = RingClock::now();
        any = ring_->readBlock([&](const std::uint8_t* bytes, std::size_t length, std::uint16_t block) {
            return assembler_.add(bytes, length, block, now);
        });
        if (any) {
            makeRoomLocked();
        } else {
            // Only when all that came is known: what lies in the ring is not missing.
            next = assembler_.tick(now, requests);
        }
        frameCame = std::exchange(frameCame_, false);
        sizeChanged = std::exchange(sizeChanged_, false);
    }
    ask(requests);
    if (frameCame) {
        hooks_.frameCame();
    }
    if (sizeChanged) {
        hooks_.sizeChanged(false);
    }
    return any;
}

void RingStream::ask(const std::vector<gvsp::ResendRequest>& requests) {
    const sockaddr_in camera = endpoint(road_.camera, gvcp::kPort);
    for (const gvsp::ResendRequest& request : requests) {
        requestId_ = requestId_ == 0xFFFF ? std::uint16_t{1} : static_cast<std::uint16_t>(requestId_ + 1);
        const std::vector<std::uint8_t> command = gvsp::resendCommand(requestId_, request);
        // One that is lost, here or on the way, is repeated.
        sendto(socket_.get(), command.data(), command.size(), 0, reinterpret_cast<const sockaddr*>(&camera),
               sizeof camera);
    }
}

AssembledFrame* RingStream::acquireLocked() {
    if (free_.empty() && frames_.size() < most_) {
        frames_.push_back(std::make_unique<Frame>());
        free_.push_back(frames_.back().get());
    }
    if (free_.empty()) {
        return nullptr;
    }
    Frame* const frame = free_.back();
    free_.pop_back();
    return frame;
}

void RingStream::recycleLocked(AssembledFrame& frame) {
    frame.clear([this](std::uint16_t block, std::uint32_t count) { ring_->release(block, count); });
    free_.push_back(static_cast<Frame*>(&frame));
}

void RingStream::takeClosedLocked(Frame& frame) {
    const gvsp::Leader& leader = frame.leader();
    if (leader.hasImage) {
        geometry_ = {leader.width, leader.height, leader.pixelFormat};
    }
    FrameFacts& facts = frame.facts;
    facts.complete = frame.isComplete();
    facts.blockId = frame.blockId();
    facts.closedAt = realtimeNow();
    facts.payloadType = leader.payloadType;
    facts.geometry = geometry_;
    facts.offsetX = leader.offsetX;
    facts.offsetY = leader.offsetY;
    facts.length = frame.length();
    facts.lostPackets = frame.lostPackets();
    facts.timestamp = leader.timestamp;
    if (road_.ticksPerSecond != 0) {
        constexpr std::uint64_t kNanoseconds = 1000000000;
        facts.timestamp = leader.timestamp / road_.ticksPerSecond * kNanoseconds +
                          leader.timestamp % road_.ticksPerSecond * kNanoseconds / road_.ticksPerSecond;
    }

    frameCame_ = true;
    sizeChanged_ = sizeChanged_ || (facts.complete && facts.length != assembler_.frameBytes());
    const bool incomplete = frame.end() == ClosedFrame::End::incomplete;
    if (!ended_ && (facts.complete || (incomplete && !dropIncomplete_))) {
        ready_.push_back(&frame);
        changed_.notify_one();
    } else {
        if (ended_) {
            own_.unfetchedFrames += facts.complete || incomplete ? 1 : 0;
        } else {
            own_.droppedFrames += incomplete ? 1 : 0;
        }
        recycleLocked(frame);
    }
}

// The kernel needs blocks to go on with: the oldest frames give theirs back.
void RingStream::makeRoomLocked() {
    const AssembledFrame::Release release = [this](std::uint16_t block, std::uint32_t count) {
        ring_->release(block, count);
    };
    while (ring_->heldBlocks() > ring_->blocks() / 2) {
        const auto waiting =
            std::find_if(ready_.begin(), ready_.end(), [](const Frame* frame) { return frame->isInRing(); });
        AssembledFrame* const oldest = waiting != ready_.end() ? *waiting : assembler_.oldestInRing();
        if (oldest == nullptr || !oldest->setAside(release)) {
            return;
        }
    }
}

std::uint32_t RingStream::fetch(std::uint8_t* destination, std::uint32_t capacity,
                                _OV_CC_FRAME_OUT_INFO_* info, std::uint32_t timeoutMs) {
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    Frame* frame = nullptr;
    std::shared_ptr<PacketRing> ring;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        while (ready_.empty()) {
            if (ended_) {
                return endStatus_;
            }
            if (changed_.wait_until(lock, deadline) == std::cv_status::timeout && ready_.empty()) {
                return ended_ ? endStatus_ : OV_STATUS_NO_DATA;
            }
        }
        frame = ready_.front();
        ready_.pop_front();
        ring = ring_; // stays mapped until the frame is copied, though the stream be stopped meanwhile
        ++(frame->facts.length > capacity ? own_.tooLargeFrames : own_.deliveredFrames);
    }
    fillInfo(frame->facts, info);
    std::uint32_t status = OV_STATUS_BUFFER_FULL;
    if (frame->facts.length <= capacity) {
        frame->copyTo(destination);
        status = OV_STATUS_OK;
    }
    frame->clear([&](std::uint16_t block, std::uint32_t count) { ring->release(block, count); });
    const std::lock_guard<std::mutex> lock(mutex_);
    free_.push_back(frame);
    return status;
}

void RingStream::setDropIncomplete(bool drop) {
    const std::lock_guard<std::mutex> lock(mutex_);
    dropIncomplete_ = drop;
    if (!drop) {
        return;
    }
    for (auto next = ready_.begin(); next != ready_.end();) {
        Frame& frame = **next;
        if (frame.facts.complete) {
            ++next;
            continue;
        }
        next = ready_.erase(next);
        ++own_.droppedFrames;
        recycleLocked(frame);
    }
}

void RingStream::lose(std::uint32_t status) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!ended_) {
        ended_ = true;
        endStatus_ = status;
        changed_.notify_all();
    }
}

void RingStream::stop(std::uint32_t status) {
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
    endStatus_ = status;
    changed_.notify_all();
    own_.unfetchedFrames += ready_.size();
    for (Frame* frame : ready_) {
        recycleLocked(*frame);
    }
    ready_.clear();
}

void RingStream::release() {
    ending_ = true;
    wake_.signal();
    if (thread_.joinable()) {
        thread_.join();
    }
    std::shared_ptr<PacketRing> over;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        assembler_.abandon();
        over = std::move(ring_);
    }
    over.reset();
    epoll_.reset();
    socket_.reset();
}

std::uint32_t RingStream::followSize(std::size_t payload) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!ring_ || ended_) {
        return OV_STATUS_CALL_ORDER;
    }
    assembler_.followSize(payload);
    return OV_STATUS_OK;
}

StreamNumbers RingStream::numbers() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const FrameAssembler::Counters& counters = assembler_.counters();
    StreamNumbers numbers = own_;
    numbers.tally = counters.tally;
    numbers.transport = counters.transport;
    numbers.receivedBytes = counters.bytes;
    numbers.resentPackets = counters.resentPackets;
    numbers.resendRequests = counters.requestedPackets;
    numbers.resizes = counters.resizes;
    numbers.bufferSize = assembler_.frameBytes();
    return numbers;
}

} // namespace kolt::cc
