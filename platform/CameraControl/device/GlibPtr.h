// Owners for what GLib hands out.
#ifndef KOLT_CAMERA_CONTROL_GLIB_PTR_H
#define KOLT_CAMERA_CONTROL_GLIB_PTR_H

#include <memory>

#include <glib-object.h>

namespace kolt::cc {

struct GObjectUnref {
    void operator()(void* object) const { g_object_unref(object); }
};
template<class T>
using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

// The out-parameter of a GLib call: pass out(), then look at get().
class GErrorHolder {
public:
    GErrorHolder() = default;
    ~GErrorHolder() { g_clear_error(&error_); }
    GErrorHolder(const GErrorHolder&) = delete;
    GErrorHolder& operator=(const GErrorHolder&) = delete;

    GError** out() {
        g_clear_error(&error_);
        return &error_;
    }
    const GError* get() const { return error_; }
    explicit operator bool() const { return error_ != nullptr; }
    const char* text() const { return error_ != nullptr ? error_->message : ""; }

private:
    GError* error_ = nullptr;
};

} // namespace kolt::cc

#endif
