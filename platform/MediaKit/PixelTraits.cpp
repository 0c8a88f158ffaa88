#include "MediaKit/PixelTraits.h"

#include "Camera/Boundary/OvPixelType.h"

#include <array>

namespace media {

namespace {

// Index is the _OV_PIXEL_TYPE_.
constexpr std::array<PixelTraits, 28> kTraits{{
    {Packing::Bytes, BayerRow::None},        // OV_PIXEL_MONO8
    {Packing::Words10, BayerRow::None},      // OV_PIXEL_MONO10
    {Packing::Words12, BayerRow::None},      // OV_PIXEL_MONO12
    {Packing::Triples, BayerRow::None},      // OV_PIXEL_MONO10_PACKED
    {Packing::Triples, BayerRow::None},      // OV_PIXEL_MONO12_PACKED
    {Packing::Bytes, BayerRow::GreenRed},    // OV_PIXEL_BAYER_GR8
    {Packing::Bytes, BayerRow::RedGreen},    // OV_PIXEL_BAYER_RG8
    {Packing::Bytes, BayerRow::GreenBlue},   // OV_PIXEL_BAYER_GB8
    {Packing::Bytes, BayerRow::BlueGreen},   // OV_PIXEL_BAYER_BG8
    {Packing::Words10, BayerRow::GreenBlue}, // OV_PIXEL_BAYER_GB10
    {Packing::Triples, BayerRow::GreenBlue}, // OV_PIXEL_BAYER_GB10_PACKED
    {Packing::Words10, BayerRow::BlueGreen}, // OV_PIXEL_BAYER_BG10
    {Packing::Triples, BayerRow::BlueGreen}, // OV_PIXEL_BAYER_BG10_PACKED
    {Packing::Words10, BayerRow::RedGreen},  // OV_PIXEL_BAYER_RG10
    {Packing::Triples, BayerRow::RedGreen},  // OV_PIXEL_BAYER_RG10_PACKED
    {Packing::Words10, BayerRow::GreenRed},  // OV_PIXEL_BAYER_GR10
    {Packing::Triples, BayerRow::GreenRed},  // OV_PIXEL_BAYER_GR10_PACKED
    {Packing::Words12, BayerRow::GreenBlue}, // OV_PIXEL_BAYER_GB12
    {Packing::Triples, BayerRow::GreenBlue}, // OV_PIXEL_BAYER_GB12_PACKED
    {Packing::Words12, BayerRow::BlueGreen}, // OV_PIXEL_BAYER_BG12
    {Packing::Triples, BayerRow::BlueGreen}, // OV_PIXEL_BAYER_BG12_PACKED
    {Packing::Words12, BayerRow::RedGreen},  // OV_PIXEL_BAYER_RG12
    {Packing::Triples, BayerRow::RedGreen},  // OV_PIXEL_BAYER_RG12_PACKED
    {Packing::Words12, BayerRow::GreenRed},  // OV_PIXEL_BAYER_GR12
    {Packing::Triples, BayerRow::GreenRed},  // OV_PIXEL_BAYER_GR12_PACKED
    {Packing::Uyvy, BayerRow::None},         // OV_PIXEL_YUV422_PACKED
    {Packing::Yuyv, BayerRow::None},         // OV_PIXEL_YUV422_YUYV
    {Packing::Rgb, BayerRow::None},          // OV_PIXEL_RGB8
}};

constexpr PixelTraits kBgrx{Packing::Bgrx, BayerRow::None};

} // namespace

const PixelTraits* FindPixelTraits(std::uint32_t pixelType) {
    if (pixelType < kTraits.size()) {
        return &kTraits[pixelType];
    }
    return pixelType == OV_PIXEL_RGB32 ? &kBgrx : nullptr;
}

std::size_t PixelBytes(Packing packing, std::size_t pixels) {
    switch (packing) {
    case Packing::Words10:
    case Packing::Words12:
    case Packing::Uyvy:
    case Packing::Yuyv:
        return pixels * 2;
    case Packing::Triples:
        return pixels + pixels / 2;
    case Packing::Rgb:
        return pixels * 3;
    case Packing::Bgrx:
        return pixels * 4;
    case Packing::Bytes:
        break;
    }
    return pixels;
}

std::uint32_t PictureBytes(const PixelTraits& traits, std::uint32_t width, std::uint32_t height) {
    const std::uint64_t pixels = static_cast<std::uint64_t>(width) * height;
    if (pixels > UINT32_MAX) {
        return 0;
    }
    const std::size_t bytes = PixelBytes(traits.packing, pixels);
    return bytes > UINT32_MAX ? 0 : static_cast<std::uint32_t>(bytes);
}

} // namespace media
