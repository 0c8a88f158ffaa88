// All that decides how a frame looks, but for its number and the moment that it shows. Plain values, set by
// whoever stands for the camera's registers; the painter takes them as they are.
#ifndef VCAM_PICTURE_PICTURESETTINGS_H
#define VCAM_PICTURE_PICTURESETTINGS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace vcam {

enum class TestPattern : uint32_t {
    Off = 0,
    Black = 1,
    White = 2,
    HorizontalRamp = 3,
    VerticalRamp = 4,
    MovingRamp = 5,
    ColourBars = 6
};

constexpr double kNominalExposure = 4000.0; // us; with a gain of 0 dB the scene comes out as it is
constexpr uint32_t kNeutralBalance = 1024;  // a white balance gain of 1
constexpr uint32_t kMostBalance = 4095;     // just below 4
constexpr int32_t kNeutralSaturation = 100; // percent
constexpr size_t kLookupEntries = 1024;     // index: the upper 10 bits of a component of 12
constexpr uint16_t kMostLookupValue = 4095; // entries are components of 12 bits
constexpr uint32_t kHdrSets = 4;

using LookupTable = std::array<uint16_t, kLookupEntries>;

enum class GammaCurve : uint32_t { Power = 1, Srgb = 2 };

struct HdrSet {
    double exposure = kNominalExposure; // us
    double gain = 0;                    // dB

    bool operator==(const HdrSet& o) const { return exposure == o.exposure && gain == o.gain; }
};

// Facts that a frame can carry in its first pixels; bits of PictureSettings::embedded, in the order in which
// they follow each other there.
enum class FrameFact : uint32_t {
    Timestamp = 0,
    Gain = 1,
    Exposure = 2,
    Brightness = 3,
    WhiteBalance = 4,
    FrameNumber = 5,
    TriggerCount = 6,
    Lines = 7,
    Region = 8
};
constexpr uint32_t kFrameFacts = 9;

// The light's way: exposure, gain (and the noise that it lifts), white balance, black level, clipping at 12
// bits, binning, hue and saturation, gamma, lookup table, sharpness, pixel format. The defaults let the scene
// through as it is, to the bit.
struct PictureSettings {
    // The region, in pixels of the picture, that is: after binning. Offsets may be odd; the colours of a
    // Bayer tile stay in the order that the pixel format names, counted from the picture's first pixel.
    uint32_t width = 0, height = 0, offsetX = 0, offsetY = 0;
    uint32_t binningHorizontal = 1, binningVertical = 1; // 1, 2 or 4 pixels of the sensor become their mean
    bool reverseX = false, reverseY = false;
    uint32_t pixelFormat = 0;                   // GVSP code
    TestPattern testPattern = TestPattern::Off; // instead of the scene, and past all that follows

    double exposure = kNominalExposure; // us, above 0
    double gain = 0;                    // dB, from 0; noise grows with it, and there is none at 0
    // Steps of 12 bits, -4095 to 4095, that are added to each component: the feature Brightness.
    int32_t blackLevel = 0;
    // Red, green, blue in 1024ths, 0 to kMostBalance.
    std::array<uint32_t, 3> balance{kNeutralBalance, kNeutralBalance, kNeutralBalance};

    bool hueEnable = false;
    int32_t hue = 0; // degrees, -180 to 180; positive turns red towards yellow
    bool saturationEnable = false;
    int32_t saturation = kNeutralSaturation; // percent, 0 (grey) to 400

    bool gammaEnable = false;
    GammaCurve gammaCurve = GammaCurve::Power; // Srgb: the curve of sRGB, whatever `gamma` says
    double gamma = 1.0;                        // the exponent, 0.1 to 10; below 1 lifts the shadows
    bool lookupEnable = false;
    std::shared_ptr<const LookupTable> lookup; // null: as if it were off
    bool sharpnessEnable = false;
    int32_t sharpness = 0; // 0 to 100: so many percent of the difference from the neighbours are added

    // Sets that take turns from frame to frame, in the place of exposure and gain.
    bool hdrEnable = false;
    std::array<HdrSet, kHdrSets> hdr{};

    uint32_t embedded = 0; // a bit for each FrameFact in the first pixels; 0: no block

    bool operator==(const PictureSettings& o) const;
    bool operator!=(const PictureSettings& o) const { return !(*this == o); }
};

// Of the frame with this number: HDR has been resolved to exposure and gain by the set (number modulo 4).
PictureSettings SettingsOfFrame(const PictureSettings& settings, uint32_t number);

// The table that changes nothing but the two lowest bits of a component.
LookupTable IdentityLookup();

size_t PictureBytes(const PictureSettings& settings);

} // namespace vcam

#endif
