/*
 * The inner loops of drawing: from rows of grey or red-green-blue bytes to words 0xFFRRGGBB. Each set of
 * kernels gives the same bits as the plain one.
 *
 * Reading runs past the last pixel of a row by up to kFramePadding bytes; nothing is written past the end.
 */
#ifndef KOLT_RENDER_ROW_KERNELS_H
#define KOLT_RENDER_ROW_KERNELS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kolt::render {

constexpr size_t kFramePadding = 64;

/* Weights of one window pixel's rows add up to this. */
constexpr int kRowWeight = 256;
/* And of its columns. With 64 no product of a byte with a weight, nor a sum of two, leaves 16 signed bits. */
constexpr int kColumnWeight = 64;
/* A window pixel covers at most this many columns, hence at most three column widths. */
constexpr int kColumnTaps = 4;

/*
 * What each window pixel of a row is made of. The pixels that are read for four neighbours, together, lie
 * within 16 bytes of the first one's offset.
 */
struct ColumnTables {
    size_t count = 0;
    int channels = 1;
    std::vector<uint32_t> offset; /* bytes from the row's start to the first column */
    std::vector<uint32_t> weight; /* four bytes, first column lowest; empty when one column is copied */
    /* For each four pixels 16 byte numbers relative to the first one's offset (0x80: zero): copied pixels as
       blue, green, red, 0; averaged grey pixels as their four columns. Empty for averaged colour. */
    std::vector<uint8_t> shuffle;

    void clear();
    /* Appends a pixel that copies one column. */
    void addCopy(uint32_t column);
    /* Appends a pixel that averages columns from `column` on. */
    void addAverage(uint32_t column, const uint8_t weights[kColumnTaps]);
    /* Makes `shuffle`, after the last pixel. */
    void finish();
};

struct RowKernels {
    const char* name;
    /* out[i] = weighted mean of rows[0..taps)[i]; weights add up to kRowWeight. */
    void (*blend)(const uint8_t* const* rows, const uint16_t* weights, size_t taps, uint8_t* out,
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
/* Null where the processor lacks the instructions. */
const RowKernels* avx2RowKernels();
/* The fastest for this processor. */
const RowKernels& rowKernels();

} // namespace kolt::render

#endif
