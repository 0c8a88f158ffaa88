#include "Camera/Boundary/OvMediaKit.h"
#include "GuardedBuffer.h"
#include "MediaKit/Convert.h"
#include "reference/ConvertReference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

/* Every kernel of every instruction set of this machine against the plain reference, byte for byte. */

namespace media {

/* How a test's parameter is shown. */
static void PrintTo(const Kernels* kernels, std::ostream* out) {
    *out << kernels->name;
}

} // namespace media

namespace {

using namespace media;

constexpr std::uint32_t kAllTypes[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14,
                                       15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 32};

reference::Picture RandomPicture(std::uint32_t type, int width, int height, bool extremes) {
    std::mt19937 random(type * 7919U + static_cast<unsigned>(width) * 131U + static_cast<unsigned>(height));
    reference::Picture picture{type, width, height, {}};
    picture.bytes.resize(reference::Bytes(type, width, height));
    for (std::uint8_t& byte : picture.bytes) {
        byte = static_cast<std::uint8_t>(random());
        if (extremes) {
            // Black and white beside each other drive every estimate out of range.
            byte = byte < 128 ? 0 : 255;
        }
    }
    return picture;
}

Picture View(const reference::Picture& picture, const std::uint8_t* pixels, std::uint32_t method) {
    return {picture.type,
            pixels,
            static_cast<std::uint32_t>(picture.bytes.size()),
            static_cast<std::uint32_t>(picture.width),
            static_cast<std::uint32_t>(picture.height),
            method};
}

struct Destination {
    Layout layout;
    std::uint32_t type; // of the reference
};

/* The library's Bgr has no number at the boundary: its reference is 32-bit colour without the fourth byte. */
constexpr Destination kDestinations[] = {
    {Layout::Grey, 0}, {Layout::Rgb, 27}, {Layout::Bgr, 32}, {Layout::Bgrx, 32}};

std::vector<std::uint8_t> Expected(const reference::Picture& picture, std::uint32_t method, Destination to) {
    std::vector<std::uint8_t> bytes = reference::Convert(picture, method, to.type);
    if (to.layout == Layout::Bgr) {
        std::vector<std::uint8_t> three;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (i % 4 != 3) {
                three.push_back(bytes[i]);
            }
        }
        return three;
    }
    return bytes;
}

/* "row 1 byte 5: 7, not 9", or empty. */
std::string FirstDifference(const std::uint8_t* got, const std::vector<std::uint8_t>& expected,
                            std::size_t rowBytes) {
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (got[i] != expected[i]) {
            return "row " + std::to_string(i / rowBytes) + " byte " + std::to_string(i % rowBytes) + ": " +
                   std::to_string(got[i]) + ", not " + std::to_string(expected[i]);
        }
    }
    return {};
}

class KernelTest : public ::testing::TestWithParam<const Kernels*> {
protected:
    KernelTest() : source_(kRoom), destination_(kRoom) {}

    static std::vector<std::uint32_t> Methods(std::uint32_t type) {
        return reference::IsMosaic(type) ? std::vector<std::uint32_t>{0, 1, 2}
                                         : std::vector<std::uint32_t>{0};
    }

    static bool HasSize(std::uint32_t type, int width, int height) {
        if (reference::IsMosaic(type)) {
            return width >= 2 && height >= 2;
        }
        return width % 2 == 0 || (type != OV_PIXEL_YUV422_PACKED && type != OV_PIXEL_YUV422_YUYV);
    }

    void Check(std::uint32_t type, int width, int height, bool extremes) {
        const reference::Picture picture = RandomPicture(type, width, height, extremes);
        for (const std::uint32_t method : Methods(type)) {
            for (const Destination to : kDestinations) {
                const std::vector<std::uint8_t> expected = Expected(picture, method, to);
                for (const bool atEnd : {true, false}) {
                    CheckOnce(picture, method, to, expected, atEnd);
                }
            }
        }
    }

    void CheckOnce(const reference::Picture& picture, std::uint32_t method, Destination to,
                   const std::vector<std::uint8_t>& expected, bool atEnd) {
        std::uint8_t* const pixels = source_.Place(atEnd, picture.bytes.size());
        std::memcpy(pixels, picture.bytes.data(), picture.bytes.size());
        std::uint8_t* const result = destination_.Place(atEnd, expected.size());
        std::memset(result, 0xA5, expected.size());
        const Picture view = View(picture, pixels, method);
        ASSERT_EQ(CheckPicture(view), OV_STATUS_OK);
        lines_.Prepare(view.width);
        const std::size_t rowBytes = view.width * BytesOf(to.layout);
        ConvertRows(*GetParam(), view, 0, view.height,
                    {result, static_cast<std::ptrdiff_t>(rowBytes), to.layout}, lines_);
        const std::string difference = FirstDifference(result, expected, rowBytes);
        ASSERT_EQ(difference, "") << "type " << picture.type << " method " << method << " layout "
                                  << static_cast<int>(to.layout) << " size " << picture.width << " x "
                                  << picture.height;
    }

    static constexpr std::size_t kRoom = std::size_t{1} << 20;
    GuardedBuffer source_;
    GuardedBuffer destination_;
    LineBuffers lines_;
};

