// Buffers that callers hold while Aravis takes its stream apart or exchanges all buffers. Aravis' own camera
// without hardware fills them; its stream's ends are tapped, and a caller is held in the midst of its copy.
#include <csignal>
#include <cstring>
#include <functional>
#include <memory>
#include <semaphore.h>
#include <sys/mman.h>
#include <thread>
#include <vector>

#include <arv.h>
#include <gtest/gtest.h>

#include "Waiting.h"
#include "device/FrameStream.h"

namespace kolt::cc {
namespace {

using test::eventually;

// Memory that a writer is held up at, until it is let go.
class HeldMemory {
public:
    explicit HeldMemory(std::size_t size) : size_(size) {
        memory_ = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        EXPECT_NE(memory_, MAP_FAILED);
        sem_init(&touched_, 0, 0);
        sem_init(&open_, 0, 0);
        held_ = this;
        struct sigaction action {};
        action.sa_sigaction = onFault;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGSEGV, &action, &former_);
    }
    ~HeldMemory() {
        sigaction(SIGSEGV, &former_, nullptr);
        held_ = nullptr;
        munmap(memory_, size_);
        sem_destroy(&touched_);
        sem_destroy(&open_);
    }
    HeldMemory(const HeldMemory&) = delete;
    HeldMemory& operator=(const HeldMemory&) = delete;

    std::uint8_t* data() const { return static_cast<std::uint8_t*>(memory_); }
    void waitForWriter() { wait(touched_); }
    void letGo() { sem_post(&open_); }

private:
    static void wait(sem_t& semaphore) {
        while (sem_wait(&semaphore) != 0) {
        }
    }
    static void onFault(int, siginfo_t* info, void*) {
        HeldMemory* const held = held_;
        auto* const at = static_cast<std::uint8_t*>(info->si_addr);
        if (held == nullptr || at < held->data() || at >= held->data() + held->size_) {
            std::signal(SIGSEGV, SIG_DFL); // a fault of its own: it happens again, and ends the test
            return;
        }
        sem_post(&held->touched_);
        wait(held->open_);
        mprotect(held->memory_, held->size_, PROT_READ | PROT_WRITE);
    }

    static HeldMemory* held_;
    std::size_t size_;
    void* memory_ = nullptr;
    sem_t touched_{};
    sem_t open_{};
    struct sigaction former_ {};
};

HeldMemory* HeldMemory::held_ = nullptr;

// What happens at the ends of the stream's class: after its thread has been joined, and around the
// destruction of the object.
struct Taps {
    std::function<void(ArvStream*)> stopped;
    std::function<void(ArvStream*)> goes;
    std::function<void()> gone;
};
Taps taps;
void (*stopThreadOfClass)(ArvStream*) = nullptr;
void (*finalizeOfClass)(GObject*) = nullptr;

void tell(const std::function<void(ArvStream*)>& tap, ArvStream* stream) {
    if (tap) {
        tap(stream);
    }
}

void tapClassOf(ArvStream* stream) {
    ArvStreamClass* const ofStream = ARV_STREAM_GET_CLASS(stream);
    GObjectClass* const ofObject = G_OBJECT_GET_CLASS(stream);
    if (finalizeOfClass != nullptr) {
        return;
    }
    stopThreadOfClass = ofStream->stop_thread;
    finalizeOfClass = ofObject->finalize;
    ofStream->stop_thread = [](ArvStream* stopping) {
        stopThreadOfClass(stopping);
        tell(taps.stopped, stopping);
    };
    ofObject->finalize = [](GObject* object) {
        tell(taps.goes, reinterpret_cast<ArvStream*>(object));
        finalizeOfClass(object);
        if (taps.gone) {
            taps.gone();
        }
    };
}

int freeOf(ArvStream* stream) {
    gint free = -1;
    arv_stream_get_n_buffers(stream, &free, nullptr);
    return free;
}

class FrameStreamTest : public testing::Test {
protected:
    static constexpr unsigned kBuffers = 2;
    static constexpr std::size_t kFrame = std::size_t{512} * 512;
    // Large enough that few more buffers than those asked for are made.
    static constexpr std::size_t kPayload = std::size_t{32} << 20;
    static constexpr unsigned kAllBuffers = 4;

    FrameStreamTest() : device_(arv_fake_device_new("TEST0", nullptr)) {
        arv_device_set_float_feature_value(device_.get(), "AcquisitionFrameRate", 200.0, nullptr);
    }
    ~FrameStreamTest() override { taps = {}; }

