#include "PictureFile.h"

#include "PngEncoder.h"

#include "Camera/Boundary/OvMediaKit.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace live {
namespace {

constexpr uint32_t jpegQuality = 95;

std::string NetpbmHeader(const char* magic, uint32_t width, uint32_t height, uint32_t most) {
    return std::string(magic) + "\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
           std::to_string(most) + "\n";
}

std::string SavePpm(const std::string& path, const Picture& picture) {
    const std::string header = NetpbmHeader("P6", picture.width, picture.height, 255);
    std::vector<uint8_t> bytes(header.begin(), header.end());
    if (picture.colour) {
        bytes.insert(bytes.end(), picture.pixels, picture.pixels + picture.Bytes());
    } else {
        bytes.reserve(bytes.size() + 3 * picture.Bytes());
        for (size_t i = 0; i < picture.Bytes(); ++i)
            bytes.insert(bytes.end(), 3, picture.pixels[i]);
    }
    return WriteFile(path, bytes);
}

std::string SavePng(const std::string& path, const Picture& picture) {
    const std::vector<uint8_t> png = EncodePng(picture);
    return png.empty() ? "not enough memory to pack the picture" : WriteFile(path, png);
}

/// The samples of the sensor, whatever the packing.
std::vector<uint16_t> Samples(const Frame& frame, const PixelFormat& format, size_t count) {
    const uint8_t* bytes = frame.pixels.Data();
    if (format.packing != PixelFormat::Packing::Words)
        return UnpackSamples(bytes, count, format.sampleBits);
    std::vector<uint16_t> samples(count);
    for (size_t i = 0; i < count; ++i)
        samples[i] = static_cast<uint16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    return samples;
}

std::string SavePgm(const std::string& path, const Frame& frame) {
    const PixelFormat* format = FindPixelFormat(frame.info.pixelFormat);
    if (format == nullptr || !format->IsSensorData())
        return "a .pgm holds grey or Bayer samples, and the camera sends " +
               PixelFormatName(frame.info.pixelFormat) + ": use .png, .ppm or .raw";
    const size_t count = static_cast<size_t>(frame.info.width) * frame.info.height;
    if (frame.info.frameLength < format->FrameBytes(frame.info.width, frame.info.height))
        return "the frame is incomplete: only .raw can hold it";
    const std::string header =
        NetpbmHeader("P5", frame.info.width, frame.info.height, (1U << format->sampleBits) - 1);
    std::vector<uint8_t> bytes(header.begin(), header.end());
    if (format->packing == PixelFormat::Packing::Bytes) {
        bytes.insert(bytes.end(), frame.pixels.Data(), frame.pixels.Data() + count);
        return WriteFile(path, bytes);
    }
    for (const uint16_t sample : Samples(frame, *format, count)) {
        bytes.push_back(static_cast<uint8_t>(sample >> 8));
        bytes.push_back(static_cast<uint8_t>(sample));
    }
    return WriteFile(path, bytes);
}

std::string SaveEncoded(const std::string& path, Frame& frame, PictureMaker& maker, uint32_t imageType) {
    const PixelFormat* format = FindPixelFormat(frame.info.pixelFormat);
    if (format == nullptr)
        return "the pixel format " + PixelFormatName(frame.info.pixelFormat) +
               " is not known to the media library: use .raw";
    if (maker.Media() == nullptr)
        return Describe({"OV_MP_CreateHandle", OV_STATUS_OK});
    const size_t length = format->FrameBytes(frame.info.width, frame.info.height);
    if (format->packing == PixelFormat::Packing::Jpeg)
        return "the camera sends JPEG: use .raw, which is then a JPEG file";
    if (frame.info.frameLength < length)
        return "the frame is incomplete: only .raw can hold it";
    // Rows padded to 4 bytes and headers; a JPEG of pure noise may be larger than its pixels.
    std::vector<uint8_t> encoded((static_cast<size_t>(frame.info.width) * 3 + 3) * frame.info.height * 2 +
                                 65536);
    _OV_IMAGE_INFO_ record{};
    record.sourceType = format->mediaType;
    record.source = frame.pixels.Data();
    record.sourceLength = static_cast<uint32_t>(length);
    record.width = frame.info.width;
    record.height = frame.info.height;
    record.imageType = imageType;
    record.output = encoded.data();
    record.outputCapacity = static_cast<uint32_t>(encoded.size());
    record.jpegQuality = jpegQuality;
    if (const uint32_t status = OV_MP_SaveImage(maker.Media(), &record); status != OV_STATUS_OK)
        return Describe({"OV_MP_SaveImage", status});
    return WriteFile(path, encoded.data(), std::min<size_t>(record.outputLength, encoded.size()));
}

std::string SystemError(const std::string& path) {
    return path + ": " + std::strerror(errno);
}

} // namespace

std::string SaveFrame(const std::string& path, Frame& frame, PictureMaker& maker) {
    const FileKind kind = FileKindOf(path).value_or(FileKind::Raw);
    switch (kind) {
    case FileKind::Bmp:
        return SaveEncoded(path, frame, maker, OV_IMAGE_BMP);
    case FileKind::Jpeg:
        return SaveEncoded(path, frame, maker, OV_IMAGE_JPEG);
    case FileKind::Pgm:
        return SavePgm(path, frame);
    case FileKind::Raw:
        return WriteFile(path, frame.pixels.Data(),
                         std::min<size_t>(frame.info.frameLength, frame.pixels.Capacity()));
    case FileKind::Png:
    case FileKind::Ppm:
        break;
    }
    Picture picture;
    if (const Failure failure = maker.Make(frame, picture))
        return Describe(failure) + "\n  the camera sends " + PixelFormatName(frame.info.pixelFormat);
    return SavePicture(path, picture);
}

std::string SavePicture(const std::string& path, const Picture& picture) {
    return FileKindOf(path) == FileKind::Ppm ? SavePpm(path, picture) : SavePng(path, picture);
}

std::string WriteFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    return WriteFile(path, bytes.data(), bytes.size());
}

std::string WriteFile(const std::string& path, const void* bytes, size_t size) {
    const std::string part = path + ".part" + std::to_string(getpid());
    std::FILE* file = std::fopen(part.c_str(), "wbe");
    if (file == nullptr)
        return SystemError(path);
    std::string error;
    if (std::fwrite(bytes, 1, size, file) != size)
        error = SystemError(path);
    if (std::fclose(file) != 0 && error.empty())
        error = SystemError(path);
    if (error.empty() && std::rename(part.c_str(), path.c_str()) != 0)
        error = SystemError(path);
    if (!error.empty())
        std::remove(part.c_str());
    return error;
}

std::vector<uint16_t> UnpackSamples(const uint8_t* packed, size_t samples, uint32_t sampleBits) {
    // The first and the third byte hold the high bits of the two samples, the second their low bits: those of
    // the first sample in its lower half.
    const uint32_t lowBits = sampleBits - 8;
    const uint32_t mask = (1U << lowBits) - 1;
    std::vector<uint16_t> unpacked(samples);
    for (size_t i = 0; i < samples; ++i) {
        const uint8_t* group = packed + i / 2 * 3;
        const bool second = i % 2 != 0;
        const uint32_t high = group[second ? 2 : 0];
        const uint32_t low = group[1] >> (second ? 4 : 0) & mask;
        unpacked[i] = static_cast<uint16_t>(high << lowBits | low);
    }
    return unpacked;
}

} // namespace live
