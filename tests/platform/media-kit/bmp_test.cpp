#include "CodecFixture.h"
#include "GuardedBuffer.h"

#include <cstring>

namespace {

/* A bitmap file byte by byte, from the definition of the format and the reference conversion. */
std::vector<std::uint8_t> Expected(const reference::Picture& picture) {
    const bool grey = HasNoColour(picture.type);
    const auto width = static_cast<std::uint32_t>(picture.width);
    const auto height = static_cast<std::uint32_t>(picture.height);
    const std::uint32_t pitch = (width * (grey ? 1 : 3) + 3) & ~3U;
    const std::uint32_t offset = grey ? 54 + 1024 : 54;
    std::vector<std::uint8_t> file;
    const auto put = [&file](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            file.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    };
    put(0x4D42, 2);
    put(offset + pitch * height, 4);
    put(0, 4);
    put(offset, 4);
    put(40, 4);
    put(width, 4);
    put(height, 4);
    put(1, 2);
    put(grey ? 8 : 24, 2);
    put(0, 4);
    put(pitch * height, 4);
    put(2835, 4);
    put(2835, 4);
    put(grey ? 256 : 0, 4);
    put(0, 4);
    for (std::uint32_t level = 0; grey && level < 256; ++level) {
        put(level * 0x010101U, 4);
    }
    const reference::Converter converter(picture, OV_BAYER_BILINEAR);
    for (int y = picture.height - 1; y >= 0; --y) {
        for (int x = 0; x < picture.width; ++x) {
            if (grey) {
                put(static_cast<std::uint32_t>(converter.GreyAt(x, y)), 1);
            } else {
                const reference::Rgb pixel = converter.At(x, y);
                put(static_cast<std::uint32_t>(pixel.blue), 1);
                put(static_cast<std::uint32_t>(pixel.green), 1);
                put(static_cast<std::uint32_t>(pixel.red), 1);
            }
        }
        while ((file.size() - offset) % 4 != 0) {
            file.push_back(0);
        }
    }
    return file;
}

using Bmp = CodecTest;

TEST_F(Bmp, IsRightByteByByteForEveryTypeAndWidth) {
    for (std::uint32_t type = 0; type <= OV_PIXEL_RGB8; ++type) {
        for (const int width : {2, 3, 4, 5, 6, 7, 8, 33, 66}) {
            const bool yuv = type == OV_PIXEL_YUV422_PACKED || type == OV_PIXEL_YUV422_YUYV;
            if (yuv && width % 2 != 0) {
                continue;
            }
            for (const int height : {2, 3, 5}) {
                auto picture = Smooth(type, width, height);
                ASSERT_EQ(Save(picture, OV_IMAGE_BMP), Expected(picture))
                    << type << ": " << width << " x " << height;
            }
        }
    }
}

TEST_F(Bmp, OfOnePixel) {
    auto grey = Smooth(OV_PIXEL_MONO8, 1, 1);
    EXPECT_EQ(Save(grey, OV_IMAGE_BMP), Expected(grey));
    auto colour = Smooth(OV_PIXEL_RGB8, 1, 1);
    EXPECT_EQ(Save(colour, OV_IMAGE_BMP), Expected(colour));
}

TEST_F(Bmp, LargeEnoughForSeveralThreads) {
    auto picture = Smooth(OV_PIXEL_BAYER_RG8, 1023, 513);
    EXPECT_EQ(Save(picture, OV_IMAGE_BMP), Expected(picture));
}

TEST_F(Bmp, FitsExactlyOrIsRefusedUntouched) {
    auto picture = Smooth(OV_PIXEL_RGB8, 5, 3);
    const std::uint32_t needed = 54 + 16 * 3;
    const GuardedBuffer guarded(needed);
    _OV_IMAGE_INFO_ record = Record(picture, OV_IMAGE_BMP);
    record.output = guarded.AtEnd(needed);
    record.outputCapacity = needed;
    EXPECT_EQ(OV_MP_SaveImage(handle_, &record), OV_STATUS_OK);
    EXPECT_EQ(record.outputLength, needed);
    std::memset(record.output, 0x55, needed);
    for (const std::uint32_t capacity : {needed - 1, 54U, 1U, 0U}) {
        record.outputCapacity = capacity;
        record.outputLength = 99;
        EXPECT_EQ(OV_MP_SaveImage(handle_, &record), OV_STATUS_BUFFER_FULL) << capacity;
        EXPECT_EQ(record.outputLength, 0U);
        EXPECT_EQ(record.output[0], 0x55);
    }
}

using SaveImage = CodecTest;

TEST_F(SaveImage, BadRecordsAreRefused) {
    auto picture = Smooth(OV_PIXEL_MONO8, 16, 16);
    const auto refused = [&](const char* what, std::uint32_t status, auto change) {
        for (const std::uint32_t kind : {OV_IMAGE_BMP, OV_IMAGE_JPEG}) {
            _OV_IMAGE_INFO_ record = Record(picture, kind);
            change(record);
            EXPECT_EQ(OV_MP_SaveImage(handle_, &record), status) << what;
            EXPECT_EQ(record.outputLength, 0U) << what;
        }
    };
    EXPECT_EQ(OV_MP_SaveImage(handle_, nullptr), OV_STATUS_INVALID_PARAMETER);
    refused("no source", OV_STATUS_INVALID_PARAMETER, [](auto& r) { r.source = nullptr; });
    refused("no output", OV_STATUS_INVALID_PARAMETER, [](auto& r) { r.output = nullptr; });
    refused("width 0", OV_STATUS_INVALID_PARAMETER, [](auto& r) { r.width = 0; });
    refused("height 0", OV_STATUS_INVALID_PARAMETER, [](auto& r) { r.height = 0; });
    refused("too few bytes", OV_STATUS_INVALID_PARAMETER, [](auto& r) { r.sourceLength = 255; });
    refused("sizes beyond the bytes", OV_STATUS_INVALID_PARAMETER,
            [](auto& r) { r.width = r.height = 65535; });
    refused("unknown type", OV_STATUS_NOT_SUPPORTED, [](auto& r) { r.sourceType = 28; });
    refused("unknown file", OV_STATUS_NOT_SUPPORTED, [](auto& r) { r.imageType = 2; });
    refused("output over the source", OV_STATUS_INVALID_PARAMETER, [](auto& r) { r.output = r.source + 10; });
    _OV_IMAGE_INFO_ record = Record(picture, OV_IMAGE_JPEG);
    for (const std::uint32_t quality : {0U, 101U, UINT32_MAX}) {
        record.jpegQuality = quality;
        EXPECT_EQ(OV_MP_SaveImage(handle_, &record), OV_STATUS_INVALID_PARAMETER) << quality;
    }
}

TEST_F(SaveImage, BadHandles) {
    auto picture = Smooth(OV_PIXEL_MONO8, 16, 16);
    _OV_IMAGE_INFO_ record = Record(picture, OV_IMAGE_BMP);
    _OV_DECODE_INFO_ decode{};
    _OV_WHITE_BALANCE_PARAM_ gains{};
    for (void* bad : {static_cast<void*>(nullptr), reinterpret_cast<void*>(0x1234)}) {
        EXPECT_EQ(OV_MP_SaveImage(bad, &record), OV_STATUS_INVALID_HANDLE);
        EXPECT_EQ(OV_MP_Decode(bad, &decode, 1, 0), OV_STATUS_INVALID_HANDLE);
        EXPECT_EQ(OV_MP_GetWhiteBalance(bad, &record, &gains), OV_STATUS_INVALID_HANDLE);
        EXPECT_EQ(OV_MP_WhiteBalanceProcess(bad, &record, &gains), OV_STATUS_INVALID_HANDLE);
    }
}

} // namespace
