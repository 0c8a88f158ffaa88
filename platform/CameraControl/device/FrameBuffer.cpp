#include "device/FrameBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>

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

void FrameMemory::Free::operator()(std::uint8_t* memory) const {
    std::free(memory);
}

FrameMemory::FrameMemory(std::size_t size) : size_(size) {
    constexpr std::size_t kLine = 64;
    const std::size_t rounded = (std::max<std::size_t>(size, 1) + kLine - 1) / kLine * kLine;
    if (rounded >= size) {
        memory_.reset(static_cast<std::uint8_t*>(std::aligned_alloc(kLine, rounded)));
    }
}

} // namespace kolt::cc
