/* The two passes of Hamilton-Adams, compiled once for each instruction set. */

#include "MediaKit/SimdTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "MediaKit/SimdHamilton.cpp"
#include "hwy/foreach_target.h" // IWYU pragma: keep
// After it, so that each target gets its own.
#include "MediaKit/SimdStore-inl.h"
#include "hwy/highway.h"

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace media {
namespace HWY_NAMESPACE {
namespace {

// One step handles as many pixels as a vector has bytes: its red or blue sites fill a vector of 16-bit lanes,
// its green ones another.
using Bytes = hn::CappedTag<std::uint8_t, 64>;
using Words = hn::Repartition<std::int16_t, Bytes>;
using Unsigned = hn::Repartition<std::uint16_t, Bytes>;
using V = hn::Vec<Words>;
constexpr std::size_t kLanes = hn::MaxLanes(Bytes());

constexpr bool GreenFirst(BayerRow row) {
    return row == BayerRow::GreenRed || row == BayerRow::GreenBlue;
}

/* The bytes at from, from + 2, ... and at from + 1, from + 3, ... of a vector. */
HWY_INLINE V Even(hn::Vec<Bytes> v) {
    return hn::And(hn::BitCast(Words(), v), hn::Set(Words(), 0xFF));
}
HWY_INLINE V Odd(hn::Vec<Bytes> v) {
    return hn::BitCast(Words(), hn::ShiftRight<8>(hn::BitCast(Unsigned(), v)));
}

HWY_INLINE V Clamp(V v) {
    return hn::Min(hn::Max(v, hn::Zero(Words())), hn::Set(Words(), 255));
}

HWY_INLINE V Twice(V v) {
    return hn::Add(v, v);
}

/* The value whose slope is smaller, plus itself; where the slopes are the same, one plus the other. */
HWY_INLINE V TwiceTheBetter(V slopeA, V a, V slopeB, V b) {
    return hn::Add(hn::IfThenElse(hn::Gt(slopeA, slopeB), b, a),
                   hn::IfThenElse(hn::Gt(slopeB, slopeA), a, b));
}

template<std::size_t kFirst>
void Green(const std::uint8_t* const* rows, const GreenLine& line, std::size_t pixels) {
    const Bytes d;
    const Words d16;
    // Columns are counted from the first red or blue site. The lines have room for the overshoot of the last
    // step.
    const std::uint8_t* HWY_RESTRICT const up2 = rows[0] + kFirst;
    const std::uint8_t* HWY_RESTRICT const up = rows[1] + kFirst;
    const std::uint8_t* HWY_RESTRICT const own = rows[2] + kFirst;
    const std::uint8_t* HWY_RESTRICT const down = rows[3] + kFirst;
    const std::uint8_t* HWY_RESTRICT const down2 = rows[4] + kFirst;
    auto* HWY_RESTRICT const greens = reinterpret_cast<std::int16_t*>(line.green);
    auto* HWY_RESTRICT const differences = reinterpret_cast<std::int16_t*>(line.difference);
    for (std::size_t x = 0; x < pixels; x += kLanes) {
        const auto before = hn::LoadU(d, own + x - 2);
        const auto here = hn::LoadU(d, own + x);
        const V centre = Even(here);
        const V left = Odd(before);
        const V right = Odd(here);
        const V above = Even(hn::LoadU(d, up + x));
        const V below = Even(hn::LoadU(d, down + x));
        const V twice = Twice(centre);
        const V bendAcross = hn::Sub(twice, hn::Add(Even(before), Even(hn::LoadU(d, own + x + 2))));
        const V bendDown =
            hn::Sub(twice, hn::Add(Even(hn::LoadU(d, up2 + x)), Even(hn::LoadU(d, down2 + x))));
        const V slopeAcross = hn::Add(hn::Abs(hn::Sub(left, right)), hn::Abs(bendAcross));
        const V slopeDown = hn::Add(hn::Abs(hn::Sub(above, below)), hn::Abs(bendDown));
        const V across = hn::Add(Twice(hn::Add(left, right)), bendAcross);
        const V downwards = hn::Add(Twice(hn::Add(above, below)), bendDown);
        const V sum = TwiceTheBetter(slopeAcross, across, slopeDown, downwards);
        const V green = Clamp(hn::ShiftRight<3>(hn::Add(sum, hn::Set(d16, 4))));
        hn::StoreU(green, d16, greens + x / 2);
        hn::StoreU(hn::Add(hn::Sub(centre, green), hn::Set(d16, 256)), d16, differences + x / 2);
    }
}

/* green + a mean of differences, which has 256 too much. */
HWY_INLINE V FromDifference(V green, V difference) {
    const Unsigned d16;
    const auto sum = hn::BitCast(d16, hn::Add(green, difference));
    return hn::BitCast(Words(), hn::Min(hn::SaturatedSub(sum, hn::Set(d16, 256)), hn::Set(d16, 255)));
}

HWY_INLINE V MeanOfTwo(V a, V b) {
    const Unsigned d16;
    return hn::BitCast(Words(), hn::AverageRound(hn::BitCast(d16, a), hn::BitCast(d16, b)));
}

/* One of the line's arrays at the sites from `site` on. */
HWY_INLINE V At(const std::uint16_t* values, std::ptrdiff_t site) {
    return hn::LoadU(Words(), reinterpret_cast<const std::int16_t*>(values) + site);
}

/* Even pixels from one vector, odd ones from another, as bytes. */
HWY_INLINE hn::Vec<Bytes> Merge(V even, V odd) {
    return hn::BitCast(Bytes(), hn::Or(even, hn::ShiftLeft<8>(odd)));
}

/* The other colour at red or blue sites, from the four corners: in the rows above and below the sites
 * `before` and the next. */
HWY_INLINE V FromCorners(const GreenLine& up, const GreenLine& down, V green, std::ptrdiff_t before) {
    const Words d16;
    const std::ptrdiff_t after = before + 1;
    const V upLeft = At(up.difference, before);
    const V upRight = At(up.difference, after);
    const V downLeft = At(down.difference, before);
    const V downRight = At(down.difference, after);
    const V upLeftGreen = At(up.green, before);
    const V upRightGreen = At(up.green, after);
    const V downLeftGreen = At(down.green, before);
    const V downRightGreen = At(down.green, after);
    const V twice = Twice(green);
    // A sample is its green plus its difference, and the 256 that the differences have too much cancel out.
    const auto slope = [&](V difference, V oneGreen, V opposite, V oppositeGreen) HWY_ATTR {
        const V step = hn::Sub(hn::Add(difference, oneGreen), hn::Add(opposite, oppositeGreen));
        return hn::Add(hn::Abs(step), hn::Abs(hn::Sub(twice, hn::Add(oneGreen, oppositeGreen))));
    };
    const V sum =
        TwiceTheBetter(slope(upLeft, upLeftGreen, downRight, downRightGreen), hn::Add(upLeft, downRight),
                       slope(upRight, upRightGreen, downLeft, downLeftGreen), hn::Add(upRight, downLeft));
    return FromDifference(green, hn::ShiftRight<2>(hn::Add(sum, hn::Set(d16, 2))));
}

template<Layout L, BayerRow R>
void Colour(const std::uint8_t* HWY_RESTRICT own, const GreenLine* lines,
            std::uint8_t* HWY_RESTRICT destination, std::size_t pixels) {
    const Bytes d;
    const GreenLine up = lines[0];
    const GreenLine at = lines[1];
    const GreenLine down = lines[2];
    constexpr std::ptrdiff_t kFirst = GreenFirst(R) ? 1 : 0;
    ForMosaicRow<kLanes, BytesOf(L)>(pixels, destination, [&](std::size_t x, std::uint8_t* to) HWY_ATTR {
        const auto site = static_cast<std::ptrdiff_t>(x / 2);
        const auto row = hn::LoadU(d, own + x);
        const V colourGreen = At(at.green, site);
        const V colour = GreenFirst(R) ? Odd(row) : Even(row);
        const V green = GreenFirst(R) ? Even(row) : Odd(row);
        const V beside = FromDifference(
            green, MeanOfTwo(At(at.difference, site - kFirst), At(at.difference, site - kFirst + 1)));
        const V above = FromDifference(green, MeanOfTwo(At(up.difference, site), At(down.difference, site)));
        const V corners = FromCorners(up, down, colourGreen, site - 1 + kFirst);
        if constexpr (GreenFirst(R)) {
            StoreMosaic<L, R>(d, Merge(beside, colour), Merge(green, colourGreen), Merge(above, corners), to);
        } else {
            StoreMosaic<L, R>(d, Merge(colour, beside), Merge(colourGreen, green), Merge(corners, above), to);
        }
    });
}

template<Layout L>
void FillLayout(Kernels& kernels) {
    constexpr auto kLayout = static_cast<std::size_t>(L);
    kernels.colour[kLayout][0] = Colour<L, BayerRow::RedGreen>;
    kernels.colour[kLayout][1] = Colour<L, BayerRow::GreenRed>;
    kernels.colour[kLayout][2] = Colour<L, BayerRow::BlueGreen>;
    kernels.colour[kLayout][3] = Colour<L, BayerRow::GreenBlue>;
}

} // namespace

void FillHamilton(Kernels& kernels) {
    kernels.green[0] = Green<0>;
    kernels.green[1] = Green<1>;
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

void FillHamiltonKernels(std::int64_t target, Kernels& kernels) {
    MEDIA_CALL_FOR_TARGET(target, FillHamilton(kernels))
}

} // namespace media

#endif
