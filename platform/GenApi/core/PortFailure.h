#pragma once
#include <exception>
#include <string>

namespace genapi {

/// Throws what a port threw anew, with `before` in front of its text. A published exception keeps its class
/// (a class derived from one becomes that one), its source file and line. Of other exceptions std::bad_alloc
/// becomes a BadAllocException, the rest a RuntimeException.
[[noreturn]] void rethrowWith(const std::exception& failure, const std::string& before);

} // namespace genapi
