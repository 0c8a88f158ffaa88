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

using Bytes = hn::CappedTag<std::uint8_t, 32>;
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
void Nearest(const std::uint8_t* HWY_RESTRICT own, const std::uint8_t* HWY_RESTRICT other,
             std::uint8_t* HWY_RESTRICT destination, std::size_t pixels) {
    const Bytes d;
    ForMosaicRow<kLanes, BytesOf(L)>(pixels, destination, [&](std::size_t x, std::uint8_t* to) HWY_ATTR {
        const V ownRow = hn::LoadU(d, own + x);
        const V otherRow = hn::LoadU(d, other + x);
        if constexpr (GreenFirst(R)) {
            StoreMosaic<L, R>(d, TwiceOdd(ownRow), TwiceEven(ownRow), TwiceEven(otherRow), to);
        } else {
            StoreMosaic<L, R>(d, TwiceEven(ownRow), TwiceOdd(ownRow), TwiceOdd(otherRow), to);
        }
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

template<Layout L, BayerRow R>
void Bilinear(const std::uint8_t* const* rows, std::uint8_t* HWY_RESTRICT destination, std::size_t pixels) {
    const Bytes d;
    const std::uint8_t* HWY_RESTRICT const above = rows[0];
    const std::uint8_t* HWY_RESTRICT const own = rows[1];
    const std::uint8_t* HWY_RESTRICT const below = rows[2];
    ForMosaicRow<kLanes, BytesOf(L)>(pixels, destination, [&](std::size_t x, std::uint8_t* to) HWY_ATTR {
        const auto beside = [&](const std::uint8_t* row) HWY_ATTR {
            return MeanOf(hn::LoadU(d, row + x - 1), hn::LoadU(d, row + x + 1));
        };
        const V centre = hn::LoadU(d, own + x);
        const Mean across = beside(own);
        const Mean upright = MeanOf(hn::LoadU(d, above + x), hn::LoadU(d, below + x));
        const V cross = MeanOfFour(across, upright);
        const V corners = MeanOfFour(beside(above), beside(below));
        if constexpr (GreenFirst(R)) {
            StoreMosaic<L, R>(d, hn::OddEven(centre, across.value), hn::OddEven(cross, centre),
                              hn::OddEven(corners, upright.value), to);
        } else {
            StoreMosaic<L, R>(d, hn::OddEven(across.value, centre), hn::OddEven(centre, cross),
                              hn::OddEven(upright.value, corners), to);
        }
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
