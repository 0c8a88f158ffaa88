/*
 * Stores of three 8-bit channels in the layouts of a result. Part of the translation units that Highway
 * compiles once for each instruction set: hence the guard that toggles.
 */
#if defined(MEDIA_SIMD_STORE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef MEDIA_SIMD_STORE_INL_H
#undef MEDIA_SIMD_STORE_INL_H
#else
#define MEDIA_SIMD_STORE_INL_H
#endif

#include "MediaKit/Kernels.h"
#include "MediaKit/PixelTraits.h"
#include "hwy/highway.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace media {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/* Loads a table that repeats in each block of 16 bytes. */
template<class D>
HWY_INLINE hn::Vec<D> Table(D d, const std::uint8_t (&table)[16]) {
    return hn::LoadDup128(d, table);
}

#if HWY_ARCH_X86

/* The first block of 16 bytes of each, then the second block of each, and so on. */
template<class D, class V>
HWY_INLINE void StoreBlocksInTurn(D d, V a, V b, V c, std::uint8_t* to) {
    if constexpr (hn::MaxLanes(d) == 16) {
        hn::StoreU(a, d, to);
        hn::StoreU(b, d, to + 16);
        hn::StoreU(c, d, to + 32);
    } else if constexpr (hn::MaxLanes(d) == 32) {
        hn::StoreU(hn::ConcatLowerLower(d, b, a), d, to);
        hn::StoreU(hn::ConcatUpperLower(d, a, c), d, to + 32);
        hn::StoreU(hn::ConcatUpperUpper(d, c, b), d, to + 64);
    } else {
        const hn::Half<D> half;
        StoreBlocksInTurn(half, hn::LowerHalf(half, a), hn::LowerHalf(half, b), hn::LowerHalf(half, c), to);
        StoreBlocksInTurn(half, hn::UpperHalf(half, a), hn::UpperHalf(half, b), hn::UpperHalf(half, c),
                          to + 3 * hn::MaxLanes(half));
    }
}

/*
 * r0 g0 b0 r1 ... : 3 has no factor in common with 16, so that one shuffle a channel brings each byte to its
 * place modulo 16; two selections then make each of the three results. Fewer operations than the general
 * StoreInterleaved3.
 */
template<class D, class V>
HWY_INLINE void StoreThree(D d, V a, V b, V c, std::uint8_t* to) {
    alignas(16) static constexpr std::uint8_t kPlaceA[16] = {0, 11, 6,  1, 12, 7,  2,  13,
                                                             8, 3,  14, 9, 4,  15, 10, 5};
    alignas(16) static constexpr std::uint8_t kPlaceB[16] = {5,  0, 11, 6,  1, 12, 7,  2,
                                                             13, 8, 3,  14, 9, 4,  15, 10};
    alignas(16) static constexpr std::uint8_t kPlaceC[16] = {10, 5,  0, 11, 6,  1, 12, 7,
                                                             2,  13, 8, 3,  14, 9, 4,  15};
    alignas(16) static constexpr std::uint8_t kFirst[16] = {255, 0,   0, 255, 0,   0, 255, 0,
                                                            0,   255, 0, 0,   255, 0, 0,   255};
    alignas(16) static constexpr std::uint8_t kSecond[16] = {0, 255, 0,   0, 255, 0,   0, 255,
                                                             0, 0,   255, 0, 0,   255, 0, 0};
    const V placedA = hn::TableLookupBytes(a, Table(d, kPlaceA));
    const V placedB = hn::TableLookupBytes(b, Table(d, kPlaceB));
    const V placedC = hn::TableLookupBytes(c, Table(d, kPlaceC));
    const auto first = hn::MaskFromVec(Table(d, kFirst));
    const auto second = hn::MaskFromVec(Table(d, kSecond));
    const V low = hn::IfThenElse(first, placedA, hn::IfThenElse(second, placedB, placedC));
    const V middle = hn::IfThenElse(first, placedB, hn::IfThenElse(second, placedC, placedA));
    const V high = hn::IfThenElse(first, placedC, hn::IfThenElse(second, placedA, placedB));
    StoreBlocksInTurn(d, low, middle, high, to);
}

#else

template<class D, class V>
HWY_INLINE void StoreThree(D d, V a, V b, V c, std::uint8_t* to) {
    hn::StoreInterleaved3(a, b, c, d, to);
}

