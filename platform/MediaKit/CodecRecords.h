#ifndef MEDIA_CODEC_RECORDS_H
#define MEDIA_CODEC_RECORDS_H

#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/Workspace.h"

#include <cstdint>

namespace media {

/*
 * What OV_MP_SaveImage does once it has found its handle. Writes the length of the file into the record, 0
 * with any status but OV_STATUS_OK:
 *
 *  - OV_STATUS_NOT_SUPPORTED: an unknown type of picture or of file, or sides beyond what the file can tell;
 *  - OV_STATUS_INVALID_PARAMETER: what CheckPicture refuses, no output, an output that overlaps the picture,
 * a JPEG quality outside of 1 to 100;
 *  - OV_STATUS_BUFFER_FULL: a file larger than the capacity. A bitmap is refused untouched; of a JPEG any
 * bytes within the capacity may have been written.
 *
 * Pictures without colour become grey files. Bayer pictures are interpolated bilinearly.
 */
std::uint32_t SaveRecord(Workspace& workspace, _OV_IMAGE_INFO_& record);

/*
 * What OV_MP_Decode does once it has found its handle: `jpegLength` bytes, or the record's length where that
 * is smaller, to RGB. Statuses as of JpegDecoder::Decode; OV_STATUS_NOT_SUPPORTED for another decode kind
 * than 1.
 */
std::uint32_t DecodeRecord(Workspace& workspace, _OV_DECODE_INFO_& record, std::uint32_t jpegLength);

} // namespace media

#endif
