// The block of facts that a frame can carry in its first pixels.
#ifndef VCAM_PICTURE_EMBEDDEDBLOCK_H
#define VCAM_PICTURE_EMBEDDEDBLOCK_H

#include "Picture/PictureSettings.h"

namespace vcam {

// What the settings don't tell.
struct FrameFacts {
    uint64_t timestamp = 0; // ns since the camera's ticks began
    uint32_t number = 0;    // of the frame
    uint32_t triggers = 0;  // accepted since the start of the acquisition
    uint8_t inputs = 0;     // a bit for each line, bit 0 is line 0
    uint8_t outputs = 0;
};

// Bytes of the block with these facts: 4 each, 8 for white balance and region.
size_t EmbeddedBytes(uint32_t selection);

// Writes the facts that settings.embedded selects over the first bytes of the picture and returns how many
// bytes they took; a fact that `size` leaves no room for, and all behind it, stay away. `settings` are those
// of this frame.
//
//     Timestamp     one word, as IEEE 1394 counts: seconds modulo 32 (5 bits), cycles of 125 us (13), and
//                   24.576 MHz ticks within the cycle (14)
//     Gain          thousandths of a dB, signed
//     Exposure      us
//     Brightness    the black level, signed
//     WhiteBalance  1024ths: red (16 bits), green (16), blue (32)
//     FrameNumber, TriggerCount
//     Lines         a byte of inputs, a byte of outputs, two of 0
//     Region        offset x, offset y, width, height in 16 bits each with the lowest bit of the block set.
//     An
//                   odd width has no place there and takes the other form, with that bit 0 and values of 12
//                   bits (16 for the height). Neither can tell an odd offset x: it loses its lowest bit.
//
// Words are little-endian.
size_t WriteEmbeddedBlock(const PictureSettings& settings, const FrameFacts& facts, uint8_t* picture,
                          size_t size);

} // namespace vcam

#endif
