#ifndef TESTS_MEDIA_KIT_CONVERT_REFERENCE_H
#define TESTS_MEDIA_KIT_CONVERT_REFERENCE_H

#include <cstdint>
#include <vector>

/*
 * What each conversion gives, written pixel by pixel from the definitions, with nothing taken from the
 * library. Slow and simple: what differs from this is wrong.
 *
 *  - Depth: a pixel's sample is the eight most significant bits of its 8, 10 or 12.
 *  - Packed 10 and 12 bits: pixels 2k and 2k+1 of the whole picture lie in bytes 3k, 3k+1 and 3k+2; the first
 * byte holds the high bits of pixel 2k, the third those of pixel 2k+1.
 *  - Outside of the picture a mosaic goes on as its mirror image about the first and the last row and column
 * (which keeps the colours in their places).
 *  - Nearest neighbour: each 2 x 2 cell of the pattern gives its red and its blue to its four pixels; a red
 * or blue pixel takes the green beside it in the row.
 *  - Bilinear: the mean of the two or four nearest samples of the colour, halves rounded up.
 *  - Hamilton-Adams (US patent 5629734, 1997, in its edge-sensing form): green from the direction of the
 * smaller gradient, corrected by the second derivative of the own colour; red and blue from differences to
 * green.
 *  - Grey of a colour: (77 R + 150 G + 29 B + 128) / 256.
 *  - YUV: BT.601 in full range; grey is Y.
 */
namespace reference {

struct Picture {
    std::uint32_t type = 0; // _OV_PIXEL_TYPE_
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;
};

struct Rgb {
    int red = 0;
    int green = 0;
    int blue = 0;
};

/* One pixel of the result before it is laid out. method is looked at for mosaics only. */
class Converter {
public:
    Converter(const Picture& picture, std::uint32_t method);

    Rgb At(int x, int y) const;
    int GreyAt(int x, int y) const;

private:
    enum class Site { Red, GreenInRedRow, GreenInBlueRow, Blue };

    int Sample(int x, int y) const;
    int StoredSample(int x, int y) const;
    Site SiteAt(int x, int y) const;
    Rgb Nearest(int x, int y) const;
    Rgb Bilinear(int x, int y) const;
    Rgb Hamilton(int x, int y) const;
    int HamiltonGreen(int x, int y) const;
    Rgb Yuv(int x, int y) const;

    const Picture& picture_;
    std::uint32_t method_;
    const char* pattern_; // the four colours of the cell, row by row; null without a mosaic
    int bits_ = 8;
    bool packed_ = false;
    std::vector<int> samples_;
};

/* The whole result in destination type 0, 27 or 32. */
std::vector<std::uint8_t> Convert(const Picture& picture, std::uint32_t method,
                                  std::uint32_t destinationType);

/* The right number of bytes for a picture. */
std::size_t Bytes(std::uint32_t type, int width, int height);

bool IsMosaic(std::uint32_t type);

} // namespace reference

#endif
