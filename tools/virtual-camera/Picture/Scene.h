// What a camera looks at, in colours of 8 bits at the sensor's full size.
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

constexpr uint32_t kEndless = UINT32_MAX; // height of what has neither beginning nor end

struct ScenePatch {
    const char* name;
    Rect place; // height may be kEndless
    Rgb8 colour;
};

// A place that looks different in each frame. Of `cell` rows, counted from its top, each looks like the
// other.
struct CounterPlace {
    Rect place; // height may be kEndless
    uint32_t cell;
};

// Which of the frames that were painted ahead, and which of the frames that are sent.
struct Moment {
    uint32_t phase = 0; // 0 to phases - 1; the one after the last is the first again
    uint32_t phases = 1;
    uint32_t number = 0;
    uint32_t rows = 1; // rows of the sensor that make one frame
};

class Scene {
public:
    Scene() = default;
    virtual ~Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    virtual uint32_t Width() const = 0;
    virtual uint32_t Height() const = 0; // or kEndless
    virtual std::vector<ScenePatch> Patches() const = 0;
    // All that depends on Moment::number.
    virtual std::vector<CounterPlace> Counters() const = 0;
    // One row, pixels x0 to x1, inside the scene.
    virtual void Row(uint32_t y, uint32_t x0, uint32_t x1, const Moment& moment, Rgb8* to) const = 0;
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

// For an area sensor: corner marks (red top left, green top right, blue bottom left, yellow bottom right),
// the word TOP under an arrow that points up, the camera's serial number, a frame counter in digits, eight
// patches of known colour, a grey wedge, a ball that rounds an ellipse clockwise and a bar that sweeps from
// left to right once in all phases, and a strip of 32 squares with the frame number in binary.
class AreaScene final : public Scene {
public:
    AreaScene(uint32_t width, uint32_t height, const std::string& label);

    const SceneGeometry& Geometry() const { return m_geometry; }
    uint32_t Width() const override { return m_geometry.Width(); }
    uint32_t Height() const override { return m_geometry.Height(); }
    std::vector<ScenePatch> Patches() const override { return m_geometry.Patches(); }
    std::vector<CounterPlace> Counters() const override;
    void Row(uint32_t y, uint32_t x0, uint32_t x1, const Moment& moment, Rgb8* to) const override;

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

// Fills the part of [from, to) that lies in the row [x0, x1).
void Span(Rgb8* row, uint32_t x0, uint32_t x1, uint32_t from, uint32_t to, Rgb8 colour);

// Column `column` (0 to 4) of row `row` (0 to 6) of a character is ink. Capitals, digits, '-' and '.'; others
// are blank.
bool GlyphInk(char character, uint32_t column, uint32_t row);

} // namespace vcam

#endif
