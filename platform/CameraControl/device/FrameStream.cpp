#include "device/FrameStream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <utility>

namespace kolt::cc {

namespace {

// A camera that claims more is broken, or would take the machine's memory.
constexpr std::size_t kLargestFrame = std::size_t{1} << 30;

// Aravis leaves a buffer's former number and type in it when a frame's leader is lost; so a number that no
// camera sends is put there before, and is still there afterwards.
constexpr guint64 kNoBlockId = ~guint64{0};

// USB has no packets; its bulk transfers come in pieces of this size.
constexpr std::size_t kUsbPiece = 1024;

std::size_t placeSize(const StreamShape& shape) {
    return shape.packetData > 0 ? shape.packetData : kUsbPiece;
}

// Free buffers that a stream of packets is given at a time. It fills them in the order in which it got them,
// so each more would be one that has been out of the processor's caches for longer: the one that was copied
// out last is the best to be filled next. One would be enough, since the next is handed over when a frame
// begins; the second is for a packet whose kind Aravis doesn't know, which costs it a buffer.
constexpr int kAhead = 2;

const char* const kInfoNames[] = {"n_received_packets", "n_ignored_packets", "n_duplicated_packets",
                                  "n_error_packets",    "n_underruns",       "n_size_mismatch_errors",
                                  "n_resent_packets",   "n_resend_requests", "n_transferred_bytes"};
enum Info { kReceived, kIgnored, kDuplicated, kErrors, kUnderruns, kMismatches, kResent, kRequests, kBytes };
constexpr std::size_t kInfos = sizeof kInfoNames / sizeof *kInfoNames;

} // namespace

struct FrameStream::Buffer {
    Buffer(std::size_t size, unsigned ofGeneration) : memory(size), generation(ofGeneration) {}

    FrameMemory memory;
    GObjectPtr<ArvBuffer> arv;
    unsigned generation;
    Where where = Where::stream;

    // Of the frame that it holds, set when the frame is closed.
    ClosedFrame closed;
    std::size_t length = 0;
    std::uint32_t lostPackets = 0;
    std::uint64_t closedAt = 0;
    std::uint64_t timestamp = 0;
    std::uint32_t payloadType = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    FrameGeometry geometry;

    bool complete() const { return closed.end == ClosedFrame::End::complete; }
    FrameFacts facts() const {
        return {complete(), closed.blockId, timestamp, closedAt, payloadType,
                geometry,   offsetX,        offsetY,   length,   lostPackets};
    }
};

struct FrameStream::Infos {
    std::array<int, kInfos> ids;

