#ifndef MEDIA_CONVERT_RECORD_H
#define MEDIA_CONVERT_RECORD_H

#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/Workspace.h"

#include <cstdint>

namespace media {

/*
 * What OV_MP_ConvertPixelType does once it has found its handle. Writes the length of the result into the
 * record, 0 with any status but OV_STATUS_OK:
 *
 *  - OV_STATUS_NOT_SUPPORTED: an unknown type of source or result;
 *  - OV_STATUS_INVALID_PARAMETER: what CheckPicture refuses, or no destination;
 *  - OV_STATUS_BUFFER_FULL: a result larger than the capacity.
 *
 * Nothing is written to the destination then. The destination may overlap the source: the source is set aside
 * first.
 */
std::uint32_t ConvertRecord(Workspace& workspace, _OV_CONVERT_PIXEL_INFO_& record);

} // namespace media

#endif
