#include "device/Camera.h"

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

#include "find/DeviceFinder.h"
#include "find/GvcpCodec.h"
#include "find/Ipv4.h"

namespace kolt::cc {

namespace {

constexpr unsigned kDefaultBuffers = 8;
constexpr unsigned kMostBuffers = 1024;

std::string nameOf(const _OV_CC_DEVICE_INFO_& device) {
    if (device.nTLayerType == OV_TLAYER_GIGE) {
        return toText(device.transport.gige.currentIp);
    }
    const auto& serial = device.transport.usb3.serialNumber;
    return {serial, strnlen(serial, sizeof serial)};
}

bool packetSocketByDefault() {
    const char* word = std::getenv("OV_CC_PACKET_SOCKET");
    return word == nullptr || std::string_view(word) != "off";
}

std::unique_ptr<LivenessProbe> probeFor(const _OV_CC_DEVICE_INFO_& device) {
    if (device.nTLayerType != OV_TLAYER_GIGE) {
        return nullptr;
    }
    const auto& record = device.transport.gige;
    return std::make_unique<LivenessProbe>(record.currentIp, record.hostInterface, gvcp::kPort);
}

} // namespace

Camera::Camera(const _OV_CC_DEVICE_INFO_& device, const Options& options)
    : options_(options)
    , log_(options.log, nameOf(device))
    , exceptions_(std::make_shared<ExceptionDispatcher>())
    , port_(std::make_shared<CameraPort>())
    , device_(device) {
    settings_.buffers = kDefaultBuffers;
    settings_.packetSocket = packetSocketByDefault();
}

Camera::~Camera() {
    close();
    exceptions_->set(nullptr, nullptr);
}

std::shared_ptr<Session> Camera::session() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return session_;
}

_OV_CC_DEVICE_INFO_ Camera::record() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return device_;
}

StreamSettings Camera::settings() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return settings_;
}

std::uint32_t Camera::open(std::uint32_t accessMode) {
    if (accessMode != OV_ACCESS_EXCLUSIVE) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    const std::lock_guard<std::mutex> control(control_);
    if (session()) {
        return OV_STATUS_CALL_ORDER;
    }
    Session::Parts parts;
    parts.link = std::make_shared<SessionLink>();
    parts.rules = options_.rules;
    parts.log = log_;
    parts.lost = [exceptions = exceptions_](Session& lost) {
        exceptions->deliver(OV_EXCEPTION_DISCONNECT, [&lost] { return !lost.isClosing(); });
    };
    OpenRequest request;
    request.device = record();
    request.log = log_;
    request.controlLost = [link = parts.link] {
        link->with([](Session& session) { session.reportLost(LossReason::controlLost); });
    };
    std::uint32_t status = OV_STATUS_UNKNOWN;
    parts.device = options_.opener(request, status);
    if (!parts.device) {
        return status;
    }
    parts.probe = probeFor(request.device);
    try {
        std::shared_ptr<Session> session = Session::start(std::move(parts));
        port_->connect(session);
        const std::lock_guard<std::mutex> lock(mutex_);
        session_ = std::move(session);
    } catch (const std::system_error&) {
        return OV_STATUS_RESOURCE;
    }
    log_(LogLevel::info, "opened");
    return OV_STATUS_OK;
}

std::uint32_t Camera::close() {
    const std::shared_ptr<Session> closing = session();
    if (!closing) {
        return OV_STATUS_CALL_ORDER;
    }
    closing->beginClose();
    // Without a lock: a callback that is running may itself close, stop or start.
    exceptions_->recheck();
    exceptions_->waitIdle();
    const std::lock_guard<std::mutex> control(control_);
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (session_ != closing) {
            return OV_STATUS_OK; // another thread was faster
        }
        session_.reset();
    }
    port_->connect(nullptr);
    closing->close();
    return OV_STATUS_OK;
}

std::uint32_t Camera::deviceInfo(_OV_CC_DEVICE_INFO_& device) const {
    return queryDeviceInfo(record(), device);
}

std::uint32_t Camera::forceIp(std::uint32_t ip) {
    const std::lock_guard<std::mutex> control(control_);
    if (session()) {
        return OV_STATUS_CALL_ORDER; // the open connection would break
    }
    const _OV_CC_DEVICE_INFO_ before = record();
    const std::uint32_t status = kolt::cc::forceIp(before, ip);
    if (status == OV_STATUS_OK) {
        const std::lock_guard<std::mutex> lock(mutex_);
        device_.transport.gige.currentIp = ip;
    }
    return status;
}

std::uint32_t Camera::setBuffers(std::uint32_t count) {
    if (count == 0 || count > kMostBuffers) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    settings_.buffers = count;
    return OV_STATUS_OK;
}

std::uint32_t Camera::setDropIncomplete(bool drop) {
    std::shared_ptr<Session> open;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        settings_.dropIncomplete = drop;
        open = session_;
    }
    if (const auto running = open ? open->stream() : nullptr) {
        running->setDropIncomplete(drop);
    }
    return OV_STATUS_OK;
}

std::uint32_t Camera::setResend(bool on) {
    const std::lock_guard<std::mutex> lock(mutex_);
    settings_.resend = on;
    return OV_STATUS_OK;
}

std::uint32_t Camera::setPacketSocket(bool on) {
    const std::lock_guard<std::mutex> lock(mutex_);
    settings_.packetSocket = on;
    return OV_STATUS_OK;
}

std::uint32_t Camera::startGrabbing() {
    const std::lock_guard<std::mutex> control(control_);
    const std::shared_ptr<Session> open = session();
    if (!open || open->isGrabbing()) {
        return OV_STATUS_CALL_ORDER;
    }
    return open->startGrabbing(settings());
}

std::uint32_t Camera::stopGrabbing() {
    const std::lock_guard<std::mutex> control(control_);
    const std::shared_ptr<Session> open = session();
    return open ? open->stopGrabbing() : OV_STATUS_CALL_ORDER;
}

std::uint32_t Camera::fetchFrame(std::uint8_t* buffer, std::uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                                 std::uint32_t timeoutMs) {
    if (buffer == nullptr || info == nullptr) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    const std::shared_ptr<Session> open = session();
    const auto running = open ? open->stream() : nullptr;
    return running ? running->fetch(buffer, capacity, info, timeoutMs) : OV_STATUS_CALL_ORDER;
}

std::int32_t Camera::optimalPacketSize() {
    const std::lock_guard<std::mutex> control(control_);
    const std::shared_ptr<Session> open = session();
    return open ? open->optimalPacketSize() : 0;
}

std::uint32_t Camera::numbers(StreamNumbers& numbers) const {
    const std::shared_ptr<Session> open = session();
    if (!open) {
        return OV_STATUS_CALL_ORDER;
    }
    const auto last = open->stream();
    numbers = last ? last->numbers() : StreamNumbers{};
    return OV_STATUS_OK;
}

std::uint32_t Camera::copyXml(std::uint8_t* buffer, std::uint32_t capacity, std::uint32_t* length) const {
    if (length == nullptr || (buffer == nullptr && capacity > 0)) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    const std::shared_ptr<Session> open = session();
    if (!open) {
        return OV_STATUS_CALL_ORDER;
    }
    const std::vector<std::uint8_t>& xml = open->xml();
    *length = static_cast<std::uint32_t>(xml.size());
    if (xml.size() > capacity) {
        return OV_STATUS_BUFFER_FULL;
    }
    std::memcpy(buffer, xml.data(), xml.size());
    return OV_STATUS_OK;
}

GenApi_3_0::IPort* Camera::port() const {
    return session() ? port_.get() : nullptr;
}

} // namespace kolt::cc
