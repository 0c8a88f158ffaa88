#include "StreamClients.h"

#include <arpa/inet.h>
#include <array>
#include <arv.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <vector>

#include "Camera/Boundary/OvCameraControl.h"
#include "GenApi/IPort.h"
#include "OvCameraControlX.h"

namespace kolt::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int64_t kPacketSizeRegister = 0x0D04;
constexpr double kWarmUp = 0.4;
constexpr std::uint32_t kPatienceMs = 2000;

[[noreturn]] void fail(const char* what, unsigned long code) {
    std::fprintf(stderr, "%s failed (0x%lx)\n", what, code);
    std::exit(1);
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

bool hasPacketSocket() {
    bool found = false;
    DIR* folder = opendir("/proc/self/fd");
    while (const dirent* entry = folder != nullptr ? readdir(folder) : nullptr) {
        int domain = 0;
        socklen_t length = sizeof domain;
        found =
            found || (getsockopt(std::atoi(entry->d_name), SOL_SOCKET, SO_DOMAIN, &domain, &length) == 0 &&
                      domain == AF_PACKET);
    }
    if (folder != nullptr) {
        closedir(folder);
    }
    return found;
}

// Counts the frames of the measured time. Both clients use it in the same way.
class Meter {
public:
    explicit Meter(double seconds) : seconds_(seconds) {}

    // False when the time is over.
    bool frame(std::uint64_t blockId, bool complete, std::size_t bytes) {
        const Clock::time_point now = Clock::now();
        if (!begun_) {
            begun_ = true;
            start_ =
                now + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(kWarmUp));
        }
        if (now < start_) {
            return true;
        }
        if (!measuring_) {
            measuring_ = true;
            start_ = now;
            firstId_ = blockId;
            cpu_ = cpuSeconds();
            return true;
        }
        result_.frames += complete ? 1 : 0;
        result_.bytes += complete ? static_cast<double>(bytes) : 0;
        result_.seconds = std::chrono::duration<double>(now - start_).count();
        if (result_.seconds < seconds_) {
            return true;
        }
        result_.cpuSeconds = cpuSeconds() - cpu_;
        const std::uint64_t sent = (blockId + 0xFFFF - firstId_) % 0xFFFF; // ids run from 1 to 65535
        result_.lost = sent - std::min(sent, result_.frames);
        result_.packetSocket = hasPacketSocket();
        return false;
    }
    const StreamResult& result() const { return result_; }

private:
    double seconds_;
    bool begun_ = false;
    bool measuring_ = false;
    Clock::time_point start_;
    std::uint64_t firstId_ = 0;
    double cpu_ = 0;
    StreamResult result_;
};

void checked(std::uint32_t status, const char* what) {
    if (status != OV_STATUS_OK) {
        fail(what, status);
    }
}

void checked(GError* error, const char* what) {
    if (error != nullptr) {
        std::fprintf(stderr, "%s\n", error->message);
        fail(what, static_cast<unsigned long>(error->code));
    }
}

} // namespace

StreamResult runLibrary(const StreamTask& task) {
    _OV_CC_DEVICE_INFO_ record{};
    record.nTLayerType = OV_TLAYER_GIGE;
    record.transport.gige.currentIp = ntohl(inet_addr(task.address.c_str()));
    void* handle = nullptr;
    checked(OV_CC_CreateHandle(&handle, &record), "CreateHandle");
    checked(OV_CC_OpenDevice(handle, OV_ACCESS_EXCLUSIVE, 0), "OpenDevice");
    checked(OV_CC_SetImageNodeNum(handle, task.buffers), "SetImageNodeNum");
    checked(OVX_CC_SetOption(handle, OVX_OPTION_PACKET_SOCKET, task.packetSocket ? 1 : 0), "SetOption");
    const std::uint32_t size = htonl(0x4000'0000 | task.packetSize);
    static_cast<GenApi_3_0::IPort*>(OV_CC_GetTlProxy(handle))->Write(&size, kPacketSizeRegister, sizeof size);
    checked(OV_CC_StartGrabbing(handle), "StartGrabbing");
    std::vector<std::uint8_t> frame(std::size_t{16} << 20);
    _OV_CC_FRAME_OUT_INFO_ info{};
    Meter meter(task.seconds);
    do {
        checked(OV_CC_GetOneFrameTimeout(handle, frame.data(), static_cast<std::uint32_t>(frame.size()),
                                         &info, kPatienceMs),
                "GetOneFrameTimeout");
    } while (meter.frame(info.blockId, info.frameState == 0, info.frameLength));
    checked(OV_CC_StopGrabbing(handle), "StopGrabbing");
    checked(OV_CC_DestroyHandle(handle), "DestroyHandle");
    return meter.result();
}

StreamResult runAravis(const StreamTask& task, bool copy) {
    GError* error = nullptr;
    GInetAddress* host = g_inet_address_new_from_string("127.0.0.1");
    GInetAddress* camera = g_inet_address_new_from_string(task.address.c_str());
    ArvDevice* device = arv_gv_device_new(host, camera, &error);
    checked(error, "arv_gv_device_new");
    ArvGvDevice* gv = ARV_GV_DEVICE(device);
    arv_gv_device_set_packet_size_adjustment(gv, ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    arv_gv_device_set_packet_size(gv, static_cast<gint>(task.packetSize), &error);
    checked(error, "arv_gv_device_set_packet_size");
    arv_gv_device_set_stream_options(gv, task.packetSocket ? ARV_GV_STREAM_OPTION_NONE
                                                           : ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    ArvStream* stream = arv_device_create_stream(device, nullptr, nullptr, &error);
    checked(error, "arv_device_create_stream");
    if (!task.packetSocket) {
        // As much as the library asks for. With the kernel's default, and with the size of one frame that
        // Aravis chooses by itself, it loses frames, and there would be nothing to compare.
        g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                     8 << 20, nullptr);
    }
    const auto payload =
        static_cast<std::size_t>(arv_device_get_integer_feature_value(device, "PayloadSize", &error));
    checked(error, "PayloadSize");
    for (unsigned index = 0; index < task.buffers; ++index) {
        arv_stream_push_buffer(stream, arv_buffer_new_allocate(payload));
    }
    arv_device_execute_command(device, "AcquisitionStart", &error);
    checked(error, "AcquisitionStart");
    std::vector<std::uint8_t> kept(payload);
    Meter meter(task.seconds);
    for (bool more = true; more;) {
        ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, std::uint64_t{kPatienceMs} * 1000);
        if (buffer == nullptr) {
            fail("arv_stream_timeout_pop_buffer", 0);
        }
        const bool complete = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
        std::size_t bytes = 0;
        const void* data = arv_buffer_get_data(buffer, &bytes);
        if (copy) {
            std::memcpy(kept.data(), data, std::min(bytes, kept.size()));
        }
        more = meter.frame(arv_buffer_get_frame_id(buffer), complete, bytes);
        arv_stream_push_buffer(stream, buffer);
    }
    arv_device_execute_command(device, "AcquisitionStop", nullptr);
    g_object_unref(stream);
    g_object_unref(device);
    g_object_unref(camera);
    g_object_unref(host);
    return meter.result();
}

} // namespace kolt::bench
