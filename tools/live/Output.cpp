#include "Output.h"

#include <cstdio>

namespace live {

bool Say(const std::string& text) {
    const bool written = std::fputs((text + "\n").c_str(), stdout) >= 0;
    return std::fflush(stdout) == 0 && written;
}

void Complain(const std::string& text) {
    std::fflush(stdout);
    std::fputs(("kolt_live: " + text + "\n").c_str(), stderr);
}

} // namespace live
