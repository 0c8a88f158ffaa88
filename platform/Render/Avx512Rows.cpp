#include "PlainRows.h"

#if defined(__x86_64__)

// GCC 12 takes the header's deliberately undefined registers for a mistake of ours.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#define KOLT_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vnni")))

namespace kolt::render {

namespace {

KOLT_AVX512 inline __m512i load(const void* at) {
    return _mm512_loadu_si512(at);
}

KOLT_AVX512 inline void store(void* at, __m512i value) {
    _mm512_storeu_si512(at, value);
}

KOLT_AVX512 inline __m512i opaque() {
    return _mm512_set1_epi32(static_cast<int>(0xFF000000U));
}

/* A line at a time: loads in groups before their stores were slower by an eighth where memory is busy. */
KOLT_AVX512 void copyPastCaches(const uint8_t* from, uint8_t* to, size_t bytes) {
    for (size_t i = 0; i < bytes; i += 64) {
        _mm512_stream_si512(reinterpret_cast<__m512i*>(to + i), load(from + i));
    }
}

/* What the blending below is made of. */
struct Vector {
    using Type = __m512i;
    static constexpr size_t kBytes = 64;
    KOLT_AVX512 static Type load(const uint8_t* at) { return _mm512_loadu_si512(at); }
    KOLT_AVX512 static void store(uint8_t* at, Type v) { _mm512_storeu_si512(at, v); }
    KOLT_AVX512 static Type set(int16_t value) { return _mm512_set1_epi16(value); }
    KOLT_AVX512 static Type add(Type a, Type b) { return _mm512_add_epi16(a, b); }
    /* Sums of two neighbouring bytes times their weights. */
    KOLT_AVX512 static Type weighted(Type bytes, Type weights) {
        return _mm512_maddubs_epi16(bytes, weights);
    }
    KOLT_AVX512 static Type lowBytesInTurn(Type a, Type b) { return _mm512_unpacklo_epi8(a, b); }
    KOLT_AVX512 static Type highBytesInTurn(Type a, Type b) { return _mm512_unpackhi_epi8(a, b); }
    template<int Bits>
    KOLT_AVX512 static Type shiftRight(Type v) {
        return _mm512_srli_epi16(v, Bits);
    }
    KOLT_AVX512 static Type pack(Type low, Type high) { return _mm512_packus_epi16(low, high); }
};

#define KOLT_TARGET KOLT_AVX512
#include "BlendRows-inl.h"

/* For 32 pixels of 96 bytes, read as the 64 bytes from 0 (numbers 0 to 63) and from 32 (64 to 127). */
struct HalvingNumbers {
    alignas(64) uint8_t even[64] = {};
    alignas(64) uint8_t odd[64] = {};

