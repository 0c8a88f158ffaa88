#include "CodecFixture.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

using Colour = std::array<int, 3>;

/* The channel at a site of a Bayer picture: 0 red, 1 green, 2 blue. */
int ChannelAt(std::uint32_t type, int x, int y) {
    const char* cell = nullptr;
    switch (type) {
    case OV_PIXEL_BAYER_GR8:
    case OV_PIXEL_BAYER_GR10:
    case OV_PIXEL_BAYER_GR10_PACKED:
    case OV_PIXEL_BAYER_GR12:
    case OV_PIXEL_BAYER_GR12_PACKED:
        cell = "GRBG";
        break;
    case OV_PIXEL_BAYER_RG8:
    case OV_PIXEL_BAYER_RG10:
    case OV_PIXEL_BAYER_RG10_PACKED:
    case OV_PIXEL_BAYER_RG12:
    case OV_PIXEL_BAYER_RG12_PACKED:
        cell = "RGGB";
        break;
    case OV_PIXEL_BAYER_GB8:
    case OV_PIXEL_BAYER_GB10:
    case OV_PIXEL_BAYER_GB10_PACKED:
    case OV_PIXEL_BAYER_GB12:
    case OV_PIXEL_BAYER_GB12_PACKED:
        cell = "GBRG";
        break;
    default:
        cell = "BGGR";
        break;
    }
    const char letter = cell[(y & 1) * 2 + (x & 1)];
    return letter == 'R' ? 0 : letter == 'G' ? 1 : 2;
}

int BitsOf(std::uint32_t type) {
    if (type >= OV_PIXEL_BAYER_GB12 && type <= OV_PIXEL_BAYER_GR12_PACKED) {
        return 12;
    }
    return type >= OV_PIXEL_BAYER_GB10 && type <= OV_PIXEL_BAYER_GR10_PACKED ? 10 : 8;
}

bool IsPacked(std::uint32_t type) {
    return type >= OV_PIXEL_BAYER_GB10 && type <= OV_PIXEL_BAYER_GR12_PACKED && type % 2 == 0;
}

void PutSample(std::vector<std::uint8_t>& bytes, std::uint32_t type, std::size_t index, unsigned value) {
    const int bits = BitsOf(type);
    if (bits == 8) {
        bytes[index] = static_cast<std::uint8_t>(value);
    } else if (!IsPacked(type)) {
        bytes[index * 2] = static_cast<std::uint8_t>(value);
        bytes[index * 2 + 1] = static_cast<std::uint8_t>(value >> 8);
    } else {
        const unsigned low = static_cast<unsigned>(bits) - 8;
        std::uint8_t* triple = bytes.data() + index / 2 * 3;
        triple[index % 2 ? 2 : 0] = static_cast<std::uint8_t>(value >> low);
        const unsigned shift = index % 2 ? 4 : 0;
        triple[1] = static_cast<std::uint8_t>(triple[1] | (value & ((1U << low) - 1)) << shift);
    }
}

unsigned GetSample(const std::vector<std::uint8_t>& bytes, std::uint32_t type, std::size_t index) {
    const int bits = BitsOf(type);
    if (bits == 8) {
        return bytes[index];
    }
    if (!IsPacked(type)) {
        return bytes[index * 2] | static_cast<unsigned>(bytes[index * 2 + 1]) << 8;
    }
    const unsigned low = static_cast<unsigned>(bits) - 8;
    const std::uint8_t* triple = bytes.data() + index / 2 * 3;
    return static_cast<unsigned>(triple[index % 2 ? 2 : 0]) << low |
           (triple[1] >> (index % 2 ? 4 : 0) & ((1U << low) - 1));
}

/* A picture of one colour, given in 8 bits. */
reference::Picture Flat(std::uint32_t type, int width, int height, const Colour& colour) {
    reference::Picture picture{type, width, height, {}};
    picture.bytes.assign(reference::Bytes(type, width, height) + 2, 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto index =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
            if (type == OV_PIXEL_RGB8) {
                for (std::size_t c = 0; c < 3; ++c) {
                    picture.bytes[index * 3 + c] = static_cast<std::uint8_t>(colour[c]);
                }
            } else {
                PutSample(picture.bytes, type, index,
                          static_cast<unsigned>(colour[static_cast<std::size_t>(ChannelAt(type, x, y))])
                              << (BitsOf(type) - 8));
            }
        }
    }
    picture.bytes.resize(reference::Bytes(type, width, height));
    return picture;
}

