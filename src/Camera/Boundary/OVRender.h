/*
 * The contract with libOVRender.so: drawing pictures into a native X11 window.
 *
 * Convention: 1 for success, 0 for failure (the reverse of the other libraries). All calls may be made from
 * any thread, also for one handle at a time from several; the window may be resized, covered, re-parented or
 * destroyed by its owner at any moment.
 */
#ifndef OV_RENDER_H
#define OV_RENDER_H

#include "OvLayout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What VR_UpdateFrameData brings: one byte a pixel, or three (red, green, blue). Rows have no padding. */
typedef enum tagVRPixelFormat { VR_PIXEL_RGB8 = 0x2000, VR_PIXEL_MONO8 = 0x40000 } tagVRPixelFormat;

typedef enum tagVRRenderEngine { VR_ENGINE_OPENGL = 1, VR_ENGINE_SOFTWARE = 2 } tagVRRenderEngine;

/* Fractions of the picture or of the window, 0.0 to 1.0. The full rectangle is 0, 1, 0, 1. */
typedef struct tagVRRectF {
    float top;
    float bottom;
    float left;
    float right;
} tagVRRectF;

typedef struct tagVRColor {
    float red;
    float green;
    float blue;
    float alpha;
} tagVRColor;

typedef struct tagVRAxis {
    float x;
    float y;
    float z;
    float angle; /* degrees, counter-clockwise as seen by the viewer */
} tagVRAxis;

typedef struct tagVRRotation {
    const tagVRAxis* axes; /* points at `axis` below, or at a block of the caller's */
    uint32_t axisCount;    /* always 1 */
    uint32_t padding;
    tagVRAxis axis;
} tagVRRotation;

OV_SIZE(tagVRRectF, 16);
OV_AT(tagVRRectF, top, 0, top);
OV_AT(tagVRRectF, bottom, 4, bottom);
OV_AT(tagVRRectF, left, 8, left);
OV_AT(tagVRRectF, right, 12, right);
OV_SIZE(tagVRColor, 16);
OV_AT(tagVRColor, red, 0, red);
OV_AT(tagVRColor, green, 4, green);
OV_AT(tagVRColor, blue, 8, blue);
OV_AT(tagVRColor, alpha, 12, alpha);
OV_SIZE(tagVRRotation, 32);
OV_AT(tagVRRotation, axes, 0, axes);
OV_AT(tagVRRotation, axisCount, 8, count);
OV_AT(tagVRRotation, axis, 16, axis);
OV_AT(tagVRRotation, axis.angle, 28, angle);

typedef void (*VRDrawCallBack)(void* user, uint32_t, uint32_t, void*, uint32_t, uint32_t);

void* VR_CreateHandle(void);
uint32_t VR_DestroyHandle(void* handle);
int32_t VR_Init(void* handle, uint32_t pixelFormat, uint32_t engine, uint32_t count);
int32_t VR_AddSubPort(void* handle, uint64_t nativeWindow, uint32_t port, uint32_t zero);
int32_t VR_DelSubPort(void* handle, uint32_t port);
int32_t VR_SetVerticalSyncPeriod(void* handle, uint32_t port, uint32_t period);
int32_t VR_SetCallBack(void* handle, uint32_t port, uint32_t mode, VRDrawCallBack callback, void* user);

/* Takes the pixels over during the call. */
int32_t VR_UpdateFrameData(void* handle, const uint8_t* pixels, uint32_t width, uint32_t height,
                           uint32_t zero);

/* Presents the newest frame. */
int32_t VR_Display(void* handle, uint32_t port, uint64_t nativeWindow);

/* The part of the window that is drawn into. */
int32_t VR_WndResolutionChange(void* handle, uint32_t port, const tagVRRectF* destination);

/* The part of the picture that is shown, and where in the window. */
int32_t VR_SetDisplayRect(void* handle, uint32_t port, const tagVRRectF* source,
                          const tagVRRectF* destination);

int32_t VR_Rotate(void* handle, uint32_t port, const tagVRRotation* record);

#ifdef __cplusplus
}
#endif

#endif
