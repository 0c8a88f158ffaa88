/*
 * OpenGL ES 3 on a connection: the display, one context and the program that draws pictures, shared by all
 * windows of a handle. Belongs to the render thread, which has the context current in between as well.
 */
#ifndef KOLT_RENDER_GL_CONTEXT_H
#define KOLT_RENDER_GL_CONTEXT_H

#include "EglApi.h"
#include "Geometry.h"
#include "Resampler.h"
#include "XConnection.h"

#include <memory>

namespace kolt::render {

class GlContext {
public:
    /* Null without EGL or OpenGL ES 3 for this screen. The connection outlives the context. */
    static std::unique_ptr<GlContext> create(XConnection& connection);
    ~GlContext();
    GlContext(const GlContext&) = delete;
    GlContext& operator=(const GlContext&) = delete;

    const EglApi& api() const { return m_api; }
    /* Of the windows that surfaces can be made of. */
    xcb_visualid_t visual() const { return m_visual; }
    int depth() const { return m_depth; }

    EGLSurface createSurface(xcb_window_t window);
    void destroySurface(EGLSurface surface);
    /* False when the window is gone. */
    bool makeCurrent(EGLSurface surface);
    bool swap(EGLSurface surface, uint32_t syncPeriod);

    /* The following want a current surface. */
    /* The driver works on the processor, which the software engine does better. */
    bool isEmulated() const;
    /* Once per context. False when the driver refuses. */
    bool prepare();
    /* Makes the frame the texture. False when it is too large for the driver. */
    bool upload(const FrameView& frame, uint64_t number);
    void drawBackground(Size window);
    void draw(const Plan& plan, Size window);

private:
    GlContext(const EglApi& api, XConnection& connection, EGLDisplay display);

    bool chooseConfig();
    GLuint compile(GLenum kind, const char* source);

    const EglApi& m_api;
    XConnection& m_connection;
    EGLDisplay m_display;
    EGLConfig m_config = nullptr;
    EGLContext m_context = EGL_NO_CONTEXT;
    EGLSurface m_current = EGL_NO_SURFACE;
    xcb_visualid_t m_visual = 0;
    int m_depth = 0;
    GLint m_largestTexture = 0;
    GLuint m_program = 0;
    GLuint m_texture = 0;
    Size m_textureSize;
    int m_textureChannels = 0;
    uint64_t m_textureNumber = 0; /* of the frame in the texture; 0 for none */
    GLint m_columns = -1;         /* this and the following: places of the program's parameters */
    GLint m_rows = -1;
    GLint m_counts = -1;
    GLint m_box = -1;
    GLint m_grey = -1;
};

} // namespace kolt::render

#endif
