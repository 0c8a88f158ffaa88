#include "Picture/PictureSettings.h"

#include "Picture/PixelFormat.h"

#include <tuple>

namespace vcam {

namespace {

auto Values(const PictureSettings& s) {
    return std::tie(s.width, s.height, s.offsetX, s.offsetY, s.binningHorizontal, s.binningVertical,
                    s.reverseX, s.reverseY, s.pixelFormat, s.testPattern, s.exposure, s.gain, s.blackLevel,
                    s.balance, s.hueEnable, s.hue, s.saturationEnable, s.saturation, s.gammaEnable,
                    s.gammaCurve, s.gamma, s.lookupEnable, s.sharpnessEnable, s.sharpness, s.hdrEnable, s.hdr,
                    s.embedded);
}

bool SameTable(const std::shared_ptr<const LookupTable>& a, const std::shared_ptr<const LookupTable>& b) {
    return a == b || (a != nullptr && b != nullptr && *a == *b);
}

} // namespace

bool PictureSettings::operator==(const PictureSettings& o) const {
    return Values(*this) == Values(o) && SameTable(lookup, o.lookup);
}

PictureSettings SettingsOfFrame(const PictureSettings& settings, uint32_t number) {
    PictureSettings of = settings;
    if (!settings.hdrEnable)
        return of;
    const HdrSet& set = settings.hdr[number % kHdrSets];
    of.exposure = set.exposure;
    of.gain = set.gain;
    of.hdrEnable = false;
    return of;
}

LookupTable IdentityLookup() {
    LookupTable table{};
    for (size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<uint16_t>(i << 2 | i >> 8); // 1023 becomes 4095
    return table;
}

size_t PictureBytes(const PictureSettings& settings) {
    const PixelFormat* format = FindPixelFormat(settings.pixelFormat);
    return format == nullptr ? 0 : format->BytesFor(size_t{settings.width} * settings.height);
}

} // namespace vcam
