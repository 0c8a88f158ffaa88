#include "Clients.h"

#include "Camera/QCamera.h"
#include "Camera/QCameraOwner.h"
#include "Common/QLocalCfg.h"

#include <QTemporaryDir>
#include <arpa/inet.h>
#include <arv.h>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

// Blocks SIGTERM from its making on, so that threads made later leave it to the main thread.
class Term {
public:
    Term() {
        sigemptyset(&m_set);
        sigaddset(&m_set, SIGTERM);
        sigprocmask(SIG_BLOCK, &m_set, nullptr);
    }
    // False when the signal came before `until`.
    bool Wait(Clock::time_point until) const {
        const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(until - Clock::now()).count();
        if (left <= 0)
            return true;
        const timespec time = {static_cast<time_t>(left / 1000000000), static_cast<long>(left % 1000000000)};
        return sigtimedwait(&m_set, nullptr, &time) != SIGTERM;
    }

private:
    sigset_t m_set{};
};

struct Counts {
    long long frames;
    long long shown;
};

void SayEverySecond(const Term& term, const std::function<Counts()>& count) {
    const auto start = Clock::now();
    Counts before = count();
    for (int second = 1; term.Wait(start + std::chrono::seconds(second)); ++second) {
        const Counts now = count();
        std::printf("%7.1f s  frames %lld  shown %.1f fps\n",
                    std::chrono::duration<double>(Clock::now() - start).count(), now.frames,
                    static_cast<double>(now.shown - before.shown));
        std::fflush(stdout);
        before = now;
    }
}

int Fail(const char* what) {
    std::printf("%s\n", what);
    return 1;
}

} // namespace

int RunCoreClient(const std::string& address, Activity activity, unsigned long window, int displayRate) {
    const Term term;
    const QTemporaryDir folder;
    QLocalCfg::SetDirectory(folder.path());
    QLocalCfg::Instance()->SetAutoCheckNetwork(false);
    QLocalCfg::Instance()->SetSDKBufferSize(kLibraryBuffers);
    QCamera* camera = QCamera::NewInstance();
    camera->AddRef();
    _OV_CC_DEVICE_INFO_ info{};
    info.nTLayerType = OV_TLAYER_GIGE;
    info.transport.gige.currentIp = ntohl(inet_addr(address.c_str()));
    camera->SetOVCCDevInfo(info);
    if (camera->GenerateOVCDevInfoByConnectDev() != 0 || camera->OpenCamera() != 0)
        return Fail("the camera can't be opened");
    camera->SetIntegerNodePropertyValue("GevSCPSPacketSize", kPacketSize);
    camera->SetDisplayMode(activity == Activity::StreamWithoutDisplay ? 10 : displayRate == 60 ? 9 : 8);
    if (activity == Activity::Show)
        camera->SetPlayWnd(window);
    if (activity != Activity::ConnectedOnly && camera->OnStartGettingFrame(true) != 0)
        return Fail("the stream can't be started");
    SayEverySecond(term, [camera] {
        const _CAMERA_COUNTERS_ counters = camera->GetCounters();
        return Counts{counters.received, counters.displayed};
    });
    camera->StopGettingFrame();
    camera->CloseCamera();
    camera->ReleaseRef();
    QLocalCfg::ReleaseInstance();
    return 0;
}

int RunPlainClient(const std::string& address) {
    const Term term;
    GError* error = nullptr;
    GInetAddress* host = g_inet_address_new_from_string("127.0.0.1");
    GInetAddress* device = g_inet_address_new_from_string(address.c_str());
    ArvDevice* gv = arv_gv_device_new(host, device, &error);
    if (!gv)
        return Fail("Aravis does not open the camera");
    arv_gv_device_set_packet_size_adjustment(ARV_GV_DEVICE(gv), ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    ArvCamera* camera = arv_camera_new_with_device(gv, &error);
    arv_camera_gv_set_packet_size(camera, kPacketSize, &error);
    ArvStream* stream = arv_camera_create_stream(camera, nullptr, nullptr, &error);
    if (!stream)
        return Fail("Aravis makes no stream");
    g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_AUTO, nullptr);
    const size_t payload = arv_camera_get_payload(camera, &error);
    for (int i = 0; i < kLibraryBuffers; ++i)
        arv_stream_push_buffer(stream, arv_buffer_new(payload, nullptr));
    arv_camera_start_acquisition(camera, &error);
    std::atomic<long long> frames{0};
    std::atomic<bool> stop{false};
    std::thread taker([&] {
        while (!stop) {
            ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 200000);
            if (!buffer)
                continue;
            if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS)
                ++frames;
            arv_stream_push_buffer(stream, buffer);
        }
    });
    SayEverySecond(term, [&frames] { return Counts{frames, 0}; });
    stop = true;
    taker.join();
    arv_camera_stop_acquisition(camera, &error);
    g_clear_error(&error);
    g_object_unref(stream);
    g_object_unref(camera);
    g_object_unref(gv);
    g_object_unref(device);
    g_object_unref(host);
    return 0;
}
