/*
 * A render handle as the program uses it, and a window to look at.
 */
#ifndef KOLT_TESTS_RENDER_HARNESS_H
#define KOLT_TESTS_RENDER_HARNESS_H

#include "Expectation.h"
#include "XClient.h"

#include "Camera/Boundary/OVRender.h"

#include <string>

namespace kolt::tests {

constexpr uint32_t kPort = 0;

inline uint32_t formatOf(int channels) {
    return channels == 1 ? VR_PIXEL_MONO8 : VR_PIXEL_RGB8;
}

inline tagVRRotation rotation(float degrees) {
    tagVRRotation record{};
    record.axis = {0, 0, 1, degrees};
    record.axes = &record.axis;
    record.axisCount = 1;
    return record;
}

inline int32_t turn(void* handle, float degrees, uint32_t port = kPort) {
    tagVRRotation record = rotation(degrees);
    record.axes = &record.axis;
    return VR_Rotate(handle, port, &record);
}

class RenderHandle {
public:
    RenderHandle() : m_handle(VR_CreateHandle()) {}
    RenderHandle(uint32_t format, uint32_t engine, xcb_window_t window) : RenderHandle() {
        m_ready = VR_Init(m_handle, format, engine, 1) == 1 && VR_AddSubPort(m_handle, window, kPort, 0) == 1;
    }
    ~RenderHandle() { VR_DestroyHandle(m_handle); }
    RenderHandle(const RenderHandle&) = delete;
    RenderHandle& operator=(const RenderHandle&) = delete;

    void* get() const { return m_handle; }
    bool ready() const { return m_ready; }
    int32_t update(const Source& source) const {
        return VR_UpdateFrameData(m_handle, source.bytes.data(), static_cast<uint32_t>(source.width),
                                  static_cast<uint32_t>(source.height), 0);
    }
    int32_t display(xcb_window_t window = 0) const { return VR_Display(m_handle, kPort, window); }

private:
    void* m_handle;
    bool m_ready = false;
};

/* Waits until that part of the screen looks as it must. */
inline testing::AssertionResult becomes(const XClient& client, int x, int y, const Picture& wanted,
                                        int tolerance) {
    testing::AssertionResult result = testing::AssertionFailure();
    eventually(
        [&] {
            result = alike(client.screenshot(x, y, wanted.width, wanted.height), wanted, tolerance);
            return static_cast<bool>(result);
        },
        std::chrono::seconds(3));
    return result;
}

} // namespace kolt::tests

#endif