class WhiteBalance : public CodecTest {
protected:
    std::uint32_t Measure(reference::Picture& picture, _OV_WHITE_BALANCE_PARAM_& gains) {
        _OV_IMAGE_INFO_ record = Record(picture, 0);
        return OV_MP_GetWhiteBalance(handle_, &record, &gains);
    }
    std::uint32_t Apply(reference::Picture& picture, _OV_WHITE_BALANCE_PARAM_ gains) {
        _OV_IMAGE_INFO_ record = Record(picture, 0);
        return OV_MP_WhiteBalanceProcess(handle_, &record, &gains);
    }
    static _OV_WHITE_BALANCE_PARAM_ Gains(int red, int green, int blue) {
        _OV_WHITE_BALANCE_PARAM_ gains{};
        gains.red = static_cast<std::uint16_t>(red);
        gains.green = static_cast<std::uint16_t>(green);
        gains.blue = static_cast<std::uint16_t>(blue);
        return gains;
    }
};

std::vector<std::uint32_t> ColourTypes() {
    std::vector<std::uint32_t> types{OV_PIXEL_RGB8};
    for (std::uint32_t type = OV_PIXEL_BAYER_GR8; type <= OV_PIXEL_BAYER_GR12_PACKED; ++type) {
        types.push_back(type);
    }
    return types;
}

TEST_F(WhiteBalance, ACastIsMeasuredAndTakenAway) {
    for (const std::uint32_t type : ColourTypes()) {
        auto picture = Flat(type, 34, 22, {150, 100, 60});
        _OV_WHITE_BALANCE_PARAM_ gains{};
        ASSERT_EQ(Measure(picture, gains), OV_STATUS_OK) << type;
        EXPECT_EQ(gains.red, 512) << type;
        EXPECT_NEAR(gains.green, 768, 1) << type;
        EXPECT_NEAR(gains.blue, 1280, 1) << type;
        ASSERT_EQ(Apply(picture, gains), OV_STATUS_OK) << type;
        const auto rgb = reference::Convert(picture, OV_BAYER_NEAREST, OV_PIXEL_RGB8);
        for (std::size_t i = 0; i < rgb.size(); ++i) {
            ASSERT_NEAR(rgb[i], 150, 1) << type << " at " << i;
        }
    }
}

TEST_F(WhiteBalance, OddSizesOfPackedPictures) {
    for (const std::uint32_t type : {OV_PIXEL_BAYER_RG10_PACKED, OV_PIXEL_BAYER_GB12_PACKED}) {
        auto picture = Flat(type, 7, 5, {100, 50, 100});
        ASSERT_EQ(Apply(picture, Gains(1, 2, 1)), OV_STATUS_OK);
        for (std::size_t i = 0; i + 1 < 35; ++i) {
            EXPECT_EQ(GetSample(picture.bytes, type, i), 100U << (BitsOf(type) - 8)) << type << " at " << i;
        }
        EXPECT_EQ(picture.bytes[34 / 2 * 3], 100) << "the last pixel has only its high byte";
    }
}

TEST_F(WhiteBalance, DarkAndClippedPlacesDoNotCount) {
    for (const std::uint32_t type : {OV_PIXEL_BAYER_RG8, OV_PIXEL_RGB8}) {
        auto picture = Flat(type, 64, 64, {120, 100, 80});
        auto clipped = Flat(type, 64, 64, {255, 255, 255});
        auto dark = Flat(type, 64, 64, {12, 2, 9});
        const std::size_t rows = picture.bytes.size() / 64;
        std::copy_n(clipped.bytes.begin(), rows * 30, picture.bytes.begin());
        std::copy_n(dark.bytes.begin(), rows * 30,
                    picture.bytes.begin() + static_cast<std::ptrdiff_t>(rows * 30));
        _OV_WHITE_BALANCE_PARAM_ gains{};
        ASSERT_EQ(Measure(picture, gains), OV_STATUS_OK);
        EXPECT_NEAR(gains.green, 512 * 1.2, 2) << type;
        EXPECT_NEAR(gains.blue, 512 * 1.5, 2) << type;
    }
}

TEST_F(WhiteBalance, OneClippedChannelIsEnoughToLeaveAPlaceOut) {
    auto picture = Flat(OV_PIXEL_RGB8, 32, 32, {255, 100, 100});
    auto good = Flat(OV_PIXEL_RGB8, 32, 8, {100, 100, 100});
    std::copy(good.bytes.begin(), good.bytes.end(), picture.bytes.begin());
    _OV_WHITE_BALANCE_PARAM_ gains{};
    ASSERT_EQ(Measure(picture, gains), OV_STATUS_OK);
    EXPECT_EQ(gains.red, 512);
    EXPECT_EQ(gains.blue, 512);
}

TEST_F(WhiteBalance, APictureWithoutAPlaceLeavesTheGains) {
    for (const Colour& colour : {Colour{0, 0, 0}, Colour{255, 255, 255}, Colour{5, 100, 100}}) {
        auto picture = Flat(OV_PIXEL_BAYER_GB8, 32, 32, colour);
        _OV_WHITE_BALANCE_PARAM_ gains = Gains(7, 8, 9);
        EXPECT_EQ(Measure(picture, gains), OV_STATUS_NO_DATA);
        EXPECT_EQ(gains.red, 7);
        EXPECT_EQ(gains.green, 8);
        EXPECT_EQ(gains.blue, 9);
    }
}