#endif

/* (77 R + 150 G + 29 B + 128) / 256, in 16-bit lanes of even and of odd pixels. */
template<class D, class V>
HWY_INLINE V Luma(D d, V red, V green, V blue) {
    const hn::Repartition<std::uint16_t, D> d16;
    const auto low = hn::Set(d16, 0xFF);
    const auto even = [&](V v) HWY_ATTR { return hn::And(hn::BitCast(d16, v), low); };
    const auto odd = [&](V v) HWY_ATTR { return hn::ShiftRight<8>(hn::BitCast(d16, v)); };
    const auto sum = [&](auto r, auto g, auto b) HWY_ATTR {
        const auto redGreen = hn::Add(hn::Mul(r, hn::Set(d16, 77)), hn::Mul(g, hn::Set(d16, 150)));
        return hn::Add(redGreen, hn::Add(hn::Mul(b, hn::Set(d16, 29)), hn::Set(d16, 128)));
    };
    const auto lumaEven = hn::ShiftRight<8>(sum(even(red), even(green), even(blue)));
    const auto lumaOdd = hn::AndNot(low, sum(odd(red), odd(green), odd(blue)));
    return hn::BitCast(d, hn::Or(lumaEven, lumaOdd));
}

template<Layout L, class D, class V>
HWY_INLINE void StorePixels(D d, V red, V green, V blue, std::uint8_t* to) {
    if constexpr (L == Layout::Grey) {
        hn::StoreU(Luma(d, red, green, blue), d, to);
    } else if constexpr (L == Layout::Rgb) {
        StoreThree(d, red, green, blue, to);
    } else if constexpr (L == Layout::Bgr) {
        StoreThree(d, blue, green, red, to);
    } else {
        hn::StoreInterleaved4(blue, green, red, hn::Set(d, 255), d, to);
    }
}

/* By the row of the mosaic: own is its colour, other that of the rows above and below. */
template<Layout L, BayerRow R, class D, class V>
HWY_INLINE void StoreMosaic(D d, V own, V green, V other, std::uint8_t* to) {
    if constexpr (R == BayerRow::RedGreen || R == BayerRow::GreenRed) {
        StorePixels<L>(d, own, green, other, to);
    } else {
        StorePixels<L>(d, other, green, own, to);
    }
}

/*
 * Runs step(x, to, toSecond) for x = 0, lanes, 2 lanes, ... over two rows whose sources may be read beyond
 * their ends but whose results end exactly. x is always even: a mosaic keeps its colours. The last step
 * overlaps the one before, or, in rows of odd or of very small width, goes by way of a small buffer.
 */
template<std::size_t kLanes, std::size_t kBytes, class Step>
HWY_INLINE void ForMosaicRows(std::size_t pixels, std::uint8_t* first, std::uint8_t* second, Step&& step) {
    std::size_t x = 0;
    for (; x + kLanes <= pixels; x += kLanes) {
        step(x, first + x * kBytes, second + x * kBytes);
    }
    if (x == pixels) {
        return;
    }
    if (pixels >= kLanes && pixels % 2 == 0) {
        x = pixels - kLanes;
        step(x, first + x * kBytes, second + x * kBytes);
        return;
    }
    alignas(64) std::uint8_t last[2][kLanes * kBytes];
    step(x, last[0], last[1]);
    std::memcpy(first + x * kBytes, last[0], (pixels - x) * kBytes);
    std::memcpy(second + x * kBytes, last[1], (pixels - x) * kBytes);
}

/* The same for one row: step(x, to). */
template<std::size_t kLanes, std::size_t kBytes, class Step>
HWY_INLINE void ForMosaicRow(std::size_t pixels, std::uint8_t* destination, Step&& step) {
    std::size_t x = 0;
    for (; x + kLanes <= pixels; x += kLanes) {
        step(x, destination + x * kBytes);
    }
    if (x == pixels) {
        return;
    }
    if (pixels >= kLanes && pixels % 2 == 0) {
        x = pixels - kLanes;
        step(x, destination + x * kBytes);
        return;
    }
    alignas(64) std::uint8_t last[kLanes * kBytes];
    step(x, last);
    std::memcpy(destination + x * kBytes, last, (pixels - x) * kBytes);
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace media
HWY_AFTER_NAMESPACE();

#endif

#endif
