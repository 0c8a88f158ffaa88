#include "Expectation.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace kolt::tests {

Rgb Source::at(int x, int y) const {
    const size_t first = (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) *
                         static_cast<size_t>(channels);
    if (channels == 1) {
        return {bytes[first], bytes[first], bytes[first]};
    }
    return {bytes[first], bytes[first + 1], bytes[first + 2]};
}

namespace {

Source blank(int width, int height, int channels) {
    Source source{width, height, channels, {}};
    source.bytes.resize(static_cast<size_t>(width) * static_cast<size_t>(height) *
                        static_cast<size_t>(channels));
    return source;
}

void set(Source& source, int x, int y, double red, double green, double blue) {
    const size_t first =
        (static_cast<size_t>(y) * static_cast<size_t>(source.width) + static_cast<size_t>(x)) *
        static_cast<size_t>(source.channels);
    const auto byte = [](double value) {
        return static_cast<uint8_t>(std::clamp(value, 0.0, 1.0) * 255 + 0.5);
    };
    if (source.channels == 1) {
        source.bytes[first] = byte((red + green + blue) / 3);
    } else {
        source.bytes[first] = byte(red);
        source.bytes[first + 1] = byte(green);
        source.bytes[first + 2] = byte(blue);
    }
}

/* A centre this close below the next picture pixel belongs to that: fractions of 32 bits are not more exact.
 */
constexpr double kTie = 1.0 / 256;

/* One axis of a pixel's way back: from window pixel p to the part of the picture below it. */
struct Strip {
    bool inside = false;
    double low = 0;
    double high = 0;
};

Strip strip(int p, int windowLength, double d0, double d1, int pictureLength, double s0, double s1,
            bool mirror) {
    // Destination edges fall on whole window pixels.
    const double begin = std::round(d0 * windowLength - kTie);
    const double end = std::round(d1 * windowLength - kTie);
    if (p < begin || p >= end) {
        return {};
    }
    double f0 = (p - begin) / (end - begin);
    double f1 = (p + 1 - begin) / (end - begin);
    if (mirror) {
        std::swap(f0, f1);
        f0 = 1 - f0;
        f1 = 1 - f1;
    }
    const double low = (s0 + f0 * (s1 - s0)) * pictureLength;
    const double high = (s0 + f1 * (s1 - s0)) * pictureLength;
    const double centre = (low + high) / 2 + kTie;
    return {centre >= 0 && centre < pictureLength, low, high};
}

Rgb mean(const Source& source, const Strip& u, const Strip& v) {
    // An axis that is not reduced takes the pixel under the centre.
    const auto range = [](const Strip& s, int length) {
        if (s.high - s.low <= 1.00001) {
            const int at =
                std::clamp(static_cast<int>(std::floor((s.low + s.high) / 2 + kTie)), 0, length - 1);
            return Strip{true, static_cast<double>(at), at + 1.0};
        }
        return Strip{true, std::max(s.low, 0.0), std::min(s.high, static_cast<double>(length))};
    };
    const Strip x = range(u, source.width);
    const Strip y = range(v, source.height);
    double sum[3] = {};
    double weights = 0;
    for (int row = static_cast<int>(y.low); row < y.high; ++row) {
        for (int column = static_cast<int>(x.low); column < x.high; ++column) {
            const double weight = (std::min(row + 1.0, y.high) - std::max<double>(row, y.low)) *
                                  (std::min(column + 1.0, x.high) - std::max<double>(column, x.low));
            const Rgb p = source.at(column, row);
            sum[0] += p.red * weight;
            sum[1] += p.green * weight;
            sum[2] += p.blue * weight;
            weights += weight;
        }
    }
    const auto rounded = [weights](double s) { return static_cast<int>(s / weights + 0.5); };
    return {rounded(sum[0]), rounded(sum[1]), rounded(sum[2])};
}

} // namespace

Source noise(int width, int height, int channels, uint32_t seed) {
    Source source = blank(width, height, channels);
    std::mt19937 random(seed);
    for (uint8_t& byte : source.bytes) {
        byte = static_cast<uint8_t>(random());
    }
    return source;
}

