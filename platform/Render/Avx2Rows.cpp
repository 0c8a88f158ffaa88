#include "PlainRows.h"

#if defined(__x86_64__)

#include <immintrin.h>

#define KOLT_AVX2 __attribute__((target("avx2")))

namespace kolt::render {

namespace {

KOLT_AVX2 __m128i load(const uint8_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

KOLT_AVX2 __m256i load2(const uint8_t* low, const uint8_t* high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(load(low)), load(high), 1);
}

KOLT_AVX2 __m256i load256(const void* at) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(at));
}

KOLT_AVX2 void store256(void* at, __m256i value) {
    _mm256_storeu_si256(static_cast<__m256i*>(at), value);
}

KOLT_AVX2 void copyPastCaches(const uint8_t* from, uint8_t* to, size_t bytes) {
    for (size_t i = 0; i < bytes; i += 64) {
        const __m256i low = load256(from + i);
        const __m256i high = load256(from + i + 32);
        _mm256_stream_si256(reinterpret_cast<__m256i*>(to + i), low);
        _mm256_stream_si256(reinterpret_cast<__m256i*>(to + i + 32), high);
    }
}

/* What the blending below is made of. */
struct Vector {
    using Type = __m256i;
    static constexpr size_t kBytes = 32;
    KOLT_AVX2 static Type load(const uint8_t* at) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
    }
    KOLT_AVX2 static void store(uint8_t* at, Type v) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), v);
    }
    KOLT_AVX2 static Type set(int16_t value) { return _mm256_set1_epi16(value); }
    KOLT_AVX2 static Type add(Type a, Type b) { return _mm256_add_epi16(a, b); }
    /* Sums of two neighbouring bytes times their weights. */
    KOLT_AVX2 static Type weighted(Type bytes, Type weights) { return _mm256_maddubs_epi16(bytes, weights); }
    KOLT_AVX2 static Type lowBytesInTurn(Type a, Type b) { return _mm256_unpacklo_epi8(a, b); }
    KOLT_AVX2 static Type highBytesInTurn(Type a, Type b) { return _mm256_unpackhi_epi8(a, b); }
    template<int Bits>
    KOLT_AVX2 static Type shiftRight(Type v) {
        return _mm256_srli_epi16(v, Bits);
    }
    KOLT_AVX2 static Type pack(Type low, Type high) { return _mm256_packus_epi16(low, high); }
};

#define KOLT_TARGET KOLT_AVX2
#include "BlendRows-inl.h"

void settle() {
    _mm_sfence();
}

KOLT_AVX2 void halveGrey(uint8_t* row, size_t count) {
    const __m256i low = _mm256_set1_epi16(0xFF);
    size_t pixel = 0;
    for (; pixel + 64 <= count; pixel += 64) {
        const __m256i a = load256(row + pixel);
        const __m256i b = load256(row + pixel + 32);
        const __m256i even = _mm256_packus_epi16(_mm256_and_si256(a, low), _mm256_and_si256(b, low));
        const __m256i odd = _mm256_packus_epi16(_mm256_srli_epi16(a, 8), _mm256_srli_epi16(b, 8));
        const __m256i mean = _mm256_avg_epu8(even, odd);
        store256(row + pixel / 2, _mm256_permute4x64_epi64(mean, 0xD8));
    }
    plain::halveFrom<1>(row, pixel, count);
}

