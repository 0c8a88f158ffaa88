/*
 * The contract with libOVRender.so: drawing pictures into a native X11 window.
 *
 * Results: 1 for success, 0 for failure (the reverse of the other libraries). A call that is refused for
 * its arguments has changed nothing. A handle that is null, foreign or already destroyed gives 0.
 *
 * Threads: all calls may be made from any thread, also for one handle at a time from several. The library
 * draws on a thread and an X connection of its own (to $DISPLAY) and never calls the program's toolkit.
 *
 * The window stays the caller's, who may resize, cover, hide, re-parent or destroy it at any moment, also
 * during a drawing. The library draws the newest picture again by itself when the window has been uncovered
 * or has changed its size; it selects Expose and StructureNotify there, for its own connection only. OpenGL
 * adds a child window that takes no input. Nothing of this is left once the port or the handle has gone.
 *
 * Order of calls: VR_CreateHandle, VR_Init, VR_AddSubPort; then VR_UpdateFrameData and VR_Display for each
 * picture, the other calls whenever they are wanted; VR_DestroyHandle.
 */
#ifndef OV_RENDER_H
#define OV_RENDER_H

#include "OvLayout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What VR_UpdateFrameData brings: one byte a pixel, or three (red, green, blue). Rows have no padding. */
typedef enum tagVRPixelFormat { VR_PIXEL_RGB8 = 0x2000, VR_PIXEL_MONO8 = 0x40000 } tagVRPixelFormat;

/* OpenGL is used on a graphics card only; where there is none, software draws with either value. */
typedef enum tagVRRenderEngine { VR_ENGINE_OPENGL = 1, VR_ENGINE_SOFTWARE = 2 } tagVRRenderEngine;

/*
 * Fractions of the picture or of the window: 0.0 is the outer edge of its first pixel (top, left), 1.0 the
 * outer edge of its last (bottom, right). The full rectangle is 0, 1, 0, 1. Values beyond 0..1 are allowed
 * and reach beyond the picture or the window. Refused: a null pointer, a value that is not finite or beyond
 * +-1e6, top not above bottom, left not before right (so nothing is mirrored).
 */
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
    float angle; /* degrees, counter-clockwise as seen by the viewer; any size, also below 0 */
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

/*
 * Comes after each VR_Display that drew, before it returns, on its thread and with no lock held, so it may
 * make any call, VR_DestroyHandle among them. Arguments: user; the port; the mode (1); the window's number as
 * a pointer, which is not to be followed; the window's width and height in pixels. The library's own
 * redrawing doesn't call it.
 */
typedef void (*VRDrawCallBack)(void* user, uint32_t port, uint32_t mode, void* window, uint32_t width,
                               uint32_t height);

/* Null without memory. The handle is the caller's to destroy. */
void* VR_CreateHandle(void);

/*
 * Ends all drawing, waits for the calls that are under way with this handle (not when called inside a
 * callback, for that would be waiting for itself) and frees everything. Where the X server hangs it
 * takes some 3 s.
 */
uint32_t VR_DestroyHandle(void* handle);

/*
 * Once per handle; every other call but VR_DestroyHandle wants it done. pixelFormat: a tagVRPixelFormat, of
 * all pictures of the handle. engine: a tagVRRenderEngine. count: pictures to keep, 1 to 64, of which only
 * the newest is ever shown. 0 for other values and without an X server; it may then be called again.
 */
int32_t VR_Init(void* handle, uint32_t pixelFormat, uint32_t engine, uint32_t count);

/*
 * A port is a place where the handle's picture is shown, with a rectangle, a turn and a callback of its own;
 * at first the whole picture upright in the whole window. port: any number, at most 64 of them at a time.
 * nativeWindow: an X11 window number, or 0 to name it later; the window may have any size and need not be
 * visible. A port that is there already keeps its settings and takes the window.
 */
int32_t VR_AddSubPort(void* handle, uint64_t nativeWindow, uint32_t port, uint32_t zero);

/* Forgets the port and lets go of its window: afterwards nothing is drawn there, and what stands there stays
 * until its owner draws over it. */
int32_t VR_DelSubPort(void* handle, uint32_t port);

/* With OpenGL each drawing waits for the period-th vertical retrace after the one before (0, as at first: not
 * at all); software doesn't wait. */
int32_t VR_SetVerticalSyncPeriod(void* handle, uint32_t port, uint32_t period);

/* mode: 1. The callback may not be null; it replaces the port's former one. */
int32_t VR_SetCallBack(void* handle, uint32_t port, uint32_t mode, VRDrawCallBack callback, void* user);

/*
 * Makes this the handle's newest picture, for all its ports. Takes the pixels over during the call: width *
 * height * (1 or 3) bytes, top row first, at most 2^20 pixels a side and 4 GiB. The size may differ from the
 * last picture's. Never waits for the X server. Shown by the next VR_Display.
 */
int32_t VR_UpdateFrameData(void* handle, const uint8_t* pixels, uint32_t width, uint32_t height,
                           uint32_t zero);

/*
 * Draws the newest picture and the background around it (#14181D) over the whole window. nativeWindow becomes
 * the port's window, also when the drawing fails; 0 means the one that it has. 1 when the drawing was handed
 * to the X server: a window that dies at that moment is noticed by the next call. 0 without a picture or a
 * window, for a window that doesn't exist or isn't of true colour, and when the server is gone or doesn't
 * answer within 3 s.
 *
 * Shown at its size or larger, the picture keeps its pixels: a window pixel shows the picture pixel under its
 * centre. Shown smaller, it shows the mean of what it covers.
 */
int32_t VR_Display(void* handle, uint32_t port, uint64_t nativeWindow);

/*
 * The part of the window that the picture fills, as the viewer sees the window, whatever the turn. Its edges
 * go to the nearest edge between pixels. The rest is background. Takes effect at the next drawing, like the
 * two calls below.
 */
int32_t VR_WndResolutionChange(void* handle, uint32_t port, const tagVRRectF* destination);

/*
 * The part of the picture that is shown, in the picture's own orientation, before any turn; and where in the
 * window, as above. The source, turned, fills the destination: keeping the aspect ratio is the caller's
 * business. Where the source reaches beyond the picture there is background.
 */
int32_t VR_SetDisplayRect(void* handle, uint32_t port, const tagVRRectF* source,
                          const tagVRRectF* destination);

/*
 * Turns the picture by record->axes[0].angle: +90 brings its top edge to the left. Only quarter turns are
 * drawn: the angle goes to the nearest one, half-way to the larger angle. The axis is the viewer's line of
 * sight, x and y 0; z > 0 points at the viewer, z < 0 reverses the direction. The record is read during the
 * call. 0 for a null record or block, a count of 0, another axis, an angle that is not finite.
 */
int32_t VR_Rotate(void* handle, uint32_t port, const tagVRRotation* record);

#ifdef __cplusplus
}
#endif

#endif
