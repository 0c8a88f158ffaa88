#include "LargeMemory.h"

#include <algorithm>

#include <sys/mman.h>

namespace kolt::render {

namespace {
constexpr size_t kHugePage = size_t{2} << 20;
constexpr size_t kMost = size_t{1} << 46;
} // namespace

void LargeMemory::Unmap::operator()(uint8_t* memory) const {
    munmap(memory, mapped);
}

/* Huge pages want their own alignment, so there is room for it in front. What they would fill by less than
   half stays in small ones. */
LargeMemory::LargeMemory(size_t size) {
    if (size > kMost) {
        return;
    }
    const size_t huge = (size + kHugePage / 2) / kHugePage * kHugePage;
    size_t mapped = std::max({size, huge, size_t{1}}) + (huge > 0 ? kHugePage : 0);
    void* const start = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) {
        return;
    }
    auto* memory = static_cast<uint8_t*>(start);
    if (huge > 0) {
        const size_t skip = (kHugePage - reinterpret_cast<uintptr_t>(start) % kHugePage) % kHugePage;
        if (skip > 0) {
            munmap(memory, skip);
        }
        memory += skip;
        mapped -= skip;
        madvise(memory, huge, MADV_HUGEPAGE); // only a wish
    }
    m_size = size;
    m_memory = {memory, Unmap{mapped}};
}

} // namespace kolt::render
