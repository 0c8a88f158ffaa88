// What was received while finding cameras and thrown away, by reason.
#ifndef KOLT_CAMERA_CONTROL_DROP_COUNTERS_H
#define KOLT_CAMERA_CONTROL_DROP_COUNTERS_H

#include <cstdint>

#include "find/GvcpCodec.h"

namespace kolt::cc {

struct DropCounters {
    std::uint64_t tooShort = 0;
    std::uint64_t wrongLength = 0;
    std::uint64_t wrongCommand = 0;
    std::uint64_t wrongId = 0;
    std::uint64_t wrongSource = 0; // from another address or port than it must come from
    std::uint64_t errorStatus = 0; // discovery answered with an error
    std::uint64_t flood = 0;       // beyond what one call takes in

    void count(Verdict verdict);
    std::uint64_t total() const {
        return tooShort + wrongLength + wrongCommand + wrongId + wrongSource + errorStatus + flood;
    }
    DropCounters& operator+=(const DropCounters& other);
};

} // namespace kolt::cc

#endif
