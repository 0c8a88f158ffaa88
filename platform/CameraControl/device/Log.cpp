#include "device/Log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>

#include <glib.h>

namespace kolt::cc {

namespace {

void ignoreMessage(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

} // namespace

LogLevel parseLogLevel(const char* word) {
    if (word == nullptr) {
        return LogLevel::off;
    }
    const std::string_view text(word);
    if (text == "error") {
        return LogLevel::error;
    }
    if (text == "info") {
        return LogLevel::info;
    }
    return text == "debug" ? LogLevel::debug : LogLevel::off;
}

LogLevel logLevel() {
    static const LogLevel level = parseLogLevel(std::getenv("OV_CC_LOG"));
    return level;
}

void quietTransportLibraries() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (logLevel() == LogLevel::debug) {
            return;
        }
        // Aravis is compiled without a log domain of its own in places, so the default domain of criticals
        // that it raises through GObject's checks is silenced by name only: a program's own messages stay.
        const auto levels = static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING |
                                                        G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO);
        for (const char* domain : {"Aravis", "Arv"}) {
            g_log_set_handler(domain, levels, ignoreMessage, nullptr);
        }
    });
}

Logger::Logger(bool on, std::string_view name) : on_(on) {
    std::memcpy(name_, name.data(), std::min(name.size(), sizeof name_ - 1));
}

void Logger::operator()(LogLevel level, const char* format, ...) const {
    if (!wants(level)) {
        return;
    }
    char text[480];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    // One call, so that lines of several threads don't mix.
    std::fprintf(stderr, "[OvCameraControl %02d:%02d:%02d.%03ld] %s: %s\n", local.tm_hour, local.tm_min,
                 local.tm_sec, now.tv_nsec / 1000000, name_, text);
}

} // namespace kolt::cc