    constexpr HalvingNumbers() {
        for (unsigned i = 0; i < 48; ++i) {
            const unsigned byte = i / 3 * 6 + i % 3;
            even[i] = static_cast<uint8_t>(byte < 64 ? byte : byte + 32);
            odd[i] = static_cast<uint8_t>(byte + 3 < 64 ? byte + 3 : byte + 35);
        }
    }
};

KOLT_AVX512 void halveColour(uint8_t* row, size_t count) {
    static constexpr HalvingNumbers kNumbers;
    const __m512i even = load(kNumbers.even);
    const __m512i odd = load(kNumbers.odd);
    size_t pixel = 0;
    for (; pixel + 32 <= count; pixel += 32) {
        const __m512i low = load(row + pixel * 3);
        const __m512i high = load(row + pixel * 3 + 32);
        const __m512i mean = _mm512_avg_epu8(_mm512_permutex2var_epi8(low, even, high),
                                             _mm512_permutex2var_epi8(low, odd, high));
        // 48 bytes of result; never more, for the row is read on from here.
        _mm512_mask_storeu_epi8(row + pixel / 2 * 3, 0xFFFFFFFFFFFFULL, mean);
    }
    plain::halveFrom<3>(row, pixel, count);
}

KOLT_AVX512 void copyColumns(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    const uint32_t* offset = tables.offset.data();
    const uint8_t* permute = tables.permute.data();
    size_t i = 0;
    for (; i + 16 <= tables.count; i += 16) {
        const __m512i pixels = _mm512_permutexvar_epi8(load(permute + i * 4), load(row + offset[i]));
        store(words + i, _mm512_or_si512(pixels, opaque()));
    }
    plain::copyFrom(row, tables, i, words);
}

/* Four bytes times four weights, added and rounded. */
KOLT_AVX512 inline __m512i weighted(__m512i bytes, __m512i weights) {
    static_assert(kColumnTaps == 4 && kColumnWeight == 64, "the dot product and the shift");
    return _mm512_srli_epi32(_mm512_dpbusd_epi32(_mm512_set1_epi32(kColumnWeight / 2), bytes, weights), 6);
}

KOLT_AVX512 size_t averageGrey(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    // Byte 0 of each word three times.
    const __m512i spread = _mm512_set4_epi32(static_cast<int>(0x800C0C0CU), static_cast<int>(0x80080808U),
                                             static_cast<int>(0x80040404U), static_cast<int>(0x80000000U));
    const uint32_t* offset = tables.offset.data();
    const uint8_t* permute = tables.permute.data();
    const uint32_t* weight = tables.weight.data();
    size_t i = 0;
    for (; i + 16 <= tables.count; i += 16) {
        const __m512i columns = _mm512_permutexvar_epi8(load(permute + i * 4), load(row + offset[i]));
        const __m512i pixels = _mm512_shuffle_epi8(weighted(columns, load(weight + i)), spread);
        store(words + i, _mm512_or_si512(pixels, opaque()));
    }
    return i;
}

KOLT_AVX512 size_t averageColour(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    // A group of four pixels fills the register; each pixel's weights are wanted for its three colours.
    const __m512i repeat = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
    // Packing four groups leaves pixel n of group g in place 4 n + g.
    const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    const uint32_t* offset = tables.offset.data();
    const uint8_t* permute = tables.permute.data();
    const uint32_t* weight = tables.weight.data();
    size_t i = 0;
    for (; i + 16 <= tables.count; i += 16) {
        __m512i mean[4];
        for (size_t group = 0; group < 4; ++group) {
            const size_t at = i + 4 * group;
            const __m512i columns = _mm512_permutexvar_epi8(load(permute + at * 16), load(row + offset[at]));
            const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(weight + at));
            mean[group] = weighted(columns, _mm512_permutexvar_epi32(repeat, _mm512_castsi128_si512(four)));
        }
        const __m512i packed =
            _mm512_packus_epi16(_mm512_packus_epi32(mean[0], mean[1]), _mm512_packus_epi32(mean[2], mean[3]));
        store(words + i, _mm512_or_si512(_mm512_permutexvar_epi32(order, packed), opaque()));
    }
    return i;
}

KOLT_AVX512 void averageColumns(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    const size_t done =
        tables.channels == 3 ? averageColour(row, tables, words) : averageGrey(row, tables, words);
    plain::averageFrom(row, tables, done, words);
}

} // namespace

const RowKernels* avx512RowKernels() {
    static const bool present = avx2RowKernels() != nullptr && __builtin_cpu_supports("avx512bw") != 0 &&
                                __builtin_cpu_supports("avx512vl") != 0 &&
                                __builtin_cpu_supports("avx512vbmi") != 0 &&
                                __builtin_cpu_supports("avx512vnni") != 0;
    if (!present) {
        return nullptr;
    }
    static const RowKernels kernels = [] {
        RowKernels best = *avx2RowKernels();
        best.name = "AVX-512";
        best.copyPastCaches = copyPastCaches;
        best.blend = blend;
        best.halveColour = halveColour;
        best.copyColumns = copyColumns;
        best.averageColumns = averageColumns;
        return best;
    }();
    return &kernels;
}

} // namespace kolt::render

#else

namespace kolt::render {

const RowKernels* avx512RowKernels() {
    return nullptr;
}

} // namespace kolt::render

#endif
