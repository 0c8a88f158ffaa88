#include "ConvertReference.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace reference {

namespace {

struct Format {
    const char* pattern;
    int bits; // 8, 10 or 12 per sample; 0 for what isn't one sample a pixel
    bool packed;
};

Format FormatOf(std::uint32_t type) {
    switch (type) {
    case 0:
        return {nullptr, 8, false};
    case 1:
        return {nullptr, 10, false};
    case 2:
        return {nullptr, 12, false};
    case 3:
        return {nullptr, 10, true};
    case 4:
        return {nullptr, 12, true};
    case 5:
        return {"GRBG", 8, false};
    case 6:
        return {"RGGB", 8, false};
    case 7:
        return {"GBRG", 8, false};
    case 8:
        return {"BGGR", 8, false};
    case 9:
        return {"GBRG", 10, false};
    case 10:
        return {"GBRG", 10, true};
    case 11:
        return {"BGGR", 10, false};
    case 12:
        return {"BGGR", 10, true};
    case 13:
        return {"RGGB", 10, false};
    case 14:
        return {"RGGB", 10, true};
    case 15:
        return {"GRBG", 10, false};
    case 16:
        return {"GRBG", 10, true};
    case 17:
        return {"GBRG", 12, false};
    case 18:
        return {"GBRG", 12, true};
    case 19:
        return {"BGGR", 12, false};
    case 20:
        return {"BGGR", 12, true};
    case 21:
        return {"RGGB", 12, false};
    case 22:
        return {"RGGB", 12, true};
    case 23:
        return {"GRBG", 12, false};
    case 24:
        return {"GRBG", 12, true};
    default:
        return {nullptr, 0, false};
    }
}

int Mirror(int index, int count) {
    if (count == 1) {
        return 0;
    }
    // One period of a mirrored row of n is 0 1 ... n-1 n-2 ... 1.
    const int period = 2 * (count - 1);
    const int place = ((index % period) + period) % period;
    return place < count ? place : period - place;
}

int Clamp(int value) {
    return std::clamp(value, 0, 255);
}

int FloorDiv(int a, int b) {
    return static_cast<int>(std::floor(static_cast<double>(a) / b));
}

/* The mean with halves rounded up. */
int Mean(std::initializer_list<int> values) {
    int sum = 0;
    for (const int value : values) {
        sum += value;
    }
    const int count = static_cast<int>(values.size());
    return FloorDiv(2 * sum + count, 2 * count);
}

} // namespace

bool IsMosaic(std::uint32_t type) {
    return FormatOf(type).pattern != nullptr;
}

std::size_t Bytes(std::uint32_t type, int width, int height) {
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const Format format = FormatOf(type);
    if (format.packed) {
        return pixels * 3 / 2;
    }
    if (format.bits > 8 || type == 25 || type == 26) {
        return pixels * 2;
    }
    return type == 27 ? pixels * 3 : type == 32 ? pixels * 4 : pixels;
}

Converter::Converter(const Picture& picture, std::uint32_t method)
    : picture_(picture)
    , method_(method)
    , pattern_(FormatOf(picture.type).pattern)
    , bits_(FormatOf(picture.type).bits)
    , packed_(FormatOf(picture.type).packed) {
    if (bits_ != 0) {
        for (int y = 0; y < picture_.height; ++y) {
            for (int x = 0; x < picture_.width; ++x) {
                samples_.push_back(StoredSample(x, y));
            }
        }
    }
}

int Converter::StoredSample(int x, int y) const {
    const std::size_t pixel =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(picture_.width) + static_cast<std::size_t>(x);
    if (packed_) {
        return picture_.bytes[pixel / 2 * 3 + (pixel % 2 == 0 ? 0 : 2)];
    }
    if (bits_ == 8) {
        return picture_.bytes[pixel];
    }
    const int word = picture_.bytes[2 * pixel] + 256 * picture_.bytes[2 * pixel + 1];
    const int value = word % (1 << bits_); // what stands above the sample's bits is no part of it
    return value / (1 << (bits_ - 8));
}

int Converter::Sample(int x, int y) const {
    return samples_[static_cast<std::size_t>(Mirror(y, picture_.height)) *
                        static_cast<std::size_t>(picture_.width) +
                    static_cast<std::size_t>(Mirror(x, picture_.width))];
}

