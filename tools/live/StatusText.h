#ifndef LIVE_STATUS_TEXT_H
#define LIVE_STATUS_TEXT_H

#include <cstdint>
#include <string>

namespace live {

/// A call of the platform libraries that did not succeed.
struct Failure {
    const char* call = nullptr; ///< its name, for example "OV_CC_OpenDevice"
    uint32_t status = 0;        ///< OvStatus.h; 0 for a call that does not tell why

    explicit operator bool() const { return call != nullptr; }
};

/// What a status means, in one sentence.
std::string MeaningOf(uint32_t status);

/// What the person at the keyboard can do about it; empty where nothing sensible can be said.
std::string HintFor(uint32_t status);

/// All of it: the call, the status in hexadecimal, its meaning and, on a line of its own, the hint.
std::string Describe(const Failure& failure);

} // namespace live

#endif
