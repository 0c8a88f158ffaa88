#include "PictureFile.h"
#include "PictureMaker.h"
#include "PngEncoder.h"

#include "Camera/Boundary/OvMediaKit.h"

#include "support/ChildProcess.h"

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

using live::Frame;
using live::Picture;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

namespace {

void Fill(Frame& frame, OvGvspPixelType format, uint16_t width, uint16_t height,
          const std::vector<uint8_t>& bytes) {
    frame.pixels.Reserve(4096);
    std::memset(frame.pixels.Data(), 0xEE, 4096);
    std::copy(bytes.begin(), bytes.end(), frame.pixels.Data());
    frame.info = {};
    frame.info.pixelFormat = static_cast<uint32_t>(format);
    frame.info.width = width;
    frame.info.height = height;
    frame.info.frameLength = static_cast<uint32_t>(bytes.size());
}

std::vector<uint8_t> Pixels(const Picture& picture) {
    return {picture.pixels, picture.pixels + picture.Bytes()};
}

class PictureTest : public testing::Test {
protected:
    void SetUp() override {
        directory = std::filesystem::path(testing::TempDir()) /
                    ("kolt_live_picture_" + std::to_string(getpid()) + "_" +
                     testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(directory);
    }
    void TearDown() override { std::filesystem::remove_all(directory); }

    std::string Path(const std::string& name) const { return directory / name; }

    static std::string Read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    /// What an independent program makes of the file: "PNG 4 2 sRGB" and so on.
    static std::string Identified(const std::string& path) {
        return kolt::test::run({"identify", "-format", "%m %w %h %z", path}).output;
    }

    /// All samples by an independent decoder, 8 bits each, as RGB.
    std::vector<uint8_t> Decoded(const std::string& path) const {
        const std::string raw = Path("decoded.rgb");
        const auto converted = kolt::test::run({"convert", path, "-depth", "8", "rgb:" + raw});
        EXPECT_EQ(converted.exitCode, 0) << converted.output;
        const std::string bytes = Read(raw);
        return {bytes.begin(), bytes.end()};
    }

    std::filesystem::path directory;
    live::PictureMaker maker{OV_BAYER_BILINEAR};
    Frame frame;
    Picture picture;
};

TEST_F(PictureTest, GreyAndRgbAreTakenAsTheyAre) {
    Fill(frame, OV_GVSP_MONO8, 3, 2, {1, 2, 3, 4, 5, 6});
    ASSERT_FALSE(maker.Make(frame, picture));
    EXPECT_EQ(picture.pixels, frame.pixels.Data());
    EXPECT_FALSE(picture.colour);
    EXPECT_THAT(Pixels(picture), ElementsAre(1, 2, 3, 4, 5, 6));

    Fill(frame, OV_GVSP_RGB8_PACKED, 1, 2, {9, 8, 7, 6, 5, 4});
    ASSERT_FALSE(maker.Make(frame, picture));
    EXPECT_EQ(picture.pixels, frame.pixels.Data());
    EXPECT_TRUE(picture.colour);
}

TEST_F(PictureTest, TwelveBitsBecomeEight) {
    Fill(frame, OV_GVSP_MONO12, 2, 2, {0xFF, 0x0F, 0x00, 0x08, 0x10, 0x00, 0x00, 0x00});
    ASSERT_FALSE(maker.Make(frame, picture));
    EXPECT_FALSE(picture.colour);
    EXPECT_THAT(Pixels(picture), ElementsAre(255, 128, 1, 0));
}

TEST_F(PictureTest, BayerBecomesRgbInEveryInterpolation) {
    // A wholly red scene: only the red places of the pattern are lit.
    std::vector<uint8_t> bytes(8 * 8);
    for (size_t y = 0; y < 8; y += 2)
        for (size_t x = 0; x < 8; x += 2)
            bytes[y * 8 + x] = 200;
    for (const uint32_t method : {0U, 1U, 2U}) {
        live::PictureMaker other(method);
        Fill(frame, OV_GVSP_BAYER_RG8, 8, 8, bytes);
        ASSERT_FALSE(other.Make(frame, picture)) << method;
        ASSERT_TRUE(picture.colour);
        const uint8_t* middle = picture.pixels + (4 * 8 + 4) * 3;
        EXPECT_THAT(std::vector<uint8_t>(middle, middle + 3), ElementsAre(200, 0, 0)) << method;
    }
}

TEST_F(PictureTest, YuvBecomesRgb) {
    Fill(frame, OV_GVSP_YUV422_PACKED, 2, 1, {128, 255, 128, 0}); // U Y V Y without colour
    ASSERT_FALSE(maker.Make(frame, picture));
    EXPECT_TRUE(picture.colour);
    const auto pixels = Pixels(picture);
    EXPECT_GT(pixels[0], 250);
    EXPECT_EQ(pixels[0], pixels[1]);
    EXPECT_EQ(pixels[3], 0);
}

TEST_F(PictureTest, WhatAnIncompleteFrameLacksIsBlackAndNotOldMemory) {
    Fill(frame, OV_GVSP_MONO8, 3, 2, {1, 2, 3, 4});
    ASSERT_FALSE(maker.Make(frame, picture));
    EXPECT_THAT(Pixels(picture), ElementsAre(1, 2, 3, 4, 0, 0));
}

TEST_F(PictureTest, AFrameThatClaimsMoreThanItsBufferIsRefused) {
    Fill(frame, OV_GVSP_MONO8, 65535, 65535, {1});
    EXPECT_EQ(maker.Make(frame, picture).status, OV_STATUS_PACKET);
}

TEST_F(PictureTest, UnknownFormatsAndEmptyFramesAreRefused) {
    Fill(frame, 0x01080002, 2, 2, {1, 2, 3, 4});
    EXPECT_EQ(maker.Make(frame, picture).status, OV_STATUS_NOT_SUPPORTED);
    Fill(frame, OV_GVSP_MONO8, 0, 2, {});
    EXPECT_EQ(maker.Make(frame, picture).status, OV_STATUS_NOT_SUPPORTED);
    Fill(frame, OV_GVSP_MONO8, 2, 0, {});
    EXPECT_EQ(maker.Make(frame, picture).status, OV_STATUS_NOT_SUPPORTED);
}

TEST_F(PictureTest, AJpegFromTheCameraIsDecoded) {
    const std::string path = Path("camera.jpg");
    ASSERT_EQ(kolt::test::run({"convert", "-size", "16x8", "xc:#00ff00", "-quality", "95", path}).exitCode,
              0);
    const std::string jpeg = Read(path);
    Fill(frame, OV_GVSP_JPEG, 16, 8, {jpeg.begin(), jpeg.end()});
    const live::Failure failure = maker.Make(frame, picture);
    ASSERT_FALSE(failure) << live::Describe(failure);
    EXPECT_LT(picture.pixels[0], 5);
    EXPECT_GT(picture.pixels[1], 250);
    EXPECT_LT(picture.pixels[2], 5);
}

TEST_F(PictureTest, PngOfAColourPicture) {
    const std::vector<uint8_t> pixels = {255, 0, 0, 0, 255, 0, 0, 0, 255, 1, 2, 3, 40, 50, 60, 255, 255, 255};
    ASSERT_EQ(live::SavePicture(Path("a.png"), {pixels.data(), 3, 2, true}), "");
    EXPECT_EQ(Identified(Path("a.png")), "PNG 3 2 8");
    EXPECT_THAT(Decoded(Path("a.png")), ElementsAreArray(pixels));
}

TEST_F(PictureTest, PngOfAGreyPicture) {
    const std::vector<uint8_t> pixels = {0, 17, 255, 128};
    ASSERT_EQ(live::SavePicture(Path("a.png"), {pixels.data(), 4, 1, false}), "");
    EXPECT_THAT(Decoded(Path("a.png")), ElementsAre(0, 0, 0, 17, 17, 17, 255, 255, 255, 128, 128, 128));
}

TEST_F(PictureTest, PpmInBothForms) {
    const std::vector<uint8_t> pixels = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(live::SavePicture(Path("a.ppm"), {pixels.data(), 2, 1, true}), "");
    EXPECT_EQ(Read(Path("a.ppm")), "P6\n2 1\n255\n\1\2\3\4\5\6");
    ASSERT_EQ(live::SavePicture(Path("b.ppm"), {pixels.data(), 2, 1, false}), "");
    EXPECT_EQ(Read(Path("b.ppm")), "P6\n2 1\n255\n\1\1\1\2\2\2");
}

TEST_F(PictureTest, RawIsTheFrameAsItCame) {
    Fill(frame, 0x01080002, 2, 2, {9, 8, 7}); // whatever the format, and also when incomplete
    ASSERT_EQ(live::SaveFrame(Path("a.raw"), frame, maker), "");
    EXPECT_EQ(Read(Path("a.raw")), "\x09\x08\x07");
}

TEST_F(PictureTest, PgmOfEightBitSamplesAlsoOfBayer) {
    Fill(frame, OV_GVSP_BAYER_GB8, 2, 2, {10, 20, 30, 40});
    ASSERT_EQ(live::SaveFrame(Path("a.pgm"), frame, maker), "");
    EXPECT_EQ(Read(Path("a.pgm")), "P5\n2 2\n255\n\x0a\x14\x1e\x28");
}

TEST_F(PictureTest, PgmKeepsAllBitsOfDeepSamples) {
    Fill(frame, OV_GVSP_MONO12, 2, 1, {0xBC, 0x0A, 0x01, 0x00});
    ASSERT_EQ(live::SaveFrame(Path("a.pgm"), frame, maker), "");
    EXPECT_EQ(Read(Path("a.pgm")), std::string("P5\n2 1\n4095\n\x0A\xBC\x00\x01", 16));
    EXPECT_EQ(Identified(Path("a.pgm")), "PGM 2 1 12");
}

TEST_F(PictureTest, PgmUnpacks) {
    Fill(frame, OV_GVSP_MONO12_PACKED, 2, 1, {0xAB, 0x6C, 0x45}); // 0xABC and 0x456
    ASSERT_EQ(live::SaveFrame(Path("a.pgm"), frame, maker), "");
    EXPECT_EQ(Read(Path("a.pgm")), "P5\n2 1\n4095\n\x0A\xBC\x04\x56");
}

TEST_F(PictureTest, UnpacksTenAndTwelveBits) {
    const uint8_t twelve[] = {0xFF, 0x0F, 0x00, 0x12, 0x03, 0x00};
    EXPECT_THAT(live::UnpackSamples(twelve, 3, 12), ElementsAre(0xFFF, 0x000, 0x123));
    const uint8_t ten[] = {0xFF, 0x13, 0x80};
    EXPECT_THAT(live::UnpackSamples(ten, 2, 10), ElementsAre(0x3FF, 0x201));
}

TEST_F(PictureTest, PgmRefusesColourWithAHint) {
    Fill(frame, OV_GVSP_RGB8_PACKED, 1, 1, {1, 2, 3});
    EXPECT_THAT(live::SaveFrame(Path("a.pgm"), frame, maker), HasSubstr("RGB8Packed: use .png"));
    EXPECT_FALSE(std::filesystem::exists(Path("a.pgm")));
}

TEST_F(PictureTest, BmpAndJpegComeFromTheMediaLibrary) {
    std::vector<uint8_t> bytes(21 * 6 * 3);
    for (size_t i = 0; i < bytes.size(); i += 3)
        bytes[i] = 250; // red
    Fill(frame, OV_GVSP_RGB8_PACKED, 21, 6, bytes);
    ASSERT_EQ(live::SaveFrame(Path("a.bmp"), frame, maker), "");
    EXPECT_THAT(Identified(Path("a.bmp")), HasSubstr(" 21 6 8"));
    EXPECT_THAT(Decoded(Path("a.bmp")), ElementsAreArray(bytes));
    ASSERT_EQ(live::SaveFrame(Path("a.jpg"), frame, maker), "");
    EXPECT_EQ(Identified(Path("a.jpg")), "JPEG 21 6 8");
    const auto decoded = Decoded(Path("a.jpg"));
    EXPECT_NEAR(decoded[0], 250, 3);
    EXPECT_NEAR(decoded[1], 0, 3);
}

TEST_F(PictureTest, IncompleteFramesAreOnlySavedRaw) {
    Fill(frame, OV_GVSP_MONO8, 4, 4, {1, 2, 3});
    for (const char* name : {"a.bmp", "a.jpg", "a.pgm"})
        EXPECT_THAT(live::SaveFrame(Path(name), frame, maker), HasSubstr("incomplete")) << name;
}

TEST_F(PictureTest, UnknownFormatsSayThatRawRemains) {
    Fill(frame, 0x01080002, 2, 2, {1, 2, 3, 4});
    EXPECT_THAT(live::SaveFrame(Path("a.bmp"), frame, maker), HasSubstr("0x01080002"));
    EXPECT_THAT(live::SaveFrame(Path("a.bmp"), frame, maker), HasSubstr(".raw"));
    EXPECT_THAT(live::SaveFrame(Path("a.png"), frame, maker), HasSubstr("0x01080002"));
}

TEST_F(PictureTest, AJpegStreamIsNotEncodedAgain) {
    Fill(frame, OV_GVSP_JPEG, 16, 8, {0xFF, 0xD8});
    EXPECT_THAT(live::SaveFrame(Path("a.jpg"), frame, maker), HasSubstr("use .raw"));
}

TEST_F(PictureTest, AFileThatCannotBeWrittenIsToldAndLeavesNothing) {
    EXPECT_THAT(live::WriteFile(Path("missing/a.raw"), {1}), HasSubstr("No such file or directory"));
    std::filesystem::create_directory(Path("folder.raw"));
    EXPECT_THAT(live::WriteFile(Path("folder.raw"), {1}), HasSubstr("folder.raw"));
    size_t entries = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory))
        ++entries;
    EXPECT_EQ(entries, 1U);
}

