#include "SharedImage.h"

#include <sys/mman.h>
#include <unistd.h>

namespace kolt::render {

std::unique_ptr<SharedImage> SharedImage::create(XConnection& connection, size_t bytes) {
    const int descriptor = memfd_create("kolt-render", MFD_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    void* data = MAP_FAILED;
    if (ftruncate(descriptor, static_cast<off_t>(bytes)) == 0) {
        data = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    }
    if (data == MAP_FAILED) {
        close(descriptor);
        return nullptr;
    }
    std::unique_ptr<SharedImage> image(new SharedImage(connection, static_cast<uint8_t*>(data), bytes));
    // The descriptor is xcb's from here on; it closes it once sent.
    const xcb_void_cookie_t attached =
        xcb_shm_attach_fd_checked(connection.get(), image->m_segment, descriptor, 1);
    const XReply<xcb_generic_error_t> error(xcb_request_check(connection.get(), attached));
    if (error || !connection.alive()) {
        image->m_segment = 0;
        return nullptr;
    }
    return image;
}

SharedImage::SharedImage(XConnection& connection, uint8_t* data, size_t capacity)
    : m_connection(connection)
    , m_data(data)
    , m_capacity(capacity)
    , m_segment(xcb_generate_id(connection.get())) {}

SharedImage::~SharedImage() {
    if (m_segment != 0) {
        // Requests are served in order: a drawing on its way still finds the server's own mapping.
        xcb_shm_detach(m_connection.get(), m_segment);
    }
    munmap(m_data, m_capacity);
}

} // namespace kolt::render
