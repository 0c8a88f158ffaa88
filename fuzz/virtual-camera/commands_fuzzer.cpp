#include "virtual-camera/FuzzCommands.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::FuzzVirtualCamera(data, size);
    return 0;
}
