#include "CodecFixture.h"
#include "GuardedBuffer.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <thread>

#include <turbojpeg.h>

namespace {

/* A second opinion: the other interface of libjpeg-turbo, with its own parsing of our bytes. */
std::vector<std::uint8_t> DecodedElsewhere(const std::vector<std::uint8_t>& jpeg, int& width, int& height,
                                           int& sampling) {
    tjhandle handle = tjInitDecompress();
    std::vector<std::uint8_t> rgb;
    int space = 0;
    if (tjDecompressHeader3(handle, jpeg.data(), static_cast<unsigned long>(jpeg.size()), &width, &height,
                            &sampling, &space) == 0) {
        rgb.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
        EXPECT_EQ(tjDecompress2(handle, jpeg.data(), static_cast<unsigned long>(jpeg.size()), rgb.data(),
                                width, 0, height, TJPF_RGB, TJFLAG_ACCURATEDCT),
                  0)
            << tjGetErrorStr2(handle);
    }
    tjDestroy(handle);
    return rgb;
}

std::vector<std::uint8_t> EncodedElsewhere(const std::vector<std::uint8_t>& rgb, int width, int height,
                                           int sampling) {
    tjhandle handle = tjInitCompress();
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    EXPECT_EQ(tjCompress2(handle, rgb.data(), width, 0, height, TJPF_RGB, &bytes, &length, sampling, 95, 0),
              0);
    std::vector<std::uint8_t> jpeg(bytes, bytes + length);
    tjFree(bytes);
    tjDestroy(handle);
    return jpeg;
}

double Psnr(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
    double squares = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double d = static_cast<double>(a[i]) - b[i];
        squares += d * d;
    }
    return squares == 0 ? 99.0 : 10.0 * std::log10(255.0 * 255.0 * static_cast<double>(a.size()) / squares);
}

/* Slow waves in three colours, as RGB. */
reference::Picture Waves(int width, int height) {
    reference::Picture picture{OV_PIXEL_RGB8, width, height, {}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.bytes.push_back(static_cast<std::uint8_t>(128 + 100 * std::sin(x / 23.0)));
            picture.bytes.push_back(static_cast<std::uint8_t>(128 + 100 * std::sin(y / 31.0)));
            picture.bytes.push_back(static_cast<std::uint8_t>(128 + 100 * std::sin((x + y) / 41.0)));
        }
    }
    return picture;
}

using Jpeg = CodecTest;

TEST_F(Jpeg, EveryTypeReadsBackElsewhere) {
    for (std::uint32_t type = 0; type <= OV_PIXEL_RGB8; ++type) {
        for (const int width : {2, 16, 34, 98}) {
            auto picture = Smooth(type, width, 19);
            const auto jpeg = Save(picture, OV_IMAGE_JPEG, 100);
            int seenWidth = 0;
            int seenHeight = 0;
            int sampling = -1;
            const auto rgb = DecodedElsewhere(jpeg, seenWidth, seenHeight, sampling);
            ASSERT_EQ(seenWidth, width) << type;
            ASSERT_EQ(seenHeight, 19) << type;
            ASSERT_EQ(sampling,
                      HasNoColour(type) ? static_cast<int>(TJSAMP_GRAY) : static_cast<int>(TJSAMP_420))
                << type;
            if (HasNoColour(type)) {
                const auto expected = reference::Convert(picture, OV_BAYER_BILINEAR, OV_PIXEL_RGB8);
                EXPECT_GT(Psnr(rgb, expected), 45.0) << type << " " << width;
            }
        }
    }
}

TEST_F(Jpeg, ColoursAreTheRightOnes) {
    auto picture = Waves(320, 200);
    int width = 0;
    int height = 0;
    int sampling = 0;
    EXPECT_GT(
        Psnr(DecodedElsewhere(Save(picture, OV_IMAGE_JPEG, 95), width, height, sampling), picture.bytes),
        38.0);
}

TEST_F(Jpeg, IsTheSameFromWordsAsFromTheirBytes) {
    auto bytes = Smooth(OV_PIXEL_MONO8, 64, 48);
    reference::Picture words{OV_PIXEL_MONO12, 64, 48, {}};
    for (const std::uint8_t byte : bytes.bytes) {
        words.bytes.push_back(static_cast<std::uint8_t>(byte << 4));
        words.bytes.push_back(static_cast<std::uint8_t>(byte >> 4));
    }
    EXPECT_EQ(Save(words, OV_IMAGE_JPEG), Save(bytes, OV_IMAGE_JPEG));
}

