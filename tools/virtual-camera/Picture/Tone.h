// What becomes of a colour of the scene on its way into the picture, noise and sharpness aside, since these
// depend on the place.
#ifndef VCAM_PICTURE_TONE_H
#define VCAM_PICTURE_TONE_H

#include "Picture/PictureSettings.h"
#include "Picture/PixelFormat.h"
#include "Picture/Scene.h"

namespace vcam {

// Tables for one set of settings. Two halves, since binning and noise come between them:
//     light   exposure, gain, white balance, black level: linear, clipped at 12 bits
//     finish  hue and saturation (one matrix), then gamma and lookup table (one curve)
class Tone {
public:
    explicit Tone(const PictureSettings& settings);

    Rgb12 Light(Rgb8 scene) const {
        return {m_light[0][scene.red], m_light[1][scene.green], m_light[2][scene.blue]};
    }
    Rgb12 Finish(Rgb12 colour) const {
        if (m_hasMatrix)
            colour = Mix(colour);
        return {m_finish[colour.red], m_finish[colour.green], m_finish[colour.blue]};
    }
    Rgb12 Whole(Rgb8 scene) const { return Finish(Light(scene)); }

    // Each component can go through a table of its own, both halves at once.
    bool IsSeparable() const { return !m_hasMatrix; }
    Rgb12 Separate(Rgb8 scene) const {
        return {m_both[0][scene.red], m_both[1][scene.green], m_both[2][scene.blue]};
    }
    bool HasFinish() const { return m_hasMatrix || m_hasCurve; }
    // Standard deviation in steps of 12 bits, between the two halves and for a single pixel of the sensor.
    double Noise() const { return m_noise; }

private:
    Rgb12 Mix(const Rgb12& colour) const;
    void MakeLight(const PictureSettings& settings);
    void MakeMatrix(const PictureSettings& settings);
    void MakeFinish(const PictureSettings& settings);

    std::array<std::array<uint16_t, 256>, 3> m_light{};
    std::array<std::array<uint16_t, 256>, 3> m_both{};
    std::array<uint16_t, 4096> m_finish{};
    std::array<int32_t, 9> m_matrix{}; // 4096ths, row by row
    bool m_hasMatrix = false;
    bool m_hasCurve = false;
    double m_noise = 0;
};

// What a plain area of this colour in the scene reads in the picture, 12 bits a component. Noise wanders
// about it. For HDR: settings of one frame.
Rgb12 ExpectedColour(const PictureSettings& settings, Rgb8 scene);

// ExpectedColour of greys, without hue and saturation.
std::array<uint16_t, 256> ToneCurve(const PictureSettings& settings);

} // namespace vcam

#endif
