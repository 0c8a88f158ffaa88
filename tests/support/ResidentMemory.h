// What this process holds in memory, for tests that look for growth.
#pragma once

#include <fstream>
#include <malloc.h>
#include <string>

namespace support {

// MiB in use, without what the allocator only keeps for the next request; 0 when the system doesn't tell.
inline double ResidentMiB() {
    malloc_trim(0);
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stod(line.substr(6)) / 1024;
    return 0;
}

} // namespace support
