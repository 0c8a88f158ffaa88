#ifndef MEDIA_CONVERT_H
#define MEDIA_CONVERT_H

#include "MediaKit/Kernels.h"
#include "MediaKit/LineBuffers.h"
#include "MediaKit/PixelTraits.h"
#include "MediaKit/Workspace.h"

#include <cstddef>
#include <cstdint>

namespace media {

/* A picture as a camera sent it; the pixels stay the caller's. */
struct Picture {
    std::uint32_t type = 0; // _OV_PIXEL_TYPE_
    const std::uint8_t* pixels = nullptr;
    std::uint32_t length = 0; // bytes; more than the picture needs is fine
    std::uint32_t width = 0;  // both at most 65535
    std::uint32_t height = 0;
    std::uint32_t bayerMethod = 0; // looked at only where the picture has a Bayer pattern
};

/*
 * Where converted rows go. The first row converted stands at `rows`, the next `stride` bytes further. The
 * stride may be larger than a row (padding is left as it is) or negative (a bottom-up bitmap).
 */
struct RowTarget {
    std::uint8_t* rows = nullptr;
    std::ptrdiff_t stride = 0;
    Layout layout = Layout::Rgb;
};

/*
 * Whether the picture can be converted: OV_STATUS_OK; OV_STATUS_NOT_SUPPORTED for an unknown type;
 * OV_STATUS_INVALID_PARAMETER for no pixels, a side of 0 or above 65535, too few bytes, an odd width of 4:2:2
 * YUV (half a pair has no colour), a Bayer picture less than 2 x 2 (it lacks a colour), an unknown Bayer
 * method.
 */
std::uint32_t CheckPicture(const Picture& picture);

/* True where the picture holds no colour: worth a grey result rather than three equal channels. */
bool IsGrey(const Picture& picture);

/*
 * Converts the rows [first, end) of a picture that CheckPicture found right, on the calling thread. The rows
 * are the same, bit for bit, as in a conversion of the whole. lines must have been prepared for the picture's
 * width. The result must not overlap the picture.
 */
void ConvertRows(const Kernels& kernels, const Picture& picture, std::uint32_t first, std::uint32_t end,
                 const RowTarget& target, LineBuffers& lines);

/*
 * Converts a whole picture that CheckPicture found right, with the pool's help where the picture is large
 * enough for that to pay. The result must not overlap the picture. Throws std::bad_alloc before anything was
 * written.
 */
void ConvertPicture(const Kernels& kernels, const Picture& picture, const RowTarget& target,
                    Workspace& workspace);

/* Pixels from which ConvertPicture uses more than one thread: below, waking a thread costs more than it
 * gains. */
constexpr std::size_t kPixelsThatPayThreads = 256 * 1024;

} // namespace media

#endif
