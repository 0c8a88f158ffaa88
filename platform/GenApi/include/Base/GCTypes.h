#pragma once
/// What every header of the two GenICam libraries needs: fixed-width integers under their plain names and the
/// mark of what the libraries export.
#include <cstdint>

#define GCBASE_API __attribute__((visibility("default")))
#define GENAPI_API __attribute__((visibility("default")))

using std::int32_t;
using std::int64_t;
using std::uint16_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;

namespace GenICam_3_0 {

struct Version_t {
    uint16_t Major = 0;
    uint16_t Minor = 0;
    uint16_t SubMinor = 0;
};

} // namespace GenICam_3_0

namespace GenICam = GenICam_3_0;
