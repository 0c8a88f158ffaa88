#include "Session.h"

#include "PacketSize.h"

#include <algorithm>
#include <limits>
#include <new>
#include <pthread.h>

namespace live {
namespace {

constexpr uint32_t exclusiveAccess = OV_ACCESS_EXCLUSIVE;
/// A stop waits at most so long for the fetch in progress, should the library not end it by itself.
constexpr uint32_t fetchTimeoutMs = 100;
constexpr auto pauseAfterFault = std::chrono::milliseconds(5);
constexpr size_t largestFrame = size_t{1} << 30;

Failure Result(const char* call, uint32_t status) {
    return status == OV_STATUS_OK ? Failure{} : Failure{call, status};
}

/// A status after which trying again cannot help.
bool IsFinal(uint32_t status) {
    return status == OV_STATUS_INVALID_HANDLE || status == OV_STATUS_CALL_ORDER ||
           status == OV_STATUS_INVALID_PARAMETER || status == OV_STATUS_NOT_SUPPORTED;
}

} // namespace

Failure ListDevices(std::vector<DeviceRecord>& devices) {
    _OV_CC_DEVICE_INFO_LIST_ list{};
    devices.clear();
    const uint32_t status = OV_CC_EnumDevices(OV_TLAYER_GIGE + OV_TLAYER_USB3, &list);
    if (status != OV_STATUS_OK)
        return {"OV_CC_EnumDevices", status};
    const uint32_t count = std::min<uint32_t>(list.deviceCount, OV_MAX_DEVICES);
    for (uint32_t i = 0; i < count; ++i)
        if (list.devices[i] != nullptr)
            devices.push_back(*list.devices[i]);
    return {};
}

bool IsFree(const DeviceRecord& device) {
    // A boolean in the low byte alone.
    return (OV_CC_IsDeviceAccessible(&device, exclusiveAccess) & 0xFF) != 0;
}

Failure Session::Open(const DeviceRecord& device, const Settings& settings) {
    Close();
    settings_ = settings;
    device_ = device;
    notes_.clear();
    isLost_ = false;
    if (const uint32_t status = OV_CC_CreateHandle(&handle_, &device_); status != OV_STATUS_OK) {
        handle_ = nullptr;
        return {"OV_CC_CreateHandle", status};
    }
    if (ModelOf(device_).empty()) {
        DeviceRecord live{};
        if (const uint32_t status = OV_CC_GetDeviceInfo(handle_, &live); status != OV_STATUS_OK)
            return Abandon("OV_CC_GetDeviceInfo", status);
        device_ = live;
    }
    if (const uint32_t status = OV_CC_OpenDevice(handle_, exclusiveAccess, 0); status != OV_STATUS_OK)
        return Abandon("OV_CC_OpenDevice", status);
    if (const uint32_t status = OV_CC_RegisterExceptionCallBack(handle_, &Session::OnMessage, this);
        status != OV_STATUS_OK)
        return Abandon("OV_CC_RegisterExceptionCallBack", status);
    if (const uint32_t status = OV_CC_SetThrowAbnormalImage(handle_, settings_.dropIncomplete ? 1 : 0);
        status != OV_STATUS_OK)
        notes_.push_back(Describe({"OV_CC_SetThrowAbnormalImage", status}));
    SetPacketSize();
    if (const uint32_t status = OV_CC_SetImageNodeNum(handle_, settings_.buffers); status != OV_STATUS_OK)
        notes_.push_back(Describe({"OV_CC_SetImageNodeNum", status}));
    return {};
}

void Session::SetPacketSize() {
    uint32_t wanted = settings_.packetBytes;
    if (wanted == 0 && !settings_.optimalPacketSize)
        return;
    if (!IsGige(device_)) {
        notes_.emplace_back("a USB3 Vision camera has no packet size: --packet-size is ignored");
        return;
    }
    uint32_t present = 0;
    std::string error = ReadPacketSize(handle_, present);
    if (settings_.optimalPacketSize) {
        const int32_t optimal = OV_CC_GetOptimalPacketSize(handle_);
        if (optimal <= 0) {
            notes_.push_back("the largest packet size could not be found out (" + std::to_string(optimal) +
                             "): it stays at " + std::to_string(present));
            return;
        }
        wanted = static_cast<uint32_t>(optimal);
    }
    uint32_t result = wanted;
    if (error.empty())
        error = WritePacketSize(handle_, result);
    if (!error.empty())
        notes_.push_back("the packet size could not be set to " + std::to_string(wanted) + ": " + error);
    else
        notes_.push_back("packet size " + std::to_string(result) + " bytes, was " + std::to_string(present) +
                         (result == wanted ? "" : ", wanted " + std::to_string(wanted)));
}

Failure Session::Abandon(const char* call, uint32_t status) {
    Close();
    return {call, status};
}

Failure Session::ReadXml(std::string& xml) {
    uint32_t length = 0;
    uint32_t status = OV_STATUS_BUFFER_FULL;
    // Again where the first guess was too small: the length is told all the same.
    for (size_t capacity = size_t{3} << 20; status == OV_STATUS_BUFFER_FULL; capacity = length) {
        xml.assign(capacity, '\0');
        status = OV_XML_GetGenICamXML(handle_, reinterpret_cast<uint8_t*>(xml.data()),
                                      static_cast<uint32_t>(capacity), &length);
        if (length <= capacity)
            break;
    }
    xml.resize(status == OV_STATUS_OK ? std::min<size_t>(length, xml.size()) : 0);
    return Result("OV_XML_GetGenICamXML", status);
}

Failure Session::Start() {
    frames_.Empty();
    received_ = incomplete_ = oversize_ = grabErrors_ = 0;
    isStopping_ = false;
    wantedCapacity_ = settings_.firstCapacity;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        grabFailure_ = {};
    }
    if (const uint32_t status = OV_CC_StartGrabbing(handle_); status != OV_STATUS_OK)
        return {"OV_CC_StartGrabbing", status};
    isGrabbing_ = true;
    grabber_ = std::thread(&Session::Grab, this);
    return {};
}

