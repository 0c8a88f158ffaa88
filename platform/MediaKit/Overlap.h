#ifndef MEDIA_OVERLAP_H
#define MEDIA_OVERLAP_H

#include <cstddef>
#include <cstdint>

namespace media {

/* Whether two blocks of memory share a byte. */
inline bool Overlap(const std::uint8_t* a, std::size_t lengthA, const std::uint8_t* b, std::size_t lengthB) {
    const auto startA = reinterpret_cast<std::uintptr_t>(a);
    const auto startB = reinterpret_cast<std::uintptr_t>(b);
    return startA < startB + lengthB && startB < startA + lengthA;
}

} // namespace media

#endif
