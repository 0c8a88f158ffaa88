#include "MediaKit/Kernels.h"

#include "MediaKit/SimdTargets.h"
#include "hwy/targets.h"

namespace media {

namespace {

struct NamedTarget {
    std::int64_t target;
    const char* name;
};

// From slow to fast.
constexpr NamedTarget kTargets[] = {
    {HWY_NEON, "NEON"}, {HWY_SSE4, "SSE4"}, {HWY_AVX2, "AVX2"}, {HWY_AVX3, "AVX-512"}};

std::vector<Kernels> MakeKernels() {
    std::vector<Kernels> all{PlainKernels()};
    const std::int64_t present = hwy::SupportedTargets() & HWY_TARGETS;
    for (const NamedTarget& target : kTargets) {
        if ((present & target.target) != 0) {
            Kernels& kernels = all.emplace_back();
            kernels.name = target.name;
            FillPixelKernels(target.target, kernels);
            FillMosaicKernels(target.target, kernels);
            FillHamiltonKernels(target.target, kernels);
        }
    }
    return all;
}

const std::vector<Kernels>& Made() {
    static const std::vector<Kernels> all = MakeKernels();
    return all;
}

} // namespace

std::vector<const Kernels*> AllKernels() {
    std::vector<const Kernels*> all;
    for (const Kernels& kernels : Made()) {
        all.push_back(&kernels);
    }
    return all;
}

const Kernels& BestKernels() {
    return Made().back();
}

} // namespace media