    explicit Infos(ArvStream* stream) {
        ids.fill(-1);
        for (guint id = 0; id < arv_stream_get_n_infos(stream); ++id) {
            for (std::size_t known = 0; known < kInfos; ++known) {
                if (std::strcmp(arv_stream_get_info_name(stream, id), kInfoNames[known]) == 0) {
                    ids[known] = static_cast<int>(id);
                }
            }
        }
    }
    // 0 where this transport has no such counter.
    std::uint64_t get(ArvStream* stream, Info info) const {
        return ids[info] < 0 ? 0 : arv_stream_get_info_uint64(stream, static_cast<guint>(ids[info]));
    }
};

std::size_t fittingSize(const SizeSigns& signs) {
    std::size_t size = std::max(signs.payload, signs.received);
    if (signs.unfit) {
        size = std::max(size, signs.announced);
        if (size <= signs.buffers) {
            size = 2 * signs.buffers; // the camera doesn't say how much it sends: feel the way
        }
    }
    return std::min(size, kLargestFrame);
}

FrameStream::FrameStream(const StreamSettings& settings, const StreamShape& shape, Hooks hooks)
    : packetised_(shape.packetData > 0)
    , wanted_(std::max(settings.buffers, 1u))
    , ahead_(packetised_ ? kAhead : static_cast<int>(wanted_)) // USB transfers into several at once
    , places_(placeSize(shape), processFrameMark())
    , hooks_(std::move(hooks))
    , dropIncomplete_(settings.dropIncomplete)
    , geometry_(shape.geometry)
    , tally_(packetised_, settings.resend) {}

std::shared_ptr<FrameStream> FrameStream::create(const Maker& maker, const StreamSettings& settings,
                                                 const StreamShape& shape, Hooks hooks,
                                                 std::uint32_t& status) {
    std::shared_ptr<FrameStream> made(new FrameStream(settings, shape, std::move(hooks)));
    GObjectPtr<ArvStream> stream = maker(onStreamEvent, made.get(), status);
    if (!stream) {
        return nullptr;
    }
    bool allocated = false;
    {
        const std::lock_guard<std::mutex> lock(made->mutex_);
        made->infos_ = std::make_unique<Infos>(stream.get());
        made->stream_ = stream.get();
        made->owned_ = std::move(stream);
        allocated = made->allocateLocked(shape.payload);
    }
    status = allocated ? OV_STATUS_OK : OV_STATUS_RESOURCE;
    return allocated ? made : nullptr;
}

FrameStream::~FrameStream() {
    stop(OV_STATUS_CALL_ORDER);
    release();
}

// Makes the buffers anew and hands them to the stream. On failure nothing is changed.
bool FrameStream::allocateLocked(std::size_t payload) {
    const std::size_t count = buffersFor(wanted_, payload);
    if (count == 0) {
        return false;
    }
    std::vector<std::unique_ptr<Buffer>> made;
    for (std::size_t index = 0; index < count; ++index) {
        auto buffer = std::make_unique<Buffer>(payload, generation_ + 1);
        if (buffer->memory.data() == nullptr) {
            return false;
        }
        buffer->arv.reset(arv_buffer_new_full(payload, buffer->memory.data(), buffer.get(), nullptr));
        if (index < wanted_) {
            wipe(*buffer); // touches its pages; those of the others are taken when they are needed
        }
        made.push_back(std::move(buffer));
    }
    ++generation_;
    signs_.buffers = payload;
    signs_.unfit = false;
    for (auto last = made.rbegin(); last != made.rend(); ++last) { // the last is the first to be used
        reserve_.push_back(last->get());
        (*last)->where = Where::reserve;
    }
    std::move(made.begin(), made.end(), std::back_inserter(buffers_));
    fillUpLocked();
    return true;
}

void FrameStream::fillUpLocked() {
    while (takesMoreLocked() && !reserve_.empty()) {
        Buffer& buffer = *reserve_.back();
        reserve_.pop_back();
        pushLocked(buffer);
    }
}

// The stream can be given another buffer. Not while Aravis destroys it, nor while the buffers are exchanged:
// what it got then it would still have after the buffer was freed.
bool FrameStream::takesMoreLocked() const {
    return owned_ && !exchanging_ && freeLocked() < ahead_;
}

int FrameStream::freeLocked() const {
    gint free = 0;
    arv_stream_get_n_buffers(stream_, &free, nullptr);
    return free;
}

void FrameStream::pushLocked(Buffer& buffer) {
    wipe(buffer);
    buffer.where = Where::stream;
    arv_stream_push_buffer(stream_, ARV_BUFFER(g_object_ref(buffer.arv.get())));
}

void FrameStream::giveBackLocked(Buffer& buffer) {
    if (stream_ != nullptr && buffer.generation == generation_) {
        if (takesMoreLocked()) {
            pushLocked(buffer);
        } else {
            buffer.where = Where::reserve;
            reserve_.push_back(&buffer);
        }
        return;
    }
    // Of a former size, or the stream is over.
    const auto here = std::find_if(buffers_.begin(), buffers_.end(),
                                   [&](const auto& owned) { return owned.get() == &buffer; });
    buffers_.erase(here);
}

// Marks the buffer as empty. By whoever holds it; right before the stream gets it, so that the marks are
// still in the cache of the thread that will write over them.
void FrameStream::wipe(Buffer& buffer) const {
    places_.write(buffer.memory.data(), buffer.memory.size());
    arv_buffer_set_frame_id(buffer.arv.get(), kNoBlockId);
}

// Frees buffers up to that generation that nobody holds; the stream has let go of them.
void FrameStream::freeIdleLocked(unsigned generation) {
    const auto idle = [&](const std::unique_ptr<Buffer>& buffer) {
        return (buffer->where == Where::stream || buffer->where == Where::reserve) &&
               buffer->generation <= generation;
    };
    reserve_.erase(std::remove_if(reserve_.begin(), reserve_.end(),
                                  [&](const Buffer* buffer) { return buffer->generation <= generation; }),
                   reserve_.end());
    buffers_.erase(std::remove_if(buffers_.begin(), buffers_.end(), idle), buffers_.end());
}

void FrameStream::onStreamEvent(void* user, ArvStreamCallbackType type, ArvBuffer*) {
    auto& self = *static_cast<FrameStream*>(user);
    switch (type) {
    case ARV_STREAM_CALLBACK_TYPE_INIT:
        nameThisThread("ov-stream");
        raiseThisThread();
        break;
    case ARV_STREAM_CALLBACK_TYPE_START_BUFFER:
        self.onFrameBegun();
        break;
    case ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE:
        self.onFrameClosed();
        break;
    case ARV_STREAM_CALLBACK_TYPE_EXIT:
        self.onThreadEnds();
        break;
    }
}

TransportCounters FrameStream::countersLocked() const {
    TransportCounters counters;
    if (stream_ && infos_) {
        counters.received = infos_->get(stream_, kReceived);
        counters.ignored = infos_->get(stream_, kIgnored);
        counters.duplicated = infos_->get(stream_, kDuplicated);
        counters.errors = infos_->get(stream_, kErrors);
        counters.underruns = infos_->get(stream_, kUnderruns);
        counters.mismatches = infos_->get(stream_, kMismatches);
    }
    return counters;
}

void FrameStream::onFrameBegun() {
    std::unique_lock<std::mutex> lock(mutex_);
    tally_.frameBegun(countersLocked());
    while (takesMoreLocked() && !reserve_.empty()) {
        Buffer& buffer = *reserve_.back();
        reserve_.pop_back();
        buffer.where = Where::stream;
        ArvStream* const stream = stream_;
        // Callers need not wait for the marks to be written. Whoever exchanges or frees buffers of the stream
        // waits for this thread before.
        lock.unlock();
        wipe(buffer);
        arv_stream_push_buffer(stream, ARV_BUFFER(g_object_ref(buffer.arv.get())));
        lock.lock();
    }
}

void FrameStream::lookAfter() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!owned_ || ended_ || exchanging_) {
            return;
        }
        fillUpLocked();
        const bool starving = freeLocked() == 0 && ready_.empty() && tally_.isIdle() &&
                              std::any_of(buffers_.begin(), buffers_.end(),
                                          [](const auto& owned) { return owned->where == Where::stream; });
        // Twice, since a frame may just be beginning.
        starved_ = starving && hungry_;
        hungry_ = starving;
        if (!starved_) {
            return;
        }
    }
    hooks_.sizeChanged(true);
}