TEST_P(KernelTest, TinySizes) {
    for (const std::uint32_t type : kAllTypes) {
        for (int width = 1; width <= 9; ++width) {
            for (int height = 1; height <= 7; ++height) {
                if (HasSize(type, width, height)) {
                    Check(type, width, height, (width + height) % 2 == 0);
                    ASSERT_FALSE(HasFatalFailure());
                }
            }
        }
    }
}

TEST_P(KernelTest, WidthsAroundVectorLengths) {
    for (const std::uint32_t type : kAllTypes) {
        for (const int width :
             {14, 15, 16, 17, 18, 30,  31,  32,  33,  34,  35,  48,  62,  63,  64,  65,  66,  67,
              80, 95, 96, 97, 98, 126, 127, 128, 129, 130, 131, 159, 160, 161, 191, 192, 193, 256}) {
            if (HasSize(type, width, 5)) {
                Check(type, width, 5, width % 3 == 0);
                ASSERT_FALSE(HasFatalFailure());
            }
        }
    }
}

TEST_P(KernelTest, ALargerPicture) {
    for (const std::uint32_t type : kAllTypes) {
        for (const bool extremes : {false, true}) {
            Check(type, 322, 24, extremes);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

TEST_P(KernelTest, SingleRowsAndColumns) {
    for (const std::uint32_t type : kAllTypes) {
        for (const auto& [width, height] : {std::pair{1, 300}, std::pair{301, 1}, std::pair{2, 150}}) {
            if (HasSize(type, width, height)) {
                Check(type, width, height, false);
                ASSERT_FALSE(HasFatalFailure());
            }
        }
    }
}

/* Rows in bands and with any stride are the same rows, and what lies between them stays untouched. */
TEST_P(KernelTest, BandsAndStrides) {
    constexpr int kWidth = 77;
    constexpr int kHeight = 23;
    for (const std::uint32_t type : kAllTypes) {
        const int width = HasSize(type, kWidth, kHeight) ? kWidth : kWidth + 1;
        const reference::Picture picture = RandomPicture(type, width, kHeight, false);
        const Picture view = View(picture, picture.bytes.data(), 0);
        for (const std::uint32_t method : Methods(type)) {
            for (const Destination to : kDestinations) {
                const std::vector<std::uint8_t> expected = Expected(picture, method, to);
                const std::size_t rowBytes = view.width * BytesOf(to.layout);
                for (const std::uint32_t band : {1U, 2U, 3U, 8U}) {
                    for (const bool bottomUp : {false, true}) {
                        const std::size_t pitch = rowBytes + band; // some padding
                        std::vector<std::uint8_t> result(pitch * kHeight, 0x5A);
                        Picture part = view;
                        part.bayerMethod = method;
                        lines_.Prepare(view.width);
                        for (std::uint32_t first = 0; first < kHeight; first += band) {
                            const std::uint32_t end = std::min<std::uint32_t>(first + band, kHeight);
                            const std::size_t line = bottomUp ? kHeight - 1 - first : first;
                            const auto step = static_cast<std::ptrdiff_t>(pitch);
                            ConvertRows(*GetParam(), part, first, end,
                                        {result.data() + line * pitch, bottomUp ? -step : step, to.layout},
                                        lines_);
                        }
                        for (std::uint32_t row = 0; row < kHeight; ++row) {
                            const std::size_t line = bottomUp ? kHeight - 1 - row : row;
                            const std::uint8_t* const got = result.data() + line * pitch;
                            ASSERT_EQ(std::memcmp(got, expected.data() + row * rowBytes, rowBytes), 0)
                                << "type " << type << " method " << method << " row " << row << " band "
                                << band;
                            for (std::size_t i = rowBytes; i < pitch; ++i) {
                                ASSERT_EQ(got[i], 0x5A) << "padding of row " << row;
                            }
                        }
                    }
                }
            }
        }
    }
}

/* All that YUV can say: every U and V with lumas from black to white. */
TEST_P(KernelTest, AllColoursOfYuv) {
    for (const std::uint32_t type : {OV_PIXEL_YUV422_PACKED, OV_PIXEL_YUV422_YUYV}) {
        reference::Picture picture{type, 512, 256, {}};
        picture.bytes.resize(512U * 256U * 2U);
        for (const int luma : {0, 1, 16, 77, 127, 128, 200, 235, 254, 255}) {
            for (std::size_t u = 0; u < 256; ++u) {
                for (std::size_t v = 0; v < 256; ++v) {
                    std::uint8_t* const pair = picture.bytes.data() + (u * 256 + v) * 4;
                    const bool uyvy = type == OV_PIXEL_YUV422_PACKED;
                    pair[uyvy ? 0 : 1] = static_cast<std::uint8_t>(u);
                    pair[uyvy ? 2 : 3] = static_cast<std::uint8_t>(v);
                    pair[uyvy ? 1 : 0] = static_cast<std::uint8_t>(luma);
                    pair[uyvy ? 3 : 2] = static_cast<std::uint8_t>(255 - luma);
                }
            }
            const std::vector<std::uint8_t> expected = reference::Convert(picture, 0, OV_PIXEL_RGB8);
            CheckOnce(picture, 0, {Layout::Rgb, OV_PIXEL_RGB8}, expected, true);
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, KernelTest, ::testing::ValuesIn(AllKernels()), [](const auto& set) {
    std::string name = set.param->name;
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
});

} // namespace
