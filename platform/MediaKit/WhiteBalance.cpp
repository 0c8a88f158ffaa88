#include "MediaKit/WhiteBalance.h"

#include "MediaKit/Convert.h"
#include "MediaKit/PixelTraits.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace media {

namespace {

enum Channel : std::size_t { kRed, kGreen, kBlue };

constexpr unsigned kDarkest = 13;    // 5 percent of 255
constexpr unsigned kBrightest = 242; // 95 percent
constexpr std::uint64_t kFewestPlaces = 16;
constexpr double kLargestFactor = 16.0;

std::uint32_t Check(const _OV_IMAGE_INFO_& record, Picture& picture) {
    picture = {record.sourceType, record.source, record.sourceLength,
               record.width,      record.height, OV_BAYER_NEAREST};
    const std::uint32_t status = CheckPicture(picture);
    if (status != OV_STATUS_OK) {
        return status;
    }
    const PixelTraits& traits = *FindPixelTraits(picture.type);
    const bool known = traits.firstRow != BayerRow::None || traits.packing == Packing::Rgb;
    return known ? OV_STATUS_OK : OV_STATUS_NOT_SUPPORTED;
}

/* The channel of each site of a 2 x 2 cell: [row][column]. */
std::array<std::array<Channel, 2>, 2> CellOf(BayerRow firstRow) {
    const auto row = [](BayerRow kind) -> std::array<Channel, 2> {
        switch (kind) {
        case BayerRow::RedGreen:
            return {kRed, kGreen};
        case BayerRow::GreenRed:
            return {kGreen, kRed};
        case BayerRow::BlueGreen:
            return {kBlue, kGreen};
        default:
            return {kGreen, kBlue};
        }
    };
    return {row(firstRow), row(OtherRow(firstRow))};
}

// --- measuring
// ---------------------------------------------------------------------------------------------------

struct Sums {
    std::array<std::uint64_t, 3> channel{};
    std::uint64_t places = 0;
    std::uint64_t counted = 0;
};

bool Counts(unsigned value) {
    return value >= kDarkest && value <= kBrightest;
}

/* One row of R G B. */
void AddPixels(const std::uint8_t* row, std::uint32_t width, Sums& sums) {
    sums.places += width;
    for (std::uint32_t x = 0; x < width; ++x, row += 3) {
        if (Counts(row[0]) && Counts(row[1]) && Counts(row[2])) {
            for (std::size_t c = 0; c < 3; ++c) {
                sums.channel[c] += row[c];
            }
            ++sums.counted;
        }
    }
}

/*
 * A Bayer picture by way of the nearest-neighbour kernels: they draw a cell's red, one of its greens and its
 * blue, and unpack every depth on the way. One pixel of each cell is enough.
 */
void AddCells(const std::uint8_t* row, std::uint32_t width, Sums& sums) {
    sums.places += width / 2;
    for (std::uint32_t x = 0; x + 1 < width; x += 2) {
        const std::uint8_t* const left = row + static_cast<std::size_t>(x) * 3;
        if (Counts(left[0]) && Counts(left[1]) && Counts(left[2])) {
            sums.channel[kRed] += left[0];
            sums.channel[kGreen] += left[1];
            sums.channel[kBlue] += left[2];
            ++sums.counted;
        }
    }
}

// --- applying
// ----------------------------------------------------------------------------------------------------

using Factors = std::array<double, 3>;

Factors FactorsOf(const _OV_WHITE_BALANCE_PARAM_& gains) {
    const std::array<double, 3> own = {static_cast<double>(std::max<unsigned>(gains.red, 1)),
                                       static_cast<double>(std::max<unsigned>(gains.green, 1)),
                                       static_cast<double>(std::max<unsigned>(gains.blue, 1))};
    const double smallest = *std::min_element(own.begin(), own.end());
    Factors factors{};
    std::transform(own.begin(), own.end(), factors.begin(),
                   [smallest](double gain) { return std::min(gain / smallest, kLargestFactor); });
    return factors;
}

/* What each of the 2^bits values becomes in each channel, as 16-bit words in the workspace. */
class Tables {
public:
    Tables(Workspace& workspace, const Factors& factors, unsigned bits)
        : size_(std::size_t{1} << bits)
        , words_(
              reinterpret_cast<std::uint16_t*>(workspace.band.Reserve(size_ * 3 * sizeof(std::uint16_t)))) {
        const auto largest = static_cast<double>(size_ - 1);
        for (std::size_t c = 0; c < 3; ++c) {
            for (std::size_t value = 0; value < size_; ++value) {
                const double scaled = static_cast<double>(value) * factors[c] + 0.5;
                words_[c * size_ + value] = static_cast<std::uint16_t>(std::min(scaled, largest));
            }
        }
    }

    /* Bits above the depth (which no camera should send) mean nothing, as in a conversion. */
    std::uint16_t Of(Channel channel, std::size_t value) const {
        return words_[channel * size_ + (value & (size_ - 1))];
    }

private:
    std::size_t size_;
    std::uint16_t* words_;
};

void ApplyBytes(std::uint8_t* pixels, const Picture& picture,
                const std::array<std::array<Channel, 2>, 2>& cell, const Tables& tables) {
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x, ++pixels) {
            *pixels = static_cast<std::uint8_t>(tables.Of(cell[y & 1U][x & 1U], *pixels));
        }
    }
}