Source ramps(int width, int height, int channels) {
    Source source = blank(width, height, channels);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double u = (x + 0.5) / width;
            const double v = (y + 0.5) / height;
            set(source, x, y, u, v, x * 8 < width && y * 8 < height ? 1 : 0.25);
        }
    }
    return source;
}

Source scene(int width, int height, int channels) {
    Source source = blank(width, height, channels);
    const double pi = std::acos(-1.0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double u = (x + 0.5) / width;
            const double v = (y + 0.5) / height;
            double red = 0.25 + 0.5 * u;
            double green = 0.3 + 0.4 * v;
            double blue = 0.7 - 0.4 * u * v;
            const double dx = x - width * 0.3;
            const double dy = y - height * 0.45;
            const double radius = std::hypot(dx, dy);
            if (radius < height * 0.35) {
                const double star = std::sin(std::atan2(dy, dx) * 72) > 0 ? 0.95 : 0.05;
                red = green = blue = star;
            } else if (u > 0.62 && v < 0.3) {
                const int period = 2 + static_cast<int>((u - 0.62) / 0.38 * 6);
                red = green = blue = x % period == 0 || y % (period + 1) == 0 ? 0.0 : 1.0;
            } else if (u > 0.62 && v < 0.6) {
                const double wave = 0.5 + 0.5 * std::sin((dx * dx + dy * dy) * pi / (width * 1.5));
                red = wave;
                green = 1 - wave;
                blue = 0.5;
            } else if (v > 0.85) {
                red = u < 0.33 ? 1 : 0;
                green = u >= 0.33 && u < 0.66 ? 1 : 0;
                blue = u >= 0.66 ? 1 : 0;
            }
            set(source, x, y, red, green, blue);
        }
    }
    return source;
}

Picture expected(const Source& source, int windowWidth, int windowHeight, const Shown& shown) {
    Picture picture(windowWidth, windowHeight);
    const tagVRRectF& s = shown.source;
    const tagVRRectF& d = shown.destination;
    const int q = shown.quarterTurns;
    for (int y = 0; y < windowHeight; ++y) {
        for (int x = 0; x < windowWidth; ++x) {
            Strip u;
            Strip v;
            if (q % 2 == 0) {
                u = strip(x, windowWidth, d.left, d.right, source.width, s.left, s.right, q == 2);
                v = strip(y, windowHeight, d.top, d.bottom, source.height, s.top, s.bottom, q == 2);
            } else {
                // A quarter turn counter-clockwise brings the picture's right edge to the top.
                u = strip(y, windowHeight, d.top, d.bottom, source.width, s.left, s.right, q == 1);
                v = strip(x, windowWidth, d.left, d.right, source.height, s.top, s.bottom, q == 3);
            }
            picture.at(x, y) = u.inside && v.inside ? mean(source, u, v) : kBackdrop;
        }
    }
    return picture;
}

testing::AssertionResult alike(const Picture& actual, const Picture& expected, int tolerance) {
    if (actual.width != expected.width || actual.height != expected.height) {
        return testing::AssertionFailure() << "sizes differ";
    }
    int different = 0;
    std::string first;
    for (int y = 0; y < actual.height; ++y) {
        for (int x = 0; x < actual.width; ++x) {
            const Rgb a = actual.at(x, y);
            const Rgb e = expected.at(x, y);
            if (std::abs(a.red - e.red) > tolerance || std::abs(a.green - e.green) > tolerance ||
                std::abs(a.blue - e.blue) > tolerance) {
                if (++different == 1) {
                    first = "(" + std::to_string(x) + ", " + std::to_string(y) + ") is " +
                            std::to_string(a.red) + " " + std::to_string(a.green) + " " +
                            std::to_string(a.blue) + ", not " + std::to_string(e.red) + " " +
                            std::to_string(e.green) + " " + std::to_string(e.blue);
                }
            }
        }
    }
    if (different == 0) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << different << " of " << actual.pixels.size() << " pixels differ; " << first;
}

} // namespace kolt::tests
