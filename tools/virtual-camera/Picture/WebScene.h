// What a line-scan camera looks at: a web of cloth that runs below its single row of pixels, one line after
// the other without an end. Each line of a frame is a later moment, and the first of a frame follows the last
// of the frame before.
//
// From left to right: 32 cells with the line's number in binary (the rightmost changes from line to line, so
// a missing or doubled line shows as a broken comb, and ReadLineNumber tells which); a ruler with a tick
// every ten lines and the number at each hundredth; eight endless stripes of known colour; and the cloth,
// with a thread that goes to and fro by about one pixel a line, and knots.
#ifndef VCAM_PICTURE_WEBSCENE_H
#define VCAM_PICTURE_WEBSCENE_H

#include "Picture/Scene.h"

namespace vcam {

class WebGeometry {
public:
    explicit WebGeometry(uint32_t width) : m_width(width) {}
    Rect CodeCell(uint32_t bit) const; // bit 31 is leftmost; white is one
    Rect CodePlace() const;
    Rect RulerPlace() const;
    Rect ClothPlace() const;
    uint32_t GlyphScale() const;
    std::vector<ScenePatch> Patches() const;

private:
    uint32_t m_width;
};

class WebScene final : public Scene {
public:
    explicit WebScene(uint32_t width);

    const WebGeometry& Geometry() const { return m_geometry; }
    uint32_t Width() const override { return m_width; }
    uint32_t Height() const override { return kEndless; }
    std::vector<ScenePatch> Patches() const override { return m_geometry.Patches(); }
    std::vector<CounterPlace> Counters() const override;
    // Line y of the frame with moment.number. Frame 1 begins with line 0; numbers wrap at 32 bits.
    void Row(uint32_t y, uint32_t x0, uint32_t x1, const Moment& moment, Rgb8* to) const override;

private:
    void RowCode(uint32_t line, uint32_t x0, uint32_t x1, Rgb8* to) const;
    void RowRuler(uint32_t line, uint32_t x0, uint32_t x1, Rgb8* to) const;
    void RowCloth(uint64_t at, uint64_t length, uint32_t x0, uint32_t x1, Rgb8* to) const;

    WebGeometry m_geometry;
    uint32_t m_width;
    Rect m_code, m_ruler, m_cloth;
    std::vector<ScenePatch> m_stripes;
};

// The number that a line carries. `grey` is a line at the sensor's full width, one byte a pixel. False when
// the cells can't be read.
bool ReadLineNumber(const uint8_t* grey, uint32_t width, uint32_t& line);

} // namespace vcam

#endif