TEST_F(Jpeg, QualityCostsBytesAndBringsLikeness) {
    auto picture = Waves(320, 200);
    std::size_t former = 0;
    double formerPsnr = 0;
    for (const std::uint32_t quality : {1U, 10U, 50U, 80U, 99U, 100U}) {
        const auto jpeg = Save(picture, OV_IMAGE_JPEG, quality);
        EXPECT_GT(jpeg.size(), former) << quality;
        former = jpeg.size();
        std::vector<std::uint8_t> rgb(picture.bytes.size());
        ASSERT_EQ(Decode(jpeg, rgb), OV_STATUS_OK);
        const double psnr = Psnr(rgb, picture.bytes);
        EXPECT_GE(psnr, formerPsnr - 0.2) << quality;
        formerPsnr = psnr;
    }
}

TEST_F(Jpeg, TooSmallAnOutputIsNeverOverrun) {
    auto picture = Smooth(OV_PIXEL_RGB8, 40, 30);
    const std::size_t whole = Save(picture, OV_IMAGE_JPEG).size();
    const GuardedBuffer guarded(whole);
    for (std::size_t capacity = 0; capacity <= whole; capacity += capacity < 700 ? 1 : 53) {
        _OV_IMAGE_INFO_ record = Record(picture, OV_IMAGE_JPEG);
        record.output = guarded.AtEnd(capacity);
        record.outputCapacity = static_cast<std::uint32_t>(capacity);
        ASSERT_EQ(OV_MP_SaveImage(handle_, &record), capacity < whole ? OV_STATUS_BUFFER_FULL : OV_STATUS_OK)
            << capacity;
    }
    _OV_IMAGE_INFO_ record = Record(picture, OV_IMAGE_JPEG);
    record.output = guarded.AtEnd(whole);
    record.outputCapacity = static_cast<std::uint32_t>(whole);
    EXPECT_EQ(OV_MP_SaveImage(handle_, &record), OV_STATUS_OK) << "and the handle still works";
    EXPECT_EQ(record.outputLength, whole);
}

TEST_F(Jpeg, SidesBeyondTheFormat) {
    auto picture = Smooth(OV_PIXEL_MONO8, 65535, 1);
    _OV_IMAGE_INFO_ record = Record(picture, OV_IMAGE_JPEG);
    EXPECT_EQ(OV_MP_SaveImage(handle_, &record), OV_STATUS_NOT_SUPPORTED);
    auto largest = Smooth(OV_PIXEL_MONO8, 65500, 1);
    EXPECT_FALSE(Save(largest, OV_IMAGE_JPEG).empty());
}

