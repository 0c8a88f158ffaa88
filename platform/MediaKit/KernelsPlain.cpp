#include "MediaKit/Kernels.h"

#include "MediaKit/PixelTraits.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

/* The kernels without vector instructions: for machines that have none of those that KernelsSimd.cpp knows.
 */

namespace media {

namespace {

std::uint8_t Clamp(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

std::uint8_t Luma(int red, int green, int blue) {
    return static_cast<std::uint8_t>((77 * red + 150 * green + 29 * blue + 128) >> 8);
}

template<Layout L>
std::uint8_t* Store(std::uint8_t* to, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    if constexpr (L == Layout::Grey) {
        to[0] = Luma(red, green, blue);
    } else if constexpr (L == Layout::Rgb) {
        to[0] = red;
        to[1] = green;
        to[2] = blue;
    } else {
        to[0] = blue;
        to[1] = green;
        to[2] = red;
        if constexpr (L == Layout::Bgrx) {
            to[3] = 255;
        }
    }
    return to + BytesOf(L);
}

/* By the row that is drawn: own is its colour, other the colour of the rows next to it. */
template<Layout L, BayerRow R>
std::uint8_t* StoreBayer(std::uint8_t* to, std::uint8_t own, std::uint8_t green, std::uint8_t other) {
    if constexpr (R == BayerRow::RedGreen || R == BayerRow::GreenRed) {
        return Store<L>(to, own, green, other);
    } else {
        return Store<L>(to, other, green, own);
    }
}

template<int Shift>
void Words(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) {
        const int word = source[2 * i] | source[2 * i + 1] << 8;
        destination[i] = static_cast<std::uint8_t>(word >> Shift);
    }
}

void Triples(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) {
        destination[i] = source[i / 2 * 3 + i % 2 * 2];
    }
}

template<Layout L>
void Grey(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels) {
    if constexpr (L == Layout::Grey) {
        std::memcpy(destination, source, pixels);
    } else {
        for (std::size_t i = 0; i < pixels; ++i) {
            destination = Store<L>(destination, source[i], source[i], source[i]);
        }
    }
}

template<Layout L>
void Rgb(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels) {
    if constexpr (L == Layout::Rgb) {
        std::memcpy(destination, source, 3 * pixels);
    } else {
        for (std::size_t i = 0; i < pixels; ++i, source += 3) {
            destination = Store<L>(destination, source[0], source[1], source[2]);
        }
    }
}

template<Layout L>
void Bgrx(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i, source += 4) {
        destination = Store<L>(destination, source[2], source[1], source[0]);
    }
}

/* The high half of the product of two 16-bit numbers, as vector units have it. */
int High(int a, int b) {
    return (a * b) >> 16;
}

template<Layout L, int Luma0, int U, int Luma1, int V>
void Yuv(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels) {
    for (std::size_t i = 0; i + 1 < pixels; i += 2, source += 4) {
        const int u = (source[U] - 128) * 256;
        const int v = (source[V] - 128) * 256;
        for (const int offset : {Luma0, Luma1}) {
            if constexpr (L == Layout::Grey) {
                *destination++ = source[offset];
            } else {
                const int y = 64 * source[offset] + 32;
                destination = Store<L>(destination, Clamp((y + High(v, yuv::kRedOfV)) >> 6),
                                       Clamp((y - High(u, yuv::kGreenOfU) - High(v, yuv::kGreenOfV)) >> 6),
                                       Clamp((y + High(u, yuv::kBlueOfU)) >> 6));
            }
        }
    }
}

template<Layout L, BayerRow R>
void NearestRow(const std::uint8_t* own, const std::uint8_t* other, std::uint8_t* destination,
                std::size_t pixels) {
    constexpr bool kGreenFirst = R == BayerRow::GreenRed || R == BayerRow::GreenBlue;
    for (std::size_t i = 0; i < pixels; ++i) {
        // The cell's columns; the last pixel of an odd row has only the mirror image of the one before beside
        // it.
        const std::size_t even = i & ~std::size_t{1};
        const std::size_t odd = even + 1;
        destination = StoreBayer<L, R>(destination, own[kGreenFirst ? odd : even],
                                       own[kGreenFirst ? even : odd], other[kGreenFirst ? even : odd]);
    }
}

