#include "GlContext.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace kolt::render {

namespace {

/* One triangle that covers the viewport. */
constexpr const char* kVertexShader = R"(#version 300 es
void main() {
    vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    gl_Position = vec4(corner, 0.0, 1.0);
}
)";

/*
 * The plan's arithmetic, the same as in software: a window pixel that is not larger than a picture pixel
 * shows the one under its centre, a larger one the mean of what it covers. columns, rows: origin, step, last
 * pixel, mirrored. box: of the picture in the window, from the lower left; z: transposed.
 */
constexpr const char* kFragmentShader = R"(#version 300 es
precision highp float;
precision highp int;
uniform highp sampler2D picture;
uniform vec4 columns;
uniform vec4 rows;
uniform ivec4 counts;
uniform ivec4 box;
uniform int grey;
out vec4 colour;

const float tie = 1.0 / 256.0;
const float sliver = 1e-3;

void main() {
    ivec2 at = ivec2(gl_FragCoord.xy) - box.xy;
    at.y = box.w - 1 - at.y;
    if (box.z != 0) {
        at = at.yx;
    }
    if (columns.w != 0.0) {
        at.x = counts.x - 1 - at.x;
    }
    if (rows.w != 0.0) {
        at.y = counts.y - 1 - at.y;
    }
    vec2 origin = vec2(columns.x, rows.x);
    vec2 size = vec2(columns.y, rows.y);
    vec2 last = vec2(columns.z, rows.z);
    vec2 low = origin + vec2(at) * size;
    vec2 high = low + size;
    vec2 centre = floor((low + high) * 0.5 + tie);
    vec2 reduced = vec2(greaterThan(size, vec2(1.0)));
    vec2 first = clamp(mix(centre, floor(low + sliver), reduced), vec2(0.0), last);
    vec2 final = clamp(mix(centre, ceil(high - sliver) - 1.0, reduced), first, last);
    low = mix(first, low, reduced);
    high = mix(first + 1.0, high, reduced);
    vec3 sum = vec3(0.0);
    float area = 0.0;
    for (float y = first.y; y <= final.y; y += 1.0) {
        float height = max(min(high.y, y + 1.0) - max(low.y, y), sliver);
        for (float x = first.x; x <= final.x; x += 1.0) {
            float part = height * max(min(high.x, x + 1.0) - max(low.x, x), sliver);
            sum += part * texelFetch(picture, ivec2(int(x), int(y)), 0).rgb;
            area += part;
        }
    }
    sum /= area;
    colour = vec4(grey != 0 ? sum.rrr : sum, 1.0);
}
)";

constexpr int kMostConfigs = 256;

} // namespace

std::unique_ptr<GlContext> GlContext::create(XConnection& connection) {
    const EglApi* api = EglApi::load();
    if (api == nullptr) {
        return nullptr;
    }
    const EGLint screen[] = {EGL_PLATFORM_XCB_SCREEN_EXT, connection.screenNumber(), EGL_NONE};
    const EGLDisplay display = api->eglGetPlatformDisplayEXT(EGL_PLATFORM_XCB_EXT, connection.get(), screen);
    if (display == EGL_NO_DISPLAY) {
        return nullptr;
    }
    if (api->eglInitialize(display, nullptr, nullptr) == EGL_FALSE) {
        return nullptr;
    }
    std::unique_ptr<GlContext> context(new GlContext(*api, connection, display));
    const EGLint version3[] = {EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};
    if (api->eglBindAPI(EGL_OPENGL_ES_API) == EGL_FALSE || !context->chooseConfig()) {
        return nullptr;
    }
    context->m_context = api->eglCreateContext(display, context->m_config, EGL_NO_CONTEXT, version3);
    return context->m_context != EGL_NO_CONTEXT ? std::move(context) : nullptr;
}

GlContext::GlContext(const EglApi& api, XConnection& connection, EGLDisplay display)
    : m_api(api), m_connection(connection), m_display(display) {}

