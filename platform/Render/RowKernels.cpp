#include "RowKernels.h"

#include "PlainRows.h"

namespace kolt::render {

void ColumnTables::clear() {
    count = 0;
    offset.clear();
    weight.clear();
    shuffle.clear();
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

void ColumnTables::finish() {
    const bool averages = !weight.empty();
    if (averages && channels == 3) {
        return;
    }
    for (size_t first = 0; first + 4 <= count; first += 4) {
        for (size_t pixel = first; pixel < first + 4; ++pixel) {
            const uint32_t at = offset[pixel] - offset[first];
            for (uint32_t byte = 0; byte < 4; ++byte) {
                uint32_t number = at;
                if (averages) {
                    number = at + byte;
                } else if (byte == 3) {
                    number = 0x80;
                } else if (channels == 3) {
                    number = at + 2 - byte;
                }
                shuffle.push_back(static_cast<uint8_t>(number));
            }
        }
    }
}

const RowKernels& plainRowKernels() {
    static const RowKernels kernels = {
        "plain",         plain::blend,       plain::halve<1>,
        plain::halve<3>, plain::copyColumns, plain::averageColumns,
        plain::reverse,  plain::transpose,
    };
    return kernels;
}

const RowKernels& rowKernels() {
    static const RowKernels& best = avx2RowKernels() != nullptr ? *avx2RowKernels() : plainRowKernels();
    return best;
}

} // namespace kolt::render
