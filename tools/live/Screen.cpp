#include "Screen.h"

#include "Camera/Boundary/OVRender.h"

#include <utility>

namespace live {
namespace {

constexpr uint32_t port = 0;
constexpr int32_t drawn = 1; // the render library's word for success

void OnDraw(void*, uint32_t, uint32_t, void*, uint32_t, uint32_t) {}

} // namespace

Failure Screen::Make(bool colour) {
    Drop();
    handle_ = VR_CreateHandle();
    if (handle_ == nullptr)
        return {"VR_CreateHandle", 0};
    colour_ = colour;
    const char* failed = nullptr;
    if (VR_Init(handle_, colour ? VR_PIXEL_RGB8 : VR_PIXEL_MONO8, engine_, 1) != drawn)
        failed = "VR_Init";
    else if (VR_AddSubPort(handle_, window_.Native(), port, 0) != drawn)
        failed = "VR_AddSubPort";
    else if (VR_SetCallBack(handle_, port, 1, OnDraw, nullptr) != drawn)
        failed = "VR_SetCallBack";
    if (failed != nullptr) {
        Drop();
        return {failed, 0};
    }
    VR_SetVerticalSyncPeriod(handle_, port, 0);
    picture_ = {};
    Turn(0);
    return {};
}

void Screen::Drop() {
    if (handle_ == nullptr)
        return;
    VR_DelSubPort(handle_, port);
    VR_DestroyHandle(handle_);
    handle_ = nullptr;
}

Failure Screen::Show(const Picture& picture) {
    if (handle_ == nullptr || picture.colour != colour_)
        if (const Failure failure = Make(picture.colour))
            return failure;
    if (VR_UpdateFrameData(handle_, picture.pixels, picture.width, picture.height, 0) != drawn)
        return {"VR_UpdateFrameData", 0};
    const Size size = {picture.width, picture.height};
    if (!(size == picture_)) {
        picture_ = size;
        Place();
    }
    if (VR_Display(handle_, port, window_.Native()) != drawn)
        return {"VR_Display", 0};
    return {};
}

void Screen::Place() {
    const bool upright = quarters_ % 2 == 0;
    const Size seen = upright ? picture_ : Size{picture_.height, picture_.width};
    const Fractions place = KeepAspect(seen, window_.CurrentSize());
    const tagVRRectF whole = {0, 1, 0, 1};
    const tagVRRectF destination = {place.top, place.bottom, place.left, place.right};
    VR_SetDisplayRect(handle_, port, &whole, &destination);
}

void Screen::Refresh() {
    if (handle_ == nullptr || picture_ == Size{})
        return;
    Place();
    VR_Display(handle_, port, window_.Native());
}

void Screen::Turn(int quarters) {
    quarters_ = ((quarters_ + quarters) % 4 + 4) % 4;
    if (handle_ == nullptr)
        return;
    tagVRRotation rotation{};
    rotation.axes = &rotation.axis;
    rotation.axisCount = 1;
    rotation.axis.z = 1;
    rotation.axis.angle = static_cast<float>(quarters_) * 90;
    VR_Rotate(handle_, port, &rotation);
    Refresh();
}

} // namespace live
