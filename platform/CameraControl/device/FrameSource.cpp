#include "device/FrameSource.h"

#include <algorithm>
#include <ctime>

#include <unistd.h>

namespace kolt::cc {

namespace {

// A camera that claims more is broken, or would take the machine's memory.
constexpr std::size_t kLargestFrame = std::size_t{1} << 30;

std::size_t reserveFor(std::size_t payload) {
    constexpr std::size_t kMemory = std::size_t{64} << 20;
    return std::clamp<std::size_t>(kMemory / payload, 2, 24);
}

// Of what the machine has. The buffers asked for are touched at once, and a process that takes more is killed
// instead of being told.
std::uint64_t mostMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long page = sysconf(_SC_PAGESIZE);
    return static_cast<std::uint64_t>(std::max(pages, 1L)) * static_cast<std::uint64_t>(page) / 4 * 3;
}

} // namespace

std::size_t buffersFor(unsigned wanted, std::size_t payload) {
    const bool tooMuch =
        payload == 0 || payload > kLargestFrame || std::uint64_t{wanted} * payload > mostMemory();
    return tooMuch ? 0 : wanted + reserveFor(payload);
}

std::uint64_t realtimeNow() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000000000u + static_cast<std::uint64_t>(now.tv_nsec);
}

// Bits 16 to 23 of a GVSP pixel code are the bits that a pixel takes.
std::size_t imageBytes(const FrameGeometry& geometry) {
    const std::size_t bits = (geometry.pixelFormat >> 16) & 0xFF;
    return static_cast<std::size_t>(geometry.width) * geometry.height * bits / 8;
}

void fillInfo(const FrameFacts& facts, _OV_CC_FRAME_OUT_INFO_* info) {
    std::uint32_t height = facts.geometry.height;
    const std::size_t whole = imageBytes(facts.geometry);
    const std::size_t line = height > 0 ? whole / height : 0;
    if (facts.complete && line > 0 && facts.length < whole) {
        // A line-scan camera announces the most lines and sends those that it has.
        height = static_cast<std::uint32_t>(facts.length / line);
    }
    const auto narrow = [](std::uint32_t value) {
        return static_cast<std::uint16_t>(std::min<std::uint32_t>(value, 0xFFFF));
    };
    info->width = narrow(facts.geometry.width);
    info->height = narrow(height);
    info->pixelFormat = facts.geometry.pixelFormat;
    info->offsetX = narrow(facts.offsetX);
    info->offsetY = narrow(facts.offsetY);
    info->payloadType = facts.payloadType;
    info->blockId = facts.blockId;
    info->deviceTimestamp = facts.timestamp;
    info->hostTimestamp = facts.closedAt;
    info->frameLength = static_cast<std::uint32_t>(facts.length);
    info->lostPackets = facts.lostPackets;
    info->frameState = facts.complete ? 0 : 1;
}

} // namespace kolt::cc
