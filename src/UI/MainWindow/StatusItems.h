// The items of the preview's status bar, by their numbers.
#pragma once

#include <array>
#include <cstdint>

constexpr int kStatusItems = 13;
constexpr int kAllStatusItems = 13; // the number of "All"

enum StatusItem {
    kStatusLineRate = 0,
    kStatusAcquisitionRate = 1,
    kStatusImageNumber = 2,
    kStatusBandwidth = 3,
    kStatusResolution = 4,
    kStatusErrors = 5,
    kStatusPacketsLost = 6,
    kStatusDisplayRate = 7,
    kStatusLocation = 8,
    kStatusRgb = 9,
    kStatusYuv = 10,
    kStatusZoom = 11,
    kStatusTemperature = 12,
};

// Bit of an item in the setting "View/StatusShowFlage".
// Deliberate: bandwidth and resolution have each other's bit, as in settings files that exist.
constexpr std::array<int, kStatusItems> kStatusItemBits{0, 1, 2, 4, 3, 5, 6, 7, 8, 9, 10, 11, 12};

constexpr bool IsStatusItemSet(uint32_t flags, int item) {
    return (flags >> kStatusItemBits[static_cast<std::size_t>(item)] & 1U) != 0;
}

constexpr uint32_t StatusItemFlag(int item) {
    return 1U << kStatusItemBits[static_cast<std::size_t>(item)];
}
