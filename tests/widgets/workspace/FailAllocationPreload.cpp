// Loaded before a program's own libraries: its allocations of exactly $KOLT_FAIL_SIZE bytes fail, as they do
// on a machine without memory.
#include <cstdlib>
#include <new>

static size_t FailingSize() {
    static const char* const size = std::getenv("KOLT_FAIL_SIZE");
    return size ? std::strtoul(size, nullptr, 10) : 0;
}

__attribute__((visibility("default"))) void* operator new(size_t size) {
    void* memory = size == FailingSize() ? nullptr : std::malloc(size ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

__attribute__((visibility("default"))) void* operator new(size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

__attribute__((visibility("default"))) void operator delete(void* memory) noexcept {
    std::free(memory);
}

__attribute__((visibility("default"))) void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
