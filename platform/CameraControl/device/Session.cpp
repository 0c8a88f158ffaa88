#include "device/Session.h"

#include <cstring>
#include <utility>

#include "device/Reaper.h"
#include "device/Statuses.h"

namespace kolt::cc {

namespace {

constexpr std::chrono::milliseconds kSilenceAtClose{250};
constexpr std::chrono::seconds kPatienceAtClose{10};
constexpr std::chrono::milliseconds kBetweenSizeLooks{500};
constexpr std::size_t kLongestAccess = std::size_t{64} << 20;

} // namespace

void SessionLink::tie(Session* session) {
    const std::lock_guard<std::mutex> lock(mutex_);
    session_ = session;
}

std::shared_ptr<Session> Session::start(Parts parts) {
    std::shared_ptr<Session> session(new Session(std::move(parts)), dispose);
    session->link_->tie(session.get());
    session->monitor_->start();
    return session;
}

Session::Session(Parts parts)
    : link_(std::move(parts.link))
    , rules_(parts.rules)
    , log_(parts.log)
    , lostHook_(std::move(parts.lost))
    , xml_(parts.device->xml())
    , device_(std::move(parts.device))
    , ioDevice_(device_.get())
    , io_(std::make_unique<IoQueue>("ov-device")) {
    LivenessMonitor::Hooks hooks;
    hooks.busy = [this] { return io_->busyFor() > Clock::duration::zero(); };
    hooks.tick = [this] {
        if (const auto running = stream()) {
            running->lookAfter();
        }
    };
    hooks.askControl = [this] { askControl(); };
    hooks.lost = [this](LossReason reason) { onLost(reason); };
    monitor_ = std::make_unique<LivenessMonitor>(rules_, std::move(parts.probe), std::move(hooks));
}

// Not on the session's own thread. Blocks for as long as the device's transport does.
Session::~Session() {
    link_->cut();
    monitor_->stop();
    monitor_->join();
    io_.reset();
}

// The last owner may be any thread, also the session's own or one that must not wait: only what is ready to
// go is destroyed in place.
void Session::dispose(Session* session) {
    if (session->released_ && session->watched_) {
        delete session;
    } else {
        reap([session] { delete session; });
    }
}

std::uint32_t Session::run(IoQueue::Job job) {
    return io_->run([this, work = std::move(job)] {
        const std::uint32_t status = work();
        if (isAnswer(status)) {
            heard();
        }
        return status;
    });
}

std::uint32_t Session::readMemory(std::uint64_t address, std::uint8_t* destination, std::size_t length) {
    if (length > kLongestAccess) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    // The caller may be let go before the device answers, so the bytes don't go to its buffer directly.
    const auto bytes = std::make_shared<std::vector<std::uint8_t>>(length);
    const std::uint32_t status =
        run([this, address, bytes] { return ioDevice_->readMemory(address, bytes->data(), bytes->size()); });
    if (status == OV_STATUS_OK) {
        std::memcpy(destination, bytes->data(), length);
    }
    return status;
}

std::uint32_t Session::writeMemory(std::uint64_t address, const std::uint8_t* source, std::size_t length) {
    if (length > kLongestAccess) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    return run([this, address, bytes = std::vector<std::uint8_t>(source, source + length)] {
        return ioDevice_->writeMemory(address, bytes.data(), bytes.size());
    });
}

std::shared_ptr<FrameSource> Session::stream() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return stream_;
}

