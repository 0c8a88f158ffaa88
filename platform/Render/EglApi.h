/*
 * EGL and OpenGL ES, loaded at run time: a machine without them draws in software, and the library carries no
 * dependency on a graphics driver.
 */
#ifndef KOLT_RENDER_EGL_API_H
#define KOLT_RENDER_EGL_API_H

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES3/gl3.h>

namespace kolt::render {

#define KOLT_EGL_FUNCTIONS(X)                                                                                \
    X(PFNEGLQUERYSTRINGPROC, eglQueryString)                                                                 \
    X(PFNEGLINITIALIZEPROC, eglInitialize)                                                                   \
    X(PFNEGLTERMINATEPROC, eglTerminate)                                                                     \
    X(PFNEGLBINDAPIPROC, eglBindAPI)                                                                         \
    X(PFNEGLCHOOSECONFIGPROC, eglChooseConfig)                                                               \
    X(PFNEGLGETCONFIGATTRIBPROC, eglGetConfigAttrib)                                                         \
    X(PFNEGLCREATECONTEXTPROC, eglCreateContext)                                                             \
    X(PFNEGLDESTROYCONTEXTPROC, eglDestroyContext)                                                           \
    X(PFNEGLDESTROYSURFACEPROC, eglDestroySurface)                                                           \
    X(PFNEGLMAKECURRENTPROC, eglMakeCurrent)                                                                 \
    X(PFNEGLSWAPBUFFERSPROC, eglSwapBuffers)                                                                 \
    X(PFNEGLSWAPINTERVALPROC, eglSwapInterval)                                                               \
    X(PFNEGLRELEASETHREADPROC, eglReleaseThread)                                                             \
    X(PFNEGLGETPLATFORMDISPLAYEXTPROC, eglGetPlatformDisplayEXT)                                             \
    X(PFNEGLCREATEPLATFORMWINDOWSURFACEEXTPROC, eglCreatePlatformWindowSurfaceEXT)                           \
    X(PFNGLACTIVETEXTUREPROC, glActiveTexture)                                                               \
    X(PFNGLATTACHSHADERPROC, glAttachShader)                                                                 \
    X(PFNGLBINDTEXTUREPROC, glBindTexture)                                                                   \
    X(PFNGLCLEARPROC, glClear)                                                                               \
    X(PFNGLCLEARCOLORPROC, glClearColor)                                                                     \
    X(PFNGLCOMPILESHADERPROC, glCompileShader)                                                               \
    X(PFNGLCREATEPROGRAMPROC, glCreateProgram)                                                               \
    X(PFNGLCREATESHADERPROC, glCreateShader)                                                                 \
    X(PFNGLDELETEPROGRAMPROC, glDeleteProgram)                                                               \
    X(PFNGLDELETESHADERPROC, glDeleteShader)                                                                 \
    X(PFNGLDELETETEXTURESPROC, glDeleteTextures)                                                             \
    X(PFNGLDISABLEPROC, glDisable)                                                                           \
    X(PFNGLDRAWARRAYSPROC, glDrawArrays)                                                                     \
    X(PFNGLGENTEXTURESPROC, glGenTextures)                                                                   \
    X(PFNGLGETERRORPROC, glGetError)                                                                         \
    X(PFNGLGETINTEGERVPROC, glGetIntegerv)                                                                   \
    X(PFNGLGETPROGRAMIVPROC, glGetProgramiv)                                                                 \
    X(PFNGLGETSTRINGPROC, glGetString)                                                                       \
    X(PFNGLGETUNIFORMLOCATIONPROC, glGetUniformLocation)                                                     \
    X(PFNGLLINKPROGRAMPROC, glLinkProgram)                                                                   \
    X(PFNGLPIXELSTOREIPROC, glPixelStorei)                                                                   \
    X(PFNGLSHADERSOURCEPROC, glShaderSource)                                                                 \
    X(PFNGLTEXIMAGE2DPROC, glTexImage2D)                                                                     \
    X(PFNGLTEXPARAMETERIPROC, glTexParameteri)                                                               \
    X(PFNGLTEXSUBIMAGE2DPROC, glTexSubImage2D)                                                               \
    X(PFNGLUNIFORM1IPROC, glUniform1i)                                                                       \
    X(PFNGLUNIFORM4FPROC, glUniform4f)                                                                       \
    X(PFNGLUNIFORM4IPROC, glUniform4i)                                                                       \
    X(PFNGLUSEPROGRAMPROC, glUseProgram)                                                                     \
    X(PFNGLVIEWPORTPROC, glViewport)

/* Every function is there. Any thread; what the functions allow is up to EGL. */
struct EglApi {
#define KOLT_DECLARE(type, name) type name = nullptr;
    KOLT_EGL_FUNCTIONS(KOLT_DECLARE)
#undef KOLT_DECLARE

    /* Null when the machine has no EGL for windows of an xcb connection. Loaded once, never unloaded: drivers
       leave threads and thread-local data behind. */
    static const EglApi* load();
};

/* The machine has a graphics device that a hardware driver could use. */
bool hasGraphicsDevice();

} // namespace kolt::render

#endif
