#include "Resampler.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kolt::render {

namespace {

/* Coverages below this are errors of the arithmetic. */
constexpr double kSliver = 1e-4;
/* The widest window pixel, in columns, that kColumnTaps columns are enough for wherever it begins. */
constexpr double kWidest = kColumnTaps - 1;

struct Reach {
    int first;
    int count;
};

/* The picture pixels that sample k covers. */
Reach reach(double begin, double end, int length) {
    const int first = std::clamp(static_cast<int>(std::floor(begin + kSliver)), 0, length - 1);
    const int last = std::clamp(static_cast<int>(std::ceil(end - kSliver)) - 1, first, length - 1);
    return {first, last - first + 1};
}

/* The share of each pixel of a reach, as parts of total; they add up to total exactly. */
template<class Sink>
void shares(double begin, double end, Reach reach, int total, Sink&& sink) {
    const double low = std::clamp(begin, static_cast<double>(reach.first), reach.first + 1.0);
    const double high =
        std::clamp(end, static_cast<double>(reach.first + reach.count - 1), 0.0 + reach.first + reach.count);
    const double extent = std::max(high - low, kSliver);
    int given = 0;
    for (int i = 0; i < reach.count; ++i) {
        const double covered = std::clamp((reach.first + i + 1 - low) / extent, 0.0, 1.0);
        const int sum = i + 1 == reach.count ? total : static_cast<int>(std::lround(covered * total));
        sink(i, sum - given);
        given = sum;
    }
}

/* The server has read the line since it was written: it comes back while the one before it is made. */
void askFor(const uint8_t* line, size_t bytes) {
    for (size_t at = 0; at < bytes; at += 64) {
        __builtin_prefetch(line + at, 1);
    }
}

} // namespace

Resampler::Resampler(const RowKernels& kernels) : m_kernels(kernels) {}

void Resampler::prepareRows(const AxisPlan& rows) {
    m_lines.clear();
    m_rowWeights.clear();
    for (int k = 0; k < rows.count; ++k) {
        if (rows.step > 1) {
            const double begin = rows.origin + k * rows.step;
            addReducedLine(begin, begin + rows.step, rows.length);
        } else {
            m_lines.push_back({rows.nearest(k), 1, 0});
        }
    }
    int most = 1;
    for (const Line& line : m_lines) {
        most = std::max(most, line.taps);
    }
    m_rowPointers.resize(static_cast<size_t>(most) + 1);
}

void Resampler::addReducedLine(double begin, double end, int length) {
    const Reach covered = reach(begin, end, length);
    Line line{covered.first, covered.count, m_rowWeights.size()};
    shares(begin, end, covered, kRowWeight,
           [this](int, int weight) { m_rowWeights.push_back(static_cast<uint8_t>(weight)); });
    // Rows at the edges may round to nothing; what is left alone is copied and wants no weight.
    while (m_rowWeights.back() == 0) {
        m_rowWeights.pop_back();
        --line.taps;
    }
    while (m_rowWeights[line.weights] == 0) {
        ++line.weights;
        ++line.firstRow;
        --line.taps;
    }
    if (line.taps % 2 != 0) {
        m_rowWeights.push_back(0);
    }
    m_lines.push_back(line);
}

void Resampler::prepareColumns(const AxisPlan& columns, int channels) {
    m_columns.clear();
    m_columns.channels = channels;
    const double end = columns.origin + columns.count * columns.step;
    const Reach shown = reach(columns.origin, std::max(end, columns.origin + columns.step), columns.length);
    m_firstColumn = shown.first;
    m_columnCount = shown.count;
    m_halvings = 0;
    if (columns.step <= 1) {
        // The centre of the last sample may round up to the pixel behind the edge.
        const int last = columns.nearest(columns.count - 1);
        m_firstColumn = std::min(m_firstColumn, columns.nearest(0));
        m_columnCount = std::max(m_firstColumn + m_columnCount, last + 1) - m_firstColumn;
        for (int k = 0; k < columns.count; ++k) {
            m_columns.addCopy(static_cast<uint32_t>(columns.nearest(k) - m_firstColumn));
        }
        m_columns.finish();
        return;
    }
    double step = columns.step;
    double origin = columns.origin - m_firstColumn;
    int length = m_columnCount;
    while (step > kWidest) {
        step /= 2;
        origin /= 2;
        length = (length + 1) / 2;
        ++m_halvings;
    }
    for (int k = 0; k < columns.count; ++k) {
        const double begin = origin + k * step;
        const Reach covered = reach(begin, begin + step, length);
        uint8_t weights[kColumnTaps] = {};
        shares(begin, begin + step, covered, kColumnWeight,
               [&weights](int tap, int weight) { weights[tap] = static_cast<uint8_t>(weight); });
        m_columns.addAverage(static_cast<uint32_t>(covered.first), weights);
    }
    m_columns.finish();
}

void Resampler::prepare(int channels, const Plan& plan, const PixelFormat& format) {
    if (!(format == m_format) || (!m_packer && !format.native())) {
        m_packer.reset();
        if (!format.native()) {
            m_packer.emplace(format);
        }
        m_format = format;
    }
    if (channels == m_channels && plan == m_plan) {
        return;
    }
    m_channels = 0; // not prepared, should memory run out below
    prepareRows(plan.rows);
    prepareColumns(plan.columns, channels);
    const size_t rowBytes = static_cast<size_t>(m_columnCount) * static_cast<size_t>(channels);
    m_blended.resize(rowBytes + kFramePadding);
    m_words.resize(m_columns.count * (kTile + 1));
    m_plan = plan;
    m_channels = channels;
}

