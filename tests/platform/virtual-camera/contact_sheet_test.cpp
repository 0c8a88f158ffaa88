// One sheet of small pictures, an effect on each, kept to be looked at.
#include "Picture/WebScene.h"
#include "picture_rig.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace kolt::test;
using vcam::PictureSettings;

constexpr uint32_t kTileWidth = 480;
constexpr uint32_t kTileHeight = 270;
constexpr uint32_t kColumns = 4;

struct Tile {
    const char* name;
    std::function<void(PictureSettings&)> apply;
};

std::vector<Tile> Tiles() {
    const auto inverse = std::make_shared<vcam::LookupTable>();
    for (size_t i = 0; i < inverse->size(); ++i)
        (*inverse)[i] = static_cast<uint16_t>(4095 - 4 * i);
    return {
        {"neutral", [](auto&) {}},
        {"exposure halved", [](auto& s) { s.exposure = 2000; }},
        {"gain 24 dB", [](auto& s) { s.gain = 24, s.exposure = 400; }},
        {"black level", [](auto& s) { s.blackLevel = 1000; }},
        {"warm balance",
         [](auto& s) {
             s.balance = {1500, 1024, 600};
         }},
        {"hue", [](auto& s) { s.hueEnable = true, s.hue = 90; }},
        {"no saturation", [](auto& s) { s.saturationEnable = true, s.saturation = 0; }},
        {"much saturation", [](auto& s) { s.saturationEnable = true, s.saturation = 250; }},
        {"gamma 0.45", [](auto& s) { s.gammaEnable = true, s.gamma = 0.45; }},
        {"gamma 2.2", [](auto& s) { s.gammaEnable = true, s.gamma = 2.2; }},
        {"inverse table", [inverse](auto& s) { s.lookupEnable = true, s.lookup = inverse; }},
        {"sharpness", [](auto& s) { s.sharpnessEnable = true, s.sharpness = 100; }},
        {"binned 4x4",
         [](auto& s) { s.binningHorizontal = s.binningVertical = 4, s.width /= 4, s.height /= 4; }},
        {"region", [](auto& s) { s.offsetX = 120, s.offsetY = 60, s.width = 240, s.height = 150; }},
        {"reversed", [](auto& s) { s.reverseX = s.reverseY = true; }},
    };
}

TEST(ContactSheet, EveryEffectIsSeen) {
    const auto scene = std::make_shared<const vcam::AreaScene>(kTileWidth, kTileHeight, "VC000001");
    const auto web = std::make_shared<const vcam::WebScene>(kTileWidth);
    std::vector<Tile> tiles = Tiles();
    tiles.push_back({"web", [](auto&) {}});
    const auto rows = static_cast<uint32_t>((tiles.size() + kColumns - 1) / kColumns);
    Picture sheet(size_t{kColumns} * kTileWidth * rows * kTileHeight * 3, 60);
    Picture neutral;
    for (uint32_t index = 0; index < tiles.size(); ++index) {
        PictureSettings settings = Whole(kRgb);
        settings.width = kTileWidth;
        settings.height = kTileHeight;
        tiles[index].apply(settings);
        Picture picture(vcam::PictureBytes(settings));
        if (index + 1 == tiles.size())
            vcam::Painter(web).Paint(settings, 2, 8, 3, picture.data());
        else
            vcam::Painter(scene).Paint(settings, 2, 16, 4711, picture.data());
        if (index == 0)
            neutral = picture;
        else
            EXPECT_NE(picture, neutral) << tiles[index].name;
        const size_t left = size_t{index % kColumns} * kTileWidth * 3;
        const size_t top = size_t{index / kColumns} * kTileHeight;
        for (size_t y = 0; y < settings.height; ++y) {
            const auto from = picture.begin() + static_cast<std::ptrdiff_t>(y * settings.width * 3);
            const auto to =
                sheet.begin() + static_cast<std::ptrdiff_t>((top + y) * kColumns * kTileWidth * 3 + left);
            std::copy(from, from + settings.width * 3, to);
        }
    }
    if (const char* out = std::getenv("KOLT_TEST_OUT")) {
        std::filesystem::create_directories(out);
        std::ofstream file(std::string(out) + "/vcam-effects.ppm", std::ios::binary);
        file << "P6 " << kColumns * kTileWidth << ' ' << rows * kTileHeight << " 255\n";
        file.write(reinterpret_cast<const char*>(sheet.data()), static_cast<std::streamsize>(sheet.size()));
        EXPECT_TRUE(file.good());
    }
}

} // namespace