TEST_F(Jpeg, SeveralThreadsShareAHandle) {
    auto picture = Waves(160, 120);
    const auto expected = Save(picture, OV_IMAGE_JPEG);
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            std::vector<std::uint8_t> output(160 * 120 * 4);
            std::vector<std::uint8_t> rgb(160 * 120 * 3);
            for (int i = 0; i < 25; ++i) {
                _OV_IMAGE_INFO_ record{};
                record.sourceType = OV_PIXEL_RGB8;
                record.source = picture.bytes.data();
                record.sourceLength = static_cast<std::uint32_t>(picture.bytes.size());
                record.width = 160;
                record.height = 120;
                record.imageType = OV_IMAGE_JPEG;
                record.output = output.data();
                record.outputCapacity = static_cast<std::uint32_t>(output.size());
                record.jpegQuality = 95;
                if (OV_MP_SaveImage(handle_, &record) != OV_STATUS_OK ||
                    record.outputLength != expected.size() ||
                    !std::equal(expected.begin(), expected.end(), output.begin()) ||
                    Decode(expected, rgb) != OV_STATUS_OK) {
                    ++wrong;
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

// --- decoding
// ----------------------------------------------------------------------------------------------------

using DecodeCall = CodecTest;

TEST_F(DecodeCall, AgreesWithTheSecondOpinion) {
    auto picture = Waves(123, 77);
    for (const int sampling : {TJSAMP_444, TJSAMP_422, TJSAMP_420, TJSAMP_GRAY, TJSAMP_440, TJSAMP_411}) {
        const auto jpeg = EncodedElsewhere(picture.bytes, 123, 77, sampling);
        std::vector<std::uint8_t> ours(picture.bytes.size());
        ASSERT_EQ(Decode(jpeg, ours), OV_STATUS_OK) << sampling;
        int width = 0;
        int height = 0;
        int seen = 0;
        const auto theirs = DecodedElsewhere(jpeg, width, height, seen);
        for (std::size_t i = 0; i < ours.size(); ++i) {
            ASSERT_LE(std::abs(ours[i] - theirs[i]), 1) << sampling << " at " << i;
        }
    }
}

TEST_F(DecodeCall, FitsExactlyOrIsRefused) {
    auto picture = Waves(31, 9);
    const auto jpeg = Save(picture, OV_IMAGE_JPEG);
    const std::size_t needed = 31 * 9 * 3;
    const GuardedBuffer guarded(needed);
    _OV_DECODE_INFO_ record{};
    record.source = jpeg.data();
    record.sourceLength = static_cast<std::uint32_t>(jpeg.size());
    record.decodeKind = 1;
    for (const std::size_t capacity : {needed, needed - 1, std::size_t{0}}) {
        record.destination = guarded.AtEnd(capacity);
        record.destinationCapacity = static_cast<std::uint32_t>(capacity);
        EXPECT_EQ(OV_MP_Decode(handle_, &record, record.sourceLength, 0),
                  capacity == needed ? OV_STATUS_OK : OV_STATUS_BUFFER_FULL)
            << capacity;
    }
}

TEST_F(DecodeCall, CutDataIsRefusedAtEveryLength) {
    auto picture = Waves(48, 32);
    const auto jpeg = Save(picture, OV_IMAGE_JPEG);
    std::vector<std::uint8_t> rgb(picture.bytes.size());
    for (std::size_t length = 0; length < jpeg.size() - 2; ++length) {
        const std::vector<std::uint8_t> cut(jpeg.begin(), jpeg.begin() + static_cast<std::ptrdiff_t>(length));
        ASSERT_NE(Decode(cut, rgb), OV_STATUS_OK) << length;
    }
    EXPECT_EQ(Decode(jpeg, rgb), OV_STATUS_OK) << "the handle survives them all";
}

TEST_F(DecodeCall, DamagedDataGivesAStatus) {
    auto picture = Waves(48, 32);
    const auto jpeg = Save(picture, OV_IMAGE_JPEG);
    std::vector<std::uint8_t> rgb(picture.bytes.size());
    std::uint32_t seed = 1;
    for (int round = 0; round < 2000; ++round) {
        auto damaged = jpeg;
        for (int i = 0; i < 4; ++i) {
            seed = seed * 1664525U + 1013904223U;
            damaged[seed % damaged.size()] = static_cast<std::uint8_t>(seed >> 24);
        }
        Decode(damaged, rgb);
    }
    EXPECT_EQ(Decode(jpeg, rgb), OV_STATUS_OK);
}

TEST_F(DecodeCall, BadRecordsAreRefused) {
    auto picture = Waves(16, 16);
    const auto jpeg = Save(picture, OV_IMAGE_JPEG);
    std::vector<std::uint8_t> rgb(picture.bytes.size());
    const auto attempt = [&](auto change) {
        _OV_DECODE_INFO_ record{};
        record.source = jpeg.data();
        record.sourceLength = static_cast<std::uint32_t>(jpeg.size());
        record.decodeKind = 1;
        record.destination = rgb.data();
        record.destinationCapacity = static_cast<std::uint32_t>(rgb.size());
        std::uint32_t length = record.sourceLength;
        change(record, length);
        return OV_MP_Decode(handle_, &record, length, 0);
    };
    EXPECT_EQ(OV_MP_Decode(handle_, nullptr, 1, 0), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(attempt([](auto&, auto&) {}), OV_STATUS_OK);
    EXPECT_EQ(attempt([](auto& r, auto&) { r.source = nullptr; }), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(attempt([](auto& r, auto&) { r.destination = nullptr; }), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(attempt([](auto& r, auto&) { r.sourceLength = 0; }), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(attempt([](auto&, auto& length) { length = 0; }), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(attempt([](auto&, auto& length) { length /= 2; }), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(attempt([](auto& r, auto&) { r.decodeKind = 0; }), OV_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(attempt([](auto&, auto& length) { length = UINT32_MAX; }), OV_STATUS_OK)
        << "the record's length bounds it";
}

TEST_F(DecodeCall, FourComponentsHaveNoRgbFormHere) {
    tjhandle handle = tjInitCompress();
    const std::vector<std::uint8_t> cmyk(16 * 16 * 4, 99);
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    ASSERT_EQ(tjCompress2(handle, cmyk.data(), 16, 0, 16, TJPF_CMYK, &bytes, &length, TJSAMP_444, 90, 0), 0);
    const std::vector<std::uint8_t> jpeg(bytes, bytes + length);
    tjFree(bytes);
    tjDestroy(handle);
    std::vector<std::uint8_t> rgb(16 * 16 * 3);
    EXPECT_EQ(Decode(jpeg, rgb), OV_STATUS_NOT_SUPPORTED);
}

} // namespace