KOLT_AVX2 void halveColour(uint8_t* row, size_t count) {
    // Eight pixels of 24 bytes, read as the 16 bytes from 0 and from 8.
    const __m128i evenLow = _mm_setr_epi8(0, 1, 2, 6, 7, 8, 12, 13, 14, -1, -1, -1, -1, -1, -1, -1);
    const __m128i evenHigh = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, 10, 11, 12, -1, -1, -1, -1);
    const __m128i oddLow = _mm_setr_epi8(3, 4, 5, 9, 10, 11, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i oddHigh = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, 7, 8, 9, 13, 14, 15, -1, -1, -1, -1);
    size_t pixel = 0;
    for (; pixel + 8 <= count; pixel += 8) {
        const __m128i low = load(row + pixel * 3);
        const __m128i high = load(row + pixel * 3 + 8);
        const __m128i even = _mm_or_si128(_mm_shuffle_epi8(low, evenLow), _mm_shuffle_epi8(high, evenHigh));
        const __m128i odd = _mm_or_si128(_mm_shuffle_epi8(low, oddLow), _mm_shuffle_epi8(high, oddHigh));
        const __m128i mean = _mm_avg_epu8(even, odd);
        // Twelve bytes of result; never more, for the row is read on from here.
        uint8_t* out = row + pixel / 2 * 3;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), mean);
        const int32_t rest = _mm_extract_epi32(mean, 2);
        std::memcpy(out + 8, &rest, sizeof rest);
    }
    plain::halveFrom<3>(row, pixel, count);
}

KOLT_AVX2 void copyColumns(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(0xFF000000U));
    const uint32_t* offset = tables.offset.data();
    const uint8_t* shuffle = tables.shuffle.data();
    size_t i = 0;
    for (; i + 8 <= tables.count; i += 8) {
        const __m256i pixels = load2(row + offset[i], row + offset[i + 4]);
        const __m256i chosen = _mm256_shuffle_epi8(pixels, load256(shuffle + i * 4));
        store256(words + i, _mm256_or_si256(chosen, opaque));
    }
    plain::copyFrom(row, tables, i, words);
}

KOLT_AVX2 __m256i weighted(__m256i bytes, __m256i weights) {
    const __m256i pairs = _mm256_maddubs_epi16(bytes, weights);
    const __m256i sums = _mm256_madd_epi16(pairs, _mm256_set1_epi16(1));
    return _mm256_srli_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(kColumnWeight / 2)), 6);
}

KOLT_AVX2 size_t averageGrey(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(0xFF000000U));
    const __m256i spread = _mm256_setr_epi8(0, 0, 0, -1, 4, 4, 4, -1, 8, 8, 8, -1, 12, 12, 12, -1, 0, 0, 0,
                                            -1, 4, 4, 4, -1, 8, 8, 8, -1, 12, 12, 12, -1);
    const uint32_t* offset = tables.offset.data();
    size_t i = 0;
    for (; i + 8 <= tables.count; i += 8) {
        const __m256i columns = _mm256_shuffle_epi8(load2(row + offset[i], row + offset[i + 4]),
                                                    load256(tables.shuffle.data() + i * 4));
        const __m256i mean = weighted(columns, load256(tables.weight.data() + i));
        store256(words + i, _mm256_or_si256(_mm256_shuffle_epi8(mean, spread), opaque));
    }
    return i;
}

KOLT_AVX2 size_t averageColour(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    static_assert(kColumnTaps == 4 && kColumnWeight == 64, "the shuffles and the shift below");
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(0xFF000000U));
    // The four columns of blue, of green, of red.
    const __m256i split = _mm256_setr_epi8(2, 5, 8, 11, 1, 4, 7, 10, 0, 3, 6, 9, -1, -1, -1, -1, 2, 5, 8, 11,
                                           1, 4, 7, 10, 0, 3, 6, 9, -1, -1, -1, -1);
    const uint32_t* offset = tables.offset.data();
    size_t i = 0;
    for (; i + 8 <= tables.count; i += 8) {
        const __m256i weights = load256(tables.weight.data() + i);
        const uint32_t* at = offset + i;
        // Pixel n beside pixel n + 4, so that packing within halves gives the pixels in order.
        const __m256i p0 = weighted(_mm256_shuffle_epi8(load2(row + at[0], row + at[4]), split),
                                    _mm256_shuffle_epi32(weights, 0x00));
        const __m256i p1 = weighted(_mm256_shuffle_epi8(load2(row + at[1], row + at[5]), split),
                                    _mm256_shuffle_epi32(weights, 0x55));
        const __m256i p2 = weighted(_mm256_shuffle_epi8(load2(row + at[2], row + at[6]), split),
                                    _mm256_shuffle_epi32(weights, 0xAA));
        const __m256i p3 = weighted(_mm256_shuffle_epi8(load2(row + at[3], row + at[7]), split),
                                    _mm256_shuffle_epi32(weights, 0xFF));
        const __m256i mean = _mm256_packus_epi16(_mm256_packus_epi32(p0, p1), _mm256_packus_epi32(p2, p3));
        store256(words + i, _mm256_or_si256(mean, opaque));
    }
    return i;
}

