// The library's own log: lines on the standard error stream, off unless asked for.
//
// The environment variable OV_CC_LOG chooses: "error", "info" (opening, closing, streams, losses), "debug"
// (everything, also what Aravis and GLib say). Anything else, or nothing: silence. Read once, at the first
// use.
#ifndef KOLT_CAMERA_CONTROL_LOG_H
#define KOLT_CAMERA_CONTROL_LOG_H

#include <string_view>

namespace kolt::cc {

enum class LogLevel { off = 0, error = 1, info = 2, debug = 3 };

// off for null and for words that it does not know.
LogLevel parseLogLevel(const char* word);

LogLevel logLevel();

// Keeps messages of GLib and Aravis (their log domains) from the terminal unless OV_CC_LOG is "debug". Once
// per process; later calls do nothing.
void quietTransportLibraries();

// What one handle says. A handle made without log has a silent one.
class Logger {
public:
    Logger() = default; // silent
    Logger(bool on, std::string_view name);

    bool wants(LogLevel level) const { return on_ && level <= logLevel(); }

    __attribute__((format(printf, 3, 4))) void operator()(LogLevel level, const char* format, ...) const;

private:
    bool on_ = false;
    char name_[24] = {};
};

} // namespace kolt::cc

#endif