    std::shared_ptr<FrameStream> open(unsigned buffers, std::size_t payload) {
        StreamSettings settings;
        settings.buffers = buffers;
        StreamShape shape;
        shape.payload = payload;
        std::uint32_t status = 0;
        FrameSource::Hooks hooks;
        hooks.sizeChanged = [](bool) {};
        hooks.frameCame = [] {};
        auto stream = FrameStream::create(
            [this](ArvStreamCallback callback, void* user, std::uint32_t&) {
                GObjectPtr<ArvStream> made(arv_device_create_stream(device_.get(), callback, user, nullptr));
                aravis_ = made.get();
                tapClassOf(aravis_);
                return made;
            },
            settings, shape, std::move(hooks), status);
        EXPECT_EQ(status, OV_STATUS_OK);
        arv_device_execute_command(device_.get(), "AcquisitionStart", nullptr);
        return stream;
    }
    // A caller in the midst of its copy, and all other buffers full: the stream has none.
    void holdCaller(FrameStream& stream) {
        caller_ = std::thread([this, &stream] {
            _OV_CC_FRAME_OUT_INFO_ info{};
            status_ = stream.fetch(held_.data(), kFrame, &info, 20000);
        });
        held_.waitForWriter();
        ASSERT_TRUE(eventually([&] { return stream.numbers().tally.frames == kAllBuffers; }));
        ASSERT_EQ(freeOf(aravis_), 0);
    }
    void finishCaller() {
        held_.letGo();
        caller_.join();
        EXPECT_EQ(status_, OV_STATUS_OK);
    }

    GObjectPtr<ArvDevice> device_;
    ArvStream* aravis_ = nullptr;
    HeldMemory held_{kFrame};
    std::thread caller_;
    std::uint32_t status_ = ~0u;
};

TEST_F(FrameStreamTest, GivesNoBufferToAStreamThatIsBeingDestroyed) {
    const auto stream = open(kBuffers, kPayload);
    ASSERT_NO_FATAL_FAILURE(holdCaller(*stream));
    int free = -1;
    StreamNumbers atTheEnd;
    taps.goes = [&](ArvStream* going) {
        finishCaller();
        free = freeOf(going);
    };
    taps.gone = [&] { atTheEnd = stream->numbers(); };
    stream->stop(OV_STATUS_CALL_ORDER);
    stream->release();
    EXPECT_EQ(free, 0);
    // Nothing is asked of the stream any more once it is gone.
    EXPECT_EQ(atTheEnd.tally.frames, kAllBuffers);
    EXPECT_EQ(atTheEnd.deliveredFrames, 1u);
    EXPECT_EQ(atTheEnd.unfetchedFrames, kAllBuffers - 1);
    EXPECT_EQ(stream->numbers().tally.frames, kAllBuffers);
}

TEST_F(FrameStreamTest, GivesNoBufferToAStreamWhoseBuffersAreExchanged) {
    const auto stream = open(kBuffers, kPayload);
    ASSERT_NO_FATAL_FAILURE(holdCaller(*stream));
    int free = -1;
    taps.stopped = [&](ArvStream* stopping) {
        finishCaller();
        stream->lookAfter();
        free = freeOf(stopping);
        taps.stopped = nullptr;
    };
    ASSERT_EQ(stream->followSize(kPayload + 1), OV_STATUS_OK);
    EXPECT_EQ(free, 0);
    // Those that were full stay to be fetched, and new ones follow.
    std::vector<std::uint8_t> pixels(kFrame);
    std::uint64_t last = 0;
    for (unsigned frame = 0; frame < 3 * kAllBuffers; ++frame) {
        _OV_CC_FRAME_OUT_INFO_ info{};
        ASSERT_EQ(stream->fetch(pixels.data(), kFrame, &info, 20000), OV_STATUS_OK) << frame;
        EXPECT_EQ(info.frameLength, kFrame);
        EXPECT_NE(info.blockId, last);
        last = info.blockId;
    }
    EXPECT_EQ(stream->numbers().resizes, 1u);
    EXPECT_EQ(stream->numbers().bufferSize, kPayload + 1);
}

TEST_F(FrameStreamTest, GoesOnWithItsBuffersWhereLargerOnesTakeTooMuchMemory) {
    constexpr unsigned kMany = 64; // of a gibibyte each
    const auto stream = open(kMany, kFrame);
    EXPECT_EQ(stream->followSize(std::size_t{1} << 30), OV_STATUS_RESOURCE);
    std::vector<std::uint8_t> pixels(kFrame);
    for (unsigned frame = 0; frame < kMany + 26; ++frame) { // all buffers, those in reserve included
        _OV_CC_FRAME_OUT_INFO_ info{};
        ASSERT_EQ(stream->fetch(pixels.data(), kFrame, &info, 20000), OV_STATUS_OK) << frame;
    }
    EXPECT_EQ(stream->numbers().resizes, 0u);
    EXPECT_EQ(stream->numbers().bufferSize, kFrame);
}

} // namespace
} // namespace kolt::cc
