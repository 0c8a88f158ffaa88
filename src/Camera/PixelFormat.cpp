#include "Camera/PixelFormat.h"

#include <algorithm>
#include <iterator>

namespace {

bool IsBetween(OvGvspPixelType code, int64_t first, int64_t last) {
    return code >= first && code <= last;
}

bool IsAnyBayer(OvGvspPixelType code) {
    return IsBayer8(code) || IsBayer10or12(code) || IsBayerPacked(code);
}

// Three halves, rounded towards zero; the product wraps in 32 bits as sizes do everywhere here.
uint32_t ThreeHalves(uint32_t n) {
    return n * 3u / 2u;
}

struct Conversion {
    OvGvspPixelType code;
    uint32_t media;
};

const Conversion kConversions[] = {
    {OV_GVSP_MONO8, OV_PIXEL_MONO8},
    {OV_GVSP_MONO10, OV_PIXEL_MONO10},
    {OV_GVSP_MONO12, OV_PIXEL_MONO12},
    {OV_GVSP_MONO10_PACKED, OV_PIXEL_MONO10_PACKED},
    {OV_GVSP_MONO12_PACKED, OV_PIXEL_MONO12_PACKED},
    {OV_GVSP_BAYER_GR8, OV_PIXEL_BAYER_GR8},
    {OV_GVSP_BAYER_RG8, OV_PIXEL_BAYER_RG8},
    {OV_GVSP_BAYER_GB8, OV_PIXEL_BAYER_GB8},
    {OV_GVSP_BAYER_BG8, OV_PIXEL_BAYER_BG8},
    {OV_GVSP_BAYER_GB10, OV_PIXEL_BAYER_GB10},
    {OV_GVSP_BAYER_GB10_PACKED, OV_PIXEL_BAYER_GB10_PACKED},
    {OV_GVSP_BAYER_BG10, OV_PIXEL_BAYER_BG10},
    {OV_GVSP_BAYER_BG10_PACKED, OV_PIXEL_BAYER_BG10_PACKED},
    {OV_GVSP_BAYER_RG10, OV_PIXEL_BAYER_RG10},
    {OV_GVSP_BAYER_RG10_PACKED, OV_PIXEL_BAYER_RG10_PACKED},
    {OV_GVSP_BAYER_GR10, OV_PIXEL_BAYER_GR10},
    {OV_GVSP_BAYER_GR10_PACKED, OV_PIXEL_BAYER_GR10_PACKED},
    {OV_GVSP_BAYER_GB12, OV_PIXEL_BAYER_GB12},
    {OV_GVSP_BAYER_GB12_PACKED, OV_PIXEL_BAYER_GB12_PACKED},
    {OV_GVSP_BAYER_BG12, OV_PIXEL_BAYER_BG12},
    {OV_GVSP_BAYER_BG12_PACKED, OV_PIXEL_BAYER_BG12_PACKED},
    {OV_GVSP_BAYER_RG12, OV_PIXEL_BAYER_RG12},
    {OV_GVSP_BAYER_RG12_PACKED, OV_PIXEL_BAYER_RG12_PACKED},
    {OV_GVSP_BAYER_GR12, OV_PIXEL_BAYER_GR12},
    {OV_GVSP_BAYER_GR12_PACKED, OV_PIXEL_BAYER_GR12_PACKED},
    {OV_GVSP_YUV422_PACKED, OV_PIXEL_YUV422_PACKED},
    {OV_GVSP_YUV422_YUYV, OV_PIXEL_YUV422_YUYV},
    {OV_GVSP_RGB8_PACKED, OV_PIXEL_RGB8},
    {OV_GVSP_JPEG, OV_PIXEL_MONO8},
};

} // namespace

bool IsBayer8(OvGvspPixelType code) {
    return IsBetween(code, OV_GVSP_BAYER_GR8, OV_GVSP_BAYER_BG8);
}

bool IsBayer10or12(OvGvspPixelType code) {
    return IsBetween(code, OV_GVSP_BAYER_GR10, OV_GVSP_BAYER_BG12);
}

