#include "Measure.h"

#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/Convert.h"

#include <dc1394/conversions.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <random>

namespace {

using namespace media;

constexpr std::uint32_t kWidth = 2448;
constexpr std::uint32_t kHeight = 2048;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

struct Conversion {
    const char* name;
    std::uint32_t type;
    std::uint32_t method;
    Layout layout;
    int openCv;   // code of cv::cvtColor, or one of those below
    int dc1394;   // method of its Bayer decoder, or one of those below
    double limit; // multiple of the memcpy that is aimed at with AVX2, or 0
};

constexpr int kNone = -1;
constexpr int kDepth = -2; // 16 bits scaled down to 8
constexpr int kYuv = -3;

constexpr Conversion kConversions[] = {
    {"Mono12 -> grey", OV_PIXEL_MONO12, 0, Layout::Grey, kDepth, kNone, 1.4},
    {"Mono10 -> grey", OV_PIXEL_MONO10, 0, Layout::Grey, kNone, kNone, 1.4},
    {"Mono12Packed -> grey", OV_PIXEL_MONO12_PACKED, 0, Layout::Grey, kNone, kNone, 1.4},
    {"Mono8 -> RGB", OV_PIXEL_MONO8, 0, Layout::Rgb, cv::COLOR_GRAY2RGB, kNone, 0},
    {"RGB8 -> grey", OV_PIXEL_RGB8, 0, Layout::Grey, cv::COLOR_RGB2GRAY, kNone, 0},
    {"RGB8 -> BGR", OV_PIXEL_RGB8, 0, Layout::Bgr, cv::COLOR_RGB2BGR, kNone, 0},
    {"RGB8 -> BGRX", OV_PIXEL_RGB8, 0, Layout::Bgrx, cv::COLOR_RGB2BGRA, kNone, 0},
    {"UYVY -> RGB", OV_PIXEL_YUV422_PACKED, 0, Layout::Rgb, cv::COLOR_YUV2RGB_UYVY, kYuv, 2.5},
    {"YUYV -> RGB", OV_PIXEL_YUV422_YUYV, 0, Layout::Rgb, cv::COLOR_YUV2RGB_YUY2, kYuv, 2.5},
    {"UYVY -> BGRX", OV_PIXEL_YUV422_PACKED, 0, Layout::Bgrx, cv::COLOR_YUV2BGRA_UYVY, kNone, 2.5},
    {"UYVY -> grey", OV_PIXEL_YUV422_PACKED, 0, Layout::Grey, cv::COLOR_YUV2GRAY_UYVY, kNone, 2.5},
    {"BayerRG8 nearest -> RGB", OV_PIXEL_BAYER_RG8, 0, Layout::Rgb, kNone, DC1394_BAYER_METHOD_NEAREST, 0},
    {"BayerRG8 bilinear -> RGB", OV_PIXEL_BAYER_RG8, 1, Layout::Rgb, cv::COLOR_BayerBG2RGB,
     DC1394_BAYER_METHOD_BILINEAR, 2.2},
    {"BayerRG8 bilinear -> BGRX", OV_PIXEL_BAYER_RG8, 1, Layout::Bgrx, cv::COLOR_BayerBG2BGRA, kNone, 2.2},
    {"BayerRG8 bilinear -> grey", OV_PIXEL_BAYER_RG8, 1, Layout::Grey, cv::COLOR_BayerBG2GRAY, kNone, 0},
    {"BayerRG12 bilinear -> RGB", OV_PIXEL_BAYER_RG12, 1, Layout::Rgb, kNone, kNone, 2.2},
    {"BayerRG12Packed bilinear -> RGB", OV_PIXEL_BAYER_RG12_PACKED, 1, Layout::Rgb, kNone, kNone, 2.2},
    {"BayerRG8 Hamilton -> RGB", OV_PIXEL_BAYER_RG8, 2, Layout::Rgb, cv::COLOR_BayerBG2RGB_EA,
     DC1394_BAYER_METHOD_EDGESENSE, 6.5},
    {"BayerRG12Packed Hamilton -> RGB", OV_PIXEL_BAYER_RG12_PACKED, 2, Layout::Rgb, kNone, kNone, 6.5},
};

/* Source and result of one conversion, both reused from run to run. */
struct Buffers {
    explicit Buffers(const Conversion& conversion)
        : source(PixelBytes(FindPixelTraits(conversion.type)->packing, kPixels))
        , result(kPixels * BytesOf(conversion.layout))
        , peer(result.size()) {
        std::mt19937 random(1);
        for (std::size_t i = 0; i < source.size(); ++i) {
            // Soft gradients with some noise, as a camera sends them.
            source[i] = static_cast<std::uint8_t>((i / 16 + random() % 16) & 0xFF);
        }
        if (conversion.type == OV_PIXEL_MONO12 || conversion.type == OV_PIXEL_MONO10) {
            for (std::size_t i = 1; i < source.size(); i += 2) {
                source[i] &= conversion.type == OV_PIXEL_MONO12 ? 0x0F : 0x03;
            }
        }
    }