Converter::Site Converter::SiteAt(int x, int y) const {
    const int column = x & 1;
    const int row = y & 1;
    const char colour = pattern_[2 * row + column];
    if (colour == 'R') {
        return Site::Red;
    }
    if (colour == 'B') {
        return Site::Blue;
    }
    return pattern_[2 * row + 1 - column] == 'R' ? Site::GreenInRedRow : Site::GreenInBlueRow;
}

Rgb Converter::Nearest(int x, int y) const {
    const int left = x & ~1;
    const int top = y & ~1;
    Rgb result;
    for (const int cellY : {top, top + 1}) {
        for (const int cellX : {left, left + 1}) {
            const int value = Sample(cellX, cellY);
            switch (SiteAt(cellX, cellY)) {
            case Site::Red:
                result.red = value;
                break;
            case Site::Blue:
                result.blue = value;
                break;
            default:
                if (cellY == y) {
                    result.green = value;
                }
            }
        }
    }
    return result;
}

Rgb Converter::Bilinear(int x, int y) const {
    const int own = Sample(x, y);
    const int beside = Mean({Sample(x - 1, y), Sample(x + 1, y)});
    const int above = Mean({Sample(x, y - 1), Sample(x, y + 1)});
    const int cross = Mean({Sample(x - 1, y), Sample(x + 1, y), Sample(x, y - 1), Sample(x, y + 1)});
    const int corners =
        Mean({Sample(x - 1, y - 1), Sample(x + 1, y - 1), Sample(x - 1, y + 1), Sample(x + 1, y + 1)});
    switch (SiteAt(x, y)) {
    case Site::Red:
        return {own, cross, corners};
    case Site::Blue:
        return {corners, cross, own};
    case Site::GreenInRedRow:
        return {beside, own, above};
    case Site::GreenInBlueRow:
        break;
    }
    return {above, own, beside};
}

int Converter::HamiltonGreen(int x, int y) const {
    const Site site = SiteAt(x, y);
    const int own = Sample(x, y);
    if (site == Site::GreenInRedRow || site == Site::GreenInBlueRow) {
        return own;
    }
    const int secondX = 2 * own - Sample(x - 2, y) - Sample(x + 2, y);
    const int secondY = 2 * own - Sample(x, y - 2) - Sample(x, y + 2);
    const int gradientX = std::abs(Sample(x - 1, y) - Sample(x + 1, y)) + std::abs(secondX);
    const int gradientY = std::abs(Sample(x, y - 1) - Sample(x, y + 1)) + std::abs(secondY);
    // Four times the estimates along the row and along the column: mean of the greens + a quarter of the
    // derivative.
    const int alongX = 2 * (Sample(x - 1, y) + Sample(x + 1, y)) + secondX;
    const int alongY = 2 * (Sample(x, y - 1) + Sample(x, y + 1)) + secondY;
    if (gradientX < gradientY) {
        return Clamp(FloorDiv(alongX + 2, 4));
    }
    if (gradientY < gradientX) {
        return Clamp(FloorDiv(alongY + 2, 4));
    }
    return Clamp(FloorDiv(alongX + alongY + 4, 8));
}

