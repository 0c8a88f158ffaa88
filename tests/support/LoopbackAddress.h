// Loopback addresses that no other test process uses at the same time, for virtual cameras.
#ifndef KOLT_TESTS_SUPPORT_LOOPBACKADDRESS_H
#define KOLT_TESTS_SUPPORT_LOOPBACKADDRESS_H

#include <string>
#include <unistd.h>

namespace kolt::test {

// `index` is 0 to 249. The address depends on the process, so tests run beside one another.
inline std::string LoopbackAddress(unsigned index) {
    const unsigned process = static_cast<unsigned>(getpid()) % 62500;
    return "127." + std::to_string(2 + process / 250) + '.' + std::to_string(1 + process % 250) + '.' +
           std::to_string(1 + index);
}

} // namespace kolt::test

#endif
