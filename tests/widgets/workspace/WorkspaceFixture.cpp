#include "WorkspaceFixture.h"

#include "Camera/QFrameBufManager.h"

#include <QSettings>

namespace workspace {

void WorkspaceFixture::SetUp() {
    WidgetFixture::SetUp();
    // The window's layout is stored apart from the settings: not in the home of whoever runs the tests.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    doubles.Reset(support::CameraXml());
    support::FillCameraRegisters(doubles.Port());
    SetHostInterfaceSource([] {
        return QVector<_HOST_INTERFACE_>{devices::Interface("eth0", "A", {0}),
                                         devices::Interface("eth1", "B", {1})};
    });
}

void WorkspaceFixture::TearDown() {
    WidgetFixture::TearDown();
    QFrameBufManager::ReleaseInstance();
}

long WorkspaceFixture::AddCamera(const std::string& name) {
    QCamera* const camera = QCamera::NewInstance();
    const long id = QFunction::GetCameraIDIndex();
    camera->SetCameraID(id);
    camera->SetCameraName(name.c_str());
    QCameraContainer::Instance()->AddCamera(camera);
    return id;
}

QCamera& WorkspaceFixture::Camera(long id) {
    return *QCameraContainer::Instance()->GetCamera(id);
}

support::DoubleFrame WorkspaceFixture::Frame(uint8_t value, uint16_t width, uint16_t height) {
    support::DoubleFrame frame;
    frame.width = width;
    frame.height = height;
    frame.pixels.assign(static_cast<size_t>(width) * height, value);
    return frame;
}

void WorkspaceFixture::Bring(long id, CameraStage stage) {
    if (stage == kClosed)
        return;
    QCamera& camera = Camera(id);
    ASSERT_EQ(camera.OpenCamera(), 0);
    if (stage == kConnected)
        return;
    ASSERT_EQ(camera.OnStartGettingFrame(true), 0);
    if (stage == kGrabbing)
        return;
    doubles.PushFrame(Frame(0x40));
    ASSERT_TRUE(devices::WaitFor([&] { return camera.IsHaveFrameData(); }));
    ASSERT_EQ(camera.StopGettingFrame(), 0);
}

} // namespace workspace
