// A small scene, and pictures of it.
#ifndef KOLT_TESTS_VCAM_PICTURE_RIG_H
#define KOLT_TESTS_VCAM_PICTURE_RIG_H

#include "Picture/Painter.h"
#include "pixel_reader.h"

#include <memory>
#include <vector>

namespace kolt::test {

using Picture = std::vector<uint8_t>;

constexpr uint32_t kWidth = 320;
constexpr uint32_t kHeight = 240;
constexpr uint32_t kRgb = 0x02180014;
constexpr uint32_t kMono = 0x01080001;
constexpr uint32_t kMono12 = 0x01100005;

inline std::shared_ptr<const vcam::AreaScene> TheScene() {
    static const auto scene = std::make_shared<const vcam::AreaScene>(kWidth, kHeight, "VC000001");
    return scene;
}

// All of the sensor, everything neutral.
inline vcam::PictureSettings Whole(uint32_t format) {
    vcam::PictureSettings settings;
    settings.width = kWidth;
    settings.height = kHeight;
    settings.pixelFormat = format;
    return settings;
}

inline Picture Paint(const vcam::PictureSettings& settings, uint32_t phase = 0, uint32_t number = 1) {
    vcam::Painter painter(TheScene());
    Picture picture(vcam::PictureBytes(settings));
    painter.Paint(settings, phase, 16, number, picture.data());
    return picture;
}

inline Colour RgbAt(const Picture& picture, const vcam::PictureSettings& settings, size_t x, size_t y) {
    static const FormatFacts rgb{"", kRgb, 'r', 8, false, ""};
    return ReadPixel(rgb, picture, settings.width, x, y).colour;
}

} // namespace kolt::test

#endif
