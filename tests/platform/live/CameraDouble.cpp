#include "CameraDouble.h"

#include <GenApi/IPort.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace live_test {

CameraDouble& CameraDouble::Get() {
    static CameraDouble instance;
    return instance;
}

void CameraDouble::Reset() {
    const std::lock_guard<std::mutex> lock(mutex_);
    answers_.clear();
    calls_.clear();
    deliveries_.clear();
    isStopped_ = false;
    callback_ = nullptr;
    devices.clear();
    live = {};
    accessible = 1;
    optimalPacketSize = 8228;
    packetRegister = 0x400005DC;
    packetSizeLimit = 9000;
    portTrouble.clear();
    hasPort = true;
    xml.clear();
    xmlCapacitySeen.reset();
    net = {};
}

void CameraDouble::Answer(const std::string& call, uint32_t status) {
    const std::lock_guard<std::mutex> lock(mutex_);
    answers_[call] = status;
}

std::vector<std::string> CameraDouble::Calls() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
}

void CameraDouble::Deliver(Delivery delivery) {
    const std::lock_guard<std::mutex> lock(mutex_);
    deliveries_.push_back(std::move(delivery));
    changed_.notify_all();
}

bool CameraDouble::WaitUntilFetched() {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(20), [this] { return deliveries_.empty(); });
}

void CameraDouble::Send(uint32_t message) {
    std::thread([this, message] {
        std::unique_lock<std::mutex> lock(mutex_);
        const auto callback = callback_;
        void* user = user_;
        lock.unlock();
        if (callback != nullptr)
            callback(message, user);
    }).join();
}

uint32_t CameraDouble::Record(const std::string& call, const std::string& arguments) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::string text = arguments.empty() ? call : call + " " + arguments;
    if (call != "OV_CC_GetOneFrameTimeout" || calls_.empty() || calls_.back() != text)
        calls_.push_back(text);
    const auto answer = answers_.find(call);
    return answer == answers_.end() ? OV_STATUS_OK : answer->second;
}

CameraDouble::Delivery CameraDouble::Fetch(uint32_t timeoutMs) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                      [this] { return isStopped_ || !deliveries_.empty(); });
    if (deliveries_.empty())
        return {OV_STATUS_NO_DATA, {}, 0, 0};
    Delivery delivery = std::move(deliveries_.front());
    deliveries_.pop_front();
    changed_.notify_all();
    return delivery;
}

void CameraDouble::StopFetching() {
    const std::lock_guard<std::mutex> lock(mutex_);
    isStopped_ = true;
    changed_.notify_all();
}

void CameraDouble::Register(OvExceptionCallBack callback, void* user) {
    const std::lock_guard<std::mutex> lock(mutex_);
    callback_ = callback;
    user_ = user;
}

namespace {

/// One register: the stream packet size.
class PortDouble : public GenApi_3_0::IPort {
public:
    GenApi_3_0::EAccessMode GetAccessMode() const override { return GenApi_3_0::RW; }

    void Read(void* buffer, int64_t address, int64_t length) override {
        Check(address, length);
        const uint32_t value = CameraDouble::Get().packetRegister;
        for (size_t i = 0; i < 4; ++i)
            static_cast<uint8_t*>(buffer)[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
    }

    void Write(const void* buffer, int64_t address, int64_t length) override {
        Check(address, length);
        CameraDouble& camera = CameraDouble::Get();
        std::array<uint8_t, 4> bytes{};
        std::memcpy(bytes.data(), buffer, bytes.size());
        const uint32_t size = static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
        camera.packetRegister = static_cast<uint32_t>(bytes[0]) << 24 |
                                static_cast<uint32_t>(bytes[1]) << 16 |
                                std::min(size, camera.packetSizeLimit);
    }

private:
    static void Check(int64_t address, int64_t length) {
        if (!CameraDouble::Get().portTrouble.empty())
            throw std::runtime_error(CameraDouble::Get().portTrouble);
        if (address != 0x0D04 || length != 4)
            throw std::runtime_error("not the packet size");
    }
};

char handle; // every handle is its address

CameraDouble& Double() {
    return CameraDouble::Get();
}

} // namespace
} // namespace live_test

using live_test::CameraDouble;
using live_test::Double;

uint32_t OV_CC_EnumDevices(uint32_t transportMask, _OV_CC_DEVICE_INFO_LIST_* list) {
    const uint32_t status = Double().Record("OV_CC_EnumDevices", std::to_string(transportMask));
    list->deviceCount = static_cast<uint32_t>(Double().devices.size());
    for (uint32_t i = 0; i < list->deviceCount; ++i)
        list->devices[i] = &Double().devices[i];
    return status;
}

