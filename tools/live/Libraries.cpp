#include "Libraries.h"

#include "Camera/Boundary/OVRender.h"
#include "Camera/Boundary/OvCameraControl.h"
#include "Camera/Boundary/OvMediaKit.h"

#include <cstdlib>
#include <dlfcn.h>
#include <memory>

namespace live {
namespace {

template<typename Function>
std::string FileOf(Function* function) {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(function), &info) == 0 || info.dli_fname == nullptr)
        return "?";
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(info.dli_fname, nullptr), &std::free);
    return path ? path.get() : info.dli_fname;
}

} // namespace

std::string VersionText() {
    return "kolt_live " KOLT_VERSION "\n"
           "  camera control  " +
           FileOf(&OV_CC_EnumDevices) + "\n  media           " + FileOf(&OV_MP_ConvertPixelType) +
           "\n  render          " + FileOf(&VR_UpdateFrameData);
}

} // namespace live
