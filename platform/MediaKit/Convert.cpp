#include "MediaKit/Convert.h"

#include "Camera/Boundary/OvMediaKit.h"

#include <algorithm>
#include <cstring>

namespace media {

namespace {

constexpr std::uint32_t kLargestSide = 65535;

/* Mirrors a row or column number about the first and the last one, which keeps its colour: -1 is 1, n is n
 * - 2. */
std::uint32_t Mirror(std::ptrdiff_t index, std::uint32_t count) {
    const std::ptrdiff_t last = static_cast<std::ptrdiff_t>(count) - 1;
    while (index < 0 || index > last) {
        index = index < 0 ? -index : 2 * last - index;
    }
    return static_cast<std::uint32_t>(index);
}

void FillMargins(std::uint8_t* line, std::uint32_t width) {
    for (std::ptrdiff_t i = 1; i <= 2; ++i) {
        const std::ptrdiff_t after = static_cast<std::ptrdiff_t>(width) - 1 + i;
        line[-i] = line[Mirror(-i, width)];
        line[after] = line[Mirror(after, width)];
    }
}

/* The work on one run of rows, by one thread. */
class RowRun {
public:
    RowRun(const Kernels& kernels, const Picture& picture, const RowTarget& target, LineBuffers& lines)
        : kernels_(kernels)
        , picture_(picture)
        , traits_(*FindPixelTraits(picture.type))
        , target_(target)
        , layout_(static_cast<std::size_t>(target.layout))
        , lines_(lines) {}

    void Convert(std::uint32_t first, std::uint32_t end) {
        first_ = first;
        if (traits_.firstRow != BayerRow::None) {
            ConvertBayer(first, end);
            return;
        }
        // Rows without a gap between them are one long row: no tails to mend.
        const std::size_t rowBytes = picture_.width * BytesOf(target_.layout);
        if (target_.stride == static_cast<std::ptrdiff_t>(rowBytes)) {
            ConvertPixels(first, static_cast<std::size_t>(end - first) * picture_.width);
            return;
        }
        for (std::uint32_t row = first; row < end; ++row) {
            ConvertPixels(row, picture_.width);
        }
    }

private:
    std::uint8_t* Destination(std::uint32_t row) const {
        return target_.rows + static_cast<std::ptrdiff_t>(row - first_) * target_.stride;
    }

    std::size_t FirstPixel(std::uint32_t row) const { return static_cast<std::size_t>(row) * picture_.width; }

    /* Pixels from the start of a row on, in a picture without a Bayer pattern. */
    void ConvertPixels(std::uint32_t row, std::size_t pixels) {
        std::size_t pixel = FirstPixel(row);
        std::uint8_t* destination = Destination(row);
        const std::uint8_t* source = picture_.pixels + PixelBytes(traits_.packing, pixel);
        switch (traits_.packing) {
        case Packing::Bytes:
            kernels_.grey[layout_](source, destination, pixels);
            return;
        case Packing::Uyvy:
            kernels_.uyvy[layout_](source, destination, pixels);
            return;
        case Packing::Yuyv:
            kernels_.yuyv[layout_](source, destination, pixels);
            return;
        case Packing::Rgb:
            kernels_.rgb[layout_](source, destination, pixels);
            return;
        case Packing::Bgrx:
            kernels_.bgrx[layout_](source, destination, pixels);
            return;
        case Packing::Words10:
        case Packing::Words12:
        case Packing::Triples:
            break;
        }
        if (target_.layout == Layout::Grey) {
            Unpack(pixel, destination, pixels);
            return;
        }
        // By way of a line of bytes that stays in the cache.
        while (pixels > 0) {
            const std::size_t count = std::min<std::size_t>(pixels, picture_.width);
            Unpack(pixel, lines_.Raw(0), count);
            kernels_.grey[layout_](lines_.Raw(0), destination, count);
            pixel += count;
            pixels -= count;
            destination += count * BytesOf(target_.layout);
        }
    }

