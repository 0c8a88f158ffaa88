// Two calls of the system that tests want to fail: the free space of a file system and the making of a
// thread.
#pragma once

#include <optional>

namespace support {

// What statfs tells from now on, in MiB; nothing for the truth.
void SetFreeMiB(std::optional<unsigned long long> mebibytes);

// The next `count` threads that are made by pthread_create fail, after `after` that succeed.
void FailThreads(int count, int after = 0);

} // namespace support