TEST_F(PictureTest, AFullDiskIsToldAndTheOldFileStays) {
    // A file system of one page: a real "no space left".
    const std::string small = Path("small");
    std::filesystem::create_directory(small);
    ASSERT_EQ(kolt::test::run({"mount", "-t", "tmpfs", "-o", "size=4k", "none", small}).exitCode, 0);
    EXPECT_EQ(live::WriteFile(small + "/a.raw", {1, 2, 3}), "");
    EXPECT_THAT(live::WriteFile(small + "/a.raw", std::vector<uint8_t>(100000)), HasSubstr("No space left"));
    EXPECT_EQ(Read(small + "/a.raw"), "\1\2\3");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(small), {}), 1);
    EXPECT_EQ(kolt::test::run({"umount", small}).exitCode, 0);
}

TEST(FileKind, ByTheEndOfTheName) {
    using live::FileKind;
    EXPECT_EQ(live::FileKindOf("a.bmp"), FileKind::Bmp);
    EXPECT_EQ(live::FileKindOf("dir.x/a.JPG"), FileKind::Jpeg);
    EXPECT_EQ(live::FileKindOf("a.jpeg"), FileKind::Jpeg);
    EXPECT_EQ(live::FileKindOf("a.b.png"), FileKind::Png);
    EXPECT_EQ(live::FileKindOf("a.ppm"), FileKind::Ppm);
    EXPECT_EQ(live::FileKindOf("a.pgm"), FileKind::Pgm);
    EXPECT_EQ(live::FileKindOf("a.raw"), FileKind::Raw);
    for (const char* name : {"", "a", ".raw", "d/.raw", "a.raw/b", "araw", "a.raw "})
        EXPECT_EQ(live::FileKindOf(name), std::nullopt) << name;
}

} // namespace
