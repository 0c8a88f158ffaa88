// Makes finished rows of a picture, before they are packed into a pixel format: the scene through tone,
// binning, noise and sharpness.
#ifndef VCAM_PICTURE_ROWMAKER_H
#define VCAM_PICTURE_ROWMAKER_H

#include "Picture/Tone.h"

#include <memory>
#include <utility>
#include <vector>

namespace vcam {

// Not for several threads at once.
class RowMaker {
public:
    explicit RowMaker(std::shared_ptr<const Scene> scene) : m_scene(std::move(scene)) {}

    const Scene& GetScene() const { return *m_scene; }
    // Settings of one frame. Makes tables when they differ from the last.
    void Prepare(const PictureSettings& settings);
    // The rows that follow are of this moment and span the picture's columns x0 to x1.
    void Begin(uint32_t x0, uint32_t x1, const Moment& moment);
    // Row y of the picture; valid until the next call.
    const Rgb12* Row(uint32_t y);
    // Rows that show the same rows of the scene are the same.
    bool DependsOnPlace() const { return m_noise > 0 || m_sharpness > 0; }
    uint32_t Reach() const { return m_sharpness > 0 ? 1 : 0; } // of a pixel into its neighbours

private:
    // Components apart, 0 to 4095 each, so that the compiler makes vector code of the loops over them.
    using Plane = std::vector<int16_t>;
    struct Line {
        std::array<Plane, 3> planes;
        int64_t y = -1; // which row it holds
    };

    bool IsPlain() const; // each component of a pixel through one table, and nothing else
    std::pair<uint32_t, uint32_t> OnSensor(uint32_t y) const;
    void MakeNoise();
    void ReadScene(uint32_t row, uint32_t first, uint32_t count);
    void PlainRow(uint32_t y);
    const Line& Toned(uint32_t y);
    void Straight(Line& line, uint32_t sensorX, uint32_t sensorY);
    void Binned(Line& line, uint32_t sensorX, uint32_t sensorY);
    void AddNoise(Line& line, uint32_t y);
    void Finish(Line& line);
    void Sharpen(const Line& above, const Line& here, const Line& below);
    void Interleave(const std::array<Plane, 3>& planes);

    std::shared_ptr<const Scene> m_scene;
    PictureSettings m_settings;
    std::unique_ptr<const Tone> m_tone; // made for m_settings
    int m_noise = 0;                    // standard deviation, 256ths of a 12-bit step
    int m_sharpness = 0;                // 4096ths of the sum of the four differences
    std::vector<int16_t> m_noiseUnits;  // normally distributed, 256 is one standard deviation
    std::vector<int16_t> m_noiseSteps;  // the same as steps of 12 bits

    Moment m_moment;
    uint32_t m_x0 = 0, m_x1 = 0;   // asked for
    uint32_t m_from = 0, m_to = 0; // with what sharpness needs beside
    std::array<Line, 3> m_lines;   // the last rows, at y modulo 3
    std::vector<Rgb8> m_sceneRow;
    std::array<Plane, 3> m_sharp;
    std::vector<Rgb12> m_row;
};

} // namespace vcam

#endif
