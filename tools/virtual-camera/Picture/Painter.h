// Turns the scene into frames in the camera's pixel format, as its settings say.
#ifndef VCAM_PICTURE_PAINTER_H
#define VCAM_PICTURE_PAINTER_H

#include "Picture/PixelFormat.h"
#include "Picture/Scene.h"

#include <array>
#include <memory>

namespace vcam {

enum class TestPattern : uint32_t {
    Off = 0,
    Black = 1,
    White = 2,
    HorizontalRamp = 3,
    VerticalRamp = 4,
    MovingRamp = 5,
    ColourBars = 6
};

// All that decides how a frame looks, but for its number.
struct PictureSettings {
    uint32_t width = 0, height = 0, offsetX = 0, offsetY = 0;
    uint32_t pixelFormat = 0;
    bool reverseX = false, reverseY = false;
    TestPattern testPattern = TestPattern::Off;
    double exposure = 0; // microseconds
    double gain = 0;     // decibels

    bool operator==(const PictureSettings& o) const {
        return width == o.width && height == o.height && offsetX == o.offsetX && offsetY == o.offsetY &&
               pixelFormat == o.pixelFormat && reverseX == o.reverseX && reverseY == o.reverseY &&
               testPattern == o.testPattern && exposure == o.exposure && gain == o.gain;
    }
};

constexpr double kNominalExposure = 4000.0; // with gain 0 the scene comes out as it is

size_t PictureBytes(const PictureSettings& settings);
// What becomes of a scene component of 8 bits, in 12 bits.
std::array<uint16_t, 256> ToneCurve(const PictureSettings& settings);

// Not for several threads at once.
class Painter {
public:
    explicit Painter(std::shared_ptr<const Scene> scene) : m_scene(std::move(scene)) {}

    // `to` takes PictureBytes(settings).
    void Paint(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number,
               uint8_t* to);
    // Renews what shows the frame's number in a frame painted with the same settings and phase.
    void Stamp(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number,
               uint8_t* to);

private:
    void Prepare(const PictureSettings& settings);
    void StampRect(const PictureSettings& settings, Rect place, uint32_t cell, uint32_t phase,
                   uint32_t phases, uint32_t number, uint8_t* to);
    void PaintRect(const PictureSettings& settings, Rect place, uint32_t phase, uint32_t phases,
                   uint32_t number, uint8_t* to);
    void SceneRow(const PictureSettings& s, uint32_t y, uint32_t x0, uint32_t x1, double phase,
                  uint32_t number);
    void PatternRow(const PictureSettings& s, uint32_t y, uint32_t x0, uint32_t x1, double phase);
    void AddNoise(const PictureSettings& s, uint32_t y, uint32_t x0, uint32_t phase);

    std::shared_ptr<const Scene> m_scene;
    PictureSettings m_prepared; // what the curve below was made for
    std::array<uint16_t, 256> m_curve{};
    int m_noise = 0; // amplitude, 256ths of a 12-bit step
    std::vector<int16_t> m_noiseTable;
    std::vector<Rgb8> m_sceneRow;
    std::vector<Rgb12> m_row;
};

} // namespace vcam

#endif
