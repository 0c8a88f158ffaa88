// The zoom arithmetic of the preview: which part of a picture is shown in which part of a window.
#pragma once

#include "Camera/Boundary/OVRender.h"

#include <array>
#include <optional>

// How the picture is turned on its way to the screen.
struct _PREVIEW_ROTATION_ {
    bool reversed = false; // width and height change places: a quarter turn either way
    bool turned = false;   // any turn at all
    bool half = false;     // upside down
    bool right = false;    // a quarter turn to the right
};

struct _ZOOM_STATE_ {
    bool zoomIn;
    bool zoomOut;
};

// What a step asks of its owner, in this order.
struct _ZOOM_OUTCOME_ {
    bool setDisplayRect = false;           // hand the rectangles to the camera
    std::optional<_ZOOM_STATE_> zoomState; // tell which of zooming in and out is possible
};

// A picture of any size in a window of any size. Sizes in pixels; the picture's are those on the screen, so a
// quarter turn exchanges them. Rectangles are fractions: the source of the picture as the camera sends it,
// the destination of the window, y downwards. Not for several threads at once.
class CPreviewZoom {
public:
    static constexpr int kIndexOfOne = 17; // scale 1.0
    static constexpr int kLastIndex = 47;
    static const std::array<float, kLastIndex + 1>& Table();

    // As after start: no picture, scale 1.0. The window's size stays.
    void Reset();
    void SetIndex(int index) { m_index = index; }
    void SetRotation(const _PREVIEW_ROTATION_& rotation) { m_rotation = rotation; }
    void SetWindow(int width, int height);
    // Exchanges the picture's width and height, after a quarter turn.
    void SwapRaw();

    // A frame of this size has come. A new size fits the picture into the window, the present one applies the
    // present zoom again.
    _ZOOM_OUTCOME_ SetRaw(int width, int height);
    // Shows the whole picture as large as the window allows; `apply` asks for the rectangles to be handed on.
    _ZOOM_OUTCOME_ Fit(bool apply);
    // One step of the table. (x, y) is the window's pixel whose picture point stays where it is.
    _ZOOM_OUTCOME_ ZoomIn(double x, double y);
    _ZOOM_OUTCOME_ ZoomOut(double x, double y);
    // Scale 1.0, centred; a picture that fits into the window is fitted instead.
    _ZOOM_OUTCOME_ ActualSize();
    // The window has a new size: a fitted picture is fitted again, else the shown part stays.
    _ZOOM_OUTCOME_ ApplyResize();
    // The pointer has dragged the picture by (dx, dy) pixels; the picture follows it.
    void Drag(double dx, double dy);

    // The picture's pixel at the window's pixel; nothing outside of the picture.
    struct Pixel {
        int x;
        int y;
    };
    std::optional<Pixel> PixelAt(int x, int y) const;
    // The zoom in whole per cent; nothing without a picture.
    std::optional<int> Percent() const;
    // Size of the window's part that the picture covers.
    Pixel DestinationSize() const;

    bool HasRaw() const { return m_raw.x > 0 && m_raw.y > 0; }
    bool HasWindow() const { return m_window.x > 0 && m_window.y > 0; }
    bool IsFit() const { return m_fit; }
    int Index() const { return m_index; }
    Pixel Raw() const { return m_raw; }
    Pixel Scaled() const { return m_scaled; }
    const tagVRRectF& Source() const { return m_source; }
    const tagVRRectF& Destination() const { return m_destination; }

private:
    struct Extent { // of a rectangle in one direction
        float start;
        float end;
    };

    void SetIndexByRate(float rate);
    Pixel ScaledAt(int index) const;
    bool FitsWindow(Pixel size) const { return size.x <= m_window.x && size.y <= m_window.y; }
    tagVRRectF AspectFit(double width, double height) const;
    void Generate(double x, double y);
    void CentreAtActualSize();
    tagVRRectF SourceOnScreen() const;
    void SetSourceOnScreen(const tagVRRectF& source);
    static Extent Move(Extent extent, double by);

    Pixel m_window{-1, -1};
    Pixel m_raw{0, 0};
    Pixel m_scaled{0, 0};
    tagVRRectF m_source{0, 0, 0, 0};
    tagVRRectF m_destination{0, 0, 0, 0};
    int m_index = kIndexOfOne;
    bool m_fit = false;
    _PREVIEW_ROTATION_ m_rotation;
};
