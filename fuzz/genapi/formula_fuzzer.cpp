#include "genapi/FuzzFormula.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzFormula(data, size);
    return 0;
}
