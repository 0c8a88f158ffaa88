// The exported calls: each finds the object behind the handle and hands on. Nothing is thrown across them.
#pragma GCC visibility push(default)
#include "Camera/Boundary/OvCameraControl.h"
#include "OvCameraControlX.h"
#pragma GCC visibility pop

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "device/HandleRegistry.h"
#include "device/Reaper.h"
#include "find/DeviceFinder.h"

using kolt::cc::Camera;
using kolt::cc::HandleRegistry;

namespace {

template<class F>
std::uint32_t guarded(F&& body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return OV_STATUS_RESOURCE;
    } catch (...) {
        return OV_STATUS_UNKNOWN;
    }
}

// body(camera), or OV_STATUS_INVALID_HANDLE.
template<class F>
std::uint32_t withCamera(void* handle, F&& body) {
    return guarded([&]() -> std::uint32_t {
        const std::shared_ptr<Camera> camera = HandleRegistry::instance().find(handle);
        return camera ? body(*camera) : OV_STATUS_INVALID_HANDLE;
    });
}

std::uint32_t createHandle(void** handle, const _OV_CC_DEVICE_INFO_* device, bool log) {
    if (handle == nullptr || device == nullptr) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    *handle = nullptr;
    if (device->nTLayerType != OV_TLAYER_GIGE && device->nTLayerType != OV_TLAYER_USB3) {
        return OV_STATUS_NOT_SUPPORTED;
    }
    return guarded([&] {
        Camera::Options options;
        options.log = log;
        *handle = HandleRegistry::instance().add(std::make_shared<Camera>(*device, options));
        return OV_STATUS_OK;
    });
}

// Counters of the contract are signed or narrower than ours.
template<class To>
To saturated(std::uint64_t value) {
    return static_cast<To>(std::min<std::uint64_t>(value, std::uint64_t{std::numeric_limits<To>::max()}));
}

void fill(_OV_MATCH_INFO_NET_DETECT_& record, const kolt::cc::StreamNumbers& numbers) {
    const kolt::cc::TallyTotals& tally = numbers.tally;
    record = {};
    record.receivedBytes = saturated<std::int64_t>(numbers.receivedBytes);
    record.lostPackets = saturated<std::int64_t>(tally.lostPackets);
    record.errorCount = saturated<std::uint32_t>(tally.incompleteFrames + tally.unfitFrames +
                                                 tally.vanishedFrames + numbers.tooLargeFrames);
    record.lostFrames = saturated<std::uint32_t>(tally.unbufferedFrames);
    record.resentPackets = saturated<std::uint32_t>(numbers.resentPackets);
}

void fill(OVX_CC_STATISTICS& record, const kolt::cc::StreamNumbers& numbers) {
    const kolt::cc::TallyTotals& tally = numbers.tally;
    const kolt::cc::TransportCounters& transport = numbers.transport;
    record.bufferSize = saturated<std::uint32_t>(numbers.bufferSize);
    record.receivedBytes = numbers.receivedBytes;
    record.receivedPackets = transport.received;
    record.lostPackets = tally.lostPackets;
    record.resendRequests = numbers.resendRequests;
    record.resentPackets = numbers.resentPackets;
    record.duplicatedPackets = transport.duplicated;
    record.latePackets = transport.ignored - std::min(transport.ignored, transport.underruns);
    record.errorPackets = transport.errors;
    record.unbufferedPackets = transport.underruns;
    record.completeFrames = tally.frames;
    record.incompleteFrames = tally.incompleteFrames;
    record.unfitFrames = tally.unfitFrames;
    record.vanishedFrames = tally.vanishedFrames;
    record.unbufferedFrames = tally.unbufferedFrames;
    record.deliveredFrames = numbers.deliveredFrames;
    record.droppedFrames = numbers.droppedFrames;
    record.tooLargeFrames = numbers.tooLargeFrames;
    record.bufferExchanges = numbers.resizes;
    record.unfetchedFrames = numbers.unfetchedFrames;
}

} // namespace