// The counters are complete now. When the stream that holds them goes, this is the last that is known of it:
// from here on Aravis takes it apart.
void FrameStream::onThreadEnds() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!owned_) {
        own_ = numbersLocked();
        stream_ = nullptr;
    }
}

// On the stream's thread, right after Aravis has put a buffer into its output queue. It is taken out of there
// at once, so that the wait for it is our own: it can be ended, and frames that nobody wants go back without
// delay.
void FrameStream::onFrameClosed() {
    bool sizeChanged = false;
    bool urgent = false;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        while (stream_) {
            const GObjectPtr<ArvBuffer> arv(arv_stream_try_pop_buffer(stream_));
            if (!arv) {
                break;
            }
            sizeChanged = takeClosedLocked(*static_cast<Buffer*>(
                              const_cast<void*>(arv_buffer_get_user_data(arv.get())))) ||
                          sizeChanged;
        }
        urgent = signs_.unfit;
    }
    hooks_.frameCame();
    if (sizeChanged) {
        hooks_.sizeChanged(urgent);
    }
}

// True when the buffers' size should be looked at again.
bool FrameStream::takeClosedLocked(Buffer& buffer) {
    const TransportCounters now = countersLocked();
    judgeLocked(buffer, now);
    if (tally_.isRestarted() && buffer.closed.end == ClosedFrame::End::incomplete) {
        buffer.closed.end = ClosedFrame::End::cut;
    }
    buffer.lostPackets = tally_.frameClosed(buffer.closed, now);
    buffer.closed.blockId = tally_.blockId();

    bool sizeChanged = false;
    if (buffer.generation == generation_) {
        signs_.announced = imageBytes(geometry_);
        if (buffer.closed.end == ClosedFrame::End::unfit) {
            signs_.unfit = true;
            sizeChanged = true;
        } else if (buffer.complete()) {
            signs_.received = buffer.length;
            sizeChanged = buffer.length != signs_.buffers;
        }
    }

    const bool incomplete = buffer.closed.end == ClosedFrame::End::incomplete;
    if (!ended_ && (buffer.complete() || (incomplete && !dropIncomplete_))) {
        buffer.where = Where::ready;
        ready_.push_back(&buffer);
        changed_.notify_one();
    } else {
        if (ended_) {
            own_.unfetchedFrames += buffer.complete() || incomplete ? 1 : 0;
        } else {
            own_.droppedFrames += incomplete ? 1 : 0;
        }
        giveBackLocked(buffer);
    }
    return sizeChanged;
}

