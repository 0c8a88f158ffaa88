// What a picture of the virtual camera costs at 1920 x 1080: painted anew (with each change of a setting,
// once for each frame of the ring) and stamped (every frame after that), beside copying its bytes. The 60
// frames a second of neutral pictures leave 16.7 ms for stamping; 30 with effects leave 33.3 ms for painting.
#include "Picture/Painter.h"
#include "Picture/WebScene.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

namespace {

using namespace vcam;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kWidth = 1920;
constexpr uint32_t kHeight = 1080;
constexpr int kRounds = 15;

double MedianMs(const std::function<void(uint32_t)>& work) {
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        const Clock::time_point start = Clock::now();
        work(static_cast<uint32_t>(round));
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

struct Case {
    const char* name;
    uint32_t format;
    std::function<void(PictureSettings&)> apply;
    bool web = false;
};

std::vector<Case> Cases() {
    constexpr uint32_t mono = 0x01080001;
    constexpr uint32_t bayer = 0x01080009;
    constexpr uint32_t packed = 0x010C002B;
    constexpr uint32_t rgb = 0x02180014;
    const auto all = [](PictureSettings& s) {
        s.gain = 6;
        s.hueEnable = s.saturationEnable = s.gammaEnable = s.lookupEnable = s.sharpnessEnable = true;
        s.hue = 10, s.saturation = 120, s.gamma = 0.8, s.sharpness = 50;
        s.balance = {1200, 1024, 900};
        s.lookup = std::make_shared<LookupTable>(IdentityLookup());
        s.reverseX = true;
    };
    return {
        {"neutral, Mono8", mono, [](auto&) {}},
        {"neutral, BayerRG8", bayer, [](auto&) {}},
        {"neutral, BayerRG12Packed", packed, [](auto&) {}},
        {"neutral, YUV422Packed", 0x0210001F, [](auto&) {}},
        {"neutral, RGB8Packed", rgb, [](auto&) {}},
        {"gamma, table, balance, RGB8Packed", rgb,
         [](auto& s) {
             s.gammaEnable = s.lookupEnable = true, s.gamma = 0.5, s.balance = {1200, 1024, 900};
             s.lookup = std::make_shared<LookupTable>(IdentityLookup());
         }},
        {"hue, RGB8Packed", rgb, [](auto& s) { s.hueEnable = true, s.hue = 10; }},
        {"noise, RGB8Packed", rgb, [](auto& s) { s.gain = 6; }},
        {"sharpness, RGB8Packed", rgb, [](auto& s) { s.sharpnessEnable = true, s.sharpness = 50; }},
        {"all of these, BayerRG8", bayer, all},
        {"all of these, RGB8Packed", rgb, all},
        {"binned 2x2, RGB8Packed", rgb,
         [](auto& s) { s.binningHorizontal = s.binningVertical = 2, s.width /= 2, s.height /= 2; }},
        {"web, Mono8", mono, [](auto&) {}, true},
        {"web, RGB8Packed", rgb, [](auto&) {}, true},
        {"web and all of these, RGB8Packed", rgb, all, true},
    };
}

} // namespace

int main() {
    const auto area = std::make_shared<const AreaScene>(kWidth, kHeight, "VC000001");
    const auto web = std::make_shared<const WebScene>(kWidth);
    std::printf("%-36s %10s %10s %10s %12s %12s %10s\n", "picture", "paint ms", "stamp ms", "copy ms",
                "paint/neutral", "paint fps", "stamp fps");
    std::vector<std::pair<uint32_t, double>> neutral;
    for (const Case& each : Cases()) {
        PictureSettings settings;
        settings.width = kWidth;
        settings.height = kHeight;
        settings.pixelFormat = each.format;
        each.apply(settings);
        std::vector<uint8_t> picture(PictureBytes(settings));
        std::vector<uint8_t> copy(picture.size());
        Painter painter(each.web ? std::shared_ptr<const Scene>(web) : area);
        const double paint =
            MedianMs([&](uint32_t round) { painter.Paint(settings, round % 8, 8, round, picture.data()); });
        const double stamp =
            MedianMs([&](uint32_t round) { painter.Stamp(settings, 6, 8, round, picture.data()); });
        const double copied =
            MedianMs([&](uint32_t) { std::memcpy(copy.data(), picture.data(), copy.size()); });
        const auto same = std::find_if(neutral.begin(), neutral.end(),
                                       [&](const auto& n) { return n.first == each.format; });
        const double base = same == neutral.end() ? paint : same->second;
        if (same == neutral.end())
            neutral.emplace_back(each.format, paint);
        std::printf("%-36s %10.2f %10.3f %10.3f %12.2f %12.0f %10.0f\n", each.name, paint, stamp, copied,
                    paint / base, 1000 / paint, 1000 / stamp);
    }
    return 0;
}
