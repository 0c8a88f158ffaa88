/* Kernels for pictures without a mosaic, compiled once for each instruction set. */

#include "MediaKit/SimdTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "MediaKit/SimdPixels.cpp"
#include "hwy/foreach_target.h" // IWYU pragma: keep
// After it, so that each target gets its own.
#include "MediaKit/SimdStore-inl.h"
#include "hwy/highway.h"

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace media {
namespace HWY_NAMESPACE {
namespace {

// Interleaving stores and the shuffles before them lose more with 64 bytes than the length gains.
using Bytes = hn::CappedTag<std::uint8_t, 64>;
constexpr std::size_t kLanes = hn::MaxLanes(Bytes());

/*
 * Runs step(i) for i = 0, lanes, 2 lanes, ... pixels, the last time for pixels - lanes, so that nothing
 * outside is touched. A row shorter than that is left to the plain kernel.
 */
template<class Step>
HWY_INLINE void ForPixels(std::size_t pixels, std::size_t lanes, Step&& step) {
    std::size_t i = 0;
    for (; i + lanes <= pixels; i += lanes) {
        step(i);
    }
    if (i < pixels) {
        step(pixels - lanes);
    }
}

template<int kShift>
void Words(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT destination,
           std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d;
    const hn::Repartition<std::uint16_t, decltype(d)> d16;
    const std::size_t lanes = hn::Lanes(d);
    if (pixels < lanes) {
        (kShift == 2 ? PlainKernels().words10 : PlainKernels().words12)(source, destination, pixels);
        return;
    }
    ForPixels(pixels, lanes, [&](std::size_t i) HWY_ATTR {
        const auto low = hn::ShiftRight<kShift>(hn::BitCast(d16, hn::LoadU(d, source + 2 * i)));
        const auto high = hn::ShiftRight<kShift>(hn::BitCast(d16, hn::LoadU(d, source + 2 * i + lanes)));
        hn::StoreU(hn::ConcatEven(d, hn::BitCast(d, high), hn::BitCast(d, low)), d, destination + i);
    });
}

/* Loads blocks of 16 bytes that lie 24 bytes apart. */
template<class D>
HWY_INLINE hn::Vec<D> LoadTripleBlocks(D d, const std::uint8_t* from) {
    if constexpr (hn::MaxLanes(d) == 16) {
        return hn::LoadU(d, from);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, LoadTripleBlocks(half, from + hn::MaxLanes(half) / 2 * 3),
                           LoadTripleBlocks(half, from));
    }
}

void Triples(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT destination,
             std::size_t pixels) {
    const Bytes d;
    constexpr std::size_t kStep = kLanes;
    if (pixels < kStep || pixels % 2 != 0) {
        // A last single pixel has only its first byte.
        const std::size_t whole = pixels < kStep ? 0 : pixels - 1;
        if (whole != 0) {
            Triples(source, destination, whole);
        }
        PlainKernels().triples(source + whole / 2 * 3, destination + whole, pixels - whole);
        return;
    }
    // 16 pixels lie in 24 bytes: two overlapping blocks of 16, each of which gives some of them.
    alignas(16) static constexpr std::uint8_t kLow[16] = {0,  2,  3,  5,   6,   8,   9,   11,
                                                          12, 14, 15, 128, 128, 128, 128, 128};
    alignas(16) static constexpr std::uint8_t kHigh[16] = {128, 128, 128, 128, 128, 128, 128, 128,
                                                           128, 128, 128, 9,   10,  12,  13,  15};
    const auto low = Table(d, kLow);
    const auto high = Table(d, kHigh);
    ForPixels(pixels, kStep, [&](std::size_t i) HWY_ATTR {
        const std::uint8_t* const from = source + i / 2 * 3;
        hn::StoreU(hn::Or(hn::TableLookupBytesOr0(LoadTripleBlocks(d, from), low),
                          hn::TableLookupBytesOr0(LoadTripleBlocks(d, from + 8), high)),
                   d, destination + i);
    });
}

template<Layout L>
void Grey(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT destination,
          std::size_t pixels) {
    if constexpr (L == Layout::Grey) {
        std::memcpy(destination, source, pixels);
    } else {
        const Bytes d;
        if (pixels < kLanes) {
            PlainKernels().grey[static_cast<std::size_t>(L)](source, destination, pixels);
            return;
        }
        ForPixels(pixels, kLanes, [&](std::size_t i) HWY_ATTR {
            const auto grey = hn::LoadU(d, source + i);
            StorePixels<L>(d, grey, grey, grey, destination + i * BytesOf(L));
        });
    }
}

/* Exchanges red and blue, five pixels in each block of 16 bytes. The sixteenth is written again by the next
 * block. */
void RgbToBgr(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT destination,
              std::size_t pixels) {
    alignas(16) static constexpr std::uint8_t kExchanged[16] = {2, 1,  0,  5, 4,  3,  8,  7,
                                                                6, 11, 10, 9, 14, 13, 12, 15};
    const hn::Full128<std::uint8_t> d;
    const auto exchanged = hn::Load(d, kExchanged);
    std::size_t i = 0;
    for (; i + 6 <= pixels; i += 5) {
        hn::StoreU(hn::TableLookupBytes(hn::LoadU(d, source + 3 * i), exchanged), d, destination + 3 * i);
    }
    PlainKernels().rgb[static_cast<std::size_t>(Layout::Bgr)](source + 3 * i, destination + 3 * i,
                                                              pixels - i);
}

template<Layout L>
void Rgb(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT destination,
         std::size_t pixels) {
    if constexpr (L == Layout::Rgb) {
        std::memcpy(destination, source, 3 * pixels);
    } else if constexpr (L == Layout::Bgr) {
        RgbToBgr(source, destination, pixels);
    } else {
        const Bytes d;
        if (pixels < kLanes) {
            PlainKernels().rgb[static_cast<std::size_t>(L)](source, destination, pixels);
            return;
        }
        ForPixels(pixels, kLanes, [&](std::size_t i) HWY_ATTR {
            hn::Vec<Bytes> red;
            hn::Vec<Bytes> green;
            hn::Vec<Bytes> blue;
            hn::LoadInterleaved3(d, source + 3 * i, red, green, blue);
            StorePixels<L>(d, red, green, blue, destination + i * BytesOf(L));
        });
    }
}

template<Layout L>
void Bgrx(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT destination,
          std::size_t pixels) {
    const Bytes d;
    if (pixels < kLanes) {
        PlainKernels().bgrx[static_cast<std::size_t>(L)](source, destination, pixels);
        return;
    }
    ForPixels(pixels, kLanes, [&](std::size_t i) HWY_ATTR {
        hn::Vec<Bytes> blue;
        hn::Vec<Bytes> green;
        hn::Vec<Bytes> red;
        hn::Vec<Bytes> unused;
        hn::LoadInterleaved4(d, source + 4 * i, blue, green, red, unused);
        StorePixels<L>(d, red, green, blue, destination + i * BytesOf(L));
    });
}

/* Y + offset, both channels' bytes; offsets in 16-bit lanes, one for each pair of pixels. */
template<class D, class V, class V16>
HWY_INLINE V AddChroma(D d, V luma, V16 sixtyFourths) {
    const hn::Repartition<std::int16_t, D> d16;
    alignas(16) static constexpr std::uint8_t kTwice[16] = {0, 0, 2,  2,  4,  4,  6,  6,
                                                            8, 8, 10, 10, 12, 12, 14, 14};
    const auto offset = hn::ShiftRight<6>(hn::Add(sixtyFourths, hn::Set(d16, 32)));
    const auto up = hn::Max(offset, hn::Zero(d16));
    const auto down = hn::Sub(up, offset);
    const auto twice = Table(d, kTwice);
    return hn::SaturatedSub(hn::SaturatedAdd(luma, hn::TableLookupBytes(hn::BitCast(d, up), twice)),
                            hn::TableLookupBytes(hn::BitCast(d, down), twice));
}

template<Layout L, bool kLumaFirst>
void Yuv(const std::uint8_t* HWY_RESTRICT source, std::uint8_t* HWY_RESTRICT destination,
         std::size_t pixels) {
    const Bytes d;
    const hn::Repartition<std::int16_t, Bytes> d16;
    const hn::Repartition<std::uint16_t, Bytes> du16;
    if (pixels < kLanes) {
        (kLumaFirst ? PlainKernels().yuyv
                    : PlainKernels().uyvy)[static_cast<std::size_t>(L)](source, destination, pixels);
        return;
    }
    ForPixels(pixels, kLanes, [&](std::size_t i) HWY_ATTR {
        const auto low = hn::LoadU(d, source + 2 * i);
        const auto high = hn::LoadU(d, source + 2 * i + kLanes);
        const auto luma = kLumaFirst ? hn::ConcatEven(d, high, low) : hn::ConcatOdd(d, high, low);
        if constexpr (L == Layout::Grey) {
            hn::StoreU(luma, d, destination + i);
        } else {
            // U below V in each lane; 256 (U - 128) and 256 (V - 128).
            const auto chroma =
                hn::BitCast(du16, kLumaFirst ? hn::ConcatOdd(d, high, low) : hn::ConcatEven(d, high, low));
            const auto sign = hn::Set(du16, 0x8000);
            const auto u = hn::BitCast(d16, hn::Xor(hn::ShiftLeft<8>(chroma), sign));
            const auto v = hn::BitCast(d16, hn::Xor(hn::And(chroma, hn::Set(du16, 0xFF00)), sign));
            const auto red = hn::MulHigh(v, hn::Set(d16, yuv::kRedOfV));
            const auto green = hn::Sub(hn::Neg(hn::MulHigh(u, hn::Set(d16, yuv::kGreenOfU))),
                                       hn::MulHigh(v, hn::Set(d16, yuv::kGreenOfV)));
            const auto blue = hn::MulHigh(u, hn::Set(d16, yuv::kBlueOfU));
            StorePixels<L>(d, AddChroma(d, luma, red), AddChroma(d, luma, green), AddChroma(d, luma, blue),
                           destination + i * BytesOf(L));
        }
    });
}

template<Layout L>
void FillLayout(Kernels& kernels) {
    constexpr auto kLayout = static_cast<std::size_t>(L);
    kernels.grey[kLayout] = Grey<L>;
    kernels.rgb[kLayout] = Rgb<L>;
    kernels.bgrx[kLayout] = Bgrx<L>;
    kernels.uyvy[kLayout] = Yuv<L, false>;
    kernels.yuyv[kLayout] = Yuv<L, true>;
}

} // namespace

void FillPixels(Kernels& kernels) {
    kernels.words10 = Words<2>;
    kernels.words12 = Words<4>;
    kernels.triples = Triples;
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

void FillPixelKernels(std::int64_t target, Kernels& kernels) {
    MEDIA_CALL_FOR_TARGET(target, FillPixels(kernels))
}

} // namespace media

#endif
