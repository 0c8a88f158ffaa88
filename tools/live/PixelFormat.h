#ifndef LIVE_PIXEL_FORMAT_H
#define LIVE_PIXEL_FORMAT_H

#include "Camera/Boundary/OvPixelType.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace live {

/// What this program knows of one camera pixel code.
struct PixelFormat {
    enum class Packing {
        Bytes,    ///< one byte per sample
        Words,    ///< 16 bits per sample, little-endian, value in the low bits
        Packed10, ///< GigE Vision packing: two samples in three bytes
        Packed12,
        Yuv422,
        Rgb,
        Jpeg
    };

    uint32_t code;      ///< GVSP pixel code
    const char* name;   ///< of the GenICam naming convention
    uint32_t mediaType; ///< _OV_PIXEL_TYPE_
    bool colour;        ///< shown as RGB; otherwise grey
    Packing packing;
    uint32_t sampleBits; ///< bits that a sample really has

    /// Samples of a sensor (grey or Bayer), not yet made into a picture.
    bool IsSensorData() const { return packing <= Packing::Packed12; }

    /// Bytes of a frame; 0 where the format does not fix them (JPEG).
    size_t FrameBytes(uint32_t width, uint32_t height) const;
};

/// Null for a code that the platform libraries cannot turn into a picture.
const PixelFormat* FindPixelFormat(uint32_t code);

/// Its name, or the code in hexadecimal.
std::string PixelFormatName(uint32_t code);

} // namespace live

#endif
