// Adding a camera that no detection round finds, by its address alone.
#pragma once

#include <QString>
#include <cstdint>

class QWidget;
class QDevListWidget;

// Whoever opens a QAddCameraWidget, as its parent, can do this (the central window).
class QRemoteCameraAdder {
public:
    virtual ~QRemoteCameraAdder() = default;
    // The new camera's id, -1 when no camera answers at the address, 0 when no camera object could be made.
    // Main thread; waits for the camera's answer, a register time-out at most.
    virtual long AddCamera(const QString& ip) = 0;
};

// The same with the address of the host interface the camera is tied to, 0 for none.
long AddRemoteCamera(const QString& ip, uint32_t hostInterface);

// The address of the interface group that is current in the list; 0 when the current item is no group.
uint32_t CurrentHostInterface(const QDevListWidget& list);

// Asks the user for an address, with `owner` (a QRemoteCameraAdder) as parent of the dialog, and shows the
// camera in the list. Returns when the dialog is closed.
void ShowAddRemoteCamera(QWidget* owner, QDevListWidget& list);
