// Facts about a frame that a camera writes over the frame's first pixels.
#pragma once

#include <cstddef>
#include <cstdint>

// Facts that were not selected are 0.
struct _EMBEDDED_IMAGE_INFO_ {
    uint32_t secondCount;
    uint32_t cycleCount;
    uint32_t cycleOffset;
    float gain;
    float exposure;
    float exposureParsed; // 1.0 when exposure was there
    uint32_t brightness;
    uint32_t red;
    uint32_t green;
    uint32_t blue;
    uint32_t frameNumber;
    uint32_t triggerCount;
    uint32_t input;
    uint32_t output;
    uint32_t offsetX;
    uint32_t offsetY;
    uint32_t width;
    uint32_t height;
};

static_assert(sizeof(_EMBEDDED_IMAGE_INFO_) == 72, "the record is copied as one block");

// Bits of the selector, in the order in which the fields follow each other.
enum EmbeddedBit : unsigned {
    EMBEDDED_TIMESTAMP = 0,
    EMBEDDED_GAIN = 1,
    EMBEDDED_EXPOSURE = 2,
    EMBEDDED_BRIGHTNESS = 3,
    EMBEDDED_WHITE_BALANCE = 4,
    EMBEDDED_FRAME_NUMBER = 5,
    EMBEDDED_TRIGGER_NUMBER = 6,
    EMBEDDED_ALARM = 7,
    EMBEDDED_ROI = 8,
};

// Decodes the block at `data`, of which `size` bytes may be read; fields beyond them stay 0. Every field
// takes 4 bytes, white balance and region 8, and only selected ones are there.
_EMBEDDED_IMAGE_INFO_ DecodeEmbeddedBlock(const uint8_t* data, size_t size, uint64_t selector);