extern "C" {

uint32_t OV_CC_EnumDevices(uint32_t transportMask, _OV_CC_DEVICE_INFO_LIST_* list) {
    return guarded([&] { return kolt::cc::enumerateDevices(transportMask, list); });
}

uint32_t OV_CC_CreateHandle(void** handle, const _OV_CC_DEVICE_INFO_* device) {
    return createHandle(handle, device, true);
}

uint32_t OV_CC_CreateHandleWithoutLog(void** handle, const _OV_CC_DEVICE_INFO_* device) {
    return createHandle(handle, device, false);
}

uint32_t OV_CC_DestroyHandle(void* handle) {
    return guarded([&] {
        const std::shared_ptr<Camera> camera = HandleRegistry::instance().remove(handle);
        if (!camera) {
            return OV_STATUS_INVALID_HANDLE;
        }
        camera->close();
        camera->setCallback(nullptr, nullptr);
        return OV_STATUS_OK;
    });
}

uint32_t OV_CC_OpenDevice(void* handle, uint32_t accessMode, uint16_t) {
    return withCamera(handle, [&](Camera& camera) { return camera.open(accessMode); });
}

uint32_t OV_CC_CloseDevice(void* handle) {
    return withCamera(handle, [](Camera& camera) { return camera.close(); });
}

uint32_t OV_CC_IsDeviceAccessible(const _OV_CC_DEVICE_INFO_* device, uint32_t accessMode) {
    bool accessible = false;
    guarded([&] {
        accessible = kolt::cc::isDeviceAccessible(device, accessMode);
        return OV_STATUS_OK;
    });
    return accessible ? 1 : 0;
}

uint32_t OV_CC_GetDeviceInfo(void* handle, _OV_CC_DEVICE_INFO_* device) {
    return withCamera(handle, [&](Camera& camera) {
        return device == nullptr ? OV_STATUS_INVALID_PARAMETER : camera.deviceInfo(*device);
    });
}

uint32_t OV_CC_RegisterExceptionCallBack(void* handle, OvExceptionCallBack callback, void* user) {
    return withCamera(handle, [&](Camera& camera) {
        camera.setCallback(callback, user);
        return OV_STATUS_OK;
    });
}

uint32_t OV_CC_SetImageNodeNum(void* handle, uint32_t count) {
    return withCamera(handle, [&](Camera& camera) { return camera.setBuffers(count); });
}

uint32_t OV_CC_SetThrowAbnormalImage(void* handle, uint8_t on) {
    return withCamera(handle, [&](Camera& camera) { return camera.setDropIncomplete(on != 0); });
}

uint32_t OV_CC_StartGrabbing(void* handle) {
    return withCamera(handle, [](Camera& camera) { return camera.startGrabbing(); });
}

uint32_t OV_CC_StopGrabbing(void* handle) {
    return withCamera(handle, [](Camera& camera) { return camera.stopGrabbing(); });
}

uint32_t OV_CC_GetOneFrameTimeout(void* handle, uint8_t* buffer, uint32_t capacity,
                                  _OV_CC_FRAME_OUT_INFO_* info, uint32_t timeoutMs) {
    return withCamera(handle,
                      [&](Camera& camera) { return camera.fetchFrame(buffer, capacity, info, timeoutMs); });
}

int32_t OV_CC_GetOptimalPacketSize(void* handle) {
    std::int32_t size = 0;
    withCamera(handle, [&](Camera& camera) {
        size = camera.optimalPacketSize();
        return OV_STATUS_OK;
    });
    return size;
}

void* OV_CC_GetTlProxy(void* handle) {
    GenApi_3_0::IPort* port = nullptr;
    withCamera(handle, [&](Camera& camera) {
        port = camera.port();
        return OV_STATUS_OK;
    });
    return port;
}

uint32_t OV_CC_GetAllMatchInfo(void* handle, _OV_ALL_MATCH_INFO_* query) {
    return withCamera(handle, [&](Camera& camera) {
        if (query == nullptr || query->info == nullptr) {
            return OV_STATUS_INVALID_PARAMETER;
        }
        if (query->type != OV_MATCH_INFO_NET_DETECT) {
            return OV_STATUS_NOT_SUPPORTED;
        }
        if (query->infoSize != sizeof(_OV_MATCH_INFO_NET_DETECT_)) {
            return OV_STATUS_INVALID_PARAMETER;
        }
        kolt::cc::StreamNumbers numbers;
        const std::uint32_t status = camera.numbers(numbers);
        if (status == OV_STATUS_OK) {
            fill(*static_cast<_OV_MATCH_INFO_NET_DETECT_*>(query->info), numbers);
        }
        return status;
    });
}

uint32_t OV_GIGE_ForceIp(void* handle, uint32_t ip) {
    return withCamera(handle, [&](Camera& camera) { return camera.forceIp(ip); });
}

uint32_t OV_XML_GetGenICamXML(void* handle, uint8_t* buffer, uint32_t capacity, uint32_t* length) {
    return withCamera(handle, [&](Camera& camera) { return camera.copyXml(buffer, capacity, length); });
}

uint32_t OVX_CC_GetStatistics(void* handle, OVX_CC_STATISTICS* statistics) {
    return withCamera(handle, [&](Camera& camera) {
        constexpr std::uint32_t kLeast = 8;
        if (statistics == nullptr || statistics->size < kLeast) {
            return OV_STATUS_INVALID_PARAMETER;
        }
        kolt::cc::StreamNumbers numbers;
        const std::uint32_t status = camera.numbers(numbers);
        if (status == OV_STATUS_OK) {
            OVX_CC_STATISTICS filled{};
            fill(filled, numbers);
            filled.size = statistics->size;
            std::memcpy(statistics, &filled, std::min<std::size_t>(statistics->size, sizeof filled));
        }
        return status;
    });
}

uint32_t OVX_CC_SetOption(void* handle, uint32_t option, uint32_t value) {
    return withCamera(handle, [&](Camera& camera) {
        if (option != OVX_OPTION_PACKET_RESEND && option != OVX_OPTION_PACKET_SOCKET) {
            return OV_STATUS_NOT_SUPPORTED;
        }
        if (value > 1) {
            return OV_STATUS_INVALID_PARAMETER;
        }
        return option == OVX_OPTION_PACKET_RESEND ? camera.setResend(value != 0)
                                                  : camera.setPacketSocket(value != 0);
    });
}

uint32_t OVX_CC_WaitIdle(uint32_t timeoutMs) {
    return guarded([&] {
        return kolt::cc::waitReaped(std::chrono::milliseconds(timeoutMs)) ? OV_STATUS_OK : OV_STATUS_NO_DATA;
    });
}

} // extern "C"
