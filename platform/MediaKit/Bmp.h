#ifndef MEDIA_BMP_H
#define MEDIA_BMP_H

#include "MediaKit/Convert.h"
#include "MediaKit/Workspace.h"

#include <cstddef>
#include <cstdint>

namespace media {

/*
 * Bytes of a bitmap file: 8 bits a pixel with a palette of 256 greys, or 24 bits. Rows are padded to a
 * multiple of four bytes. More than 32 bits hold for the largest pictures.
 */
std::uint64_t BmpBytes(std::uint32_t width, std::uint32_t height, bool grey);

/*
 * Writes a picture that CheckPicture found right as a bitmap file (BITMAPINFOHEADER, bottom row first) of
 * BmpBytes bytes. The output must not overlap the picture. Throws std::bad_alloc before anything was written.
 */
void WriteBmp(const Picture& picture, std::uint8_t* output, Workspace& workspace);

} // namespace media

#endif
