// Turns the scene into frames in the camera's pixel format, as its settings say.
#ifndef VCAM_PICTURE_PAINTER_H
#define VCAM_PICTURE_PAINTER_H

#include "Picture/RowMaker.h"

namespace vcam {

// Settings are those of one frame: HDR has been resolved by SettingsOfFrame. The block of facts is not
// painted: WriteEmbeddedBlock puts it over the finished picture. Not for several threads at once.
class Painter {
public:
    explicit Painter(std::shared_ptr<const Scene> scene) : m_rows(std::move(scene)) {}

    // `to` takes PictureBytes(settings).
    void Paint(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number,
               uint8_t* to);
    // Renews what shows the frame's number in a frame painted with the same settings and phase. Noise stays
    // as it was painted: it differs from phase to phase.
    void Stamp(const PictureSettings& settings, uint32_t phase, uint32_t phases, uint32_t number,
               uint8_t* to);

private:
    void StampCounter(const PictureSettings& settings, const CounterPlace& counter, const Moment& moment,
                      uint8_t* to);
    void PaintRect(const PictureSettings& settings, Rect place, const Moment& moment, uint8_t* to);
    void PaintPattern(const PictureSettings& settings, const Moment& moment, uint8_t* to);

    RowMaker m_rows;
};

} // namespace vcam

#endif
