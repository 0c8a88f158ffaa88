/*
 * Draws a picture into the pixels of a window in software.
 *
 * Showing picture pixels at their size or larger copies them as they are: an operator who zooms in wants to
 * see the sensor's pixels. Showing them smaller averages all pixels that fall into a window pixel, each
 * weighted with the part of it that does, so that fine structure neither flickers nor vanishes.
 */
#ifndef KOLT_RENDER_RESAMPLER_H
#define KOLT_RENDER_RESAMPLER_H

#include "Geometry.h"
#include "PixelFormat.h"
#include "RowKernels.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kolt::render {

/* A picture in memory, rows without padding. At least kFramePadding readable bytes follow the last row. */
struct FrameView {
    const uint8_t* pixels = nullptr;
    Size size;
    int channels = 1; /* 1 grey, 3 red, green, blue */
};

/* Where the rows of a picture come from while it is being drawn. */
class RowSupply {
public:
    virtual ~RowSupply() = default;
    /* The rows [first, end), at least one, without padding between them; as many bytes may be read past them
       as past a frame. Until the next call. */
    virtual const uint8_t* rows(int first, int end) = 0;
};

/* Used by one thread at a time. Keeps its tables while plan and formats stay the same. */
class Resampler {
public:
    explicit Resampler(const RowKernels& kernels = rowKernels());

    /* Writes the box plan.painted(), whose first pixel is at out, rows stride bytes apart. With a supply the
       frame's rows need not be there yet. */
    void draw(const FrameView& frame, const Plan& plan, const PixelFormat& format, uint8_t* out,
              size_t stride, RowSupply* supply = nullptr);

private:
    struct Line {
        int firstRow;
        int taps;       /* rows */
        size_t weights; /* index into m_rowWeights, whose number is made even with a 0 */
    };

    void prepare(int channels, const Plan& plan, const PixelFormat& format);
    void prepareRows(const AxisPlan& rows);
    void addReducedLine(double begin, double end, int length);
    const uint8_t* blend(const uint8_t* row, const Line& line, size_t pitch, size_t bytes);
    void prepareColumns(const AxisPlan& columns, int channels);
    bool sameAsBefore(size_t line) const;
    void makeLine(const FrameView& frame, size_t index, uint32_t* words);
    void drawUpright(const FrameView& frame, uint8_t* out, size_t stride);
    void drawTransposed(const FrameView& frame, uint8_t* out, size_t stride);

    const RowKernels& m_kernels;
    Plan m_plan;
    PixelFormat m_format;
    int m_channels = 0;
    RowSupply* m_supply = nullptr;  /* while drawing */
    std::optional<Packer> m_packer; /* where words must be converted */
    std::vector<Line> m_lines;
    std::vector<uint8_t> m_rowWeights;
    std::vector<const uint8_t*> m_rowPointers;
    int m_firstColumn = 0; /* of the picture columns that are read */
    int m_columnCount = 0;
    int m_halvings = 0; /* of a row, before the tables below apply */
    ColumnTables m_columns;
    AlignedVector<uint8_t> m_blended; /* one row, with padding */
    AlignedVector<uint32_t> m_words;  /* kTile + 1 lines */
};

} // namespace kolt::render

#endif