uint32_t OV_CC_CreateHandle(void** handle, const _OV_CC_DEVICE_INFO_*) {
    const uint32_t status = Double().Record("OV_CC_CreateHandle");
    *handle = &live_test::handle;
    return status;
}

uint32_t OV_CC_DestroyHandle(void*) {
    return Double().Record("OV_CC_DestroyHandle");
}

uint32_t OV_CC_OpenDevice(void*, uint32_t accessMode, uint16_t key) {
    return Double().Record("OV_CC_OpenDevice", std::to_string(accessMode) + " " + std::to_string(key));
}

uint32_t OV_CC_CloseDevice(void*) {
    return Double().Record("OV_CC_CloseDevice");
}

uint32_t OV_CC_IsDeviceAccessible(const _OV_CC_DEVICE_INFO_*, uint32_t accessMode) {
    Double().Record("OV_CC_IsDeviceAccessible", std::to_string(accessMode));
    return Double().accessible;
}

uint32_t OV_CC_GetDeviceInfo(void*, _OV_CC_DEVICE_INFO_* device) {
    *device = Double().live;
    return Double().Record("OV_CC_GetDeviceInfo");
}

uint32_t OV_CC_RegisterExceptionCallBack(void*, OvExceptionCallBack callback, void* user) {
    Double().Register(callback, user);
    return Double().Record("OV_CC_RegisterExceptionCallBack", callback == nullptr ? "null" : "");
}

uint32_t OV_CC_SetImageNodeNum(void*, uint32_t count) {
    return Double().Record("OV_CC_SetImageNodeNum", std::to_string(count));
}

uint32_t OV_CC_SetThrowAbnormalImage(void*, uint8_t on) {
    return Double().Record("OV_CC_SetThrowAbnormalImage", std::to_string(on));
}

uint32_t OV_CC_StartGrabbing(void*) {
    return Double().Record("OV_CC_StartGrabbing");
}

uint32_t OV_CC_StopGrabbing(void*) {
    Double().StopFetching();
    return Double().Record("OV_CC_StopGrabbing");
}

uint32_t OV_CC_GetOneFrameTimeout(void*, uint8_t* buffer, uint32_t capacity, _OV_CC_FRAME_OUT_INFO_* info,
                                  uint32_t timeoutMs) {
    Double().Record("OV_CC_GetOneFrameTimeout");
    const CameraDouble::Delivery delivery = Double().Fetch(timeoutMs);
    if (delivery.status != OV_STATUS_OK && delivery.status != OV_STATUS_BUFFER_FULL)
        return delivery.status;
    info->frameLength =
        delivery.toldLength != 0 ? delivery.toldLength : static_cast<uint32_t>(delivery.bytes.size());
    info->frameState = delivery.state;
    if (delivery.status == OV_STATUS_BUFFER_FULL || delivery.bytes.size() > capacity)
        return OV_STATUS_BUFFER_FULL;
    std::copy(delivery.bytes.begin(), delivery.bytes.end(), buffer);
    return OV_STATUS_OK;
}

int32_t OV_CC_GetOptimalPacketSize(void*) {
    Double().Record("OV_CC_GetOptimalPacketSize");
    return Double().optimalPacketSize;
}

void* OV_CC_GetTlProxy(void*) {
    Double().Record("OV_CC_GetTlProxy");
    static live_test::PortDouble port;
    return Double().hasPort ? static_cast<GenApi_3_0::IPort*>(&port) : nullptr;
}

uint32_t OV_CC_GetAllMatchInfo(void*, _OV_ALL_MATCH_INFO_* query) {
    const uint32_t status = Double().Record("OV_CC_GetAllMatchInfo", std::to_string(query->type) + " " +
                                                                         std::to_string(query->infoSize));
    *static_cast<_OV_MATCH_INFO_NET_DETECT_*>(query->info) = Double().net;
    return status;
}

uint32_t OV_XML_GetGenICamXML(void*, uint8_t* buffer, uint32_t capacity, uint32_t* length) {
    const uint32_t status = Double().Record("OV_XML_GetGenICamXML");
    const std::string& xml = Double().xml;
    *length = static_cast<uint32_t>(xml.size());
    Double().xmlCapacitySeen = capacity;
    if (xml.size() > capacity)
        return OV_STATUS_BUFFER_FULL;
    std::copy(xml.begin(), xml.end(), buffer);
    return status;
}
