#include "MediaKit/Bmp.h"

#include <cstring>

namespace media {

namespace {

constexpr std::size_t kFileHeader = 14;
constexpr std::size_t kInfoHeader = 40;
constexpr std::size_t kPalette = 256 * 4;

std::size_t Pitch(std::uint32_t width, bool grey) {
    return (static_cast<std::size_t>(width) * (grey ? 1 : 3) + 3) / 4 * 4;
}

std::size_t PixelOffset(bool grey) {
    return kFileHeader + kInfoHeader + (grey ? kPalette : 0);
}

void Put16(std::uint8_t* at, std::uint32_t value) {
    at[0] = static_cast<std::uint8_t>(value);
    at[1] = static_cast<std::uint8_t>(value >> 8);
}

void Put32(std::uint8_t* at, std::uint32_t value) {
    Put16(at, value);
    Put16(at + 2, value >> 16);
}

void WriteHeaders(const Picture& picture, bool grey, std::uint8_t* output) {
    std::memset(output, 0, PixelOffset(grey));
    output[0] = 'B';
    output[1] = 'M';
    Put32(output + 2, static_cast<std::uint32_t>(BmpBytes(picture.width, picture.height, grey)));
    Put32(output + 10, static_cast<std::uint32_t>(PixelOffset(grey)));
    std::uint8_t* const info = output + kFileHeader;
    Put32(info, kInfoHeader);
    Put32(info + 4, picture.width);
    Put32(info + 8, picture.height);
    Put16(info + 12, 1); // planes
    Put16(info + 14, grey ? 8 : 24);
    Put32(info + 20, static_cast<std::uint32_t>(Pitch(picture.width, grey) * picture.height));
    constexpr std::uint32_t kDotsPerMetre = 2835; // 72 a inch, which readers take as "unknown"
    Put32(info + 24, kDotsPerMetre);
    Put32(info + 28, kDotsPerMetre);
    if (!grey) {
        return;
    }
    Put32(info + 32, 256); // colours in the palette
    std::uint8_t* const palette = info + kInfoHeader;
    for (unsigned level = 0; level < 256; ++level) {
        std::memset(palette + 4 * level, static_cast<int>(level), 3);
    }
}

} // namespace

std::uint64_t BmpBytes(std::uint32_t width, std::uint32_t height, bool grey) {
    return PixelOffset(grey) + static_cast<std::uint64_t>(Pitch(width, grey)) * height;
}

void WriteBmp(const Picture& picture, std::uint8_t* output, Workspace& workspace) {
    const bool grey = IsGrey(picture);
    const std::size_t pitch = Pitch(picture.width, grey);
    std::uint8_t* const last = output + PixelOffset(grey) + pitch * (picture.height - 1);
    ConvertPicture(BestKernels(), picture,
                   {last, -static_cast<std::ptrdiff_t>(pitch), grey ? Layout::Grey : Layout::Bgr}, workspace);
    WriteHeaders(picture, grey, output);
    const std::size_t used = static_cast<std::size_t>(picture.width) * (grey ? 1 : 3);
    for (std::uint32_t row = 0; used < pitch && row < picture.height; ++row) {
        std::memset(last - static_cast<std::ptrdiff_t>(pitch * row) + used, 0, pitch - used);
    }
}

} // namespace media