// What the leader said, where that is known; else geometry_ stays as it was for the last frame.
void FrameStream::readLeaderLocked(Buffer& buffer) {
    ArvBuffer* arv = buffer.arv.get();
    buffer.closed.blockId = arv_buffer_get_frame_id(arv);
    buffer.closed.leaderCame = !packetised_ || buffer.closed.blockId != kNoBlockId;
    buffer.payloadType = 0;
    buffer.timestamp = 0;
    if (buffer.closed.leaderCame) {
        buffer.payloadType = static_cast<std::uint32_t>(
            std::max(arv_buffer_get_payload_type(arv), ARV_BUFFER_PAYLOAD_TYPE_NO_DATA));
        buffer.timestamp = arv_buffer_get_timestamp(arv);
    }
    buffer.offsetX = 0;
    buffer.offsetY = 0;
    // Aravis tells the geometry of complete frames only.
    if (arv_buffer_get_status(arv) == ARV_BUFFER_STATUS_SUCCESS && arv_buffer_get_n_parts(arv) > 0 &&
        arv_buffer_get_part_data_type(arv, 0) == ARV_BUFFER_PART_DATA_TYPE_2D_IMAGE) {
        gint x = 0;
        gint y = 0;
        gint width = 0;
        gint height = 0;
        arv_buffer_get_part_region(arv, 0, &x, &y, &width, &height);
        geometry_ = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                     static_cast<std::uint32_t>(arv_buffer_get_part_pixel_format(arv, 0))};
        buffer.offsetX = static_cast<std::uint32_t>(x);
        buffer.offsetY = static_cast<std::uint32_t>(y);
    }
    buffer.geometry = geometry_;
}

void FrameStream::judgeLocked(Buffer& buffer, const TransportCounters& now) {
    ArvBuffer* arv = buffer.arv.get();
    buffer.closedAt = realtimeNow();
    buffer.closed = {};
    readLeaderLocked(buffer);

    const bool mismatch = now.mismatches != mismatchesSeen_;
    mismatchesSeen_ = now.mismatches;
    ClosedFrame::End& end = buffer.closed.end;
    switch (arv_buffer_get_status(arv)) {
    case ARV_BUFFER_STATUS_SUCCESS:
        // Aravis calls a frame complete even when it had to cut it to the buffer's size.
        end = mismatch ? ClosedFrame::End::unfit : ClosedFrame::End::complete;
        break;
    case ARV_BUFFER_STATUS_WRONG_PACKET_ID:
    case ARV_BUFFER_STATUS_SIZE_MISMATCH:
        end = ClosedFrame::End::unfit;
        break;
    case ARV_BUFFER_STATUS_ABORTED:
    case ARV_BUFFER_STATUS_CLEARED:
        end = ClosedFrame::End::aborted;
        break;
    default:
        end = mismatch ? ClosedFrame::End::unfit : ClosedFrame::End::incomplete;
    }
    measureLocked(buffer);
}

// The frame's length, and how many of its packets are not there.
void FrameStream::measureLocked(Buffer& buffer) const {
    ClosedFrame& closed = buffer.closed;
    buffer.length = buffer.memory.size();
    if (closed.end == ClosedFrame::End::complete) {
        std::size_t received = 0;
        arv_buffer_get_data(buffer.arv.get(), &received);
        buffer.length = std::min(received, buffer.memory.size());
    }
    closed.places = places_.count(buffer.length);
    if (closed.end == ClosedFrame::End::incomplete) {
        closed.unfilled = places_.countMarked(buffer.memory.data(), buffer.length);
    }
}