GlContext::~GlContext() {
    // What belongs to the context goes with it.
    m_api.eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (m_context != EGL_NO_CONTEXT) {
        m_api.eglDestroyContext(m_display, m_context);
    }
    m_api.eglTerminate(m_display);
    m_api.eglReleaseThread();
}

bool GlContext::chooseConfig() {
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_WINDOW_BIT,
                             EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_ES3_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_GREEN_SIZE,
                             8,
                             EGL_BLUE_SIZE,
                             8,
                             EGL_NONE};
    std::vector<EGLConfig> configs(kMostConfigs);
    EGLint count = 0;
    if (m_api.eglChooseConfig(m_display, wanted, configs.data(), kMostConfigs, &count) == EGL_FALSE) {
        return false;
    }
    const auto attribute = [this](EGLConfig config, EGLint name) {
        EGLint value = 0;
        m_api.eglGetConfigAttrib(m_display, config, name, &value);
        return value;
    };
    // Eight bits each and nothing else: no alpha that a compositor might see through, no depth or samples to
    // clear.
    const auto cost = [&](EGLConfig config) {
        return attribute(config, EGL_BUFFER_SIZE) + 8 * attribute(config, EGL_ALPHA_SIZE) +
               attribute(config, EGL_DEPTH_SIZE) + attribute(config, EGL_STENCIL_SIZE) +
               100 * attribute(config, EGL_SAMPLES);
    };
    int least = 0;
    for (EGLint i = 0; i < count; ++i) {
        EGLConfig config = configs[static_cast<size_t>(i)];
        const auto visual = static_cast<xcb_visualid_t>(attribute(config, EGL_NATIVE_VISUAL_ID));
        const int depth = m_connection.depthOf(visual);
        if (depth == 0 || attribute(config, EGL_RED_SIZE) != 8) {
            continue;
        }
        if (m_config == nullptr || cost(config) < least) {
            least = cost(config);
            m_config = config;
            m_visual = visual;
            m_depth = depth;
        }
    }
    return m_config != nullptr;
}

EGLSurface GlContext::createSurface(xcb_window_t window) {
    // This entry point takes a pointer to the window's number, unlike the older one.
    return m_api.eglCreatePlatformWindowSurfaceEXT(m_display, m_config, &window, nullptr);
}

void GlContext::destroySurface(EGLSurface surface) {
    if (m_current == surface) {
        // The context stays current: Mesa keeps the buffers of a surface that it was taken from along with
        // the context, megabytes for each window. A driver that can't do without a surface lets go of both.
        if (m_api.eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_context) == EGL_FALSE) {
            m_api.eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        }
        m_current = EGL_NO_SURFACE;
    }
    m_api.eglDestroySurface(m_display, surface);
}

bool GlContext::makeCurrent(EGLSurface surface) {
    if (m_current == surface) {
        return true;
    }
    if (m_api.eglMakeCurrent(m_display, surface, surface, m_context) == EGL_FALSE) {
        m_current = EGL_NO_SURFACE;
        return false;
    }
    m_current = surface;
    return true;
}

bool GlContext::swap(EGLSurface surface, uint32_t syncPeriod) {
    const uint32_t most = 0x7FFFFFFF;
    m_api.eglSwapInterval(m_display, static_cast<EGLint>(std::min(syncPeriod, most)));
    return m_api.eglSwapBuffers(m_display, surface) != EGL_FALSE;
}

bool GlContext::isEmulated() const {
    const auto* name = reinterpret_cast<const char*>(m_api.glGetString(GL_RENDERER));
    if (name == nullptr) {
        return true;
    }
    return std::strstr(name, "llvmpipe") != nullptr || std::strstr(name, "softpipe") != nullptr ||
           std::strstr(name, "swrast") != nullptr || std::strstr(name, "Software Rasterizer") != nullptr;
}

GLuint GlContext::compile(GLenum kind, const char* source) {
    const GLuint shader = m_api.glCreateShader(kind);
    m_api.glShaderSource(shader, 1, &source, nullptr);
    m_api.glCompileShader(shader);
    m_api.glAttachShader(m_program, shader);
    return shader;
}

