/*
 * For the sanitizers only: Mesa 22.3 leaves the error to a question about the size of a window that has gone
 * to nobody, 36 bytes each, and the report of the leak names only libxcb. Whoever gets no reply gets no error
 * either.
 */
#include <dlfcn.h>
#include <xcb/xcb.h>

#include <cstdlib>

extern "C" __attribute__((visibility("default"))) xcb_get_geometry_reply_t*
xcb_get_geometry_reply(xcb_connection_t* connection, xcb_get_geometry_cookie_t cookie,
                       xcb_generic_error_t** error) {
    using Function = decltype(&xcb_get_geometry_reply);
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "xcb_get_geometry_reply"));
    xcb_get_geometry_reply_t* reply = original(connection, cookie, error);
    if (reply == nullptr && error != nullptr) {
        std::free(*error);
        *error = nullptr;
    }
    return reply;
}