bool IsBayerPacked(OvGvspPixelType code) {
    return IsBetween(code, OV_GVSP_BAYER_GR10_PACKED, OV_GVSP_BAYER_BG12_PACKED);
}

bool IsBayer16(OvGvspPixelType code) {
    return IsBetween(code, 0x0110002E, 0x01100031);
}

bool IsBayer12(OvGvspPixelType code) {
    return IsBetween(code, OV_GVSP_BAYER_GR12, OV_GVSP_BAYER_BG12);
}

bool IsMonoDeep(OvGvspPixelType code) {
    return code == OV_GVSP_MONO10 || code == OV_GVSP_MONO12 || code == OV_GVSP_MONO10_PACKED ||
           code == OV_GVSP_MONO12_PACKED;
}

bool IsYuv422(OvGvspPixelType code) {
    return code == OV_GVSP_YUV422_PACKED || code == OV_GVSP_YUV422_YUYV;
}

bool IsJPGFormat(OvGvspPixelType code) {
    return code == OV_GVSP_JPEG;
}

std::optional<FrameSizes> FrameSizesOf(OvGvspPixelType code, uint32_t n) {
    if (code == OV_GVSP_MONO8)
        return FrameSizes{n, n};
    // deliberate: 3n is more than two bytes a pixel need; that much is allocated and copied.
    if (code == OV_GVSP_MONO10 || code == OV_GVSP_MONO12 || IsYuv422(code))
        return FrameSizes{n * 3u, n * 4u};
    if (code == OV_GVSP_MONO10_PACKED || code == OV_GVSP_MONO12_PACKED)
        return FrameSizes{ThreeHalves(n), ThreeHalves(n)};
    if (IsBayer8(code))
        return FrameSizes{n, n * 4u};
    if (IsBayer10or12(code))
        return FrameSizes{n * 2u, n * 4u};
    if (IsBayerPacked(code))
        return FrameSizes{ThreeHalves(n), n * 4u};
    if (code == OV_GVSP_RGB8_PACKED || IsJPGFormat(code))
        return FrameSizes{n * 3u, n * 3u};
    return std::nullopt;
}

std::optional<FrameSizes> GdiFrameSizesOf(OvGvspPixelType code, uint32_t n) {
    if (code == OV_GVSP_MONO8)
        return FrameSizes{n, n * 3u};
    if (code == OV_GVSP_MONO10 || code == OV_GVSP_MONO12 || IsYuv422(code))
        return FrameSizes{n * 2u, n * 3u};
    if (code == OV_GVSP_MONO10_PACKED || code == OV_GVSP_MONO12_PACKED)
        return FrameSizes{ThreeHalves(n), n * 3u};
    return FrameSizesOf(code, n); // the rest is the same in both tables
}

uint32_t GetConvertPixelFormat(OvGvspPixelType code) {
    const auto* row = std::find_if(std::begin(kConversions), std::end(kConversions),
                                   [code](const Conversion& entry) { return entry.code == code; });
    return row == std::end(kConversions) ? static_cast<uint32_t>(OV_PIXEL_MONO8) : row->media;
}

bool GetVRPixelFormat(OvGvspPixelType code, tagVRPixelFormat& format) {
    if (code == OV_GVSP_MONO8 || IsMonoDeep(code)) {
        format = VR_PIXEL_MONO8;
        return true;
    }
    if (IsAnyBayer(code) || code == OV_GVSP_RGB8_PACKED || IsJPGFormat(code) || IsYuv422(code)) {
        format = VR_PIXEL_RGB8;
        return true;
    }
    return false;
}

uint32_t GetGDIDisplayPixelFormat(OvGvspPixelType code) {
    if (IsAnyBayer(code))
        return OV_PIXEL_RGB32;
    if (code == OV_GVSP_RGB8_PACKED || IsJPGFormat(code) || IsYuv422(code))
        return OV_PIXEL_RGB8;
    return OV_PIXEL_MONO8;
}

uint32_t GetVRDisplayPixelFormat(OvGvspPixelType code) {
    if (IsMonoDeep(code) || IsYuv422(code))
        return GetConvertPixelFormat(code);
    return GetGDIDisplayPixelFormat(code);
}
