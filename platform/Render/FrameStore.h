/*
 * The newest picture of a handle. Written and read from any thread; a reader holds off a writer while it
 * reads, so readers do nothing slow inside.
 */
#ifndef KOLT_RENDER_FRAME_STORE_H
#define KOLT_RENDER_FRAME_STORE_H

#include "LargeMemory.h"
#include "Resampler.h"

#include <cstdint>
#include <mutex>

namespace kolt::render {

/*
 * Someone who will want the next picture, and can make use of each row while it is at hand in the processor's
 * cache: taking a picture over and drawing it are both bound by memory, so doing them in one go saves a
 * third.
 */
class FrameListener {
public:
    virtual ~FrameListener() = default;
    /* On the thread that brings the picture, before anyone else sees it; its rows come from the supply. */
    virtual void arrives(const FrameView& frame, uint64_t number, RowSupply& rows) = 0;
};

class FrameStore {
public:
    explicit FrameStore(int channels) : m_channels(channels) {}

    /* Copies the pixels. False, with the former picture kept, for sizes out of range and without memory. */
    bool put(const uint8_t* pixels, uint32_t width, uint32_t height);
    bool empty() const;

    /* Calls read(const FrameView&, uint64_t number) with the newest picture, if there is one. */
    template<class Read>
    bool read(Read&& read) const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_number == 0) {
            return false;
        }
        read(FrameView{m_memory.data(), m_size, m_channels}, m_number);
        return true;
    }

    /* Lets the listener have the next picture, once. There is one listener, the last. */
    void expect(FrameListener& listener);
    /* Afterwards the listener isn't called until it expects again. */
    void forget(FrameListener& listener);

private:
    bool makeRoom(size_t bytes);

    const int m_channels;
    mutable std::mutex m_mutex; /* guards all below; nothing else is locked inside */
    LargeMemory m_memory;
    Size m_size;
    uint64_t m_number = 0; /* counts pictures from 1 */
    FrameListener* m_listener = nullptr;
};

} // namespace kolt::render

#endif
