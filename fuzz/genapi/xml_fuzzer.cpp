#include "genapi/FuzzXml.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzXml(data, size);
    return 0;
}
