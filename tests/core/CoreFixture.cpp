#include "core/CoreFixture.h"

#include "Camera/QFrameBufManager.h"
#include "Common/QLocalCfg.h"
#include "support/LoopbackAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/resource.h>
#include <thread>

namespace core {

namespace {

// A camera in software that doesn't get the processor for a fifth of a second answers too late for its frame.
// On a busy machine the tests therefore go first, where they may.
[[maybe_unused]] const int preferred = setpriority(PRIO_PROCESS, 0, -5);

} // namespace

bool WaitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    return true;
}

int Rounds(int usual, int full) {
    const char* soak = std::getenv("KOLT_SOAK");
    return soak && *soak == '1' ? full : usual;
}

void RoundTimes::ExpectNoGrowth() const {
    ASSERT_GE(m_times.size(), 5u);
    const auto median = [](std::vector<std::chrono::steady_clock::duration> times) {
        std::sort(times.begin(), times.end());
        return std::chrono::duration<double, std::milli>(times[times.size() / 2]).count();
    };
    const auto fifth = static_cast<std::ptrdiff_t>(m_times.size() / 5);
    const double first = median({m_times.begin(), m_times.begin() + fifth});
    // What a round takes at least: the machine may have become busier meanwhile.
    const auto least = *std::min_element(m_times.end() - fifth, m_times.end());
    const double last = std::chrono::duration<double, std::milli>(least).count();
    EXPECT_LE(last, 3 * first + 100) << "milliseconds a round at the end; at the beginning " << first;
    testing::Test::RecordProperty("first_ms", std::to_string(first));
    testing::Test::RecordProperty("last_ms", std::to_string(last));
    std::printf("%zu rounds: %.1f ms each at the beginning, %.1f at the end\n", m_times.size(), first, last);
}

Window::Window(uint16_t width, uint16_t height) : m_connection(xcb_connect(nullptr, nullptr)) {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_window = xcb_generate_id(m_connection);
    const uint32_t black = screen->black_pixel;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0, width, height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_BACK_PIXEL, &black);
    xcb_map_window(m_connection, m_window);
    // An answer means that the server has done all of it.
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

Window::~Window() {
    xcb_destroy_window(m_connection, m_window);
    xcb_disconnect(m_connection);
}

uint32_t Window::Pixel(int x, int y) const {
    const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window,
                                      static_cast<int16_t>(x), static_cast<int16_t>(y), 1, 1, ~0u);
    xcb_get_image_reply_t* reply = xcb_get_image_reply(m_connection, cookie, nullptr);
    if (!reply)
        return 0xFFFFFFFF;
    uint32_t pixel = 0;
    std::memcpy(&pixel, xcb_get_image_data(reply), 4);
    std::free(reply);
    return pixel & 0xFFFFFF;
}

namespace {

int EntriesOf(const char* folder) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        (void)entry;
        ++count;
    }
    return count;
}

} // namespace

int OpenDescriptors() {
    return EntriesOf("/proc/self/fd");
}

int Threads() {
    return EntriesOf("/proc/self/task");
}

void Fixture::SetUp() {
    ASSERT_TRUE(folder.isValid());
    QLocalCfg::SetDirectory(folder.path());
    config.address = kolt::test::LoopbackAddress(0);
    config.sensorWidth = 640;
    config.sensorHeight = 480;
    config.frameRate = 60;
    camera = QCamera::NewInstance();
    camera->AddRef();
    camera->SetCameraID(1);
    camera->SetCameraName("core");
    camera->SetOwner(&owner);
}

void Fixture::TearDown() {
    if (camera)
        camera->ReleaseRef();
    device.reset();
    QFrameBufManager::ReleaseInstance();
    QLocalCfg::ReleaseInstance();
    QLocalCfg::SetDirectory({});
}

void Fixture::StartDevice(const std::function<void(vcam::Config&)>& change) {
    if (change)
        change(config);
    device = std::make_unique<vcam::VirtualCamera>(config);
    device->Start();
}

void Fixture::SetRecord() {
    _OV_CC_DEVICE_INFO_ info{};
    info.nTLayerType = OV_TLAYER_GIGE;
    info.transport.gige.currentIp = ntohl(inet_addr(config.address.c_str()));
    camera->SetOVCCDevInfo(info);
}

void Fixture::Connect() {
    if (!device)
        StartDevice();
    SetRecord();
    ASSERT_EQ(camera->GenerateOVCDevInfoByConnectDev(), 0);
    ASSERT_EQ(camera->OpenCamera(), 0);
}

void Fixture::Stream() {
    ASSERT_NO_FATAL_FAILURE(Connect());
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
}

bool Fixture::WaitForFrames(int64_t count) {
    return WaitUntil([&] { return camera->GetRecvFrameNum() >= count; });
}

std::string Fixture::Story() {
    const _CAMERA_COUNTERS_ ours = camera->GetCounters();
    const vcam::Counters theirs = device->GetCounters();
    _OV_MATCH_INFO_NET_DETECT_ link{};
    camera->GetMatchInfoNetDetect(&link);
    std::string text;
    const auto tell = [&text](const char* name, auto value) {
        text += name + (' ' + std::to_string(value)) + ", ";
    };
    tell("received", ours.received);
    tell("grab errors", ours.grabErrors);
    tell("link: bytes", link.receivedBytes);
    tell("lost packets", link.lostPackets);
    tell("errors", link.errorCount);
    tell("lost frames", link.lostFrames);
    tell("camera: streaming", device->IsStreaming() ? 1 : 0);
    tell("frames", theirs.framesStarted);
    tell("completed", theirs.framesCompleted);
    tell("aborted", theirs.framesAborted);
    tell("packets sent", theirs.packetsSent);
    tell("send errors", theirs.sendErrors);
    tell("resend requests", theirs.resendRequests);
    tell("heartbeats expired", theirs.heartbeatsExpired);
    return text;
}

bool Fixture::WaitForDrawn(int64_t count) {
    return WaitUntil([&] { return camera->GetCounters().displayed >= count; });
}

} // namespace core