std::uint32_t FrameStream::fetch(std::uint8_t* destination, std::uint32_t capacity,
                                 _OV_CC_FRAME_OUT_INFO_* info, std::uint32_t timeoutMs) {
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    Buffer* buffer = nullptr;
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
        buffer = ready_.front();
        ready_.pop_front();
        buffer->where = Where::caller;
        ++(buffer->length > capacity ? own_.tooLargeFrames : own_.deliveredFrames);
    }
    fillInfo(buffer->facts(), info);
    std::uint32_t status = OV_STATUS_OK;
    if (buffer->length > capacity) {
        status = OV_STATUS_BUFFER_FULL;
    } else if (buffer->complete()) {
        std::memcpy(destination, buffer->memory.data(), buffer->length);
    } else {
        places_.copyFilled(destination, buffer->memory.data(), buffer->length);
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    giveBackLocked(*buffer);
    return status;
}

void FrameStream::setDropIncomplete(bool drop) {
    const std::lock_guard<std::mutex> lock(mutex_);
    dropIncomplete_ = drop;
    if (!drop) {
        return;
    }
    for (auto next = ready_.begin(); next != ready_.end();) {
        Buffer& buffer = **next;
        if (buffer.complete()) {
            ++next;
            continue;
        }
        next = ready_.erase(next);
        ++own_.droppedFrames;
        giveBackLocked(buffer);
    }
}

void FrameStream::lose(std::uint32_t status) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!ended_) {
        ended_ = true;
        endStatus_ = status;
        changed_.notify_all();
    }
}

void FrameStream::stop(std::uint32_t status) {
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
    endStatus_ = status;
    changed_.notify_all();
    own_.unfetchedFrames += ready_.size();
    for (Buffer* buffer : ready_) {
        buffer->where = Where::stream;
    }
    ready_.clear();
}

void FrameStream::release() {
    const std::lock_guard<std::mutex> restart(restart_);
    GObjectPtr<ArvStream> over;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        over = std::move(owned_);
    }
    if (!over) {
        return;
    }
    // Aravis ends the thread while it destroys the stream (and takes an explicit end before that for a
    // mistake). The thread's last callbacks come in here, and find the stream still usable.
    over.reset();
    const std::lock_guard<std::mutex> lock(mutex_);
    stream_ = nullptr;
    freeIdleLocked(generation_);
}

std::uint32_t FrameStream::followSize(std::size_t payload) {
    const std::lock_guard<std::mutex> restart(restart_);
    ArvStream* stream = nullptr;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!owned_ || ended_) {
            return OV_STATUS_CALL_ORDER;
        }
        signs_.payload = payload;
        if (fittingSize(signs_) == signs_.buffers && !starved_) {
            return OV_STATUS_OK;
        }
        starved_ = false;
        exchanging_ = true;
        stream = stream_;
    }
    arv_stream_stop_thread(stream, TRUE);
    std::uint32_t status = OV_STATUS_OK;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const unsigned former = generation_;
        exchanging_ = false;
        tally_.restarted();
        if (allocateLocked(fittingSize(signs_))) {
            ++own_.resizes;
            freeIdleLocked(former);
        } else {
            status = OV_STATUS_RESOURCE; // go on with those that there are
            for (const auto& buffer : buffers_) {
                if (buffer->where == Where::stream) {
                    buffer->where = Where::reserve;
                    reserve_.push_back(buffer.get());
                }
            }
            fillUpLocked();
        }
    }
    arv_stream_start_thread(stream);
    return status;
}

StreamNumbers FrameStream::numbersLocked() const {
    StreamNumbers numbers = own_;
    if (stream_) {
        numbers.tally = tally_.totals();
        numbers.transport = countersLocked();
        numbers.tally.unbufferedFrames += tally_.unbufferedNow(numbers.transport.underruns);
        numbers.receivedBytes = infos_->get(stream_, kBytes);
        numbers.resentPackets = infos_->get(stream_, kResent);
        numbers.resendRequests = infos_->get(stream_, kRequests);
        numbers.bufferSize = signs_.buffers;
    }
    return numbers;
}

StreamNumbers FrameStream::numbers() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return numbersLocked();
}

} // namespace kolt::cc
