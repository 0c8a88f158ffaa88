#ifndef LIVE_PNG_ENCODER_H
#define LIVE_PNG_ENCODER_H

#include "PictureMaker.h"

#include <vector>

namespace live {

/// The picture as a PNG file, 8 bits a sample. Empty where memory did not suffice.
std::vector<uint8_t> EncodePng(const Picture& picture);

} // namespace live

#endif
