/*
 * The kernels of RowKernels.h in plain C++: what the others are compared with, their tails, and all there is
 * on processors without a set of their own.
 */
#ifndef KOLT_RENDER_PLAIN_ROWS_H
#define KOLT_RENDER_PLAIN_ROWS_H

#include "RowKernels.h"

#include <algorithm>
#include <cstring>

namespace kolt::render::plain {

inline uint32_t grey(uint32_t value) {
    return 0xFF000000U | value * 0x010101U;
}

inline uint32_t colour(uint32_t red, uint32_t green, uint32_t blue) {
    return 0xFF000000U | red << 16 | green << 8 | blue;
}

inline void copy(const uint8_t* from, uint8_t* to, size_t bytes) {
    std::memcpy(to, from, bytes);
}

inline void settle() {}

inline void blend(const uint8_t* const* rows, const uint8_t* weights, size_t taps, uint8_t* out,
                  size_t bytes) {
    constexpr size_t kChunk = 1024;
    uint16_t sums[kChunk];
    for (size_t begin = 0; begin < bytes; begin += kChunk) {
        const size_t count = std::min(kChunk, bytes - begin);
        std::fill_n(sums, count, static_cast<uint16_t>(kRowWeight / 2));
        for (size_t tap = 0; tap < taps; ++tap) {
            const uint8_t* row = rows[tap] + begin;
            const uint8_t weight = weights[tap];
            for (size_t i = 0; i < count; ++i) {
                sums[i] = static_cast<uint16_t>(sums[i] + row[i] * weight);
            }
        }
        for (size_t i = 0; i < count; ++i) {
            out[begin + i] = static_cast<uint8_t>(sums[i] / kRowWeight);
        }
    }
}

/* From pixel `first` (even) on. */
template<size_t Channels>
inline void halveFrom(uint8_t* row, size_t first, size_t count) {
    for (size_t pixel = first; pixel < count; pixel += 2) {
        const uint8_t* left = row + pixel * Channels;
        const uint8_t* right = pixel + 1 < count ? left + Channels : left;
        uint8_t* out = row + pixel / 2 * Channels;
        for (size_t channel = 0; channel < Channels; ++channel) {
            out[channel] = static_cast<uint8_t>((left[channel] + right[channel] + 1) >> 1);
        }
    }
}

template<size_t Channels>
inline void halve(uint8_t* row, size_t count) {
    halveFrom<Channels>(row, 0, count);
}

inline void copyFrom(const uint8_t* row, const ColumnTables& tables, size_t first, uint32_t* words) {
    if (tables.channels == 3) {
        for (size_t i = first; i < tables.count; ++i) {
            const uint8_t* pixel = row + tables.offset[i];
            words[i] = colour(pixel[0], pixel[1], pixel[2]);
        }
    } else {
        for (size_t i = first; i < tables.count; ++i) {
            words[i] = grey(row[tables.offset[i]]);
        }
    }
}

inline void copyColumns(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    copyFrom(row, tables, 0, words);
}

inline uint32_t average(const uint8_t* byte, size_t step, uint32_t weights) {
    uint32_t sum = kColumnWeight / 2;
    for (int tap = 0; tap < kColumnTaps; ++tap) {
        sum += byte[static_cast<size_t>(tap) * step] * (weights >> (8 * tap) & 0xFF);
    }
    return sum / kColumnWeight;
}

inline void averageFrom(const uint8_t* row, const ColumnTables& tables, size_t first, uint32_t* words) {
    if (tables.channels == 3) {
        for (size_t i = first; i < tables.count; ++i) {
            const uint8_t* pixel = row + tables.offset[i];
            const uint32_t weights = tables.weight[i];
            words[i] = colour(average(pixel, 3, weights), average(pixel + 1, 3, weights),
                              average(pixel + 2, 3, weights));
        }
    } else {
        for (size_t i = first; i < tables.count; ++i) {
            words[i] = grey(average(row + tables.offset[i], 1, tables.weight[i]));
        }
    }
}

inline void averageColumns(const uint8_t* row, const ColumnTables& tables, uint32_t* words) {
    averageFrom(row, tables, 0, words);
}

inline void reverse(const uint32_t* words, size_t count, uint32_t* out) {
    std::reverse_copy(words, words + count, out);
}

inline void transpose(const uint32_t* lines, size_t lineLength, size_t count, bool mirrored, uint8_t* out,
                      ptrdiff_t step) {
    for (size_t column = 0; column < count; ++column) {
        uint32_t tile[kTile];
        for (size_t line = 0; line < kTile; ++line) {
            tile[mirrored ? kTile - 1 - line : line] = lines[line * lineLength + column];
        }
        std::memcpy(out, tile, sizeof tile);
        out += step;
    }
}

} // namespace kolt::render::plain

#endif
