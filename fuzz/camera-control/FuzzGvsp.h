// What the fuzzer of stream packets tries.
#ifndef KOLT_FUZZ_CAMERA_GVSP_H
#define KOLT_FUZZ_CAMERA_GVSP_H

#include <cstddef>
#include <cstdint>

namespace fuzz {

// The input is a stream: how its frames are, then packets, made by hand or raw, and pauses.
void FuzzGvsp(const std::uint8_t* data, std::size_t size);

} // namespace fuzz

#endif