void Session::Stop() {
    if (!isGrabbing_)
        return;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isStopping_ = true;
    }
    stopping_.notify_all();
    OV_CC_StopGrabbing(handle_);
    grabber_.join();
    isGrabbing_ = false;
}

void Session::Close() {
    Stop();
    if (handle_ == nullptr)
        return;
    OV_CC_RegisterExceptionCallBack(handle_, nullptr, nullptr);
    OV_CC_CloseDevice(handle_);
    OV_CC_DestroyHandle(handle_);
    handle_ = nullptr;
    changed_.Clear();
}

Failure Session::GrabFailure() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return grabFailure_;
}

void Session::Count(Sample& sample) const {
    sample.frames = received_;
    sample.incomplete = incomplete_;
    sample.oversize = oversize_;
    sample.grabErrors = grabErrors_;
    _OV_MATCH_INFO_NET_DETECT_ net{};
    _OV_ALL_MATCH_INFO_ query{};
    query.type = OV_MATCH_INFO_NET_DETECT;
    query.info = &net;
    query.infoSize = sizeof net;
    if (handle_ == nullptr || OV_CC_GetAllMatchInfo(handle_, &query) != OV_STATUS_OK) {
        sample.transport.reset();
        return;
    }
    sample.transport = TransportCounters{net.receivedBytes, net.lostPackets, net.resentPackets,
                                         net.errorCount, net.lostFrames};
}

void Session::OnMessage(uint32_t message, void* session) {
    if (message != OV_EXCEPTION_DISCONNECT)
        return;
    auto& self = *static_cast<Session*>(session);
    self.isLost_ = true;
    self.changed_.Raise();
}

void Session::Grab() {
    pthread_setname_np(pthread_self(), "live-grab");
    try {
        while (!isStopping_ && GrabOne()) {
        }
    } catch (const std::bad_alloc&) {
        GiveUp("buffer for a frame", OV_STATUS_RESOURCE);
    }
}

bool Session::GrabOne() {
    Frame& frame = frames_.Writing();
    frame.pixels.Reserve(wantedCapacity_);
    frame.info = {};
    const size_t room = std::min<size_t>(frame.pixels.Capacity(), std::numeric_limits<uint32_t>::max());
    const uint32_t status = OV_CC_GetOneFrameTimeout(
        handle_, frame.pixels.Data(), static_cast<uint32_t>(room), &frame.info, fetchTimeoutMs);
    if (status == OV_STATUS_NO_DATA)
        return true;
    if (status == OV_STATUS_BUFFER_FULL)
        return OnRefused(frame);
    if (status != OV_STATUS_OK)
        return OnFault(status);
    if (frame.info.frameState != 0)
        ++incomplete_;
    frame.number = ++received_;
    frames_.Publish();
    if (!IsLimitReached())
        return true;
    changed_.Raise();
    return false;
}

bool Session::OnRefused(const Frame& frame) {
    ++oversize_;
    // The record may tell how much is wanted; a library that leaves it empty is asked again with twice as
    // much.
    const size_t told = frame.info.frameLength;
    const size_t had = frame.pixels.Capacity();
    wantedCapacity_ = told > had ? told : had * 2;
    if (wantedCapacity_ <= largestFrame)
        return true;
    GiveUp("OV_CC_GetOneFrameTimeout", OV_STATUS_BUFFER_FULL);
    return false;
}

bool Session::OnFault(uint32_t status) {
    if (isStopping_)
        return false;
    ++grabErrors_;
    if (IsFinal(status)) {
        GiveUp("OV_CC_GetOneFrameTimeout", status);
        return false;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    stopping_.wait_for(lock, pauseAfterFault, [this] { return isStopping_.load(); });
    return true;
}

void Session::GiveUp(const char* call, uint32_t status) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        grabFailure_ = {call, status};
    }
    changed_.Raise();
}

} // namespace live
