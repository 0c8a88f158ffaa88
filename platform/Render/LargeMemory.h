/*
 * Zeroed memory for pictures, at the start of a page, of huge pages where the system has them: a picture goes
 * through megabytes once, and finding each of their small pages costs about as much as a tenth of that.
 */
#ifndef KOLT_RENDER_LARGE_MEMORY_H
#define KOLT_RENDER_LARGE_MEMORY_H

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kolt::render {

class LargeMemory {
public:
    LargeMemory() = default;
    /* data() is null where there is not so much memory. */
    explicit LargeMemory(size_t size);

    uint8_t* data() const { return m_memory.get(); }
    size_t size() const { return m_size; }

private:
    struct Unmap {
        Unmap() : mapped(0) {}
        explicit Unmap(size_t bytes) : mapped(bytes) {}
        size_t mapped;
        void operator()(uint8_t* memory) const;
    };
    size_t m_size = 0;
    std::unique_ptr<uint8_t, Unmap> m_memory;
};

} // namespace kolt::render

#endif
