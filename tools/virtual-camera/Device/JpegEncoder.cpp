#include "Device/JpegEncoder.h"

#include <stdexcept>
#include <turbojpeg.h>

namespace vcam {

static int SamplingOf(bool colour) {
    return colour ? TJSAMP_422 : TJSAMP_GRAY;
}

void JpegEncoder::Destroy::operator()(void* handle) const {
    tjDestroy(handle);
}

size_t JpegEncoder::Bound(uint32_t width, uint32_t height, bool colour) {
    return tjBufSize(static_cast<int>(width), static_cast<int>(height), SamplingOf(colour));
}

Bytes JpegEncoder::Encode(const Bytes& pixels, uint32_t width, uint32_t height, bool colour, int quality) {
    const size_t expected = size_t{width} * height * (colour ? 3 : 1);
    if (pixels.size() < expected)
        throw std::runtime_error("a picture to compress is too short");
    if (!m_handle)
        m_handle.reset(tjInitCompress());
    Bytes jpeg(Bound(width, height, colour));
    unsigned char* to = jpeg.data();
    unsigned long length = jpeg.size();
    const int failed = tjCompress2(m_handle.get(), pixels.data(), static_cast<int>(width), 0,
                                   static_cast<int>(height), colour ? TJPF_RGB : TJPF_GRAY, &to, &length,
                                   SamplingOf(colour), quality, TJFLAG_NOREALLOC);
    if (failed != 0)
        throw std::runtime_error(tjGetErrorStr2(m_handle.get()));
    jpeg.resize(length);
    return jpeg;
}

} // namespace vcam
