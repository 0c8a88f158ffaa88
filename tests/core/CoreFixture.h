// A QCamera, a virtual camera on a loopback address of its own, and an X window to draw into.
#pragma once

#include "Camera/QCamera.h"
#include "Camera/QCameraOwner.h"
#include "VirtualCamera.h"

#include <QTemporaryDir>
#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace core {

constexpr auto kPatience = std::chrono::seconds(20);

// Looks every few milliseconds until it is true; false after kPatience.
bool WaitUntil(const std::function<bool()>& condition);

// KOLT_SOAK=1 asks for the full count.
int Rounds(int usual, int full);

// The time of each round of something that is repeated.
class RoundTimes {
public:
    void Begin() { m_begun = std::chrono::steady_clock::now(); }
    void End() { m_times.push_back(std::chrono::steady_clock::now() - m_begun); }
    // The shortest of the last fifth isn't far beyond the median of the first: each round doesn't leave
    // something behind that the next ones carry along. Generous, since other programs come and go meanwhile.
    void ExpectNoGrowth() const;

private:
    std::chrono::steady_clock::time_point m_begun;
    std::vector<std::chrono::steady_clock::duration> m_times;
};

// A window of its own connection, mapped.
class Window {
public:
    Window(uint16_t width, uint16_t height);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    uint32_t Id() const { return m_window; }
    // 0xRRGGBB of one pixel as it is on the screen.
    uint32_t Pixel(int x, int y) const;

private:
    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_window = 0;
};

// Open descriptors and threads of this process.
int OpenDescriptors();
int Threads();

class QuietOwner : public QCameraOwner {
public:
    void OnShowMsg(const QString&, const QString& detail, int) override {
        ++messages;
        last = detail.toStdString();
    }
    void OnStopRecording() override { ++stops; }
    void OnShowSaveMsg(const QString&, const QString&) override { ++saves; }
    void UpdateCaptureBtnAndAction(bool) override {}
    bool IsEmbedWidgetVisible() override { return false; }
    std::atomic<int> messages{0}, stops{0}, saves{0};
    std::string last;
};

class Fixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Starts the virtual camera; call before Connect.
    void StartDevice(const std::function<void(vcam::Config&)>& change = {});
    // A record with the address alone, as for a camera entered by hand.
    void SetRecord();
    void Connect();
    void Stream();
    bool WaitForFrames(int64_t count);
    bool WaitForDrawn(int64_t count);
    // What both sides have counted, for messages.
    std::string Story();

    QTemporaryDir folder;
    QuietOwner owner;
    vcam::Config config;
    std::unique_ptr<vcam::VirtualCamera> device;
    QCamera* camera = nullptr;
};

} // namespace core
