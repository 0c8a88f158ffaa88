// The program's own operator new, which can be told to fail.
#include "DeviceRecords.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> g_failing{0};

} // namespace

namespace devices {

FailAllocationsOf::FailAllocationsOf(size_t size) {
    g_failing = size;
}

FailAllocationsOf::~FailAllocationsOf() {
    g_failing = 0;
}

} // namespace devices

void* operator new(size_t size) {
    const size_t failing = g_failing;
    void* memory = failing && size == failing ? nullptr : std::malloc(size ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void* operator new(size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
