/*
 * What a window must show, worked out pixel by pixel in the plainest way, apart from the product's own
 * arithmetic.
 */
#ifndef KOLT_TESTS_RENDER_EXPECTATION_H
#define KOLT_TESTS_RENDER_EXPECTATION_H

#include "XClient.h"

#include "Camera/Boundary/OVRender.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace kolt::tests {

constexpr Rgb kBackdrop{0x14, 0x18, 0x1D};
constexpr tagVRRectF kAll{0, 1, 0, 1};

/* A test picture as a camera would deliver it: one or three bytes a pixel. */
struct Source {
    int width = 0;
    int height = 0;
    int channels = 1;
    std::vector<uint8_t> bytes;

    Rgb at(int x, int y) const;
};

/* Every pixel different from its neighbours, no symmetry. */
Source noise(int width, int height, int channels, uint32_t seed = 1);
/* Smooth ramps with a mark in one corner: sampling errors show as small differences. */
Source ramps(int width, int height, int channels);
/* Fine and coarse structure as in a real scene: edges, gradients, a resolution star, text-like bars. */
Source scene(int width, int height, int channels);

struct Shown {
    tagVRRectF source = kAll;
    tagVRRectF destination = kAll;
    int quarterTurns = 0;
};

/* Enlarged: the pixel under each window pixel's centre. Reduced: the mean over each window pixel's area. */
Picture expected(const Source& source, int windowWidth, int windowHeight, const Shown& shown);

/* No component further apart than the tolerance; names the first pixel that is. */
testing::AssertionResult alike(const Picture& actual, const Picture& expected, int tolerance);

} // namespace kolt::tests

#endif
