// A detection thread on the scripted doubles, whose signals are written down.
#pragma once

#include "Camera/CCameraRef.h"
#include "Camera/QDeviceDetectThread.h"
#include "Common/QFunction.h"
#include "DeviceRecords.h"
#include "support/PlatformDoubles.h"

#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <vector>

namespace devices {

class DetectFixture : public testing::Test {
protected:
    using Events = std::vector<std::string>;

    void SetUp() override {
        doubles.Reset();
        const auto direct = Qt::DirectConnection;
        QObject::connect(
            &thread, &QDeviceDetectThread::SigErrorMsg, &thread,
            [this](int error) { Add("error " + std::to_string(error)); }, direct);
        QObject::connect(
            &thread, &QDeviceDetectThread::SigDeleteCamera, &thread,
            [this](long id) { Add("delete " + Number(id)); }, direct);
        QObject::connect(
            &thread, &QDeviceDetectThread::SigNewCamera, &thread,
            [this](long id, bool can) { Add("new " + Number(id) + (can ? "" : " can't")); }, direct);
        QObject::connect(
            &thread, &QDeviceDetectThread::SigUpdateCameraInfo, &thread,
            [this](long id, bool there) { Add("update " + Number(id) + (there ? "" : " not there")); },
            direct);
        QObject::connect(
            &thread, &QDeviceDetectThread::SigDetectDevFinished, &thread, [this] { Add("finished"); },
            direct);
        QObject::connect(
            &thread, &QDeviceDetectThread::SigUpdateCamName, &thread,
            [this](const QString& name, long id) { Add("name " + Number(id) + " " + name.toStdString()); },
            direct);
        first = QFunction::GetCameraIDIndex() + 1;
    }

    void TearDown() override {
        thread.wait();
        QCameraContainer::ReleaseInstance();
        EXPECT_EQ(doubles.OpenHandles('c'), 0) << "a handle was left";
        doubles.Reset();
    }

    // What one round with these devices tells. Cameras are numbered from 1 in the order of their making.
    Events Round(const std::vector<_OV_CC_DEVICE_INFO_>& there) {
        doubles.SetDevices(there);
        thread.start();
        EXPECT_TRUE(thread.wait(20000));
        return Take();
    }

    Events Take() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Events taken;
        taken.swap(m_events);
        return taken;
    }

    long Id(long number) const { return first + number - 1; }
    QCamera* Camera(long number) { return QCameraContainer::Instance()->GetCamera(Id(number)); }
    int Total() { return QCameraContainer::Instance()->GetTotalCameraNum(); }

    support::PlatformDoubles& doubles = support::PlatformDoubles::Get();
    QDeviceDetectThread thread;
    long first = 1;

private:
    void Add(const std::string& event) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back(event);
    }
    std::string Number(long id) const { return id == 0 ? "none" : std::to_string(id - first + 1); }

    std::mutex m_mutex; // guards m_events
    Events m_events;
};

} // namespace devices
