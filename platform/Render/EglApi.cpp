#include "EglApi.h"

#include <dlfcn.h>
#include <glob.h>

#include <cstring>
#include <initializer_list>

namespace kolt::render {

namespace {

bool hasWord(const char* words, const char* word) {
    const size_t length = std::strlen(word);
    for (const char* at = words; at != nullptr && (at = std::strstr(at, word)) != nullptr; at += length) {
        if ((at == words || at[-1] == ' ') && (at[length] == ' ' || at[length] == '\0')) {
            return true;
        }
    }
    return false;
}

const EglApi* loadOnce() {
    void* egl = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
    void* gles = dlopen("libGLESv2.so.2", RTLD_NOW | RTLD_LOCAL);
    if (egl == nullptr || gles == nullptr) {
        return nullptr;
    }
    const auto getProcAddress = reinterpret_cast<PFNEGLGETPROCADDRESSPROC>(dlsym(egl, "eglGetProcAddress"));
    if (getProcAddress == nullptr) {
        return nullptr;
    }
    static EglApi api;
    const auto find = [&](const char* name) -> void* {
        // The core functions stand in the libraries, the extensions behind eglGetProcAddress.
        if (void* found = dlsym(std::strncmp(name, "egl", 3) == 0 ? egl : gles, name)) {
            return found;
        }
        return reinterpret_cast<void*>(getProcAddress(name));
    };
#define KOLT_FIND(type, name)                                                                                \
    api.name = reinterpret_cast<type>(find(#name));                                                          \
    if (api.name == nullptr) {                                                                               \
        return nullptr;                                                                                      \
    }
    KOLT_EGL_FUNCTIONS(KOLT_FIND)
#undef KOLT_FIND
    const char* extensions = api.eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    return extensions != nullptr && hasWord(extensions, "EGL_EXT_platform_xcb") ? &api : nullptr;
}

} // namespace

const EglApi* EglApi::load() {
    static const EglApi* api = loadOnce();
    return api;
}

bool hasGraphicsDevice() {
    for (const char* pattern : {"/dev/dri/renderD*", "/dev/nvidiactl"}) {
        glob_t found{};
        const bool any = glob(pattern, GLOB_NOSORT, nullptr, &found) == 0 && found.gl_pathc > 0;
        globfree(&found);
        if (any) {
            return true;
        }
    }
    return false;
}

} // namespace kolt::render