    /* The most significant eight bits of each pixel, from that pixel of the picture on. */
    void Unpack(std::size_t pixel, std::uint8_t* destination, std::size_t pixels) const {
        switch (traits_.packing) {
        case Packing::Words10:
            kernels_.words10(picture_.pixels + 2 * pixel, destination, pixels);
            return;
        case Packing::Words12:
            kernels_.words12(picture_.pixels + 2 * pixel, destination, pixels);
            return;
        case Packing::Triples:
            if (pixel % 2 != 0 && pixels > 0) {
                // A row of odd width may begin with the second pixel of a triple.
                *destination++ = picture_.pixels[pixel / 2 * 3 + 2];
                ++pixel;
                --pixels;
            }
            kernels_.triples(picture_.pixels + pixel / 2 * 3, destination, pixels);
            return;
        default:
            std::memcpy(destination, picture_.pixels + pixel, pixels);
        }
    }

    void ConvertBayer(std::uint32_t first, std::uint32_t end) {
        switch (picture_.bayerMethod) {
        case OV_BAYER_NEAREST:
            ConvertNearest(first, end);
            return;
        case OV_BAYER_BILINEAR:
            ConvertBilinear(first, end);
            return;
        default:
            ConvertHamilton(first, end);
        }
    }

    BayerRow KindOf(std::ptrdiff_t row) const {
        return row % 2 == 0 ? traits_.firstRow : OtherRow(traits_.firstRow);
    }

    /* Asks for a row that will be wanted after the next one has been made. */
    void Prefetch(std::ptrdiff_t row) const {
        if (row < 0 || row >= static_cast<std::ptrdiff_t>(picture_.height)) {
            return;
        }
        const std::size_t pixel = FirstPixel(static_cast<std::uint32_t>(row));
        const std::uint8_t* const end = picture_.pixels + PixelBytes(traits_.packing, pixel + picture_.width);
        for (const std::uint8_t* at = picture_.pixels + PixelBytes(traits_.packing, pixel); at < end;
             at += 64) {
            __builtin_prefetch(at);
        }
    }

    /* Makes sure that the mosaic's rows up to and with `row` are in the ring. */
    void LoadTo(std::ptrdiff_t row) {
        for (; loaded_ <= row; ++loaded_) {
            std::uint8_t* line = lines_.Raw(loaded_);
            Prefetch(loaded_ + 1);
            Unpack(FirstPixel(Mirror(loaded_, picture_.height)), line, picture_.width);
            FillMargins(line, picture_.width);
        }
    }

    /* Where that row of the result goes when rows come in pairs: one outside of the run isn't wanted. */
    std::uint8_t* DestinationOrSpare(std::uint32_t row, std::uint32_t end) {
        return row >= first_ && row < end ? Destination(row) : lines_.Spare();
    }

    void ConvertNearest(std::uint32_t first, std::uint32_t end) {
        const std::uint32_t start = first & ~1U;
        loaded_ = start;
        const auto kind = static_cast<std::size_t>(traits_.firstRow);
        for (std::uint32_t row = start; row < end; row += 2) {
            LoadTo(row + 1);
            const std::uint8_t* const rows[2] = {lines_.Raw(row), lines_.Raw(row + 1)};
            kernels_.nearest[layout_][kind](rows, DestinationOrSpare(row, end),
                                            DestinationOrSpare(row + 1, end), picture_.width);
        }
    }

    void ConvertBilinear(std::uint32_t first, std::uint32_t end) {
        loaded_ = static_cast<std::ptrdiff_t>(first) - 1;
        const auto kind = static_cast<std::size_t>(KindOf(first));
        for (std::uint32_t row = first; row < end; row += 2) {
            const std::ptrdiff_t above = static_cast<std::ptrdiff_t>(row) - 1;
            LoadTo(above + 3);
            const std::uint8_t* const rows[4] = {lines_.Raw(above), lines_.Raw(above + 1),
                                                 lines_.Raw(above + 2), lines_.Raw(above + 3)};
            kernels_.bilinear[layout_][kind](rows, Destination(row), DestinationOrSpare(row + 1, end),
                                             picture_.width);
        }
    }

    /* Interpolates green in that row, which may be the one just above or below the picture. */
    void MakeGreen(std::ptrdiff_t row) {
        LoadTo(row + 2);
        const std::uint8_t* const rows[5] = {lines_.Raw(row - 2), lines_.Raw(row - 1), lines_.Raw(row),
                                             lines_.Raw(row + 1), lines_.Raw(row + 2)};
        const GreenLine line = lines_.Green(row);
        const std::size_t greenFirst = static_cast<std::size_t>(KindOf(row)) & 1U;
        kernels_.green[greenFirst](rows, line, picture_.width);
        const std::ptrdiff_t sites =
            (static_cast<std::ptrdiff_t>(picture_.width) + (greenFirst == 0 ? 1 : 0)) / 2;
        line.green[-1] = line.green[0];
        line.green[sites] = line.green[sites - 1];
        line.difference[-1] = line.difference[0];
        line.difference[sites] = line.difference[sites - 1];
    }

