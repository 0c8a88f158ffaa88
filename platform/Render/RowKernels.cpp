#include "RowKernels.h"

#include "PlainRows.h"

namespace kolt::render {

void ColumnTables::clear() {
    count = 0;
    offset.clear();
    weight.clear();
    shuffle.clear();
    permute.clear();
}

void ColumnTables::addCopy(uint32_t column) {
    offset.push_back(column * static_cast<uint32_t>(channels));
    ++count;
}

void ColumnTables::addAverage(uint32_t column, const uint8_t weights[kColumnTaps]) {
    offset.push_back(column * static_cast<uint32_t>(channels));
    uint32_t word = 0;
    for (int tap = 0; tap < kColumnTaps; ++tap) {
        word |= static_cast<uint32_t>(weights[tap]) << (8 * tap);
    }
    weight.push_back(word);
    ++count;
}

void ColumnTables::group(size_t size, AlignedVector<uint8_t>& numbers) const {
    const bool averages = !weight.empty();
    const uint32_t step = static_cast<uint32_t>(channels);
    for (size_t first = 0; first + size <= count; first += size) {
        for (size_t pixel = first; pixel < first + size; ++pixel) {
            const uint32_t at = offset[pixel] - offset[first];
            const uint32_t parts = averages && channels == 3 ? 4 : 1;
            for (uint32_t part = 0; part < parts; ++part) {
                // The order in memory is blue, green, red, and a byte that is overwritten.
                const uint32_t channel = part < 3 ? 2 - part : 0;
                for (uint32_t byte = 0; byte < 4; ++byte) {
                    uint32_t number = at;
                    if (averages) {
                        number += byte * step + (channels == 3 ? channel : 0);
                    } else if (channels == 3) {
                        number += byte < 3 ? 2 - byte : 0;
                    }
                    numbers.push_back(static_cast<uint8_t>(number));
                }
            }
        }
    }
}

void ColumnTables::finish() {
    const bool averagesColour = !weight.empty() && channels == 3;
    if (!averagesColour) {
        group(4, shuffle);
    }
    group(averagesColour ? 4 : 16, permute);
}

const RowKernels& plainRowKernels() {
    static const RowKernels kernels = {
        "plain",         plain::copy,        plain::settle,         plain::blend,   plain::halve<1>,
        plain::halve<3>, plain::copyColumns, plain::averageColumns, plain::reverse, plain::transpose,
    };
    return kernels;
}

const RowKernels& rowKernels() {
    static const RowKernels& best = [&]() -> const RowKernels& {
        if (avx512RowKernels() != nullptr) {
            return *avx512RowKernels();
        }
        return avx2RowKernels() != nullptr ? *avx2RowKernels() : plainRowKernels();
    }();
    return best;
}

} // namespace kolt::render
