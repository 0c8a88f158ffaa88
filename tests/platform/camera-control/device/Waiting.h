// Waiting and measuring in tests.
#ifndef KOLT_TESTS_CAMERA_CONTROL_WAITING_H
#define KOLT_TESTS_CAMERA_CONTROL_WAITING_H

#include <chrono>
#include <cstddef>
#include <functional>

namespace kolt::test {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Runs until true, at most for the deadline. For what can't be waited for otherwise.
bool eventually(const std::function<bool()>& condition, milliseconds deadline = milliseconds(20000));

double millisecondsSince(Clock::time_point begun);

// What the process holds now.
std::size_t threadCount();
std::size_t descriptorCount();
std::size_t residentKilobytes();

} // namespace kolt::test

#endif