KOLT_AVX2 void averageColumns(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    const size_t done =
        tables.channels == 3 ? averageColour(row, tables, words) : averageGrey(row, tables, words);
    plain::averageFrom(row, tables, done, words);
}

KOLT_AVX2 void reverse(const uint32_t* words, size_t count, uint32_t* out) {
    const __m256i order = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
    size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        store256(out + i, _mm256_permutevar8x32_epi32(load256(words + count - 8 - i), order));
    }
    for (; i < count; ++i) {
        out[i] = words[count - 1 - i];
    }
}

/* Eight lines of eight words. */
KOLT_AVX2 void transpose8(const uint32_t* const lines[8], uint8_t* out, ptrdiff_t step) {
    __m256i r[8];
    for (int i = 0; i < 8; ++i) {
        r[i] = load256(lines[i]);
    }
    __m256i t[8];
    for (int i = 0; i < 8; i += 2) {
        t[i] = _mm256_unpacklo_epi32(r[i], r[i + 1]);
        t[i + 1] = _mm256_unpackhi_epi32(r[i], r[i + 1]);
    }
    for (int i = 0; i < 8; i += 4) {
        r[i] = _mm256_unpacklo_epi64(t[i], t[i + 2]);
        r[i + 1] = _mm256_unpackhi_epi64(t[i], t[i + 2]);
        r[i + 2] = _mm256_unpacklo_epi64(t[i + 1], t[i + 3]);
        r[i + 3] = _mm256_unpackhi_epi64(t[i + 1], t[i + 3]);
    }
    for (int i = 0; i < 4; ++i) {
        store256(out + i * step, _mm256_permute2x128_si256(r[i], r[i + 4], 0x20));
        store256(out + (i + 4) * step, _mm256_permute2x128_si256(r[i], r[i + 4], 0x31));
    }
}

KOLT_AVX2 void transpose(const uint32_t* lines, size_t lineLength, size_t count, bool mirrored, uint8_t* out,
                         ptrdiff_t step) {
    size_t column = 0;
    for (; column + 8 <= count; column += 8) {
        for (size_t half = 0; half < kTile; half += 8) {
            const uint32_t* group[8];
            for (size_t i = 0; i < 8; ++i) {
                const size_t line = mirrored ? kTile - 1 - half - i : half + i;
                group[i] = lines + line * lineLength + column;
            }
            transpose8(group, out + half * sizeof(uint32_t), step);
        }
        out += 8 * step;
    }
    plain::transpose(lines + column, lineLength, count - column, mirrored, out, step);
}

} // namespace

const RowKernels* avx2RowKernels() {
    static const RowKernels kernels = {
        "AVX2",      copyPastCaches, settle,         blend,   halveGrey,
        halveColour, copyColumns,    averageColumns, reverse, transpose,
    };
    static const bool present = __builtin_cpu_supports("avx2") != 0;
    return present ? &kernels : nullptr;
}

} // namespace kolt::render

#else

namespace kolt::render {

const RowKernels* avx2RowKernels() {
    return nullptr;
}

} // namespace kolt::render

#endif
