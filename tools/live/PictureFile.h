#ifndef LIVE_PICTURE_FILE_H
#define LIVE_PICTURE_FILE_H

#include "FileKind.h"
#include "PictureMaker.h"

#include <string>
#include <vector>

namespace live {

/// Writes one frame in the form that the name asks for; an error text on failure, and then no file.
/// .bmp and .jpg go through OV_MP_SaveImage, .png and .ppm (a .ppm of a grey camera has three equal
/// channels) hold the picture as it is shown, .pgm the sensor's own samples at their full depth (most
/// significant byte first, as the format wants), .raw the bytes of the frame.
std::string SaveFrame(const std::string& path, Frame& frame, PictureMaker& maker);

/// .png or .ppm.
std::string SavePicture(const std::string& path, const Picture& picture);

/// Writes the whole file or none: it only gets its name when every byte is on its way to the disk.
std::string WriteFile(const std::string& path, const std::vector<uint8_t>& bytes);
std::string WriteFile(const std::string& path, const void* bytes, size_t size);

/// Two samples out of three bytes (GigE Vision packed 10 and 12 bits).
std::vector<uint16_t> UnpackSamples(const uint8_t* packed, size_t samples, uint32_t sampleBits);

} // namespace live

#endif