    std::vector<std::uint8_t> source;
    std::vector<std::uint8_t> result;
    std::vector<std::uint8_t> peer;
};

int CvType(std::size_t bytes) {
    return CV_MAKETYPE(CV_8U, static_cast<int>(bytes));
}

void AddOpenCv(Race& race, const Conversion& conversion, Buffers& buffers) {
    if (conversion.openCv == kNone) {
        return;
    }
    const std::size_t sourceBytes = buffers.source.size() / kPixels;
    const cv::Mat to(kHeight, kWidth, CvType(BytesOf(conversion.layout)), buffers.peer.data());
    if (conversion.openCv == kDepth) {
        const cv::Mat from(kHeight, kWidth, CV_16UC1, buffers.source.data());
        race.Add("OpenCV", [from, to]() mutable { from.convertTo(to, CV_8U, 1.0 / 16); });
        return;
    }
    const cv::Mat from(kHeight, kWidth, CvType(sourceBytes), buffers.source.data());
    const int code = conversion.openCv;
    race.Add("OpenCV", [from, to, code]() mutable { cv::cvtColor(from, to, code); });
}

void AddDc1394(Race& race, const Conversion& conversion, Buffers& buffers) {
    if (conversion.dc1394 == kNone) {
        return;
    }
    const int method = conversion.dc1394;
    std::uint8_t* const from = buffers.source.data();
    std::uint8_t* const to = buffers.peer.data();
    if (method == kYuv) {
        const std::uint32_t order =
            conversion.type == OV_PIXEL_YUV422_PACKED ? DC1394_BYTE_ORDER_UYVY : DC1394_BYTE_ORDER_YUYV;
        race.Add("libdc1394", [=] {
            dc1394_convert_to_RGB8(from, to, kWidth, kHeight, order, DC1394_COLOR_CODING_YUV422, 8);
        });
        return;
    }
    race.Add("libdc1394", [=] {
        dc1394_bayer_decoding_8bit(from, to, kWidth, kHeight, DC1394_COLOR_FILTER_RGGB,
                                   static_cast<dc1394bayer_method_t>(method));
    });
}

void PrintRatio(const std::vector<Race::Result>& results, const char* name) {
    const double time = MedianOf(results, name);
    if (time == 0) {
        std::printf(" | %9s", "-");
    } else {
        std::printf(" | %9.2f", time / MedianOf(results, "memcpy"));
    }
}

void Bench(const Conversion& conversion, int rounds) {
    Buffers buffers(conversion);
    Race race(conversion.name);
    race.AddMemcpy(buffers.source.size(), buffers.result.size());
    const Picture picture{
        conversion.type, buffers.source.data(), static_cast<std::uint32_t>(buffers.source.size()), kWidth,
        kHeight,         conversion.method};
    const RowTarget target{buffers.result.data(),
                           static_cast<std::ptrdiff_t>(kWidth * BytesOf(conversion.layout)),
                           conversion.layout};
    LineBuffers lines;
    lines.Prepare(kWidth);
    for (const Kernels* kernels : AllKernels()) {
        race.Add(kernels->name, [&, kernels] { ConvertRows(*kernels, picture, 0, kHeight, target, lines); });
    }
    WorkerPool pool(1);
    Workspace workspace(pool);
    race.Add("two", [&] { ConvertPicture(BestKernels(), picture, target, workspace); });
    race.AddMemcpyOnTwo(pool);
    AddOpenCv(race, conversion, buffers);
    AddDc1394(race, conversion, buffers);
    const std::vector<Race::Result> results = race.Run(rounds);
    std::printf("%-32s | %6.2f", conversion.name, MedianOf(results, "memcpy"));
    for (const char* name : {"AVX-512", "AVX2", "SSE4", "NEON", "plain"}) {
        if (name != std::string("NEON") || MedianOf(results, name) != 0) {
            PrintRatio(results, name);
        }
    }
    std::printf(" | %9.2f", LeastOf(results, BestKernels().name) / LeastOf(results, "two"));
    std::printf(" | %9.2f", LeastOf(results, "memcpy") / LeastOf(results, "memcpy on two"));
    PrintRatio(results, "OpenCV");
    PrintRatio(results, "libdc1394");
    if (conversion.limit > 0) {
        std::printf(" | %5.1f", conversion.limit);
    } else {
        std::printf(" | %5s", "-");
    }
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace

void BenchConversions(int rounds, const std::string& filter) {
    cv::setNumThreads(1);
    std::printf("Conversion of %u x %u on one thread: multiples of a memcpy that moves the same bytes "
                "(medians of %d runs in "
                "turns).\n\"2 threads\": how much faster two are than one with the best set, \"2 copies\": "
                "the same of the "
                "memcpy; where the latter is the bound, a conversion of about one memcpy can't gain more "
                "(least times: the "
                "second core must be free).\n\"limit\": aimed at with AVX2.\n\n",
                kWidth, kHeight, rounds);
    std::printf("%-32s | %6s | %9s | %9s | %9s | %9s | %9s | %9s | %9s | %9s | %5s\n", "", "memcpy",
                "AVX-512", "AVX2", "SSE4", "plain", "2 threads", "2 copies", "OpenCV", "libdc1394", "limit");
    std::printf("%-32s | %6s |\n", "", "ms");
    for (const Conversion& conversion : kConversions) {
        if (std::string(conversion.name).find(filter) != std::string::npos) {
            Bench(conversion, rounds);
        }
    }
}
