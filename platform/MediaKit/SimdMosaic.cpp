/* Nearest-neighbour and bilinear kernels for Bayer mosaics, compiled once for each instruction set. */

#include "MediaKit/SimdTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "MediaKit/SimdMosaic.cpp"
#include "hwy/foreach_target.h" // IWYU pragma: keep
// After it, so that each target gets its own.
#include "MediaKit/SimdStore-inl.h"
#include "hwy/highway.h"

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace media {
namespace HWY_NAMESPACE {
namespace {

using Bytes = hn::CappedTag<std::uint8_t, 64>;
using V = hn::Vec<Bytes>;
constexpr std::size_t kLanes = hn::MaxLanes(Bytes());

constexpr bool GreenFirst(BayerRow row) {
    return row == BayerRow::GreenRed || row == BayerRow::GreenBlue;
}

/* Each even byte twice; each odd byte twice. */
HWY_INLINE V TwiceEven(V v) {
    alignas(16) static constexpr std::uint8_t kEven[16] = {0, 0, 2,  2,  4,  4,  6,  6,
                                                           8, 8, 10, 10, 12, 12, 14, 14};
    return hn::TableLookupBytes(v, Table(Bytes(), kEven));
}
HWY_INLINE V TwiceOdd(V v) {
    alignas(16) static constexpr std::uint8_t kOdd[16] = {1, 1, 3,  3,  5,  5,  7,  7,
                                                          9, 9, 11, 11, 13, 13, 15, 15};
    return hn::TableLookupBytes(v, Table(Bytes(), kOdd));
}

template<Layout L, BayerRow R>
void Nearest(const std::uint8_t* const* rows, std::uint8_t* first, std::uint8_t* second, std::size_t pixels) {
    const Bytes d;
    const std::uint8_t* HWY_RESTRICT const upper = rows[0];
    const std::uint8_t* HWY_RESTRICT const lower = rows[1];
    ForMosaicRows<kLanes, BytesOf(L)>(
        pixels, first, second, [&](std::size_t x, std::uint8_t* to, std::uint8_t* toLower) HWY_ATTR {
            const V above = hn::LoadU(d, upper + x);
            const V below = hn::LoadU(d, lower + x);
            // The colour of the upper row, that of the lower one, and the green of each.
            const V own = GreenFirst(R) ? TwiceOdd(above) : TwiceEven(above);
            const V other = GreenFirst(R) ? TwiceEven(below) : TwiceOdd(below);
            const V green = GreenFirst(R) ? TwiceEven(above) : TwiceOdd(above);
            const V greenBelow = GreenFirst(R) ? TwiceOdd(below) : TwiceEven(below);
            StoreMosaic<L, R>(d, own, green, other, to);
            StoreMosaic<L, R>(d, own, greenBelow, other, toLower);
        });
}

/* A mean of two, rounded up, and in its lowest bit whether it was. */
struct Mean {
    V value;
    V rounded;
};

HWY_INLINE Mean MeanOf(V a, V b) {
    return {hn::AverageRound(a, b), hn::Xor(a, b)};
}

/*
 * (a + b + c + d + 2) / 4 from the means of two pairs, without leaving eight bits: their mean is one too
 * large where it was rounded up and so was one of them.
 */
HWY_INLINE V MeanOfFour(Mean a, Mean b) {
    const Bytes d;
    const V excess = hn::And(hn::Or(a.rounded, b.rounded), hn::Xor(a.value, b.value));
    return hn::Sub(hn::AverageRound(a.value, b.value), hn::And(excess, hn::Set(d, 1)));
}

/* A row's vector and the mean of its neighbours on both sides. */
struct Around {
    V centre;
    Mean beside;
};

HWY_INLINE Around LoadAround(const std::uint8_t* row) {
    const Bytes d;
    return {hn::LoadU(d, row), MeanOf(hn::LoadU(d, row - 1), hn::LoadU(d, row + 1))};
}

template<Layout L, BayerRow R>
HWY_INLINE void StoreBilinear(const Around& above, const Around& own, const Around& below, std::uint8_t* to) {
    const Bytes d;
    const Mean upright = MeanOf(above.centre, below.centre);
    const V cross = MeanOfFour(own.beside, upright);
    const V corners = MeanOfFour(above.beside, below.beside);
    if constexpr (GreenFirst(R)) {
        StoreMosaic<L, R>(d, hn::OddEven(own.centre, own.beside.value), hn::OddEven(cross, own.centre),
                          hn::OddEven(corners, upright.value), to);
    } else {
        StoreMosaic<L, R>(d, hn::OddEven(own.beside.value, own.centre), hn::OddEven(own.centre, cross),
                          hn::OddEven(upright.value, corners), to);
    }
}

template<Layout L, BayerRow R>
void Bilinear(const std::uint8_t* const* rows, std::uint8_t* first, std::uint8_t* second,
              std::size_t pixels) {
    const std::uint8_t* HWY_RESTRICT const row0 = rows[0];
    const std::uint8_t* HWY_RESTRICT const row1 = rows[1];
    const std::uint8_t* HWY_RESTRICT const row2 = rows[2];
    const std::uint8_t* HWY_RESTRICT const row3 = rows[3];
    ForMosaicRows<kLanes, BytesOf(L)>(pixels, first, second,
                                      [&](std::size_t x, std::uint8_t* to, std::uint8_t* toLower) HWY_ATTR {
                                          const Around a = LoadAround(row0 + x);
                                          const Around b = LoadAround(row1 + x);
                                          const Around c = LoadAround(row2 + x);
                                          StoreBilinear<L, R>(a, b, c, to);
                                          StoreBilinear<L, OtherRow(R)>(b, c, LoadAround(row3 + x), toLower);
                                      });
}

template<Layout L, BayerRow R>
void FillRow(Kernels& kernels) {
    kernels.nearest[static_cast<std::size_t>(L)][static_cast<std::size_t>(R)] = Nearest<L, R>;
    kernels.bilinear[static_cast<std::size_t>(L)][static_cast<std::size_t>(R)] = Bilinear<L, R>;
}

template<Layout L>
void FillLayout(Kernels& kernels) {
    FillRow<L, BayerRow::RedGreen>(kernels);
    FillRow<L, BayerRow::GreenRed>(kernels);
    FillRow<L, BayerRow::BlueGreen>(kernels);
    FillRow<L, BayerRow::GreenBlue>(kernels);
}

} // namespace

void FillMosaic(Kernels& kernels) {
    FillLayout<Layout::Grey>(kernels);
    FillLayout<Layout::Rgb>(kernels);
    FillLayout<Layout::Bgr>(kernels);
    FillLayout<Layout::Bgrx>(kernels);
}

} // namespace HWY_NAMESPACE
} // namespace media
HWY_AFTER_NAMESPACE();

#endif

#if HWY_ONCE

namespace media {

void FillMosaicKernels(std::int64_t target, Kernels& kernels) {
    MEDIA_CALL_FOR_TARGET(target, FillMosaic(kernels))
}

} // namespace media

#endif
