// Turns the scene into frames in the camera's pixel format, as its settings say.
#ifndef VCAM_PICTURE_PAINTER_H
#define VCAM_PICTURE_PAINTER_H

#include "Picture/PictureSettings.h"
#include "Picture/PixelFormat.h"
#include "Picture/Scene.h"

#include <array>
#include <memory>

namespace vcam {

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
