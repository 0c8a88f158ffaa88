#ifndef KOLT_TESTS_VCAM_EVENTUALLY_H
#define KOLT_TESTS_VCAM_EVENTUALLY_H

#include <chrono>
#include <thread>

namespace kolt::test {

// Waits for what a thread of the camera is about to do.
template<class Condition>
bool Eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace kolt::test

#endif
