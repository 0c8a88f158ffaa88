/*
 * Memory shared with the X server, passed as a file descriptor, so that nothing remains of it after a crash.
 */
#ifndef KOLT_RENDER_SHARED_IMAGE_H
#define KOLT_RENDER_SHARED_IMAGE_H

#include "XConnection.h"

#include <xcb/shm.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kolt::render {

class SharedImage {
public:
    /* Null where the server cannot take it (another host) or memory is short. Asks the server and waits. */
    static std::unique_ptr<SharedImage> create(XConnection& connection, size_t bytes);
    ~SharedImage();
    SharedImage(const SharedImage&) = delete;
    SharedImage& operator=(const SharedImage&) = delete;

    uint8_t* data() const { return m_data; }
    size_t capacity() const { return m_capacity; }
    xcb_shm_seg_t segment() const { return m_segment; }

private:
    SharedImage(XConnection& connection, uint8_t* data, size_t capacity);

    XConnection& m_connection;
    uint8_t* m_data;
    size_t m_capacity;
    xcb_shm_seg_t m_segment;
};

} // namespace kolt::render

#endif
