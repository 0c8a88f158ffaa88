// Looking a camera up, holding it for the time of its use, letting it go; and its name as text.
#pragma once

#include <QString>
#include <functional>

class QCamera;

// Calls `use` with the camera of that id while a reference keeps it alive. False, without a call, when the
// registry holds no such camera (any more). Any thread.
bool UseCamera(long lCameraID, const std::function<void(QCamera&)>& use);

// As given by the user or the camera, 128 bytes of UTF-8 at most. Any thread.
QString NameOfCamera(const QCamera& camera);
