// Numbers in network byte order, as GVCP and GVSP carry them.
#ifndef VCAM_PROTOCOL_WIRE_H
#define VCAM_PROTOCOL_WIRE_H

#include <cstdint>
#include <vector>

namespace vcam {

using Bytes = std::vector<uint8_t>;

inline uint16_t Get16(const uint8_t* from) {
    return static_cast<uint16_t>((from[0] << 8) | from[1]);
}

inline uint32_t Get32(const uint8_t* from) {
    return (uint32_t{from[0]} << 24) | (uint32_t{from[1]} << 16) | (uint32_t{from[2]} << 8) | from[3];
}

inline uint64_t Get64(const uint8_t* from) {
    return (uint64_t{Get32(from)} << 32) | Get32(from + 4);
}

inline void Put16(uint8_t* to, uint16_t value) {
    to[0] = static_cast<uint8_t>(value >> 8);
    to[1] = static_cast<uint8_t>(value);
}

inline void Put32(uint8_t* to, uint32_t value) {
    Put16(to, static_cast<uint16_t>(value >> 16));
    Put16(to + 2, static_cast<uint16_t>(value));
}

inline void Put64(uint8_t* to, uint64_t value) {
    Put32(to, static_cast<uint32_t>(value >> 32));
    Put32(to + 4, static_cast<uint32_t>(value));
}

inline void Append32(Bytes& to, uint32_t value) {
    to.resize(to.size() + 4);
    Put32(to.data() + to.size() - 4, value);
}

} // namespace vcam

#endif
