// Compresses pictures for the stream.
#ifndef VCAM_DEVICE_JPEGENCODER_H
#define VCAM_DEVICE_JPEGENCODER_H

#include "Protocol/Wire.h"

#include <memory>

namespace vcam {

// Not for several threads at once.
class JpegEncoder {
public:
    // No picture of this size becomes longer, whatever it shows. Any thread.
    static size_t Bound(uint32_t width, uint32_t height, bool colour);
    // `pixels` are grey (1 byte a pixel) or RGB (3), row by row without a gap; quality is 1 to 100. Throws
    // std::runtime_error when the library refuses.
    Bytes Encode(const Bytes& pixels, uint32_t width, uint32_t height, bool colour, int quality);

private:
    struct Destroy {
        void operator()(void* handle) const;
    };
    std::unique_ptr<void, Destroy> m_handle; // made at the first picture
};

} // namespace vcam

#endif
