// The scene that a camera looks at.
#ifndef VCAM_DEVICE_SHAREDSCENE_H
#define VCAM_DEVICE_SHAREDSCENE_H

#include "Picture/Scene.h"
#include "VirtualCamera.h"

#include <memory>

namespace vcam {

// Cameras that look at the same scene share it: it is big, and never changes. Any thread.
std::shared_ptr<const Scene> SharedScene(const Config& config);

} // namespace vcam

#endif
