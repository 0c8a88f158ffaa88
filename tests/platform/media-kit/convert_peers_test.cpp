#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/Convert.h"

#include <dc1394/conversions.h>
#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

/* Second opinions: other implementations of the same conversions. */

namespace {

using namespace media;

constexpr int kWidth = 250;
constexpr int kHeight = 120;

std::vector<std::uint8_t> Random(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(size);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

std::vector<std::uint8_t> Convert(std::uint32_t type, const std::vector<std::uint8_t>& source,
                                  std::uint32_t method, Layout layout) {
    std::vector<std::uint8_t> result(kWidth * kHeight * BytesOf(layout));
    const Picture picture{type,   source.data(), static_cast<std::uint32_t>(source.size()),
                          kWidth, kHeight,       method};
    EXPECT_EQ(CheckPicture(picture), OV_STATUS_OK);
    LineBuffers lines;
    lines.Prepare(kWidth);
    ConvertRows(BestKernels(), picture, 0, kHeight,
                {result.data(), static_cast<std::ptrdiff_t>(kWidth * BytesOf(layout)), layout}, lines);
    return result;
}

/* The largest difference of two pictures of that many channels; `border` pixels on each side aren't looked
 * at. */
int LargestDifference(const std::uint8_t* a, const std::uint8_t* b, int channels, int border) {
    int largest = 0;
    for (int y = border; y < kHeight - border; ++y) {
        for (int x = border * channels; x < (kWidth - border) * channels; ++x) {
            const int at = y * kWidth * channels + x;
            largest = std::max(largest, std::abs(a[at] - b[at]));
        }
    }
    return largest;
}

struct Mosaic {
    std::uint32_t type;
    int openCv; // OpenCV names a pattern by its second row's second and third pixel
    dc1394color_filter_t dc1394;
};

constexpr Mosaic kMosaics[] = {{OV_PIXEL_BAYER_RG8, cv::COLOR_BayerBG2RGB, DC1394_COLOR_FILTER_RGGB},
                               {OV_PIXEL_BAYER_GR8, cv::COLOR_BayerGB2RGB, DC1394_COLOR_FILTER_GRBG},
                               {OV_PIXEL_BAYER_GB8, cv::COLOR_BayerGR2RGB, DC1394_COLOR_FILTER_GBRG},
                               {OV_PIXEL_BAYER_BG8, cv::COLOR_BayerRG2RGB, DC1394_COLOR_FILTER_BGGR}};

TEST(Peers, BilinearIsThatOfOpenCvAndLibdc1394InTheInterior) {
    for (const Mosaic& mosaic : kMosaics) {
        std::vector<std::uint8_t> source = Random(kWidth * kHeight, mosaic.type);
        const std::vector<std::uint8_t> ours = Convert(mosaic.type, source, OV_BAYER_BILINEAR, Layout::Rgb);
        const cv::Mat from(kHeight, kWidth, CV_8UC1, source.data());
        cv::Mat to;
        cv::cvtColor(from, to, mosaic.openCv);
        EXPECT_EQ(LargestDifference(ours.data(), to.data, 3, 1), 0) << "OpenCV, type " << mosaic.type;
        std::vector<std::uint8_t> theirs(ours.size());
        ASSERT_EQ(dc1394_bayer_decoding_8bit(source.data(), theirs.data(), kWidth, kHeight, mosaic.dc1394,
                                             DC1394_BAYER_METHOD_BILINEAR),
                  DC1394_SUCCESS);
        EXPECT_EQ(LargestDifference(ours.data(), theirs.data(), 3, 1), 0)
            << "libdc1394, type " << mosaic.type;
    }
}

/* BT.601 in full range is OpenCV's YCrCb, once each pixel has its chroma. Its factors have three digits. */
TEST(Peers, YuvIsWithinOneStepOfOpenCv) {
    for (const std::uint32_t type : {OV_PIXEL_YUV422_PACKED, OV_PIXEL_YUV422_YUYV}) {
        const std::vector<std::uint8_t> source = Random(2 * kWidth * kHeight, type);
        const std::vector<std::uint8_t> ours = Convert(type, source, 0, Layout::Rgb);
        const std::size_t luma = type == OV_PIXEL_YUV422_PACKED ? 1 : 0;
        cv::Mat full(kHeight, kWidth, CV_8UC3);
        for (std::size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) {
            const std::uint8_t* const pair = source.data() + pixel / 2 * 4;
            full.data[3 * pixel] = pair[luma + pixel % 2 * 2];
            full.data[3 * pixel + 1] = pair[3 - luma]; // V is Cr
            full.data[3 * pixel + 2] = pair[1 - luma]; // U is Cb
        }
        cv::Mat to;
        cv::cvtColor(full, to, cv::COLOR_YCrCb2RGB);
        EXPECT_LE(LargestDifference(ours.data(), to.data, 3, 0), 1) << type;
    }
}

TEST(Peers, YuvIsWithinOneStepOfLibdc1394) {
    for (const std::uint32_t type : {OV_PIXEL_YUV422_PACKED, OV_PIXEL_YUV422_YUYV}) {
        std::vector<std::uint8_t> source = Random(2 * kWidth * kHeight, type);
        const std::vector<std::uint8_t> ours = Convert(type, source, 0, Layout::Rgb);
        std::vector<std::uint8_t> theirs(ours.size());
        const std::uint32_t order =
            type == OV_PIXEL_YUV422_PACKED ? DC1394_BYTE_ORDER_UYVY : DC1394_BYTE_ORDER_YUYV;
        ASSERT_EQ(dc1394_convert_to_RGB8(source.data(), theirs.data(), kWidth, kHeight, order,
                                         DC1394_COLOR_CODING_YUV422, 8),
                  DC1394_SUCCESS);
        EXPECT_LE(LargestDifference(ours.data(), theirs.data(), 3, 0), 1) << type;
    }
}

/* The formulas in floating point: rounding alone may differ, by no more than the fixed point's own error. */
TEST(Peers, YuvIsTheNearestStepToTheFormula) {
    const std::vector<std::uint8_t> source = Random(2 * kWidth * kHeight, 3);
    const std::vector<std::uint8_t> ours = Convert(OV_PIXEL_YUV422_PACKED, source, 0, Layout::Rgb);
    for (std::size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) {
        const std::uint8_t* const pair = source.data() + pixel / 2 * 4;
        const double y = pair[1 + pixel % 2 * 2];
        const double u = pair[0] - 128.0;
        const double v = pair[2] - 128.0;
        const double exact[3] = {y + 1.402 * v, y - 0.344136 * u - 0.714136 * v, y + 1.772 * u};
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const double expected = std::clamp(exact[channel], 0.0, 255.0);
            ASSERT_NEAR(ours[3 * pixel + channel], expected, 0.54) << "channel " << channel;
        }
    }
}

TEST(Peers, GreyOfColourIsWithinOneStepOfOpenCv) {
    std::vector<std::uint8_t> source = Random(3 * kWidth * kHeight, 5);
    const std::vector<std::uint8_t> ours = Convert(OV_PIXEL_RGB8, source, 0, Layout::Grey);
    const cv::Mat from(kHeight, kWidth, CV_8UC3, source.data());
    cv::Mat to;
    cv::cvtColor(from, to, cv::COLOR_RGB2GRAY);
    EXPECT_LE(LargestDifference(ours.data(), to.data, 1, 0), 1);
}

} // namespace
