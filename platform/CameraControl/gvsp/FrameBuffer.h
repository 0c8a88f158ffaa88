// The memory of one frame inside the library, and knowing afterwards which parts of it were really received.
//
// Aravis fills a buffer packet by packet and tells of a failed frame only that it failed. So that the bytes
// of packets that did not come are neither counted wrongly nor handed out as what an earlier frame left
// there, a mark is written at the start of each packet's place before the buffer goes to the stream: a place
// that still carries its mark was not filled.
#ifndef KOLT_CAMERA_CONTROL_FRAME_BUFFER_H
#define KOLT_CAMERA_CONTROL_FRAME_BUFFER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace kolt::cc {

// Random, one for the process: no picture carries it but by a chance of 2^-128.
using FrameMark = std::array<std::uint8_t, 16>;
const FrameMark& processFrameMark();

// Places of `place` bytes (the last may be shorter) over a stretch of memory. Stateless; all lengths in
// bytes.
class MarkedPlaces {
public:
    MarkedPlaces(std::size_t place, const FrameMark& mark) : place_(place), mark_(mark) {}

    std::size_t place() const { return place_; }
    // Places that `length` bytes take.
    std::size_t count(std::size_t length) const { return (length + place_ - 1) / place_; }
    void write(std::uint8_t* memory, std::size_t length) const;
    bool isMarked(const std::uint8_t* memory, std::size_t length, std::size_t index) const;
    std::size_t countMarked(const std::uint8_t* memory, std::size_t length) const;
    // Copies the filled places; the others become zero in the destination.
    void copyFilled(std::uint8_t* destination, const std::uint8_t* memory, std::size_t length) const;

private:
    std::size_t place_;
    FrameMark mark_;
};

// Plain owned memory at the start of a page, of huge pages where the system has them: packets are scattered
// over megabytes, and each copy of a frame goes through all of them.
class FrameMemory {
public:
    // data() is null where there is not so much memory.
    explicit FrameMemory(std::size_t size);

    std::uint8_t* data() const { return memory_.get(); }
    std::size_t size() const { return size_; }

private:
    struct Unmap {
        std::size_t mapped;
        void operator()(std::uint8_t* memory) const;
    };
    std::size_t size_;
    std::unique_ptr<std::uint8_t, Unmap> memory_;
};

} // namespace kolt::cc

#endif
