#include "Measure.h"

#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/Bmp.h"
#include "MediaKit/CodecRecords.h"

#include <cmath>
#include <cstdio>
#include <jpeglib.h>
#include <vector>

namespace {

using namespace media;

constexpr std::uint32_t kWidth = 2448;
constexpr std::uint32_t kHeight = 2048;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

/* Something like a picture: slow waves and a little noise. */
std::vector<std::uint8_t> PictureBytes(std::size_t bytesAPixel) {
    std::vector<std::uint8_t> bytes(kPixels * bytesAPixel);
    std::uint32_t seed = 1;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        seed = seed * 1664525U + 1013904223U;
        const double wave = std::sin(static_cast<double>(i % (kWidth * bytesAPixel)) / 300.0) +
                            std::sin(static_cast<double>(i / kWidth / bytesAPixel) / 90.0);
        bytes[i] = static_cast<std::uint8_t>(128 + 55 * wave + (seed >> 29));
    }
    return bytes;
}

struct Direct {
    jpeg_compress_struct library{};
    jpeg_error_mgr errors{};
};

/* libjpeg-turbo as its manual shows it, into memory that it may fill without asking for more. */
std::size_t EncodeDirectly(const std::vector<std::uint8_t>& pixels, int components, int quality,
                           std::vector<std::uint8_t>& output) {
    Direct direct;
    direct.library.err = jpeg_std_error(&direct.errors);
    jpeg_create_compress(&direct.library);
    unsigned char* bytes = output.data();
    auto length = static_cast<unsigned long>(output.size());
    jpeg_mem_dest(&direct.library, &bytes, &length);
    direct.library.image_width = kWidth;
    direct.library.image_height = kHeight;
    direct.library.input_components = components;
    direct.library.in_color_space = components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&direct.library);
    jpeg_set_quality(&direct.library, quality, TRUE);
    jpeg_start_compress(&direct.library, TRUE);
    while (direct.library.next_scanline < kHeight) {
        auto* row =
            const_cast<JSAMPROW>(pixels.data() + static_cast<std::size_t>(direct.library.next_scanline) *
                                                     kWidth * static_cast<std::size_t>(components));
        jpeg_write_scanlines(&direct.library, &row, 1);
    }
    jpeg_finish_compress(&direct.library);
    jpeg_destroy_compress(&direct.library);
    return length;
}

void DecodeDirectly(const std::vector<std::uint8_t>& jpeg, std::size_t length,
                    std::vector<std::uint8_t>& rgb) {
    jpeg_decompress_struct library{};
    jpeg_error_mgr errors{};
    library.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&library);
    jpeg_mem_src(&library, jpeg.data(), static_cast<unsigned long>(length));
    jpeg_read_header(&library, TRUE);
    library.out_color_space = JCS_RGB;
    jpeg_start_decompress(&library);
    while (library.output_scanline < library.output_height) {
        JSAMPROW row = rgb.data() + static_cast<std::size_t>(library.output_scanline) * kWidth * 3;
        jpeg_read_scanlines(&library, &row, 1);
    }
    jpeg_finish_decompress(&library);
    jpeg_destroy_decompress(&library);
}

_OV_IMAGE_INFO_ Record(std::uint32_t type, std::vector<std::uint8_t>& pixels,
                       std::vector<std::uint8_t>& output, std::uint32_t kind, std::uint32_t quality) {
    _OV_IMAGE_INFO_ record{};
    record.sourceType = type;
    record.source = pixels.data();
    record.sourceLength = static_cast<std::uint32_t>(pixels.size());
    record.width = kWidth;
    record.height = kHeight;
    record.imageType = kind;
    record.output = output.data();
    record.outputCapacity = static_cast<std::uint32_t>(output.size());
    record.jpegQuality = quality;
    return record;
}

void Print(const Race& race, const std::vector<Race::Result>& results, const char* peer, double limit) {
    const double ours = MedianOf(results, "ours");
    const double theirs = MedianOf(results, peer);
    std::printf("%-34s %8.2f ms %8.2f ms %-14s %6.2f x  (aim: %.2f)\n", race.What().c_str(), ours, theirs,
                peer, ours / theirs, limit);
}

} // namespace

void BenchCodecs(int rounds, const std::string& filter) {
    WorkerPool pool(WorkerPool::DefaultHelpers());
    Workspace workspace(pool);
    auto grey = PictureBytes(1);
    auto rgb = PictureBytes(3);
    std::vector<std::uint8_t> output(kPixels * 4);
    std::vector<std::uint8_t> elsewhere(kPixels * 4);
    std::printf("\nfiles of 2448 x 2048\n");
    const auto wanted = [&filter](const std::string& name) { return name.find(filter) != std::string::npos; };
    struct BmpRow {
        const char* name;
        std::uint32_t type;
        std::vector<std::uint8_t>* pixels;
        std::size_t written;
    };
    for (const BmpRow& row : {BmpRow{"BMP of Mono8", OV_PIXEL_MONO8, &grey, kPixels},
                              BmpRow{"BMP of RGB8", OV_PIXEL_RGB8, &rgb, kPixels * 3},
                              BmpRow{"BMP of BayerRG8 (bilinear)", OV_PIXEL_BAYER_RG8, &grey, kPixels * 3}}) {
        if (!wanted(row.name)) {
            continue;
        }
        Race race(row.name);
        race.Add("ours", [&] {
            auto record = Record(row.type, *row.pixels, output, OV_IMAGE_BMP, 0);
            SaveRecord(workspace, record);
        });
        race.AddMemcpy(row.pixels->size(), row.written);
        Print(race, race.Run(rounds), "memcpy", 2.0);
    }
    for (const int quality : {50, 80, 99}) {
        for (const int components : {1, 3}) {
            const std::string name =
                std::string(components == 1 ? "JPEG of Mono8, quality " : "JPEG of RGB8, quality ") +
                std::to_string(quality);
            if (!wanted(name)) {
                continue;
            }
            auto& pixels = components == 1 ? grey : rgb;
            Race race(name);
            race.Add("ours", [&] {
                auto record = Record(components == 1 ? 0U : 27U, pixels, output, OV_IMAGE_JPEG,
                                     static_cast<std::uint32_t>(quality));
                SaveRecord(workspace, record);
            });
            race.Add("libjpeg-turbo", [&] { EncodeDirectly(pixels, components, quality, elsewhere); });
            Print(race, race.Run(rounds), "libjpeg-turbo", 1.05);
        }
    }
    if (wanted("decode")) {
        const std::size_t length = EncodeDirectly(rgb, 3, 80, elsewhere);
        std::vector<std::uint8_t> theirs(kPixels * 3);
        Race race("JPEG decode to RGB, quality 80");
        race.Add("ours", [&] {
            _OV_DECODE_INFO_ record{};
            record.source = elsewhere.data();
            record.sourceLength = static_cast<std::uint32_t>(length);
            record.decodeKind = 1;
            record.destination = output.data();
            record.destinationCapacity = static_cast<std::uint32_t>(output.size());
            DecodeRecord(workspace, record, record.sourceLength);
        });
        race.Add("libjpeg-turbo", [&] { DecodeDirectly(elsewhere, length, theirs); });
        Print(race, race.Run(rounds), "libjpeg-turbo", 1.05);
    }
}
