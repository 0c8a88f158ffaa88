// Looking a camera up, holding it for the time of its use, and letting it go.
#pragma once

#include <functional>

class QCamera;

// Calls `use` with the camera of that id while a reference keeps it alive. False, without a call, when the
// registry holds no such camera (any more). Any thread.
bool UseCamera(long lCameraID, const std::function<void(QCamera&)>& use);