TEST_F(WhiteBalance, MeasuredGainsStayInThePanelsRange) {
    auto picture = Flat(OV_PIXEL_RGB8, 32, 32, {240, 20, 13});
    _OV_WHITE_BALANCE_PARAM_ gains{};
    ASSERT_EQ(Measure(picture, gains), OV_STATUS_OK);
    EXPECT_EQ(gains.green, 2047);
    EXPECT_EQ(gains.blue, 2047);
}

TEST_F(WhiteBalance, TheOpaquePartTravelsUntouched) {
    auto picture = Flat(OV_PIXEL_RGB8, 32, 32, {100, 100, 100});
    _OV_WHITE_BALANCE_PARAM_ gains{};
    std::memset(gains.opaque, 0xA5, sizeof(gains.opaque));
    ASSERT_EQ(Measure(picture, gains), OV_STATUS_OK);
    for (const std::uint8_t byte : gains.opaque) {
        EXPECT_EQ(byte, 0xA5);
    }
}

TEST_F(WhiteBalance, EqualGainsChangeNothing) {
    for (const int gain : {0, 1, 512, 2047, 65535}) {
        auto picture = Smooth(OV_PIXEL_BAYER_RG12_PACKED, 32, 16);
        const auto before = picture.bytes;
        EXPECT_EQ(Apply(picture, Gains(gain, gain, gain)), OV_STATUS_OK);
        EXPECT_EQ(picture.bytes, before) << gain;
    }
}

TEST_F(WhiteBalance, OnlyRatiosCountAndWhiteStaysWhite) {
    auto a = Flat(OV_PIXEL_RGB8, 4, 4, {100, 200, 255});
    auto b = a;
    EXPECT_EQ(Apply(a, Gains(512, 1024, 512)), OV_STATUS_OK);
    EXPECT_EQ(Apply(b, Gains(1, 2, 1)), OV_STATUS_OK);
    EXPECT_EQ(a.bytes, b.bytes);
    EXPECT_EQ(a.bytes[0], 100);
    EXPECT_EQ(a.bytes[1], 255) << "saturated";
    EXPECT_EQ(a.bytes[2], 255) << "never made darker";
}

TEST_F(WhiteBalance, AZeroCountsAsOneAndFactorsEndAtSixteen) {
    auto picture = Flat(OV_PIXEL_RGB8, 2, 2, {3, 3, 3});
    EXPECT_EQ(Apply(picture, Gains(0, 2, 65535)), OV_STATUS_OK);
    EXPECT_EQ(picture.bytes[0], 3);
    EXPECT_EQ(picture.bytes[1], 6);
    EXPECT_EQ(picture.bytes[2], 48);
}

TEST_F(WhiteBalance, BitsAboveTheDepthMeanNothing) {
    reference::Picture picture{OV_PIXEL_BAYER_RG12, 2, 2, {0x64, 0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
    EXPECT_EQ(Apply(picture, Gains(2, 1, 1)), OV_STATUS_OK);
    EXPECT_EQ(GetSample(picture.bytes, picture.type, 0), 200U);
    EXPECT_EQ(GetSample(picture.bytes, picture.type, 1), 4095U);
}

TEST_F(WhiteBalance, OtherPicturesAndBadRecordsAreRefused) {
    _OV_WHITE_BALANCE_PARAM_ gains = Gains(1, 2, 3);
    for (const std::uint32_t type : {0U, 2U, 4U, 25U, 26U, 28U, 32U}) {
        auto picture = Smooth(type > 27 ? 0U : type, 16, 16);
        picture.type = type;
        picture.bytes.resize(16 * 16 * 4);
        EXPECT_EQ(Measure(picture, gains), OV_STATUS_NOT_SUPPORTED) << type;
        EXPECT_EQ(Apply(picture, gains), OV_STATUS_NOT_SUPPORTED) << type;
    }
    auto picture = Flat(OV_PIXEL_BAYER_RG8, 16, 16, {100, 100, 100});
    _OV_IMAGE_INFO_ record = Record(picture, 0);
    EXPECT_EQ(OV_MP_GetWhiteBalance(handle_, nullptr, &gains), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_MP_GetWhiteBalance(handle_, &record, nullptr), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_MP_WhiteBalanceProcess(handle_, &record, nullptr), OV_STATUS_INVALID_PARAMETER);
    record.sourceLength = 255;
    EXPECT_EQ(OV_MP_GetWhiteBalance(handle_, &record, &gains), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_MP_WhiteBalanceProcess(handle_, &record, &gains), OV_STATUS_INVALID_PARAMETER);
}

} // namespace
