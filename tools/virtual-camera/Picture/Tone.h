// What becomes of a colour of the scene on its way into the picture, noise and sharpness aside, since these
// depend on the place.
#ifndef VCAM_PICTURE_TONE_H
#define VCAM_PICTURE_TONE_H

#include "Picture/PictureSettings.h"
#include "Picture/PixelFormat.h"
#include "Picture/Scene.h"

#include <algorithm>

namespace vcam {

// Tables for one set of settings. Two halves, since binning and noise come between them:
//     light   exposure, gain, white balance, black level: linear, clipped at 12 bits
//     finish  hue and saturation (one matrix), then gamma and lookup table (one curve for all components)
class Tone {
public:
    explicit Tone(const PictureSettings& settings);

    Rgb12 Whole(Rgb8 scene) const;

    // For rows; components in planes of their own. Light: 12 bits of each 8-bit component of the scene.
    const std::array<uint16_t, 256>& Light(size_t component) const { return m_light[component]; }
    // 256 of each component through both halves. Only without a matrix, which mixes components.
    const std::array<uint16_t, 256>& Both(size_t component) const { return m_both[component]; }
    // Of 4096 components; behind the matrix.
    const std::array<uint16_t, 4096>& Curve() const { return m_curve; }
    // Rows of three, in the order red, green, blue.
    const std::array<float, 9>& Matrix() const { return m_matrix; }
    bool HasMatrix() const { return m_hasMatrix; }
    bool HasCurve() const { return m_hasCurve; }
    // One row of the matrix. No call of the library's rounding, since that would keep a loop over it scalar;
    // sums below zero are cut, so adding a half rounds all others.
    static int16_t Mixed(const float* row, float red, float green, float blue) {
        constexpr float half = 0.5f;
        const auto sum = static_cast<int>(row[0] * red + row[1] * green + row[2] * blue + half);
        return static_cast<int16_t>(std::clamp(sum, 0, 4095));
    }
    // Standard deviation in steps of 12 bits, between the two halves and for a single pixel of the sensor.
    double Noise() const { return m_noise; }

private:
    void MakeLight(const PictureSettings& settings);
    void MakeMatrix(const PictureSettings& settings);
    void MakeCurve(const PictureSettings& settings);

    std::array<std::array<uint16_t, 256>, 3> m_light{};
    std::array<std::array<uint16_t, 256>, 3> m_both{};
    std::array<uint16_t, 4096> m_curve{};
    std::array<float, 9> m_matrix{};
    bool m_hasMatrix = false;
    bool m_hasCurve = false;
    double m_noise = 0;
};

// What a plain area of this colour in the scene reads in the picture, 12 bits a component. Noise wanders
// about it. For HDR: settings of one frame.
Rgb12 ExpectedColour(const PictureSettings& settings, Rgb8 scene);

} // namespace vcam

#endif