/* Enlarged, most lines repeat the one before. */
bool Resampler::sameAsBefore(size_t line) const {
    return line > 0 && m_lines[line].taps == 1 && m_lines[line - 1].taps == 1 &&
           m_lines[line].firstRow == m_lines[line - 1].firstRow;
}

const uint8_t* Resampler::blend(const uint8_t* row, const Line& line, size_t pitch, size_t bytes) {
    const size_t taps = static_cast<size_t>(line.taps);
    for (size_t tap = 0; tap < taps; ++tap) {
        m_rowPointers[tap] = row + tap * pitch;
    }
    m_rowPointers[taps] = m_rowPointers[taps - 1]; // of weight 0, where taps is odd
    m_kernels.blend(m_rowPointers.data(), m_rowWeights.data() + line.weights, taps + taps % 2,
                    m_blended.data(), bytes);
    return m_blended.data();
}

void Resampler::makeLine(const FrameView& frame, size_t index, uint32_t* words) {
    const Line& line = m_lines[index];
    const size_t channels = static_cast<size_t>(frame.channels);
    const size_t pitch = static_cast<size_t>(frame.size.width) * channels;
    const size_t bytes = static_cast<size_t>(m_columnCount) * channels;
    const uint8_t* row = m_supply != nullptr ? m_supply->rows(line.firstRow, line.firstRow + line.taps)
                                             : frame.pixels + static_cast<size_t>(line.firstRow) * pitch;
    row += static_cast<size_t>(m_firstColumn) * channels;
    if (line.taps > 1) {
        row = blend(row, line, pitch, bytes);
    }
    if (m_halvings > 0) {
        if (row != m_blended.data()) {
            std::memcpy(m_blended.data(), row, bytes);
            row = m_blended.data();
        }
        size_t columns = static_cast<size_t>(m_columnCount);
        for (int i = 0; i < m_halvings; ++i) {
            (frame.channels == 3 ? m_kernels.halveColour : m_kernels.halveGrey)(m_blended.data(), columns);
            columns = (columns + 1) / 2;
        }
    }
    (m_columns.weight.empty() ? m_kernels.copyColumns : m_kernels.averageColumns)(row, m_columns, words);
}

void Resampler::drawUpright(const FrameView& frame, uint8_t* out, size_t stride) {
    const size_t width = m_columns.count;
    const size_t height = m_lines.size();
    uint32_t* line = m_words.data();
    uint32_t* turned = line + width;
    const uint8_t* before = nullptr;
    for (size_t k = 0; k < height; ++k) {
        uint8_t* at = out + (m_plan.rows.mirrored ? height - 1 - k : k) * stride;
        if (k + 1 < height) {
            askFor(m_plan.rows.mirrored ? at - stride : at + stride, stride);
        }
        if (before != nullptr && sameAsBefore(k)) {
            std::memcpy(at, before, width * static_cast<size_t>(m_format.bitsPerPixel) / 8);
            continue;
        }
        before = at;
        // Rows of 32-bit pixels are aligned: the server pads lines to at least that.
        uint32_t* final = m_packer ? turned : reinterpret_cast<uint32_t*>(at);
        uint32_t* first = m_plan.columns.mirrored ? line : final;
        makeLine(frame, k, first);
        if (first != final) {
            m_kernels.reverse(first, width, final);
        }
        if (m_packer) {
            m_packer->pack(final, at, width);
        }
    }
}

void Resampler::drawTransposed(const FrameView& frame, uint8_t* out, size_t stride) {
    const size_t length = m_columns.count; // of a line, which runs down or up the window
    const size_t lines = m_lines.size();
    const size_t pixelBytes = static_cast<size_t>(m_format.bitsPerPixel) / 8;
    // Column 0 of the picture stands in the window's last row when mirrored.
    const ptrdiff_t step =
        m_plan.columns.mirrored ? -static_cast<ptrdiff_t>(stride) : static_cast<ptrdiff_t>(stride);
    uint8_t* start = out + (m_plan.columns.mirrored ? (length - 1) * stride : 0);
    const bool mirrored = m_plan.rows.mirrored;
    for (size_t first = 0; first < lines; first += kTile) {
        const size_t count = std::min(kTile, lines - first);
        for (size_t k = 0; k < count; ++k) {
            uint32_t* words = m_words.data() + k * length;
            if (k > 0 && sameAsBefore(first + k)) {
                std::memcpy(words, words - length, length * sizeof(uint32_t));
            } else {
                makeLine(frame, first + k, words);
            }
        }
        const size_t x = mirrored ? lines - first - count : first;
        uint8_t* at = start + x * pixelBytes;
        if (count == kTile && !m_packer) {
            m_kernels.transpose(m_words.data(), length, length, mirrored, at, step);
            continue;
        }
        for (size_t column = 0; column < length; ++column, at += step) {
            uint32_t tile[kTile];
            for (size_t k = 0; k < count; ++k) {
                tile[mirrored ? count - 1 - k : k] = m_words[k * length + column];
            }
            if (m_packer) {
                m_packer->pack(tile, at, count);
            } else {
                std::memcpy(at, tile, count * sizeof(uint32_t));
            }
        }
    }
}

void Resampler::draw(const FrameView& frame, const Plan& plan, const PixelFormat& format, uint8_t* out,
                     size_t stride, RowSupply* supply) {
    if (plan.painted().empty()) {
        return;
    }
    prepare(frame.channels, plan, format);
    m_supply = supply;
    if (plan.transposed) {
        drawTransposed(frame, out, stride);
    } else {
        drawUpright(frame, out, stride);
    }
    m_supply = nullptr;
}

} // namespace kolt::render
