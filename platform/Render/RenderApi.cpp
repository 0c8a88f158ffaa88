/* The exported calls. Nothing is thrown across them: what can't be done gives 0. */
#include "Camera/Boundary/OVRender.h"
#include "HandleRegistry.h"

using kolt::render::HandleRegistry;

namespace {

/* Runs call(renderer) when the handle is one. */
template<class Call>
int32_t with(void* handle, Call&& call) noexcept {
    try {
        const HandleRegistry::Use renderer(HandleRegistry::instance(), handle);
        return renderer && call(renderer) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

} // namespace

#define KOLT_EXPORT __attribute__((visibility("default")))

extern "C" {

KOLT_EXPORT void* VR_CreateHandle(void) {
    try {
        return HandleRegistry::instance().create();
    } catch (...) {
        return nullptr;
    }
}

KOLT_EXPORT uint32_t VR_DestroyHandle(void* handle) {
    try {
        return HandleRegistry::instance().destroy(handle) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

KOLT_EXPORT int32_t VR_Init(void* handle, uint32_t pixelFormat, uint32_t engine, uint32_t count) {
    return with(handle, [=](auto& renderer) { return renderer->init(pixelFormat, engine, count); });
}

KOLT_EXPORT int32_t VR_AddSubPort(void* handle, uint64_t nativeWindow, uint32_t port, uint32_t /*zero*/) {
    return with(handle, [=](auto& renderer) { return renderer->addPort(nativeWindow, port); });
}

KOLT_EXPORT int32_t VR_DelSubPort(void* handle, uint32_t port) {
    return with(handle, [=](auto& renderer) { return renderer->deletePort(port); });
}

KOLT_EXPORT int32_t VR_SetVerticalSyncPeriod(void* handle, uint32_t port, uint32_t period) {
    return with(handle, [=](auto& renderer) { return renderer->setSyncPeriod(port, period); });
}

KOLT_EXPORT int32_t VR_SetCallBack(void* handle, uint32_t port, uint32_t mode, VRDrawCallBack callback,
                                   void* user) {
    return with(handle, [=](auto& renderer) { return renderer->setCallback(port, mode, callback, user); });
}

KOLT_EXPORT int32_t VR_UpdateFrameData(void* handle, const uint8_t* pixels, uint32_t width, uint32_t height,
                                       uint32_t /*zero*/) {
    return with(handle, [=](auto& renderer) { return renderer->updateFrame(pixels, width, height); });
}

KOLT_EXPORT int32_t VR_Display(void* handle, uint32_t port, uint64_t nativeWindow) {
    return with(handle, [=](auto& renderer) { return renderer->display(port, nativeWindow); });
}

KOLT_EXPORT int32_t VR_WndResolutionChange(void* handle, uint32_t port, const tagVRRectF* destination) {
    return with(handle, [=](auto& renderer) { return renderer->setDestination(port, destination); });
}

KOLT_EXPORT int32_t VR_SetDisplayRect(void* handle, uint32_t port, const tagVRRectF* source,
                                      const tagVRRectF* destination) {
    return with(handle, [=](auto& renderer) { return renderer->setRectangles(port, source, destination); });
}

KOLT_EXPORT int32_t VR_Rotate(void* handle, uint32_t port, const tagVRRotation* record) {
    return with(handle, [=](auto& renderer) { return renderer->rotate(port, record); });
}

} // extern "C"
