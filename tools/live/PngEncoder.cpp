#include "PngEncoder.h"

#include <cstring>
#include <zlib.h>

namespace live {
namespace {

void AppendBigEndian(std::vector<uint8_t>& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<uint8_t>(value >> shift));
}

void AppendChunk(std::vector<uint8_t>& out, const char* type, const std::vector<uint8_t>& data) {
    AppendBigEndian(out, static_cast<uint32_t>(data.size()));
    const size_t from = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    AppendBigEndian(
        out, static_cast<uint32_t>(crc32_z(0, out.data() + from, static_cast<z_size_t>(out.size() - from))));
}

/// Each row behind the number of its filter (0: none).
std::vector<uint8_t> Rows(const Picture& picture) {
    const size_t stride = static_cast<size_t>(picture.width) * (picture.colour ? 3 : 1);
    std::vector<uint8_t> rows;
    rows.reserve((stride + 1) * picture.height);
    for (uint32_t y = 0; y < picture.height; ++y) {
        const uint8_t* row = picture.pixels + y * stride;
        rows.push_back(0);
        rows.insert(rows.end(), row, row + stride);
    }
    return rows;
}

} // namespace

std::vector<uint8_t> EncodePng(const Picture& picture) {
    const std::vector<uint8_t> rows = Rows(picture);
    uLongf size = compressBound(static_cast<uLong>(rows.size()));
    std::vector<uint8_t> packed(size);
    // Speed before size: a picture is looked at once.
    if (compress2(packed.data(), &size, rows.data(), static_cast<uLong>(rows.size()), Z_BEST_SPEED) != Z_OK)
        return {};
    packed.resize(size);

    std::vector<uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<uint8_t> header;
    AppendBigEndian(header, picture.width);
    AppendBigEndian(header, picture.height);
    const uint8_t colourType = picture.colour ? 2 : 0;
    header.insert(header.end(), {8, colourType, 0, 0, 0});
    AppendChunk(png, "IHDR", header);
    AppendChunk(png, "IDAT", packed);
    AppendChunk(png, "IEND", {});
    return png;
}

} // namespace live
