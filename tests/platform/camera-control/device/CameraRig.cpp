#include "CameraRig.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "support/LoopbackAddress.h"

namespace kolt::test {

namespace {

// A camera in software that doesn't get the processor for a fifth of a second answers too late for its frame.
// On a busy machine the tests therefore go first, where they may.
[[maybe_unused]] const int preferred = setpriority(PRIO_PROCESS, 0, -5);

} // namespace

vcam::Config smallCamera(unsigned index) {
    vcam::Config config;
    config.address = LoopbackAddress(index);
    config.sensorWidth = 320;
    config.sensorHeight = 240;
    config.frameRate = 50;
    config.linkSpeedMbps = 0;
    return config;
}

_OV_CC_DEVICE_INFO_ recordOf(const std::string& dottedAddress) {
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.transport.gige.currentIp = ntohl(inet_addr(dottedAddress.c_str()));
    return record;
}

Handle::Handle(const _OV_CC_DEVICE_INFO_& record) {
    EXPECT_EQ(OV_CC_CreateHandle(&handle_, &record), OV_STATUS_OK);
}

Handle::~Handle() {
    EXPECT_EQ(OV_CC_DestroyHandle(handle_), OV_STATUS_OK);
}

OVX_CC_STATISTICS Handle::statistics() const {
    OVX_CC_STATISTICS statistics{};
    statistics.size = sizeof statistics;
    EXPECT_EQ(OVX_CC_GetStatistics(handle_, &statistics), OV_STATUS_OK);
    return statistics;
}

_OV_MATCH_INFO_NET_DETECT_ Handle::matchInfo() const {
    _OV_MATCH_INFO_NET_DETECT_ info{};
    _OV_ALL_MATCH_INFO_ query{};
    query.type = OV_MATCH_INFO_NET_DETECT;
    query.info = &info;
    query.infoSize = sizeof info;
    EXPECT_EQ(OV_CC_GetAllMatchInfo(handle_, &query), OV_STATUS_OK);
    return info;
}

GenApi_3_0::IPort& Handle::port() const {
    auto* port = static_cast<GenApi_3_0::IPort*>(OV_CC_GetTlProxy(handle_));
    if (port == nullptr) {
        throw std::runtime_error("no port");
    }
    return *port;
}

Fetched fetch(void* handle, std::uint32_t timeoutMs, std::size_t capacity) {
    Fetched fetched;
    // Kept from call to call: to clear megabytes for each frame is more work than the frame.
    thread_local std::vector<std::uint8_t> buffer;
    buffer.resize(std::max(buffer.size(), capacity));
    fetched.status = OV_CC_GetOneFrameTimeout(handle, buffer.data(), static_cast<std::uint32_t>(capacity),
                                              &fetched.info, timeoutMs);
    if (fetched.status == OV_STATUS_OK) {
        fetched.pixels.assign(buffer.begin(), buffer.begin() + fetched.info.frameLength);
    }
    return fetched;
}

void Messages::callback(std::uint32_t message, void* user) {
    auto& self = *static_cast<Messages*>(user);
    std::function<void()> inside;
    {
        const std::lock_guard<std::mutex> lock(self.mutex_);
        if (self.messages_.empty()) {
            self.firstAt_ = Clock::now();
            self.thread_ = std::this_thread::get_id();
        }
        inside = self.inside_;
    }
    if (inside) {
        inside();
    }
    const std::lock_guard<std::mutex> lock(self.mutex_);
    self.messages_.push_back(message);
    self.came_.notify_all();
}

void Messages::runInside(std::function<void()> work) {
    const std::lock_guard<std::mutex> lock(mutex_);
    inside_ = std::move(work);
}

bool Messages::waitFor(std::size_t count, milliseconds deadline) {
    std::unique_lock<std::mutex> lock(mutex_);
    return came_.wait_for(lock, deadline, [&] { return messages_.size() >= count; });
}

std::vector<std::uint32_t> Messages::all() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return messages_;
}

Clock::time_point Messages::firstAt() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return firstAt_;
}

std::thread::id Messages::thread() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return thread_;
}

} // namespace kolt::test
