/*
 * The inner loops of drawing: from rows of grey or red-green-blue bytes to words 0xFFRRGGBB. Each set of
 * kernels gives the same bits as the plain one.
 *
 * Rows may be read up to kFramePadding bytes past what is asked for.
 */
#ifndef KOLT_RENDER_ROW_KERNELS_H
#define KOLT_RENDER_ROW_KERNELS_H

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace kolt::render {

constexpr size_t kFramePadding = 64;

/*
 * The weights of the rows, and of the columns, that make up one window pixel add up to these. They are small
 * enough that products with bytes, and sums of them, fit 16 signed bits. A single row's weight is at most
 * kRowWeight - 1: a pixel of one row is copied instead.
 */
constexpr int kRowWeight = 128;
constexpr int kColumnWeight = 64;
/* A window pixel covers at most this many columns, hence at most three column widths. */
constexpr int kColumnTaps = 4;

/* Begins at a cache line, so that no load of a table crosses into another. */
template<class T>
struct CacheAligned {
    using value_type = T;
    CacheAligned() = default;
    template<class U>
    CacheAligned(const CacheAligned<U>& /*other*/) {}
    T* allocate(size_t count) {
        return static_cast<T*>(::operator new(count * sizeof(T), std::align_val_t(64)));
    }
    void deallocate(T* block, size_t /*count*/) { ::operator delete(block, std::align_val_t(64)); }
    bool operator==(const CacheAligned& /*other*/) const { return true; }
    bool operator!=(const CacheAligned& /*other*/) const { return false; }
};

template<class T>
using AlignedVector = std::vector<T, CacheAligned<T>>;

/* What each window pixel of a line is made of: one column copied, or up to kColumnTaps columns averaged. */
struct ColumnTables {
    size_t count = 0;
    int channels = 1;
    AlignedVector<uint32_t> offset; /* bytes from the row's start to the first column; ascending */
    AlignedVector<uint32_t> weight; /* four bytes, first column lowest; empty when columns are copied */
    /* The bytes of each four pixels in a row, relative to the offset of the first of a group, which lie
       within 16 (groups of four) and 64 bytes (groups of 16; of four where colour is averaged). For copied
       columns blue, green, red, any; for averaged grey the four columns; for averaged colour, only in
       `permute`, four columns of blue, green, red and any. */
    AlignedVector<uint8_t> shuffle;
    AlignedVector<uint8_t> permute;

    void clear();
    /* Appends a pixel that copies one column. */
    void addCopy(uint32_t column);
    /* Appends a pixel that averages columns from `column` on. */
    void addAverage(uint32_t column, const uint8_t weights[kColumnTaps]);
    /* Makes shuffle and permute, after the last pixel. */
    void finish();

private:
    void group(size_t size, AlignedVector<uint8_t>& numbers) const;
};

struct RowKernels {
    const char* name;
    /* Copies to a place that is aligned to 64, a multiple of 64 bytes, which don't enter the caches where the
       processor knows how. settle() comes after the last, before another thread may look. */
    void (*copyPastCaches)(const uint8_t* from, uint8_t* to, size_t bytes);
    void (*settle)();
    /* out[i] = weighted mean of rows[0..taps)[i]; taps is even. Up to kFramePadding bytes past out[bytes] may
       be written. */
    void (*blend)(const uint8_t* const* rows, const uint8_t* weights, size_t taps, uint8_t* out,
                  size_t bytes);
    /* Halves a row of count pixels in place by averaging neighbours; an odd last one stays. */
    void (*halveGrey)(uint8_t* row, size_t count);
    void (*halveColour)(uint8_t* row, size_t count);
    void (*copyColumns)(const uint8_t* row, const ColumnTables& tables, uint32_t* words);
    void (*averageColumns)(const uint8_t* row, const ColumnTables& tables, uint32_t* words);
    /* Writes count words, last first. */
    void (*reverse)(const uint32_t* words, size_t count, uint32_t* out);
    /* Turns kTile lines of `count` words into `count` rows of kTile words; `step` (bytes) is from one row to
       the next, and may be negative. mirrored: the last line comes first in each row. */
    void (*transpose)(const uint32_t* lines, size_t lineLength, size_t count, bool mirrored, uint8_t* out,
                      ptrdiff_t step);
};

constexpr size_t kTile = 16;

const RowKernels& plainRowKernels();
/* Null where the processor lacks the instructions. AVX-512 wants VBMI and VNNI beside the basic set. */
const RowKernels* avx2RowKernels();
const RowKernels* avx512RowKernels();
/* The fastest for this processor. */
const RowKernels& rowKernels();

} // namespace kolt::render

#endif
