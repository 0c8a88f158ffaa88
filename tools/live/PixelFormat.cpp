#include "PixelFormat.h"

#include <array>
#include <cstdio>

namespace live {
namespace {

using Packing = PixelFormat::Packing;

constexpr std::array<PixelFormat, 29> formats = {{
    {static_cast<uint32_t>(OV_GVSP_MONO8), "Mono8", OV_PIXEL_MONO8, false, Packing::Bytes, 8},
    {static_cast<uint32_t>(OV_GVSP_MONO10), "Mono10", OV_PIXEL_MONO10, false, Packing::Words, 10},
    {static_cast<uint32_t>(OV_GVSP_MONO12), "Mono12", OV_PIXEL_MONO12, false, Packing::Words, 12},
    {static_cast<uint32_t>(OV_GVSP_MONO10_PACKED), "Mono10Packed", OV_PIXEL_MONO10_PACKED, false,
     Packing::Packed10, 10},
    {static_cast<uint32_t>(OV_GVSP_MONO12_PACKED), "Mono12Packed", OV_PIXEL_MONO12_PACKED, false,
     Packing::Packed12, 12},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GR8), "BayerGR8", OV_PIXEL_BAYER_GR8, true, Packing::Bytes, 8},
    {static_cast<uint32_t>(OV_GVSP_BAYER_RG8), "BayerRG8", OV_PIXEL_BAYER_RG8, true, Packing::Bytes, 8},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GB8), "BayerGB8", OV_PIXEL_BAYER_GB8, true, Packing::Bytes, 8},
    {static_cast<uint32_t>(OV_GVSP_BAYER_BG8), "BayerBG8", OV_PIXEL_BAYER_BG8, true, Packing::Bytes, 8},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GR10), "BayerGR10", OV_PIXEL_BAYER_GR10, true, Packing::Words, 10},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GR10_PACKED), "BayerGR10Packed", OV_PIXEL_BAYER_GR10_PACKED, true,
     Packing::Packed10, 10},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GR12), "BayerGR12", OV_PIXEL_BAYER_GR12, true, Packing::Words, 12},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GR12_PACKED), "BayerGR12Packed", OV_PIXEL_BAYER_GR12_PACKED, true,
     Packing::Packed12, 12},
    {static_cast<uint32_t>(OV_GVSP_BAYER_RG10), "BayerRG10", OV_PIXEL_BAYER_RG10, true, Packing::Words, 10},
    {static_cast<uint32_t>(OV_GVSP_BAYER_RG10_PACKED), "BayerRG10Packed", OV_PIXEL_BAYER_RG10_PACKED, true,
     Packing::Packed10, 10},
    {static_cast<uint32_t>(OV_GVSP_BAYER_RG12), "BayerRG12", OV_PIXEL_BAYER_RG12, true, Packing::Words, 12},
    {static_cast<uint32_t>(OV_GVSP_BAYER_RG12_PACKED), "BayerRG12Packed", OV_PIXEL_BAYER_RG12_PACKED, true,
     Packing::Packed12, 12},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GB10), "BayerGB10", OV_PIXEL_BAYER_GB10, true, Packing::Words, 10},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GB10_PACKED), "BayerGB10Packed", OV_PIXEL_BAYER_GB10_PACKED, true,
     Packing::Packed10, 10},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GB12), "BayerGB12", OV_PIXEL_BAYER_GB12, true, Packing::Words, 12},
    {static_cast<uint32_t>(OV_GVSP_BAYER_GB12_PACKED), "BayerGB12Packed", OV_PIXEL_BAYER_GB12_PACKED, true,
     Packing::Packed12, 12},
    {static_cast<uint32_t>(OV_GVSP_BAYER_BG10), "BayerBG10", OV_PIXEL_BAYER_BG10, true, Packing::Words, 10},
    {static_cast<uint32_t>(OV_GVSP_BAYER_BG10_PACKED), "BayerBG10Packed", OV_PIXEL_BAYER_BG10_PACKED, true,
     Packing::Packed10, 10},
    {static_cast<uint32_t>(OV_GVSP_BAYER_BG12), "BayerBG12", OV_PIXEL_BAYER_BG12, true, Packing::Words, 12},
    {static_cast<uint32_t>(OV_GVSP_BAYER_BG12_PACKED), "BayerBG12Packed", OV_PIXEL_BAYER_BG12_PACKED, true,
     Packing::Packed12, 12},
    {static_cast<uint32_t>(OV_GVSP_YUV422_PACKED), "YUV422Packed", OV_PIXEL_YUV422_PACKED, true,
     Packing::Yuv422, 8},
    {static_cast<uint32_t>(OV_GVSP_YUV422_YUYV), "YUV422_YUYV_Packed", OV_PIXEL_YUV422_YUYV, true,
     Packing::Yuv422, 8},
    {static_cast<uint32_t>(OV_GVSP_RGB8_PACKED), "RGB8Packed", OV_PIXEL_RGB8, true, Packing::Rgb, 8},
    {static_cast<uint32_t>(OV_GVSP_JPEG), "JPEG", OV_PIXEL_RGB8, true, Packing::Jpeg, 8},
}};

} // namespace

size_t PixelFormat::FrameBytes(uint32_t width, uint32_t height) const {
    const size_t pixels = static_cast<size_t>(width) * height;
    switch (packing) {
    case Packing::Bytes:
        return pixels;
    case Packing::Words:
    case Packing::Yuv422:
        return pixels * 2;
    case Packing::Packed10:
    case Packing::Packed12:
        return (pixels * 3 + 1) / 2;
    case Packing::Rgb:
        return pixels * 3;
    case Packing::Jpeg:
        break;
    }
    return 0;
}

const PixelFormat* FindPixelFormat(uint32_t code) {
    for (const PixelFormat& format : formats)
        if (format.code == code)
            return &format;
    return nullptr;
}

std::string PixelFormatName(uint32_t code) {
    if (const PixelFormat* format = FindPixelFormat(code))
        return format->name;
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", code);
    return text.data();
}

} // namespace live
