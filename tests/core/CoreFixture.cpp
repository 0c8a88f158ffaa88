#include "core/CoreFixture.h"

#include "Camera/QFrameBufManager.h"
#include "Common/QLocalCfg.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <thread>
#include <unistd.h>

namespace core {

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
    // Tests run side by side: each process has a loopback address of its own.
    const auto pid = static_cast<unsigned>(getpid());
    config.address = "127." + std::to_string(64 + (pid >> 16) % 64) + "." + std::to_string((pid >> 8) & 255) +
                     "." + std::to_string(1 + pid % 254);
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

bool Fixture::WaitForDrawn(int64_t count) {
    return WaitUntil([&] { return camera->GetCounters().displayed >= count; });
}

} // namespace core
