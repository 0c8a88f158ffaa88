#ifndef KOLT_FUZZ_VIRTUAL_CAMERA_FUZZ_COMMANDS_H
#define KOLT_FUZZ_VIRTUAL_CAMERA_FUZZ_COMMANDS_H

#include <cstddef>
#include <cstdint>

namespace fuzz {

// The input is a row of datagrams, each behind one byte for its sender (and the time that passes) and two for
// its length. A camera without sockets answers them. Aborts when an answer is no answer.
void FuzzVirtualCamera(const uint8_t* data, size_t size);

} // namespace fuzz

#endif
