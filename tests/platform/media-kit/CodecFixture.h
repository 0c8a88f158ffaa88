#ifndef TESTS_MEDIA_KIT_CODEC_FIXTURE_H
#define TESTS_MEDIA_KIT_CODEC_FIXTURE_H

#include "Camera/Boundary/OvMediaKit.h"

#include "reference/ConvertReference.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

/* A media handle, and pictures to encode. */
class CodecTest : public ::testing::Test {
protected:
    CodecTest() : handle_(OV_MP_CreateHandle()) {}
    ~CodecTest() override { OV_MP_DestroyHandle(handle_); }

    /* Bytes that change smoothly, so that a JPEG of them is close to them. */
    static reference::Picture Smooth(std::uint32_t type, int width, int height) {
        reference::Picture picture{type, width, height, {}};
        picture.bytes.resize(reference::Bytes(type, width, height));
        for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
            picture.bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 64);
        }
        return picture;
    }

    _OV_IMAGE_INFO_ Record(reference::Picture& picture, std::uint32_t kind) {
        output_.assign(
            static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height) * 4 + 4096,
            0xEE);
        _OV_IMAGE_INFO_ record{};
        record.sourceType = picture.type;
        record.source = picture.bytes.data();
        record.sourceLength = static_cast<std::uint32_t>(picture.bytes.size());
        record.width = static_cast<std::uint16_t>(picture.width);
        record.height = static_cast<std::uint16_t>(picture.height);
        record.imageType = kind;
        record.output = output_.data();
        record.outputCapacity = static_cast<std::uint32_t>(output_.size());
        record.jpegQuality = 95;
        return record;
    }

    std::vector<std::uint8_t> Save(reference::Picture& picture, std::uint32_t kind,
                                   std::uint32_t quality = 95) {
        _OV_IMAGE_INFO_ record = Record(picture, kind);
        record.jpegQuality = quality;
        EXPECT_EQ(OV_MP_SaveImage(handle_, &record), OV_STATUS_OK) << picture.type << " " << picture.width;
        return {output_.begin(), output_.begin() + record.outputLength};
    }

    std::uint32_t Decode(const std::vector<std::uint8_t>& jpeg, std::vector<std::uint8_t>& rgb) {
        _OV_DECODE_INFO_ record{};
        record.source = jpeg.data();
        record.sourceLength = static_cast<std::uint32_t>(jpeg.size());
        record.decodeKind = 1;
        record.destination = rgb.data();
        record.destinationCapacity = static_cast<std::uint32_t>(rgb.size());
        return OV_MP_Decode(handle_, &record, record.sourceLength, 0);
    }

    void* handle_;
    std::vector<std::uint8_t> output_;
};

inline bool HasNoColour(std::uint32_t type) {
    return type <= OV_PIXEL_MONO12_PACKED;
}

#endif
