// What the camera looks at, in colours of 8 bits at the sensor's full size: corner marks (red top left, green
// top right, blue bottom left, yellow bottom right), the word TOP under an arrow that points up, the camera's
// serial number, a frame counter in digits, eight patches of known colour, a grey wedge, a ball that rounds
// an ellipse clockwise and a bar that sweeps from left to right, and a strip of 32 squares with the frame
// number in binary.
#ifndef VCAM_PICTURE_SCENE_H
#define VCAM_PICTURE_SCENE_H

#include <cstdint>
#include <string>
#include <vector>

namespace vcam {

struct Rgb8 {
    uint8_t red, green, blue;
};

struct Rect {
    uint32_t x, y, width, height;
};

struct ScenePatch {
    const char* name;
    Rect place;
    Rgb8 colour;
};

// The place of everything, from the sensor's size alone.
class SceneGeometry {
public:
    SceneGeometry(uint32_t width, uint32_t height) : m_width(width), m_height(height) {}
    uint32_t Width() const { return m_width; }
    uint32_t Height() const { return m_height; }
    std::vector<ScenePatch> Patches() const;
    Rect MotionBand() const;   // where ball and bar move
    Rect CounterPlace() const; // the ten digits
    uint32_t GlyphScale() const;
    Rect StripSquare(uint32_t bit) const; // bit 31 is leftmost; white is one
    Rect StripPlace() const;

private:
    uint32_t m_width;
    uint32_t m_height;
};

class Scene {
public:
    Scene(uint32_t width, uint32_t height, const std::string& label);

    const SceneGeometry& Geometry() const { return m_geometry; }
    // One row of the scene, pixels x0 to x1, at `phase` (0 to 1: one round of the ball) and with the counter
    // at `number`.
    void Row(uint32_t y, uint32_t x0, uint32_t x1, double phase, uint32_t number, Rgb8* to) const;

private:
    void Fill(Rect place, Rgb8 colour);
    void Text(uint32_t x, uint32_t y, uint32_t scale, const std::string& text, Rgb8 colour);
    void DrawBackground();
    void DrawMarks(const std::string& label);
    void RowMotion(uint32_t y, uint32_t x0, uint32_t x1, double phase, Rgb8* to) const;
    void RowCounter(uint32_t y, uint32_t x0, uint32_t x1, uint32_t number, Rgb8* to) const;
    void RowStrip(uint32_t y, uint32_t x0, uint32_t x1, uint32_t number, Rgb8* to) const;

    SceneGeometry m_geometry;
    std::vector<Rgb8> m_still; // all that does not move
};

// Column `column` (0 to 4) of row `row` (0 to 6) of a character is ink. Capitals, digits, '-' and '.'; others
// are blank.
bool GlyphInk(char character, uint32_t column, uint32_t row);

} // namespace vcam

#endif