Rgb Converter::Hamilton(int x, int y) const {
    const int green = HamiltonGreen(x, y);
    // The difference of a red or blue sample to the green found at its place.
    const auto difference = [this](int atX, int atY) { return Sample(atX, atY) - HamiltonGreen(atX, atY); };
    const Site site = SiteAt(x, y);
    if (site == Site::GreenInRedRow || site == Site::GreenInBlueRow) {
        const int beside = Clamp(green + FloorDiv(difference(x - 1, y) + difference(x + 1, y) + 1, 2));
        const int above = Clamp(green + FloorDiv(difference(x, y - 1) + difference(x, y + 1) + 1, 2));
        return site == Site::GreenInRedRow ? Rgb{beside, green, above} : Rgb{above, green, beside};
    }
    const int gradientFalling =
        std::abs(Sample(x - 1, y - 1) - Sample(x + 1, y + 1)) +
        std::abs(2 * green - HamiltonGreen(x - 1, y - 1) - HamiltonGreen(x + 1, y + 1));
    const int gradientRising =
        std::abs(Sample(x + 1, y - 1) - Sample(x - 1, y + 1)) +
        std::abs(2 * green - HamiltonGreen(x + 1, y - 1) - HamiltonGreen(x - 1, y + 1));
    const int falling = difference(x - 1, y - 1) + difference(x + 1, y + 1);
    const int rising = difference(x + 1, y - 1) + difference(x - 1, y + 1);
    int other = 0;
    if (gradientFalling < gradientRising) {
        other = Clamp(green + FloorDiv(falling + 1, 2));
    } else if (gradientRising < gradientFalling) {
        other = Clamp(green + FloorDiv(rising + 1, 2));
    } else {
        other = Clamp(green + FloorDiv(falling + rising + 2, 4));
    }
    return site == Site::Red ? Rgb{Sample(x, y), green, other} : Rgb{other, green, Sample(x, y)};
}

Rgb Converter::Yuv(int x, int y) const {
    const std::size_t pair = (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture_.width) +
                              static_cast<std::size_t>(x)) /
                             2 * 4;
    const bool uyvy = picture_.type == 25;
    const std::uint8_t* bytes = picture_.bytes.data() + pair;
    const int luma = bytes[(uyvy ? 1 : 0) + (x % 2) * 2];
    const int u = bytes[uyvy ? 0 : 1] - 128;
    const int v = bytes[uyvy ? 2 : 3] - 128;
    // The factors 1.402, 0.344136, 0.714136 and 1.772 in units of 1/16384; products in units of 1/64, rounded
    // down; their sum rounded to the nearest.
    const int red = FloorDiv(v * 22970, 256);
    const int green = -FloorDiv(u * 5638, 256) - FloorDiv(v * 11700, 256);
    const int blue = FloorDiv(u * 29032, 256);
    return {Clamp(luma + FloorDiv(red + 32, 64)), Clamp(luma + FloorDiv(green + 32, 64)),
            Clamp(luma + FloorDiv(blue + 32, 64))};
}

Rgb Converter::At(int x, int y) const {
    const std::size_t pixel =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(picture_.width) + static_cast<std::size_t>(x);
    if (picture_.type == 27) {
        return {picture_.bytes[3 * pixel], picture_.bytes[3 * pixel + 1], picture_.bytes[3 * pixel + 2]};
    }
    if (picture_.type == 32) {
        return {picture_.bytes[4 * pixel + 2], picture_.bytes[4 * pixel + 1], picture_.bytes[4 * pixel]};
    }
    if (picture_.type == 25 || picture_.type == 26) {
        return Yuv(x, y);
    }
    if (pattern_ == nullptr) {
        const int grey = Sample(x, y);
        return {grey, grey, grey};
    }
    return method_ == 0 ? Nearest(x, y) : method_ == 1 ? Bilinear(x, y) : Hamilton(x, y);
}

int Converter::GreyAt(int x, int y) const {
    if (picture_.type == 25 || picture_.type == 26) {
        const std::size_t pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(picture_.width) +
                                  static_cast<std::size_t>(x);
        return picture_.bytes[2 * pixel + (picture_.type == 25 ? 1 : 0)];
    }
    if (bits_ != 0 && pattern_ == nullptr) {
        return Sample(x, y);
    }
    const Rgb colour = At(x, y);
    return (77 * colour.red + 150 * colour.green + 29 * colour.blue + 128) / 256;
}

std::vector<std::uint8_t> Convert(const Picture& picture, std::uint32_t method,
                                  std::uint32_t destinationType) {
    const Converter converter(picture, method);
    std::vector<std::uint8_t> result;
    const auto put = [&result](int value) { result.push_back(static_cast<std::uint8_t>(value)); };
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (destinationType == 0) {
                put(converter.GreyAt(x, y));
                continue;
            }
            const Rgb colour = converter.At(x, y);
            put(destinationType == 27 ? colour.red : colour.blue);
            put(colour.green);
            put(destinationType == 27 ? colour.blue : colour.red);
            if (destinationType == 32) {
                put(255);
            }
        }
    }
    return result;
}

} // namespace reference
