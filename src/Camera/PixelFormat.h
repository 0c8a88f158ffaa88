// Pure functions of the camera's pixel code: sizes, and which formats the media and render libraries get for
// it.
#pragma once

#include "Camera/Boundary/OVRender.h"
#include "Camera/Boundary/OvPixelType.h"

#include <cstdint>
#include <optional>

struct FrameSizes {
    uint32_t frame;   // bytes of one source frame
    uint32_t display; // bytes of one display frame
};

// With n = width * height in 32 bits. Nothing for a code whose size only the camera can tell.
std::optional<FrameSizes> FrameSizesOf(OvGvspPixelType code, uint32_t n);
std::optional<FrameSizes> GdiFrameSizesOf(OvGvspPixelType code, uint32_t n);

// The media library's number; 0 for an unknown code.
uint32_t GetConvertPixelFormat(OvGvspPixelType code);

// What the render library gets. False for an unknown code.
bool GetVRPixelFormat(OvGvspPixelType code, tagVRPixelFormat& format);

// Target of a conversion: 32 for Bayer codes, 27 for other colour codes, 0 for the rest.
uint32_t GetGDIDisplayPixelFormat(OvGvspPixelType code);
uint32_t GetVRDisplayPixelFormat(OvGvspPixelType code);

bool IsBayer8(OvGvspPixelType code);
bool IsBayer10or12(OvGvspPixelType code); // unpacked
bool IsBayerPacked(OvGvspPixelType code);
bool IsBayer16(OvGvspPixelType code);
bool IsBayer12(OvGvspPixelType code);  // unpacked
bool IsMonoDeep(OvGvspPixelType code); // Mono10, Mono12, packed or not
bool IsYuv422(OvGvspPixelType code);
bool IsJPGFormat(OvGvspPixelType code);