void ApplyWords(std::uint8_t* pixels, const Picture& picture,
                const std::array<std::array<Channel, 2>, 2>& cell, const Tables& tables) {
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x, pixels += 2) {
            const std::size_t value =
                static_cast<std::size_t>(pixels[0]) | static_cast<std::size_t>(pixels[1]) << 8;
            const std::uint16_t changed = tables.Of(cell[y & 1U][x & 1U], value);
            pixels[0] = static_cast<std::uint8_t>(changed);
            pixels[1] = static_cast<std::uint8_t>(changed >> 8);
        }
    }
}

/* Two pixels in three bytes; the low bits of both stand in the middle one. Of an odd number of pixels the
 * last has no low bits. */
void ApplyTriples(std::uint8_t* pixels, const Picture& picture,
                  const std::array<std::array<Channel, 2>, 2>& cell, const Tables& tables, unsigned bits) {
    const unsigned low = bits - 8;
    const unsigned mask = (1U << low) - 1;
    const std::size_t count = static_cast<std::size_t>(picture.width) * picture.height;
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint8_t* const triple = pixels + i / 2 * 3;
        const bool second = i % 2 != 0;
        std::uint8_t& high = triple[second ? 2 : 0];
        const unsigned shift = second ? 4 : 0;
        const bool hasLow = second || i + 1 < count;
        const unsigned lowBits = hasLow ? triple[1] >> shift & mask : 0;
        const unsigned value = static_cast<unsigned>(high) << low | lowBits;
        const unsigned changed = tables.Of(cell[y & 1U][x & 1U], value);
        high = static_cast<std::uint8_t>(changed >> low);
        if (hasLow) {
            triple[1] = static_cast<std::uint8_t>((triple[1] & ~(mask << shift)) | (changed & mask) << shift);
        }
        if (++x == picture.width) {
            x = 0;
            ++y;
        }
    }
}

void ApplyRgb(std::uint8_t* pixels, const Picture& picture, const Tables& tables) {
    const std::size_t count = static_cast<std::size_t>(picture.width) * picture.height;
    for (std::size_t i = 0; i < count; ++i, pixels += 3) {
        for (const Channel c : {kRed, kGreen, kBlue}) {
            pixels[c] = static_cast<std::uint8_t>(tables.Of(c, pixels[c]));
        }
    }
}

/* Bits of a sample; packed types tell their depth by their number only. */
unsigned BitsOf(std::uint32_t type, Packing packing) {
    switch (packing) {
    case Packing::Words10:
        return 10;
    case Packing::Words12:
        return 12;
    case Packing::Triples:
        return type >= OV_PIXEL_BAYER_GB12 ? 12 : 10;
    default:
        return 8;
    }
}

} // namespace

std::uint32_t MeasureWhiteBalance(Workspace& workspace, const _OV_IMAGE_INFO_& record,
                                  _OV_WHITE_BALANCE_PARAM_& gains) {
    Picture picture;
    const std::uint32_t status = Check(record, picture);
    if (status != OV_STATUS_OK) {
        return status;
    }
    const bool bayer = FindPixelTraits(picture.type)->firstRow != BayerRow::None;
    const std::size_t pitch = static_cast<std::size_t>(picture.width) * 3;
    LineBuffers& lines = workspace.lines.front();
    lines.Prepare(picture.width);
    std::uint8_t* const row = workspace.band.Reserve(pitch);
    Sums sums;
    for (std::uint32_t y = 0; y < picture.height; y += bayer ? 2 : 1) {
        ConvertRows(BestKernels(), picture, y, y + 1, {row, static_cast<std::ptrdiff_t>(pitch), Layout::Rgb},
                    lines);
        if (bayer) {
            AddCells(row, picture.width, sums);
        } else {
            AddPixels(row, picture.width, sums);
        }
    }
    if (sums.counted < kFewestPlaces || sums.counted * 1000 < sums.places) {
        return OV_STATUS_NO_DATA;
    }
    const auto brightest = static_cast<double>(*std::max_element(sums.channel.begin(), sums.channel.end()));
    const auto gainOf = [&sums, brightest](Channel channel) {
        const double gain = kNeutralGain * brightest / static_cast<double>(sums.channel[channel]) + 0.5;
        return static_cast<std::uint16_t>(std::min(gain, static_cast<double>(kLargestGain)));
    };
    gains.red = gainOf(kRed);
    gains.green = gainOf(kGreen);
    gains.blue = gainOf(kBlue);
    return OV_STATUS_OK;
}

std::uint32_t ApplyWhiteBalance(Workspace& workspace, _OV_IMAGE_INFO_& record,
                                const _OV_WHITE_BALANCE_PARAM_& gains) {
    Picture picture;
    const std::uint32_t status = Check(record, picture);
    if (status != OV_STATUS_OK) {
        return status;
    }
    const Factors factors = FactorsOf(gains);
    if (std::all_of(factors.begin(), factors.end(), [](double factor) { return factor == 1.0; })) {
        return OV_STATUS_OK;
    }
    const PixelTraits& traits = *FindPixelTraits(picture.type);
    const unsigned bits = BitsOf(picture.type, traits.packing);
    const Tables tables(workspace, factors, bits);
    const auto cell = CellOf(traits.firstRow);
    switch (traits.packing) {
    case Packing::Bytes:
        ApplyBytes(record.source, picture, cell, tables);
        break;
    case Packing::Words10:
    case Packing::Words12:
        ApplyWords(record.source, picture, cell, tables);
        break;
    case Packing::Triples:
        ApplyTriples(record.source, picture, cell, tables, bits);
        break;
    default:
        ApplyRgb(record.source, picture, tables);
        break;
    }
    return OV_STATUS_OK;
}

} // namespace media
