#include "camera-control/FuzzFind.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzRecords(data, size);
    return 0;
}
