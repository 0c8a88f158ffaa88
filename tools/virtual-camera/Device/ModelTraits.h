// What tells the models apart.
#ifndef VCAM_DEVICE_MODELTRAITS_H
#define VCAM_DEVICE_MODELTRAITS_H

#include "VirtualCamera.h"

namespace vcam {

struct ModelTraits {
    Model model;
    const char* option;    // as --model calls it
    const char* modelName; // as the camera calls itself
    bool colour;
    bool lineScan;
    bool full; // false: only what every camera has
};

constexpr ModelTraits kModels[] = {
    {Model::Colour, "colour", "KV-2000C", true, false, true},
    {Model::Mono, "mono", "KV-2000M", false, false, true},
    {Model::LineScan, "linescan", "KV-2000L", false, true, true},
    {Model::Small, "small", "KV-100M", false, false, false},
};

constexpr const ModelTraits& TraitsOf(Model model) {
    for (const ModelTraits& traits : kModels) {
        if (traits.model == model)
            return traits;
    }
    return kModels[0];
}

} // namespace vcam

#endif
