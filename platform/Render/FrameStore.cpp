#include "FrameStore.h"

#include <cstring>
#include <new>

namespace kolt::render {

namespace {

/* Line-scan cameras send very long pictures; beyond these figures it is a mistake. */
constexpr uint32_t kLongestSide = 1U << 20;
constexpr uint64_t kMostBytes = uint64_t{4} << 30;
/* A buffer this many times larger than needed is given back. */
constexpr size_t kWasteful = 8;

} // namespace

bool FrameStore::put(const uint8_t* pixels, uint32_t width, uint32_t height) {
    if (pixels == nullptr || width == 0 || height == 0 || width > kLongestSide || height > kLongestSide) {
        return false;
    }
    const uint64_t bytes = uint64_t{width} * height * static_cast<uint64_t>(m_channels);
    if (bytes > kMostBytes) {
        return false;
    }
    const size_t needed = static_cast<size_t>(bytes) + kFramePadding;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_capacity < needed || m_capacity / kWasteful > needed) {
        std::unique_ptr<uint8_t[]> fresh(new (std::nothrow) uint8_t[needed]);
        if (!fresh) {
            return false;
        }
        std::memset(fresh.get() + bytes, 0, kFramePadding);
        m_pixels = std::move(fresh);
        m_capacity = needed;
    }
    std::memcpy(m_pixels.get(), pixels, bytes);
    m_size = Size{static_cast<int>(width), static_cast<int>(height)};
    ++m_number;
    return true;
}

bool FrameStore::empty() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_number == 0;
}

} // namespace kolt::render
