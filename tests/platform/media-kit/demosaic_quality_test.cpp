#include "Camera/Boundary/OvMediaKit.h"
#include "MediaKit/Convert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

/*
 * How near each method comes to a picture whose truth is known: the picture is made in full colour, seen
 * through the mosaic, and made whole again. A better method must be better on every kind of picture.
 */

namespace {

using namespace media;

constexpr int kSide = 512;

struct Colour {
    double red;
    double green;
    double blue;
};

using Scene = std::vector<Colour>; // 0 to 255, row by row

template<typename Paint>
Scene Paintings(Paint&& paint) {
    Scene scene;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            scene.push_back(paint(x, y));
        }
    }
    return scene;
}

/* Rings that grow finer outwards, up to 0.35 of the sampling rate, in a slowly changing tint. */
Scene ZonePlate() {
    return Paintings([](int x, int y) {
        const double dx = x - kSide / 2.0;
        const double dy = y - kSide / 2.0;
        const double finest = kSide / std::sqrt(2.0);
        const double value = 0.5 + 0.45 * std::cos(M_PI * 0.35 * (dx * dx + dy * dy) / finest);
        const double tint = static_cast<double>(x) / kSide;
        return Colour{255 * value * (0.7 + 0.3 * tint), 255 * value * 0.9, 255 * value * (1.0 - 0.3 * tint)};
    });
}

/* Discs and bars of plain colours with edges in all directions, each edge a pixel wide as a lens leaves it.
 */
Scene Edges() {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(0, 1);
    Scene scene(kSide * kSide, Colour{90, 100, 95});
    for (int shape = 0; shape < 90; ++shape) {
        const double level = 255 * unit(random);
        const auto channel = [&] { return std::clamp(level + 70 * (unit(random) - 0.5), 0.0, 255.0); };
        const Colour colour{channel(), channel(), channel()};
        const double centreX = kSide * unit(random);
        const double centreY = kSide * unit(random);
        const double angle = 2 * M_PI * unit(random);
        const double length = 15 + 70 * unit(random);
        const double breadth = shape % 2 == 0 ? length : 3 + 10 * unit(random);
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                const double along = (x - centreX) * std::cos(angle) + (y - centreY) * std::sin(angle);
                const double aside = (y - centreY) * std::cos(angle) - (x - centreX) * std::sin(angle);
                const double inside = shape % 2 == 0
                                          ? length - std::hypot(along, aside)
                                          : std::min(length - std::abs(along), breadth - std::abs(aside));
                const double part = std::clamp(0.5 + inside / 1.5, 0.0, 1.0);
                Colour& at = scene[static_cast<std::size_t>(y * kSide + x)];
                at = {at.red + part * (colour.red - at.red), at.green + part * (colour.green - at.green),
                      at.blue + part * (colour.blue - at.blue)};
            }
        }
    }
    return scene;
}

/* Noise as fine as a lens passes it, mostly of brightness, a little of colour: cloth, gravel, leaves. */
Scene Texture() {
    std::mt19937 random(12);
    std::normal_distribution<double> normal(0, 1);
    const auto noise = [&](int passes) {
        std::vector<double> field(kSide * kSide);
        for (double& value : field) {
            value = normal(random);
        }
        for (int pass = 0; pass < passes; ++pass) {
            std::vector<double> next(field.size());
            const auto at = [&](int x, int y) {
                return field[static_cast<std::size_t>((y & (kSide - 1)) * kSide + (x & (kSide - 1)))];
            };
            for (int y = 0; y < kSide; ++y) {
                for (int x = 0; x < kSide; ++x) {
                    next[static_cast<std::size_t>(y * kSide + x)] =
                        (4 * at(x, y) + 2 * (at(x - 1, y) + at(x + 1, y) + at(x, y - 1) + at(x, y + 1)) +
                         at(x - 1, y - 1) + at(x + 1, y - 1) + at(x - 1, y + 1) + at(x + 1, y + 1)) /
                        16;
                }
            }
            field = next;
        }
        double square = 0;
        for (const double value : field) {
            square += value * value;
        }
        for (double& value : field) {
            value /= std::sqrt(square / static_cast<double>(field.size()));
        }
        return field;
    };
    const std::vector<double> brightness = noise(1);
    const std::vector<double> warm = noise(6);
    Scene scene;
    for (std::size_t i = 0; i < brightness.size(); ++i) {
        const double level = 128 + 35 * brightness[i];
        scene.push_back({level + 12 * warm[i], level, level - 12 * warm[i]});
    }
    return scene;
}

std::uint8_t Round(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

/* Peak signal to noise ratio, dB, over all channels, of the scene seen through an RGGB mosaic. */
double Psnr(const Scene& scene, std::uint32_t method) {
    std::vector<std::uint8_t> mosaic(scene.size());
    std::vector<std::uint8_t> truth(3 * scene.size());
    for (std::size_t i = 0; i < scene.size(); ++i) {
        const std::uint8_t channels[3] = {Round(scene[i].red), Round(scene[i].green), Round(scene[i].blue)};
        mosaic[i] = channels[(i % 2) + (i / kSide % 2)];
        std::copy(channels, channels + 3, truth.begin() + static_cast<std::ptrdiff_t>(3 * i));
    }
    std::vector<std::uint8_t> result(truth.size());
    LineBuffers lines;
    lines.Prepare(kSide);
    ConvertRows(
        BestKernels(),
        {OV_PIXEL_BAYER_RG8, mosaic.data(), static_cast<std::uint32_t>(mosaic.size()), kSide, kSide, method},
        0, kSide, {result.data(), 3 * kSide, Layout::Rgb}, lines);
    double square = 0;
    for (std::size_t i = 0; i < truth.size(); ++i) {
        const double error = static_cast<double>(result[i]) - truth[i];
        square += error * error;
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(truth.size()) / square);
}

TEST(DemosaicQuality, RisesFromNearestByBilinearToHamilton) {
    const struct {
        const char* name;
        Scene scene;
    } pictures[] = {{"zone plate", ZonePlate()}, {"edges", Edges()}, {"texture", Texture()}};
    std::printf("PSNR, dB   | nearest | bilinear | Hamilton-Adams\n");
    for (const auto& picture : pictures) {
        const double nearest = Psnr(picture.scene, OV_BAYER_NEAREST);
        const double bilinear = Psnr(picture.scene, OV_BAYER_BILINEAR);
        const double hamilton = Psnr(picture.scene, OV_BAYER_HAMILTON);
        std::printf("%-10s | %7.2f | %8.2f | %14.2f\n", picture.name, nearest, bilinear, hamilton);
        // Not by a hair: a method that does what it should is worth decibels.
        EXPECT_GT(bilinear, nearest + 1) << picture.name;
        EXPECT_GT(hamilton, bilinear + 1) << picture.name;
    }
}

/* A grey scene has no colour to get wrong, and a plain one nothing at all. */
TEST(DemosaicQuality, PlainSurfacesStayExact) {
    for (const Colour colour :
         {Colour{0, 0, 0}, Colour{255, 255, 255}, Colour{200, 120, 40}, Colour{0, 255, 0}}) {
        const Scene scene(kSide * kSide, colour);
        for (std::uint32_t method = 0; method < 3; ++method) {
            EXPECT_EQ(Psnr(scene, method), INFINITY) << "method " << method;
        }
    }
}

} // namespace