    void ConvertHamilton(std::uint32_t first, std::uint32_t end) {
        loaded_ = static_cast<std::ptrdiff_t>(first) - 3;
        MakeGreen(static_cast<std::ptrdiff_t>(first) - 1);
        MakeGreen(first);
        for (std::ptrdiff_t row = first; row < static_cast<std::ptrdiff_t>(end); ++row) {
            MakeGreen(row + 1);
            const GreenLine lines[3] = {lines_.Green(row - 1), lines_.Green(row), lines_.Green(row + 1)};
            const auto kind = static_cast<std::size_t>(KindOf(row));
            kernels_.colour[layout_][kind](lines_.Raw(row), lines,
                                           Destination(static_cast<std::uint32_t>(row)), picture_.width);
        }
    }

    const Kernels& kernels_;
    const Picture& picture_;
    const PixelTraits& traits_;
    const RowTarget& target_;
    const std::size_t layout_;
    LineBuffers& lines_;
    std::uint32_t first_ = 0;
    std::ptrdiff_t loaded_ = 0; // the first row of the mosaic that isn't in the ring yet
};

} // namespace

std::uint32_t CheckPicture(const Picture& picture) {
    const PixelTraits* traits = FindPixelTraits(picture.type);
    if (traits == nullptr) {
        return OV_STATUS_NOT_SUPPORTED;
    }
    if (picture.pixels == nullptr || picture.width == 0 || picture.height == 0 ||
        picture.width > kLargestSide || picture.height > kLargestSide) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    if ((traits->packing == Packing::Uyvy || traits->packing == Packing::Yuyv) && picture.width % 2 != 0) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    if (traits->firstRow != BayerRow::None &&
        (picture.width < 2 || picture.height < 2 || picture.bayerMethod > OV_BAYER_HAMILTON)) {
        return OV_STATUS_INVALID_PARAMETER;
    }
    const std::size_t pixels = static_cast<std::size_t>(picture.width) * picture.height;
    return picture.length < PixelBytes(traits->packing, pixels) ? OV_STATUS_INVALID_PARAMETER : OV_STATUS_OK;
}

bool IsGrey(const Picture& picture) {
    const PixelTraits* traits = FindPixelTraits(picture.type);
    return traits != nullptr && traits->firstRow == BayerRow::None &&
           (traits->packing == Packing::Bytes || traits->packing == Packing::Words10 ||
            traits->packing == Packing::Words12 || traits->packing == Packing::Triples);
}

void ConvertRows(const Kernels& kernels, const Picture& picture, std::uint32_t first, std::uint32_t end,
                 const RowTarget& target, LineBuffers& lines) {
    RowRun(kernels, picture, target, lines).Convert(first, end);
}

void ConvertPicture(const Kernels& kernels, const Picture& picture, const RowTarget& target,
                    Workspace& workspace) {
    const std::size_t pixels = static_cast<std::size_t>(picture.width) * picture.height;
    if (pixels < kPixelsThatPayThreads || workspace.pool.Workers() == 1) {
        workspace.lines[0].Prepare(picture.width);
        ConvertRows(kernels, picture, 0, picture.height, target, workspace.lines[0]);
        return;
    }
    for (LineBuffers& lines : workspace.lines) {
        lines.Prepare(picture.width);
    }
    // A few bands for each worker, so that one that is held up doesn't hold up all. An even number of rows
    // keeps cells whole.
    const std::uint32_t bands = workspace.pool.Workers() * 4;
    const std::uint32_t rows = std::max((picture.height / bands + 1) & ~1U, 2U);
    workspace.pool.Run((picture.height + rows - 1) / rows, [&](std::size_t band, unsigned worker) {
        const auto first = static_cast<std::uint32_t>(band) * rows;
        const RowTarget part{target.rows + static_cast<std::ptrdiff_t>(first) * target.stride, target.stride,
                             target.layout};
        ConvertRows(kernels, picture, first, std::min(first + rows, picture.height), part,
                    workspace.lines[worker]);
    });
}

} // namespace media
