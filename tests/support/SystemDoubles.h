// What tests want to fail: the free space of a file system, the making of a thread, and memory.
#pragma once

#include <cstddef>
#include <optional>

namespace support {

// What statfs tells from now on, in MiB; nothing for the truth.
void SetFreeMiB(std::optional<unsigned long long> mebibytes);

// The next `count` threads that are made by pthread_create fail, after `after` that succeed.
void FailThreads(int count, int after = 0);

// From now on new (std::nothrow) of an array of at least `bytes` gives null, after `after` that succeed;
// nothing for the truth.
void FailAllocations(std::optional<size_t> bytes, int after = 0);

} // namespace support
