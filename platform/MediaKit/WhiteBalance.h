#ifndef MEDIA_WHITE_BALANCE_H
#define MEDIA_WHITE_BALANCE_H

#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/Workspace.h"

#include <cstdint>

namespace media {

/* The gain that measuring gives to the channel that needs none, and the largest that it gives to another. */
constexpr std::uint32_t kNeutralGain = 512;
constexpr std::uint32_t kLargestGain = 2047;

/*
 * What OV_MP_GetWhiteBalance does once it has found its handle, for Bayer pictures and RGB.
 *
 * Grey world (G. Buchsbaum, "A spatial processor model for object colour perception", Journal of the Franklin
 * Institute 310, 1980): on the average of a picture the surfaces are grey, so what the averages of red, green
 * and blue differ by is the light's colour. Only places (cells of 2 x 2 sites, or pixels) count whose three
 * values all lie between 5 and 95 percent of the range: in the dark the offset and the noise speak, and a
 * clipped channel has lost its ratio to the others.
 *
 * OV_STATUS_NO_DATA, with the gains left as they are, when fewer than one place in a thousand counts (or
 * fewer than 16). OV_STATUS_NOT_SUPPORTED for a picture without these colours. The gains are relative: only
 * their ratios count. The channel that is brightest gets kNeutralGain.
 */
std::uint32_t MeasureWhiteBalance(Workspace& workspace, const _OV_IMAGE_INFO_& record,
                                  _OV_WHITE_BALANCE_PARAM_& gains);

/*
 * What OV_MP_WhiteBalanceProcess does: multiplies each channel by its gain divided by the smallest of the
 * three, at most by 16, and rounds and saturates. Equal gains, such as the 1, 1, 1 of a new camera, change
 * nothing; a gain of 0 counts as 1. Dividing by the smallest keeps what was clipped white.
 */
std::uint32_t ApplyWhiteBalance(Workspace& workspace, _OV_IMAGE_INFO_& record,
                                const _OV_WHITE_BALANCE_PARAM_& gains);

} // namespace media

#endif
