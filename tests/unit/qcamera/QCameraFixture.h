// A QCamera on the doubles, with settings in a folder of its own.
#pragma once

#include "Camera/QCamera.h"
#include "Camera/QCameraOwner.h"
#include "Camera/QFrameBufManager.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "support/CameraXml.h"
#include "support/PlatformDoubles.h"
#include "support/SystemDoubles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <vector>

namespace reg = support::camera_register;

// Records what the camera tells its owner.
class RecordingOwner : public QCameraOwner {
public:
    void OnShowMsg(const QString& title, const QString& detail, int) override {
        Add("show " + title.toStdString() + "|" + detail.toStdString());
    }
    void OnStopRecording() override { Add("stop"); }
    void OnShowSaveMsg(const QString& message, const QString& path) override {
        Add("saved " + message.toStdString() + "|" + path.toStdString());
    }
    void UpdateCaptureBtnAndAction(bool capturing) override {
        Add(capturing ? "capturing" : "not capturing");
    }
    bool IsEmbedWidgetVisible() override { return embedded; }

    std::vector<std::string> Events() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }
    std::atomic<bool> embedded{false};

private:
    void Add(const std::string& event) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back(event);
    }
    mutable std::mutex m_mutex; // guards m_events
    std::vector<std::string> m_events;
};

class QCameraFixture : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        QLocalCfg::SetDirectory(folder.path());
        Script(support::CameraXml());
        camera = QCamera::NewInstance();
        camera->AddRef();
        camera->SetCameraID(7);
        camera->SetCameraName("east");
    }

    void TearDown() override {
        if (camera)
            camera->ReleaseRef();
        EXPECT_EQ(doubles.OpenHandles('c'), 0) << "a camera handle was left";
        EXPECT_EQ(doubles.OpenHandles('m'), 0) << "a media handle was left";
        EXPECT_EQ(doubles.OpenHandles('v'), 0) << "a render handle was left";
        support::SetFreeMiB({});
        support::FailAllocations({});
        QFrameBufManager::ReleaseInstance();
        QLocalCfg::ReleaseInstance();
        QLocalCfg::SetDirectory({});
        doubles.Reset();
    }

    void Script(const std::string& xml) {
        doubles.Reset(xml);
        support::FillCameraRegisters(doubles.Port());
    }

    void SetRegister(int64_t address, uint32_t value) {
        doubles.Port().StoreInteger(address, 4, value, support::MemoryPort::Order::Little);
    }
    uint32_t Register(int64_t address) {
        return static_cast<uint32_t>(
            doubles.Port().LoadInteger(address, 4, support::MemoryPort::Order::Little));
    }

    void Open() {
        ASSERT_EQ(camera->OpenCamera(), 0);
        ASSERT_EQ(camera->GetCameraState(), 1);
    }
    void Start() {
        Open();
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
        ASSERT_EQ(camera->GetCameraState(), 2);
    }

    static support::DoubleFrame Frame(uint8_t value, uint16_t width = 64, uint16_t height = 48,
                                      uint32_t bytes = 0) {
        support::DoubleFrame frame;
        frame.width = width;
        frame.height = height;
        frame.pixels.assign(bytes ? bytes : static_cast<size_t>(width) * height, value);
        return frame;
    }
    void PushAndWait(const support::DoubleFrame& frame) {
        const int64_t before = camera->GetRecvFrameNum();
        doubles.PushFrame(frame);
        ASSERT_TRUE(doubles.WaitUntil([&] { return camera->GetRecvFrameNum() > before; }));
    }

    QTemporaryDir folder;
    support::PlatformDoubles& doubles = support::PlatformDoubles::Get();
    RecordingOwner owner;
    QCamera* camera = nullptr;
};