bool GlContext::prepare() {
    if (m_program != 0) {
        return true;
    }
    m_program = m_api.glCreateProgram();
    const GLuint vertex = compile(GL_VERTEX_SHADER, kVertexShader);
    const GLuint fragment = compile(GL_FRAGMENT_SHADER, kFragmentShader);
    m_api.glLinkProgram(m_program);
    m_api.glDeleteShader(vertex);
    m_api.glDeleteShader(fragment);
    GLint linked = GL_FALSE;
    m_api.glGetProgramiv(m_program, GL_LINK_STATUS, &linked);
    if (linked == GL_FALSE) {
        return false;
    }
    m_columns = m_api.glGetUniformLocation(m_program, "columns");
    m_rows = m_api.glGetUniformLocation(m_program, "rows");
    m_counts = m_api.glGetUniformLocation(m_program, "counts");
    m_box = m_api.glGetUniformLocation(m_program, "box");
    m_grey = m_api.glGetUniformLocation(m_program, "grey");
    m_api.glGetIntegerv(GL_MAX_TEXTURE_SIZE, &m_largestTexture);
    m_api.glGenTextures(1, &m_texture);
    m_api.glActiveTexture(GL_TEXTURE0);
    m_api.glBindTexture(GL_TEXTURE_2D, m_texture);
    m_api.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    m_api.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    m_api.glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    m_api.glDisable(GL_DITHER);
    m_api.glUseProgram(m_program);
    m_api.glUniform1i(m_api.glGetUniformLocation(m_program, "picture"), 0);
    return m_api.glGetError() == GL_NO_ERROR;
}

bool GlContext::upload(const FrameView& frame, uint64_t number) {
    if (m_textureNumber == number) {
        return true;
    }
    if (frame.size.width > m_largestTexture || frame.size.height > m_largestTexture) {
        return false;
    }
    const GLenum format = frame.channels == 3 ? GL_RGB : GL_RED;
    if (frame.size != m_textureSize || frame.channels != m_textureChannels) {
        const GLint internal = frame.channels == 3 ? GL_RGB8 : GL_R8;
        m_api.glTexImage2D(GL_TEXTURE_2D, 0, internal, frame.size.width, frame.size.height, 0, format,
                           GL_UNSIGNED_BYTE, frame.pixels);
    } else {
        m_api.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, frame.size.width, frame.size.height, format,
                              GL_UNSIGNED_BYTE, frame.pixels);
    }
    if (m_api.glGetError() != GL_NO_ERROR) {
        m_textureSize = Size();
        m_textureNumber = 0;
        return false;
    }
    m_textureSize = frame.size;
    m_textureChannels = frame.channels;
    m_textureNumber = number;
    return true;
}

void GlContext::drawBackground(Size window) {
    const auto part = [](uint32_t shift) { return static_cast<float>(kBackground >> shift & 0xFF) / 255.0F; };
    m_api.glViewport(0, 0, window.width, window.height);
    m_api.glClearColor(part(16), part(8), part(0), 1.0F);
    m_api.glClear(GL_COLOR_BUFFER_BIT);
}

void GlContext::draw(const Plan& plan, Size window) {
    const Box box = plan.painted();
    if (box.empty()) {
        return;
    }
    const auto setAxis = [this](GLint uniform, const AxisPlan& axis) {
        m_api.glUniform4f(uniform, static_cast<float>(axis.origin), static_cast<float>(axis.step),
                          static_cast<float>(axis.length - 1), axis.mirrored ? 1.0F : 0.0F);
    };
    setAxis(m_columns, plan.columns);
    setAxis(m_rows, plan.rows);
    m_api.glUniform4i(m_counts, plan.columns.count, plan.rows.count, 0, 0);
    const int bottom = window.height - box.y - box.height; // OpenGL counts from below
    m_api.glUniform4i(m_box, box.x, bottom, plan.transposed ? 1 : 0, box.height);
    m_api.glUniform1i(m_grey, m_textureChannels == 1 ? 1 : 0);
    m_api.glViewport(box.x, bottom, box.width, box.height);
    m_api.glDrawArrays(GL_TRIANGLES, 0, 3);
}

} // namespace kolt::render
