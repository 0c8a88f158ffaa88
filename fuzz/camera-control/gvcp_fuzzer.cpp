#include "camera-control/FuzzFind.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzGvcp(data, size);
    return 0;
}