template<Layout L, BayerRow R>
void Nearest(const std::uint8_t* const* rows, std::uint8_t* first, std::uint8_t* second, std::size_t pixels) {
    NearestRow<L, R>(rows[0], rows[1], first, pixels);
    NearestRow<L, OtherRow(R)>(rows[1], rows[0], second, pixels);
}

std::uint8_t Mean2(int a, int b) {
    return static_cast<std::uint8_t>((a + b + 1) >> 1);
}

std::uint8_t Mean4(int a, int b, int c, int d) {
    return static_cast<std::uint8_t>((a + b + c + d + 2) >> 2);
}

template<Layout L, BayerRow R>
void BilinearRow(const std::uint8_t* const* rows, std::uint8_t* destination, std::size_t pixels) {
    constexpr std::size_t kGreen = R == BayerRow::GreenRed || R == BayerRow::GreenBlue ? 0 : 1;
    const std::uint8_t* const above = rows[0];
    const std::uint8_t* const own = rows[1];
    const std::uint8_t* const below = rows[2];
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(pixels); ++i) {
        if ((static_cast<std::size_t>(i) & 1U) == kGreen) {
            destination = StoreBayer<L, R>(destination, Mean2(own[i - 1], own[i + 1]), own[i],
                                           Mean2(above[i], below[i]));
        } else {
            destination =
                StoreBayer<L, R>(destination, own[i], Mean4(own[i - 1], own[i + 1], above[i], below[i]),
                                 Mean4(above[i - 1], above[i + 1], below[i - 1], below[i + 1]));
        }
    }
}

template<Layout L, BayerRow R>
void Bilinear(const std::uint8_t* const* rows, std::uint8_t* first, std::uint8_t* second,
              std::size_t pixels) {
    BilinearRow<L, R>(rows, first, pixels);
    BilinearRow<L, OtherRow(R)>(rows + 1, second, pixels);
}

/* First: the column of the first red or blue site. */
template<std::ptrdiff_t First>
void Green(const std::uint8_t* const* rows, const GreenLine& line, std::size_t pixels) {
    const std::uint8_t* const own = rows[2];
    std::size_t site = 0;
    for (std::ptrdiff_t i = First; i < static_cast<std::ptrdiff_t>(pixels); i += 2, ++site) {
        const int left = own[i - 1];
        const int right = own[i + 1];
        const int up = rows[1][i];
        const int down = rows[3][i];
        const int bendAcross = 2 * own[i] - own[i - 2] - own[i + 2];
        const int bendDown = 2 * own[i] - rows[0][i] - rows[4][i];
        const int slopeAcross = std::abs(left - right) + std::abs(bendAcross);
        const int slopeDown = std::abs(up - down) + std::abs(bendDown);
        const int across = 2 * (left + right) + bendAcross;
        const int downwards = 2 * (up + down) + bendDown;
        // Twice the better one, or both where neither is.
        const int sum =
            (slopeAcross <= slopeDown ? across : downwards) + (slopeDown <= slopeAcross ? downwards : across);
        const std::uint8_t green = Clamp((sum + 4) >> 3);
        line.green[site] = green;
        line.difference[site] = static_cast<std::uint16_t>(own[i] - green + 256);
    }
}

