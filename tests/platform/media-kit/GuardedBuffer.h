#ifndef TESTS_MEDIA_KIT_GUARDED_BUFFER_H
#define TESTS_MEDIA_KIT_GUARDED_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <new>
#include <sys/mman.h>

/*
 * Memory between two pages that nobody may touch. Place() gives a block that ends right before the second
 * one, or begins right after the first one: an access outside on that side ends the test with a fault, with
 * or without a sanitizer.
 */
class GuardedBuffer {
public:
    explicit GuardedBuffer(std::size_t largest) : room_((largest + kPage - 1) / kPage * kPage + kPage) {
        void* const start =
            mmap(nullptr, room_ + 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (start == MAP_FAILED) {
            throw std::bad_alloc();
        }
        start_ = static_cast<std::uint8_t*>(start);
        mprotect(start_, kPage, PROT_NONE);
        mprotect(start_ + kPage + room_, kPage, PROT_NONE);
    }
    ~GuardedBuffer() { munmap(start_, room_ + 2 * kPage); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    std::uint8_t* AtEnd(std::size_t size) const { return start_ + kPage + room_ - size; }
    std::uint8_t* AtStart() const { return start_ + kPage; }
    std::uint8_t* Place(bool atEnd, std::size_t size) const { return atEnd ? AtEnd(size) : AtStart(); }

private:
    static constexpr std::size_t kPage = 4096;
    std::size_t room_;
    std::uint8_t* start_ = nullptr;
};

#endif