std::uint32_t Session::startGrabbing(const StreamSettings& settings) {
    FrameSource::Hooks hooks;
    hooks.frameCame = [link = link_] { link->with([](Session& session) { session.heard(); }); };
    hooks.sizeChanged = [link = link_](bool urgent) {
        link->with([urgent](Session& session) { session.followSize(urgent); });
    };
    // Shared with the job, which may outlive the wait for it: a stream that nobody takes ends with it.
    const auto made = std::make_shared<std::shared_ptr<FrameSource>>();
    std::uint32_t status = run([this, settings, hooks, made] {
        std::uint32_t result = ioDevice_->openStream(settings, hooks, *made);
        if (result != OV_STATUS_OK) {
            return result;
        }
        result = ioDevice_->executeCommand("AcquisitionStart");
        acquiring_ = result == OV_STATUS_OK;
        if (result != OV_STATUS_OK) {
            (*made)->stop(OV_STATUS_CALL_ORDER);
            (*made)->release();
            made->reset();
            ioDevice_->closeStreamChannel();
        }
        return result;
    });
    if (status != OV_STATUS_OK) {
        log_(LogLevel::error, "grabbing not started (0x%08x)", status);
        return status;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    stream_ = *made;
    grabbing_ = true;
    if (lost_) { // between the start and now: nobody has told the stream
        stream_->lose(OV_STATUS_PRECONDITION);
    }
    log_(LogLevel::info, "grabbing, %zu bytes a frame", stream_->numbers().bufferSize);
    return OV_STATUS_OK;
}

std::uint32_t Session::stopGrabbing() {
    const std::shared_ptr<FrameSource> stopped = stream();
    if (!grabbing_ || !stopped) {
        return OV_STATUS_CALL_ORDER;
    }
    stopped->stop(OV_STATUS_CALL_ORDER); // whoever waits for a frame need not wait for the camera
    const std::uint32_t status = run([this, stopped] {
        acquiring_ = false;
        const std::uint32_t result = ioDevice_->executeCommand("AcquisitionStop");
        stopped->release();
        ioDevice_->closeStreamChannel();
        return result;
    });
    if (status != OV_STATUS_OK) {
        // Nothing is received any more all the same, so the stop is one; a camera that goes on sending finds
        // its channel closed.
        log_(LogLevel::error, "the camera did not take the stop (0x%08x)", status);
    }
    grabbing_ = false;
    log_(LogLevel::info, "grabbing stopped");
    return OV_STATUS_OK;
}

std::int32_t Session::optimalPacketSize() {
    const auto size = std::make_shared<std::int32_t>(0);
    const bool measure = !grabbing_;
    const std::uint32_t status = run([this, size, measure] {
        *size = measure ? ioDevice_->optimalPacketSize() : ioDevice_->packetSize();
        return OV_STATUS_OK;
    });
    return status == OV_STATUS_OK ? *size : 0;
}

void Session::followSize(bool urgent) {
    const Clock::rep now = Clock::now().time_since_epoch().count();
    const Clock::rep pause = std::chrono::duration_cast<Clock::duration>(kBetweenSizeLooks).count();
    if ((!urgent && now - sizeLookedAt_ < pause) || sizeAsked_.exchange(true)) {
        return;
    }
    sizeLookedAt_ = now;
    io_->post([this, urgent] {
        std::size_t payload = 0;
        const std::uint32_t status = ioDevice_->payloadSize(payload);
        const std::shared_ptr<FrameSource> followed = stream();
        if (followed && (status == OV_STATUS_OK || urgent)) {
            followed->followSize(status == OV_STATUS_OK ? payload : 0);
        }
        sizeAsked_ = false;
        return status;
    });
}

void Session::askControl() {
    // Not before the last look is four times as long ago as it took: a camera that answers slowly has other
    // things to answer, too.
    if (Clock::now().time_since_epoch().count() < nextControl_ || controlAsked_.exchange(true)) {
        return;
    }
    io_->post([this] {
        const Clock::time_point begun = Clock::now();
        const TransportDevice::Control control = ioDevice_->askControl();
        const Clock::time_point ended = Clock::now();
        nextControl_ = (ended + 4 * (ended - begun)).time_since_epoch().count();
        controlAsked_ = false;
        if (control == TransportDevice::Control::held) {
            heard();
        } else if (control == TransportDevice::Control::lost) {
            reportLost(LossReason::controlLost);
        }
        return OV_STATUS_OK;
    });
}

void Session::onLost(LossReason reason) {
    log_(LogLevel::error, "%s", toText(reason));
    silent_ = reason == LossReason::silent;
    lost_ = true;
    io_->cancel(OV_STATUS_PRECONDITION);
    if (const auto running = stream()) {
        running->lose(OV_STATUS_PRECONDITION);
    }
    lostHook_(*this);
}

void Session::beginClose() {
    closing_ = true;
    monitor_->mute();
    io_->cancel(OV_STATUS_CALL_ORDER);
    if (const auto running = stream()) {
        running->stop(OV_STATUS_CALL_ORDER);
    }
}

void Session::close() {
    const std::shared_ptr<FrameSource> last = stream();
    io_->finish(OV_STATUS_CALL_ORDER, [this, last] {
        const bool stopCamera = acquiring_ && !lost_;
        if (stopCamera) {
            ioDevice_->executeCommand("AcquisitionStop");
        }
        if (last) {
            last->release();
        }
        if (stopCamera) {
            ioDevice_->closeStreamChannel();
        }
        device_.reset();
        return OV_STATUS_OK;
    });
    released_ = waitForRelease();
    grabbing_ = false;
    monitor_->stop();
    if (!monitor_->isOwnThread()) {
        monitor_->join();
        watched_ = true;
    }
    log_(LogLevel::info, released_ ? "closed" : "closed; the camera does not answer");
}

// True when the device is given back; false when it doesn't look as if that came to an end soon.
bool Session::waitForRelease() {
    const Clock::time_point begun = Clock::now();
    while (!io_->waitFinished(Clock::now() + std::chrono::milliseconds(10))) {
        const Clock::time_point now = Clock::now();
        const bool quiet = now - begun > kSilenceAtClose && !monitor_->heardSince(now - kSilenceAtClose);
        if (silent_ || quiet || now - begun > kPatienceAtClose) {
            return false;
        }
    }
    return true;
}

} // namespace kolt::cc