template<Layout L, BayerRow R>
void Colour(const std::uint8_t* own, const GreenLine* lines, std::uint8_t* destination, std::size_t pixels) {
    constexpr std::ptrdiff_t kFirst = R == BayerRow::GreenRed || R == BayerRow::GreenBlue ? 1 : 0;
    const GreenLine up = lines[0];
    const GreenLine at = lines[1];
    const GreenLine down = lines[2];
    const auto sample = [](const GreenLine& line, std::ptrdiff_t site) {
        return line.green[site] + line.difference[site];
    };
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(pixels); ++i) {
        const std::ptrdiff_t same = i / 2;
        if ((i & 1) != kFirst) {
            // A green site: the own row's colour left and right, the other one above and below.
            const std::ptrdiff_t right = (i + 1 - kFirst) / 2;
            const int beside = (at.difference[right - 1] + at.difference[right] + 1) >> 1;
            const int above = (up.difference[same] + down.difference[same] + 1) >> 1;
            destination = StoreBayer<L, R>(destination, Clamp(own[i] + beside - 256), own[i],
                                           Clamp(own[i] + above - 256));
            continue;
        }
        // The other colour stands at the four corners.
        const std::ptrdiff_t before = same - 1 + kFirst;
        const std::ptrdiff_t after = before + 1;
        const int green = at.green[same];
        const int slopeFalling = std::abs(sample(up, before) - sample(down, after)) +
                                 std::abs(2 * green - up.green[before] - down.green[after]);
        const int slopeRising = std::abs(sample(up, after) - sample(down, before)) +
                                std::abs(2 * green - up.green[after] - down.green[before]);
        const int falling = up.difference[before] + down.difference[after];
        const int rising = up.difference[after] + down.difference[before];
        const int sum = (slopeFalling <= slopeRising ? falling : rising) +
                        (slopeRising <= slopeFalling ? rising : falling);
        destination = StoreBayer<L, R>(destination, own[i], static_cast<std::uint8_t>(green),
                                       Clamp(green + ((sum + 2) >> 2) - 256));
    }
}

template<Layout L>
void FillLayout(Kernels& kernels) {
    constexpr auto kLayout = static_cast<std::size_t>(L);
    kernels.grey[kLayout] = Grey<L>;
    kernels.rgb[kLayout] = Rgb<L>;
    kernels.bgrx[kLayout] = Bgrx<L>;
    kernels.uyvy[kLayout] = Yuv<L, 1, 0, 3, 2>;
    kernels.yuyv[kLayout] = Yuv<L, 0, 1, 2, 3>;
    kernels.nearest[kLayout][0] = Nearest<L, BayerRow::RedGreen>;
    kernels.nearest[kLayout][1] = Nearest<L, BayerRow::GreenRed>;
    kernels.nearest[kLayout][2] = Nearest<L, BayerRow::BlueGreen>;
    kernels.nearest[kLayout][3] = Nearest<L, BayerRow::GreenBlue>;
    kernels.bilinear[kLayout][0] = Bilinear<L, BayerRow::RedGreen>;
    kernels.bilinear[kLayout][1] = Bilinear<L, BayerRow::GreenRed>;
    kernels.bilinear[kLayout][2] = Bilinear<L, BayerRow::BlueGreen>;
    kernels.bilinear[kLayout][3] = Bilinear<L, BayerRow::GreenBlue>;
    kernels.colour[kLayout][0] = Colour<L, BayerRow::RedGreen>;
    kernels.colour[kLayout][1] = Colour<L, BayerRow::GreenRed>;
    kernels.colour[kLayout][2] = Colour<L, BayerRow::BlueGreen>;
    kernels.colour[kLayout][3] = Colour<L, BayerRow::GreenBlue>;
}

Kernels MakePlainKernels() {
    Kernels kernels{};
    kernels.name = "plain";
    kernels.words10 = Words<2>;
    kernels.words12 = Words<4>;
    kernels.triples = Triples;
    kernels.green[0] = Green<0>;
    kernels.green[1] = Green<1>;
    FillLayout<Layout::Grey>(kernels);
    FillLayout<Layout::Rgb>(kernels);
    FillLayout<Layout::Bgr>(kernels);
    FillLayout<Layout::Bgrx>(kernels);
    return kernels;
}

} // namespace

const Kernels& PlainKernels() {
    static const Kernels kernels = MakePlainKernels();
    return kernels;
}

} // namespace media
