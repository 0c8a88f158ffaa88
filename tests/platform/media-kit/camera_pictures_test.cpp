#include "Camera/Boundary/OvMediaKit.h"
#include "Picture/PixelFormat.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

/*
 * What the virtual camera packs, the library must take apart: the camera's own encoder, which shares nothing
 * with the library, draws plain patches in every format, and their colours are looked for in the middle of
 * each after conversion.
 */

namespace vcam {

static void PrintTo(const PixelFormat& format, std::ostream* out) {
    *out << format.name;
}

} // namespace vcam

namespace {

struct Patch {
    const char* name;
    int red;
    int green;
    int blue;
};

constexpr Patch kPatches[] = {{"red", 255, 0, 0},       {"green", 0, 255, 0},    {"blue", 0, 0, 255},
                              {"yellow", 250, 240, 10}, {"skin", 220, 170, 140}, {"dark", 20, 25, 40},
                              {"black", 0, 0, 0},       {"white", 255, 255, 255}};
constexpr std::uint16_t kPatchSide = 16;
constexpr std::uint16_t kWidth = kPatchSide * 8;
constexpr std::uint16_t kHeight = 2 * kPatchSide;

const Patch& PatchAt(std::size_t x, std::size_t y) {
    return kPatches[(x / kPatchSide + 3 * (y / kPatchSide)) % 8];
}

/* The camera's code as the library numbers it. */
std::uint32_t LibraryType(std::uint32_t code) {
    const struct {
        OvGvspPixelType code;
        std::uint32_t type;
    } rows[] = {{OV_GVSP_MONO8, OV_PIXEL_MONO8},
                {OV_GVSP_MONO10, OV_PIXEL_MONO10},
                {OV_GVSP_MONO12, OV_PIXEL_MONO12},
                {OV_GVSP_MONO10_PACKED, OV_PIXEL_MONO10_PACKED},
                {OV_GVSP_MONO12_PACKED, OV_PIXEL_MONO12_PACKED},
                {OV_GVSP_BAYER_GR8, OV_PIXEL_BAYER_GR8},
                {OV_GVSP_BAYER_RG8, OV_PIXEL_BAYER_RG8},
                {OV_GVSP_BAYER_GB8, OV_PIXEL_BAYER_GB8},
                {OV_GVSP_BAYER_BG8, OV_PIXEL_BAYER_BG8},
                {OV_GVSP_BAYER_GR10, OV_PIXEL_BAYER_GR10},
                {OV_GVSP_BAYER_RG10, OV_PIXEL_BAYER_RG10},
                {OV_GVSP_BAYER_GB10, OV_PIXEL_BAYER_GB10},
                {OV_GVSP_BAYER_BG10, OV_PIXEL_BAYER_BG10},
                {OV_GVSP_BAYER_GR12, OV_PIXEL_BAYER_GR12},
                {OV_GVSP_BAYER_RG12, OV_PIXEL_BAYER_RG12},
                {OV_GVSP_BAYER_GB12, OV_PIXEL_BAYER_GB12},
                {OV_GVSP_BAYER_BG12, OV_PIXEL_BAYER_BG12},
                {OV_GVSP_BAYER_GR10_PACKED, OV_PIXEL_BAYER_GR10_PACKED},
                {OV_GVSP_BAYER_RG10_PACKED, OV_PIXEL_BAYER_RG10_PACKED},
                {OV_GVSP_BAYER_GB10_PACKED, OV_PIXEL_BAYER_GB10_PACKED},
                {OV_GVSP_BAYER_BG10_PACKED, OV_PIXEL_BAYER_BG10_PACKED},
                {OV_GVSP_BAYER_GR12_PACKED, OV_PIXEL_BAYER_GR12_PACKED},
                {OV_GVSP_BAYER_RG12_PACKED, OV_PIXEL_BAYER_RG12_PACKED},
                {OV_GVSP_BAYER_GB12_PACKED, OV_PIXEL_BAYER_GB12_PACKED},
                {OV_GVSP_BAYER_BG12_PACKED, OV_PIXEL_BAYER_BG12_PACKED},
                {OV_GVSP_YUV422_PACKED, OV_PIXEL_YUV422_PACKED},
                {OV_GVSP_YUV422_YUYV, OV_PIXEL_YUV422_YUYV},
                {OV_GVSP_RGB8_PACKED, OV_PIXEL_RGB8}};
    for (const auto& row : rows) {
        if (row.code == code) {
            return row.type;
        }
    }
    return UINT32_MAX;
}

std::vector<std::uint8_t> CameraPicture(const vcam::PixelFormat& format) {
    std::vector<std::uint8_t> picture(format.BytesFor(std::size_t{kWidth} * kHeight));
    std::vector<vcam::Rgb12> row(kWidth);
    for (std::size_t y = 0; y < kHeight; ++y) {
        for (std::size_t x = 0; x < kWidth; ++x) {
            const Patch& patch = PatchAt(x, y);
            const auto twelve = [](int value) { return static_cast<std::uint16_t>(value << 4 | value >> 4); };
            row[x] = {twelve(patch.red), twelve(patch.green), twelve(patch.blue)};
        }
        vcam::EncodeRow(format, row.data(), kWidth, 0, y, picture.data() + format.BytesFor(y * kWidth));
    }
    return picture;
}

class CameraPictures : public ::testing::TestWithParam<vcam::PixelFormat> {
protected:
    CameraPictures() : handle_(OV_MP_CreateHandle()) {}
    ~CameraPictures() override { OV_MP_DestroyHandle(handle_); }
    void* handle_;
};

TEST_P(CameraPictures, HaveTheirColoursInPlace) {
    const vcam::PixelFormat& format = GetParam();
    const std::vector<std::uint8_t> picture = CameraPicture(format);
    std::vector<std::uint8_t> result(3U * kWidth * kHeight);
    const bool mono = format.layout == vcam::Layout::Mono;
    // U and V are whole numbers in the camera: at most two steps of blue, as much of green and red.
    const bool yuv = format.layout == vcam::Layout::Uyvy || format.layout == vcam::Layout::Yuyv;
    const int tolerance = yuv ? 3 : mono ? 1 : 0;
    for (std::uint32_t method = 0; method < 3; ++method) {
        _OV_CONVERT_PIXEL_INFO_ record{};
        record.width = kWidth;
        record.height = kHeight;
        record.sourceType = LibraryType(format.code);
        record.source = picture.data();
        record.sourceLength = static_cast<std::uint32_t>(picture.size());
        record.destinationType = OV_PIXEL_RGB8;
        record.destination = result.data();
        record.destinationCapacity = static_cast<std::uint32_t>(result.size());
        record.bayerMethod = method;
        ASSERT_EQ(OV_MP_ConvertPixelType(handle_, &record), OV_STATUS_OK);
        for (std::size_t y = kPatchSide / 2; y < kHeight; y += kPatchSide) {
            for (std::size_t x = kPatchSide / 2; x < kWidth; x += kPatchSide) {
                const Patch& patch = PatchAt(x, y);
                const int grey = (77 * patch.red + 150 * patch.green + 29 * patch.blue) >> 8;
                const std::uint8_t* const got = result.data() + 3 * (y * kWidth + x);
                EXPECT_NEAR(got[0], mono ? grey : patch.red, tolerance) << patch.name << " method " << method;
                EXPECT_NEAR(got[1], mono ? grey : patch.green, tolerance)
                    << patch.name << " method " << method;
                EXPECT_NEAR(got[2], mono ? grey : patch.blue, tolerance)
                    << patch.name << " method " << method;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, CameraPictures, ::testing::ValuesIn(vcam::PixelFormats()),
                         [](const auto& format) { return std::string(format.param.name); });

} // namespace
