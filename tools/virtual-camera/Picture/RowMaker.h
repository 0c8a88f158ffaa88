// Makes finished rows of a picture, before they are packed into a pixel format: the scene through tone,
// binning, noise and sharpness.
#ifndef VCAM_PICTURE_ROWMAKER_H
#define VCAM_PICTURE_ROWMAKER_H

#include "Picture/Tone.h"

#include <memory>
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
    struct Line {
        std::vector<Rgb12> pixels;
        int64_t y = -1; // which row it holds
    };

    const Rgb12* Toned(uint32_t y);
    void ReadScene(uint32_t row, uint32_t first, uint32_t count);
    void Straight(Line& line, uint32_t sensorX, uint32_t sensorY);
    void Binned(Line& line, uint32_t sensorX, uint32_t sensorY);
    void AddNoise(Line& line, uint32_t y);
    void Sharpen(const Rgb12* above, const Rgb12* here, const Rgb12* below);

    std::shared_ptr<const Scene> m_scene;
    PictureSettings m_settings;
    std::unique_ptr<const Tone> m_tone; // made for m_settings
    int m_noise = 0;                    // standard deviation, 256ths of a 12-bit step
    int m_sharpness = 0;                // 4096ths of the sum of the four differences
    std::vector<int16_t> m_noiseTable;

    Moment m_moment;
    uint32_t m_x0 = 0, m_x1 = 0;   // asked for
    uint32_t m_from = 0, m_to = 0; // with what sharpness needs beside
    std::array<Line, 3> m_lines;   // the last rows, at y modulo 3
    std::vector<Rgb8> m_sceneRow;
    std::vector<uint16_t> m_sums;
    std::vector<Rgb12> m_sharp;
};

} // namespace vcam

#endif
