#include "FrameStore.h"

#include <cstring>
#include <utility>

namespace kolt::render {

namespace {

/* Line-scan cameras send very long pictures; beyond these figures it is a mistake. */
constexpr uint32_t kLongestSide = 1U << 20;
constexpr uint64_t kMostBytes = uint64_t{4} << 30;
/* A buffer this many times larger than needed is given back. */
constexpr size_t kWasteful = 8;

/*
 * Pictures from this size on are put past the caches: they would drive out what is of use there, and writing
 * them costs a third less memory traffic. Smaller ones fit, and are often drawn again from there.
 */
constexpr size_t kPastCaches = size_t{8} << 20;
constexpr size_t kCacheLine = 64;

/*
 * Takes a picture over, row by row as it is wanted. Whoever draws it meanwhile reads the source's rows, just
 * brought into the processor by the copy, but for the last, behind which no byte may be touched.
 */
class Copy final : public RowSupply {
public:
    Copy(const uint8_t* from, uint8_t* to, size_t pitch, size_t bytes)
        : m_from(from)
        , m_to(to)
        , m_pitch(pitch)
        , m_bytes(bytes)
        , m_kernels(bytes >= kPastCaches ? rowKernels() : plainRowKernels()) {}

    const uint8_t* rows(int first, int end) override {
        const size_t begin = static_cast<size_t>(first) * m_pitch;
        const size_t last = static_cast<size_t>(end) * m_pitch;
        if (last + kFramePadding <= m_bytes) {
            copyTo(last / kCacheLine * kCacheLine);
            return m_from + begin;
        }
        finish();
        return m_to + begin;
    }

    void finish() {
        copyTo(m_bytes / kCacheLine * kCacheLine);
        std::memcpy(m_to + m_done, m_from + m_done, m_bytes - m_done);
        m_done = m_bytes;
        m_kernels.settle();
    }

private:
    void copyTo(size_t end) {
        if (end > m_done) {
            m_kernels.copyPastCaches(m_from + m_done, m_to + m_done, end - m_done);
            m_done = end;
        }
    }

    const uint8_t* m_from;
    uint8_t* m_to;
    size_t m_pitch;
    size_t m_bytes;
    const RowKernels& m_kernels;
    size_t m_done = 0; /* bytes; a multiple of a line until all are */
};

} // namespace

bool FrameStore::put(const uint8_t* pixels, uint32_t width, uint32_t height) {
    if (pixels == nullptr || width == 0 || height == 0 || width > kLongestSide || height > kLongestSide) {
        return false;
    }
    const uint64_t bytes = uint64_t{width} * height * static_cast<uint64_t>(m_channels);
    if (bytes > kMostBytes) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!makeRoom(static_cast<size_t>(bytes))) {
        return false;
    }
    m_size = Size{static_cast<int>(width), static_cast<int>(height)};
    ++m_number;
    Copy rows(pixels, m_memory.data(), size_t{width} * static_cast<size_t>(m_channels),
              static_cast<size_t>(bytes));
    FrameListener* listener = std::exchange(m_listener, nullptr);
    if (listener != nullptr) {
        listener->arrives(FrameView{m_memory.data(), m_size, m_channels}, m_number, rows);
    }
    rows.finish();
    return true;
}

bool FrameStore::makeRoom(size_t bytes) {
    const size_t needed = bytes + kFramePadding;
    if (m_memory.size() >= needed && m_memory.size() / kWasteful <= needed) {
        return true;
    }
    LargeMemory fresh(needed);
    if (fresh.data() == nullptr) {
        return false;
    }
    m_memory = std::move(fresh);
    return true;
}

bool FrameStore::empty() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_number == 0;
}

void FrameStore::expect(FrameListener& listener) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listener = &listener;
}

void FrameStore::forget(FrameListener& listener) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_listener == &listener) {
        m_listener = nullptr;
    }
}

} // namespace kolt::render
