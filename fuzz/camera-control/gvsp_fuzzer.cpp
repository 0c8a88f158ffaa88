#include "camera-control/FuzzGvsp.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzGvsp(data, size);
    return 0;
}
