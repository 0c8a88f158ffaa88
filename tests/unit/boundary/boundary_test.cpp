// The records as bytes: what C code stores must be found at the offsets that other makers' libraries use.
#include "Camera/Boundary/OVRender.h"
#include "Camera/Boundary/OvCameraControl.h"
#include "Camera/Boundary/OvMediaKit.h"

#include <cstring>
#include <gtest/gtest.h>
#include <ostream>

extern "C" void boundary_c_fill(_OV_CC_DEVICE_INFO_* device, tagVRRotation* rotation);

namespace {

template<typename T>
T At(const void* record, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const uint8_t*>(record) + offset, sizeof value);
    return value;
}

TEST(Boundary, DeviceRecordAsBytes) {
    _OV_CC_DEVICE_INFO_ device{};
    tagVRRotation rotation{};
    boundary_c_fill(&device, &rotation);
    EXPECT_EQ(At<uint32_t>(&device, 4), 0x0102u);
    EXPECT_EQ(At<uint32_t>(&device, 12), 1u);
    EXPECT_EQ(At<uint32_t>(&device, 40), 0x0A000001u);
    EXPECT_EQ(At<char>(&device, 196), 'S');
    EXPECT_EQ(At<uint32_t>(&device, 228), 0x0A000002u);
}

TEST(Boundary, RotationRecordAsBytes) {
    _OV_CC_DEVICE_INFO_ device{};
    tagVRRotation rotation{};
    boundary_c_fill(&device, &rotation);
    EXPECT_EQ(At<const void*>(&rotation, 0), reinterpret_cast<const uint8_t*>(&rotation) + 16);
    EXPECT_EQ(At<uint32_t>(&rotation, 8), 1u);
    EXPECT_EQ(At<float>(&rotation, 24), 1.0f);
    EXPECT_EQ(At<float>(&rotation, 28), 90.0f);
}

struct PixelRow {
    OvGvspPixelType camera;
    int64_t code;
    uint32_t media;
    uint32_t number;
};

void PrintTo(const PixelRow& row, std::ostream* out) {
    *out << std::hex << row.code;
}

class PixelCodes : public testing::TestWithParam<PixelRow> {};

TEST_P(PixelCodes, AreThoseOfTheGvspList) {
    EXPECT_EQ(GetParam().camera, GetParam().code);
    EXPECT_EQ(GetParam().media, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    All, PixelCodes,
    testing::Values(PixelRow{OV_GVSP_MONO8, 0x01080001, OV_PIXEL_MONO8, 0},
                    PixelRow{OV_GVSP_MONO10, 0x01100003, OV_PIXEL_MONO10, 1},
                    PixelRow{OV_GVSP_MONO12, 0x01100005, OV_PIXEL_MONO12, 2},
                    PixelRow{OV_GVSP_MONO10_PACKED, 0x010C0004, OV_PIXEL_MONO10_PACKED, 3},
                    PixelRow{OV_GVSP_MONO12_PACKED, 0x010C0006, OV_PIXEL_MONO12_PACKED, 4},
                    PixelRow{OV_GVSP_BAYER_GR8, 0x01080008, OV_PIXEL_BAYER_GR8, 5},
                    PixelRow{OV_GVSP_BAYER_RG8, 0x01080009, OV_PIXEL_BAYER_RG8, 6},
                    PixelRow{OV_GVSP_BAYER_GB8, 0x0108000A, OV_PIXEL_BAYER_GB8, 7},
                    PixelRow{OV_GVSP_BAYER_BG8, 0x0108000B, OV_PIXEL_BAYER_BG8, 8},
                    PixelRow{OV_GVSP_BAYER_GB10, 0x0110000E, OV_PIXEL_BAYER_GB10, 9},
                    PixelRow{OV_GVSP_BAYER_GB10_PACKED, 0x010C0028, OV_PIXEL_BAYER_GB10_PACKED, 10},
                    PixelRow{OV_GVSP_BAYER_BG10, 0x0110000F, OV_PIXEL_BAYER_BG10, 11},
                    PixelRow{OV_GVSP_BAYER_BG10_PACKED, 0x010C0029, OV_PIXEL_BAYER_BG10_PACKED, 12},
                    PixelRow{OV_GVSP_BAYER_RG10, 0x0110000D, OV_PIXEL_BAYER_RG10, 13},
                    PixelRow{OV_GVSP_BAYER_RG10_PACKED, 0x010C0027, OV_PIXEL_BAYER_RG10_PACKED, 14},
                    PixelRow{OV_GVSP_BAYER_GR10, 0x0110000C, OV_PIXEL_BAYER_GR10, 15},
                    PixelRow{OV_GVSP_BAYER_GR10_PACKED, 0x010C0026, OV_PIXEL_BAYER_GR10_PACKED, 16},
                    PixelRow{OV_GVSP_BAYER_GB12, 0x01100012, OV_PIXEL_BAYER_GB12, 17},
                    PixelRow{OV_GVSP_BAYER_GB12_PACKED, 0x010C002C, OV_PIXEL_BAYER_GB12_PACKED, 18},
                    PixelRow{OV_GVSP_BAYER_BG12, 0x01100013, OV_PIXEL_BAYER_BG12, 19},
                    PixelRow{OV_GVSP_BAYER_BG12_PACKED, 0x010C002D, OV_PIXEL_BAYER_BG12_PACKED, 20},
                    PixelRow{OV_GVSP_BAYER_RG12, 0x01100011, OV_PIXEL_BAYER_RG12, 21},
                    PixelRow{OV_GVSP_BAYER_RG12_PACKED, 0x010C002B, OV_PIXEL_BAYER_RG12_PACKED, 22},
                    PixelRow{OV_GVSP_BAYER_GR12, 0x01100010, OV_PIXEL_BAYER_GR12, 23},
                    PixelRow{OV_GVSP_BAYER_GR12_PACKED, 0x010C002A, OV_PIXEL_BAYER_GR12_PACKED, 24},
                    PixelRow{OV_GVSP_YUV422_PACKED, 0x0210001F, OV_PIXEL_YUV422_PACKED, 25},
                    PixelRow{OV_GVSP_YUV422_YUYV, 0x02100032, OV_PIXEL_YUV422_YUYV, 26},
                    PixelRow{OV_GVSP_RGB8_PACKED, 0x02180014, OV_PIXEL_RGB8, 27},
                    PixelRow{OV_GVSP_JPEG, 0x80180001, OV_PIXEL_RGB32, 32},
                    PixelRow{OV_GVSP_NONE, -1, OV_PIXEL_MONO8, 0}));

} // namespace
