// Cameras in the registry for tests of the main window and its parts, on the scripted doubles.
#pragma once

#include "Camera/QCamera.h"
#include "Camera/QCameraContainer.h"
#include "DeviceListFixture.h"
#include "support/CameraXml.h"

#include <string>

namespace workspace {

// What the enable rules look at, besides the selection.
enum CameraStage { kClosed, kConnected, kConnectedWithFrame, kGrabbing };

// Settings in a folder of their own, the look, messages written down (Messages()), two host networks, no
// device in sight, and a library that opens any camera (one XML and one set of registers for all).
class WorkspaceFixture : public devices::WidgetFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    // A closed camera in the registry; its id.
    long AddCamera(const std::string& name = "east");
    // Brings a closed camera there. kConnectedWithFrame has stopped again after a frame.
    void Bring(long id, CameraStage stage);
    static QCamera& Camera(long id);
    static support::DoubleFrame Frame(uint8_t value, uint16_t width = 64, uint16_t height = 48);
};

} // namespace workspace
