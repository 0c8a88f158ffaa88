#include "gvsp/FrameBuffer.h"

#include <algorithm>
#include <cstring>
#include <random>

#include <sys/mman.h>

namespace kolt::cc {

const FrameMark& processFrameMark() {
    static const FrameMark mark = [] {
        std::random_device source;
        FrameMark made{};
        for (std::uint8_t& byte : made) {
            byte = static_cast<std::uint8_t>(source());
        }
        return made;
    }();
    return mark;
}

void MarkedPlaces::write(std::uint8_t* memory, std::size_t length) const {
    for (std::size_t at = 0; at < length; at += place_) {
        std::memcpy(memory + at, mark_.data(), std::min({mark_.size(), length - at, place_}));
    }
}

bool MarkedPlaces::isMarked(const std::uint8_t* memory, std::size_t length, std::size_t index) const {
    const std::size_t at = index * place_;
    return std::memcmp(memory + at, mark_.data(), std::min({mark_.size(), length - at, place_})) == 0;
}

std::size_t MarkedPlaces::countMarked(const std::uint8_t* memory, std::size_t length) const {
    std::size_t marked = 0;
    for (std::size_t index = 0; index < count(length); ++index) {
        marked += isMarked(memory, length, index) ? 1 : 0;
    }
    return marked;
}

void MarkedPlaces::copyFilled(std::uint8_t* destination, const std::uint8_t* memory,
                              std::size_t length) const {
    for (std::size_t index = 0; index < count(length); ++index) {
        const std::size_t at = index * place_;
        const std::size_t bytes = std::min(place_, length - at);
        if (isMarked(memory, length, index)) {
            std::memset(destination + at, 0, bytes);
        } else {
            std::memcpy(destination + at, memory + at, bytes);
        }
    }
}

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

// Bytes of a frame of this size that deserve huge pages: those that they fill by more than half.
std::size_t hugePart(std::size_t size) {
    return (size + kHugePage / 2) / kHugePage * kHugePage;
}

} // namespace

void FrameMemory::Unmap::operator()(std::uint8_t* memory) const {
    munmap(memory, mapped);
}

// Mapped, not allocated: what is freed goes back to the system, and the wish for huge pages comes before the
// first touch.
FrameMemory::FrameMemory(std::size_t size) : size_(size) {
    constexpr std::size_t kMost = std::size_t{1} << 46;
    if (size > kMost) {
        return;
    }
    const std::size_t huge = hugePart(size);
    std::size_t mapped = std::max({size, huge, std::size_t{1}}) + (huge > 0 ? kHugePage : 0);
    void* const start = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) {
        return;
    }
    auto* memory = static_cast<std::uint8_t*>(start);
    if (huge > 0) {
        const std::size_t skip =
            (kHugePage - reinterpret_cast<std::uintptr_t>(start) % kHugePage) % kHugePage;
        if (skip > 0) {
            munmap(memory, skip);
        }
        memory += skip;
        mapped -= skip;
        madvise(memory, huge, MADV_HUGEPAGE); // only a wish
    }
    memory_ = {memory, Unmap{mapped}};
}

} // namespace kolt::cc
